// The driver before the co-processor, asked without a program in between.
#include "simulator/driver/spi_device.hpp"
#include "tests/simulator/virtual_wire.hpp"

#include <sys/ioctl.h>

#include <cerrno>

namespace simulator
{

namespace
{

using std::chrono::nanoseconds;

class SpiDeviceTest : public VirtualWire
{
  protected:
    SpiDevice device_with(const Faults &faults)
    {
        Behaviour behaviour;
        behaviour.faults = faults;
        return {*coprocessor, behaviour, [this](nanoseconds time) { passed += time; },
                [this](const Exchange &exchange) { seen.push_back(exchange.number); }};
    }

    static spi_ioc_transfer transfer(const Bytes &sent, Bytes &received)
    {
        spi_ioc_transfer descriptor = {};
        descriptor.tx_buf = reinterpret_cast<uintptr_t>(sent.data());
        descriptor.rx_buf = reinterpret_cast<uintptr_t>(received.data());
        descriptor.len = static_cast<uint32_t>(sent.size());
        return descriptor;
    }

    static int exchange(SpiDevice &device, const Bytes &sent, Bytes &received)
    {
        spi_ioc_transfer descriptor = transfer(sent, received);
        return device.ioctl(SPI_IOC_MESSAGE(1), &descriptor);
    }

    static int set_speed(SpiDevice &device, uint32_t speed_hz)
    {
        return device.ioctl(SPI_IOC_WR_MAX_SPEED_HZ, &speed_hz);
    }

