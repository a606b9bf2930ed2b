// The frame of the analogue-to-digital converter.
#include "simulator/measuring/adc_frame.hpp"

#include "simulator/measuring/measurement.hpp"
#include "simulator/wire/bytes.hpp"

namespace simulator
{

void write_adc_frame(std::span<uint8_t, ADC_FRAME_SIZE> frame, uint32_t seed, uint32_t start,
                     uint8_t count)
{
    ByteWriter writer(frame);
    writer.put(count, 1);
    for (uint32_t i = 0; i < ADC_VALUES; ++i) {
        writer.put_signed(convert(seed, start + i));
    }
    writer.put_checksum();
}

} // namespace simulator
