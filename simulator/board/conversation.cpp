// How the virtual co-processor interprets what it receives.
#include "simulator/board/conversation.hpp"

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

} // namespace

// Only what survives a loss of power is kept: flash, memory and settings.
Life Conversation::restart(std::chrono::nanoseconds time, Mode mode)
{
    drop_debts();
    state_.readout.stop();
    const Life life = {time, state_.readout.counts()};
    state_.past += life.counts;
    ++state_.lives;
    state_.boot_loader.close();
    state_.application.restart();
    state_.readout = Readout();
    state_.mode = mode;
    return life;
}

void Conversation::exchange(std::span<const uint8_t> mosi, std::span<uint8_t> miso)
{
    note_.clear();
    std::ranges::fill(miso, state_.is_dead ? state_.dead_line : IDLE);
    if (state_.is_dead || mosi.empty()) {
        return;
    }
    if (state_.is_told_silent || board_.silences.cover(std::chrono::nanoseconds(state_.now_ns))) {
        note_ = "fault: silent";
        return;
    }
    if (mosi.size() == 1 && mosi[0] == STATUS_POLL) {
        miso[0] = take_status();
    } else if (mosi.size() == 1 && mosi[0] == DATA_POLL) {
        miso[0] = take_answer();
    } else if (is_stream_poll(mosi)) {
        take_stream_poll(miso);
    } else if (state_.readout.expects(mosi)) {
        note_ = state_.readout.give(state_.buffer, miso);
    } else if (state_.transaction.expects(mosi)) {
        note_ = state_.transaction.give(board_, state_.buffer, miso);
        if (state_.transaction.is_over()) {
            state_.readout.finish_block();
        }
    } else {
        receive(mosi);
    }
    if (state_.is_dead) {
        std::ranges::fill(miso, state_.dead_line);
    }
}

// Drops any pending answer, status or block.
void Conversation::drop_debts()
{
    state_.owed = Owed::nothing;
    state_.transaction.cancel();
    state_.readout.cancel();
}

void Conversation::receive(std::span<const uint8_t> mosi)
{
    drop_debts();
    if (mosi.size() > COMMAND_FRAME_SIZE && all_are(mosi, FILLER)) {
        synchronise();
    } else if (mosi.size() == IMAGE_FRAME_SIZE && state_.boot_loader.expects_frame()) {
        receive_image_frame(mosi.first<IMAGE_FRAME_SIZE>());
    } else if (mosi.size() == COMMAND_FRAME_SIZE) {
        receive_command_frame(mosi.first<COMMAND_FRAME_SIZE>());
    } else if (mosi.size() == 1) {
        receive_byte(mosi[0]);
    } else {
        note_ = "not understood";
    }
}

void Conversation::synchronise()
{
    state_.boot_loader.close();
    state_.readout.stop();
    note_ = "synchronised";
}

void Conversation::receive_byte(uint8_t command)
{
    switch (command) {
    case BOOT_LOADER_COMMAND:
        begin_download(Region::firmware);
        break;
    case START_APPLICATION_COMMAND:
        enter(Mode::application);
        break;
    case VERSION_QUERY:
        queue_answer(state_.boot_loader_version, "version asked for");
        break;
    default:
        note_ = "not understood";
    }
}

void Conversation::receive_command_frame(std::span<const uint8_t, COMMAND_FRAME_SIZE> frame)
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
        begin_download(Region::boot_loader);
        break;
    case MODE_QUERY:
        queue_answer(static_cast<uint8_t>(state_.mode), "mode asked for");
        break;
    default:
        receive_application_command(frame);
    }
}

void Conversation::receive_application_command(std::span<const uint8_t, COMMAND_FRAME_SIZE> frame)
{
    const uint8_t code = frame.front();
    const Command *command = find_command(code);
    const int place = command_place(code);
    if (command == nullptr || state_.mode != Mode::application) {
        note_ =
            text(command == nullptr ? "unknown command 0x%02X"
                                    : "command 0x%02X is for the application, which is not running",
                 code);
        return;
    }
    if (died_at(place)) {
        return;
    }
    state_.deafness.begin(code);
    if (const RecordFormat *format = find_record_format(code)) {
        state_.readout.request(*format, frame[1]);
        note_ = text("%d records asked for", frame[1]);
        owe(Owed::records, place);
        return;
    }
    Response response = state_.application.perform(
        board_, *command, frame.subspan<1, PARAMETER_BYTES>(), state_.buffer, note_);
    response.answer = length_at(board_.behaviour.faults, place, response.answer);
    state_.transaction.begin(response);
    owe(Owed::transaction, place);
}

