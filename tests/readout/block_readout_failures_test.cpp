// Goal: a failing exchange ends a counted read-out on the spot, in the words of its operation and
// its step: nothing is shown, polled or synchronised after it.
#include "tests/readout/block_fixture.hpp"

#include <cerrno>

namespace
{

class FailingReadout : public BlockDialogue
{
  protected:
    static Transcript failure(const char *text, const char *error = "EIO")
    {
        return {text + std::string(error)};
    }
};

constexpr char REQUEST_FAILURE[] = "perror \"SPI datatransfer\" ";
const Transcript FAILING_POLL = {"exchange 1: 44"};

} // namespace

INSTANTIATE_FOR_ALL_OPERATIONS(FailingReadout);

TEST_P(FailingReadout, at_the_first_request_polls_nothing)
{
    fail_next(EIO);
    ready_with(golden(0).bytes);
    read(1, TEXT);
    EXPECT_TRUE(happened(joined({{request(1)}, failure(REQUEST_FAILURE)})));
    EXPECT_EQ(stm_link.message, std::string(LAST_REPORT));
}

TEST_P(FailingReadout, at_the_first_request_has_shown_the_csv_header)
{
    fail_next(EIO);
    read(1, CSV);
    EXPECT_TRUE(happened(joined(
        {{say(golden_header(GetParam().kind), 1)}, {request(1)}, failure(REQUEST_FAILURE)})));
    EXPECT_EQ(stm_link.message, std::string(golden_header(GetParam().kind)));
}

TEST_P(FailingReadout, tells_the_reason_of_the_system)
{
    fail_next(ESHUTDOWN);
    read(1, TEXT);
    EXPECT_TRUE(happened(joined({{request(1)}, failure(REQUEST_FAILURE, "ESHUTDOWN")})));
}

TEST_P(FailingReadout, at_the_first_poll_does_not_poll_the_input)
{
    pass_request();
    fail_next(EIO);
    read(1, TEXT);
    EXPECT_TRUE(happened(joined({{request(1)}, FAILING_POLL, failure(GetParam().poll_failure)})));
}

TEST_P(FailingReadout, at_a_poll_does_not_wait_on)
{
    pass_request();
    busy(299);
    fail_next(EIO);
    read(1, TEXT);
    EXPECT_TRUE(happened(
        joined({{request(1)}, times(299, POLL), FAILING_POLL, failure(GetParam().poll_failure)})));
}

TEST_P(FailingReadout, at_the_301st_poll_is_no_time_out)
{
    pass_request();
    busy(300);
    fail_next(EIO);
    read(1, TEXT);
    EXPECT_TRUE(happened(
        joined({{request(1)}, times(300, POLL), FAILING_POLL, failure(GetParam().poll_failure)})));
    EXPECT_TRUE(texts.empty());
}

TEST_P(FailingReadout, at_a_poll_after_a_time_out_ends_it_too)
{
    pass_request();
    busy(301);
    fail_next(EIO);
    read(1, TEXT);
    EXPECT_TRUE(
        happened(joined({{request(1)}, TIMEOUT, FAILING_POLL, failure(GetParam().poll_failure)})));
}

TEST_P(FailingReadout, at_the_length_fetches_no_block)
{
    pass_request();
    ready();
    fail_next(EIO);
    read(1, TEXT);
    EXPECT_TRUE(happened(joined({{request(1)}, POLL, LENGTH, failure(GetParam().length_failure)})));
    EXPECT_EQ(stm_link.message, std::string(LAST_REPORT));
}

TEST_P(FailingReadout, at_the_block_asks_for_no_other)
{
    pass_request();
    ready();
    announce(GetParam().size);
    fail_next(EIO);
    read(2, TEXT);
    EXPECT_TRUE(happened(
        joined({{request(2)}, block(GetParam().size), failure(GetParam().block_failure)})));
}

TEST_P(FailingReadout, at_the_next_request_shows_nothing_of_the_block)
{
    pass_request();
    ready_with(golden(0).bytes);
    fail_next(EIO);
    read(2, TEXT);
    EXPECT_TRUE(happened(joined({{request(2)},
                                 block(GetParam().size),
                                 {request(1)},
                                 failure(GetParam().request_failure)})));
    EXPECT_EQ(stm_link.message, std::string(LAST_REPORT));
}

TEST_P(FailingReadout, in_the_second_block_has_shown_the_first)
{
    const char *const texts_of_steps[] = {GetParam().poll_failure, GetParam().length_failure,
                                          GetParam().block_failure, GetParam().request_failure};
    const Transcript steps[] = {FAILING_POLL, joined({POLL, LENGTH}), block(GetParam().size),
                                joined({block(GetParam().size), {request(1)}})};
    for (int step = 0; step < 4; ++step) {
        begin_again();
        pass_request();
        ready_with(golden(0).bytes);
        pass_request();
        ready_with(golden(1).bytes);
        fail_exchange(6 + step, EIO);
        read(3, TEXT);
        EXPECT_TRUE(happened(joined({{request(3)},
                                     block(GetParam().size),
                                     {request(2), say(golden(0).text, 1)},
                                     steps[step],
                                     failure(texts_of_steps[step])})))
            << step;
    }
}

TEST_P(FailingReadout, at_the_closing_synchronisation_uses_the_link_s_own_words)
{
    pass_request();
    ready_with(golden(0).bytes);
    fail_next(EIO);
    read(1, TEXT);
    EXPECT_TRUE(happened(joined({{request(1)},
                                 block(GetParam().size),
                                 {say(golden(0).text, 1)},
                                 CLOSING,
                                 {R"(perror "Error: stm_com_funcs: SPI datatransfer\n" EIO)"}})));
}

TEST_P(FailingReadout, block_that_the_buffer_cannot_hold_is_refused_without_an_exchange)
{
    for (const size_t length : {size_t{4097}, size_t{4098}, size_t{32768}, size_t{65535}}) {
        begin_again();
        pass_request();
        ready();
        announce(length);
        read(2, TEXT);
        EXPECT_TRUE(happened(
            joined({{request(2)}, POLL, LENGTH, failure(GetParam().block_failure, "EMSGSIZE")})))
            << length;
        EXPECT_EQ(stm_link.message, std::string(LAST_REPORT));
    }
}

TEST_P(FailingReadout, block_of_the_whole_buffer_is_no_failure)
{
    pass_request();
    ready_with(4096, golden(0).bytes);
    read(1, TEXT);
    EXPECT_TRUE(happened(joined({{request(1)}, block(4096), {say(golden(0).text, 1)}, CLOSING})));
}
