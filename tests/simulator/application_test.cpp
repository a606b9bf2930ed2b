// Goal: the virtual co-processor's application takes a command frame, is busy, answers, and gives
// its reply, each in the exchange that asks for it and in no other.
#include "tests/simulator/virtual_wire.hpp"

namespace simulator
{

namespace
{

const Bytes ANSWER_FETCH = {0, 0};

class ApplicationWire : public VirtualWire
{
  protected:
    static Bytes frame(uint8_t code, const Bytes &parameters = {})
    {
        Bytes bytes(8, 0);
        bytes[0] = code;
        std::ranges::copy(parameters, bytes.begin() + 1);
        bytes[7] = 0xAA;
        return bytes;
    }

    // Sends a command and fetches its answer: a result, or the length of a reply.
    int answer_to(uint8_t code, const Bytes &parameters = {})
    {
        EXPECT_EQ(exchange(frame(code, parameters)), Bytes(8, 0));
        EXPECT_EQ(poll_data(), 0x55);
        const Bytes answer = exchange(ANSWER_FETCH);
        return answer[0] | answer[1] << 8;
    }

    // The same for a command with a reply.
    Bytes reply_to(uint8_t code, const Bytes &parameters = {})
    {
        const int length = answer_to(code, parameters);
        return exchange(Bytes(static_cast<size_t>(length), 0x66));
    }

    void give_answers(const CommandValues &answers) { coprocessor->load({}, answers); }

    CommandValues settings() { return coprocessor->settings(); }

