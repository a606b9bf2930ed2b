// The records that the co-processor delivers, as data: where each field lies on the wire, how it is
// shown, and how records are asked for. Records are packed and little-endian.
#pragma once

#include "link/decimal.hpp"
#include "link/protocol.hpp"

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

namespace stm
{

// How a field's bytes become a number of 32 bits.
enum class Wire : uint8_t { u8, i8, u16, i16, i32 };

// How CSV shows that number. Labelled text always shows it signed.
enum class Csv : uint8_t { with_sign, without_sign };

enum class Line : uint8_t { plain, ends_group }; // in labelled text, a blank line follows a group

struct RecordField {
    const char *label; // in labelled text, type, blanks and colon included
    const char *name;  // of the CSV column
    int32_t offset;
    Wire wire;
    Line line = Line::plain;
    Csv csv = Csv::with_sign;
};

// How a record becomes text.
struct RecordRenderer {
    char *(*write)(const uint8_t *record, char *to); // returns the place after what it has written
    int32_t longest;                                 // that it can write, and a NUL
};

struct RecordFormat {
    int32_t size;                        // in bytes; the last two are the checksum over the others
    std::span<const RecordField> fields; // in the order in which they are shown
    int32_t reserved_at;                 // two bytes that are not shown; 0 if there are none
    RecordRenderer text;                 // labelled
    RecordRenderer csv;
};

// How records are asked for.
struct RecordRequest {
    const RecordFormat &format;
    uint8_t command;
    int32_t most;   // records in one counted request
    uint8_t stream; // what stands in place of their number when the live stream is wanted
};

// Made by the compiler from a table of fields, see render_fields.hpp.
template <const auto &FIELDS>
char *render_fields_text(const uint8_t *record, char *to);
template <const auto &FIELDS>
char *render_fields_csv(const uint8_t *record, char *to);

// Room for a record of any format, in any mode.
constexpr int32_t RECORD_TEXT_SIZE = 640;
static_assert(RECORD_TEXT_SIZE >= STM_MESSAGE_SIZE);

template <const auto &FIELDS>
consteval RecordFormat record_format(int32_t size, int32_t reserved_at = 0)
{
    int32_t longest_text = 1;
    int32_t longest_csv = sizeof("\n");
    for (const RecordField &field : FIELDS) {
        const auto label = static_cast<int32_t>(std::string_view(field.label).size());
        longest_text += label + LONGEST_DECIMAL + (field.line == Line::ends_group ? 2 : 1);
        longest_csv += LONGEST_DECIMAL + 1;
    }
    return {size,
            FIELDS,
            reserved_at,
            {render_fields_text<FIELDS>, longest_text},
            {render_fields_csv<FIELDS>, longest_csv}};
}

// True if every record's text has room in the memory that it is put into.
consteval bool record_has_room(const RecordFormat &format)
{
    return format.text.longest <= RECORD_TEXT_SIZE && format.csv.longest <= STM_MESSAGE_SIZE;
}

constexpr int32_t RECORD_NUMBER_AT = 1;
constexpr int32_t RECORD_CHECKSUM_SIZE = 2;

constexpr int32_t wire_size(Wire wire)
{
    switch (wire) {
    case Wire::u8:
    case Wire::i8:
        return 1;
    case Wire::u16:
    case Wire::i16:
        return 2;
    case Wire::i32:
        break;
    }
    return 4;
}

// True if marker, reserved bytes and fields cover each byte of the record exactly once, the
// checksum last.
consteval bool record_is_covered(const RecordFormat &format)
{
    uint64_t covered = 1; // a bit for each byte, first that of the marker
    int32_t bytes = 1;
    const auto cover = [&](int32_t at, int32_t size) {
        covered |= ((uint64_t{1} << size) - 1) << at;
        bytes += size;
    };
    if (format.reserved_at != 0) {
        cover(format.reserved_at, 2);
    }
    for (const RecordField &field : format.fields) {
        cover(field.offset, wire_size(field.wire));
    }
    const RecordField &last = format.fields.back();
    return bytes == format.size && covered == (uint64_t{1} << format.size) - 1 &&
           last.wire == Wire::u16 && last.offset == format.size - RECORD_CHECKSUM_SIZE;
}

// True if the largest request fills the receive buffer as far as whole records do.
consteval bool record_request_fits(const RecordRequest &request)
{
    return request.most == STM_BUFFER_SIZE / request.format.size;
}

void no_field_has_this_name(); // never defined: field_named cannot be evaluated once it comes to it

// A look-up that the compiler makes, so that a name without a field does not compile.
consteval const RecordField &field_named(const RecordFormat &format, std::string_view name)
{
    for (const RecordField &field : format.fields) {
        if (field.name == name) {
            return field;
        }
    }
    no_field_has_this_name();
    return format.fields.front();
}

// The three kinds of records. Kept: labels that name another type than the field has, the
// temperature's label, and the places of Uen and negIe, which are not those on the wire.

// clang-format off
inline constexpr RecordField STM_RECORD_FIELDS[] = {
    {"stm_uint8_t  nr   : ",              "nr",            1, Wire::u8},
    {"stm_int32_t  rel_t: ",              "rel_t",         4, Wire::i32, Line::ends_group, Csv::without_sign},
    {"stm_int32_t  U1e  : ",              "U1e",          12, Wire::i32},
    {"stm_int32_t  U2e  : ",              "U2e",          16, Wire::i32},
    {"stm_int32_t  U3e  : ",              "U3e",          20, Wire::i32},
    {"stm_int32_t  Uen  : ",              "Uen",           8, Wire::i32, Line::ends_group},
    {"stm_int32_t  I1   : ",              "I1",           28, Wire::i32},
    {"stm_int32_t  I2   : ",              "I2",           32, Wire::i32},
    {"stm_int32_t  I3   : ",              "I3",           36, Wire::i32},
    {"stm_int32_t  -Ie  : ",              "negIe",        24, Wire::i32, Line::ends_group},
    {"stm_int16_t  BE1  : ",              "BE1",          40, Wire::i32}, // 32 bits here
    {"stm_int16_t  BE2  : ",              "BE2",          44, Wire::i32},
    {"stm_int8_t   BE   : ",              "BE",           48, Wire::i8},
    {"stm_uint32_t   BE32_01_ext   : ",   "BE32_01_ext",  49, Wire::i32, Line::plain, Csv::without_sign},
    {"stm_uint8    buffered  : ",         "buffered",     53, Wire::u8},
    {"stm_int8_t   checksum  : ",         "checksum",     54, Wire::u16, Line::ends_group},
};

inline constexpr RecordField STM_RECORD_FIELDS_OMEGA[] = {
    {"stm_uint8_t  nr   : ",              "nr",            1, Wire::u8},
    {"stm_uint16_t  omega_t : ",          "omega_t",       2, Wire::u16},
    {"stm_int32_t  rel_t: ",              "rel_t",         4, Wire::i32, Line::ends_group, Csv::without_sign},
    {"stm_int32_t  U1e  : ",              "U1e",          12, Wire::i32},
    {"stm_int32_t  U2e  : ",              "U2e",          16, Wire::i32},
    {"stm_int32_t  U3e  : ",              "U3e",          20, Wire::i32},
    {"stm_int32_t  Uen  : ",              "Uen",           8, Wire::i32, Line::ends_group},
    {"stm_int32_t  I1   : ",              "I1",           28, Wire::i32},
    {"stm_int32_t  I2   : ",              "I2",           32, Wire::i32},
    {"stm_int32_t  I3   : ",              "I3",           36, Wire::i32},
    {"stm_int32_t  -Ie  : ",              "negIe",        24, Wire::i32, Line::ends_group},
    {"stm_int16_t  BE1  : ",              "BE1",          40, Wire::i16},
    {"stm_int16_t  BE2  : ",              "BE2",          42, Wire::i16},
    {"stm_int8_t   BE   : ",              "BE",           44, Wire::i8},
    {"stm_uint32_t   BE32_01_ext   : ",   "BE32_01_ext",  45, Wire::i32, Line::plain, Csv::without_sign},
    {"stm_uint8    buffered  : ",         "buffered",     49, Wire::u8},
    {"stm_int8_t   checksum  : ",         "checksum",     50, Wire::u16, Line::ends_group},
};

inline constexpr RecordField STM_RECORD_FIELDS_TEMP[] = {
    {"stm_uint8_t  nr   : ",              "nr",            1, Wire::u8},
    {"stm_uint16_t omega_t : ",           "temp",          2, Wire::u16},
    {"stm_int32_t  rel_t: ",              "rel_t",         4, Wire::i32, Line::ends_group, Csv::without_sign},
    {"stm_int32_t  U1e  : ",              "U1e",          12, Wire::i32},
    {"stm_int32_t  U2e  : ",              "U2e",          16, Wire::i32},
    {"stm_int32_t  U3e  : ",              "U3e",          20, Wire::i32},
    {"stm_int32_t  Uen  : ",              "Uen",           8, Wire::i32, Line::ends_group},
    {"stm_int32_t  I1   : ",              "I1",           28, Wire::i32},
    {"stm_int32_t  I2   : ",              "I2",           32, Wire::i32},
    {"stm_int32_t  I3   : ",              "I3",           36, Wire::i32},
    {"stm_int32_t  -Ie  : ",              "negIe",        24, Wire::i32, Line::ends_group},
    {"stm_int16_t  BE1  : ",              "BE1",          40, Wire::i16},
    {"stm_int16_t  BE2  : ",              "BE2",          42, Wire::i16},
    {"stm_int8_t   BE   : ",              "BE",           44, Wire::i8},
    {"stm_uint8    buffered  : ",         "buffered",     45, Wire::u8},
    {"stm_int8_t   checksum  : ",         "checksum",     46, Wire::u16, Line::ends_group},
};
// clang-format on

// Kept: the live read-out's CSV header calls the temperature as labelled text does.
inline constexpr auto STM_RECORD_FIELDS_TEMP_LIVE = [] {
    auto fields = std::to_array(STM_RECORD_FIELDS_TEMP);
    fields[1].name = "omega_t";
    return fields;
}();

inline constexpr RecordFormat STM_RECORD = record_format<STM_RECORD_FIELDS>(56, 2);
inline constexpr RecordFormat STM_RECORD_OMEGA = record_format<STM_RECORD_FIELDS_OMEGA>(52);
inline constexpr RecordFormat STM_RECORD_TEMP = record_format<STM_RECORD_FIELDS_TEMP>(48);
inline constexpr RecordFormat STM_RECORD_TEMP_LIVE = [] {
    RecordFormat format = STM_RECORD_TEMP;
    format.fields = STM_RECORD_FIELDS_TEMP_LIVE;
    return format;
}();

// NOLINTBEGIN(bugprone-dynamic-static-initializers): only declared here
extern const RecordRequest STM_REQUEST;
extern const RecordRequest STM_REQUEST_OMEGA;
extern const RecordRequest STM_REQUEST_TEMP;
extern const RecordRequest STM_REQUEST_TEMP_LIVE;
// NOLINTEND(bugprone-dynamic-static-initializers)

static_assert(record_is_covered(STM_RECORD) && record_is_covered(STM_RECORD_OMEGA) &&
              record_is_covered(STM_RECORD_TEMP) && record_is_covered(STM_RECORD_TEMP_LIVE));
static_assert(record_has_room(STM_RECORD) && record_has_room(STM_RECORD_OMEGA) &&
              record_has_room(STM_RECORD_TEMP));

} // namespace stm