    nanoseconds passed{0};
    std::vector<int> seen;
};

TEST_F(SpiDeviceTest, numbers_every_exchange_also_those_that_it_refuses)
{
    SpiDevice device = device_with({});
    Bytes received(5000);
    EXPECT_EQ(exchange(device, {0x91}, received), 1);
    EXPECT_EQ(exchange(device, Bytes(4097), received), -EMSGSIZE);
    EXPECT_EQ(exchange(device, {}, received), 0);
    EXPECT_EQ(exchange(device, {0x44}, received), 1);
    EXPECT_EQ(received[0], 5);
    EXPECT_EQ(seen, (std::vector<int>{1, 2, 3, 4}));
}

TEST_F(SpiDeviceTest, sends_what_a_buffer_holds_now_and_not_what_it_held_before)
{
    SpiDevice device = device_with({});
    Bytes sent = {0x91};
    Bytes received(3);
    EXPECT_EQ(exchange(device, sent, received), 1);
    sent[0] = 0x44;
    EXPECT_EQ(exchange(device, sent, received), 1);
    EXPECT_EQ(received[0], 5);
}

TEST_F(SpiDeviceTest, sends_as_many_bytes_of_a_buffer_as_are_asked_for_each_time)
{
    SpiDevice device = device_with({});
    const Bytes sent = {0x91, 0, 0};
    Bytes received(3);
    for (const uint32_t length : {3U, 1U, 2U}) {
        spi_ioc_transfer descriptor = transfer(sent, received);
        descriptor.len = length;
        EXPECT_EQ(device.ioctl(SPI_IOC_MESSAGE(1), &descriptor), static_cast<int>(length));
    }
    spi_ioc_transfer two[] = {transfer(sent, received), transfer(sent, received)};
    two[0].len = 2;
    EXPECT_EQ(device.ioctl(SPI_IOC_MESSAGE(2), two), 5);
}

TEST_F(SpiDeviceTest, refuses_more_than_its_buffer_in_either_direction)
{
    SpiDevice device = device_with({});
    const Bytes sent(4097);
    Bytes received(4097);
    spi_ioc_transfer one_way = transfer(sent, received);
    one_way.tx_buf = 0;
    EXPECT_EQ(device.ioctl(SPI_IOC_MESSAGE(1), &one_way), -EMSGSIZE);
    one_way = transfer(sent, received);
    one_way.rx_buf = 0;
    EXPECT_EQ(device.ioctl(SPI_IOC_MESSAGE(1), &one_way), -EMSGSIZE);
    one_way.len = 4096;
    EXPECT_EQ(device.ioctl(SPI_IOC_MESSAGE(1), &one_way), 4096);
}

TEST_F(SpiDeviceTest, takes_as_much_as_its_buffer_is_told_to_hold)
{
    for (const int size : {64, 4096, 65536, 1'048'576}) { // as ARM rounds
        Behaviour behaviour;
        behaviour.buffer_size = size;
        SpiDevice device(
            *coprocessor, behaviour, [](nanoseconds) {}, [](const Exchange &) {});
        const auto most = static_cast<size_t>(size);
        Bytes received(most + 1);
        EXPECT_EQ(exchange(device, Bytes(most), received), size);
        EXPECT_EQ(exchange(device, Bytes(most + 1), received), -EMSGSIZE);
    }
}

constexpr TimeSpan seconds_from_to(int from, int until)
{
    return {std::chrono::seconds(from), std::chrono::seconds(until)};
}

TEST_F(SpiDeviceTest, is_gone_from_the_first_moment_to_the_last_and_then_there_again)
{
    SpiDevice device = device_with({{FaultKind::absence, ALWAYS, 0, seconds_from_to(2, 4)}});
    Bytes received(1);
    device.advance_to(nanoseconds(1'999'999'999));
    EXPECT_EQ(device.open(true), 0);
    EXPECT_EQ(exchange(device, {0x91}, received), 1);
    for (const int64_t time : {int64_t{2'000'000'000}, int64_t{3'999'999'999}}) {
        device.advance_to(nanoseconds(time));
        EXPECT_EQ(device.open(true), -ENOENT);
        EXPECT_EQ(exchange(device, {0x44}, received), -ESHUTDOWN);
    }
    device.advance_to(nanoseconds(4'000'000'000));
    EXPECT_EQ(exchange(device, {0x44}, received), -ESHUTDOWN);
    EXPECT_EQ(device.open(true), 1);
    const Bytes sent = {0x44};
    spi_ioc_transfer poll = transfer(sent, received);
    EXPECT_EQ(device.ioctl(SPI_IOC_MESSAGE(1), &poll, 1), 1);
    EXPECT_EQ(received[0], 5) << "the co-processor has kept its power";
    EXPECT_EQ(seen, (std::vector<int>{1, 2, 3, 4, 5})) << "those that fail are seen, too";
}

TEST_F(SpiDeviceTest, comes_back_with_its_defaults_which_an_old_descriptor_leaves_alone)
{
    SpiDevice device = device_with({{FaultKind::absence, ALWAYS, 0, seconds_from_to(2, 4)}});
    EXPECT_EQ(device.open(true), 0);
    uint32_t speed_hz = 6'000'000;
    uint8_t mode = 3;
    EXPECT_EQ(device.ioctl(SPI_IOC_WR_MAX_SPEED_HZ, &speed_hz), 0);
    EXPECT_EQ(device.ioctl(SPI_IOC_WR_MODE, &mode), 0);
    device.advance_to(std::chrono::seconds(5));
    EXPECT_EQ(device.open(true), 1);
    EXPECT_EQ(device.ioctl(SPI_IOC_RD_MAX_SPEED_HZ, &speed_hz, 1), 0);
    EXPECT_EQ(speed_hz, 1'000'000U);
    EXPECT_EQ(device.ioctl(SPI_IOC_RD_MODE, &mode, 1), 0);
    EXPECT_EQ(mode, 0);
    speed_hz = 2'000'000;
    EXPECT_EQ(device.ioctl(SPI_IOC_WR_MAX_SPEED_HZ, &speed_hz, 1), 0);
    EXPECT_EQ(device.open(false), 1);
    EXPECT_EQ(device.ioctl(SPI_IOC_RD_MAX_SPEED_HZ, &speed_hz, 1), 0);
    EXPECT_EQ(speed_hz, 2'000'000U);
    EXPECT_EQ(device.open(true), 1);
    EXPECT_EQ(device.ioctl(SPI_IOC_RD_MAX_SPEED_HZ, &speed_hz, 1), 0);
    EXPECT_EQ(speed_hz, 1'000'000U) << "all others were closed";
    for (const unsigned long request : {static_cast<unsigned long>(SPI_IOC_WR_MAX_SPEED_HZ),
                                        static_cast<unsigned long>(SPI_IOC_RD_MODE), 0x5401UL,
                                        static_cast<unsigned long>(SPI_IOC_MESSAGE(0))}) {
        EXPECT_EQ(device.ioctl(request, &speed_hz, 0), -ESHUTDOWN) << request;
    }
}

TEST_F(SpiDeviceTest, can_be_gone_several_times)
{
    SpiDevice device = device_with({{FaultKind::absence, ALWAYS, 0, seconds_from_to(6, 7)},
                                    {FaultKind::absence, ALWAYS, 0, seconds_from_to(2, 4)}});
    device.advance_to(std::chrono::seconds(5));
    EXPECT_EQ(device.open(true), 1);
    device.advance_to(std::chrono::seconds(6));
    EXPECT_EQ(device.open(true), -ENOENT);
    device.advance_to(std::chrono::seconds(7));
    EXPECT_EQ(device.open(true), 2);
    uint32_t speed_hz = 0;
    EXPECT_EQ(device.ioctl(SPI_IOC_RD_MAX_SPEED_HZ, &speed_hz, 1), -ESHUTDOWN);
    EXPECT_EQ(device.ioctl(SPI_IOC_RD_MAX_SPEED_HZ, &speed_hz, 2), 0);
}

TEST_F(SpiDeviceTest, fails_the_exchange_of_a_fault_and_no_other)
{
    SpiDevice device = device_with({{FaultKind::exchange, 2, ETIMEDOUT}});
    Bytes received(1, 0x77);
    EXPECT_EQ(exchange(device, {0x91}, received), 1);
    received[0] = 0x77;
    EXPECT_EQ(exchange(device, {0x44}, received), -ETIMEDOUT);
    EXPECT_EQ(received[0], 0x77);
    EXPECT_EQ(exchange(device, {0x44}, received), 1);
    EXPECT_EQ(received[0], 5); // the failed exchange never reached the co-processor
}

TEST_F(SpiDeviceTest, cannot_be_opened_when_it_is_not_there)
{
    EXPECT_EQ(device_with({}).open(true), 0);
    EXPECT_EQ(device_with({{FaultKind::no_device, ALWAYS, EACCES}}).open(true), -EACCES);
}

TEST_F(SpiDeviceTest, refuses_its_clock_by_fault_and_keeps_its_own)
{
    SpiDevice device = device_with({{FaultKind::speed_refused, ALWAYS, EINVAL}});
    EXPECT_EQ(set_speed(device, 6'000'000), -EINVAL);
    uint32_t speed_hz = 0;
    EXPECT_EQ(device.ioctl(SPI_IOC_RD_MAX_SPEED_HZ, &speed_hz), 0);
    EXPECT_EQ(speed_hz, 1'000'000U);
}

TEST_F(SpiDeviceTest, takes_the_time_that_its_clock_needs)
{
    SpiDevice device = device_with({});
    Bytes received(4096);
    exchange(device, Bytes(1000), received);
    EXPECT_EQ(passed, nanoseconds(8'000'000));
    set_speed(device, 6'000'000);
    exchange(device, Bytes(3), received);
    EXPECT_EQ(passed, nanoseconds(8'004'000));
    set_speed(device, 99'000'000); // more than the controller has
    exchange(device, Bytes(1000), received);
    EXPECT_EQ(passed, nanoseconds(8'804'000));
}

TEST_F(SpiDeviceTest, lets_no_time_pass_for_what_never_reaches_the_wire)
{
    SpiDevice device = device_with({{FaultKind::exchange, 3, EIO}});
    Bytes received(5000);
    exchange(device, Bytes(4097), received);
    exchange(device, {}, received);
    exchange(device, {1}, received);
    EXPECT_EQ(passed, nanoseconds(0));
}

TEST_F(SpiDeviceTest, keeps_mode_and_gives_it_back)
{
    SpiDevice device = device_with({});
    uint8_t mode = 3;
    EXPECT_EQ(device.ioctl(SPI_IOC_WR_MODE, &mode), 0);
    uint32_t wide = 0;
    EXPECT_EQ(device.ioctl(SPI_IOC_RD_MODE32, &wide), 0);
    EXPECT_EQ(wide, 3U);
    wide = 0x101;
    EXPECT_EQ(device.ioctl(SPI_IOC_WR_MODE32, &wide), 0);
    EXPECT_EQ(device.ioctl(SPI_IOC_RD_MODE, &mode), 0);
    EXPECT_EQ(mode, 1);
    uint8_t bits = 0;
    EXPECT_EQ(device.ioctl(SPI_IOC_RD_BITS_PER_WORD, &bits), 0);
    EXPECT_EQ(bits, 8);
}

TEST_F(SpiDeviceTest, has_the_modes_of_its_controller_and_drops_more_lines)
{
    SpiDevice device = device_with({});
    const auto set = [&](uint32_t mode) { return device.ioctl(SPI_IOC_WR_MODE32, &mode); };
    EXPECT_EQ(set(SPI_MODE_3 | SPI_CS_HIGH | SPI_LSB_FIRST), 0);
    EXPECT_EQ(device.mode(), 0xFU);
    for (int bit = 4; bit < 32; ++bit) {
        const bool is_dropped = (bit >= 8 && bit <= 11) || bit == 13 || bit == 14;
        EXPECT_EQ(set(SPI_MODE_1 | 1U << bit), is_dropped ? 0 : -EINVAL) << bit;
        EXPECT_EQ(device.mode(), is_dropped ? SPI_MODE_1 : 0xFU) << bit;
        EXPECT_EQ(set(0xF), 0);
    }
    EXPECT_EQ(set(SPI_TX_DUAL | SPI_TX_QUAD), -EINVAL);
    EXPECT_EQ(set(SPI_RX_DUAL | SPI_RX_QUAD), -EINVAL);
    EXPECT_EQ(set(SPI_TX_DUAL | SPI_RX_QUAD), 0);
    device.keep_mode(0x101);
    EXPECT_EQ(device.mode(), 0x101U) << "whatever was kept, of another controller";
}

TEST_F(SpiDeviceTest, reads_while_it_sends_zeros_and_writes_without_looking_at_what_comes)
{
    SpiDevice device = device_with({});
    const Bytes question = {0x91};
    EXPECT_EQ(device.write(question.data(), 1), 1);
    Bytes received(3, 0x77);
    EXPECT_EQ(exchange(device, {0x44}, received), 1);
    EXPECT_EQ(received[0], 5);
    EXPECT_EQ(device.read(received.data(), 2), 2);
    EXPECT_EQ(received, (Bytes{0, 0, 0x77}));
    const Bytes many(4097);
    EXPECT_EQ(device.write(many.data(), 4097), -EMSGSIZE);
    EXPECT_EQ(device.write(many.data(), 0), 0);
    EXPECT_EQ(device.read(nullptr, 4), -EFAULT);
    EXPECT_EQ(device.write(nullptr, 4), -EFAULT);
    EXPECT_EQ(device.read(received.data(), 2, 1), -ESHUTDOWN);
    EXPECT_EQ(seen, (std::vector<int>{1, 2, 3, 4, 5, 6}));
}

TEST_F(SpiDeviceTest, sends_nothing_for_a_transfer_without_buffers)
{
    SpiDevice device = device_with({});
    const Bytes sent = {0x91};
    Bytes received(1);
    spi_ioc_transfer two[] = {{}, transfer(sent, received)};
    two[0].len = 0x7FFF'FFFE;
    EXPECT_EQ(device.ioctl(SPI_IOC_MESSAGE(2), two), 0x7FFF'FFFF);
    EXPECT_EQ(passed, nanoseconds(8000));
    EXPECT_EQ(exchange(device, {0x44}, received), 1);
    EXPECT_EQ(received[0], 5);
    two[0].len = 0x7FFF'FFFF;
    EXPECT_EQ(device.ioctl(SPI_IOC_MESSAGE(2), two), -EMSGSIZE);
}

TEST_F(SpiDeviceTest, knows_a_message_by_its_request)
{
    EXPECT_EQ(transfers_of(_IOC(_IOC_WRITE, SPI_IOC_MAGIC, 0, 0)), 0);
    EXPECT_EQ(transfers_of(SPI_IOC_MESSAGE(1)), 1);
    EXPECT_EQ(transfers_of(SPI_IOC_MESSAGE(511)), 511);
    EXPECT_EQ(transfers_of(SPI_IOC_WR_MAX_SPEED_HZ), -1);
    EXPECT_EQ(transfers_of(_IOW(SPI_IOC_MAGIC, 0, char[33])), -1);
    EXPECT_EQ(transfers_of(_IOR(SPI_IOC_MAGIC, 0, char[32])), -1);
    EXPECT_EQ(transfers_of(0x5401), -1);
}

} // namespace

} // namespace simulator
