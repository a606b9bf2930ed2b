// Results as JSON, for scripts.
#include "stmctl/output/json.hpp"

#include <fmt/format.h>

namespace stmctl
{

namespace
{

// The length of the UTF-8 character at the start of a text; 0 if there is none.
size_t utf8_length(std::string_view text)
{
    const auto first = static_cast<uint8_t>(text[0]);
    const size_t length = first < 0x80                    ? 1
                          : first >= 0xC2 && first < 0xE0 ? 2
                          : first >= 0xE0 && first < 0xF0 ? 3
                          : first >= 0xF0 && first < 0xF5 ? 4
                                                          : 0;
    if (length == 0 || text.size() < length) {
        return 0;
    }
    for (const char follower : text.substr(1, length - 1)) {
        if ((static_cast<uint8_t>(follower) & 0xC0) != 0x80) {
            return 0;
        }
    }
    // Overlong forms, surrogates, and numbers beyond the last character.
    const auto second = static_cast<uint8_t>(length > 1 ? text[1] : 0);
    const bool bad = (first == 0xE0 && second < 0xA0) || (first == 0xED && second >= 0xA0) ||
                     (first == 0xF0 && second < 0x90) || (first == 0xF4 && second >= 0x90);
    return bad ? 0 : length;
}

std::string escaped(uint8_t byte)
{
    switch (byte) {
    case '"':
        return "\\\"";
    case '\\':
        return "\\\\";
    case '\n':
        return "\\n";
    default:
        return fmt::format("\\u{:04x}", byte);
    }
}

bool stands_for_itself(std::string_view character)
{
    const auto byte = static_cast<uint8_t>(character[0]);
    return byte >= 0x20 && byte != '"' && byte != '\\' && byte != 0x7F;
}

} // namespace

std::string json_string(std::string_view text)
{
    std::string json = "\"";
    while (!text.empty()) {
        const size_t length = utf8_length(text);
        const std::string_view character = text.substr(0, length == 0 ? 1 : length);
        if (length > 0 && stands_for_itself(character)) {
            json += character;
        } else {
            json += escaped(static_cast<uint8_t>(character[0]));
        }
        text.remove_prefix(character.size());
    }
    return json + '"';
}

void JsonObject::add_json(std::string_view name, std::string_view json)
{
    members_ += fmt::format("{}{}:{}", members_.empty() ? "" : ",", json_string(name), json);
}

void JsonObject::add(std::string_view name, std::string_view text)
{
    add_json(name, json_string(text));
}

void JsonObject::add(std::string_view name, bool value)
{
    add_json(name, value ? "true" : "false");
}

void JsonObject::add(std::string_view name, int64_t number)
{
    add_json(name, fmt::format("{}", number));
}

void JsonObject::add(std::string_view name, double number, int decimals)
{
    add_json(name, fmt::format("{:.{}f}", number, decimals));
}

void JsonObject::add_null(std::string_view name)
{
    add_json(name, "null");
}

void JsonArray::add_json(std::string_view json)
{
    elements_ += elements_.empty() ? "" : ",";
    elements_ += json;
}

} // namespace stmctl
