// The reporting channels.
#include "link/report.hpp"

#include "link/link.hpp"

#include <cstdarg>
#include <cstdio>

namespace stm
{

void report_errno(const char *text)
{
    perror(text);
}

int report_message(StmOutputFn output, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(stm_link.message, sizeof(stm_link.message), format, arguments);
    va_end(arguments);
    return output(stm_link.message, 0);
}

void report_diagnostic(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    vfprintf(stderr, format, arguments);
    va_end(arguments);
}

} // namespace stm
