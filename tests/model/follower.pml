/* stmctl ring read: SlotFollower of stmctl/ring/slot_follower.cpp beside the module's writer, which may
 * be killed at any step and started again. Each record that is delivered is later than the one before,
 * and one that is missing is missing in a look that tells of an overrun or a restart.
 */
#include "ring.pml"

#ifndef RECORDS
#define RECORDS (SLOTS + 2)
#endif
#define PATIENCE 3
#ifndef PUTS_IN_LOOK
#define PUTS_IN_LOOK 1
#endif
#define NONE (-1)


byte announced;    /* number of the latest record whose slot the index has passed */
byte delivered;    /* number of the latest that the reader has delivered */
bool looking = true;
byte puts_in_look;
byte gone;         /* the record at which the writer was killed */

inline note_writer_opens()
{
    puts_in_look = (looking -> PUTS_IN_LOOK : 0)
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
        !looking; /* a program takes longer to start than a look */
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

/* The follower's own words. */
local Record known[SLOTS];
local Record first[SLOTS];
local Record second[SLOTS];
local Record got[2 * SLOTS]; /* what a look takes */
local byte taken;
local short position;
local short unsure = NONE;
local byte looks_in_vain;
local bool tells_overrun;
local bool tells_restart;
local bool told_before;

#define is_next(number) \
    ((number) == delivered + 1 || ((number) == delivered + 2 && gone == delivered + 1))
#define wrapped(i) (((i) + SLOTS) % SLOTS)
#define is_same(one, other) (one.front == other.front && one.back == other.back)
#define is_later(one, other) (one.front > other.front)

inline assign(to, from)
{
    to.front = from.front;
    to.back = from.back
}

inline clear(to)
{
    to.front = 0;
    to.back = 0
}

/* RingView::slot, and RingView::write_index */
inline load_slot(to, at)
{
    to.front = slots[at].front;
    to.back = slots[at].back
}

#define copy_slots(to) \
    i = 0; \
    do \
    :: i < SLOTS -> to[i].front = slots[i].front; to[i].back = slots[i].back; i++ \
    :: else -> break \
    od; \
    i = 0

/* learn, with the slots that have been copied to "second" */
inline learn(from, to)
{
    for (i : 0 .. LAST_SLOT) {
        assign(known[i], second[i])
    }
    i = from;
    do
    :: i != to -> clear(known[i]); i = wrapped(i + 1)
    :: else -> break
    od;
    for (i : 0 .. LAST_SLOT) {
        clear(first[i]);
        clear(second[i])
    }
    position = from;
    unsure = to;
    looks_in_vain = 0;
    i = 0
}

/* overtaken, whose answer is in "answer" */
inline ask_overtaken()
{
    load_slot(record, wrapped(position - 1));
    answer = !is_same(record, known[wrapped(position - 1)])
}

/* take; one_more is the end */
inline take(from, to)
{
    at = from;
    do
    :: at != to ->
        load_slot(record, at);
        if
        :: !is_whole(record) -> load_slot(record, at)
        :: else
        fi;
        if
        :: is_same(record, known[at]) && looks_in_vain < PATIENCE -> break
        :: else
        fi;
        atomic {
            assign(got[taken], record);
            taken++;
            at = wrapped(at + 1)
        }
    :: else -> break
    od;
    skip
}

inline start_over()
{
    end_index = write_index;
    copy_slots(first);
    copy_slots(second);
    writing = write_index;
    d_step {
        tells_restart = tells_restart || is_same(first[LAST_SLOT], known[LAST_SLOT]);
        answer = is_same(first[LAST_SLOT], known[LAST_SLOT]);
        tells_overrun = tells_overrun || !answer;
        assign(record, known[wrapped(position - 1)]);
        i = wrapped(writing + 1);
        do
        :: i != end_index ->
            if
            :: is_same(first[i], second[i]) && !is_same(first[i], known[i]) &&
               !(answer && i > writing && !(is_whole(first[i]) && is_later(first[i], record))) ->
                assign(got[taken], first[i]);
                taken++
            :: else
            fi;
            i = wrapped(i + 1)
        :: else -> break
        od;
        learn(end_index, writing)
    }
}

/* accept; what has been taken before stands in front */
inline accept(from)
{
    begin = taken;
    take(from, end_index);
    ask_overtaken();
    if
    :: answer -> taken = begin; start_over()
    :: !answer && taken == begin -> looks_in_vain++
    :: !answer && taken > begin ->
        d_step {
            at = from;
            i = begin;
            do
            :: i < taken ->
                assign(known[at], got[i]);
                unsure = (at == unsure -> NONE : unsure);
                at = wrapped(at + 1);
                i++
            :: else -> break
            od;
            position = at;
            looks_in_vain = 0;
            i = 0
        }
    fi
}

inline ask_restarted()
{
    answer = false;
    if
    :: end_index < position ->
        load_slot(record, LAST_SLOT);
        if
        :: unsure == LAST_SLOT -> load_slot(other, LAST_SLOT - 1)
        :: else
        fi;
        answer = is_same(record, known[LAST_SLOT]) &&
                 !(unsure == LAST_SLOT && is_later(record, other))
    :: else
    fi
}

inline follow_restart()
{
    looks_in_vain = 0;
    take(position, LAST_SLOT); /* rest_of_writer */
    d_step {
        assign(record, known[wrapped(position - 1)]);
        i = 0;
        do
        :: i < taken && is_whole(got[i]) && is_later(got[i], record) ->
            assign(record, got[i]);
            i++
        :: else -> break
        od;
        taken = i;
        i = 0
    }
    copy_slots(second);
    writing = write_index;
    d_step {
        i = 0;
        do
        :: i < end_index -> assign(second[i], known[i]); i++
        :: else -> break
        od;
        learn(end_index, writing);
        position = 0
    }
    tells_restart = true;
    accept(0)
}

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
