// adc: frames of the converter's values.
#include "stmctl/record/csv_line.hpp"
#include "stmctl/record/host_time.hpp"
#include "stmctl/records/frames.hpp"
#include "stmctl/records/records.hpp"

#include <fmt/format.h>

namespace stmctl
{

namespace
{

// "-805;" in a line each
std::string render_values(const std::string &text, const FormatOptions &options, bool first)
{
    const bool csv = options.format == "csv";
    const std::string time = options.timestamps ? host_time() : "";
    std::string result;
    if (csv && first) {
        result = options.timestamps ? csv_header({"time", "value"}) : csv_header({"value"});
    }
    std::string_view rest = text;
    for (size_t end = 0; (end = rest.find(";\n")) != std::string_view::npos;) {
        const std::string_view value = rest.substr(0, end);
        const std::string before =
            time.empty() ? ""
                         : fmt::format("{}{}{}", csv ? "" : "\"time\":", time, csv ? ';' : ',');
        result += csv ? fmt::format("{}{};\n", before, value)
                      : fmt::format("{{{}\"value\":{}}}\n", before, value);
        rest.remove_prefix(end + 2);
    }
    return result;
}

constexpr FrameKind ADC = {"adc", stm_read_adc_samples, render_values, true};

} // namespace

Action declare_adc(CLI::App &command)
{
    return declare_frames(command, ADC);
}

} // namespace stmctl
