// Checks of the co-processor and of the connection to it.
#include "stmctl/doctor/checks.hpp"
#include "stmctl/mode/mode.hpp"

#include <fmt/format.h>

namespace stmctl
{

namespace
{

constexpr char WHOM_TO_BLAME[] = "does it have power, or has it hung? switch it off and on";

// Why a question was not even asked; empty if it was.
std::string why_not_asked(const Examination &examination)
{
    if (!examination.dialogue) {
        return "not asked: " + examination.why_silent();
    }
    return examination.dialogue->not_synchronised ? "not asked: the link fails" : "";
}

bool is_nobody(uint8_t answer)
{
    return answer == SILENT_LINE || answer == UNDRIVEN_LINE;
}

} // namespace

Finding judge_link(const Examination &examination)
{
    if (!examination.dialogue) {
        return unknown("not tried: " + examination.why_silent());
    }
    if (const std::optional<Report> &failure = examination.dialogue->not_synchronised) {
        return bad(fmt::format("an exchange failed: {}", failure->reason),
                   "see the lines above and dmesg");
    }
    return good("exchanges work");
}

// No driver needs ten times the time on the wire.
Finding judge_exchange(const Examination &examination)
{
    constexpr double MOST = 10;
    constexpr int BITS = 8;
    const std::string silent = why_not_asked(examination);
    if (!silent.empty()) {
        return unknown(silent);
    }
    const Answer<double> &answer = examination.dialogue->exchange_seconds;
    if (!answer.value) {
        return bad(answer.failure, "see dmesg");
    }
    const uint32_t speed_hz = examination.dialogue->speed_hz.value_or(0);
    const double wire = speed_hz > 0 ? double{SYNCHRONISING_BYTES} * BITS / speed_hz : 0;
    const std::string words = fmt::format("{} bytes take {:.2f} ms, the wire alone {:.2f} ms",
                                          SYNCHRONISING_BYTES, *answer.value * 1e3, wire * 1e3);
    if (wire > 0 && *answer.value > MOST * wire) {
        return bad(words, "is the machine busy, or the controller without DMA?");
    }
    return good(words);
}

Finding judge_mode(const Examination &examination)
{
    const std::string silent = why_not_asked(examination);
    if (!silent.empty()) {
        return unknown(silent);
    }
    const Answer<uint8_t> &answer = examination.dialogue->mode;
    if (!answer.value) {
        return bad(answer.failure, "see dmesg");
    }
    switch (*answer.value) {
    case APPLICATION:
        return good("the application");
    case BOOT_LOADER:
        return good("the boot loader; stmctl reset starts the application");
    default:
        break;
    }
    return bad(fmt::format("the answer is {}, {}", *answer.value,
                           odd_mode_words(*answer.value, examination.users)),
               WHOM_TO_BLAME);
}

Finding judge_version(const Examination &examination)
{
    const std::string silent = why_not_asked(examination);
    if (!silent.empty()) {
        return unknown(silent);
    }
    const Answer<uint8_t> &answer = examination.dialogue->version;
    if (!answer.value) {
        return bad(answer.failure, "see dmesg");
    }
    if (is_nobody(*answer.value)) {
        return unknown(fmt::format("the answer is {}, {}", *answer.value,
                                   odd_mode_words(*answer.value, examination.users)));
    }
    return good("boot loader " + version_words(*answer.value));
}

Finding judge_query(const Examination &examination)
{
    const std::string silent = why_not_asked(examination);
    if (!silent.empty()) {
        return unknown(silent);
    }
    const Answer<std::string> &answer = examination.dialogue->sampletime;
    if (answer.value) {
        return good("sampletime is " + *answer.value);
    }
    return answer.failure.empty()
               ? unknown("not asked: the application is not running")
               : bad("sampletime: " + answer.failure,
                     "it runs but does not answer; try stmctl start, stmctl reset");
}

} // namespace stmctl
