// Formatted text as a string.
#include "simulator/text.hpp"

#include <cstdarg>
#include <cstdio>

namespace simulator
{

std::string text(const char *format, ...)
{
    char buffer[1024];
    va_list arguments;
    va_start(arguments, format);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): va_start goes unrecognised here
    vsnprintf(buffer, sizeof(buffer), format, arguments);
    va_end(arguments);
    return buffer;
}

} // namespace simulator
