// Records, byte by byte.
#include "tests/readout/record_writer.hpp"

#include "tests/platform/bitwise_crc.hpp"

#include <cstring>
#include <stdexcept>

namespace
{

struct Place {
    const char *name;
    size_t at;
    size_t width;
};

using Layout = std::initializer_list<Place>;

constexpr Layout BASE = {
    {"marker", 0, 1},    {"nr", 1, 1},   {"reserved", 2, 2}, {"rel_t", 4, 4},
    {"Uen", 8, 4},       {"U1e", 12, 4}, {"U2e", 16, 4},     {"U3e", 20, 4},
    {"negIe", 24, 4},    {"I1", 28, 4},  {"I2", 32, 4},      {"I3", 36, 4},
    {"BE1", 40, 4},      {"BE2", 44, 4}, {"BE", 48, 1},      {"BE32_01_ext", 49, 4},
    {"buffered", 53, 1},
};

constexpr Layout OMEGA = {
    {"marker", 0, 1},       {"nr", 1, 1},        {"omega_t", 2, 2}, {"rel_t", 4, 4},  {"Uen", 8, 4},
    {"U1e", 12, 4},         {"U2e", 16, 4},      {"U3e", 20, 4},    {"negIe", 24, 4}, {"I1", 28, 4},
    {"I2", 32, 4},          {"I3", 36, 4},       {"BE1", 40, 2},    {"BE2", 42, 2},   {"BE", 44, 1},
    {"BE32_01_ext", 45, 4}, {"buffered", 49, 1},
};

constexpr Layout TEMP = {
    {"marker", 0, 1}, {"nr", 1, 1},   {"temp", 2, 2}, {"rel_t", 4, 4},
    {"Uen", 8, 4},    {"U1e", 12, 4}, {"U2e", 16, 4}, {"U3e", 20, 4},
    {"negIe", 24, 4}, {"I1", 28, 4},  {"I2", 32, 4},  {"I3", 36, 4},
    {"BE1", 40, 2},   {"BE2", 42, 2}, {"BE", 44, 1},  {"buffered", 45, 1},
};

const Layout &layout_of(RecordKind kind)
{
    switch (kind) {
    case RecordKind::base:
        return BASE;
    case RecordKind::omega:
        return OMEGA;
    case RecordKind::temp:
        break;
    }
    return TEMP;
}

const Place &place_of(RecordKind kind, const char *name)
{
    for (const Place &place : layout_of(kind)) {
        if (strcmp(place.name, name) == 0) {
            return place;
        }
    }
    throw std::invalid_argument(name);
}

} // namespace

size_t record_size(RecordKind kind)
{
    switch (kind) {
    case RecordKind::base:
        return 56;
    case RecordKind::omega:
        return 52;
    case RecordKind::temp:
        break;
    }
    return 48;
}

Bytes record(RecordKind kind, std::initializer_list<FieldValue> values)
{
    Bytes bytes(record_size(kind), 0x00);
    write_field(bytes, kind, {"marker", 0x55});
    for (const FieldValue &value : values) {
        write_field(bytes, kind, value);
    }
    return sealed(bytes);
}

Bytes records(RecordKind kind, int count)
{
    Bytes all;
    for (int i = 1; i <= count; ++i) {
        const Bytes one = record(kind, {{"nr", i}, {"rel_t", 1000 + i}, {"I3", -i}});
        all.insert(all.end(), one.begin(), one.end());
    }
    return all;
}

Bytes record_ending_in_zero(RecordKind kind)
{
    for (int stamp = 0;; ++stamp) {
        Bytes bytes = record(kind, {{"nr", 9}, {"rel_t", stamp}});
        if (bytes.back() == 0x00) {
            return bytes;
        }
    }
}

void write_field(Bytes &record, RecordKind kind, const FieldValue &field)
{
    const Place &place = place_of(kind, field.name);
    for (size_t i = 0; i < place.width; ++i) {
        record[place.at + i] = static_cast<uint8_t>(field.value >> (8 * i));
    }
}

void seal(Bytes &record)
{
    record.pop_back();
    record.pop_back();
    const uint16_t checksum = bitwise_crc(record);
    record.push_back(static_cast<uint8_t>(checksum & 0xFF));
    record.push_back(static_cast<uint8_t>(checksum >> 8));
}

Bytes sealed(Bytes record)
{
    seal(record);
    return record;
}

Bytes spoiled(Bytes bytes, size_t at)
{
    bytes.at(at) ^= 0xFF;
    return bytes;
}
