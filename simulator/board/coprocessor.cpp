// The virtual co-processor: how it interprets an exchange.
#include "simulator/board/coprocessor.hpp"

#include "simulator/faults/fault_plan.hpp"
#include "simulator/wire/wire.hpp"
#include "simulator/words/text.hpp"

#include <algorithm>
#include <utility>

namespace simulator
{

namespace
{

constexpr uint8_t BOOT_LOADER_COMMAND = 0x81; // frame: switches the mode; byte: loads firmware
constexpr uint8_t LOAD_BOOT_LOADER_COMMAND = 0x82;
constexpr uint8_t START_APPLICATION_COMMAND = 0x83;
constexpr uint8_t MODE_QUERY = 0x23;
constexpr uint8_t VERSION_QUERY = 0x91;

constexpr uint8_t COMMAND_FRAME_END = 0xAA;

bool is_stream_poll(std::span<const uint8_t> bytes)
{
    return bytes.size() == STREAM_POLL_SIZE && all_are(bytes, DATA_POLL);
}

Readout make_readout(const Behaviour &behaviour)
{
    return {{static_cast<uint32_t>(behaviour.seed), behaviour.rate, behaviour.header_index},
            behaviour.faults};
}

} // namespace

Coprocessor::Coprocessor(BoardBytes bytes, BoardIdentity identity, Behaviour behaviour)
    : identity_(identity), behaviour_(std::move(behaviour)), boot_loader_(Flash(bytes.flash)),
      application_(bytes.memory, static_cast<uint32_t>(behaviour_.seed),
                   static_cast<uint8_t>(behaviour_.adc_values)),
      readout_(make_readout(behaviour_)), deafness_(behaviour_.faults),
      restarts_(faults_by_time(behaviour_.faults, FaultKind::restart)),
      silences_(behaviour_.faults, FaultKind::silent_spell)
{
    died_at(ALWAYS);
}

void Coprocessor::advance_to(std::chrono::nanoseconds now)
{
    while (restarted_ < restarts_.size() && restarts_[restarted_].span.from <= now) {
        const Fault &fault = restarts_[restarted_++];
        readout_.advance_to(fault.span.from);
        restart(fault);
    }
    readout_.advance_to(now);
    now_ = now;
}

// Only what survives a loss of power is kept: flash, memory and settings.
void Coprocessor::restart(const Fault &fault)
{
    drop_debts();
    readout_.stop();
    lives_.push_back({fault.span.from, readout_.counts()});
    past_ += lives_.back().counts;
    boot_loader_.close();
    application_.restart();
    readout_ = make_readout(behaviour_);
    identity_.mode = static_cast<Mode>(fault.value);
}

void Coprocessor::exchange(std::span<const uint8_t> mosi, std::span<uint8_t> miso)
{
    note_.clear();
    std::ranges::fill(miso, dead_line_.value_or(IDLE));
    if (dead_line_ || mosi.empty()) {
        return;
    }
    if (silences_.cover(now_)) {
        note_ = "fault: silent";
        return;
    }
    if (mosi.size() == 1 && mosi[0] == STATUS_POLL) {
        miso[0] = take_status();
    } else if (mosi.size() == 1 && mosi[0] == DATA_POLL) {
        miso[0] = take_answer();
    } else if (is_stream_poll(mosi)) {
        take_stream_poll(miso);
    } else if (readout_.expects(mosi)) {
        readout_.give(miso);
        note_ = readout_.note();
    } else if (transaction_.expects(mosi)) {
        transaction_.give(miso);
        note_ = transaction_.note();
        if (transaction_.is_over()) {
            readout_.finish_block();
        }
    } else {
        receive(mosi);
    }
    if (dead_line_) {
        std::ranges::fill(miso, *dead_line_);
    }
}

// Drops any pending answer, status or block.
void Coprocessor::drop_debts()
{
    owed_ = Owed::nothing;
    transaction_.cancel();
    readout_.cancel();
}

void Coprocessor::receive(std::span<const uint8_t> mosi)
{
    drop_debts();
    if (mosi.size() > COMMAND_FRAME_SIZE && all_are(mosi, FILLER)) {
        synchronise();
    } else if (mosi.size() == IMAGE_FRAME_SIZE && boot_loader_.expects_frame()) {
        receive_image_frame(mosi.first<IMAGE_FRAME_SIZE>());
    } else if (mosi.size() == COMMAND_FRAME_SIZE) {
        receive_command_frame(mosi.first<COMMAND_FRAME_SIZE>());
    } else if (mosi.size() == 1) {
        receive_byte(mosi[0]);
    } else {
        note_ = "not understood";
    }
}

void Coprocessor::synchronise()
{
    boot_loader_.close();
    readout_.stop();
    note_ = "synchronised";
}

void Coprocessor::receive_byte(uint8_t command)
{
    switch (command) {
    case BOOT_LOADER_COMMAND:
        begin_download(FIRMWARE_REGION);
        break;
    case START_APPLICATION_COMMAND:
        enter(Mode::application);
        break;
    case VERSION_QUERY:
        queue_answer(identity_.boot_loader_version, "version asked for");
        break;
    default:
        note_ = "not understood";
    }
}

void Coprocessor::receive_command_frame(std::span<const uint8_t, COMMAND_FRAME_SIZE> frame)
{
    if (frame.back() != COMMAND_FRAME_END) {
        note_ = text("command 0x%02X ends in 0x%02X", frame.front(), frame.back());
        return;
    }
    switch (frame.front()) {
    case BOOT_LOADER_COMMAND:
        enter(Mode::boot_loader);
        break;
    case LOAD_BOOT_LOADER_COMMAND:
        begin_download(BOOT_LOADER_REGION);
        break;
    case MODE_QUERY:
        queue_answer(static_cast<uint8_t>(identity_.mode), "mode asked for");
        break;
    default:
        receive_application_command(frame);
    }
}

void Coprocessor::receive_application_command(std::span<const uint8_t, COMMAND_FRAME_SIZE> frame)
{
    const uint8_t code = frame.front();
    const Command *command = find_command(code);
    const int place = command_place(code);
    if (command == nullptr || identity_.mode != Mode::application) {
        note_ =
            text(command == nullptr ? "unknown command 0x%02X"
                                    : "command 0x%02X is for the application, which is not running",
                 code);
        return;
    }
    if (died_at(place)) {
        return;
    }
    deafness_.begin(place);
    if (const RecordFormat *format = find_record_format(code)) {
        readout_.request(*format, frame[1]);
        note_ = text("%d records asked for", frame[1]);
        owe(Owed::records, place);
        return;
    }
    Response response = application_.perform(*command, frame.subspan<1, PARAMETER_BYTES>());
    note_ = response.note;
    response.answer = length_at(behaviour_.faults, place, response.answer);
    transaction_.begin(std::move(response));
    owe(Owed::transaction, place);
}

void Coprocessor::receive_image_frame(std::span<const uint8_t, IMAGE_FRAME_SIZE> frame)
{
    const int step = boot_loader_.next_step();
    if (!died_at(step) && !refused_by_fault(step)) {
        queue_status(boot_loader_.take_frame(frame), step);
    }
}

void Coprocessor::begin_download(const FlashRegion &region)
{
    if (died_at(STEP_MODE)) {
        return;
    }
    identity_.mode = Mode::boot_loader;
    readout_.stop();
    const Verdict verdict = boot_loader_.open(region);
    if (!refused_by_fault(STEP_MODE)) {
        queue_status(verdict, STEP_MODE);
    }
}

void Coprocessor::enter(Mode mode)
{
    identity_.mode = mode;
    boot_loader_.close();
    readout_.stop();
    note_ = mode == Mode::boot_loader ? "boot loader started" : "application started";
}

void Coprocessor::owe(Owed what, int place)
{
    owed_ = what;
    busy_ = delay_at(behaviour_.faults, place, behaviour_.busy_polls);
}

void Coprocessor::queue_answer(uint8_t answer, const char *meaning)
{
    owed_ = Owed::byte;
    owed_byte_ = answer;
    note_ = meaning;
}

void Coprocessor::queue_status(Verdict verdict, int step)
{
    note_ = std::move(verdict.note);
    owe(Owed::status, step);
    owed_byte_ = status_at(behaviour_.faults, step, verdict.status);
}

bool Coprocessor::refused_by_fault(int step)
{
    const std::optional<Refusal> refusal = refusal_at(behaviour_.faults, step);
    if (refusal) {
        boot_loader_.close();
        queue_status({refusal->status, refusal->note}, step);
    }
    return refusal.has_value();
}

bool Coprocessor::died_at(int place)
{
    if (const std::optional<Death> death = death_at(behaviour_.faults, place)) {
        dead_line_ = death->line;
        note_ = death->note;
    }
    return dead_line_.has_value();
}

// Whether one more poll finds it busy.
bool Coprocessor::is_still_busy()
{
    if (busy_ == 0) {
        return false;
    }
    --busy_;
    note_ = "busy";
    return true;
}

uint8_t Coprocessor::take_status()
{
    if (owed_ != Owed::status) {
        note_ = "nothing to acknowledge";
        return IDLE;
    }
    if (is_still_busy()) {
        return IDLE;
    }
    owed_ = Owed::nothing;
    note_ = owed_byte_ == READY ? "acknowledged" : "status";
    return owed_byte_;
}

uint8_t Coprocessor::take_answer()
{
    const bool is_polled = readout_.is_undecided() || transaction_.is_polled();
    if (is_polled && deafness_.covers_poll()) {
        note_ = "fault: deaf";
        return IDLE;
    }
    if (readout_.is_undecided()) {
        transaction_.begin(readout_.take_counted_block());
        owed_ = Owed::transaction;
    }
    if (is_polled) {
        return is_still_busy() ? IDLE : announce();
    }
    if (owed_ != Owed::byte) {
        note_ = "nothing to answer";
        return IDLE;
    }
    owed_ = Owed::nothing;
    note_ = "answer";
    return owed_byte_;
}

uint8_t Coprocessor::announce()
{
    const uint8_t found = transaction_.take_poll();
    note_ = transaction_.note();
    return found;
}

void Coprocessor::take_stream_poll(std::span<uint8_t> miso)
{
    if (!readout_.is_waited_for()) {
        note_ = "nothing to answer";
        return;
    }
    if (deafness_.covers_poll()) {
        note_ = "fault: deaf";
        return;
    }
    readout_.begin_stream();
    if (!is_still_busy()) {
        readout_.poll(miso);
        note_ = readout_.note();
    }
}

} // namespace simulator
