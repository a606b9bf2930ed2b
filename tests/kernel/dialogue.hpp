// Dialogues of two runs, made comparable: what depends on the time that passes is left out.
#pragma once

#include <string>
#include <vector>

namespace kernel_test
{

// What one exchange meant: its length, bytes and note as in the transcript, or a record of a stream.
struct Event {
    bool is_record = false;
    std::string words;

    bool operator==(const Event &) const = default;
};

// The exchanges of a transcript that reached the wire, without their numbers and times. Polls that got
// nothing are left out. Of a stream only its records remain, without what tells how they were divided
// among blocks: the number that was left in the buffer, and so the checksum.
std::vector<Event> events_of(const std::string &transcript);

// Empty, or the first difference. How many records come before a program stops a stream may differ, by
// what was in the last block.
std::string difference(const std::vector<Event> &one, const std::vector<Event> &other);

// An output without its measured times and rates, and without how often something was waited for.
std::string without_times(const std::string &output);

} // namespace kernel_test
