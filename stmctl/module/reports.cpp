// The module's words, read and put into sentences.
#include "stmctl/module/reports.hpp"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>

namespace stmctl
{

namespace
{

struct Meaning {
    std::string_view text; // as the module hands it to perror, without the newline that some end in
    std::string_view sentence;
};

// clang-format off
constexpr Meaning MEANINGS[] = {
    {"Error: stm_com_func: Can't open device",   "cannot open /dev/spidev1.0"},
    {"Error: writing speed failed",              "the device refused the clock of 6 MHz"},
    {"Error: stm_com_funcs: SPI datatransfer",   "synchronising the link failed"},
    {"SPI command",                              "sending the command failed"},
    {"read data",                                "fetching the answer failed"},
    {"SPI wait for ACK",                         "asking for the acknowledge failed"},
    {"SPI send header information",              "sending the header failed"},
    {"SPI send data",                            "sending the data failed"},
    {"Error stm_com_funcs: SPI command",         "sending the command failed"},
    {"Error stm_com_funcs: SPI wait for ACK",    "asking whether the answer is ready failed"},
    {"Error stm_com_funcs: SPI datasize",        "fetching the answer failed"},
    {"SPI datatransfer",                         "fetching the data failed"},
    {"SPI datatransfer (wait)",                  "asking for the next block failed"},
    {"SPI datatransfer (ACK a)",                 "fetching the length of a block failed"},
    {"SPI datatransfer (ACK b)",                 "fetching the length of a block failed"},
    {"SPI datatransfer (1)",                     "fetching the data failed (1)"},
    {"SPI datatransfer (2)",                     "fetching the data failed (2)"},
    {"SPI datatransfer (3)",                     "fetching the data failed (3)"},
    {"SPI datatransfer (4)",                     "fetching the data failed (4)"},
    {"shmget (ringbuffer space)",                "cannot get the ring's shared memory"},
    {"shmat (ringbuffer space)",                 "cannot attach the ring's shared memory"},
    {"shmctl (ringbuffer space)",                "cannot look at the ring's shared memory"},
};
// clang-format on

// The system's reason at the end of a line of perror's; empty if the line is none.
std::string reason_at_end(std::string_view line)
{
    constexpr int LAST_ERRNO = 133;
    for (int number = 1; number <= LAST_ERRNO; ++number) {
        std::string reason = strerror(number);
        if (line.size() >= reason.size() + 2 && line.ends_with(reason) &&
            line.substr(line.size() - reason.size() - 2, 2) == ": ") {
            return reason;
        }
    }
    return {};
}

void trim_end(std::string &text)
{
    text.resize(text.find_last_not_of(" \n") + 1);
}

} // namespace

std::string Report::sentence() const
{
    std::string_view words = text;
    for (const Meaning &meaning : MEANINGS) {
        if (meaning.text == text) {
            words = meaning.sentence;
        }
    }
    // The one refusal of the link's own: nothing was exchanged then.
    const bool refused = reason == strerror(EMSGSIZE);
    return fmt::format("{}: {}{}", words, reason,
                       refused ? "; the co-processor announced a length that cannot be, see "
                                 "stmctl state"
                               : "");
}

Reports read_reports(std::string_view captured)
{
    Reports reports;
    std::string before; // a line that may be the first half of a report: some texts end in one
    while (!captured.empty()) {
        const size_t end = std::min(captured.find('\n'), captured.size() - 1) + 1;
        const std::string line(captured.substr(0, end));
        captured.remove_prefix(end);
        const std::string_view plain = std::string_view(line).substr(0, line.find('\n'));
        const std::string reason = reason_at_end(plain);
        if (reason.empty()) {
            reports.rest += before;
            before = line;
            continue;
        }
        std::string text(plain.substr(0, plain.size() - reason.size() - 2));
        if (text.empty()) {
            text = before;
            before.clear();
        }
        trim_end(text);
        reports.rest += before;
        before.clear();
        reports.failures.push_back({text, reason});
    }
    reports.rest += before;
    return reports;
}

bool is_timeout(std::string_view text)
{
    return text == "SPI timeout\n" || text == "Error stm_com_funcs: SPI timeout\n";
}

bool is_rejection(std::string_view text)
{
    return text.starts_with("Wrong checksum detected");
}

} // namespace stmctl
