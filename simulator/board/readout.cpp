// Read-outs of records at the co-processor's end of the wire.
#include "simulator/board/readout.hpp"

#include <algorithm>
#include <utility>

namespace simulator
{

namespace
{

void append(std::vector<uint8_t> &records, const std::vector<uint8_t> &record)
{
    records.insert(records.end(), record.begin(), record.end());
}

} // namespace

Readout::Readout(const Measuring &measuring, const Faults &faults)
    : measuring_(measuring), source_(measuring.seed, faults), live_(measuring.rate)
{
}

void Readout::advance_to(std::chrono::nanoseconds now)
{
    now_ = now;
    const uint32_t fresh = live_.measure_until(now, source_.samples() + 1);
    source_.skip(fresh);
    counts_.measured += fresh;
}

void Readout::request(const RecordFormat &format, int count)
{
    format_ = &format;
    count_ = std::min(count, format.most);
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

Response Readout::take_counted_block()
{
    stop();
    stage_ = Stage::idle;
    std::vector<uint8_t> records;
    for (int i = 0; i < count_; ++i) {
        source_.skip(1);
        append(records, source_.write(*format_, source_.samples(), 0));
    }
    counts_.measured += static_cast<uint64_t>(count_);
    Block block = source_.make_block(*format_, std::move(records));
    begin_block(block);
    Response response;
    response.answer = block.length;
    response.reply = std::move(block.bytes);
    response.answer_note = "length of " + block.name;
    response.reply_note = std::move(block.name);
    response.big_endian = true;
    response.is_block = true;
    return response;
}

void Readout::begin_stream()
{
    stage_ = Stage::streaming;
    if (!live_.is_running() || live_format_ != format_) {
        live_format_ = format_;
        live_.start(now_);
    }
}

void Readout::poll(std::span<uint8_t> miso)
{
    if (live_.size() == 0) {
        note_ = "no record yet";
    } else {
        stage_ = Stage::idle;
        Block block = take_live_block();
        begin_block(block);
        delivery_.begin(std::move(block), next_header_index(), miso);
        note_ = delivery_.note();
        finish_block_if_over();
    }
}

void Readout::finish_block_if_over()
{
    if (delivery_.is_over()) {
        finish_block();
    }
}

void Readout::give(std::span<uint8_t> miso)
{
    delivery_.give(miso);
    note_ = delivery_.note();
    finish_block_if_over();
}

Block Readout::take_live_block()
{
    const size_t count = std::min(live_.size(), static_cast<size_t>(count_));
    std::vector<uint8_t> records;
    for (size_t i = 0; i < count; ++i) {
        const uint32_t sample = live_.take();
        append(records, source_.write(*format_, sample, static_cast<uint8_t>(live_.size())));
    }
    return source_.make_block(*format_, std::move(records));
}

// With any index, it advances by seven each time, which visits all of them.
size_t Readout::next_header_index()
{
    if (measuring_.header_index != ANY_HEADER_INDEX) {
        return static_cast<size_t>(measuring_.header_index);
    }
    return (measuring_.seed + 7 * deliveries_++) % STREAM_POLL_SIZE;
}

} // namespace simulator
