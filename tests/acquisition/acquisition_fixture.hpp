// What the tests of settings, queries and reads share: the co-processor's part of a transaction,
// and the parts of which a transcript is made.
#pragma once

#include "tests/platform/dialogue.hpp"

// The fixture: an opened link that has been used before. Both buffers and the message hold what
// nobody is to take for something new.
class Acquisition : public Dialogue
{
  protected:
    static constexpr uint8_t STALE_TX = 0x5A;
    static constexpr uint8_t STALE_RX = 0xA5;

    Acquisition();

    // The script, one transaction after another, each ready in its first poll: it has this answer;
    // or its answer is the length of the reply that follows; or announces any other length.
    void ready_with(uint16_t answer);
    void reply_with(const Bytes &reply);
    void announce(uint16_t length, const Bytes &reply);

    // The same where the reply's exchange fails, or the whole transaction with its frame.
    void fail_reply(uint16_t length, int error);
    void fail_frame(int error);

    // As if the fixture were new: the next script begins with the first exchange.
    void begin_again();

    // No text went through the message buffer.
    static testing::AssertionResult message_is_untouched();

  private:
    int scripted = 0; // exchanges, so far
};

// What comes in while a frame goes out; all but the first byte lies in rx_buffer afterwards.
extern const Bytes FRAME_ECHO;

// The frame of a command; parameters that are left out are zero.
std::string frame(uint8_t code, const Bytes &params);

// A transaction that is ready in its first poll.
Transcript transaction(uint8_t code, const Bytes &params);

// One whose first, second or third exchange fails with EIO; the operator stops one in its first
// poll; the co-processor is never ready in time.
Transcript failed_transaction(int exchange_number, uint8_t code, const Bytes &params);
Transcript stopped_transaction(uint8_t code, const Bytes &params);
Transcript timed_out_transaction(uint8_t code, const Bytes &params);

// The exchange of a reply of so many bytes, and a transaction with it.
Transcript reply(size_t length);
Transcript query(uint8_t code, const Bytes &params, size_t length);
