// What the tests of the counted read-outs share: the three operations with what is particular about
// each, the co-processor's part, and the parts of which a transcript is made.
#pragma once

#include "link/stm_com_funcs.h"
#include "tests/platform/dialogue.hpp"
#include "tests/readout/golden_records.hpp"
#include "tests/readout/record_writer.hpp"

#include <ostream>

struct Operation {
    const char *name;
    void (*read)(int count, int mode, StmPollFn poll, StmOutputFn output);
    RecordKind kind;
    uint8_t command;
    uint8_t most;
    size_t size;
    const char *poll_failure; // what perror says of each exchange behind the first request
    const char *length_failure;
    const char *block_failure;
    const char *request_failure;
};

constexpr Operation OPERATIONS[] = {
    {"base", stm_read_records, RecordKind::base, 0xC8, 73, 56, "perror \"SPI datatransfer (1)\" ",
     "perror \"SPI datatransfer (2)\" ", "perror \"SPI datatransfer (3)\" ",
     "perror \"SPI datatransfer (4)\" "},
    {"omega", stm_read_records_omega, RecordKind::omega, 0xC1, 78, 52,
     "perror \"SPI datatransfer\" ", "perror \"SPI datatransfer\" ", "perror \"SPI datatransfer\" ",
     "perror \"SPI datatransfer\" "},
    {"temp", stm_read_records_temp, RecordKind::temp, 0x02, 85, 48, "perror \"SPI datatransfer\" ",
     "perror \"SPI datatransfer\" ", "perror \"SPI datatransfer\" ",
     "perror \"SPI datatransfer\" "},
};

// The fixture: an opened link that has been used before. All buffers and the message hold what
// nobody is to take for something new.
class BlockDialogue : public Dialogue, public testing::WithParamInterface<Operation>
{
  protected:
    static constexpr uint8_t STALE_TX = 0x5A;
    static constexpr uint8_t STALE_RX = 0xA5;
    static constexpr char LAST_REPORT[] = "the last report";

    BlockDialogue();

    // As if the fixture were new: the next script begins with the first exchange.
    void begin_again();

    // The script, one exchange after another. What comes back during a request would be a block
    // that is ready, if anybody looked at it.
    void pass_request();
    void busy(int polls);
    void ready();
    void announce(size_t length);
    void deliver(const Bytes &block);
    void fail_next(int error);

    // A block that is ready in its first poll; or one of another length than is announced.
    void ready_with(const Bytes &block);
    void ready_with(size_t length, const Bytes &block);

    // The co-processor has ready in time what each of these requests asks for, and one record for
    // those that ask for none or too many. Returns what happens then, up to the last block.
    Transcript serve(const Bytes &requests);

    static void read(int count, int mode);

    // The request for so many records; all bytes but three are those of an earlier frame.
    static std::string request(uint8_t count);

    // A golden record of the operation's kind.
    static const GoldenRecord &golden(size_t index);

  private:
    int scripted = 0; // exchanges, so far
};

// Modes of a read-out, as a front end in another language passes them.
constexpr int HEX = 1;
constexpr int TEXT = 2;
constexpr int CSV = 3;
constexpr int SILENT = 0;

extern const Transcript POLL;    // one poll for a block
extern const Transcript LENGTH;  // the exchange of its length
extern const Transcript CLOSING; // the synchronisation behind the last block
extern const Transcript TIMEOUT; // a wait in vain, and its pause
Transcript data(size_t length);  // the exchange of a block
Transcript block(size_t length); // a block that is ready in its first poll
std::string wrong_checksum(int at);

// How the test framework names an operation.
void PrintTo(const Operation &operation, std::ostream *stream);
std::string operation_name(const testing::TestParamInfo<Operation> &info);

#define INSTANTIATE_FOR_ALL_OPERATIONS(SUITE)                                                      \
    INSTANTIATE_TEST_SUITE_P(Each, SUITE, testing::ValuesIn(OPERATIONS), operation_name)
