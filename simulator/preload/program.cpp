// A program's virtual board: what its calls for the device do.
#include "simulator/preload/program.hpp"

#include "simulator/driver/user_memory.hpp"
#include "simulator/preload/this_run.hpp"
#include "simulator/preload/turn.hpp"
#include "simulator/store/open_descriptors.hpp"

#include <cerrno>
#include <vector>

namespace simulator
{

namespace
{

std::chrono::nanoseconds transcript_start()
{
    static const std::chrono::nanoseconds start = now();
    return start;
}

// Appends the bytes of a buffer, if there is one that a driver would have accepted.
void append(std::vector<uint8_t> &bytes, uint64_t user_address, uint32_t length)
{
    if (user_address == 0 || length > static_cast<uint32_t>(run_options().behaviour.buffer_size)) {
        return;
    }
    const size_t size = bytes.size();
    bytes.resize(size + length);
    if (!copy_from_user(bytes.data() + size, user_address, length)) {
        bytes.resize(size);
    }
}

} // namespace

bool leaves_device_real()
{
    return run_options().through;
}

std::string device_stand_in()
{
    return BoardDirectory::stand_in(run_options().directory);
}

void begin_transcript()
{
    transcript_start();
}

// While nobody else uses the board, its files may be edited between the last close and an open.
int device_open()
{
    const Turn turn(board());
    begin_call(board());
    const bool is_first = !has_descriptors(device_stand_in());
    if (is_first && board().shared.is_alone()) {
        if (board().has_opened) {
            check(board().kept.save(board().coprocessor, board().device));
        }
        check(board().kept.load(board().coprocessor, board().device));
    }
    board().has_opened = true;
    const int generation = board().device.open(is_first);
    if (generation >= 0) {
        check(board().kept.renew_stand_in(generation));
    }
    return generation;
}

int device_ioctl(int generation, unsigned long request, void *argument)
{
    const Turn turn(board());
    begin_call(board());
    return board().device.ioctl(request, argument, generation);
}

int device_read(int generation, void *to, size_t size)
{
    const Turn turn(board());
    begin_call(board());
    return board().device.read(to, size, generation);
}

int device_write(int generation, const void *from, size_t size)
{
    const Turn turn(board());
    begin_call(board());
    return board().device.write(from, size, generation);
}

bool device_is_there()
{
    const Fault *missing = find_fault(run_options().behaviour.faults, FaultKind::no_device, ALWAYS);
    if (missing != nullptr && missing->value == ENOENT) {
        return false;
    }
    if (!SharedState::is_used(run_options().directory)) {
        return true;
    }
    const Turn turn(board());
    begin_call(board());
    return !board().device.is_gone();
}

void record_real_message(std::span<const spi_ioc_transfer> transfers, int result)
{
    static int number = 0;
    std::vector<uint8_t> sent;
    std::vector<uint8_t> received;
    uint64_t length = 0;
    for (const spi_ioc_transfer &transfer : transfers) {
        length += transfer.len;
        append(sent, transfer.tx_buf, transfer.len);
        append(received, result < 0 ? 0 : transfer.rx_buf, transfer.len);
    }
    note_exchange({++number, sent, received, length, result, {}}, now() - transcript_start());
}

} // namespace simulator
