// Goal: C++ programs see the same functions, with C linkage, and the header stands alone.
#include "link/stm_com_funcs.h"

#include <gtest/gtest.h>

#include <type_traits>

// Declared again as a C++ program would that has no header: a conflict in type or linkage does not
// compile.
// NOLINTBEGIN(readability-redundant-declaration)
extern "C" {
void stm_open();
void stm_sync_transfer();
void stm_close();
int stm_start_bootloader();
int stm_reset();
int stm_query_byte(std::uint8_t, std::uint8_t *);
int stm_print_booter_version(int (*)(char *), int (*)(const char *, int));
int stm_print_state(int (*)(char *), int (*)(const char *, int));
int stm_wait_for_ack(int (*)(char *), int (*)(const char *, int));
std::uint16_t stm_crc16(const std::uint8_t *, std::uint16_t);
std::int32_t stm_file_size(std::FILE *);
void stm_download_image(std::FILE *, std::uint32_t, int (*)(char *), int (*)(const char *, int));
}
// NOLINTEND(readability-redundant-declaration)

namespace
{

static_assert(std::is_same_v<StmPollFn, int (*)(char *)>);
static_assert(std::is_same_v<StmOutputFn, int (*)(const char *, int)>);
static_assert(std::is_same_v<decltype(stm_open), void()>);
static_assert(std::is_same_v<decltype(stm_sync_transfer), void()>);
static_assert(std::is_same_v<decltype(stm_close), void()>);
static_assert(std::is_same_v<decltype(stm_start_bootloader), int()>);
static_assert(std::is_same_v<decltype(stm_reset), int()>);
static_assert(std::is_same_v<decltype(stm_query_byte), int(uint8_t, uint8_t *)>);
static_assert(std::is_same_v<decltype(stm_print_booter_version), int(StmPollFn, StmOutputFn)>);
static_assert(std::is_same_v<decltype(stm_print_state), int(StmPollFn, StmOutputFn)>);
static_assert(std::is_same_v<decltype(stm_wait_for_ack), int(StmPollFn, StmOutputFn)>);
static_assert(std::is_same_v<decltype(stm_crc16), uint16_t(const uint8_t *, uint16_t)>);
static_assert(std::is_same_v<decltype(stm_file_size), int32_t(FILE *)>);
static_assert(
    std::is_same_v<decltype(stm_download_image), void(FILE *, uint32_t, StmPollFn, StmOutputFn)>);

} // namespace

TEST(Header, names_the_line_and_the_line_that_stops)
{
    EXPECT_EQ(STM_LINE_SIZE, 50);
    EXPECT_STREQ(STM_STOP_LINE, "s\n");
    EXPECT_LE(sizeof(STM_STOP_LINE), static_cast<size_t>(STM_LINE_SIZE));
}

TEST(Header, names_the_two_places_in_the_flash)
{
    EXPECT_EQ(STM_FLASH_FIRMWARE_ADDR, 0x08004000U);
    EXPECT_EQ(STM_FLASH_BOOTER_ADDR, 0x08000000U);
}

TEST(Header, functions_are_callable)
{
    EXPECT_EQ(stm_crc16(nullptr, 0), 0);
    EXPECT_EQ(stm_file_size(nullptr), -1);
}
