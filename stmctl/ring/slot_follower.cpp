// Reads the ring at a position of its own.
#include "stmctl/ring/slot_follower.hpp"

#include "stmctl/process/failure.hpp"
#include "stmctl/record/ring_slot.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace stmctl
{

namespace
{

constexpr int32_t SLOTS = RINGBUFFER_SLOTS;
constexpr int32_t NONE = -1;
constexpr int PATIENCE = 3; // looks

int32_t wrapped(int32_t index)
{
    return (index + SLOTS) % SLOTS;
}

bool same(const RingRecord &one, const RingRecord &other)
{
    return memcmp(&one, &other, sizeof(one)) == 0;
}

// Times wrap around.
bool is_later(const RingRecord &one, const RingRecord &other)
{
    const auto step = static_cast<uint32_t>(one.rel_t) - static_cast<uint32_t>(other.rel_t);
    return static_cast<int32_t>(step) > 0;
}

// Numbers wrap around, too.
bool is_next(const RingRecord &one, const RingRecord &other)
{
    return is_whole(one) && is_whole(other) &&
           static_cast<uint32_t>(one.rel_t) - static_cast<uint32_t>(other.rel_t) == 1;
}

size_t at(int32_t index)
{
    return static_cast<size_t>(index);
}

} // namespace

SlotFollower::SlotFollower(const RingView &view) : view_(view)
{
    Slots slots;
    const int32_t end = write_index();
    copy_slots(slots);
    learn(slots, end, write_index());
}

int32_t SlotFollower::write_index() const
{
    const int32_t index = view_.write_index();
    if (index < 0 || index >= SLOTS) {
        throw Failure(ExitStatus::failed,
                      fmt::format("the ring is damaged: write_index is {}", index));
    }
    return index;
}

void SlotFollower::copy_slots(Slots &slots) const
{
    for (int32_t index = 0; index < SLOTS; ++index) {
        slots[at(index)] = view_.slot(index);
    }
}

bool SlotFollower::overtaken() const
{
    const int32_t before = wrapped(position_ - 1);
    return !same(view_.slot(before), known_[at(before)]);
}

// When the writer wraps around, it fills the last slot; a restarted writer has not got there yet.
// If the slot was being written when we learned it, it may already have been complete: its time
// shows that.
bool SlotFollower::has_restarted(int32_t end) const
{
    constexpr int32_t LAST = SLOTS - 1;
    const RingRecord record = view_.slot(LAST);
    const bool complete_then = unsure_ == LAST && is_later(record, view_.slot(LAST - 1));
    return end < position_ && same(record, known_[at(LAST)]) && !complete_then;
}

// The slots from end up to the one being written were filled while we copied them.
void SlotFollower::learn(const Slots &slots, int32_t end, int32_t writing)
{
    known_ = slots;
    for (int32_t index = end; index != writing; index = wrapped(index + 1)) {
        known_[at(index)] = {};
    }
    position_ = end;
    unsure_ = writing;
    looks_in_vain_ = 0;
}

// The slots that the index announces, up to one whose content is unchanged: on some processors the
// index becomes visible first. A slot that stays the same for a few looks was written like that: a
// restarted board may repeat itself.
std::vector<RingRecord> SlotFollower::take(int32_t begin, int32_t end) const
{
    std::vector<RingRecord> records;
    for (int32_t index = begin; index != end; index = wrapped(index + 1)) {
        RingRecord record = view_.slot(index);
        if (!is_whole(record)) {
            record = view_.slot(index); // only half of it may have been visible
        }
        if (same(record, known_[at(index)]) && looks_in_vain_ < PATIENCE) {
            break;
        }
        records.push_back(record);
    }
    return records;
}

SlotFollower::Look SlotFollower::look()
{
    const int32_t end = write_index();
    if (overtaken()) {
        return start_over();
    }
    if (end == position_) {
        return {};
    }
    if (!has_restarted(end)) {
        return accept(position_, end);
    }
    // The last slot may not be visible yet.
    return ++looks_in_vain_ < PATIENCE ? Look() : follow_restart(end);
}

SlotFollower::Look SlotFollower::accept(int32_t begin, int32_t end)
{
    Look look;
    look.records = take(begin, end);
    if (overtaken()) {
        return start_over();
    }
    if (look.records.empty()) {
        ++looks_in_vain_;
        return look;
    }
    look.restarted =
        std::exchange(begins_at_start_, false) && !is_next(look.records.front(), known_[SLOTS - 1]);
    for (const RingRecord &record : look.records) {
        known_[at(begin)] = record;
        unsure_ = begin == unsure_ ? NONE : unsure_;
        begin = wrapped(begin + 1);
    }
    position_ = begin;
    looks_in_vain_ = 0;
    return look;
}

// What the previous writer has written after the position: whole records, each later than the one
// before. Anything else that changed there was left by an even earlier writer, or is the slot in
// which the writer was killed.
std::vector<RingRecord> SlotFollower::rest_of_writer() const
{
    std::vector<RingRecord> records = take(position_, SLOTS - 1);
    const RingRecord *before = &known_[at(wrapped(position_ - 1))];
    for (const RingRecord &record : records) {
        if (!is_whole(record) || !is_later(record, *before)) {
            records.resize(static_cast<size_t>(&record - records.data()));
            break;
        }
        before = &record;
    }
    return records;
}

// First what the previous writer has left, then what the new one has written.
SlotFollower::Look SlotFollower::follow_restart(int32_t end)
{
    looks_in_vain_ = 0; // only what changed belongs to the previous writer
    const std::vector<RingRecord> records = rest_of_writer();
    Slots slots;
    copy_slots(slots);
    std::copy_n(known_.begin(), end, slots.begin());
    learn(slots, end, write_index());
    position_ = 0;
    Look look = accept(0, end);
    look.records.insert(look.records.begin(), records.begin(), records.end());
    look.restarted = true;
    return look;
}

// Takes everything that changed, starting at the oldest slot that is not about to be written. What
// is the same in two copies was not being written.
SlotFollower::Look SlotFollower::start_over()
{
    Slots first;
    Slots second;
    const int32_t end = write_index();
    copy_slots(first);
    copy_slots(second);
    const int32_t writing = write_index();
    Look look;
    look.restarted = same(first[SLOTS - 1], known_[SLOTS - 1]);
    look.overrun = !look.restarted;
    const RingRecord last = known_[at(wrapped(position_ - 1))];
    for (int32_t i = wrapped(writing + 1); i != end; i = wrapped(i + 1)) {
        const bool stable = same(first[at(i)], second[at(i)]);
        const bool left_over = look.restarted && i > writing &&
                               !(is_whole(first[at(i)]) && is_later(first[at(i)], last));
        if (stable && !left_over && !same(first[at(i)], known_[at(i)])) {
            look.records.push_back(first[at(i)]);
        }
    }
    learn(second, end, writing);
    return look;
}

// A writer begins at slot 0: the slots after its own are an earlier writer's, unless it has wrapped
// around. In that case their times rise, and slot 0 continues where the last of them ends. Its own
// slots include the one that it fills when all of them have been copied.
void SlotFollower::leave_out_earlier_writer()
{
    Slots slots;
    const int32_t begin = write_index();
    copy_slots(slots);
    const int32_t end = write_index();
    if (end < begin || begin == 0) {
        return; // if slot 0 is filled next, what comes there will show it
    }
    bool goes_on = is_next(slots[0], slots[SLOTS - 1]);
    for (int32_t i = end + 2; i < SLOTS; ++i) {
        goes_on = goes_on && is_later(slots[at(i)], slots[at(i - 1)]);
    }
    if (goes_on) {
        return;
    }
    std::copy(slots.begin() + end + 1, slots.end(), known_.begin() + end + 1);
}

SlotFollower::Look SlotFollower::everything()
{
    known_ = {};
    leave_out_earlier_writer();
    Look look = start_over();
    look.overrun = look.restarted = false;
    begins_at_start_ = position_ == 0 && !is_empty(known_[SLOTS - 1]);
    return look;
}

} // namespace stmctl
