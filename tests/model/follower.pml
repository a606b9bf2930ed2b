/* stmctl ring read: SlotFollower of stmctl/ring/slot_follower.cpp beside the module's writer, which may
 * be killed at any step and started again. Each record that is delivered is later than the one before,
 * and one that is missing is missing beside a look that tells of an overrun or a restart.
 */
#include "ring.pml"

#ifndef RECORDS
#define RECORDS (SLOTS + 2)
#endif
#ifndef PUTS_IN_LOOK
#define PUTS_IN_LOOK 1
#endif

byte announced;    /* number of the latest record whose slot the index has passed */
byte delivered;    /* number of the latest that the reader has delivered */
bool looking = true;
byte puts_in_look;
byte gone;         /* the record at which the writer was killed */

inline note_writer_opens()
{
    puts_in_look = (looking && announced > 0 -> PUTS_IN_LOOK : 0)
}
inline note_reader_clears() { skip }
inline note_fills(number)
{
    puts_in_look = (looking -> puts_in_look + 1 : 0)
}
inline note_announced(number)
{
    announced = number
}
inline note_writer_loads_count() { skip }
inline note_writer_counts() { skip }
inline note_writer_leaves_count() { skip }

#ifdef RESTARTS
bool dies;
active proctype killer()
{
    dies = true
}
#endif

active proctype writer()
{
    short index;
    short counted;
    byte number = 1;
    do
    :: {
        !looking || number == 1; /* a program takes longer to start again than a look */
        open_for_writing();
        do
        :: number <= RECORDS && (!looking || puts_in_look < PUTS_IN_LOOK) ->
            put(number);
            number++
        :: number > RECORDS -> goto end
        od
    }
#ifdef RESTARTS
    unless {
        atomic {
            dies ->
            dies = false;
            gone = announced + 1;
            number = announced + 2;
            index = 0;
            counted = 0
        }
    }
#endif
    od;
end:
    false
}

#include "slot_follower.pml"

local bool told_before;

#define is_next(number) \
    ((number) == delivered + 1 || ((number) == delivered + 2 && gone == delivered + 1))

/* RingReadout::take; records that are not whole are rejected and counted. Whoever is told of an
 * overrun or a restart expects a gap before, among or right after the records of that look. */
inline deliver()
{
    i = 0;
    do
    :: i < taken ->
        if
        :: is_whole(got[i]) ->
            assert(got[i].front > delivered);
            assert(delivered == 0 || is_next(got[i].front) || tells_overrun || tells_restart ||
                   told_before);
            delivered = got[i].front
        :: else
        fi;
        i++
    :: else -> break
    od;
    told_before = (taken > 0 -> tells_overrun || tells_restart : told_before);
    tells_overrun = tells_overrun && taken == 0;
    tells_restart = tells_restart && taken == 0;
    for (i : 0 .. 2 * SLOTS - 1) {
        clear(got[i])
    }
    looking = false;
    puts_in_look = 0;
    taken = 0;
    i = 0;
    at = 0;
    begin = 0;
    answer = false;
    end_index = 0;
    writing = 0;
    clear(record);
    clear(other)
}

active proctype reader()
{
    short i;
    short at;
    short begin;
    short end_index;
    short writing;
    bool answer;
    Record record;
    Record other;
    end_index = write_index;
    copy_slots(second);
    writing = write_index;
    d_step {
        learn(end_index, writing);
        looking = false;
        puts_in_look = 0;
        end_index = 0;
        writing = 0
    }
end:
    do
    :: looking = true;
        end_index = write_index;
        ask_overtaken();
        if
        :: answer -> start_over()
        :: !answer && end_index == position
        :: !answer && end_index != position ->
            ask_restarted();
            if
            :: !answer -> accept(position)
            :: answer ->
                looks_in_vain++;
                if
                :: looks_in_vain >= PATIENCE -> follow_restart()
                :: else
                fi
            fi
        fi;
        skip;
        d_step {
            deliver()
        }
    od
}
