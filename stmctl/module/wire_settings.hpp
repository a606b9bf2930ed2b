// The settings of the SPI link, as the driver has them: the clock, and the mode and word size,
// which the module leaves as other programs have set them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace stmctl
{

inline constexpr uint32_t EXPECTED_MODE = 0;
inline constexpr uint8_t EXPECTED_BITS_PER_WORD = 8;

// A file that is not an SPI device has none of them.
struct WireSettings {
    std::optional<uint32_t> mode; // 0 to 3, and flags above
    std::optional<uint32_t> speed_hz;
    std::optional<uint8_t> bits_per_word;
};

// Asks the driver only: nothing is sent to the co-processor.
WireSettings wire_settings_of(int descriptor);

// "3", "1 (lsb-first)"
std::string mode_words(uint32_t mode);

// Warns once if the mode makes exchanges fail.
void tell_odd_mode(int descriptor);

} // namespace stmctl
