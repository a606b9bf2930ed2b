// Writes records in the format that the user chose.
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
                  fmt::format("the module printed '{}', which is not a record of this kind",
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

std::string beginning_of_records(Format format, bool timestamps, const Columns &columns,
                                 const CsvForm &form)
{
    switch (format) {
    case Format::csv:
        return in_form(form, (timestamps ? "\"time\";" : "") + csv_header(columns));
    case Format::jsonl:
        return "{";
    default:
        return "";
    }
}

RecordWriter::RecordWriter(Format format, bool timestamps, const Columns &columns,
                           Destination &destination, const CsvForm &form)
    : format_(format), timestamps_(timestamps), columns_(columns), destination_(destination),
      form_(form)
{
}

void RecordWriter::begin()
{
    if (format_ == Format::csv && !begun_ && !destination_.continues()) {
        destination_.write(beginning_of_records(format_, timestamps_, columns_, form_));
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
        take_block(text);
        return RecordFacts();
    case Format::text:
        destination_.write(text);
        return checked_facts_of_text(columns_, text);
    default:
        break;
    }
    if (is_csv_header(columns_, text)) {
        begin(); // when asked again, the module shows it again
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
    if (!form_.is_modules()) {
        std::string time = timestamps_ ? host_time() + ';' : "";
        destination_.write(in_form(form_, time.append(line)));
        return;
    }
    if (timestamps_) {
        destination_.write(host_time() + ';');
    }
    destination_.write(line);
}

// The module shows the same bytes for each record of a block.
void RecordWriter::take_block(std::string_view text)
{
    if (text != block_) {
        finish();
        block_ = text;
    }
    ++records_of_block_;
}

void RecordWriter::finish()
{
    destination_.write(block_);
    if (records_of_block_ > 1) {
        destination_.write(fmt::format("({} records)\n", records_of_block_));
    }
    block_.clear();
    records_of_block_ = 0;
}

} // namespace stmctl
