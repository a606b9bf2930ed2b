// A board whose wire ends in the kernel.
#include "simulator/kernel/served_board.hpp"

#include "simulator/driver/transcript.hpp"
#include "simulator/driver/transcript_file.hpp"
#include "simulator/driver/user_memory.hpp"

#include <cerrno>
#include <ctime>
#include <utility>

namespace simulator
{

namespace
{

constexpr int LONGEST_MESSAGE =
    1'048'576; // bytes; how long one may be, the kernel's driver decides

std::chrono::nanoseconds now()
{
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

RunOptions taking_all_lengths(RunOptions options)
{
    options.behaviour.buffer_size = LONGEST_MESSAGE;
    return options;
}

} // namespace

ServedBoard::ServedBoard(RunOptions options)
    : options_(taking_all_lengths(std::move(options))), error_(kept_.open(options_.directory)),
      coprocessor_(kept_.bytes(), {}, options_.behaviour),
      device_(
          coprocessor_, options_.behaviour, [this](std::chrono::nanoseconds) { pass(); },
          [this](const Exchange &exchange) {
              if (!options_.transcript.empty()) {
                  note(add_to_transcript(options_.transcript, transcript_line(exchange, time())));
              }
          })
{
}

std::chrono::nanoseconds ServedBoard::time() const
{
    return now() - power_on_;
}

// What fails first is what is reported.
void ServedBoard::note(const std::string &error)
{
    if (error_.empty()) {
        error_ = error;
    }
}

// Programs that were killed may have left something that is in no file yet.
std::string ServedBoard::take_over()
{
    if (!kept_.shared().has_state()) {
        return {};
    }
    const RunningState &state = kept_.shared().state();
    coprocessor_.set_state(state.board);
    device_.set_state(state.driver);
    coprocessor_.settle();
    return kept_.save(coprocessor_, device_);
}

// The lock is never given back: nobody else can have the board before this process has ended.
std::string ServedBoard::begin()
{
    if (error_.empty() && kept_.shared().take() != SharedState::Joined::first) {
        return options_.directory + ": another program uses this board";
    }
    note(intrusion_.load(options_.behaviour.faults));
    note(kept_.go_on(coprocessor_));
    note(take_over());
    kept_.shared().saved() = {};
    coprocessor_.power_on({});
    device_.set_state({});
    note(kept_.begin());
    note(kept_.load(coprocessor_, device_));
    power_on_ = now();
    (void)device_.open(true);
    commit();
    return error_;
}

void ServedBoard::commit()
{
    kept_.shared().commit(
        {time().count(), intrusion_.played(), coprocessor_.state(), device_.state()});
    note(kept_.save(coprocessor_, device_));
}

void ServedBoard::pass() const
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(message_end_);
    const timespec end = {static_cast<time_t>(seconds.count()),
                          static_cast<long>((message_end_ - seconds).count())};
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr) == EINTR) {
    }
}

int ServedBoard::exchange(const WireMessage &message)
{
    message_end_ = now() + message.wire_time;
    intrusion_.play_until(time(), coprocessor_);
    coprocessor_.advance_to(time());
    device_.advance_to(time());
    device_.keep_mode(message.spi_mode);
    spi_ioc_transfer transfer = {};
    transfer.tx_buf = user_address(message.mosi.data());
    transfer.rx_buf = user_address(message.miso.data());
    transfer.len = static_cast<uint32_t>(message.mosi.size());
    const int result = device_.ioctl(SPI_IOC_MESSAGE(1), &transfer, device_.state().generation);
    commit();
    return result < 0 ? result : 0;
}

} // namespace simulator
