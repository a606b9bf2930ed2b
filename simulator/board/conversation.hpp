// How the virtual co-processor interprets what it receives.
#pragma once

#include "simulator/board/board.hpp"
#include "simulator/board/board_state.hpp"
#include "simulator/board/counts.hpp"

#include <chrono>
#include <cstdint>
#include <span>
#include <string>

namespace simulator
{

inline constexpr size_t COMMAND_FRAME_SIZE = 8;

// One exchange with a board, or what happens to it between two.
class Conversation
{
  public:
    Conversation(const Board &board, BoardState &state, std::string &note)
        : board_(board), state_(state), note_(note)
    {
    }

    void exchange(std::span<const uint8_t> mosi, std::span<uint8_t> miso);
    Life restart(std::chrono::nanoseconds time, Mode mode);
    bool died_at(int place);

  private:
    void drop_debts();
    void receive(std::span<const uint8_t> mosi);
    void receive_byte(uint8_t command);
    void receive_command_frame(std::span<const uint8_t, COMMAND_FRAME_SIZE> frame);
    void receive_application_command(std::span<const uint8_t, COMMAND_FRAME_SIZE> frame);
    void receive_image_frame(std::span<const uint8_t, IMAGE_FRAME_SIZE> frame);
    void synchronise();
    void begin_download(Region region);
    void enter(Mode mode);
    void owe(Owed what, int place);
    bool is_still_busy();
    uint8_t announce();
    void queue_answer(uint8_t answer, const char *meaning);
    void queue_status(Verdict verdict, int step);
    bool refused_by_fault(int step);
    uint8_t take_status();
    uint8_t take_answer();
    void take_stream_poll(std::span<uint8_t> miso);

    const Board &board_;
    BoardState &state_;
    std::string &note_;
};

} // namespace simulator
