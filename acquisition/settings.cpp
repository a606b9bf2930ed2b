// The settings: one row each, one line each, and one algorithm for all of them. An argument is
// tested on the host, laid out in six parameter bytes, and sent in one transaction.
#include "acquisition/code_table.hpp"
#include "link/bytes.hpp"
#include "link/protocol.hpp"
#include "link/report.hpp"
#include "link/stm_com_funcs.h"

#include <cfloat>

using namespace stm;

namespace
{

// The part of the argument that the range test covers. Kept: byte and word tests accept arguments
// that are far out of range, as long as their low bits are in it.
enum class Tested { low_byte, low_word, whole };

struct Setting {
    uint8_t code;
    Tested tested;
    uint32_t least;
    uint32_t most;
    const char *noun;
};

// clang-format off
constexpr Setting SETTINGS[] = {
    {0xC5, Tested::low_byte, 0,     1, "ADC channel"},
    {0xC2, Tested::low_byte, 0,     7, "ADC channel"},
    {0xC6, Tested::low_byte, 0,     1, "ADC channel"},
    {0xC3, Tested::low_byte, 0,     7, "ADC channel"},
    {0x9C, Tested::whole,    0,     1, "BE channel"},
    {0x9B, Tested::whole,    0,     7, "ADC channel"},
    {0x97, Tested::whole,    0,     1, "BE channel"},
    {0x98, Tested::whole,    0,     1, "BE channel"},
    {0x54, Tested::whole,    0,     7, "ADC channel"},
    {0x55, Tested::whole,    0,     7, "ADC channel"},
    {0x56, Tested::whole,    0,     1, "channel"},
    {0x57, Tested::whole,    0,     1, "channel"},
    {0x58, Tested::whole,    0,     1, "channel"},
    {0x59, Tested::whole,    0,     1, "channel"},
    {0x5A, Tested::whole,    0,     1, "channel"},
    {0x5B, Tested::whole,    0,     1, "channel"},
    {0x53, Tested::whole,    0,     3, "interpolation mode"},
    {0x52, Tested::whole,    3, 32000, "ADC sampleskip"},
    {0x51, Tested::low_word, 0, 32000, "ADC sampletime"},
};
// clang-format on

consteval bool ranges_are_sound()
{
    for (const Setting &row : SETTINGS) {
        const uint32_t largest = row.tested == Tested::low_byte ? 0xFF : 0xFFFF; // 16 bits travel
        if (row.least > row.most || row.most > largest || row.noun == nullptr) {
            return false;
        }
    }
    return true;
}
static_assert(codes_are_unique(SETTINGS), "a setting's code stands twice");
static_assert(ranges_are_sound(), "a setting's range cannot be met, or has no noun");

consteval const Setting &setting(uint8_t code)
{
    return row_of(SETTINGS, code);
}

struct Parameters {
    uint8_t bytes[STM_PARAM_BYTES];
};

Parameters argument_alone(int argument)
{
    return {{low_byte(argument)}};
}

Parameters word_alone(int word)
{
    return {{low_byte(word), high_byte(word)}};
}

Parameters with_word(int channel, uint32_t word)
{
    return {{low_byte(channel), low_byte(word), high_byte(word)}};
}

Parameters with_two_words(int channel, uint32_t first, uint32_t second)
{
    return {{low_byte(channel), low_byte(first), high_byte(first), low_byte(second),
             high_byte(second)}};
}

Parameters with_u32(int channel, uint32_t value)
{
    return {{low_byte(channel), low_byte(value), high_byte(value), low_byte(value >> 16),
             high_byte(value >> 16)}};
}

uint32_t tested_part(Tested tested, int argument)
{
    switch (tested) {
    case Tested::low_byte:
        return static_cast<uint32_t>(argument) & 0xFF;
    case Tested::low_word:
        return static_cast<uint32_t>(argument) & 0xFFFF;
    case Tested::whole:
        break;
    }
    return static_cast<uint32_t>(argument); // makes negative numbers too large
}

int32_t set(const Setting &row, int argument, const Parameters &params, StmPollFn poll,
            StmOutputFn output)
{
    if (tested_part(row.tested, argument) - row.least > row.most - row.least) {
        return report_message(output, "Wrong %s (%d)\n", row.noun, argument);
    }
    return stm_param_command(row.code, params.bytes, poll, output);
}

} // namespace

