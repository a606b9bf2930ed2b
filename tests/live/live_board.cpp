// The module on the virtual co-processor. The linker sends the module's calls here (--wrap).
#include "tests/live/live_board.hpp"

#include "link/link.hpp"

#include <cerrno>
#include <cstdarg>

using namespace stm;

namespace
{

LiveBoard *running_board = nullptr;

} // namespace

LiveBoard::LiveBoard(const simulator::Behaviour &behaviour)
    : flash_(simulator::FLASH_SIZE), memory_(simulator::MEMORY_SIZE),
      coprocessor_({std::span<uint8_t, simulator::FLASH_SIZE>(flash_),
                    std::span<uint8_t, simulator::MEMORY_SIZE>(memory_)},
                   {}, behaviour),
      device_(
          coprocessor_, behaviour, [this](auto time) { clock_.advance(time); },
          [](const simulator::Exchange &) {})
{
    running_board = this;
    stm_link = {};
    device_.open(true);
    uint32_t speed_hz = STM_SPI_SPEED_HZ;
    device_.ioctl(SPI_IOC_WR_MAX_SPEED_HZ, &speed_hz);
}

LiveBoard::~LiveBoard()
{
    running_board = nullptr;
}

LiveBoard &LiveBoard::running()
{
    return *running_board;
}

int LiveBoard::on_ioctl(unsigned long request, void *argument)
{
    coprocessor_.advance_to(clock_.elapsed());
    const int result = device_.ioctl(request, argument);
    if (result < 0) {
        errno = -result;
        return -1;
    }
    return result;
}

void LiveBoard::on_usleep(unsigned microseconds)
{
    clock_.advance(std::chrono::microseconds(microseconds));
}

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" {

int __wrap_ioctl(int, unsigned long request, ...)
{
    va_list arguments;
    va_start(arguments, request);
    void *argument = va_arg(arguments, void *);
    va_end(arguments);
    return LiveBoard::running().on_ioctl(request, argument);
}

int __wrap_usleep(unsigned microseconds)
{
    LiveBoard::running().on_usleep(microseconds);
    return 0;
}
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
