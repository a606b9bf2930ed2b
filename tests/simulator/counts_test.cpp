// Goal: the board's own count of its records is the truth, whatever becomes of them.
#include "tests/simulator/stream_wire.hpp"

namespace simulator
{

namespace
{

class CountsOfRecords : public StreamWire
{
  protected:
    Counts counts() const
    {
        const Tally tally = coprocessor->tally();
        Counts all = tally.past;
        all += tally.present;
        EXPECT_EQ(all.measured, all.delivered + all.overrun + all.discarded + all.buffered);
        return all;
    }

    // measured, delivered, begun, overrun, discarded, buffered, blocks
    void expect(const Counts &expected) const { EXPECT_EQ(words_of(counts()), words_of(expected)); }

    static std::string words_of(const Counts &counts)
    {
        return describe_life(1, {nanoseconds(0), counts}) + std::to_string(counts.buffered);
    }

    void power_on_with_words(std::initializer_list<const char *> faults)
    {
        Behaviour behaviour;
        std::string reason;
        for (const char *words : faults) {
            behaviour.faults.push_back(parse_fault(words, reason).value());
        }
        now = nanoseconds(0);
        power_on({}, behaviour);
    }
};

TEST_F(CountsOfRecords, begin_with_nothing)
{
    expect({0, 0, 0, 0, 0, 0, 0});
    pass(seconds(1));
    poll_stream();
    expect({0, 0, 0, 0, 0, 0, 0});
}

TEST_F(CountsOfRecords, tell_what_waits_and_what_is_delivered)
{
    begin_stream(BASE);
    pass(milliseconds(100));
    request(BASE);
    expect({100, 0, 0, 0, 0, 100, 0});
    const Bytes found = poll_stream();
    expect({100, 0, 73, 0, 0, 100, 1});
    size_t announced = 0;
    fetch_behind(found, announced);
    expect({100, 73, 73, 0, 0, 27, 1});
    read_stream(BASE);
    expect({100, 100, 100, 0, 0, 0, 2});
}

TEST_F(CountsOfRecords, tell_what_a_full_buffer_has_lost)
{
    begin_stream(TEMPERATURE);
    pass(milliseconds(300));
    read_stream(TEMPERATURE);
    expect({300, 85, 85, 45, 0, 170, 1});
}

TEST_F(CountsOfRecords, tell_blocks_that_were_not_fetched_to_their_end)
{
    begin_stream(BASE);
    pass(milliseconds(10));
    request(BASE);
    poll_stream();
    request(BASE);
    expect({10, 0, 10, 0, 10, 0, 1});
    send(frame(BASE.code, 4));
    wait();
    expect({14, 0, 14, 0, 10, 4, 2});
    fetch_big_endian_length();
    send({0x91});
    expect({14, 0, 14, 0, 14, 0, 2});
}

TEST_F(CountsOfRecords, tell_blocks_that_were_asked_for_by_their_number)
{
    EXPECT_EQ(read_block(BASE, 5).size(), 5U * 56);
    expect({5, 5, 5, 0, 0, 0, 1});
    EXPECT_EQ(read_block(BASE, 0).size(), 0U);
    expect({5, 5, 5, 0, 0, 0, 2});
}

TEST_F(CountsOfRecords, tell_what_is_thrown_away_when_measuring_ends_or_begins_anew)
{
    begin_stream(BASE);
    pass(milliseconds(5));
    begin_stream(OMEGA);
    expect({5, 0, 0, 0, 5, 0, 0});
    pass(milliseconds(6));
    send(Bytes(4096, 0x66));
    expect({11, 0, 0, 0, 11, 0, 0});
    pass(seconds(1));
    send({0x91});
    expect({11, 0, 0, 0, 11, 0, 0});
    begin_stream(OMEGA);
    pass(milliseconds(7));
    read_block(OMEGA, 2);
    expect({20, 2, 2, 0, 18, 0, 1});
}

TEST_F(CountsOfRecords, tell_only_whole_records_of_a_damaged_block_as_delivered)
{
    power_on_with_words(
        {"short@1=57", "block-length@2=111", "padded@3", "block-length@4=0", "short@5=168"});
    for (int block = 1; block <= 5; ++block) {
        size_t announced = 0;
        read_block(BASE, 3, announced);
    }
    expect({15, 1 + 1 + 3, 15, 0, 2 + 2 + 3 + 3, 0, 5});
}

TEST_F(CountsOfRecords, are_kept_for_each_life_between_restarts)
{
    power_on_with_words({"restart@t=100ms=application", "restart@t=150ms=application"});
    begin_stream(BASE);
    pass(milliseconds(10));
    read_stream(BASE);
    request(BASE);
    pass(milliseconds(5));
    poll_stream();
    pass(milliseconds(90));
    begin_stream(BASE);
    pass(milliseconds(3));
    read_stream(BASE);
    const Tally tally = coprocessor->tally();
    ASSERT_EQ(tally.over.size(), 1U);
    EXPECT_EQ(describe_life(1, tally.over[0]), "1 0.100000 100 10 15 0 90 2\n");
    EXPECT_EQ(tally.present.measured, 3U);
    EXPECT_EQ(describe_counts(tally), "measured                   103\n"
                                      "delivered                   13\n"
                                      "begun                       18\n"
                                      "overrun                      0\n"
                                      "discarded                   90\n"
                                      "buffered                     0\n"
                                      "blocks                       3\n"
                                      "restarts                     1\n"
                                      "rel_t                        3\n");
    pass(milliseconds(50));
    send({0x91});
    EXPECT_EQ(coprocessor->tally().over.size(), 2U);
    expect({103 + 42, 13, 18, 0, 90 + 42, 0, 3});
}

TEST(CountsAsText, have_lines_of_one_length_whatever_they_tell)
{
    Tally tally;
    tally.past.measured = UINT64_MAX;
    EXPECT_EQ(describe_counts(tally).substr(0, 31), "measured  18446744073709551615\n");
    EXPECT_EQ(describe_counts(tally).size(), describe_counts({}).size());
}

} // namespace

} // namespace simulator
