/* The ring's words and its operations, one load or store a step, as ringbuffer/ring.cpp makes them.
 *
 * Sequential consistency is assumed: every step is visible to everybody at once and in its order.
 * A machine that reorders stores has more traces than this model.
 *
 * A record is its number in two halves: whoever copies it may find halves of two. Its checksum is
 * right if both halves are of the same record. Left out: the flags writer_open and reader_open,
 * which no operation sets, and the handles. A file that includes this one defines the notes, which
 * are made in the step to which they belong and are not part of the ring.
 */
#ifndef SLOTS
#define SLOTS 4
#endif
#define LAST_SLOT (SLOTS - 1)
#define MOST_COUNTED (SLOTS - 1)

typedef Record {
    byte front;
    byte back
}

Record slots[SLOTS];
short write_index;
short count;
local short mark; /* "local": only the reader uses it, so that nobody sees when it changes */
local short read_pos;
local short values_left;

#define is_slot(index) ((index) >= 0 && (index) <= LAST_SLOT)
#define next_index(index) ((index) + 1 > LAST_SLOT -> 0 : (index) + 1)
#define index_before(index, n) ((index) - (n) < 0 -> (index) - (n) + SLOTS : (index) - (n))
#define is_whole(record) (record.front == record.back && record.front > 0)

/* open_for_writing */
inline open_for_writing()
{
    d_step {
        write_index = 0;
        note_writer_opens()
    }
}

/* open_for_reading */
inline open_for_reading()
{
    mark = 0;
    read_pos = 0;
    d_step {
        count = 0;
        note_reader_clears()
    }
    values_left = 0
}

/* put, and ring_record_fill in the place of its two halves; index and counted are the writer's own */
inline put(number)
{
    atomic {
        index = write_index; /* which nobody else changes: no step of its own */
        assert(is_slot(index));
        slots[index].front = number;
        note_fills(number)
    }
    slots[index].back = number;
    d_step {
        write_index = next_index(index);
        index = 0;
        note_announced(number)
    }
    d_step {
        counted = count;
        note_writer_loads_count()
    }
    if
    :: atomic { counted < MOST_COUNTED ->
        count = counted + 1;
        counted = 0;
        note_writer_counts()
    }
    :: atomic { counted >= MOST_COUNTED ->
        counted = 0;
        note_writer_leaves_count()
    }
    fi
}

/* RingBuffer_NewValueAvailable, until it gives 1: a look at the same index changes nothing. */
inline wait_for_new_value()
{
    mark != write_index
}

/* RingBuffer_MarkLastValue; loaded and index are the reader's own */
inline mark_last_value()
{
    d_step {
        loaded = count;
        note_reader_loads_count_to_mark()
    }
    d_step {
        index = write_index;
        note_marks(loaded)
    }
    values_left = loaded;
    mark = index;
    loaded = 0
}

/* RingBuffer_GetFirstValue and RingBuffer_SeekValue */
inline get_first_value()
{
    loaded = values_left;
    index = index_before(mark, loaded);
    read_pos = index;
    loaded = 0;
    assert(is_slot(index))
}

/* RingBuffer_GetNextValue; the slot is at index */
inline get_next_value()
{
    index = next_index(read_pos);
    read_pos = index;
    d_step {
        loaded = count;
        note_reader_loads_count()
    }
    if
    :: atomic { loaded > 0 ->
        count = loaded - 1;
        note_reader_counts()
    }
    :: else
    fi;
    loaded = values_left;
    if
    :: loaded > 0 -> values_left = loaded - 1
    :: else
    fi;
    loaded = 0;
    assert(is_slot(index))
}

#define within_bounds \
    (is_slot(write_index) && is_slot(mark) && is_slot(read_pos) && count >= 0 && \
     count <= MOST_COUNTED && values_left >= 0 && values_left <= MOST_COUNTED)
