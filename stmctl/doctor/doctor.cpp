// doctor: checks everything that a board needs, and reports what is wrong and what helps.
#include "stmctl/doctor/doctor.hpp"

#include "stmctl/command_line/arguments.hpp"
#include "stmctl/doctor/checks.hpp"
#include "stmctl/output/json.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/process/failure.hpp"

#include <fmt/format.h>

#include <memory>
#include <string>
#include <vector>

namespace stmctl
{

namespace
{

struct Line {
    const char *name;
    Finding finding;
};

const char *health_name(Health health)
{
    constexpr const char *NAMES[] = {"good", "bad", "unknown"};
    return NAMES[static_cast<size_t>(health)];
}

std::vector<std::string> names_of(const std::vector<Line> &lines, Health health)
{
    std::vector<std::string> names;
    for (const Line &line : lines) {
        if (line.finding.health == health) {
            names.emplace_back(line.name);
        }
    }
    return names;
}

Health overall(const std::vector<Line> &lines)
{
    if (!names_of(lines, Health::bad).empty()) {
        return Health::bad;
    }
    return names_of(lines, Health::unknown).empty() ? Health::good : Health::unknown;
}

void print_lines(const std::vector<Line> &lines)
{
    for (const auto &[name, finding] : lines) {
        print(fmt::format("{:<9} {:<8} {}\n", name, health_name(finding.health), finding.words));
        if (!finding.remedy.empty()) {
            print(fmt::format("{:<18} {}\n", "", finding.remedy));
        }
    }
}

void print_json(const std::vector<Line> &lines)
{
    JsonArray all;
    for (const auto &[name, finding] : lines) {
        JsonObject one;
        one.add("name", name);
        one.add("state", health_name(finding.health));
        one.add("words", finding.words);
        if (finding.remedy.empty()) {
            one.add_null("remedy");
        } else {
            one.add("remedy", finding.remedy);
        }
        all.add_json(one.json());
    }
    JsonObject object;
    object.add("overall", health_name(overall(lines)));
    object.add_json("checks", all.json());
    print(object.json() + '\n');
}

ExitStatus examine_all(bool as_json)
{
    const Examination examination = examine();
    std::vector<Line> lines;
    for (const Check &check : checks()) {
        lines.push_back({check.name, check.judge(examination)});
    }
    (as_json ? print_json : print_lines)(lines);
    const std::vector<std::string> names = names_of(lines, Health::bad);
    if (names.empty()) {
        return ExitStatus::done;
    }
    throw Failure(examination.node.error != 0 ? ExitStatus::not_there : ExitStatus::failed,
                  fmt::format("doctor: {} of {} checks failed: {}", names.size(), lines.size(),
                              fmt::join(names, ", ")));
}

} // namespace

Action declare_doctor(CLI::App &command)
{
    auto as_json = std::make_shared<bool>(false);
    add_flag(command, "--json", *as_json, "as JSON: an object");
    return [as_json] { return examine_all(*as_json); };
}

} // namespace stmctl
