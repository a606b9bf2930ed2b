// The record in a slot: the wire's, with some fields in other places.
#include "ringbuffer/ring_record.hpp"

#include "readout/render_fields.hpp"

namespace stm
{

template char *render_fields_text<STM_RING_RECORD_FIELDS>(const uint8_t *, char *);
template char *render_fields_csv<STM_RING_RECORD_FIELDS>(const uint8_t *, char *);

RingRecord ring_record_from_wire(const uint8_t *record)
{
    RingRecord slot;
    ring_record_fill(slot, record);
    return slot;
}

} // namespace stm
