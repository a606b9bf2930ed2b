// Dialogues of two runs, made comparable.
#include "tests/kernel/dialogue.hpp"

#include <algorithm>
#include <regex>
#include <sstream>

namespace kernel_test
{

namespace
{

constexpr size_t HEADER_SIZE = 3;  // of a block in a stream: ready, and its length
constexpr size_t TRAILER_SIZE = 3; // of a record: how many are buffered, and its checksum

// A line of a transcript in its parts.
struct Line {
    std::string length;
    std::string sent;
    std::string received; // or "! " and what failed
    std::string note;

    std::string words() const { return length + " > " + sent + received + note; }
};

bool take_apart(const std::string &text, Line &line)
{
    std::istringstream stream(text);
    std::string number;
    std::string time;
    std::string sign;
    if (!(stream >> number >> time >> line.length >> sign) || sign != ">") {
        return false;
    }
    const size_t sent = text.find(" >") + 2;
    const size_t received = text.find_first_of("<!", sent);
    if (received == std::string::npos) {
        return false;
    }
    const size_t note = std::min(text.find(';', received), text.size());
    line.sent = text.substr(sent, received - 1 - sent);
    line.received = text.substr(received - 1, note - received + 1);
    line.note = text.substr(note);
    return true;
}

// "44 00*3" in full.
std::vector<std::string> bytes_of(const std::string &words)
{
    std::vector<std::string> bytes;
    std::istringstream stream(words);
    for (std::string word; stream >> word;) {
        const size_t star = word.find('*');
        const size_t count = star == std::string::npos ? 1 : std::stoul(word.substr(star + 1));
        if (word != "<") {
            bytes.insert(bytes.end(), count, word.substr(0, 2));
        }
    }
    return bytes;
}

// A message that the driver refuses never reaches the wire, nor does one without bytes.
bool reached_wire(const Line &line)
{
    static const std::regex refused(" ! (EMSGSIZE|EFAULT|EINVAL|ESHUTDOWN) *");
    return line.length != "0" && !(line.sent.empty() && std::regex_match(line.received, refused)) &&
           !(line.sent.empty() && line.received == " <");
}

bool are_all(const std::string &words, const std::string &value)
{
    const std::vector<std::string> bytes = bytes_of(words);
    return std::ranges::all_of(bytes, [&value](const std::string &byte) { return byte == value; });
}

bool is_empty_poll(const Line &line)
{
    return (are_all(line.sent, "33") || are_all(line.sent, "44")) && are_all(line.received, "00");
}

class Reading
{
  public:
    void take(const Line &line)
    {
        static const std::regex header(R"(; header of block \d+: (\d+) records?)");
        std::smatch parts;
        if (std::regex_match(line.note, parts, header)) {
            begin_block(line, std::stoul(parts[1]));
        } else if (waiting_ > 0) {
            end_block(line);
        } else if (!repeats_request(line)) {
            events.push_back({false, line.words()});
        }
    }

    std::vector<Event> events;

  private:
    void begin_block(const Line &line, size_t records)
    {
        const std::vector<std::string> bytes = bytes_of(line.received);
        block_.assign(bytes.begin() + HEADER_SIZE, bytes.end());
        waiting_ = records;
    }

    // A block that was damaged has another length; it stays whole.
    void end_block(const Line &line)
    {
        const std::vector<std::string> rest = bytes_of(line.received);
        block_.insert(block_.end(), rest.begin(), rest.end());
        const size_t size =
            block_.size() % waiting_ == 0 ? block_.size() / waiting_ : block_.size();
        for (size_t at = 0; at < block_.size(); at += size) {
            std::string words;
            for (size_t i = at; i + TRAILER_SIZE < at + size; ++i) {
                words += block_[i] + ' ';
            }
            events.push_back({true, words});
        }
        waiting_ = 0;
    }

    // The request that brings the next block of a stream.
    bool repeats_request(const Line &line) const
    {
        return !events.empty() && events.back().is_record &&
               line.note.find(" records asked for") != std::string::npos;
    }

    size_t waiting_ = 0; // records whose bytes are to come
    std::vector<std::string> block_;
};

size_t skip_records(const std::vector<Event> &events, size_t at)
{
    while (at < events.size() && events[at].is_record) {
        ++at;
    }
    return at;
}

std::string words_at(const std::vector<Event> &events, size_t at)
{
    return at < events.size() ? events[at].words : "(the end)";
}

} // namespace

std::vector<Event> events_of(const std::string &transcript)
{
    Reading reading;
    std::istringstream lines(transcript);
    for (std::string text; std::getline(lines, text);) {
        Line line;
        if (text.ends_with(" > 44*20 < 00*20 ; no record yet")) {
            continue; // an empty poll; with counted time there are many
        }
        if (!take_apart(text, line)) {
            reading.events.push_back({false, "no line of a transcript: " + text});
        } else if (reached_wire(line) && !is_empty_poll(line)) {
            reading.take(line);
        }
    }
    return reading.events;
}

std::string difference(const std::vector<Event> &one, const std::vector<Event> &other)
{
    size_t at = 0;
    size_t other_at = 0;
    while (at < one.size() || other_at < other.size()) {
        if (at < one.size() && other_at < other.size() && one[at] == other[other_at]) {
            ++at;
            ++other_at;
            continue;
        }
        const bool is_in_stream = at > 0 && other_at > 0 && one[at - 1].is_record;
        const size_t behind = skip_records(one, at);
        const size_t other_behind = skip_records(other, other_at);
        if (!is_in_stream || (behind == at) == (other_behind == other_at)) {
            return "event " + std::to_string(at + 1) + ":\n  " + words_at(one, at) + "\n  " +
                   words_at(other, other_at);
        }
        at = behind;
        other_at = other_behind;
    }
    return {};
}

std::string without_times(const std::string &output)
{
    static const std::regex measured(R"(\b\d+(\.\d+)? (s|ms|B/s|KiB/s|time-outs?)\b)");
    return std::regex_replace(output, measured, "T $2");
}

} // namespace kernel_test
