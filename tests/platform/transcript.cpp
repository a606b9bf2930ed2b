// A dialogue as text.
#include "tests/platform/transcript.hpp"

#include <algorithm>

namespace
{

constexpr size_t SHORTEST_RUN = 4;
constexpr size_t LINES_BEFORE = 5;

std::string hex_byte(uint8_t byte)
{
    constexpr char DIGITS[] = "0123456789ABCDEF";
    return {DIGITS[byte >> 4], DIGITS[byte & 0x0F]};
}

size_t run_length(const Bytes &bytes, size_t begin)
{
    size_t end = begin;
    while (end < bytes.size() && bytes[end] == bytes[begin]) {
        ++end;
    }
    return end - begin;
}

std::string escaped(char c)
{
    switch (c) {
    case '\n':
        return "\\n";
    case '\t':
        return "\\t";
    case '"':
        return "\\\"";
    case '\\':
        return "\\\\";
    default:
        return c >= ' ' && c <= '~' ? std::string(1, c) : "\\x" + hex_byte(static_cast<uint8_t>(c));
    }
}

std::string exchange_line(const char *kind, const Bytes &sent)
{
    const std::string head = kind + std::to_string(sent.size()) + ":";
    return sent.empty() ? head : head + " " + hex(sent);
}

std::string line_or_end(const Transcript &lines, size_t index)
{
    return index < lines.size() ? lines[index] : "(nothing more)";
}

} // namespace

std::string hex(const Bytes &bytes)
{
    std::string text;
    for (size_t i = 0; i < bytes.size();) {
        const size_t run = run_length(bytes, i);
        if (i > 0) {
            text += ' ';
        }
        text += hex_byte(bytes[i]);
        if (run >= SHORTEST_RUN) {
            text += "*" + std::to_string(run);
        }
        i += run >= SHORTEST_RUN ? run : 1;
    }
    return text;
}

std::string quoted(const std::string &text)
{
    std::string inside;
    for (const char c : text) {
        inside += escaped(c);
    }
    return '"' + inside + '"';
}

std::string exchange(const Bytes &sent)
{
    return exchange_line("exchange ", sent);
}

std::string short_exchange(const Bytes &sent)
{
    return exchange_line("short exchange ", sent);
}

std::string say(const std::string &text, int flag)
{
    return "say " + std::to_string(flag) + " " + quoted(text);
}

Transcript times(int count, const Transcript &lines)
{
    Transcript all;
    for (int i = 0; i < count; ++i) {
        all.insert(all.end(), lines.begin(), lines.end());
    }
    return all;
}

Transcript joined(std::initializer_list<Transcript> parts)
{
    Transcript all;
    for (const Transcript &part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

testing::AssertionResult same(const Transcript &actual, const Transcript &expected)
{
    if (actual == expected) {
        return testing::AssertionSuccess();
    }
    size_t first = 0;
    while (first < std::min(actual.size(), expected.size()) && actual[first] == expected[first]) {
        ++first;
    }
    testing::AssertionResult result = testing::AssertionFailure();
    result << "the dialogue differs from line " << first + 1 << " on\n";
    for (size_t i = first - std::min(first, LINES_BEFORE); i < first; ++i) {
        result << "      both: " << actual[i] << "\n";
    }
    return result << "  expected: " << line_or_end(expected, first)
                  << "\n    actual: " << line_or_end(actual, first) << "\n"
                  << expected.size() << " lines expected, " << actual.size() << " happened";
}
