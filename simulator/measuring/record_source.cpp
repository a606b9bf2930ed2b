// Blocks of records as a board delivers them.
#include "simulator/measuring/record_source.hpp"

#include "simulator/faults/fault_plan.hpp"
#include "simulator/wire/wire.hpp"
#include "simulator/words/text.hpp"

#include <algorithm>

namespace simulator
{

namespace
{

const Fault *find(const Measuring &measuring, FaultKind kind, uint32_t place)
{
    return find_fault(measuring.faults, kind, static_cast<int>(place));
}

} // namespace

std::string name_of(const Block &block)
{
    return text("block %u: %u record%s", block.number, block.records,
                block.records == 1 ? "" : "s");
}

void write_measured(std::span<uint8_t> record, const Measuring &measuring,
                    const RecordFormat &format, uint32_t number, uint8_t buffered)
{
    const bool stuck = number > 1 && find(measuring, FaultKind::stuck, number) != nullptr;
    Sample sample = measure(measuring.seed, stuck ? number - 1 : number);
    if (find(measuring, FaultKind::unnumbered, number) != nullptr) {
        sample.number = 0;
    }
    write_record(record, format, sample, buffered);
    const Fault *flip = find(measuring, FaultKind::flip, number);
    if (flip != nullptr && static_cast<size_t>(flip->value) < 8 * record.size()) {
        record[static_cast<size_t>(flip->value) / 8] ^= static_cast<uint8_t>(1 << flip->value % 8);
    }
}

Block RecordSource::make_block(const Measuring &measuring, const RecordFormat &format,
                               size_t records, BlockBytes bytes)
{
    Block block;
    block.number = ++blocks_;
    block.records = static_cast<uint16_t>(records);
    size_t size = records * format.size;
    if (const Fault *cut = find(measuring, FaultKind::short_block, blocks_)) {
        size -= std::min(static_cast<size_t>(cut->value), size);
    }
    const size_t whole = size / format.size;
    if (find(measuring, FaultKind::padded, blocks_) != nullptr) {
        std::ranges::fill(bytes.subspan(size), READY);
        size = bytes.size();
    }
    const auto honest = static_cast<uint16_t>(size);
    block.length = length_at(measuring.faults, command_place(format.code), honest);
    if (const Fault *odd = find(measuring, FaultKind::block_length, blocks_)) {
        block.length = static_cast<uint16_t>(odd->value);
    }
    block.whole = static_cast<uint16_t>(std::min<size_t>(whole, block.length / format.size));
    block.size = static_cast<uint16_t>(std::clamp<size_t>(block.length, size, bytes.size()));
    std::ranges::fill(bytes.first(block.size).subspan(size), IDLE);
    return block;
}

} // namespace simulator
