// The segment, byte by byte.
#include "tests/ringbuffer/segment_bytes.hpp"

#include <algorithm>

namespace
{

size_t width_of(Field field)
{
    return field < WRITE_INDEX ? 1 : 4;
}

std::string place_of(size_t at)
{
    const size_t slot_size = SLOT_SIZE;
    return at < WRITER_OPEN ? "byte " + std::to_string(at % slot_size) + " of slot " +
                                  std::to_string(at / slot_size)
                            : "byte " + std::to_string(at);
}

} // namespace

int32_t field_of(const uint8_t *segment, Field field)
{
    uint32_t value = 0;
    for (size_t i = 0; i < width_of(field); ++i) {
        value |= static_cast<uint32_t>(segment[field + i]) << (8 * i);
    }
    return static_cast<int32_t>(value);
}

void set_field(uint8_t *segment, const Setting &setting)
{
    const auto value = static_cast<uint32_t>(setting.value);
    for (size_t i = 0; i < width_of(setting.field); ++i) {
        segment[setting.field + i] = static_cast<uint8_t>(value >> (8 * i));
    }
}

testing::AssertionResult same_segment(const Bytes &actual, const Bytes &expected)
{
    if (actual == expected) {
        return testing::AssertionSuccess();
    }
    const auto [one, other] = std::mismatch(actual.begin(), actual.end(), expected.begin());
    return testing::AssertionFailure() << place_of(static_cast<size_t>(one - actual.begin()))
                                       << " is " << int{*one} << ", not " << int{*other};
}
