// A dialogue as text: one line per call, in the order in which the calls were made.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

using Bytes = std::vector<uint8_t>;
using Transcript = std::vector<std::string>;

// Bytes in hexadecimal; four or more equal ones in a row are written as 66*4096.
std::string hex(const Bytes &bytes);

// A text in double quotes, with \n, \t, \", \\ and \xNN for what would not show.
std::string quoted(const std::string &text);

// The line of an exchange, "exchange 2: 81 AA", and of one that uses the link's short buffers.
std::string exchange(const Bytes &sent);
std::string short_exchange(const Bytes &sent);

// The line of a text for the output callback: say 0 "SPI timeout\n".
std::string say(const std::string &text, int flag = 0);

// Longer transcripts from shorter ones.
Transcript times(int count, const Transcript &lines);
Transcript joined(std::initializer_list<Transcript> parts);

// Equal throughout; a failure shows the first difference and the lines before it.
testing::AssertionResult same(const Transcript &actual, const Transcript &expected);
