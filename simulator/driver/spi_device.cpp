// The kernel's SPI device driver in front of a co-processor.
#include "simulator/driver/spi_device.hpp"

#include "simulator/driver/user_memory.hpp"

#include <sys/ioctl.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace simulator
{

struct MessageLength {
    uint64_t total = 0;    // what the call returns
    uint64_t sent = 0;     // with a buffer to send from, rounded
    uint64_t received = 0; // with a buffer to receive into, rounded
};

namespace
{

// The driver rounds each transfer up to the alignment of its memory before it adds them up.
#ifdef __arm__
constexpr uint64_t ALIGNMENT = 64;
#else
constexpr uint64_t ALIGNMENT = 8;
#endif

constexpr uint64_t MOST_BYTES = 1'048'576; // of one call, including those without a buffer

MessageLength measure(std::span<const spi_ioc_transfer> transfers)
{
    MessageLength length;
    for (const spi_ioc_transfer &transfer : transfers) {
        const uint64_t rounded = (transfer.len + ALIGNMENT - 1) / ALIGNMENT * ALIGNMENT;
        length.total += transfer.len;
        length.sent += transfer.tx_buf != 0 ? rounded : 0;
        length.received += transfer.rx_buf != 0 ? rounded : 0;
    }
    return length;
}

// What the controller supports: words of eight bits on single lines.
bool is_possible(const spi_ioc_transfer &transfer)
{
    return (transfer.bits_per_word == 0 || transfer.bits_per_word == 8) && transfer.tx_nbits <= 1 &&
           transfer.rx_nbits <= 1;
}

bool is_message(unsigned long request)
{
    return _IOC_TYPE(request) == SPI_IOC_MAGIC && _IOC_NR(request) == 0 &&
           _IOC_DIR(request) == _IOC_WRITE;
}

} // namespace

int transfers_of(unsigned long request)
{
    const size_t size = _IOC_SIZE(request);
    if (!is_message(request) || size % sizeof(spi_ioc_transfer) != 0) {
        return -1;
    }
    return static_cast<int>(size / sizeof(spi_ioc_transfer));
}

SpiDevice::SpiDevice(Coprocessor &coprocessor, const Behaviour &behaviour, Passage pass,
                     Observer observer)
    : coprocessor_(coprocessor), faults_(behaviour.faults),
      absences_(behaviour.faults, FaultKind::absence),
      buffer_size_(static_cast<uint64_t>(behaviour.buffer_size)), pass_(std::move(pass)),
      observer_(std::move(observer))
{
    advance_to(std::chrono::nanoseconds(0));
}

void SpiDevice::advance_to(std::chrono::nanoseconds now)
{
    state_.is_gone = state_.is_told_gone || absences_.cover(now);
    const int begun = absences_.begun(now) + state_.told_absences;
    if (begun != state_.generation) {
        state_.generation = begun;
        state_.speed_hz = DEFAULT_SPEED_HZ;
        state_.mode = 0;
    }
}

int SpiDevice::open(bool is_first)
{
    if (const Fault *missing = find_fault(faults_, FaultKind::no_device, ALWAYS)) {
        return -missing->value;
    }
    if (state_.is_gone) {
        return -ENOENT;
    }
    state_.speed_hz = is_first ? DEFAULT_SPEED_HZ : state_.speed_hz;
    return state_.generation;
}

int SpiDevice::ioctl(unsigned long request, void *argument, int generation)
{
    int refusal = state_.is_gone || generation != state_.generation ? -ESHUTDOWN : 0;
    if (!is_message(request)) {
        return refusal != 0 ? refusal : configure(request, argument);
    }
    const int count = transfers_of(request);
    if (count < 0) {
        return refusal != 0 ? refusal : -EINVAL;
    }
    std::vector<spi_ioc_transfer> transfers(static_cast<size_t>(count));
    if (!copy_from_user(transfers.data(), user_address(argument),
                        transfers.size() * sizeof(spi_ioc_transfer))) {
        transfers.clear();
        refusal = refusal != 0 || count == 0 ? refusal : -EFAULT;
    }
    return transfers.empty() ? refusal : message(transfers, refusal);
}

// A message that has already been refused is a failing exchange.
int SpiDevice::message(std::span<const spi_ioc_transfer> transfers, int refusal)
{
    ++state_.exchanges;
    const MessageLength length = measure(transfers);
    refusal = refusal != 0 ? refusal : fetch(transfers, length);
    const Fault *fault = find_fault(faults_, FaultKind::exchange, state_.exchanges);
    if (refusal == 0 && fault == nullptr && (length.sent != 0 || length.received != 0)) {
        return exchange_bytes(transfers);
    }
    // Nothing reaches the wire.
    int result = static_cast<int>(length.total);
    if (refusal != 0 || fault != nullptr) {
        result = refusal != 0 ? refusal : -fault->value;
    }
    observer_({state_.exchanges, {}, {}, length.total, result, {}});
    return result;
}

int SpiDevice::fetch(std::span<const spi_ioc_transfer> transfers, const MessageLength &length)
{
    if (length.total > MOST_BYTES || length.sent > buffer_size_ || length.received > buffer_size_) {
        return -EMSGSIZE;
    }
    mosi_.assign(static_cast<size_t>(length.total), 0); // what only receives sends zeros
    size_t at = 0;
    for (const spi_ioc_transfer &transfer : transfers) {
        if (transfer.tx_buf != 0 &&
            !copy_from_user(mosi_.data() + at, transfer.tx_buf, transfer.len)) {
            return -EFAULT;
        }
        at += transfer.len;
    }
    return std::ranges::all_of(transfers, is_possible) ? 0 : -EINVAL;
}

int SpiDevice::exchange_bytes(std::span<const spi_ioc_transfer> transfers)
{
    miso_.resize(mosi_.size());
    coprocessor_.exchange(mosi_, miso_);
    pass_(time_of(transfers));
    int result = static_cast<int>(mosi_.size());
    size_t at = 0;
    for (const spi_ioc_transfer &transfer : transfers) {
        if (transfer.rx_buf != 0 &&
            !copy_to_user(transfer.rx_buf, miso_.data() + at, transfer.len)) {
            result = -EFAULT; // the exchange went over the wire anyway
        }
        at += transfer.len;
    }
    observer_({state_.exchanges, mosi_, miso_, mosi_.size(), result, coprocessor_.note()});
    return result;
}

std::chrono::nanoseconds SpiDevice::time_of(std::span<const spi_ioc_transfer> transfers) const
{
    std::chrono::nanoseconds time{0};
    for (const spi_ioc_transfer &transfer : transfers) {
        const uint32_t speed_hz = transfer.speed_hz != 0 ? transfer.speed_hz : state_.speed_hz;
        time += wire_time(transfer.len, std::min(speed_hz, HIGHEST_SPEED_HZ)) +
                std::chrono::microseconds(transfer.delay_usecs);
    }
    return time;
}

int SpiDevice::set_speed(uint32_t speed_hz)
{
    if (const Fault *refused = find_fault(faults_, FaultKind::speed_refused, ALWAYS)) {
        return -refused->value;
    }
    if (speed_hz == 0) {
        return -EINVAL;
    }
    state_.speed_hz = speed_hz;
    return 0;
}

// Takes a setting from the program, or returns one to it.

template <typename Setting, typename Take>
int SpiDevice::take(const void *argument, Take take)
{
    Setting value = 0;
    return copy_from_user(&value, user_address(argument), sizeof(value)) ? take(value) : -EFAULT;
}

template <typename Setting>
int SpiDevice::give(void *argument, Setting value)
{
    return copy_to_user(user_address(argument), &value, sizeof(value)) ? 0 : -EFAULT;
}

// Settings of the wire that do not matter to the co-processor are stored and returned.
int SpiDevice::configure(unsigned long request, void *argument)
{
    const auto keep_mode = [this](uint32_t mode) {
        state_.mode = mode;
        return 0;
    };
    const auto keep_order = [this](uint8_t lowest_first) {
        state_.mode = lowest_first != 0 ? state_.mode | SPI_LSB_FIRST
                                        : state_.mode & ~uint32_t{SPI_LSB_FIRST};
        return 0;
    };
    switch (request) {
    case SPI_IOC_WR_MAX_SPEED_HZ:
        return take<uint32_t>(argument, [this](uint32_t speed_hz) { return set_speed(speed_hz); });
    case SPI_IOC_RD_MAX_SPEED_HZ:
        return give<uint32_t>(argument, state_.speed_hz);
    case SPI_IOC_WR_MODE:
        return take<uint8_t>(argument, keep_mode);
    case SPI_IOC_RD_MODE:
        return give<uint8_t>(argument, static_cast<uint8_t>(state_.mode));
    case SPI_IOC_WR_MODE32:
        return take<uint32_t>(argument, keep_mode);
    case SPI_IOC_RD_MODE32:
        return give<uint32_t>(argument, state_.mode);
    case SPI_IOC_WR_LSB_FIRST:
        return take<uint8_t>(argument, keep_order);
    case SPI_IOC_RD_LSB_FIRST:
        return give<uint8_t>(argument, (state_.mode & SPI_LSB_FIRST) != 0 ? 1 : 0);
    case SPI_IOC_WR_BITS_PER_WORD:
        return take<uint8_t>(argument,
                             [](uint8_t bits) { return bits == 8 || bits == 0 ? 0 : -EINVAL; });
    case SPI_IOC_RD_BITS_PER_WORD:
        return give<uint8_t>(argument, 8);
    default:
        return -ENOTTY;
    }
}

} // namespace simulator
