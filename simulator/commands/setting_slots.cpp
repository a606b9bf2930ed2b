// The settings in a row.
#include "simulator/commands/setting_slots.hpp"

#include <algorithm>

namespace simulator
{

const std::array<CommandKey, SETTING_SLOTS> &setting_keys()
{
    static const auto keys = [] {
        std::array<CommandKey, SETTING_SLOTS> row = {};
        size_t slot = 0;
        for (const Command &command : commands()) {
            const bool is_setting = command.kind == CommandKind::setting;
            const int first = command.channels == 0 ? NO_PLACE : 0;
            for (int place = first; is_setting && place < command.channels; ++place) {
                row.at(slot++) = {command.code, place};
            }
        }
        return row;
    }();
    return keys;
}

std::optional<size_t> setting_slot(CommandKey key)
{
    const auto &keys = setting_keys();
    const auto *const found = std::ranges::find(keys, key);
    return found == keys.end() ? std::nullopt
                               : std::optional(static_cast<size_t>(found - keys.begin()));
}

} // namespace simulator
