// Every text that the module is known to print, and what it means. Nothing else in stmctl compares
// the module's texts.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stmctl
{

// What a text of the output callback reports.
enum class Event {
    none, // data, or an unknown text
    timed_out,
    rejected, // a record or frame with a wrong checksum
    ring_refused,
    slot_refused,
    bus_inactive,
    checksum_error, // of a part of an image, like those below
    address_error,
    image_begun,
    block_sent,  // with its number
    image_ended, // with the number of bytes
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

    // The device no longer exists, at least for this descriptor.
    bool is_device_gone() const;

    // A refused clock is reported, but the link runs at the device's own.
    bool is_refused_clock() const;

    // The link was asked for more bytes than possible: the co-processor announced them, or nothing
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
    std::string rest; // lines that perror did not print, as they came
};

Reports read_reports(std::string_view captured);

// The length of the exchange that synchronises the link, the longest of all.
inline constexpr int SYNCHRONISING_BYTES = 4096;

// How many bytes the driver claims to accept at once. None if the kernel does not show it.
std::optional<long> driver_bufsiz();

// Why the driver refuses an exchange of 4096 bytes, and what helps; bufsiz is none if it is
// unknown.
std::string bufsiz_words(std::optional<long> bufsiz);

} // namespace stmctl
