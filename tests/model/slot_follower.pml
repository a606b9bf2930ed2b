/* SlotFollower of stmctl/ring/slot_follower.cpp, function by function. i, at, begin, end_index, writing,
 * answer, record and other are the reader's variables; a look leaves its records in "got".
 */
#define PATIENCE 3
#define NONE (-1)

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

/* take */
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
