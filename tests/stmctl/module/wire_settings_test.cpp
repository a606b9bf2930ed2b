// Goal: the settings of the link are those that the driver reports, even a driver that knows fewer
// requests.
#include "stmctl/module/wire_settings.hpp"

#include <gtest/gtest.h>

#include <linux/spi/spidev.h>

#include <cstdarg>
#include <cstring>

using namespace stmctl;

namespace
{

constexpr int DESCRIPTOR = 7;

struct Driver {
    bool is_there = true;
    bool knows_long_modes = true;
    uint32_t mode = SPI_MODE_3;
};

Driver driver;

template <typename Number>
int tell(void *place, Number number)
{
    memcpy(place, &number, sizeof(number));
    return 0;
}

int answer(unsigned long request, void *place)
{
    if (!driver.is_there || (request == SPI_IOC_RD_MODE32 && !driver.knows_long_modes)) {
        return -1;
    }
    switch (request) {
    case SPI_IOC_RD_MODE32:
        return tell(place, driver.mode);
    case SPI_IOC_RD_MODE:
        return tell(place, static_cast<uint8_t>(driver.mode));
    case SPI_IOC_RD_MAX_SPEED_HZ:
        return tell(place, uint32_t{500'000});
    case SPI_IOC_RD_BITS_PER_WORD:
        return tell(place, uint8_t{16});
    default:
        return -1;
    }
}

} // namespace

extern "C" int __wrap_ioctl(int fd, unsigned long request, ...) // NOLINT: the linker's name
{
    va_list arguments;
    va_start(arguments, request);
    void *place = va_arg(arguments, void *);
    va_end(arguments);
    EXPECT_EQ(fd, DESCRIPTOR);
    return answer(request, place);
}

namespace
{

TEST(WireSettings, are_those_of_the_driver)
{
    driver = {};
    driver.mode = SPI_MODE_1 | SPI_TX_DUAL; // beyond the lowest eight bits
    const WireSettings settings = wire_settings_of(DESCRIPTOR);
    EXPECT_EQ(settings.mode, 0x101U);
    EXPECT_EQ(settings.speed_hz, 500'000U);
    EXPECT_EQ(settings.bits_per_word, 16);
}

TEST(WireSettings, of_an_old_kernel_have_the_lowest_bits_of_the_mode)
{
    driver = {};
    driver.knows_long_modes = false;
    EXPECT_EQ(wire_settings_of(DESCRIPTOR).mode, 3U);
    driver.mode = SPI_MODE_0 | SPI_CS_HIGH;
    EXPECT_EQ(wire_settings_of(DESCRIPTOR).mode, 4U);
}

TEST(SpiMode, is_told_with_the_names_of_its_flags)
{
    EXPECT_EQ(mode_words(0), "0");
    EXPECT_EQ(mode_words(3), "3");
    EXPECT_EQ(mode_words(SPI_MODE_1 | SPI_LSB_FIRST), "1 (lsb-first)");
    EXPECT_EQ(mode_words(SPI_MODE_2 | SPI_CS_HIGH | SPI_3WIRE | SPI_LOOP | SPI_NO_CS),
              "2 (cs-high, 3wire, loopback, no-cs)");
    EXPECT_EQ(mode_words(SPI_TX_DUAL), "0 (0x100)");
    EXPECT_EQ(mode_words(SPI_CS_HIGH | SPI_TX_DUAL), "0 (cs-high, 0x100)");
}

TEST(WireSettings, are_none_where_no_driver_answers)
{
    driver = {};
    driver.is_there = false;
    const WireSettings settings = wire_settings_of(DESCRIPTOR);
    EXPECT_FALSE(settings.mode.has_value());
    EXPECT_FALSE(settings.speed_hz.has_value());
    EXPECT_FALSE(settings.bits_per_word.has_value());
}

} // namespace
