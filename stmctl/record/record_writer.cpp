// Writes records in the format that the user wants.
#include "stmctl/record/record_writer.hpp"

#include "stmctl/output/printable.hpp"
#include "stmctl/process/failure.hpp"
#include "stmctl/record/host_time.hpp"
#include "stmctl/record/record_csv.hpp"
#include "stmctl/record/record_json.hpp"
#include "stmctl/record/record_text.hpp"

#include <fmt/format.h>

namespace stmctl
{

namespace
{

[[noreturn]] void refuse(std::string_view text)
{
    throw Failure(ExitStatus::failed,
                  fmt::format("the module shows '{}', which is no record of this kind",
                              printable(std::string(text.substr(0, text.find('\n'))))));
}

} // namespace

RecordFacts checked_facts_of_text(const Columns &columns, std::string_view text)
{
    const std::optional<RecordFacts> facts = facts_of_text(columns, text);
    if (!facts) {
        refuse(text);
    }
    return *facts;
}

RecordWriter::RecordWriter(Format format, bool timestamps, const Columns &columns,
                           Destination &destination)
    : format_(format), timestamps_(timestamps), columns_(columns), destination_(destination)
{
}

void RecordWriter::begin()
{
    if (format_ == Format::csv && !begun_) {
        destination_.write((timestamps_ ? "\"time\";" : "") + csv_header(columns_));
    }
    begun_ = true;
}

void RecordWriter::take(const Record &record)
{
    switch (format_) {
    case Format::csv:
        buffer_.clear();
        put_csv(record, buffer_);
        write_csv(buffer_.text());
        return;
    case Format::jsonl:
        put_json(record, timestamps_ ? host_time() : "", buffer_);
        break;
    default:
        buffer_.clear();
        put_text(record, buffer_);
    }
    destination_.write(buffer_.text());
}

std::optional<RecordFacts> RecordWriter::take(std::string_view text)
{
    switch (format_) {
    case Format::hex:
        destination_.write(text);
        return RecordFacts();
    case Format::text:
        destination_.write(text);
        return checked_facts_of_text(columns_, text);
    default:
        break;
    }
    if (is_csv_header(columns_, text)) {
        begin(); // asked again, the module shows it again
        return {};
    }
    return take_line(text);
}

RecordFacts RecordWriter::take_line(std::string_view line)
{
    const std::optional<RecordFacts> facts = facts_of_csv(columns_, line);
    if (!facts) {
        refuse(line);
    }
    if (format_ == Format::csv) {
        write_csv(line);
        return *facts;
    }
    if (!put_json(columns_, line, timestamps_ ? host_time() : "", buffer_)) {
        refuse(line);
    }
    destination_.write(buffer_.text());
    return *facts;
}

void RecordWriter::write_csv(std::string_view line)
{
    if (timestamps_) {
        destination_.write(host_time() + ';');
    }
    destination_.write(line);
}

} // namespace stmctl
