// The dialogue as text.
#include "simulator/driver/transcript.hpp"

#include "simulator/driver/spi_device.hpp"
#include "simulator/words/text.hpp"

#include <cinttypes>
#include <cstring>

namespace simulator
{

namespace
{

constexpr size_t SHORTEST_RUN = 4;

size_t run_length(std::span<const uint8_t> bytes)
{
    size_t length = 1;
    while (length < bytes.size() && bytes[length] == bytes[0]) {
        ++length;
    }
    return length;
}

std::string error_name(int error)
{
    const char *name = strerrorname_np(error);
    return name != nullptr ? name : text("errno %d", error);
}

} // namespace

std::string transcript_bytes(std::span<const uint8_t> bytes)
{
    std::string line;
    while (!bytes.empty()) {
        const size_t run = run_length(bytes);
        const size_t taken = run >= SHORTEST_RUN ? run : 1;
        line += text(run >= SHORTEST_RUN ? " %02x*%zu" : " %02x", bytes[0], run);
        bytes = bytes.subspan(taken);
    }
    return line;
}

std::string transcript_line(const Exchange &exchange, std::chrono::nanoseconds time)
{
    const int64_t microseconds = time.count() / 1000;
    std::string line = text("%5d %5" PRId64 ".%06" PRId64 " %5" PRIu64 " >", exchange.number,
                            microseconds / 1'000'000, microseconds % 1'000'000, exchange.length);
    line += transcript_bytes(exchange.sent);
    if (exchange.result < 0) {
        line += " ! " + error_name(-exchange.result);
    } else {
        line += " <" + transcript_bytes(exchange.received);
    }
    if (!exchange.note.empty()) {
        line += " ; ";
        line += exchange.note;
    }
    return line + '\n';
}

} // namespace simulator
