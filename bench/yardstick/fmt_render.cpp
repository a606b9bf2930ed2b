// A record as CSV, by fmt.
#include "bench/yardstick/plain_render.hpp"

#include "bench/wire_record.hpp"

#include <fmt/compile.h>

namespace bench
{

void csv_by_fmt(const uint8_t *record, char *text)
{
    const WireRecord r = wire_record(record);
    char *end =
        fmt::format_to(text, FMT_COMPILE("{};{};{};{};{};{};{};{};{};{};{};{};{};{};{};{};\n"),
                       r.nr, r.temp, r.rel_t, r.U1e, r.U2e, r.U3e, r.Uen, r.I1, r.I2, r.I3, r.negIe,
                       r.BE1, r.BE2, static_cast<int32_t>(r.BE), r.buffered, r.checksum);
    *end = '\0';
}

} // namespace bench
