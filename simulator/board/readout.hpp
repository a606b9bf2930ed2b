// Read-outs of records at the co-processor's end of the wire. What a host gets depends on how it
// polls after its request: single bytes fetch the number of records requested, measured on the
// spot; polls of twenty bytes fetch what the board has measured on its own since the last block.
#pragma once

#include "simulator/board/application.hpp"
#include "simulator/board/counts.hpp"
#include "simulator/board/delivery.hpp"
#include "simulator/measuring/live_buffer.hpp"
#include "simulator/measuring/record_source.hpp"

#include <chrono>
#include <cstdint>
#include <span>
#include <string>

namespace simulator
{

// What a board measures, and how it delivers a stream.
struct Measuring {
    uint32_t seed;
    int rate;         // samples of a stream per second
    int header_index; // of a block's header in a poll of a stream, or ANY_HEADER_INDEX
};

inline constexpr int ANY_HEADER_INDEX = STREAM_POLL_SIZE;

class Readout
{
  public:
    Readout(const Measuring &measuring, const Faults &faults);

    // The board's time, which never goes backwards.
    void advance_to(std::chrono::nanoseconds now);

    // A request has arrived, or something that ends it.
    void request(const RecordFormat &format, int count);
    void cancel();

    // The board stops measuring on its own.
    void stop() { live_.stop(); }

    // Polls of a single byte get records measured on the spot, if the request is still undecided.
    bool is_undecided() const { return stage_ == Stage::requested; }
    Response take_counted_block();

    // The host has received all of the current block, if there is one.
    void finish_block();

    // Polls of twenty bytes get what was measured before, and the exchanges after them the rest.
    // The first of them makes the board measure on its own, even if it is busy.
    bool is_waited_for() const { return stage_ != Stage::idle; }
    void begin_stream();
    void poll(std::span<uint8_t> miso);
    bool expects(std::span<const uint8_t> mosi) const { return delivery_.expects(mosi); }
    void give(std::span<uint8_t> miso);

    const std::string &note() const { return note_; }

    // What became of the records up to now.
    Counts counts() const;

  private:
    enum class Stage { idle, requested, streaming };

    Block take_live_block();
    void begin_block(const Block &block);
    void finish_block_if_over();
    size_t next_header_index();

    Measuring measuring_;
    RecordSource source_;
    LiveBuffer live_;
    Delivery delivery_;
    std::chrono::nanoseconds now_{0};
    Stage stage_ = Stage::idle;
    const RecordFormat *format_ = nullptr;      // of the request
    const RecordFormat *live_format_ = nullptr; // of the samples in the buffer
    int count_ = 0;
    size_t deliveries_ = 0;
    size_t begun_records_ = 0; // of a block that is being fetched
    size_t begun_whole_ = 0;   // of them that a host receives whole
    Counts counts_;            // without the buffer's
    std::string note_;
};

} // namespace simulator
