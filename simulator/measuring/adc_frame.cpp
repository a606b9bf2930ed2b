// The frame of the analogue-to-digital converter.
#include "simulator/measuring/adc_frame.hpp"

#include "simulator/measuring/measurement.hpp"
#include "simulator/wire/bytes.hpp"

namespace simulator
{

std::vector<uint8_t> write_adc_frame(uint32_t seed, uint32_t start, uint8_t count)
{
    ByteWriter writer;
    writer.put(count, 1);
    for (uint32_t i = 0; i < ADC_VALUES; ++i) {
        writer.put_signed(convert(seed, start + i));
    }
    return writer.close();
}

} // namespace simulator
