// Every text that the module is known to say, and what it means. Nothing else in stmctl compares a
// text of the module's.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stmctl
{

// What the output callback is told.
enum class Event {
    none, // it is data, or nothing that is known
    timed_out,
    rejected, // a record or frame with a wrong checksum
    ring_refused,
    slot_refused,
    bus_inactive,
    checksum_error, // of a part of an image, as are those below
    address_error,
    image_begun,
    block_sent,  // its number is told
    image_ended, // the number of bytes is told
};

struct Heard {
    Event event = Event::none;
    long number = 0;
};

Heard hear(std::string_view text);

// What perror has printed: the module's text, and the system's reason.
struct Report {
    std::string text;
    std::string reason;
    int error = 0; // the errno with this reason

    // The device is not there any more, for this descriptor at least.
    bool is_device_gone() const;

    // A clock that was refused is told, but the link runs at the device's own.
    bool is_refused_clock() const;

    // The link was asked for more bytes than there can be: the co-processor has said so, or nobody
    // drives the line.
    bool is_length_refused() const;

    // The first block that could not be sent.
    bool is_block_not_sent() const;

    // "sending the command failed: Input/output error", with the remedy where there is one.
    std::string sentence() const;
};

bool is_device_gone(const std::vector<Report> &reports);

struct Reports {
    std::vector<Report> failures;
    std::string rest; // lines that are no perror's, as they came
};

Reports read_reports(std::string_view captured);

// The length of the exchange that synchronises the link, the longest of all.
inline constexpr int SYNCHRONISING_BYTES = 4096;

// How many bytes the driver says that it takes at once. None where the kernel does not show it.
std::optional<long> driver_bufsiz();

// Why the driver takes no exchange of 4096 bytes, and what helps; bufsiz is none if nobody can
// tell.
std::string bufsiz_words(std::optional<long> bufsiz);

} // namespace stmctl
