/* The module's writer and its read-out: stm_ringbuffer_acquire puts two turns of records and a few,
 * stm_ringbuffer_readout takes them, and everything that the reader loses, gets again or gets torn is
 * noted with its cause. Each pair of effect and cause in the list below has a trace, and no effect is
 * without a cause.
 */
#include "ring.pml"

#ifndef RECORDS
#define RECORDS (2 * SLOTS + 1)
#endif

/* Why a batch may be anything but exactly what is new, since the last one that began in step. */
#define FIRST            1 /* it is the first since the reader has opened an empty ring */
#define LATE             2 /* the same of a ring to which records had been put */
#define LOST_CLEARING    4 /* the writer's count was stored over that of the reader that opens */
#define LAGGING          8 /* more is new than a batch can have */
#define NOT_COUNTED     16 /* the count stood at its most when a record was put during a batch */
#define OVERWRITTEN     32 /* the writer came round to a record of the batch */
#define FILLED          64 /* the slot at the mark was read, and the writer had come to it */
#define LOST_ADDITION  128 /* the reader's count was stored over the writer's */
#define LOST_SUBTRACTION 256 /* the writer's count was stored over the reader's */
#define PUT_IN_MARK    512 /* a record was put between the reader's loads of count and index */
#define MARK_IN_PUT   1024 /* both were loaded between the writer's stores of index and count */
#define KILLED        2048 /* the writer was killed between these two stores */
#define RESTARTED     4096 /* the writer opened the ring again */
#define HALF_FILLED   8192 /* a writer was killed in the slot that is read */

/* What the reader gets that is not the next record. */
#define MISSED   1 /* a later one */
#define OLD      2 /* a slot that it had, or that was there before it came, filled or not */
#define REJECTED 3 /* halves of two records, which the checksum shows */
#define TORN     4 /* halves of two, changed after the checksum was found right */
#define UNSEEN   5 /* nothing, although there are records behind its mark */

int because;
byte effect; /* this and its cause only within a step */
int cause;
byte announced;         /* number of the latest record whose slot the index has passed */
byte last;              /* number of the newest record that the reader knows of */
byte newest;            /* that had been announced at the reader's mark */
byte before_writer;     /* number of the latest record of the writer before */
byte announced_at_load; /* when the reader loaded the count for its mark */
bool uncounted_at_load;
bool uncounted;         /* the index is stored, the count not yet */
bool writer_holds;      /* a count that has been loaded */
bool reader_holds;
short spoiled_for_writer; /* causes that the writer's next store brings about */
short spoiled_for_reader;
bool in_batch;

inline note_writer_opens()
{
    because = because | (announced > 0 -> RESTARTED : 0);
    before_writer = announced
}

inline note_reader_clears()
{
    spoiled_for_writer = (writer_holds -> LOST_CLEARING : 0);
    because = (announced > 0 -> LATE : FIRST);
    last = announced;
    newest = announced
}

inline note_fills(number)
{
    skip
}

inline note_announced(number)
{
    announced = number;
    uncounted = true
}

inline note_writer_loads_count()
{
    writer_holds = true;
    because = because | (counted >= MOST_COUNTED && in_batch -> NOT_COUNTED : 0)
}

inline note_writer_leaves_count()
{
    uncounted = false;
    writer_holds = false;
    spoiled_for_writer = 0
}

inline note_writer_counts()
{
    because = (spoiled_for_writer == LOST_CLEARING -> 0 : because) | spoiled_for_writer;
    spoiled_for_reader = (reader_holds -> LOST_ADDITION : 0);
    note_writer_leaves_count()
}

inline note_reader_loads_count_to_mark()
{
    announced_at_load = announced;
    uncounted_at_load = uncounted;
    in_batch = true
}

