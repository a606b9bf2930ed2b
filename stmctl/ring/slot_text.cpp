// A record of the ring.
#include "stmctl/ring/slot_text.hpp"

#include "stmctl/record/csv_line.hpp"

#include <fmt/format.h>

#include <array>
#include <cstring>

namespace stmctl
{

namespace
{

constexpr size_t CHECKED_BYTES = 46;

class WireBytes
{
  public:
    template <typename Field>
    void put(Field field)
    {
        for (size_t i = 0; i < sizeof(field); ++i) {
            bytes_[size_++] = static_cast<uint8_t>(field >> (8 * i));
        }
    }

    uint16_t checksum() const { return stm_crc16(bytes_.data(), static_cast<uint16_t>(size_)); }

  private:
    std::array<uint8_t, CHECKED_BYTES> bytes_ = {};
    size_t size_ = 0;
};

constexpr char TEXT[] = "stm_uint8_t  nr   : {}\n"
                        "stm_uint16_t omega_t : {}\n"
                        "stm_int32_t  rel_t: {}\n"
                        "\n"
                        "stm_int32_t  U1e  : {}\n"
                        "stm_int32_t  U2e  : {}\n"
                        "stm_int32_t  U3e  : {}\n"
                        "stm_int32_t  Uen  : {}\n"
                        "\n"
                        "stm_int32_t  I1   : {}\n"
                        "stm_int32_t  I2   : {}\n"
                        "stm_int32_t  I3   : {}\n"
                        "stm_int32_t  -Ie  : {}\n"
                        "\n"
                        "stm_int16_t  BE1  : {}\n"
                        "stm_int16_t  BE2  : {}\n"
                        "stm_int8_t   BE   : {}\n"
                        "stm_uint8    buffered  : {}\n"
                        "stm_int8_t   checksum  : {}\n"
                        "\n";

} // namespace

bool is_whole(const RingRecord &record)
{
    WireBytes wire;
    wire.put(record.marker);
    wire.put(record.nr);
    wire.put(record.temp);
    for (const int32_t field : {record.rel_t, record.Uen, record.U1e, record.U2e, record.U3e,
                                record.negIe, record.I1, record.I2, record.I3}) {
        wire.put(field);
    }
    wire.put(record.BE1);
    wire.put(record.BE2);
    wire.put(record.BE);
    wire.put(record.buffered);
    return wire.checksum() == record.checksum;
}

bool is_empty(const RingRecord &record)
{
    const RingRecord empty = {};
    return memcmp(&record, &empty, sizeof(empty)) == 0;
}

std::string ring_csv_header()
{
    return csv_header({"nr", "temp", "rel_t", "U1e", "U2e", "U3e", "Uen", "I1", "I2", "I3", "negIe",
                       "BE1", "BE2", "BE", "buffered", "checksum"});
}

std::string ring_csv_line(const RingRecord &record)
{
    return fmt::format("{};{};{};{};{};{};{};{};{};{};{};{};{};{};{};{};\n", record.nr, record.temp,
                       static_cast<uint32_t>(record.rel_t), record.U1e, record.U2e, record.U3e,
                       record.Uen, record.I1, record.I2, record.I3, record.negIe, record.BE1,
                       record.BE2, record.BE, record.buffered, record.checksum);
}

std::string ring_record_text(const RingRecord &record)
{
    return fmt::format(TEXT, record.nr, record.temp, record.rel_t, record.U1e, record.U2e,
                       record.U3e, record.Uen, record.I1, record.I2, record.I3, record.negIe,
                       record.BE1, record.BE2, record.BE, record.buffered, record.checksum);
}

} // namespace stmctl
