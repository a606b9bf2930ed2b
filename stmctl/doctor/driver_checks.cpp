// Checks of the driver and of the processes that use it.
#include "stmctl/doctor/checks.hpp"

#include <fmt/format.h>

#include <cerrno>

namespace stmctl
{

namespace
{

constexpr uint32_t CLOCK_HZ = 6'000'000; // which the module sets

std::string megahertz(uint32_t hertz)
{
    return fmt::format("{:g} MHz", hertz / 1e6);
}

Finding judge_bufsiz_without_exchange(const std::string &why)
{
    const std::optional<long> bufsiz = driver_bufsiz();
    if (!bufsiz) {
        return unknown(fmt::format("not shown and not tried: {}", why));
    }
    return *bufsiz >= SYNCHRONISING_BYTES
               ? good(fmt::format("{} bytes at once, {} are needed", *bufsiz, SYNCHRONISING_BYTES))
               : bad(fmt::format("{} bytes at once, {} are needed", *bufsiz, SYNCHRONISING_BYTES),
                     "set it where the driver is loaded, see stmctl --help access");
}

} // namespace

Finding judge_users(const Examination &examination)
{
    const DeviceUsers &users = examination.users;
    if (examination.node.error != 0) {
        return unknown("the device cannot be opened");
    }
    if (users.processes.size() > 1) {
        return bad(users.clause("it"), "end all but one: their dialogues mix");
    }
    if (!users.processes.empty()) {
        return unknown(users.clause("it") + "; nothing was sent",
                       "once it has ended, the rest can be checked");
    }
    if (users.some_hidden) {
        return unknown("no visible process has it open, but some are hidden",
                       "sudo stmctl doctor can see them all");
    }
    return good("no other process has it open");
}

Finding judge_lock(const Examination &examination)
{
    if (examination.node.error != 0) {
        return unknown("the device cannot be opened");
    }
    if (!examination.lock_failure.empty()) {
        return bad(examination.lock_failure, "see dmesg");
    }
    return good(examination.holder.empty() ? "free"
                                           : examination.holder + " holds it; --wait waits for it");
}

// An exchange of this length is the proof, whatever the parameter says.
Finding judge_bufsiz(const Examination &examination)
{
    if (!examination.dialogue) {
        return judge_bufsiz_without_exchange(examination.why_silent());
    }
    const std::optional<Report> &failure = examination.dialogue->not_synchronised;
    if (failure && failure->error == EMSGSIZE) {
        const std::optional<long> bufsiz = driver_bufsiz();
        return bad(fmt::format("the driver refuses {} bytes at once{}", SYNCHRONISING_BYTES,
                               bufsiz ? fmt::format("; bufsiz is {}", *bufsiz) : ""),
                   "set it where the driver is loaded, see stmctl --help access");
    }
    if (failure) {
        return judge_bufsiz_without_exchange("the link fails");
    }
    return good(fmt::format("the driver accepts {} bytes at once", SYNCHRONISING_BYTES));
}

Finding judge_wire_mode(const Examination &examination)
{
    const WireSettings &left = examination.left;
    if (!left.mode) {
        return unknown(examination.why_silent());
    }
    if (*left.mode != EXPECTED_MODE) {
        return bad(fmt::format("{}, left by another program; {} is needed", mode_words(*left.mode),
                               EXPECTED_MODE),
                   "set it to 0 or restart the system, see stmctl --help access");
    }
    const uint8_t bits = left.bits_per_word.value_or(EXPECTED_BITS_PER_WORD);
    if (bits != EXPECTED_BITS_PER_WORD && bits != 0) {
        return bad(fmt::format("{}, but {}-bit words, left by another program", *left.mode, bits),
                   "set them back to 8 bits or restart the system");
    }
    return good(fmt::format("{}, {}-bit words", *left.mode, EXPECTED_BITS_PER_WORD));
}

Finding judge_clock(const Examination &examination)
{
    const std::optional<uint32_t> left = examination.left.speed_hz;
    if (!examination.dialogue) {
        return unknown(left ? fmt::format("{} now; {}", megahertz(*left), examination.why_silent())
                            : examination.why_silent());
    }
    const uint32_t speed = examination.dialogue->speed_hz.value_or(CLOCK_HZ);
    if (examination.dialogue->refused_clock) {
        return bad(fmt::format("{}; {} was refused: {}", megahertz(speed), megahertz(CLOCK_HZ),
                               examination.dialogue->refused_clock->reason),
                   "spi-max-frequency in the device tree must allow it");
    }
    return good(megahertz(speed) +
                (left && *left != speed ? ", previously " + megahertz(*left) : ""));
}

} // namespace stmctl
