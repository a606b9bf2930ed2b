/* examples/ring_reader.c beside the module's writer: it keeps a place of its own, copies a slot before
 * it checks it, and knows the index modulo the ring. Once the writer has come round to its place, or
 * has opened the ring again, anything may be missing, old or torn; before that nothing is.
 */
#include "ring.pml"

#ifndef RECORDS
#define RECORDS (2 * SLOTS)
#endif

/* The causes and effects are some of those of read_out.pml. */
#define LAGGING          8 /* exactly the whole ring is new */
#define OVERWRITTEN     32
#define RESTARTED     4096

#define MISSED   1
#define OLD      2
#define REJECTED 3
#define UNSEEN   5

int because;
byte effect; /* this and its cause only within a step */
int cause;
byte announced; /* number of the latest record whose slot the index has passed */
byte due;       /* number of the record that is next in the place */
bool dies;

inline note_writer_opens()
{
    because = because | (announced > 0 -> RESTARTED : 0)
}
inline note_reader_clears() { skip }
inline note_fills(number)
{
    because = because | (due > 0 && number >= due + SLOTS -> OVERWRITTEN : 0)
}
inline note_announced(number)
{
    announced = number
}
inline note_writer_loads_count() { skip }
inline note_writer_counts() { skip }
inline note_writer_leaves_count() { skip }

#ifdef RESTARTS
active proctype killer()
{
    dies = true
}
#endif

/* put_record, for each record of the stream */
active proctype writer()
{
    short index;
    short counted;
    byte number = 1;
    bool has_died;
    do
    :: {
        open_for_writing();
        do
        :: number <= RECORDS ->
            put(number);
            number++
        :: number > RECORDS -> goto end
        od
    } unless {
        atomic {
            dies && !has_died ->
            has_died = true;
            index = 0;
            counted = 0;
            number = announced + 1
        }
    }
    od;
end:
    false
}

c_decl {
\#include "tally.h"
};

inline happens(what)
{
    assert(because != 0);
    effect = what;
    cause = because;
    c_code { tally(now.effect, now.cause); };
    effect = 0;
    cause = 0
}

/* show_new: the copy is checked and shown */
inline note_copied()
{
    if
    :: front != back || front == 0 -> happens(REJECTED)
    :: front == back && front > 0 && front < due -> happens(OLD)
    :: front == back && front > due -> happens(MISSED)
    :: else
    fi;
    due = (front == back && front >= due -> front + 1 : due)
}

active proctype reader()
{
    short place;
    short next;
    byte front;
    byte back;
    open_for_reading();
    atomic {
        place = write_index;
        due = announced + 1
    }
end:
    do
    :: next = write_index;
        do
        :: place != next ->
            front = slots[place].front;
            atomic {
                back = slots[place].back;
                note_copied();
                front = 0;
                back = 0;
                place = next_index(place)
            }
        :: else -> break
        od;
        next = 0
    :: atomic { place == write_index && announced >= due ->
        because = because | (announced - due + 1 >= SLOTS -> LAGGING : 0);
        happens(UNSEEN)
    }
    od
}
