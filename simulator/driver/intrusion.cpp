// The exchanges of another program.
#include "simulator/driver/intrusion.hpp"

#include "simulator/driver/transcript_reader.hpp"

#include <algorithm>
#include <utility>

namespace simulator
{

// An exchange is never played before those above it in its transcript: if several programs have
// written one, each with a time of its own, their exchanges follow each other.
std::string Intrusion::load(const Faults &faults)
{
    for (const Fault &fault : faults_by_time(faults, FaultKind::intrusion)) {
        std::vector<SentBytes> sent;
        std::string error = read_transcript(fault.file, sent);
        if (!error.empty()) {
            return error;
        }
        std::chrono::nanoseconds earliest = fault.span.from;
        for (SentBytes &exchange : sent) {
            earliest = std::max(earliest, fault.span.from + exchange.time);
            sent_.push_back({earliest, std::move(exchange.bytes)});
        }
    }
    std::ranges::stable_sort(sent_, {}, &SentBytes::time);
    return {};
}

void Intrusion::play_until(std::chrono::nanoseconds now, Coprocessor &coprocessor)
{
    for (; played_ < sent_.size() && sent_[played_].time <= now; ++played_) {
        const SentBytes &next = sent_[played_];
        std::vector<uint8_t> unheard(next.bytes.size());
        coprocessor.advance_to(next.time);
        coprocessor.exchange(next.bytes, unheard);
    }
}

} // namespace simulator
