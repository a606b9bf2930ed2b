// The settings of the SPI link, as the driver has them.
#include "stmctl/module/wire_settings.hpp"

#include "stmctl/output/output.hpp"

#include <fmt/format.h>

#include <linux/spi/spidev.h>
#include <sys/ioctl.h>

#include <utility>

namespace stmctl
{

namespace
{

struct Flag {
    uint32_t bit;
    const char *name; // as in the kernel's device trees
};

constexpr Flag FLAGS[] = {
    {SPI_CS_HIGH, "cs-high"}, {SPI_LSB_FIRST, "lsb-first"}, {SPI_3WIRE, "3wire"},
    {SPI_LOOP, "loopback"},   {SPI_NO_CS, "no-cs"},
};

template <typename Number>
std::optional<Number> ask(int descriptor, unsigned long request)
{
    Number number = 0;
    return ioctl(descriptor, request, &number) == 0 ? std::optional(number) : std::nullopt;
}

// Kernels before 3.15 only know the eight lowest bits of the mode.
std::optional<uint32_t> mode_of(int descriptor)
{
    const std::optional<uint32_t> mode = ask<uint32_t>(descriptor, SPI_IOC_RD_MODE32);
    if (mode) {
        return mode;
    }
    const std::optional<uint8_t> lowest = ask<uint8_t>(descriptor, SPI_IOC_RD_MODE);
    return lowest ? std::optional<uint32_t>(*lowest) : std::nullopt;
}

} // namespace

WireSettings wire_settings_of(int descriptor)
{
    return {mode_of(descriptor), ask<uint32_t>(descriptor, SPI_IOC_RD_MAX_SPEED_HZ),
            ask<uint8_t>(descriptor, SPI_IOC_RD_BITS_PER_WORD)};
}

std::string mode_words(uint32_t mode)
{
    constexpr uint32_t CLOCK_BITS = SPI_CPHA | SPI_CPOL;
    uint32_t unnamed = mode & ~CLOCK_BITS;
    std::string names;
    for (const Flag &flag : FLAGS) {
        if ((mode & flag.bit) != 0) {
            names += fmt::format("{}{}", names.empty() ? "" : ", ", flag.name);
            unnamed &= ~flag.bit;
        }
    }
    if (unnamed != 0) {
        names += fmt::format("{}0x{:X}", names.empty() ? "" : ", ", unnamed);
    }
    const std::string clock = fmt::format("{}", mode & CLOCK_BITS);
    return names.empty() ? clock : fmt::format("{} ({})", clock, names);
}

void tell_odd_mode(int descriptor)
{
    static bool told = false;
    const uint32_t mode = mode_of(descriptor).value_or(EXPECTED_MODE);
    if (mode != EXPECTED_MODE && !std::exchange(told, true)) {
        say(fmt::format("the SPI mode is {}, left by another program; the co-processor expects {}, "
                        "see stmctl --help access",
                        mode_words(mode), EXPECTED_MODE));
    }
}

} // namespace stmctl
