// Transcripts read back: what a program sent, and when.
#pragma once

#include "simulator/driver/intrusion.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace simulator
{

// The bytes sent, and the time, of one line. There are no bytes for an exchange that failed, which
// never reached the wire. None if the line is not a line of a transcript.
std::optional<SentBytes> parse_transcript_line(std::string_view line);

// Adds what reached the wire. Empty, or why the file is not a transcript.
std::string read_transcript(const std::string &path, std::vector<SentBytes> &sent);

} // namespace simulator