/* In step are a batch and a count of one more than what is new, all of it the present writer's. */
inline note_marks(values)
{
    newest = announced;
    because = (newest > last && values == 1 + newest - last && last >= before_writer -> 0 : because) |
              (newest - last > SLOTS - 2 -> LAGGING : 0) |
              (announced != announced_at_load -> PUT_IN_MARK : 0) |
              (uncounted_at_load -> MARK_IN_PUT : 0);
    announced_at_load = 0;
    uncounted_at_load = false
}

inline note_reader_loads_count()
{
    reader_holds = true;
    spoiled_for_reader = 0
}

inline note_reader_counts()
{
    because = because | spoiled_for_reader;
    spoiled_for_reader = 0;
    reader_holds = false;
    spoiled_for_writer = (writer_holds -> LOST_SUBTRACTION : 0)
}

#ifdef RESTARTS
bool reader_has_opened;
#endif
bool dies;

/* put_record, for each record of the stream. Kills may come at any step. */
active proctype writer()
{
    short index;
    short counted;
    byte number = 1;
    bool has_died;
#ifdef RESTARTS
    reader_has_opened;
#endif
    do
    :: {
        open_for_writing();
        do
        :: number <= RECORDS ->
            put(number);
            number = announced + 1
        :: number > RECORDS -> goto end
        od
    } unless {
        atomic {
            dies && !has_died ->
            has_died = true;
            index = 0;
            counted = 0;
            number = announced + 1;
            because = because | (uncounted -> KILLED : 0);
            note_writer_leaves_count()
        }
    }
    od;
end:
    false
}

#ifdef RESTARTS
active proctype killer()
{
    dies = true
}
#endif

c_decl {
\#include "tally.h"
};

/* No effect is without a cause; which ones there are is told in the end. */
inline tell(what, causes)
{
    effect = what;
    cause = causes;
    assert(cause != 0);
#ifdef SOUGHT_EFFECT
    assert(effect != SOUGHT_EFFECT || cause != SOUGHT_CAUSE);
#endif
    c_code { tally(now.effect, now.cause); };
    effect = 0;
    cause = 0
}

inline happens(what)
{
    tell(what, because)
}

/* A slot that has been filled since the mark explains by itself what follows. */
inline note_read()
{
    if
    :: front > newest || back > newest ->
        because = (because & RESTARTED) | (index == mark -> FILLED : OVERWRITTEN)
    :: front != back && front <= newest && back <= newest ->
        because = because | HALF_FILLED
    :: else
    fi
}

inline note_rejected()
{
    note_read();
    if
    :: front != back -> tell(REJECTED, (because & HALF_FILLED -> HALF_FILLED : because))
    :: else -> happens(OLD)
    fi
}

inline note_shown()
{
    note_read();
    if
    :: front != back -> happens(TORN)
    :: front == back && front <= last -> happens(OLD)
    :: front == back && front > last + 1 -> happens(MISSED)
    :: else
    fi;
    last = (front > last -> front : last)
}

/* stm_ringbuffer_readout: begin_batch and read_batch. A slot is read where it lies, twice. */
active proctype reader()
{
    short index;
    short loaded;
    byte front;
    byte back;
    open_for_reading();
#ifdef RESTARTS
    reader_has_opened = true;
    announced >= 2; /* what comes of a first look at a single record is shown without restarts */
#endif
end:
    do
    :: wait_for_new_value();
        mark_last_value();
        get_first_value();
        do
        :: get_next_value();
            front = slots[index].front;
            atomic {
                back = slots[index].back;
                if
                :: front != back || back == 0 -> note_rejected(); break
                :: else
                fi;
            }
            front = slots[index].front;
            atomic {
                back = slots[index].back;
                note_shown();
                front = 0; back = 0;
                if
                :: values_left > 1
                :: else -> break
                fi
            }
        od;
        atomic {
            in_batch = false; index = 0; front = 0; back = 0
        }
    :: atomic { mark == write_index && announced > newest ->
        tell(UNSEEN, (announced - newest >= SLOTS -> LAGGING : because))
    }
    od
}
