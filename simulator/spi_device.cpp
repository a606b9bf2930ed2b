// The kernel's SPI device driver in front of a co-processor.
#include "simulator/spi_device.hpp"

#include <sys/ioctl.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <utility>

namespace simulator
{

namespace
{

void *address(uint64_t user_address)
{
    return reinterpret_cast<void *>(static_cast<uintptr_t>(user_address));
}

struct MessageLength {
    uint64_t total = 0;    // what the call returns
    uint64_t sent = 0;     // bytes with a buffer to send from
    uint64_t received = 0; // bytes with a buffer to receive into
};

MessageLength measure(std::span<const spi_ioc_transfer> transfers)
{
    MessageLength length;
    for (const spi_ioc_transfer &transfer : transfers) {
        length.total += transfer.len;
        length.sent += transfer.tx_buf != 0 ? transfer.len : 0;
        length.received += transfer.rx_buf != 0 ? transfer.len : 0;
    }
    return length;
}

} // namespace

int transfers_of(unsigned long request)
{
    const bool is_message = _IOC_TYPE(request) == SPI_IOC_MAGIC && _IOC_NR(request) == 0 &&
                            _IOC_DIR(request) == _IOC_WRITE;
    const size_t size = _IOC_SIZE(request);
    if (!is_message || size % sizeof(spi_ioc_transfer) != 0) {
        return -1;
    }
    return static_cast<int>(size / sizeof(spi_ioc_transfer));
}

SpiDevice::SpiDevice(Coprocessor &coprocessor, Faults faults, VirtualClock &clock,
                     Observer observer)
    : coprocessor_(coprocessor), faults_(std::move(faults)), clock_(clock),
      observer_(std::move(observer))
{
}

int SpiDevice::open()
{
    if (const Fault *missing = find_fault(faults_, FaultKind::no_device, ALWAYS)) {
        return -missing->value;
    }
    ++opened_;
    return 0;
}

void SpiDevice::close()
{
    if (--opened_ == 0) {
        speed_hz_ = DEFAULT_SPEED_HZ;
    }
}

int SpiDevice::ioctl(unsigned long request, void *argument)
{
    const int transfers = transfers_of(request);
    if (transfers == 0) {
        return 0;
    }
    if (argument == nullptr) {
        return _IOC_TYPE(request) == SPI_IOC_MAGIC ? -EFAULT : -ENOTTY;
    }
    return transfers > 0 ? message(static_cast<const spi_ioc_transfer *>(argument),
                                   static_cast<size_t>(transfers))
                         : configure(request, argument);
}

int SpiDevice::message(const spi_ioc_transfer *transfers, size_t count)
{
    const MessageLength length = measure({transfers, count});
    ++exchanges_;
    int result = 0;
    if (length.total > INT_MAX || length.sent > DRIVER_BUFFER_SIZE ||
        length.received > DRIVER_BUFFER_SIZE) {
        result = -EMSGSIZE;
    } else if (const Fault *fault = find_fault(faults_, FaultKind::exchange, exchanges_)) {
        result = -fault->value;
    } else if (length.sent != 0 || length.received != 0) {
        return exchange_bytes(transfers, count);
    } else {
        result = static_cast<int>(length.total); // nothing reaches the wire
    }
    observer_({exchanges_, {}, {}, length.total, result, {}});
    return result;
}

int SpiDevice::exchange_bytes(const spi_ioc_transfer *transfers, size_t count)
{
    mosi_.clear();
    for (const spi_ioc_transfer &transfer : std::span(transfers, count)) {
        const size_t at = mosi_.size();
        mosi_.resize(at + transfer.len, 0); // a transfer that only receives sends zeroes
        if (transfer.tx_buf != 0 && transfer.len != 0) {
            std::memcpy(mosi_.data() + at, address(transfer.tx_buf), transfer.len);
        }
    }
    miso_.resize(mosi_.size());
    clock_.advance(wire_time(mosi_.size(), std::min(speed_hz_, HIGHEST_SPEED_HZ)));
    coprocessor_.exchange(mosi_, miso_);
    size_t at = 0;
    for (const spi_ioc_transfer &transfer : std::span(transfers, count)) {
        if (transfer.rx_buf != 0 && transfer.len != 0) {
            std::memcpy(address(transfer.rx_buf), miso_.data() + at, transfer.len);
        }
        at += transfer.len;
    }
    const int result = static_cast<int>(mosi_.size());
    observer_({exchanges_, mosi_, miso_, mosi_.size(), result, coprocessor_.note()});
    return result;
}

int SpiDevice::set_speed(uint32_t speed_hz)
{
    if (const Fault *refused = find_fault(faults_, FaultKind::speed_refused, ALWAYS)) {
        return -refused->value;
    }
    if (speed_hz == 0) {
        return -EINVAL;
    }
    speed_hz_ = speed_hz;
    return 0;
}

// Settings of the wire that the co-processor does not look at are kept and given back.
int SpiDevice::configure(unsigned long request, void *argument)
{
    switch (request) {
    case SPI_IOC_WR_MAX_SPEED_HZ:
        return set_speed(*static_cast<const uint32_t *>(argument));
    case SPI_IOC_RD_MAX_SPEED_HZ:
        *static_cast<uint32_t *>(argument) = speed_hz_;
        return 0;
    case SPI_IOC_WR_MODE:
        mode_ = *static_cast<const uint8_t *>(argument);
        return 0;
    case SPI_IOC_RD_MODE:
        *static_cast<uint8_t *>(argument) = static_cast<uint8_t>(mode_);
        return 0;
    case SPI_IOC_WR_MODE32:
        mode_ = *static_cast<const uint32_t *>(argument);
        return 0;
    case SPI_IOC_RD_MODE32:
        *static_cast<uint32_t *>(argument) = mode_;
        return 0;
    case SPI_IOC_WR_BITS_PER_WORD: {
        const uint8_t bits = *static_cast<const uint8_t *>(argument);
        return bits == 8 || bits == 0 ? 0 : -EINVAL;
    }
    case SPI_IOC_RD_BITS_PER_WORD:
        *static_cast<uint8_t *>(argument) = bits_per_word_;
        return 0;
    default:
        return -ENOTTY;
    }
}

} // namespace simulator
