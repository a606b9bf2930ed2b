// raw: shows bytes that only the firmware understands.
#include "stmctl/record/csv_line.hpp"
#include "stmctl/record/host_time.hpp"
#include "stmctl/records/frames.hpp"
#include "stmctl/records/records.hpp"

#include <fmt/format.h>

#include <charconv>

namespace stmctl
{

namespace
{

// "0.Byte";0x55;"1.Byte";0x01;...
std::string render_bytes(const std::string &text, const FrameLook &look, uint64_t)
{
    const std::string time = look.timestamps ? host_time() : "";
    if (look.csv) {
        return (time.empty() ? "" : fmt::format("\"time\";{};", time)) + text;
    }
    std::string line = time.empty() ? "{" : fmt::format("{{\"time\":{}", time);
    const std::vector<std::string_view> fields = csv_fields(text);
    for (size_t i = 0; i + 1 < fields.size(); i += 2) {
        const std::string_view digits = fields[i + 1].substr(2);
        int byte = 0;
        std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
        line += fmt::format("{}\"{}\":{}", line.size() > 1 ? "," : "", fields[i], byte);
    }
    return line + "}\n";
}

std::string beginning(const FrameLook &look)
{
    return look.timestamps ? "\"time\";" : "\"0.Byte\";";
}

constexpr FrameKind RAW = {"raw", stm_read_raw_bytes, render_bytes, beginning, false};

} // namespace

Action declare_raw(CLI::App &command)
{
    return declare_frames(command, RAW);
}

} // namespace stmctl
