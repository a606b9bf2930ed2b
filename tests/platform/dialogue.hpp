// The platform below the module, replaced: every system call that the module makes is recorded, and
// answered from a script. Nothing sleeps and no device is touched.
#pragma once

#include "link/link.hpp"
#include "tests/platform/shared_memory.hpp"
#include "tests/platform/transcript.hpp"

#include <gtest/gtest.h>

#include <csetjmp>
#include <functional>
#include <map>
#include <string>

using namespace stm;

// The fixture of all tests that watch the module at work. Each begins with a link of zeros.
//
//     open "/dev/spidev1.0" O_RDWR        say 0 "SPI timeout\n"
//     speed 6000000                       perror "SPI command" EIO
//     exchange 4096: 66*4096              sleep 10000
//     poll                                close 7
//                                         exit 1
//
// and the calls for shared memory. Exchanges and polls are counted from 1.
class Dialogue : public testing::Test, public ReplacedSharedMemory
{
  public:
    static constexpr int DEVICE = 7;
    static constexpr int EXCHANGED = -1; // the length of the exchange

    Dialogue();
    ~Dialogue() override;
    Dialogue(const Dialogue &) = delete;
    Dialogue &operator=(const Dialogue &) = delete;

    // The dialogue of the running test, null between tests.
    static Dialogue *running();

    // The callbacks to hand to an operation.
    static int poll(char *line);
    static int output(const char *text, int more);

    // The script: what the system calls and callbacks do.
    int open_result = DEVICE;
    int open_error = 0; // errno when the open fails
    int speed_result = 0;
    int speed_error = 0;
    int close_result = 0;
    int exchange_result = EXCHANGED; // or what every exchange that does not fail returns instead
    bool bytes_come_back = true;     // or the receive buffer is left as it is
    int output_result = 0;
    bool really_exit = false;    // perror and exit do their true work
    bool keep_transcript = true; // or nothing is written down, of what would be too long

    // What comes back: in every exchange, in one of them, or in the first ones, a byte each. What
    // an answer leaves open of an exchange is zero.
    void answer_always(const Bytes &bytes);
    void answer(int number, const Bytes &bytes);
    void answer_statuses(const Bytes &statuses);
    void fail_exchange(int number, int error);

    // The poll of this number places a line and returns result.
    void type_line(int number, const std::string &line, int result = 1);

    // Called in each exchange before its bytes come back.
    std::function<void(const spi_ioc_transfer &)> watch;

    // Called in each sleep, for what others do meanwhile.
    std::function<void()> while_asleep;

    // Opens the link, then forgets that: counting and transcript begin behind it.
    void open_link();
    void forget();

    // Calls an operation; true if it ended the process.
    bool ends_process(void (*operation)());

    // The transcript from the start, or from forget() on, is exactly this.
    testing::AssertionResult happened(const Transcript &expected) const;

    // Writes a line into the transcript, for calls that only one test replaces.
    void note(const std::string &line) override;

    // The texts for the output callback alone, and what the message buffer held at each of them.
    Transcript texts;
    Transcript messages;

    uint64_t slept_us = 0;

    // What the replaced calls do while a dialogue is running.
    int on_open(const char *path, int flags);
    int on_ioctl(int fd, unsigned long request, const void *argument);
    int on_close(int fd);
    int on_usleep(unsigned microseconds);
    void on_perror(const char *text);
    void on_exit(int status);

  private:
    struct Answer {
        Bytes bytes;
        int error;
    };
    struct Line {
        std::string text;
        int result;
    };

    int set_speed(uint32_t speed_hz);
    int make_exchange(const spi_ioc_transfer &descriptor);
    Answer next_answer();
    int place_line(char *line);

    Transcript transcript;
    std::map<int, Answer> answers;
    Answer other_answer = {};
    std::map<int, Line> lines;
    int exchange_count = 0;
    int poll_count = 0;
    bool may_exit = false;
    std::jmp_buf exit_point = {};
};

// Every byte the same, for filling and for comparing.
Bytes bytes_of(size_t count, uint8_t value);

// A buffer's content.
template <size_t SIZE>
Bytes bytes_in(const uint8_t (&buffer)[SIZE])
{
    return Bytes(buffer, buffer + SIZE);
}

// Bytes one after another.
Bytes chained(std::initializer_list<Bytes> parts);
