// The module's words, read and put into sentences.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace stmctl
{

// What perror has printed: the module's text, and the system's reason.
struct Report {
    std::string text;
    std::string reason;

    std::string sentence() const; // "sending the command failed: Input/output error"
};

struct Reports {
    std::vector<Report> failures;
    std::string rest; // lines that are no perror's, as they came
};

Reports read_reports(std::string_view captured);

// Whether the output callback got one of the module's two texts for a time-out.
bool is_timeout(std::string_view text);
bool is_rejection(std::string_view text); // or that a checksum is wrong

} // namespace stmctl
