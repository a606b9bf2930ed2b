// What the tests of the ring share: a segment in which every byte is told from its neighbours, and
// a comparison of all of it with what it was.
#pragma once

#include "link/stm_com_funcs.h"
#include "tests/platform/dialogue.hpp"
#include "tests/ringbuffer/segment_bytes.hpp"

#include <climits>

struct StoredRecord {
    size_t slot;
    RingRecord record;
};

// A slot as the result of an operation: its number, or this.
constexpr int NO_SLOT = -1;
constexpr int ASTRAY = -2; // a pointer that is not the start of a slot

// The fixture: an attached segment. No operation of the ring may print, sleep or call the system.
class Ring : public Dialogue
{
  protected:
    Ring();
    void TearDown() override;

    // The control fields, as they are before an operation.
    void given(std::initializer_list<Setting> settings);

    // All 7704 bytes are those from before the operation, but for these. Then they are those from
    // before the next one.
    testing::AssertionResult became(std::initializer_list<Setting> changes,
                                    std::initializer_list<StoredRecord> stored = {});
    testing::AssertionResult unchanged();

    int32_t value(Field field) const;
    int slot_number(const RingRecord *slot) const;

  private:
    Bytes before;
};

// A record of which each byte tells its number.
RingRecord numbered_record(int number);
bool same_record(const RingRecord &one, const RingRecord &other);
