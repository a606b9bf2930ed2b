// The application's side of the parameter commands: the effect of each on the board's settings and
// memory, and its answer.
#pragma once

#include "simulator/board/response.hpp"
#include "simulator/commands/setting_slots.hpp"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace simulator
{

inline constexpr size_t PARAMETER_BYTES = 6;

class Application
{
  public:
    using Parameters = std::span<const uint8_t, PARAMETER_BYTES>;

    // The board's settings are what its folder has, and nothing has been read.
    void load();

    // Resets everything that does not survive a loss of power.
    void restart();

    // The settings: each as it was received, or else as the board had it.
    CommandValues settings(const Board &board) const;

    // Grows with each setting that is received.
    uint32_t received() const { return received_; }

    // Carries out a command. A reply may be put into the buffer; the note is for people who read the
    // dialogue.
    Response perform(const Board &board, const Command &command, Parameters parameters,
                     BlockBytes buffer, std::string &note);

  private:
    struct ReceivedSetting {
        uint32_t values[2];
        uint8_t is_received;
        uint8_t unused[3];
    };

    Response set(const Board &board, const Command &command, Parameters parameters,
                 std::string &note);
    Response tell_number(const Board &board, const Command &command, Parameters parameters,
                         BlockBytes buffer, std::string &note) const;
    Response read_byte(const Board &board, Parameters parameters, BlockBytes buffer,
                       std::string &note);
    Response tell_adc_values(const Board &board, BlockBytes buffer);
    uint8_t byte_at(const Board &board, int address);
    std::string words_of(size_t slot) const;
    std::optional<std::string> setting(const Board &board, CommandKey key) const;

    uint32_t adc_start_ = 1;
    uint32_t received_ = 0;
    ReceivedSetting settings_[SETTING_SLOTS] = {};
    uint32_t reads_[MOST_ADDRESS_ANSWERS] = {}; // how much of each answer for an address was read
};

} // namespace simulator
