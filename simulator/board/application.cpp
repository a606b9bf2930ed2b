// The application's side of the parameter commands.
#include "simulator/board/application.hpp"

#include "simulator/measuring/adc_frame.hpp"
#include "simulator/wire/bytes.hpp"
#include "simulator/wire/wire.hpp"
#include "simulator/words/text.hpp"

#include <algorithm>
#include <utility>

namespace simulator
{

namespace
{

constexpr uint32_t RAW_BYTES = 50;

uint16_t address_of(Application::Parameters parameters)
{
    return static_cast<uint16_t>(little_endian(parameters.first(2)));
}

Response result(uint16_t answer, std::string note)
{
    Response response;
    response.answer = answer;
    response.note = std::move(note);
    return response;
}

Response told(std::vector<uint8_t> reply, std::string note)
{
    Response response;
    response.answer = static_cast<uint16_t>(reply.size());
    response.answer_note = reply.empty() ? "result" : "length of the reply";
    response.reply = std::move(reply);
    response.note = std::move(note);
    return response;
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

Response no_such_channel(const Command &command, int channel)
{
    return result(0, text("command 0x%02X has no channel %d", command.code, channel));
}

// The values of a setting, as received.
std::string received_values(const Command &command, Application::Parameters parameters)
{
    std::string values;
    size_t at = command.channels == 0 ? 0 : 1;
    const auto width = static_cast<size_t>(command.width);
    for (int i = 0; i < command.values; ++i, at += width) {
        values += text("%s%u", i > 0 ? " " : "", little_endian(parameters.subspan(at, width)));
    }
    return values;
}

} // namespace

void Application::load(CommandValues settings, CommandValues answers)
{
    settings_ = std::move(settings);
    answers_ = std::move(answers);
    reads_.clear();
}

void Application::restart()
{
    adc_start_ = 1;
    reads_.clear();
}

Response Application::perform(const Command &command, Parameters parameters)
{
    switch (command.kind) {
    case CommandKind::number:
        return tell_number(command, parameters);
    case CommandKind::text:
        return tell_text(command);
    case CommandKind::setting:
        return set(command, parameters);
    case CommandKind::plain:
        return result(result_of(command), text("command 0x%02X", command.code));
    case CommandKind::write_byte:
        return write_byte(command, parameters);
    case CommandKind::read_byte:
        return read_byte(parameters);
    case CommandKind::read_range:
        return read_range(parameters);
    case CommandKind::adc_values:
        return tell_adc_values();
    case CommandKind::raw_bytes:
        return tell_raw_bytes();
    case CommandKind::records:
        break; // they belong to the board, not to the commands
    }
    return {};
}

Response Application::set(const Command &command, Parameters parameters)
{
    int channel = NO_PLACE;
    if (!take_channel(command, parameters, channel)) {
        return no_such_channel(command, channel);
    }
    const std::string values = received_values(command, parameters);
    settings_[{command.code, channel}] = values;
    return result(result_of(command), text("setting 0x%02X%s = %s", command.code,
                                           channel_words(channel).c_str(), values.c_str()));
}

// A given answer takes precedence over what the setting of the same quantity has received.
Response Application::tell_number(const Command &command, Parameters parameters) const
{
    int channel = NO_PLACE;
    if (!take_channel(command, parameters, channel)) {
        return no_such_channel(command, channel);
    }
    std::string value = command.default_answer;
    const auto setting = settings_.find({command.shows, channel});
    if (const std::string *answer = find_answer(command.code, channel)) {
        value = *answer;
    } else if (setting != settings_.end()) {
        value = setting->second;
    }
    const auto number = static_cast<uint64_t>(numbers_of(value).at(0));
    ByteWriter reply;
    reply.put(number, static_cast<size_t>(command.width));
    return told(reply.take(), text("query 0x%02X%s: %s", command.code,
                                   channel_words(channel).c_str(), value.c_str()));
}

Response Application::tell_text(const Command &command) const
{
    const std::string *answer = find_answer(command.code, NO_PLACE);
    const std::string words = (answer != nullptr ? *answer : command.default_answer);
    const std::string taken = words.substr(0, UINT16_MAX);
    return told({taken.begin(), taken.end()}, text("query 0x%02X", command.code));
}

Response Application::write_byte(const Command &command, Parameters parameters)
{
    const uint16_t address = address_of(parameters);
    memory_[address] = parameters[2];
    return result(result_of(command), text("0x%02X written to 0x%04X", parameters[2], address));
}

Response Application::read_byte(Parameters parameters)
{
    const uint16_t address = address_of(parameters);
    return told({byte_at(address)}, text("byte at 0x%04X", address));
}

Response Application::read_range(Parameters parameters) const
{
    const uint16_t address = address_of(parameters);
    const uint32_t count = little_endian(parameters.subspan(2, 2));
    std::vector<uint8_t> reply(count);
    for (uint32_t i = 0; i < count; ++i) {
        reply[i] = memory_[(address + i) % MEMORY_SIZE];
    }
    return told(std::move(reply), text("%u bytes from 0x%04X on", count, address));
}

Response Application::tell_adc_values()
{
    Response response = told(write_adc_frame(seed_, adc_start_, adc_values_), "values asked for");
    adc_start_ += ADC_VALUES;
    response.answer_note = "length of the values";
    response.reply_note = text("%d values", adc_values_);
    response.is_block = true;
    return response;
}

// They start as records do, and then count up from the seed.
Response Application::tell_raw_bytes() const
{
    std::vector<uint8_t> reply(RAW_BYTES, READY);
    for (uint32_t i = 1; i < RAW_BYTES; ++i) {
        reply[i] = static_cast<uint8_t>(seed_ + i - 1);
    }
    Response response = told(std::move(reply), "raw bytes asked for");
    response.reply_note = "raw bytes";
    response.has_answer = false;
    return response;
}

// An address for which a text is given returns it byte by byte, then a 0, then starts again.
uint8_t Application::byte_at(int address)
{
    const std::string *words = find_answer('b', address);
    if (words == nullptr) {
        return memory_[static_cast<size_t>(address)];
    }
    const size_t at = reads_[address]++ % (words->size() + 1);
    return static_cast<uint8_t>(words->c_str()[at]);
}

uint16_t Application::result_of(const Command &command) const
{
    const std::string *answer = find_answer(command.code, NO_PLACE);
    return static_cast<uint16_t>(
        numbers_of(answer != nullptr ? *answer : command.default_answer).at(0));
}

const std::string *Application::find_answer(uint8_t code, int place) const
{
    const auto found = answers_.find({code, place});
    return found == answers_.end() ? nullptr : &found->second;
}

} // namespace simulator
