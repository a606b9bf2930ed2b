// What the tests of the live stream share: its five users with what is particular about each, the
// co-processor's part, and the parts of which a transcript is made.
#pragma once

#include "link/stm_com_funcs.h"
#include "tests/platform/dialogue.hpp"
#include "tests/readout/golden_records.hpp"
#include "tests/readout/record_writer.hpp"

#include <iterator>
#include <ostream>

struct StreamUser {
    const char *name;
    void (*run)(StmPollFn poll, StmOutputFn output); // a continuous read-out that shows nothing
    RecordKind kind;
    uint8_t command;
    uint8_t second; // byte of the request
    uint8_t most;   // records in a block
    size_t size;
    const char *poll_failure; // what perror says of each exchange behind the first request
    const char *two_bytes_failure;
    const char *one_byte_failure;
    const char *data_failure;
    const char *request_failure;
    bool watches; // tells the size of a failing exchange, and that a block is empty
    int pause;    // after each block, in microseconds
};

void show_no_records(StmPollFn poll, StmOutputFn output);
void show_no_omega(StmPollFn poll, StmOutputFn output);
void show_no_temp(StmPollFn poll, StmOutputFn output);

constexpr char STREAM_FAILURE[] = "perror \"SPI datatransfer\" ";

constexpr StreamUser STREAM_USERS[] = {
    {"base", show_no_records, RecordKind::base, 0xC8, 0x49, 73, 56, STREAM_FAILURE, STREAM_FAILURE,
     STREAM_FAILURE, STREAM_FAILURE, STREAM_FAILURE, false, 0},
    {"omega", show_no_omega, RecordKind::omega, 0xC1, 0x4E, 78, 52, STREAM_FAILURE, STREAM_FAILURE,
     STREAM_FAILURE, STREAM_FAILURE, STREAM_FAILURE, false, 0},
    {"temp", show_no_temp, RecordKind::temp, 0x02, 0x55, 85, 48, STREAM_FAILURE, STREAM_FAILURE,
     STREAM_FAILURE, STREAM_FAILURE, STREAM_FAILURE, false, 20000},
    {"writer", stm_ringbuffer_acquire, RecordKind::temp, 0x02, 0x55, 85, 48, STREAM_FAILURE,
     STREAM_FAILURE, STREAM_FAILURE, STREAM_FAILURE, STREAM_FAILURE, false, 0},
    {"watcher", stm_stream_readout, RecordKind::temp, 0x02, 0x55, 85, 48,
     "perror \"SPI datatransfer (wait)\" ", "perror \"SPI datatransfer (ACK a)\" ",
     "perror \"SPI datatransfer (ACK b)\" ", "perror \"SPI datatransfer (1)\" ",
     "perror \"SPI datatransfer (2)\" ", true, 20000},
};

// The last of them alone makes something of an empty block.
constexpr const StreamUser *STREAM_WATCHER = std::end(STREAM_USERS) - 1;

// The co-processor's part, on an opened link that has been used before: all buffers and the message
// hold what nobody is to take for something new. What goes to standard error is written down where
// it happens.
class StreamScript : public Dialogue
{
  protected:
    static constexpr uint8_t STALE_TX = 0x5A;
    static constexpr uint8_t STALE_RX = 0xA5;
    static constexpr char LAST_REPORT[] = "the last report";

    StreamScript();
    ~StreamScript() override;

    // As if the fixture were new: the next script begins with the first exchange.
    void begin_again();

    // The script, one exchange after another. Polls find a header without 0x55. What comes back
    // during a request would be a block that is ready, if anybody looked at it.
    void pass_request();
    void idle(int polls);
    void fail_next(int error);

    // The header with 0x55 at an index, in the next poll: what it has room for of length and data.
    // Then the part of the length that it has no room for, and the rest of the data.
    void head(size_t index, size_t length, const Bytes &data);
    void complete_length(size_t index, size_t length);
    void deliver_rest(size_t index, const Bytes &data);

    // All of it, and the request behind it.
    void send_block(size_t index, const Bytes &data);
    void send_block(size_t index, size_t length, const Bytes &data);

    // The operator stops in the next poll.
    void stop();

    // Writes down the buffers as they are while each exchange is made, from now on.
    void keep_buffers();
    std::vector<Bytes> sent_from;
    std::vector<Bytes> received_into;
    std::vector<ptrdiff_t> places; // of what comes back, in rx_buffer
    static constexpr ptrdiff_t SHORT = -1;

    RingBuffer ring = {};

  private:
    int scripted = 0;       // exchanges, so far
    int scripted_polls = 0; // of the input
    FILE *standard_error;
    FILE *written_down;
};

class StreamDialogue : public StreamScript, public testing::WithParamInterface<StreamUser>
{
  protected:
    static void run() { GetParam().run(poll, output); }

    // Records that the watcher, too, has nothing to say about: the first has this time stamp.
    static Bytes good_records(int count, int first = 1);

    // The request; all bytes but three are those of an earlier frame.
    static std::string request();

    // A block, from the poll that finds its header to the request behind it.
    static Transcript fetched(size_t index, size_t length);

    static Transcript paused();
    static Transcript failure(const char *text, const char *error = "EIO");

    // A failing exchange of this length: the watcher tells the length, too.
    static Transcript sized_failure(const char *text, int length, const char *error = "EIO");
};

// How many bytes of a block's data come with a header whose 0x55 is at this index.
size_t held(size_t index);

extern const Transcript STREAM_POLL;    // one poll, with its input
extern const Transcript STREAM_TIMEOUT; // a wait in vain, and its pause

// The part of the length that the header has no room for, and the exchange of so much data.
Transcript completion(size_t index);
std::string rest(size_t length);

// The line of a text on standard error.
std::string remark(const std::string &text);

std::string wrong_stream_checksum(const std::string &computed, const std::string &stored);

// The same for the record at the start of these bytes.
std::string wrong_stream_checksum(const Bytes &bytes, size_t size);

// How the test framework names a user.
void PrintTo(const StreamUser &user, std::ostream *stream);
std::string user_name(const testing::TestParamInfo<StreamUser> &info);

#define INSTANTIATE_FOR_ALL_USERS(SUITE)                                                           \
    INSTANTIATE_TEST_SUITE_P(Each, SUITE, testing::ValuesIn(STREAM_USERS), user_name)
