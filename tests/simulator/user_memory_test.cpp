// Goal: what a program passes to its driver is copied as the kernel copies it: to the byte, and never
// from or to an address that the program does not have.
#include "simulator/driver/user_memory.hpp"

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>

namespace simulator
{

namespace
{

// Two pages, of which the program has the first.
class HalfMapped : public testing::Test
{
  protected:
    HalfMapped() { allow(PROT_READ | PROT_WRITE); }
    ~HalfMapped() override { munmap(pages, 2 * size); }

    void allow(int rights)
    {
        EXPECT_EQ(mprotect(pages, size, rights), 0);
        EXPECT_EQ(mprotect(pages + size, size, PROT_NONE), 0);
    }

    uint64_t at(size_t place) const { return user_address(pages) + place; }

    const size_t size = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    uint8_t *const pages = static_cast<uint8_t *>(
        mmap(nullptr, 2 * size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    std::vector<uint8_t> own = std::vector<uint8_t>(2 * size, 0x77);
};

TEST_F(HalfMapped, the_last_bytes_can_be_read_and_no_more)
{
    for (const size_t count : {1U, 2U, 7U, 8U, 9U, 4096U}) {
        memset(pages, static_cast<int>(count), size);
        EXPECT_TRUE(copy_from_user(own.data(), at(size - count), count)) << count;
        EXPECT_EQ(own[count - 1], count % 256);
        EXPECT_FALSE(copy_from_user(own.data(), at(size - count), count + 1)) << count;
    }
}

TEST_F(HalfMapped, exactly_what_is_told_is_written)
{
    for (const size_t count : {1U, 3U, 8U, 20U, 4000U}) {
        for (const size_t place : {size - count, size - count - 1, size_t{8}, size_t{13}}) {
            memset(pages, 0x11, size);
            EXPECT_TRUE(copy_to_user(at(place), own.data(), count));
            for (size_t i = 0; i < size; ++i) {
                const bool is_told = place <= i && i < place + count;
                ASSERT_EQ(pages[i], is_told ? 0x77 : 0x11) << count << " at " << place << ", " << i;
            }
        }
    }
}

TEST_F(HalfMapped, what_does_not_fit_is_written_as_far_as_it_does)
{
    memset(pages, 0x11, size);
    EXPECT_FALSE(copy_to_user(at(size - 5), own.data(), 6));
    EXPECT_EQ(pages[size - 6], 0x11);
    for (size_t i = size - 5; i < size; ++i) {
        EXPECT_EQ(pages[i], 0x77);
    }
}

TEST_F(HalfMapped, a_page_that_is_only_read_is_not_written)
{
    memset(pages, 0x11, size);
    allow(PROT_READ);
    EXPECT_FALSE(copy_to_user(at(16), own.data(), 1));
    EXPECT_EQ(pages[16], 0x11);
    EXPECT_TRUE(copy_from_user(own.data(), at(16), 1));
    EXPECT_EQ(own[0], 0x11);
}

TEST_F(HalfMapped, bytes_over_several_pages_are_copied_whole)
{
    ASSERT_EQ(mprotect(pages, 2 * size, PROT_READ | PROT_WRITE), 0);
    for (size_t i = 0; i < own.size(); ++i) {
        own[i] = static_cast<uint8_t>(i % 251);
    }
    EXPECT_TRUE(copy_to_user(at(1), own.data(), 2 * size - 1));
    std::vector<uint8_t> back(2 * size - 1);
    EXPECT_TRUE(copy_from_user(back.data(), at(1), back.size()));
    EXPECT_EQ(back, std::vector<uint8_t>(own.begin(), own.end() - 1));
}

TEST_F(HalfMapped, there_is_nothing_at_the_address_zero)
{
    for (const uint64_t address : {0U, 1U, 7U, 8U}) {
        EXPECT_FALSE(copy_from_user(own.data(), address, 1)) << address;
        EXPECT_FALSE(copy_to_user(address, own.data(), 1)) << address;
    }
    EXPECT_TRUE(copy_from_user(own.data(), 0, 0)) << "of no bytes nothing is read";
}

} // namespace

} // namespace simulator
