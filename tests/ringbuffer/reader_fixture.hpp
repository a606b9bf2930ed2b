// What the tests of the ring's read-out share: an attached ring, a writer that works while the
// reader sleeps, and the records that it puts.
#pragma once

#include "link/stm_com_funcs.h"
#include "tests/platform/dialogue.hpp"
#include "tests/ringbuffer/segment_bytes.hpp"

#include <climits>
#include <functional>
#include <map>

// The fixture: a new segment, which is zero, and a link that has been used before.
class RingReadout : public Dialogue
{
  protected:
    RingReadout();

    // Something happens in the sleep of this number, counted from 1.
    void in_sleep(int number, std::function<void()> happening);

    // Puts a record that came over the wire into the ring.
    static void put(const Bytes &wire);

    // Puts the good records with the numbers from first to last.
    static void put_good(int first, int last);

    int32_t value(Field field) const;
    void set(const Setting &setting);

    static void read(int format);

    // The next texts for the output callback, from the first one on, find the ring as this leaves
    // it.
    static int output_and_then(const char *text, int more);
    static std::function<void()> after_output;

  private:
    std::map<int, std::function<void()>> happenings;
    int sleeps = 0;
};

constexpr int HEX = 1;
constexpr int TEXT = 2;
constexpr int CSV = 3;

extern const std::string HEADER; // the line of the CSV header
extern const std::string TIMEOUT;
Transcript idle(int polls);

// Records as they come over the wire. The moved fields of a good one are equal, so that its
// checksum is also that of its slot.
Bytes good_record(int number);
Bytes with_checksum(Bytes bytes);

// The lines of a good record.
std::string text_line(int number);
std::string csv_line(int number);

// The same for several.
Transcript text_lines(int first, int last);
Transcript csv_lines(int first, int last);
