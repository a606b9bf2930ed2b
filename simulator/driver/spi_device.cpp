// The kernel's SPI device driver in front of a co-processor.
#include "simulator/driver/spi_device.hpp"

#include "simulator/driver/user_memory.hpp"

#include <sys/ioctl.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace simulator
{

namespace
{

// The driver rounds each transfer up to the alignment of its memory before it adds them up.
#ifdef __arm__
constexpr uint64_t ALIGNMENT = 64;
#else
constexpr uint64_t ALIGNMENT = 8;
#endif

constexpr uint64_t MOST_BYTES = INT32_MAX; // of one call, including those without a buffer

// What the controller supports: the modes of the clock, and words of eight bits on single lines.
constexpr uint32_t POSSIBLE_MODES = SPI_CPOL | SPI_CPHA | SPI_CS_HIGH | SPI_LSB_FIRST;

// More lines are a wish that the kernel drops where the controller has none; not so two at once.
constexpr uint32_t LINES_OUT = SPI_TX_DUAL | SPI_TX_QUAD;
constexpr uint32_t LINES_IN = SPI_RX_DUAL | SPI_RX_QUAD;
constexpr uint32_t DROPPED_MODES = LINES_OUT | LINES_IN | SPI_TX_OCTAL | SPI_RX_OCTAL;

bool has_both(uint32_t mode, uint32_t both)
{
    return (mode & both) == both;
}

bool is_possible(const spi_ioc_transfer &transfer)
{
    return (transfer.bits_per_word == 0 || transfer.bits_per_word == 8) &&
           (transfer.tx_nbits <= 1 || transfer.tx_buf == 0) &&
           (transfer.rx_nbits <= 1 || transfer.rx_buf == 0);
}

uint64_t rounded(uint64_t length)
{
    return (length + ALIGNMENT - 1) / ALIGNMENT * ALIGNMENT;
}

// A transfer without a buffer has a length, but nothing of it goes over the wire.
uint32_t wire_length(const spi_ioc_transfer &transfer)
{
    return transfer.tx_buf != 0 || transfer.rx_buf != 0 ? transfer.len : 0;
}

uint64_t total_length(std::span<const spi_ioc_transfer> transfers)
{
    uint64_t total = 0;
    for (const spi_ioc_transfer &transfer : transfers) {
        total += transfer.len;
    }
    return total;
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

bool SpiDevice::is_dead(int generation) const
{
    return state_.is_gone || generation != state_.generation;
}

int SpiDevice::ioctl(unsigned long request, void *argument, int generation)
{
    int refusal = is_dead(generation) ? -ESHUTDOWN : 0;
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

namespace
{

// That a message has no buffer is no mistake; that a read has none is one, as any other bad address.
uint64_t buffer_at(const void *address)
{
    return std::max<uint64_t>(user_address(address), 1);
}

} // namespace

int SpiDevice::read(void *to, size_t size, int generation)
{
    spi_ioc_transfer transfer = {};
    transfer.rx_buf = buffer_at(to);
    return half_exchange(transfer, size, generation);
}

int SpiDevice::write(const void *from, size_t size, int generation)
{
    spi_ioc_transfer transfer = {};
    transfer.tx_buf = buffer_at(from);
    return half_exchange(transfer, size, generation);
}

// A size that is too large is refused before anything else is looked at.
int SpiDevice::half_exchange(const spi_ioc_transfer &transfer, size_t size, int generation)
{
    if (size > buffer_size_) {
        return -EMSGSIZE;
    }
    spi_ioc_transfer whole = transfer;
    whole.len = static_cast<uint32_t>(size);
    return size == 0 ? 0 : message({&whole, 1}, is_dead(generation) ? -ESHUTDOWN : 0);
}

// A message that has already been refused is a failing exchange.
int SpiDevice::message(std::span<const spi_ioc_transfer> transfers, int refusal)
{
    ++state_.exchanges;
    refusal = refusal != 0 ? refusal : fetch(transfers);
    const Fault *fault = find_fault(faults_, FaultKind::exchange, state_.exchanges);
    if (refusal == 0 && fault == nullptr && !mosi_.empty()) {
        return exchange_bytes(transfers);
    }
    // Nothing reaches the wire.
    const uint64_t length = total_length(transfers);
    int result = static_cast<int>(length);
    if (refusal != 0 || fault != nullptr) {
        result = refusal != 0 ? refusal : -fault->value;
    }
    observer_({state_.exchanges, {}, {}, length, result, {}});
    return result;
}

// Takes one transfer after the other, and the first that is wrong decides.
int SpiDevice::fetch(std::span<const spi_ioc_transfer> transfers)
{
    uint64_t total = 0;
    uint64_t sent = 0;
    uint64_t received = 0;
    mosi_.clear();
    for (const spi_ioc_transfer &transfer : transfers) {
        total += transfer.len;
        sent += transfer.tx_buf != 0 ? rounded(transfer.len) : 0;
        received += transfer.rx_buf != 0 ? rounded(transfer.len) : 0;
        if (total > MOST_BYTES || sent > buffer_size_ || received > buffer_size_) {
            return -EMSGSIZE;
        }
        if (!fetch_bytes(transfer)) {
            return -EFAULT;
        }
    }
    return std::ranges::all_of(transfers, is_possible) ? 0 : -EINVAL;
}

bool SpiDevice::fetch_bytes(const spi_ioc_transfer &transfer)
{
    const size_t at = mosi_.size();
    mosi_.resize(at + wire_length(transfer)); // what only receives sends zeros
    return transfer.tx_buf == 0 || copy_from_user(mosi_.data() + at, transfer.tx_buf, transfer.len);
}

int SpiDevice::exchange_bytes(std::span<const spi_ioc_transfer> transfers)
{
    miso_.resize(mosi_.size());
    coprocessor_.exchange(mosi_, miso_);
    pass_(time_of(transfers));
    const int result = deliver(transfers);
    observer_({state_.exchanges, mosi_, miso_, mosi_.size(), result, coprocessor_.note()});
    return result;
}

// The exchange has gone over the wire, even if its bytes cannot be delivered.
int SpiDevice::deliver(std::span<const spi_ioc_transfer> transfers) const
{
    size_t at = 0;
    for (const spi_ioc_transfer &transfer : transfers) {
        if (transfer.rx_buf != 0 &&
            !copy_to_user(transfer.rx_buf, miso_.data() + at, transfer.len)) {
            return -EFAULT;
        }
        at += wire_length(transfer);
    }
    return static_cast<int>(total_length(transfers));
}

std::chrono::nanoseconds SpiDevice::time_of(std::span<const spi_ioc_transfer> transfers) const
{
    std::chrono::nanoseconds time{0};
    for (const spi_ioc_transfer &transfer : transfers) {
        const uint32_t speed_hz = transfer.speed_hz != 0 ? transfer.speed_hz : state_.speed_hz;
        time += wire_time(wire_length(transfer), std::min(speed_hz, HIGHEST_SPEED_HZ)) +
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

int SpiDevice::set_mode(uint32_t mode)
{
    if ((mode & ~(POSSIBLE_MODES | DROPPED_MODES)) != 0 || has_both(mode, LINES_OUT) ||
        has_both(mode, LINES_IN)) {
        return -EINVAL;
    }
    state_.mode = mode & POSSIBLE_MODES;
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

// Settings of the wire do not matter to the co-processor.
int SpiDevice::configure(unsigned long request, void *argument)
{
    const auto set_whole_mode = [this](uint32_t mode) { return set_mode(mode); };
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
        return take<uint8_t>(argument, set_whole_mode);
    case SPI_IOC_RD_MODE:
        return give<uint8_t>(argument, static_cast<uint8_t>(state_.mode));
    case SPI_IOC_WR_MODE32:
        return take<uint32_t>(argument, set_whole_mode);
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
