// Goal: what the read-out makes of a slot that the writer fills while it is read: the checksum
// shows halves of two records, but not those that come after it was found right.
#include "tests/ringbuffer/reader_fixture.hpp"

#include <cstring>
#include <utility>

namespace
{

std::function<void()> before_checksum;
std::function<void()> after_checksum;

// The fixture: the writer comes at the next checksum, once.
class OvertakenReadout : public RingReadout
{
  protected:
    ~OvertakenReadout() override
    {
        EXPECT_TRUE(before_checksum == nullptr && after_checksum == nullptr);
        before_checksum = after_checksum = nullptr;
    }
    OvertakenReadout() = default;
    OvertakenReadout(const OvertakenReadout &) = delete;
    OvertakenReadout &operator=(const OvertakenReadout &) = delete;

    // The first half of a record, which has its number and none of its checksum.
    void half_fill(size_t slot, int number)
    {
        const Bytes record = good_record(number);
        std::copy_n(record.begin(), 24, segment.begin() + static_cast<std::ptrdiff_t>(slot * 48));
    }
};

void act(std::function<void()> &action)
{
    if (action != nullptr) {
        std::exchange(action, nullptr)();
    }
}

} // namespace

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" {

uint16_t __real_stm_crc16(const uint8_t *data, uint16_t length);

uint16_t __wrap_stm_crc16(const uint8_t *data, uint16_t length)
{
    act(before_checksum);
    const uint16_t checksum = __real_stm_crc16(data, length);
    act(after_checksum);
    return checksum;
}

} // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

TEST_F(OvertakenReadout, rejects_a_slot_that_is_half_filled_and_reads_the_rest_with_the_next_batch)
{
    in_sleep(1, [this] {
        put_good(1, 4);
        before_checksum = [this] { half_fill(1, 162); };
    });
    in_sleep(3, [] { put_good(5, 5); });
    read(5);
    EXPECT_EQ(texts.size(), 2U);
    EXPECT_EQ(texts[0].find("say 0 \"Wrong checksum detected (crc = "), 0U);
    EXPECT_EQ(value(COUNT), 1);
}

TEST_F(OvertakenReadout, rejects_the_slot_at_the_mark_while_the_writer_fills_it)
{
    in_sleep(1, [this] {
        put_good(1, 1);
        before_checksum = [this] { half_fill(1, 2); };
    });
    read(CSV);
    ASSERT_EQ(messages.size(), 3U);
    EXPECT_EQ(messages[1].find("say 0 \"Wrong checksum detected (crc = "), 0U);
    EXPECT_EQ(messages[1].find("F740"), std::string::npos) << "of an empty slot";
}

TEST_F(OvertakenReadout, rejects_a_slot_in_which_a_writer_has_died)
{
    in_sleep(1, [this] {
        put_good(1, 330);
        half_fill(10, 331);
        RingBuffer_Open("w");
        put_good(332, 332);
    });
    read(CSV);
    ASSERT_EQ(messages.size(), 10U);
    EXPECT_EQ(messages[8].find("say 0 \"Wrong checksum detected (crc = "), 0U);
    messages.erase(messages.begin() + 8);
    EXPECT_EQ(messages, joined({{HEADER}, csv_lines(324, 330), {TIMEOUT}}));
}

TEST_F(OvertakenReadout, shows_halves_of_two_records_if_they_come_behind_the_checksum)
{
    in_sleep(1, [this] {
        put_good(1, 3);
        after_checksum = [this] { half_fill(1, 162); };
    });
    read(CSV);
    std::string torn = csv_line(162);
    const std::string old = csv_line(2);
    torn.replace(torn.rfind(";9;"), std::string::npos, old.substr(old.rfind(";9;")));
    EXPECT_TRUE(
        happened(joined({{HEADER}, idle(1), {torn}, csv_lines(3, 3), idle(4999), {TIMEOUT}})));
}

TEST_F(OvertakenReadout, rejects_a_whole_record_that_takes_another_s_place_during_the_check)
{
    in_sleep(1, [] {
        put_good(1, 3);
        after_checksum = [] { put_good(4, 162); };
    });
    read(CSV);
    ASSERT_GT(messages.size(), 1U);
    EXPECT_EQ(messages[1].find("say 0 \"Wrong checksum detected (crc = "), 0U);
    messages.erase(messages.begin(), messages.begin() + 2);
    EXPECT_EQ(messages, joined({csv_lines(5, 162), {TIMEOUT}}));
}
