// What a hand does to a board that programs are using.
#include "simulator/store/order.hpp"

#include "simulator/store/board_directory.hpp"

#include <algorithm>

namespace simulator
{

namespace
{

template <Mode mode>
void restart(RunningState &state)
{
    state.board.told_restart = restart_as(mode);
}

void silence(RunningState &state)
{
    state.board.is_told_silent = true;
}

// A device that goes is counted at once: it may be back before anybody looks for it.
void go(RunningState &state)
{
    ++state.driver.told_absences;
    state.driver.is_told_gone = true;
}

void come_back(RunningState &state)
{
    state.board.is_told_silent = false;
    state.driver.is_told_gone = false;
}

constexpr Order ORDERS[] = {
    {"restart", "the co-processor restarts, and runs the application", restart<Mode::application>},
    {"restart=boot-loader", "the same, but it runs the boot loader", restart<Mode::boot_loader>},
    {"silence", "the co-processor neither listens nor answers", silence},
    {"gone", "the device is not there", go},
    {"back", "the device is there again, and the co-processor answers", come_back},
};

} // namespace

std::span<const Order> orders()
{
    return ORDERS;
}

const Order *find_order(std::string_view words)
{
    const auto *const found = std::ranges::find(ORDERS, words, &Order::words);
    return found != std::end(ORDERS) ? found : nullptr;
}

// A folder that no program uses is left as it is, even if it is no board.
std::string tell(const std::string &directory, const Order &order)
{
    std::string unused = directory + ": no program uses this board";
    if (!SharedState::is_used(directory)) {
        return unused;
    }
    BoardDirectory board;
    uint8_t *bytes = nullptr;
    std::string error = board.open(directory);
    if (error.empty()) {
        error = board.map_shared(SharedState::fresh(), bytes);
    }
    if (!error.empty()) {
        return error;
    }
    SharedState shared;
    shared.use(bytes, BoardDirectory::stand_in(directory));
    return shared.change(order.obey) ? "" : unused;
}

} // namespace simulator
