// The settings of the wire, as the driver has them: its clock, and the mode and the word that the
// module leaves as other programs have set them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace stmctl
{

inline constexpr uint32_t EXPECTED_MODE = 0;
inline constexpr uint8_t EXPECTED_BITS_PER_WORD = 8;

// Of a file that is no SPI device none is there.
struct WireSettings {
    std::optional<uint32_t> mode; // 0 to 3, and flags above
    std::optional<uint32_t> speed_hz;
    std::optional<uint8_t> bits_per_word;
};

// Asks the driver, and nobody behind it: nothing goes over the wire.
WireSettings wire_settings_of(int descriptor);

// "3", "1 (lsb-first)"
std::string mode_words(uint32_t mode);

// Says once if exchanges go wrong because of the mode.
void tell_odd_mode(int descriptor);

} // namespace stmctl
