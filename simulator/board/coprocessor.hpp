// The virtual co-processor: bytes in, bytes out, one exchange at a time. It knows nothing of files,
// clocks or processes; the same exchanges always get the same answers.
#pragma once

#include "simulator/board/application.hpp"
#include "simulator/board/boot_loader.hpp"
#include "simulator/board/deafness.hpp"
#include "simulator/board/flash.hpp"
#include "simulator/board/readout.hpp"
#include "simulator/board/transaction.hpp"
#include "simulator/faults/faults.hpp"
#include "simulator/faults/spells.hpp"
#include "simulator/wire/mode.hpp"

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace simulator
{

inline constexpr size_t COMMAND_FRAME_SIZE = 8;

// The identity of a board, apart from its flash.
struct BoardIdentity {
    Mode mode = Mode::application;
    uint8_t boot_loader_version = 5; // minor number; 0 is unknown
};

// The bytes of a board that survive a loss of power.
struct BoardBytes {
    std::span<uint8_t, FLASH_SIZE> flash;
    std::span<uint8_t, MEMORY_SIZE> memory;
};

// How a board behaves.
struct Behaviour {
    int busy_polls = 0; // busy polls after each frame, before the status or the answer
    Faults faults;
    int seed = 1;           // of all that it measures
    int adc_values = 200;   // that a frame declares valid
    int rate = 1000;        // samples of a stream per second
    int header_index = 0;   // of a block's header in a poll of a stream, or ANY_HEADER_INDEX
    int buffer_size = 4096; // of the driver: the most bytes in a message; the kernel's default
};

class Coprocessor
{
  public:
    Coprocessor(BoardBytes bytes, BoardIdentity identity, Behaviour behaviour);

    // The time of the exchanges to come, from any origin. What is due by then happens.
    void advance_to(std::chrono::nanoseconds now);

    // Clocks the bytes of one exchange in, and as many out. mosi and miso have the same size.
    void exchange(std::span<const uint8_t> mosi, std::span<uint8_t> miso);

    // How the co-processor understood the last exchange, in a few words.
    const std::string &note() const { return note_; }

    Mode mode() const { return identity_.mode; }
    void set_identity(BoardIdentity identity) { identity_ = identity; }

    Application &application() { return application_; }
    const Application &application() const { return application_; }

    // What became of the records that it measured. A life ends with a restart.
    Tally tally() const { return {lives_, past_, readout_.counts()}; }

  private:
    // What a host may fetch next: one thing at a time.
    enum class Owed : uint8_t { nothing, status, byte, transaction, records };

    void restart(const Fault &fault);
    void drop_debts();
    void receive(std::span<const uint8_t> mosi);
    void receive_byte(uint8_t command);
    void receive_command_frame(std::span<const uint8_t, COMMAND_FRAME_SIZE> frame);
    void receive_application_command(std::span<const uint8_t, COMMAND_FRAME_SIZE> frame);
    void receive_image_frame(std::span<const uint8_t, IMAGE_FRAME_SIZE> frame);
    void synchronise();
    void begin_download(const FlashRegion &region);
    void enter(Mode mode);
    void owe(Owed what, int place);
    bool is_still_busy();
    uint8_t announce();
    void queue_answer(uint8_t answer, const char *meaning);
    void queue_status(Verdict verdict, int step);
    bool refused_by_fault(int step);
    bool died_at(int place);
    uint8_t take_status();
    uint8_t take_answer();
    void take_stream_poll(std::span<uint8_t> miso);

    BoardIdentity identity_;
    Behaviour behaviour_;
    BootLoader boot_loader_;
    Application application_;
    Transaction transaction_;
    Readout readout_;
    Deafness deafness_;
    std::chrono::nanoseconds now_{0};
    Faults restarts_; // in the order of their times
    size_t restarted_ = 0;
    std::vector<Life> lives_; // that have ended
    Counts past_;             // the sum of theirs
    Spells silences_;
    std::optional<uint8_t> dead_line_; // what is read from a dead board's line
    Owed owed_ = Owed::nothing;
    uint8_t owed_byte_ = 0; // a status, or an answer of one byte
    int64_t busy_ = 0;      // further polls that find the board busy with what it owes
    std::string note_;
};

} // namespace simulator
