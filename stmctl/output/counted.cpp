// A number of things as text.
#include "stmctl/output/counted.hpp"

#include <fmt/format.h>

namespace stmctl
{

std::string counted(uint64_t number, const char *one, const char *several)
{
    return fmt::format("{} {}", number, number == 1 ? one : several);
}

} // namespace stmctl
