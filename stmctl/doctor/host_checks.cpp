// Checks of the rest of this machine.
#include "stmctl/doctor/checks.hpp"
#include "stmctl/plot/gnuplot.hpp"
#include "stmctl/process/failure.hpp"
#include "stmctl/ring/ring_look.hpp"

#include <fmt/format.h>

namespace stmctl
{

namespace
{

constexpr char NEW_RING[] = "stmctl ring remove makes way for a new one";

Finding judge_look(const RingLook &look)
{
    if (!look.ring) {
        return bad(fmt::format("too small: {} bytes instead of {}", look.segment.info.shm_segsz,
                               RINGBUFFER_SIZE),
                   NEW_RING);
    }
    if (!is_plausible(*look.ring)) {
        return bad("damaged, see stmctl ring status", NEW_RING);
    }
    if (!may_be_attached()) {
        return bad(fmt::format("it belongs to {}, and you may not both read and write it",
                               user_words(look.segment.info.shm_perm.uid)),
                   NEW_RING);
    }
    const std::string words = fmt::format("present; writer: {}", look.writer.words());
    switch (look.writer.state) {
    case WriterState::several:
        return bad(words, "end all but one: their records mix");
    case WriterState::unseen:
        return unknown(words, "sudo stmctl doctor can see them");
    default:
        break;
    }
    return look.ring->writer_open == 0 ? good(words)
                                       : bad(words + "; its flag keeps writers out", NEW_RING);
}

} // namespace

Finding judge_ring(const Examination &)
{
    try {
        const std::optional<Segment> segment = find_segment();
        return segment ? judge_look(RingLook(*segment))
                       : good("none; stmctl ring write creates one");
    } catch (const Failure &failure) {
        return bad(failure.what(), NEW_RING);
    }
}

Finding judge_gnuplot(const Examination &)
{
    const std::string found = find_gnuplot();
    return good(found.empty() ? "not installed; only stmctl plot needs it" : found);
}

} // namespace stmctl