uint32_t stm_scale100(float value)
{
    static_assert(FLT_EVAL_METHOD == 0, "the product is one of single precision");
    constexpr float TOO_LARGE = 4294967296.0F; // 2^32
    const float product = value * 100.0F;
    if (!(product > 0.0F)) {
        return 0; // also for NaN
    }
    return product < TOO_LARGE ? static_cast<uint32_t>(product) : UINT32_MAX;
}

int32_t stm_set_adc2_value(int channel, float value, StmPollFn poll, StmOutputFn output)
{
    return set(setting(0xC5), channel, with_word(channel, stm_scale100(value)), poll, output);
}

int32_t stm_set_adc_value(int channel, float value, StmPollFn poll, StmOutputFn output)
{
    return set(setting(0xC2), channel, with_word(channel, stm_scale100(value)), poll, output);
}

int32_t stm_set_adc2_value_pair(int channel, float first, float second, StmPollFn poll,
                                StmOutputFn output)
{
    return set(setting(0xC6), channel,
               with_two_words(channel, stm_scale100(first), stm_scale100(second)), poll, output);
}

int32_t stm_set_adc_value_pair(int channel, float first, float second, StmPollFn poll,
                               StmOutputFn output)
{
    return set(setting(0xC3), channel,
               with_two_words(channel, stm_scale100(first), stm_scale100(second)), poll, output);
}

int32_t stm_set_be_u32(int channel, uint32_t value, StmPollFn poll, StmOutputFn output)
{
    return set(setting(0x9C), channel, with_u32(channel, value), poll, output);
}

int32_t stm_set_adc_u32(int channel, uint32_t value, StmPollFn poll, StmOutputFn output)
{
    return set(setting(0x9B), channel, with_u32(channel, value), poll, output);
}

int32_t stm_set_be_word_97(int channel, uint16_t value, StmPollFn poll, StmOutputFn output)
{
    return set(setting(0x97), channel, with_word(channel, value), poll, output);
}

int32_t stm_set_be_word_98(int channel, uint16_t value, StmPollFn poll, StmOutputFn output)
{
    return set(setting(0x98), channel, with_word(channel, value), poll, output);
}

int32_t stm_set_adc_word_54(int channel, uint16_t value, StmPollFn poll, StmOutputFn output)
{
    return set(setting(0x54), channel, with_word(channel, value), poll, output);
}

int32_t stm_set_adc_word_55(int channel, uint16_t value, StmPollFn poll, StmOutputFn output)
{
    return set(setting(0x55), channel, with_word(channel, value), poll, output);
}

int32_t stm_set_channel_word_56(int channel, uint16_t value, StmPollFn poll, StmOutputFn output)
{
    return set(setting(0x56), channel, with_word(channel, value), poll, output);
}

int32_t stm_set_channel_word_57(int channel, uint16_t value, StmPollFn poll, StmOutputFn output)
{
    return set(setting(0x57), channel, with_word(channel, value), poll, output);
}

int32_t stm_set_channel_word_58(int channel, uint16_t value, StmPollFn poll, StmOutputFn output)
{
    return set(setting(0x58), channel, with_word(channel, value), poll, output);
}

int32_t stm_set_channel_word_59(int channel, uint16_t value, StmPollFn poll, StmOutputFn output)
{
    return set(setting(0x59), channel, with_word(channel, value), poll, output);
}

int32_t stm_set_channel_word_5A(int channel, uint16_t value, StmPollFn poll, StmOutputFn output)
{
    return set(setting(0x5A), channel, with_word(channel, value), poll, output);
}

int32_t stm_set_channel_word_5B(int channel, uint16_t value, StmPollFn poll, StmOutputFn output)
{
    return set(setting(0x5B), channel, with_word(channel, value), poll, output);
}

int32_t stm_set_interpolation_mode(int mode, StmPollFn poll, StmOutputFn output)
{
    return set(setting(0x53), mode, argument_alone(mode), poll, output);
}

int32_t stm_set_adc_sampleskip(int skip, StmPollFn poll, StmOutputFn output)
{
    return set(setting(0x52), skip, word_alone(skip), poll, output);
}

int32_t stm_set_adc_sampletime(int time, StmPollFn poll, StmOutputFn output)
{
    return set(setting(0x51), time, word_alone(time), poll, output);
}
