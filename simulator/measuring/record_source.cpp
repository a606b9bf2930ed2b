// Blocks of records as a board delivers them.
#include "simulator/measuring/record_source.hpp"

#include "simulator/faults/fault_plan.hpp"
#include "simulator/wire/wire.hpp"
#include "simulator/words/text.hpp"

#include <algorithm>
#include <utility>

namespace simulator
{

namespace
{

std::string block_name(uint32_t number, size_t records)
{
    return text("block %u: %zu record%s", number, records, records == 1 ? "" : "s");
}

} // namespace

RecordSource::RecordSource(uint32_t seed, Faults faults) : seed_(seed), faults_(std::move(faults))
{
}

const Fault *RecordSource::find(FaultKind kind, uint32_t place) const
{
    return find_fault(faults_, kind, static_cast<int>(place));
}

std::vector<uint8_t> RecordSource::write(const RecordFormat &format, uint32_t number,
                                         uint8_t buffered) const
{
    const bool stuck = number > 1 && find(FaultKind::stuck, number) != nullptr;
    Sample sample = measure(seed_, stuck ? number - 1 : number);
    if (find(FaultKind::unnumbered, number) != nullptr) {
        sample.number = 0;
    }
    std::vector<uint8_t> record = write_record(format, sample, buffered);
    const Fault *flip = find(FaultKind::flip, number);
    if (flip != nullptr && static_cast<size_t>(flip->value) < 8 * record.size()) {
        record[static_cast<size_t>(flip->value) / 8] ^= static_cast<uint8_t>(1 << flip->value % 8);
    }
    return record;
}

Block RecordSource::make_block(const RecordFormat &format, std::vector<uint8_t> records)
{
    ++blocks_;
    Block block{std::move(records), 0, {}};
    block.records = block.bytes.size() / format.size;
    block.name = block_name(blocks_, block.records);
    if (const Fault *cut = find(FaultKind::short_block, blocks_)) {
        const size_t lost = std::min(static_cast<size_t>(cut->value), block.bytes.size());
        block.bytes.resize(block.bytes.size() - lost);
    }
    block.whole = block.bytes.size() / format.size;
    if (find(FaultKind::padded, blocks_) != nullptr) {
        block.bytes.resize(LARGEST_BLOCK, READY);
    }
    block.length = static_cast<uint16_t>(block.bytes.size());
    block.length = length_at(faults_, command_place(format.code), block.length);
    if (const Fault *odd = find(FaultKind::block_length, blocks_)) {
        block.length = static_cast<uint16_t>(odd->value);
    }
    block.whole = std::min<size_t>(block.whole, block.length / format.size);
    block.bytes.resize(std::max<size_t>(block.bytes.size(), block.length));
    return block;
}

} // namespace simulator
