// Finds out who writes to the ring, as far as that is visible from outside.
#include "stmctl/ring/writer.hpp"

#include "stmctl/module/processes.hpp"

#include <fmt/format.h>

namespace stmctl
{

namespace
{

struct StateRow {
    WriterState state;
    const char *name;
    const char *words; // {} are the processes
};

// clang-format off
constexpr StateRow STATES[] = {
    {WriterState::none,    "none",    "none"},
    {WriterState::writing, "writing", "writing, {}"},
    {WriterState::several, "several", "several at once, {}"},
    {WriterState::ended,   "ended",   "ended cleanly"},
    {WriterState::killed,  "killed",  "gone without closing it: killed?"},
    {WriterState::foreign, "foreign", "another program, if any: {}"},
    {WriterState::unseen,  "unseen",  "unknown: its processes cannot be inspected"},
};
// clang-format on

const StateRow &row_of(WriterState state)
{
    return STATES[static_cast<size_t>(state)];
}

// A command line has command and subcommand next to each other, whatever follows.
std::vector<pid_t> those_that_run(const std::vector<pid_t> &processes, const char *command)
{
    std::vector<pid_t> found;
    for (const pid_t process : processes) {
        if (process_words(process).find(command) != std::string::npos) {
            found.push_back(process);
        }
    }
    return found;
}

// Programs other than stmctl may write without leaving a mark.
WriterState state_without_stmctl(const Segment &segment, const std::vector<pid_t> &processes,
                                 bool others, WriterMark mark)
{
    if (processes.empty() && segment.info.shm_nattch > 0 && mark != WriterMark::ended) {
        return WriterState::unseen;
    }
    if (mark == WriterMark::unknown) {
        return others ? WriterState::foreign : WriterState::none;
    }
    return mark == WriterMark::writing ? WriterState::killed : WriterState::ended;
}

} // namespace

RingWriter writer_of(const Segment &segment, const std::vector<pid_t> &processes, WriterMark mark)
{
    const std::vector<pid_t> writers = those_that_run(processes, "stmctl ring write");
    if (!writers.empty()) {
        return {writers.size() == 1 ? WriterState::writing : WriterState::several, writers};
    }
    std::vector<pid_t> others = processes;
    for (const pid_t reader : those_that_run(processes, "stmctl ring read")) {
        std::erase(others, reader);
    }
    return {state_without_stmctl(segment, processes, !others.empty(), mark), others};
}

std::string RingWriter::words() const
{
    std::string names;
    for (const pid_t process : processes) {
        names += (names.empty() ? "" : " and ") + process_name(process);
    }
    return fmt::format(fmt::runtime(row_of(state).words), names);
}

const char *RingWriter::name() const
{
    return row_of(state).name;
}

const char *flag_words(uint8_t flag)
{
    return flag == 0 ? "free" : flag == 1 ? "taken, nobody can open it" : "damaged";
}

bool is_plausible(const RingBuffer &ring)
{
    constexpr int32_t LAST = RINGBUFFER_SLOTS - 1;
    const auto inside = [](int32_t index) { return index >= 0 && index <= LAST; };
    return inside(ring.write_index) && inside(ring.mark) && inside(ring.read_pos) &&
           inside(ring.count) && inside(ring.values_left) && ring.writer_open <= 1 &&
           ring.reader_open <= 1;
}

} // namespace stmctl
