// The application's side of the parameter commands: the effect of each on the board's settings and
// memory, and its answer.
#pragma once

#include "simulator/commands/command_values.hpp"

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

namespace simulator
{

inline constexpr size_t MEMORY_SIZE = 0x10000;
inline constexpr size_t PARAMETER_BYTES = 6;

struct Response {
    uint16_t answer = 0; // a result, or the length of the reply
    std::vector<uint8_t> reply;
    std::string note; // for people who read the dialogue, as are the next two
    std::string answer_note = "result";
    std::string reply_note = "reply";
    bool big_endian = false; // the answer
    bool has_answer = true;  // otherwise the reply comes at once
    bool is_block = false;   // a reply of at most LARGEST_BLOCK bytes, whatever the answer
};

class Application
{
  public:
    using Parameters = std::span<const uint8_t, PARAMETER_BYTES>;

    Application(std::span<uint8_t, MEMORY_SIZE> memory, uint32_t seed, uint8_t adc_values)
        : memory_(memory), seed_(seed), adc_values_(adc_values)
    {
    }

    void load(CommandValues settings, CommandValues answers);
    // Resets everything that does not survive a loss of power.
    void restart();
    const CommandValues &settings() const { return settings_; }

    Response perform(const Command &command, Parameters parameters);

  private:
    Response set(const Command &command, Parameters parameters);
    Response tell_number(const Command &command, Parameters parameters) const;
    Response tell_text(const Command &command) const;
    Response write_byte(const Command &command, Parameters parameters);
    Response read_byte(Parameters parameters);
    Response read_range(Parameters parameters) const;
    Response tell_adc_values();
    Response tell_raw_bytes() const;
    uint8_t byte_at(int address);
    uint16_t result_of(const Command &command) const;
    const std::string *find_answer(uint8_t code, int place) const;

    std::span<uint8_t, MEMORY_SIZE> memory_;
    uint32_t seed_;
    uint8_t adc_values_; // that a frame declares valid
    uint32_t adc_start_ = 1;
    CommandValues settings_;
    CommandValues answers_;
    std::map<int, size_t> reads_; // by address: how much of the text given for it has been read
};

} // namespace simulator
