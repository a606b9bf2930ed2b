// The properties of a terminal, and what is drawn on it.
#include "stmctl/output/terminal.hpp"

#include <fmt/format.h>

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>

namespace stmctl
{

bool is_terminal(int descriptor)
{
    return isatty(descriptor) != 0;
}

int terminal_width(int descriptor)
{
    constexpr int USUAL = 80;
    winsize size = {};
    return ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : USUAL;
}

std::string progress_bar(double share, int columns)
{
    constexpr int AROUND = 9; // brackets, blanks and the number
    const int inner = std::max(columns - AROUND, 1);
    const int full = static_cast<int>(std::clamp(share, 0.0, 1.0) * inner);
    const int percent = static_cast<int>(std::clamp(share, 0.0, 1.0) * 100);
    return fmt::format("[{:#<{}}{:.<{}}] {:3} %", "", full, "", inner - full, percent);
}

std::string clock_words(double seconds)
{
    const long whole = std::lround(std::clamp(seconds, 0.0, 359999.0));
    const long hours = whole / 3600;
    const long minutes = whole / 60 % 60;
    return hours > 0 ? fmt::format("{}:{:02}:{:02}", hours, minutes, whole % 60)
                     : fmt::format("{}:{:02}", minutes, whole % 60);
}

} // namespace stmctl
