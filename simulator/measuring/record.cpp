// The records in which samples are delivered.
#include "simulator/measuring/record.hpp"

#include "simulator/wire/bytes.hpp"
#include "simulator/wire/wire.hpp"

#include <algorithm>
#include <iterator>

namespace simulator
{

namespace
{

constexpr RecordFormat FORMATS[] = {
    {0xC8, true, 73, 56, 4, nullptr},
    {0xC1, true, 78, 52, 2, &Sample::rotation_time},
    {0x02, false, 85, 48, 2, &Sample::temperature},
};

} // namespace

const RecordFormat *find_record_format(uint8_t code)
{
    const auto *found = std::ranges::find(FORMATS, code, &RecordFormat::code);
    return found == std::end(FORMATS) ? nullptr : found;
}

void write_record(std::span<uint8_t> record, const RecordFormat &format, const Sample &sample,
                  uint8_t buffered)
{
    ByteWriter writer(record);
    writer.put(READY, 1);
    writer.put(sample.number, 1);
    writer.put(format.second != nullptr ? sample.*format.second : 0, 2);
    writer.put(sample.time, 4);
    for (const int32_t voltage : sample.voltages) {
        writer.put_signed(voltage);
    }
    for (const int32_t current : sample.currents) {
        writer.put_signed(current);
    }
    writer.put_signed(sample.counter, format.input_width);
    writer.put_signed(sample.inputs, format.input_width);
    writer.put_signed(sample.state, 1);
    if (format.has_external_counter) {
        writer.put(sample.external_counter, 4);
    }
    writer.put(buffered, 1);
    writer.put_checksum();
}

} // namespace simulator
