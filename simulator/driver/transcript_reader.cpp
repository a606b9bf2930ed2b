// Transcripts read back.
#include "simulator/driver/transcript_reader.hpp"

#include "simulator/words/board_time.hpp"
#include "simulator/words/number.hpp"
#include "simulator/words/text.hpp"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <utility>

namespace simulator
{

namespace
{

constexpr int64_t MOST_BYTES = 1'048'576; // of one exchange
constexpr int64_t MOST_EXCHANGES = 1'000'000'000;

// Appends "66*3" or "66" as bytes.
bool add_bytes(std::vector<uint8_t> &bytes, const std::string &word)
{
    constexpr size_t DIGITS = 2;
    const auto byte = parse_number("0x" + word.substr(0, DIGITS), 0, 0xFF);
    const bool is_run = word.size() > DIGITS && word[DIGITS] == '*';
    const auto count =
        is_run ? parse_number(word.substr(DIGITS + 1), 1, MOST_BYTES) : std::optional<int64_t>(1);
    if (!byte || !count || (!is_run && word.size() != DIGITS) ||
        static_cast<int64_t>(bytes.size()) + *count > MOST_BYTES) {
        return false;
    }
    bytes.insert(bytes.end(), static_cast<size_t>(*count), static_cast<uint8_t>(*byte));
    return true;
}

bool is_number(const std::string &word, int64_t most)
{
    return !word.starts_with("0x") && parse_number(word, 0, most).has_value();
}

} // namespace

std::optional<SentBytes> parse_transcript_line(std::string_view line)
{
    std::istringstream words{std::string(line)};
    std::string number;
    std::string seconds;
    std::string length;
    std::string word;
    words >> number >> seconds >> length >> word;
    const auto time = parse_time(seconds + 's');
    if (!is_number(number, MOST_EXCHANGES) || !time || !is_number(length, INT64_MAX) ||
        word != ">") {
        return std::nullopt;
    }
    SentBytes sent{*time, {}};
    while (words >> word && word != "<" && word != "!") {
        if (!add_bytes(sent.bytes, word)) {
            return std::nullopt;
        }
    }
    if (!words) {
        return std::nullopt;
    }
    if (word == "!") {
        sent.bytes.clear();
        return sent;
    }
    // A message without a buffer has a length, but nothing of it reached the wire.
    const auto whole = static_cast<int64_t>(sent.bytes.size());
    const bool fits = sent.bytes.empty() || parse_number(length, whole, whole).has_value();
    return fits ? std::optional(std::move(sent)) : std::nullopt;
}

std::string read_transcript(const std::string &path, std::vector<SentBytes> &sent)
{
    errno = 0;
    std::ifstream stream(path);
    int number = 0;
    for (std::string line; std::getline(stream, line);) {
        ++number;
        std::optional<SentBytes> exchange = parse_transcript_line(line);
        if (!exchange) {
            return path + text(": line %d is not a line of a transcript", number);
        }
        if (!exchange->bytes.empty()) {
            sent.push_back(std::move(*exchange));
        }
    }
    if (errno != 0 && number == 0) {
        return path + ": " + strerror(errno);
    }
    return sent.empty() ? path + ": it contains no exchange" : std::string();
}

} // namespace simulator
