// Reads records from the CSV that the module shows.
#include "stmctl/record/record_reader.hpp"

#include "stmctl/record/csv_line.hpp"

#include <algorithm>
#include <charconv>

namespace stmctl
{

namespace
{

// The number that begins a text, as the 32 bits that the record has.
uint32_t number_of(std::string_view text)
{
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    int64_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return static_cast<uint32_t>(number);
}

uint32_t number_behind(std::string_view text, std::string_view label)
{
    const size_t at = text.find(label);
    return at == std::string_view::npos ? 0 : number_of(text.substr(at + label.size()));
}

size_t place_of(const std::vector<std::string> &names, std::string_view name)
{
    return static_cast<size_t>(std::ranges::find(names, name) - names.begin());
}

uint32_t number_at(const std::vector<std::string_view> &values, size_t at)
{
    return at < values.size() ? number_of(values[at]) : 0;
}

} // namespace

std::optional<RecordFacts> RecordReader::take(std::string_view text)
{
    csv_fields(text, values_);
    if (text.starts_with('"')) {
        take_header();
        return {};
    }
    return RecordFacts{true, number_at(values_, rel_t_at_), number_at(values_, buffered_at_)};
}

void RecordReader::take_header()
{
    names_.clear();
    for (const std::string_view name : values_) {
        names_.emplace_back(has_temperature_ && name == "omega_t" ? "temp" : name);
    }
    rel_t_at_ = place_of(names_, "rel_t");
    buffered_at_ = place_of(names_, "buffered");
}

RecordFacts facts_of_text(std::string_view text)
{
    return {true, number_behind(text, " rel_t:"), number_behind(text, " buffered  :")};
}

} // namespace stmctl
