// Numbers to text in base 10.
#include "bench/harness.hpp"
#include "bench/yardstick/digit_loop.hpp"
#include "link/stm_com_funcs.h"

#include <charconv>
#include <cstdio>
#include <cstring>

namespace bench
{

namespace
{

constexpr size_t TEXT_SIZE = 34;

void with_ours(int32_t value, char *text)
{
    stm_itoa(value, text, 10);
}

void with_to_chars(int32_t value, char *text)
{
    *std::to_chars(text, text + TEXT_SIZE - 1, value).ptr = '\0';
}

void with_digit_loop(int32_t value, char *text)
{
    digit_loop(value, text, 10);
}

void with_snprintf(int32_t value, char *text)
{
    snprintf(text, TEXT_SIZE, "%d", value);
}

// Each contender has a loop of its own, so that the compiler may inline what it can.
template <void (*convert)(int32_t value, char *text)>
void add_contender(const char *contender)
{
    for (const DataSet &set : data_sets()) {
        add(named("itoa", set, contender), NUMBER_COUNT, [&set] {
            char text[TEXT_SIZE];
            for (const int32_t number : set.numbers) {
                convert(number, text);
                benchmark::DoNotOptimize(text);
                benchmark::ClobberMemory();
            }
        });
    }
}

bool converted_alike(int32_t number)
{
    char expected[TEXT_SIZE];
    char text[TEXT_SIZE];
    with_snprintf(number, expected);
    for (const auto convert : {with_ours, with_to_chars, with_digit_loop}) {
        convert(number, text);
        if (strcmp(text, expected) != 0) {
            return false;
        }
    }
    return true;
}

} // namespace

bool contenders_agree()
{
    bool alike = true;
    for (const DataSet &set : data_sets()) {
        for (const int32_t number : set.numbers) {
            alike = alike && converted_alike(number);
        }
    }
    return alike;
}

void register_contenders()
{
    add_contender<with_ours>("ours");
    add_contender<with_to_chars>("to_chars");
    add_contender<with_digit_loop>("digit_loop");
    add_contender<with_snprintf>("snprintf");
}

} // namespace bench
