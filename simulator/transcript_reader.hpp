// Transcripts read back: when a program sent what.
#pragma once

#include "simulator/intrusion.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace simulator
{

// The bytes sent, and the time, of one line. They are empty for an exchange that failed, which
// never reached the wire. None if the line is no line of a transcript.
std::optional<SentBytes> parse_transcript_line(std::string_view line);

// Adds what reached the wire. Empty, or why the file is no transcript.
std::string read_transcript(const std::string &path, std::vector<SentBytes> &sent);

} // namespace simulator