void Conversation::receive_image_frame(std::span<const uint8_t, IMAGE_FRAME_SIZE> frame)
{
    const int step = state_.boot_loader.next_step();
    if (!died_at(step) && !refused_by_fault(step)) {
        queue_status(state_.boot_loader.take_frame(frame, state_.flash_change), step);
    }
}

void Conversation::begin_download(Region region)
{
    if (died_at(STEP_MODE)) {
        return;
    }
    state_.mode = Mode::boot_loader;
    state_.readout.stop();
    const Verdict verdict = state_.boot_loader.open(region);
    if (!refused_by_fault(STEP_MODE)) {
        queue_status(verdict, STEP_MODE);
    }
}

void Conversation::enter(Mode mode)
{
    state_.mode = mode;
    state_.boot_loader.close();
    state_.readout.stop();
    note_ = mode == Mode::boot_loader ? "boot loader started" : "application started";
}

void Conversation::owe(Owed what, int place)
{
    state_.owed = what;
    state_.busy = delay_at(board_.behaviour.faults, place, board_.behaviour.busy_polls);
}

void Conversation::queue_answer(uint8_t answer, const char *meaning)
{
    state_.owed = Owed::byte;
    state_.owed_byte = answer;
    note_ = meaning;
}

void Conversation::queue_status(Verdict verdict, int step)
{
    note_ = std::move(verdict.note);
    owe(Owed::status, step);
    state_.owed_byte = status_at(board_.behaviour.faults, step, verdict.status);
}

bool Conversation::refused_by_fault(int step)
{
    const std::optional<Refusal> refusal = refusal_at(board_.behaviour.faults, step);
    if (refusal) {
        state_.boot_loader.close();
        queue_status({refusal->status, refusal->note}, step);
    }
    return refusal.has_value();
}

bool Conversation::died_at(int place)
{
    if (const std::optional<Death> death = death_at(board_.behaviour.faults, place)) {
        state_.is_dead = true;
        state_.dead_line = death->line;
        note_ = death->note;
    }
    return state_.is_dead;
}

// Whether one more poll finds it busy.
bool Conversation::is_still_busy()
{
    if (state_.busy == 0) {
        return false;
    }
    --state_.busy;
    note_ = "busy";
    return true;
}

uint8_t Conversation::take_status()
{
    if (state_.owed != Owed::status) {
        note_ = "nothing to acknowledge";
        return IDLE;
    }
    if (is_still_busy()) {
        return IDLE;
    }
    state_.owed = Owed::nothing;
    note_ = state_.owed_byte == READY ? "acknowledged" : "status";
    return state_.owed_byte;
}

uint8_t Conversation::take_answer()
{
    const bool is_polled = state_.readout.is_undecided() || state_.transaction.is_polled();
    if (is_polled && state_.deafness.covers_poll()) {
        note_ = "fault: deaf";
        return IDLE;
    }
    if (state_.readout.is_undecided()) {
        state_.transaction.begin(
            state_.readout.take_counted_block(board_.measuring(), state_.buffer));
        state_.owed = Owed::transaction;
    }
    if (is_polled) {
        return is_still_busy() ? IDLE : announce();
    }
    if (state_.owed != Owed::byte) {
        note_ = "nothing to answer";
        return IDLE;
    }
    state_.owed = Owed::nothing;
    note_ = "answer";
    return state_.owed_byte;
}

uint8_t Conversation::announce()
{
    note_ = "ready";
    return state_.transaction.take_poll();
}

void Conversation::take_stream_poll(std::span<uint8_t> miso)
{
    if (!state_.readout.is_waited_for()) {
        note_ = "nothing to answer";
        return;
    }
    if (state_.deafness.covers_poll()) {
        note_ = "fault: deaf";
        return;
    }
    state_.readout.begin_stream();
    if (!is_still_busy()) {
        note_ = state_.readout.poll(board_.measuring(), state_.buffer, miso);
    }
}

} // namespace simulator
