// The script and the record of a dialogue.
#include "tests/platform/dialogue.hpp"

#include "link/stm_com_funcs.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace
{

Dialogue *running_dialogue = nullptr;

std::string flag_names(int flags)
{
    return flags == O_RDWR ? "O_RDWR" : std::to_string(flags);
}

int fail_with(int error)
{
    errno = error;
    return -1;
}

uint64_t address_of(const void *buffer)
{
    return reinterpret_cast<uintptr_t>(buffer);
}

uint8_t *buffer_at(uint64_t address)
{
    return reinterpret_cast<uint8_t *>(static_cast<uintptr_t>(address));
}

// What comes back may lie behind bytes that are there already.
bool uses_long_buffers(const spi_ioc_transfer &descriptor)
{
    const uint64_t start = address_of(stm_link.rx_buffer);
    return descriptor.tx_buf == address_of(stm_link.tx_buffer) && descriptor.rx_buf >= start &&
           descriptor.rx_buf - start + descriptor.len <= 4096;
}

bool uses_short_buffers(const spi_ioc_transfer &descriptor)
{
    return descriptor.tx_buf == address_of(stm_link.tx_short) &&
           descriptor.rx_buf == address_of(stm_link.rx_short) && descriptor.len <= 10;
}

// All members that the module has no use for are zero.
bool rest_is_zero(const spi_ioc_transfer &descriptor)
{
    spi_ioc_transfer plain = {};
    plain.tx_buf = descriptor.tx_buf;
    plain.rx_buf = descriptor.rx_buf;
    plain.len = descriptor.len;
    return memcmp(&plain, &descriptor, sizeof(plain)) == 0;
}

} // namespace

Dialogue::Dialogue()
{
    memset(static_cast<void *>(&stm_link), 0, sizeof(stm_link));
    running_dialogue = this;
}

Dialogue::~Dialogue()
{
    running_dialogue = nullptr;
}

Dialogue *Dialogue::running()
{
    return running_dialogue;
}

int Dialogue::poll(char *line)
{
    return running()->place_line(line);
}

int Dialogue::output(const char *text, int more)
{
    running()->transcript.push_back(say(text, more));
    running()->texts.push_back(say(text, more));
    running()->messages.push_back(say(stm_link.message, more));
    return running()->output_result;
}

void Dialogue::answer_always(const Bytes &bytes)
{
    other_answer = {bytes, 0};
}

void Dialogue::answer(int number, const Bytes &bytes)
{
    answers[number] = {bytes, 0};
}

void Dialogue::answer_statuses(const Bytes &statuses)
{
    for (size_t i = 0; i < statuses.size(); ++i) {
        answer(static_cast<int>(i) + 1, {statuses[i]});
    }
}

void Dialogue::fail_exchange(int number, int error)
{
    answers[number] = {{}, error};
}

void Dialogue::type_line(int number, const std::string &line, int result)
{
    lines[number] = {line, result};
}

void Dialogue::open_link()
{
    const std::map<int, Answer> script = std::exchange(answers, {});
    stm_open();
    answers = script;
    forget();
}

void Dialogue::forget()
{
    transcript.clear();
    texts.clear();
    messages.clear();
    exchange_count = 0;
    poll_count = 0;
    slept_us = 0;
}

bool Dialogue::ends_process(void (*operation)())
{
    may_exit = true;
    // An exception could not pass through the module, which is compiled without them.
    if (setjmp(exit_point) != 0) { // NOLINT(cert-err52-cpp)
        may_exit = false;
        return true;
    }
    operation();
    may_exit = false;
    return false;
}

testing::AssertionResult Dialogue::happened(const Transcript &expected) const
{
    return same(transcript, expected);
}

int Dialogue::on_open(const char *path, int flags)
{
    transcript.push_back("open " + quoted(path) + " " + flag_names(flags));
    return open_error == 0 ? open_result : fail_with(open_error);
}

int Dialogue::on_ioctl(int fd, unsigned long request, const void *argument)
{
    EXPECT_EQ(fd, open_result) << "the device has another descriptor";
    if (request == SPI_IOC_WR_MAX_SPEED_HZ) {
        return set_speed(*static_cast<const uint32_t *>(argument));
    }
    if (request == SPI_IOC_MESSAGE(1)) {
        return make_exchange(*static_cast<const spi_ioc_transfer *>(argument));
    }
    transcript.push_back("ioctl " + std::to_string(request));
    return fail_with(ENOTTY);
}

int Dialogue::set_speed(uint32_t speed_hz)
{
    transcript.push_back("speed " + std::to_string(speed_hz));
    errno = speed_error;
    return speed_result;
}

int Dialogue::make_exchange(const spi_ioc_transfer &descriptor)
{
    EXPECT_TRUE(rest_is_zero(descriptor)) << "clock, delay, word size and chip select are not ours";
    const bool is_short = uses_short_buffers(descriptor);
    if (!is_short && !uses_long_buffers(descriptor)) {
        ADD_FAILURE() << "an exchange must stay within a pair of the link's buffers";
        return fail_with(EFAULT);
    }
    const uint8_t *tx = buffer_at(descriptor.tx_buf);
    if (keep_transcript) {
        const Bytes sent(tx, tx + descriptor.len);
        transcript.push_back(is_short ? short_exchange(sent) : exchange(sent));
    }
    if (watch) {
        watch(descriptor);
    }
    Answer answer = next_answer();
    if (answer.error != 0) {
        return fail_with(answer.error);
    }
    answer.bytes.resize(descriptor.len);
    if (bytes_come_back) {
        std::copy(answer.bytes.begin(), answer.bytes.end(), buffer_at(descriptor.rx_buf));
    }
    return exchange_result == EXCHANGED ? static_cast<int>(descriptor.len) : exchange_result;
}

Dialogue::Answer Dialogue::next_answer()
{
    const auto scripted = answers.find(++exchange_count);
    return scripted == answers.end() ? other_answer : scripted->second;
}

void Dialogue::note(const std::string &line)
{
    transcript.push_back(line);
}

int Dialogue::place_line(char *line)
{
    transcript.emplace_back("poll");
    const auto scripted = lines.find(++poll_count);
    if (scripted == lines.end()) {
        return 0;
    }
    const std::string &text = scripted->second.text;
    std::copy_n(text.c_str(), text.size() + 1, line);
    return scripted->second.result;
}

int Dialogue::on_close(int fd)
{
    transcript.push_back("close " + std::to_string(fd));
    errno = close_result < 0 ? EIO : errno;
    return close_result;
}

int Dialogue::on_usleep(unsigned microseconds)
{
    transcript.push_back("sleep " + std::to_string(microseconds));
    slept_us += microseconds;
    if (while_asleep) {
        while_asleep();
    }
    return 0;
}

void Dialogue::on_perror(const char *text)
{
    const char *name = strerrorname_np(errno);
    transcript.push_back("perror " + quoted(text) + " " + (name == nullptr ? "?" : name));
}

void Dialogue::on_exit(int status)
{
    transcript.push_back("exit " + std::to_string(status));
    if (may_exit) {
        longjmp(exit_point, 1); // NOLINT(cert-err52-cpp)
    }
}

Bytes bytes_of(size_t count, uint8_t value)
{
    return Bytes(count, value);
}

Bytes chained(std::initializer_list<Bytes> parts)
{
    Bytes all;
    for (const Bytes &part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}
