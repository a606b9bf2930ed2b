// Bytes in hexadecimal and as characters.
#include "stmctl/memory/hexdump.hpp"

#include <fmt/format.h>

#include <algorithm>

namespace stmctl
{

namespace
{

constexpr size_t BYTES_A_LINE = 16;

} // namespace

std::string hexdump(uint32_t address, std::span<const uint8_t> bytes)
{
    std::string text;
    while (!bytes.empty()) {
        const auto line = bytes.first(std::min(bytes.size(), BYTES_A_LINE));
        std::string numbers;
        std::string letters;
        for (const uint8_t byte : line) {
            numbers += fmt::format(" {:02X}", byte);
            letters += byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.';
        }
        text += fmt::format("{:04X} {:<{}}  |{}|\n", address, numbers, 3 * BYTES_A_LINE, letters);
        address += BYTES_A_LINE;
        bytes = bytes.subspan(line.size());
    }
    return text;
}

} // namespace stmctl
