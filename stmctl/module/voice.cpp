// Every text that the module is known to print, and what it means.
#include "stmctl/module/voice.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>

namespace stmctl
{

namespace
{

struct Spoken {
    std::string_view text; // how it begins; whole, if it ends in a newline
    Event event;
};

// clang-format off
constexpr Spoken SPOKEN[] = {
    {"SPI timeout\n",                        Event::timed_out},
    {"Error stm_com_funcs: SPI timeout\n",   Event::timed_out},
    {"Wrong checksum detected",              Event::rejected},
    {"Cannot open ringbuffer for write\n",   Event::ring_refused},
    {"Error: Writing to ringbuffer\n",       Event::slot_refused},
    {"SPI Bus inactive\n",                   Event::bus_inactive},
    {"Checksum error\n",                     Event::checksum_error},
    {"Address error\n",                      Event::address_error},
    {"Filesize: ",                           Event::image_begun},
    {"Transmitting datablock ",              Event::block_sent},
    {"Transmitted data: ",                   Event::image_ended},
};
// clang-format on

struct Meaning {
    std::string_view text; // as passed to perror, without the newline that some end in
    std::string_view sentence;
};

constexpr std::string_view REFUSED_CLOCK = "Error: writing speed failed";
constexpr std::string_view NOT_SYNCHRONISED = "Error: stm_com_funcs: SPI datatransfer";
constexpr std::string_view BLOCK_NOT_SENT = "SPI send data";

// clang-format off
constexpr Meaning MEANINGS[] = {
    {"Error: stm_com_func: Can't open device",   "cannot open /dev/spidev1.0"},
    {REFUSED_CLOCK,                              "the device refused a clock of 6 MHz"},
    {NOT_SYNCHRONISED,                           "synchronising the link failed"},
    {"SPI command",                              "sending the command failed"},
    {"read data",                                "fetching the answer failed"},
    {"SPI wait for ACK",                         "asking for the acknowledgement failed"},
    {"SPI send header information",              "sending the header failed"},
    {BLOCK_NOT_SENT,                             "sending the data failed"},
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
    {"shmctl (ringbuffer space)",                "cannot inspect the ring's shared memory"},
};
// clang-format on

// The errno whose reason ends a line printed by perror; 0 if perror did not print it.
int error_at_end(std::string_view line)
{
    constexpr int LAST_ERRNO = 133;
    for (int number = 1; number <= LAST_ERRNO; ++number) {
        const std::string_view reason = strerror(number);
        if (line.size() >= reason.size() + 2 && line.ends_with(reason) &&
            line.substr(line.size() - reason.size() - 2, 2) == ": ") {
            return number;
        }
    }
    return 0;
}

void trim_end(std::string &text)
{
    text.resize(text.find_last_not_of(" \n") + 1);
}

std::string_view meaning_of(std::string_view text)
{
    const auto *found = std::ranges::find(MEANINGS, text, &Meaning::text);
    return found == std::end(MEANINGS) ? text : found->sentence;
}

std::string remedy(const Report &report)
{
    if (report.error == EMSGSIZE && !report.is_length_refused()) {
        return "; " + bufsiz_words(driver_bufsiz());
    }
    return report.is_device_gone() ? "; the device is gone, see stmctl --help access" : "";
}

} // namespace

Heard hear(std::string_view text)
{
    const auto *found = std::ranges::find_if(SPOKEN, [&](const Spoken &spoken) {
        return spoken.text.ends_with('\n') ? text == spoken.text : text.starts_with(spoken.text);
    });
    if (found == std::end(SPOKEN)) {
        return {};
    }
    Heard heard = {found->event, 0};
    const std::string_view rest = text.substr(found->text.size());
    std::from_chars(rest.data(), rest.data() + rest.size(), heard.number);
    return heard;
}

bool Report::is_device_gone() const
{
    return error == ESHUTDOWN || error == ENODEV || error == EBADF;
}

bool Report::is_refused_clock() const
{
    return text == REFUSED_CLOCK;
}

// Synchronising sends as much as the driver ever has to accept: if that is refused, the driver
// refuses it. Later it is the link, which does not even start an exchange of such a length.
bool Report::is_length_refused() const
{
    return error == EMSGSIZE && text != NOT_SYNCHRONISED;
}

bool Report::is_block_not_sent() const
{
    return text == BLOCK_NOT_SENT;
}

std::string Report::sentence() const
{
    return fmt::format("{}: {}{}", meaning_of(text), reason, remedy(*this));
}

bool is_device_gone(const std::vector<Report> &reports)
{
    return std::ranges::any_of(reports, &Report::is_device_gone);
}

std::optional<long> driver_bufsiz()
{
    std::ifstream file("/sys/module/spidev/parameters/bufsiz");
    long bytes = 0;
    return file >> bytes ? std::optional(bytes) : std::nullopt;
}

std::string bufsiz_words(std::optional<long> bufsiz)
{
    return fmt::format("the driver's parameter bufsiz {} and must be at least {}, see stmctl "
                       "--help access",
                       bufsiz ? fmt::format("is {}", *bufsiz) : "is too small",
                       SYNCHRONISING_BYTES);
}

Reports read_reports(std::string_view captured)
{
    Reports reports;
    std::string before; // may be the first half of a report: some texts end in a newline
    while (!captured.empty()) {
        const size_t end = std::min(captured.find('\n'), captured.size() - 1) + 1;
        const std::string line(captured.substr(0, end));
        captured.remove_prefix(end);
        const std::string_view plain = std::string_view(line).substr(0, line.find('\n'));
        const int error = error_at_end(plain);
        if (error == 0) {
            reports.rest += before;
            before = line;
            continue;
        }
        const std::string reason = strerror(error);
        std::string text(plain.substr(0, plain.size() - reason.size() - 2));
        if (text.empty()) {
            text = before;
            before.clear();
        }
        trim_end(text);
        reports.rest += before;
        before.clear();
        reports.failures.push_back({text, reason, error});
    }
    reports.rest += before;
    return reports;
}

} // namespace stmctl
