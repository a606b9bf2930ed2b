// Read-outs of records at the co-processor's end of the wire. What a host gets depends on how it
// polls after its request: single bytes fetch the number of records requested, measured on the
// spot; polls of twenty bytes fetch what the board has measured on its own since the last block.
#pragma once

#include "simulator/board/counts.hpp"
#include "simulator/board/delivery.hpp"
#include "simulator/board/response.hpp"
#include "simulator/measuring/live_buffer.hpp"
#include "simulator/measuring/record_source.hpp"

#include <chrono>
#include <cstdint>
#include <span>
#include <string>

namespace simulator
{

inline constexpr int ANY_HEADER_INDEX = STREAM_POLL_SIZE;

// Bytes of a block are in a buffer from the exchange that begins it to the one that ends it.
class Readout
{
  public:
    // The board's time, which never goes backwards.
    void advance_to(std::chrono::nanoseconds now, int rate);

    // A request has arrived, or something that ends it.
    void request(const RecordFormat &format, int count);
    void cancel();

    // The board stops measuring on its own.
    void stop() { live_.stop(); }

    // Polls of a single byte get records measured on the spot, if the request is still undecided.
    bool is_undecided() const { return stage_ == Stage::requested; }
    Response take_counted_block(const Measuring &measuring, BlockBytes buffer);

    // The host has received all of the current block, if there is one.
    void finish_block();

    // Polls of twenty bytes get what was measured before, and the exchanges after them the rest.
    // The first of them makes the board measure on its own, even if it is busy. What an exchange
    // gives is returned in words.
    bool is_waited_for() const { return stage_ != Stage::idle; }
    void begin_stream();
    std::string poll(const Measuring &measuring, BlockBytes buffer, std::span<uint8_t> miso);
    bool expects(std::span<const uint8_t> mosi) const { return delivery_.expects(mosi); }
    std::string give(std::span<const uint8_t> buffer, std::span<uint8_t> miso);

    // What became of the records up to now.
    Counts counts() const;

  private:
    enum class Stage : uint8_t { idle, requested, streaming };

    const RecordFormat &format() const { return *find_record_format(code_); }
    Block take_live_block(const Measuring &measuring, BlockBytes buffer);
    void begin_block(const Block &block);
    void finish_block_if_over();
    size_t next_header_index(const Measuring &measuring);

    int64_t now_ns_ = 0;
    uint64_t deliveries_ = 0;
    Counts counts_; // without the live buffer's
    LiveBuffer live_;
    RecordSource source_;
    Delivery delivery_;
    uint16_t begun_records_ = 0; // of a block that is being fetched
    uint16_t begun_whole_ = 0;   // of them that a host receives whole
    Stage stage_ = Stage::idle;
    uint8_t code_ = 0;      // of the request
    uint8_t live_code_ = 0; // of the request for the samples in the live buffer
    uint8_t count_ = 0;     // of the request
};

} // namespace simulator
