// Makes texts from the co-processor safe to show.
#include "stmctl/output/printable.hpp"

#include <fmt/format.h>

namespace stmctl
{

std::string printable(std::string_view text)
{
    std::string shown;
    for (const char letter : text) {
        const auto byte = static_cast<unsigned char>(letter);
        const bool plain = byte >= 0x20 && byte < 0x7F;
        shown += plain ? std::string(1, letter) : fmt::format("\\x{:02X}", byte);
    }
    return shown;
}

std::string printable_line(std::string_view text)
{
    return printable(text.substr(0, text.size() - (text.ends_with('\n') ? 1 : 0))) + '\n';
}

} // namespace stmctl
