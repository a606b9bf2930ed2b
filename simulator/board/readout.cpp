// Read-outs of records at the co-processor's end of the wire.
#include "simulator/board/readout.hpp"

#include <algorithm>

namespace simulator
{

void Readout::advance_to(std::chrono::nanoseconds now, int rate)
{
    now_ns_ = now.count();
    const uint32_t fresh = live_.measure_until(now, rate, source_.samples() + 1);
    source_.skip(fresh);
    counts_.measured += fresh;
}

void Readout::request(const RecordFormat &format, int count)
{
    code_ = format.code;
    count_ = static_cast<uint8_t>(std::min(count, format.most));
    stage_ = Stage::requested;
}

void Readout::cancel()
{
    stage_ = Stage::idle;
    delivery_.cancel();
    counts_.discarded += begun_records_;
    begun_records_ = 0;
    begun_whole_ = 0;
}

void Readout::begin_block(const Block &block)
{
    ++counts_.blocks;
    counts_.begun += block.records;
    begun_records_ = block.records;
    begun_whole_ = block.whole;
}

void Readout::finish_block()
{
    counts_.delivered += begun_whole_;
    counts_.discarded += begun_records_ - begun_whole_;
    begun_records_ = 0;
    begun_whole_ = 0;
}

Counts Readout::counts() const
{
    Counts counts = counts_;
    counts.overrun = live_.overrun();
    counts.discarded += live_.discarded();
    counts.buffered = live_.size() + begun_records_;
    return counts;
}

Response Readout::take_counted_block(const Measuring &measuring, BlockBytes buffer)
{
    stop();
    stage_ = Stage::idle;
    const size_t size = format().size;
    for (size_t i = 0; i < count_; ++i) {
        source_.skip(1);
        write_measured(buffer.subspan(i * size, size), measuring, format(), source_.samples(), 0);
    }
    counts_.measured += count_;
    Response response;
    response.kind = ResponseKind::block;
    response.block = source_.make_block(measuring, format(), count_, buffer);
    response.answer = response.block.length;
    response.size = response.block.size;
    begin_block(response.block);
    return response;
}

void Readout::begin_stream()
{
    stage_ = Stage::streaming;
    if (!live_.is_running() || live_code_ != code_) {
        live_code_ = code_;
        live_.start(std::chrono::nanoseconds(now_ns_));
    }
}

std::string Readout::poll(const Measuring &measuring, BlockBytes buffer, std::span<uint8_t> miso)
{
    if (live_.size() == 0) {
        return "no record yet";
    }
    stage_ = Stage::idle;
    const Block block = take_live_block(measuring, buffer);
    begin_block(block);
    std::string note = delivery_.begin(block, next_header_index(measuring), buffer, miso);
    finish_block_if_over();
    return note;
}

void Readout::finish_block_if_over()
{
    if (delivery_.is_over()) {
        finish_block();
    }
}

std::string Readout::give(std::span<const uint8_t> buffer, std::span<uint8_t> miso)
{
    std::string note = delivery_.give(buffer, miso);
    finish_block_if_over();
    return note;
}

Block Readout::take_live_block(const Measuring &measuring, BlockBytes buffer)
{
    const size_t size = format().size;
    const size_t count = std::min<size_t>(live_.size(), count_);
    for (size_t i = 0; i < count; ++i) {
        const uint32_t sample = live_.take();
        write_measured(buffer.subspan(i * size, size), measuring, format(), sample,
                       static_cast<uint8_t>(live_.size()));
    }
    return source_.make_block(measuring, format(), count, buffer);
}

// With any index, it advances by seven each time, which visits all of them.
size_t Readout::next_header_index(const Measuring &measuring)
{
    if (measuring.header_index != ANY_HEADER_INDEX) {
        return static_cast<size_t>(measuring.header_index);
    }
    return static_cast<size_t>((measuring.seed + 7 * deliveries_++) % STREAM_POLL_SIZE);
}

} // namespace simulator
