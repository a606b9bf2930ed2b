// The application's side of the parameter commands.
#include "simulator/board/application.hpp"

#include "simulator/measuring/adc_frame.hpp"
#include "simulator/wire/bytes.hpp"
#include "simulator/wire/wire.hpp"
#include "simulator/words/text.hpp"

#include <algorithm>
#include <iterator>

namespace simulator
{

namespace
{

constexpr uint16_t RAW_BYTES = 50;

uint16_t address_of(Application::Parameters parameters)
{
    return static_cast<uint16_t>(little_endian(parameters.first(2)));
}

Response result(uint16_t answer)
{
    Response response;
    response.answer = answer;
    return response;
}

// A reply of that many bytes.
Response told(size_t size, ReplyAt at = ReplyAt::buffer)
{
    Response response = result(static_cast<uint16_t>(size));
    response.kind = size == 0 ? ResponseKind::result : ResponseKind::reply;
    response.size = response.answer;
    response.at = at;
    return response;
}

// The result of a command without a reply.
Response result_of(const Board &board, const Command &command)
{
    const std::string answer(answer_of(board, command.code));
    return result(static_cast<uint16_t>(numbers_of(answer).at(0)));
}

// The channel that the first parameter names; false if the command has no such channel.
bool take_channel(const Command &command, Application::Parameters parameters, int &channel)
{
    channel = command.channels == 0 ? NO_PLACE : parameters[0];
    return channel < command.channels || command.channels == 0;
}

std::string channel_words(int channel)
{
    return channel == NO_PLACE ? std::string() : text(" channel %d", channel);
}

Response no_such_channel(const Command &command, int channel, std::string &note)
{
    note = text("command 0x%02X has no channel %d", command.code, channel);
    return result(0);
}

Response tell_text(const Board &board, const Command &command, std::string &note)
{
    const size_t size = answer_of(board, command.code).size();
    Response response = told(std::min<size_t>(size, UINT16_MAX), ReplyAt::text);
    response.code = command.code;
    note = text("query 0x%02X", command.code);
    return response;
}

Response write_byte(const Board &board, const Command &command, Application::Parameters parameters,
                    std::string &note)
{
    const uint16_t address = address_of(parameters);
    board.bytes.memory[address] = parameters[2];
    note = text("0x%02X written to 0x%04X", parameters[2], address);
    return result_of(board, command);
}

Response read_range(Application::Parameters parameters, std::string &note)
{
    const uint32_t count = little_endian(parameters.subspan(2, 2));
    Response response = told(count, ReplyAt::memory);
    response.address = address_of(parameters);
    note = text("%u bytes from 0x%04X on", count, response.address);
    return response;
}

// They start as records do, and then count up from the seed.
Response tell_raw_bytes(const Board &board, BlockBytes buffer, std::string &note)
{
    buffer[0] = READY;
    for (int i = 1; i < RAW_BYTES; ++i) {
        buffer[static_cast<size_t>(i)] = static_cast<uint8_t>(board.behaviour.seed + i - 1);
    }
    note = "raw bytes asked for";
    Response response = told(RAW_BYTES);
    response.kind = ResponseKind::raw;
    return response;
}

} // namespace

void Application::load()
{
    std::ranges::fill(settings_, ReceivedSetting());
    std::ranges::fill(reads_, 0);
}

void Application::restart()
{
    adc_start_ = 1;
    std::ranges::fill(reads_, 0);
}

CommandValues Application::settings(const Board &board) const
{
    CommandValues values = board.settings;
    for (size_t slot = 0; slot < SETTING_SLOTS; ++slot) {
        if (settings_[slot].is_received != 0) {
            values[setting_keys()[slot]] = words_of(slot);
        }
    }
    return values;
}

Response Application::perform(const Board &board, const Command &command, Parameters parameters,
                              BlockBytes buffer, std::string &note)
{
    switch (command.kind) {
    case CommandKind::number:
        return tell_number(board, command, parameters, buffer, note);
    case CommandKind::text:
        return tell_text(board, command, note);
    case CommandKind::setting:
        return set(board, command, parameters, note);
    case CommandKind::plain:
        note = text("command 0x%02X", command.code);
        return result_of(board, command);
    case CommandKind::write_byte:
        return write_byte(board, command, parameters, note);
    case CommandKind::read_byte:
        return read_byte(board, parameters, buffer, note);
    case CommandKind::read_range:
        return read_range(parameters, note);
    case CommandKind::adc_values:
        note = "values asked for";
        return tell_adc_values(board, buffer);
    case CommandKind::raw_bytes:
        return tell_raw_bytes(board, buffer, note);
    case CommandKind::records:
        break; // they belong to the board, not to the commands
    }
    return {};
}

Response Application::set(const Board &board, const Command &command, Parameters parameters,
                          std::string &note)
{
    int channel = NO_PLACE;
    if (!take_channel(command, parameters, channel)) {
        return no_such_channel(command, channel, note);
    }
    const size_t slot = *setting_slot({command.code, channel});
    ReceivedSetting &setting = settings_[slot];
    setting.is_received = 1;
    size_t at = command.channels == 0 ? 0 : 1;
    const auto width = static_cast<size_t>(command.width);
    for (int i = 0; i < command.values; ++i, at += width) {
        setting.values[i] = little_endian(parameters.subspan(at, width));
    }
    ++received_;
    note = text("setting 0x%02X%s = %s", command.code, channel_words(channel).c_str(),
                words_of(slot).c_str());
    return result_of(board, command);
}

// The values in a slot that has received some.
std::string Application::words_of(size_t slot) const
{
    const uint32_t *values = settings_[slot].values;
    const bool is_pair = find_command(setting_keys()[slot].code)->values > 1;
    return is_pair ? text("%u %u", values[0], values[1]) : text("%u", values[0]);
}

// What a setting has received, or else what the board had for it; none if neither.
std::optional<std::string> Application::setting(const Board &board, CommandKey key) const
{
    const std::optional<size_t> slot = setting_slot(key);
    if (slot && settings_[*slot].is_received != 0) {
        return words_of(*slot);
    }
    const auto found = board.settings.find(key);
    return found == board.settings.end() ? std::nullopt : std::optional(found->second);
}

// A given answer takes precedence over what the setting of the same quantity has received.
Response Application::tell_number(const Board &board, const Command &command, Parameters parameters,
                                  BlockBytes buffer, std::string &note) const
{
    int channel = NO_PLACE;
    if (!take_channel(command, parameters, channel)) {
        return no_such_channel(command, channel, note);
    }
    std::string value = setting(board, {command.shows, channel}).value_or(command.default_answer);
    if (const std::string *answer = find_answer(board, command.code, channel)) {
        value = *answer;
    }
    ByteWriter reply(buffer);
    reply.put(static_cast<uint64_t>(numbers_of(value).at(0)), static_cast<size_t>(command.width));
    note = text("query 0x%02X%s: %s", command.code, channel_words(channel).c_str(), value.c_str());
    return told(reply.size());
}

Response Application::read_byte(const Board &board, Parameters parameters, BlockBytes buffer,
                                std::string &note)
{
    const uint16_t address = address_of(parameters);
    buffer[0] = byte_at(board, address);
    note = text("byte at 0x%04X", address);
    return told(1);
}

Response Application::tell_adc_values(const Board &board, BlockBytes buffer)
{
    write_adc_frame(buffer.first<ADC_FRAME_SIZE>(), static_cast<uint32_t>(board.behaviour.seed),
                    adc_start_, static_cast<uint8_t>(board.behaviour.adc_values));
    adc_start_ += ADC_VALUES;
    Response response = told(ADC_FRAME_SIZE);
    response.kind = ResponseKind::values;
    return response;
}

// An address for which a text is given returns it byte by byte, then a 0, then starts again.
uint8_t Application::byte_at(const Board &board, int address)
{
    const CommandKey key = {'b', address};
    const auto found = board.answers.find(key);
    if (found == board.answers.end()) {
        return board.bytes.memory[static_cast<size_t>(address)];
    }
    const auto before = std::distance(board.answers.lower_bound({'b', 0}), found);
    const std::string &words = found->second;
    const size_t at = reads_[before]++ % (words.size() + 1);
    return static_cast<uint8_t>(words.c_str()[at]);
}

} // namespace simulator
