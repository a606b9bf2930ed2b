// adc: shows frames of converter values.
#include "stmctl/record/csv_line.hpp"
#include "stmctl/record/host_time.hpp"
#include "stmctl/records/frames.hpp"
#include "stmctl/records/records.hpp"

#include <fmt/format.h>

namespace stmctl
{

namespace
{

std::string header(const FrameLook &look)
{
    std::vector<std::string> names;
    if (look.timestamps) {
        names.emplace_back("time");
    }
    if (look.numbered) {
        names.emplace_back("frame");
    }
    names.emplace_back("value");
    return csv_header(names);
}

// What precedes each value of a frame.
std::string front(const FrameLook &look, uint64_t number)
{
    std::string text;
    if (look.timestamps) {
        text += look.csv ? host_time() + ';' : fmt::format("\"time\":{},", host_time());
    }
    if (look.numbered) {
        text += look.csv ? fmt::format("{};", number) : fmt::format("\"frame\":{},", number);
    }
    return text;
}

// "-805;" in a line each
std::string render_values(const std::string &text, const FrameLook &look, uint64_t number)
{
    const std::string before = front(look, number);
    std::string result;
    std::string_view rest = text;
    for (size_t end = 0; (end = rest.find(";\n")) != std::string_view::npos;) {
        const std::string_view value = rest.substr(0, end);
        result += look.csv ? fmt::format("{}{};\n", before, value)
                           : fmt::format("{{{}\"value\":{}}}\n", before, value);
        rest.remove_prefix(end + 2);
    }
    return result;
}

constexpr FrameKind ADC = {"adc", stm_read_adc_samples, render_values, header, true};

} // namespace

Action declare_adc(CLI::App &command)
{
    return declare_frames(command, ADC);
}

} // namespace stmctl