    void power_on_with(FaultKind kind, int place, int value = 0)
    {
        power_on({}, {0, {{kind, place, value}}});
    }
};

TEST_F(ApplicationWire, a_query_is_ready_at_the_first_poll_and_gives_length_and_reply)
{
    give_answers({{{0xA0, NO_PLACE}, "-2"}});
    EXPECT_EQ(exchange(frame(0xA0)), Bytes(8, 0));
    EXPECT_EQ(coprocessor->note(), "query 0xA0: -2");
    EXPECT_EQ(poll_data(), 0x55);
    EXPECT_EQ(coprocessor->note(), "ready");
    EXPECT_EQ(exchange(ANSWER_FETCH), (Bytes{4, 0}));
    EXPECT_EQ(coprocessor->note(), "length of the reply");
    EXPECT_EQ(exchange(Bytes(4, 0x66)), (Bytes{0xFE, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(coprocessor->note(), "reply");
}

TEST_F(ApplicationWire, a_setting_gives_a_result_and_no_reply)
{
    EXPECT_EQ(exchange(frame(0x56, {1, 0x34, 0x12})), Bytes(8, 0));
    EXPECT_EQ(coprocessor->note(), "setting 0x56 channel 1 = 4660");
    EXPECT_EQ(poll_data(), 0x55);
    EXPECT_EQ(exchange(ANSWER_FETCH), (Bytes{1, 0}));
    EXPECT_EQ(coprocessor->note(), "result");
    EXPECT_EQ(exchange({0x66}), Bytes{0});
    EXPECT_EQ(coprocessor->note(), "not understood");
}

TEST_F(ApplicationWire, is_busy_for_as_many_polls_as_it_is_told)
{
    power_on({}, {2, {}});
    send(frame('r'));
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(poll_data(), 0x00);
        EXPECT_EQ(coprocessor->note(), "busy");
    }
    EXPECT_EQ(poll_data(), 0x55);
    EXPECT_EQ(poll_data(), 0x00);
    EXPECT_EQ(coprocessor->note(), "nothing to answer");
    EXPECT_EQ(exchange(ANSWER_FETCH), (Bytes{1, 0}));
}

TEST_F(ApplicationWire, gives_no_answer_before_it_has_said_that_it_is_ready)
{
    send(frame('r'));
    EXPECT_EQ(exchange(ANSWER_FETCH), (Bytes{0, 0}));
    EXPECT_EQ(coprocessor->note(), "not understood");
    EXPECT_EQ(poll_data(), 0x00);
}

TEST_F(ApplicationWire, gives_its_answer_to_two_zeros_only)
{
    for (const Bytes &wrong : {Bytes{0, 1}, Bytes{0x44, 0}, Bytes{0, 0, 0}}) {
        send(frame('r'));
        poll_data();
        EXPECT_EQ(exchange(wrong), Bytes(wrong.size(), 0));
        EXPECT_EQ(coprocessor->note(), "not understood");
        EXPECT_EQ(exchange(ANSWER_FETCH), (Bytes{0, 0}));
    }
}

TEST_F(ApplicationWire, gives_its_reply_to_as_many_fillers_only)
{
    for (const Bytes &wrong : {Bytes(3, 0x66), Bytes(5, 0x66), Bytes(4, 0x00), Bytes{}}) {
        answer_to(0xA0);
        send(wrong);
        const Bytes after = exchange(Bytes(4, 0x66));
        EXPECT_EQ(after, wrong.empty() ? (Bytes{0x40, 0xE2, 0x01, 0x00}) : Bytes(4, 0));
    }
}

TEST_F(ApplicationWire, gives_answer_and_reply_once)
{
    EXPECT_EQ(reply_to('s'), Bytes{1});
    EXPECT_EQ(exchange({0x66}), Bytes{0});
    EXPECT_EQ(exchange(ANSWER_FETCH), (Bytes{0, 0}));
}

TEST_F(ApplicationWire, a_reply_of_4096_bytes_is_no_synchronisation)
{
    memory[0xFFFF] = 0x12;
    memory[0] = 0x34;
    const Bytes reply = reply_to('u', {0xFF, 0xFF, 0x00, 0x10});
    EXPECT_EQ(reply.size(), 4096U);
    EXPECT_EQ(reply[0], 0x12);
    EXPECT_EQ(reply[1], 0x34);
    EXPECT_EQ(coprocessor->note(), "reply");
    answer_to('u', {0, 0, 0x00, 0x10});
    send(Bytes(4095, 0x66));
    EXPECT_EQ(coprocessor->note(), "synchronised");
}

TEST_F(ApplicationWire, polls_for_a_status_do_not_disturb_it)
{
    send(frame('s'));
    EXPECT_EQ(poll_status(), 0);
    EXPECT_EQ(poll_data(), 0x55);
}

TEST_F(ApplicationWire, a_new_command_takes_the_place_of_the_one_before)
{
    answer_to(0xA0);
    EXPECT_EQ(reply_to('s'), Bytes{1});
    send(frame(0xA0));
    send({0x91});
    EXPECT_EQ(poll_data(), 5);
    EXPECT_EQ(poll_data(), 0);
}

TEST_F(ApplicationWire, is_silent_to_a_wrong_end_byte_and_to_an_unknown_code)
{
    Bytes wrong = frame('r');
    wrong[7] = 0xAB;
    send(wrong);
    EXPECT_EQ(coprocessor->note(), "command 0x72 ends in 0xAB");
    EXPECT_EQ(poll_data(), 0);
    for (const uint8_t code : Bytes{0x00, 0x0E, 0x50, 0x5C, 0x94, 0x9D, 0xC9, 0xFF}) {
        send(frame(code));
        EXPECT_EQ(coprocessor->note().substr(0, 16), "unknown command ");
        EXPECT_EQ(poll_data(), 0);
        EXPECT_EQ(exchange(ANSWER_FETCH), (Bytes{0, 0}));
    }
}

TEST_F(ApplicationWire, is_silent_while_the_boot_loader_runs)
{
    for (const Mode mode : {Mode::boot_loader, Mode::unknown}) {
        power_on({mode, 5}, {});
        send(frame('r'));
        EXPECT_EQ(coprocessor->note(), "command 0x72 is for the application, which is not running");
        EXPECT_EQ(poll_data(), 0);
    }
    send({0x83});
    EXPECT_EQ(answer_to('r'), 1);
}

TEST_F(ApplicationWire, keeps_what_each_setting_has_received)
{
    answer_to(0x51, {0x00, 0x7D});
    answer_to(0x53, {3});
    answer_to(0xC2, {7, 0xD2, 0x04, 9, 9, 9});
    answer_to(0xC3, {0, 1, 0, 0xFF, 0xFF});
    answer_to(0x9B, {2, 0x78, 0x56, 0x34, 0x12});
    answer_to(0xC2, {7, 0xD3, 0x04});
    EXPECT_EQ(settings(), (CommandValues{{{0x51, NO_PLACE}, "32000"},
                                         {{0x53, NO_PLACE}, "3"},
                                         {{0x9B, 2}, "305419896"},
                                         {{0xC2, 7}, "1235"},
                                         {{0xC3, 0}, "1 65535"}}));
}

TEST_F(ApplicationWire, keeps_each_channel_of_each_setting_by_itself)
{
    CommandValues expected;
    int next = 0;
    for (const auto &[code, place] : setting_keys()) {
        const auto number = static_cast<uint8_t>(++next);
        const bool is_pair = code == 0xC3 || code == 0xC6;
        const auto channel = static_cast<uint8_t>(place);
        const Bytes parameters = place == NO_PLACE ? Bytes{number} : Bytes{channel, number};
        EXPECT_EQ(answer_to(code, parameters), 1);
        expected[{code, place}] = std::to_string(number) + (is_pair ? " 0" : "");
    }
    EXPECT_EQ(settings(), expected);
    EXPECT_EQ(expected.size(), 65U);
}

TEST_F(ApplicationWire, keeps_the_words_of_a_setting_until_it_receives_another)
{
    coprocessor->load({{{0x53, NO_PLACE}, "0x2"}, {{0xC2, 1}, "-7"}}, {});
    EXPECT_EQ(reply_to(0x05), Bytes{2});
    send(frame(0x05));
    EXPECT_EQ(coprocessor->note(), "query 0x05: 0x2");
    answer_to(0xC2, {1, 9, 0});
    EXPECT_EQ(settings(), (CommandValues{{{0x53, NO_PLACE}, "0x2"}, {{0xC2, 1}, "9"}}));
    coprocessor->load({{{0xC2, 1}, "-7"}}, {});
    EXPECT_EQ(settings(), (CommandValues{{{0xC2, 1}, "-7"}}));
}

struct Paired {
    uint8_t setting;
    uint8_t query;
    Bytes parameters;
    Bytes channel;
    Bytes reply;
};

TEST_F(ApplicationWire, a_query_shows_what_the_setting_of_the_same_quantity_received)
{
    const Paired pairs[] = {
        {0x51, 0x03, {0x64, 0x80}, {}, {0x64, 0x80}},
        {0x52, 0x04, {0x03, 0x01}, {}, {0x03}},
        {0x53, 0x05, {0x02}, {}, {0x02}},
        {0x54, 0x06, {7, 0xFF, 0xFF}, {7}, {0xFF, 0xFF, 0, 0}},
        {0x55, 0x07, {0, 1, 2}, {0}, {1, 2, 0, 0}},
        {0x56, 0x08, {1, 1, 2}, {1}, {1, 2}},
        {0x57, 0x09, {0, 3, 4}, {0}, {3, 4}},
        {0x58, 0x0A, {1, 5, 6}, {1}, {5, 6}},
        {0x59, 0x0B, {0, 7, 8}, {0}, {7, 8}},
        {0x5A, 0x0C, {1, 9, 10}, {1}, {9, 10}},
        {0x5B, 0x0D, {0, 11, 12}, {0}, {11, 12}},
        {0x97, 0x95, {1, 13, 14}, {1}, {13, 14}},
        {0x98, 0x96, {0, 15, 16}, {0}, {15, 16}},
        {0x9B, 0x99, {6, 1, 2, 3, 0x84}, {6}, {1, 2, 3, 0x84}},
        {0x9C, 0x9A, {1, 5, 6, 7, 8}, {1}, {5, 6, 7, 8}},
    };
    for (const Paired &pair : pairs) {
        EXPECT_EQ(reply_to(pair.query, pair.channel), Bytes(pair.reply.size(), 0));
        EXPECT_EQ(answer_to(pair.setting, pair.parameters), 1);
        EXPECT_EQ(reply_to(pair.query, pair.channel), pair.reply) << int{pair.query};
    }
    EXPECT_EQ(reply_to(0x08, {0}), Bytes(2, 0)) << "another channel than the one that was set";
    EXPECT_EQ(reply_to(0x9A, {7}), Bytes(4, 0)) << "a channel that the setting does not have";
}

TEST_F(ApplicationWire, a_given_answer_goes_before_a_setting)
{
    give_answers({{{0x08, 1}, "-300"}});
    answer_to(0x56, {1, 1, 2});
    EXPECT_EQ(reply_to(0x08, {1}), (Bytes{0xD4, 0xFE}));
    EXPECT_EQ(reply_to(0x08, {0}), (Bytes{0, 0}));
}

TEST_F(ApplicationWire, results_and_texts_are_those_that_are_given)
{
    EXPECT_EQ(reply_to(0x21).size(), 20U);
    EXPECT_EQ(reply_to(0x22), (Bytes{'f', 'i', 'r', 'm', 'w', 'a', 'r', 'e', ' ', '1', '.', '0'}));
    give_answers({{{0x21, NO_PLACE}, "ok"},
                  {{0x22, NO_PLACE}, ""},
                  {{'2', NO_PLACE}, "4660"},
                  {{'a', NO_PLACE}, "-1"},
                  {{0xC5, NO_PLACE}, "0"}});
    EXPECT_EQ(reply_to(0x21), (Bytes{'o', 'k'}));
    EXPECT_EQ(answer_to(0x22), 0);
    EXPECT_EQ(answer_to('2'), 4660);
    EXPECT_EQ(answer_to('a', {0, 0, 7}), 65535);
    EXPECT_EQ(answer_to(0xC5, {1, 1, 0}), 0);
}

TEST_F(ApplicationWire, all_plain_commands_give_a_result)
{
    for (const char code : {'r', 'q', 'c', 'd', '3', '2'}) {
        EXPECT_EQ(answer_to(static_cast<uint8_t>(code)), 1) << code;
    }
}

TEST_F(ApplicationWire, a_channel_that_does_not_exist_gives_nothing_and_sets_nothing)
{
    EXPECT_EQ(answer_to(0x06, {8}), 0);
    EXPECT_EQ(answer_to(0x95, {2}), 0);
    EXPECT_EQ(answer_to(0xC2, {8, 1, 1}), 0);
    EXPECT_EQ(answer_to(0xC5, {2, 1, 1}), 0);
    send(frame(0xC5, {2}));
    EXPECT_EQ(coprocessor->note(), "command 0xC5 has no channel 2");
    EXPECT_TRUE(settings().empty());
    EXPECT_EQ(reply_to(0x06, {7}).size(), 4U);
    EXPECT_EQ(answer_to(0xC5, {1, 1, 1}), 1);
}

TEST_F(ApplicationWire, memory_is_written_and_read_by_address)
{
    EXPECT_EQ(answer_to('a', {0x34, 0x12, 0xAB}), 1);
    EXPECT_EQ(coprocessor->note(), "result");
    EXPECT_EQ(memory[0x1234], 0xAB);
    EXPECT_EQ(reply_to('b', {0x34, 0x12}), Bytes{0xAB});
    EXPECT_EQ(reply_to('u', {0x33, 0x12, 3, 0}), (Bytes{0, 0xAB, 0}));
    EXPECT_EQ(answer_to('u', {0, 0, 0, 0}), 0);
    EXPECT_EQ(answer_to('u', {0, 0, 0xFF, 0xFF}), 65535);
}

TEST_F(ApplicationWire, an_address_can_give_a_text_byte_by_byte_again_and_again)
{
    give_answers({{{'b', 0xFF01}, "ok"}});
    for (const char expected : {'o', 'k', '\0', 'o', 'k', '\0', 'o'}) {
        EXPECT_EQ(reply_to('b', {0x01, 0xFF}), Bytes(1, static_cast<uint8_t>(expected)));
    }
    EXPECT_EQ(reply_to('b', {0x00, 0xFF}), Bytes{0});
}

TEST_F(ApplicationWire, each_address_with_a_text_is_read_on_its_own_until_a_restart)
{
    CommandValues texts;
    for (int i = 0; i < 256; ++i) {
        texts[{'b', 0x100 * i}] = {'a', static_cast<char>('b' + i % 16)};
    }
    give_answers(texts);
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 256; ++i) {
            const auto byte = static_cast<uint8_t>(round == 0 ? 'a' : 'b' + i % 16);
            EXPECT_EQ(reply_to('b', {0, static_cast<uint8_t>(i)}), Bytes{byte}) << i;
        }
    }
    give_answers(texts);
    EXPECT_EQ(reply_to('b', {0, 0xFF}), Bytes{'a'});
}

TEST_F(ApplicationWire, silence_begins_with_the_command_that_it_is_told_for)
{
    power_on_with(FaultKind::silence, command_place('q'));
    EXPECT_EQ(answer_to('r'), 1);
    send(frame('q'));
    EXPECT_EQ(coprocessor->note(), "fault: silent from here on");
    EXPECT_EQ(poll_data(), 0);
    send(frame('r'));
    EXPECT_EQ(poll_data(), 0);
    power_on_with(FaultKind::bus_inactive, command_place('q'));
    EXPECT_EQ(exchange(frame('q')), Bytes(8, 0xFF));
}

TEST_F(ApplicationWire, a_late_command_is_late_and_the_others_are_not)
{
    power_on_with(FaultKind::late, command_place('q'), 1);
    EXPECT_EQ(answer_to('r'), 1);
    send(frame('q'));
    EXPECT_EQ(poll_data(), 0);
    EXPECT_EQ(poll_data(), 0x55);
    power_on_with(FaultKind::late, ALWAYS, 1);
    send(frame('r'));
    EXPECT_EQ(poll_data(), 0);
    EXPECT_EQ(poll_data(), 0x55);
}

TEST_F(ApplicationWire, another_length_than_the_replys_cuts_it_or_fills_it_with_zeros)
{
    for (const int place : {command_place(0xA0), ALWAYS}) {
        power_on_with(FaultKind::length, place, 2);
        EXPECT_EQ(reply_to(0xA0), (Bytes{0x40, 0xE2}));
        power_on_with(FaultKind::length, place, 6);
        EXPECT_EQ(reply_to(0xA0), (Bytes{0x40, 0xE2, 0x01, 0, 0, 0}));
        power_on_with(FaultKind::length, place, 0);
        EXPECT_EQ(answer_to(0xA0), 0);
        power_on_with(FaultKind::length, place, 65535);
        EXPECT_EQ(answer_to(0xA0), 65535);
    }
    EXPECT_EQ(answer_to('r'), 65535) << "a result, too";
    power_on_with(FaultKind::length, command_place(0xA0), 2);
    EXPECT_EQ(answer_to(0x99, {0}), 4);
}

} // namespace

} // namespace simulator
