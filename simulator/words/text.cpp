// Formatted text as a string.
#include "simulator/words/text.hpp"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace simulator
{

std::string text(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    char *formatted = nullptr;
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): va_start goes unrecognised here
    const int length = vasprintf(&formatted, format, arguments);
    va_end(arguments);
    std::string result(length < 0 ? "" : formatted);
    if (length >= 0) {
        free(formatted);
    }
    return result;
}

} // namespace simulator
