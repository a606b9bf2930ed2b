// The only table of all settings and queries.
#include "stmctl/settings/catalogue.hpp"

#include <fmt/format.h>

#include <algorithm>

namespace stmctl
{

namespace
{

constexpr Argument NONE = {nullptr, 0, 0, false};
constexpr Argument WORD = {"VALUE", 0, 0xFFFF, false};
constexpr Argument LONG = {"VALUE", 0, 0xFFFFFFFF, false};
constexpr Argument SCALED = {"VALUE", 0, 0xFFFF, true};
constexpr Argument FIRST = {"FIRST", 0, 0xFFFF, true};
constexpr Argument SECOND = {"SECOND", 0, 0xFFFF, true};
constexpr Argument MODE = {"MODE", 0, 3, false};
constexpr Argument SKIP = {"SKIP", 3, 32000, false};
constexpr Argument TIME = {"TIME", 0, 32000, false};

constexpr Answer BYTE_ANSWER = {"number, 0 to 255", 8, false};
constexpr Answer SHORT_ANSWER = {"signed number, 16 bits", 16, true};
constexpr Answer LONG_ANSWER = {"signed number, 32 bits", 32, true};
constexpr Answer TEXT_ANSWER = {"text", 0, false};
constexpr Answer NO_ANSWER = {"", 0, false};

constexpr Quantity query(const char *name, uint8_t code, const Answer &answers, PlainQuery call,
                         const char *function)
{
    return {name, code, NO_CHANNEL, NONE, NONE, answers, call, function};
}

constexpr Quantity query(const char *name, uint8_t code, int last_channel, const Answer &answers,
                         ChannelQuery call, const char *function)
{
    return {name, code, last_channel, NONE, NONE, answers, call, function};
}

constexpr Quantity setting(const char *name, uint8_t code, int last_channel, Argument first,
                           Argument second, Call call, const char *function)
{
    return {name, code, last_channel, first, second, NO_ANSWER, call, function};
}

#define OPERATION(function) function, #function

// clang-format off
constexpr Quantity CATALOGUE[] = {
    query("sampletime",       0x03,    SHORT_ANSWER, OPERATION(stm_query_short)),
    query("sampleskip",       0x04,    BYTE_ANSWER,  OPERATION(stm_query_byte_value_04)),
    query("interpolation",    0x05,    BYTE_ANSWER,  OPERATION(stm_query_byte_value_05)),
    query("adc-word-54",      0x06, 7, LONG_ANSWER,  OPERATION(stm_query_channel_06)),
    query("adc-word-55",      0x07, 7, LONG_ANSWER,  OPERATION(stm_query_channel_07)),
    query("channel-word-56",  0x08, 1, SHORT_ANSWER, OPERATION(stm_query_channel_08)),
    query("channel-word-57",  0x09, 1, SHORT_ANSWER, OPERATION(stm_query_channel_09)),
    query("channel-word-58",  0x0A, 1, SHORT_ANSWER, OPERATION(stm_query_channel_0A)),
    query("channel-word-59",  0x0B, 1, SHORT_ANSWER, OPERATION(stm_query_channel_0B)),
    query("channel-word-5a",  0x0C, 1, SHORT_ANSWER, OPERATION(stm_query_channel_0C)),
    query("channel-word-5b",  0x0D, 1, SHORT_ANSWER, OPERATION(stm_query_channel_0D)),
    query("be-word-97",       0x95, 1, SHORT_ANSWER, OPERATION(stm_query_channel_95)),
    query("be-word-98",       0x96, 1, SHORT_ANSWER, OPERATION(stm_query_channel_96)),
    query("adc-long",         0x99, 7, LONG_ANSWER,  OPERATION(stm_query_channel_99)),
    query("be-long",          0x9A, 7, LONG_ANSWER,  OPERATION(stm_query_channel_9A)),
    query("text-21",          0x21,    TEXT_ANSWER,  OPERATION(stm_query_text_21)),
    query("text-22",          0x22,    TEXT_ANSWER,  OPERATION(stm_query_text_22)),
    query("byte-73",          0x73,    BYTE_ANSWER,  OPERATION(stm_query_byte_value_73)),
    query("byte-c7",          0xC7,    BYTE_ANSWER,  OPERATION(stm_query_byte_value_C7)),
    query("long-a0",          0xA0,    LONG_ANSWER,  OPERATION(stm_query_long)),

    setting("sampletime",      0x51, NO_CHANNEL, TIME, NONE, OPERATION(stm_set_adc_sampletime)),
    setting("sampleskip",      0x52, NO_CHANNEL, SKIP, NONE, OPERATION(stm_set_adc_sampleskip)),
    setting("interpolation",   0x53, NO_CHANNEL, MODE, NONE, OPERATION(stm_set_interpolation_mode)),
    setting("adc-word-54",     0x54, 7, WORD,   NONE,   OPERATION(stm_set_adc_word_54)),
    setting("adc-word-55",     0x55, 7, WORD,   NONE,   OPERATION(stm_set_adc_word_55)),
    setting("channel-word-56", 0x56, 1, WORD,   NONE,   OPERATION(stm_set_channel_word_56)),
    setting("channel-word-57", 0x57, 1, WORD,   NONE,   OPERATION(stm_set_channel_word_57)),
    setting("channel-word-58", 0x58, 1, WORD,   NONE,   OPERATION(stm_set_channel_word_58)),
    setting("channel-word-59", 0x59, 1, WORD,   NONE,   OPERATION(stm_set_channel_word_59)),
    setting("channel-word-5a", 0x5A, 1, WORD,   NONE,   OPERATION(stm_set_channel_word_5A)),
    setting("channel-word-5b", 0x5B, 1, WORD,   NONE,   OPERATION(stm_set_channel_word_5B)),
    setting("be-word-97",      0x97, 1, WORD,   NONE,   OPERATION(stm_set_be_word_97)),
    setting("be-word-98",      0x98, 1, WORD,   NONE,   OPERATION(stm_set_be_word_98)),
    setting("adc-long",        0x9B, 7, LONG,   NONE,   OPERATION(stm_set_adc_u32)),
    setting("be-long",         0x9C, 1, LONG,   NONE,   OPERATION(stm_set_be_u32)),
    setting("adc-value",       0xC2, 7, SCALED, NONE,   OPERATION(stm_set_adc_value)),
    setting("adc-value-pair",  0xC3, 7, FIRST,  SECOND, OPERATION(stm_set_adc_value_pair)),
    setting("adc2-value",      0xC5, 1, SCALED, NONE,   OPERATION(stm_set_adc2_value)),
    setting("adc2-value-pair", 0xC6, 1, FIRST,  SECOND, OPERATION(stm_set_adc2_value_pair)),
};
// clang-format on

#undef OPERATION

} // namespace

std::span<const Quantity> catalogue()
{
    return CATALOGUE;
}

const Quantity *find_quantity(const std::string &name, Direction direction)
{
    const auto *found = std::ranges::find_if(CATALOGUE, [&](const Quantity &row) {
        return row.direction() == direction &&
               (name == row.name || name == fmt::format("0x{:02X}", row.code) ||
                name == fmt::format("0x{:02x}", row.code));
    });
    return found == std::end(CATALOGUE) ? nullptr : found;
}

std::vector<std::string> names_of(Direction direction)
{
    std::vector<std::string> names;
    for (const Quantity &row : CATALOGUE) {
        if (row.direction() == direction) {
            names.emplace_back(row.name);
        }
    }
    return names;
}

} // namespace stmctl
