/* A writer and a reader without end, each of which may be killed at any step and started again:
 * whatever happens, every index is a slot, the counts stay within their bounds, and the reader comes
 * to the end of each batch. What is in the slots does not matter here.
 */
#include "ring.pml"

inline note_writer_opens() { skip }
inline note_reader_clears() { skip }
inline note_fills(number) { skip }
inline note_announced(number) { skip }
inline note_writer_loads_count() { skip }
inline note_writer_counts() { skip }
inline note_writer_leaves_count() { skip }
inline note_reader_loads_count_to_mark() { skip }
inline note_marks(values) { skip }
inline note_reader_loads_count() { skip }
inline note_reader_counts() { skip }

bool writer_is_killed;
bool reader_is_killed;
bool in_batch;
byte taken; /* in this batch */

/* stm_ringbuffer_acquire */
active proctype writer()
{
    short index;
    short counted;
    do
    :: {
        open_for_writing();
        do
        :: put(0)
        od
    } unless {
        atomic {
            writer_is_killed -> writer_is_killed = false; index = 0; counted = 0
        }
    }
    od
}

/* stm_ringbuffer_readout */
active proctype reader()
{
    short index;
    short loaded;
    do
    :: {
        open_for_reading();
        do
        :: wait_for_new_value();
            mark_last_value();
            in_batch = true;
            get_first_value();
            do
            :: get_next_value();
                taken++;
                assert(taken <= MOST_COUNTED);
                if
                :: values_left > 1
                :: else -> break
                fi
            od;
            atomic {
                in_batch = false; taken = 0
            }
        od
    } unless {
        atomic {
            reader_is_killed ->
            reader_is_killed = false; in_batch = false; taken = 0; index = 0; loaded = 0
        }
    }
    od
}

active proctype killer()
{
    do
    :: writer_is_killed = true
    :: reader_is_killed = true
    od
}

ltl bounds { [] within_bounds }
ltl batches_end { [] (in_batch -> <> !in_batch) }
