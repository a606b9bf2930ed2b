// The record in a slot of the ring.
#include "stmctl/record/ring_slot.hpp"

#include <array>
#include <cstring>

namespace stmctl
{

namespace
{

constexpr size_t CHECKED_BYTES = 46;

class WireBytes
{
  public:
    template <typename Field>
    void put(Field field)
    {
        for (size_t i = 0; i < sizeof(field); ++i) {
            bytes_[size_++] = static_cast<uint8_t>(field >> (8 * i));
        }
    }

    uint16_t checksum() const { return stm_crc16(bytes_.data(), static_cast<uint16_t>(size_)); }

  private:
    std::array<uint8_t, CHECKED_BYTES> bytes_ = {};
    size_t size_ = 0;
};

} // namespace

bool is_whole(const RingRecord &slot)
{
    WireBytes wire;
    wire.put(slot.marker);
    wire.put(slot.nr);
    wire.put(slot.temp);
    for (const int32_t field : {slot.rel_t, slot.Uen, slot.U1e, slot.U2e, slot.U3e, slot.negIe,
                                slot.I1, slot.I2, slot.I3}) {
        wire.put(field);
    }
    wire.put(slot.BE1);
    wire.put(slot.BE2);
    wire.put(slot.BE);
    wire.put(slot.buffered);
    return wire.checksum() == slot.checksum;
}

bool is_empty(const RingRecord &slot)
{
    const RingRecord empty = {};
    return memcmp(&slot, &empty, sizeof(empty)) == 0;
}

Record record_of_slot(const RingRecord &slot)
{
    return {&columns_of(RecordKind::temp),
            {slot.nr, slot.temp, static_cast<uint32_t>(slot.rel_t), slot.U1e, slot.U2e, slot.U3e,
             slot.Uen, slot.I1, slot.I2, slot.I3, slot.negIe, slot.BE1, slot.BE2, slot.BE,
             slot.buffered, slot.checksum}};
}

} // namespace stmctl
