// stmctl as a process: what it spends on a stream of records from the virtual board in counted time,
// compared with a front end that only writes them, and how fast it starts.
#include "bench/harness.hpp"
#include "bench/process.hpp"
#include "bench/yardstick/json_lines.hpp"

#include <algorithm>
#include <filesystem>

namespace bench
{

namespace
{

constexpr int64_t RECORDS = 200'000;
constexpr char CSV[] = "3"; // the module's modes
constexpr char TEXT[] = "2";

Command on_board(const Command &words)
{
    static const std::string BOARD = std::filesystem::temp_directory_path() / "stmctl-bench-board";
    Command command = {VIRTUAL_BOARD, "--board", BOARD, "--count-time"};
    command.insert(command.end(), words.begin(), words.end());
    return command;
}

Command our_records(int64_t count, const char *format, const char *file)
{
    return on_board(
        {STMCTL_PROGRAM, "records", "-n", std::to_string(count), "--format", format, "-o", file});
}

Command bare_records(int64_t count, const char *mode, const char *file)
{
    return on_board({BARE_FRONT_END, std::to_string(count), mode, file});
}

// The median of an odd number of starts, on which a busy moment has no effect.
double median_start(const Command &command)
{
    constexpr size_t STARTS = 101;
    std::vector<double> times;
    while (times.size() < STARTS) {
        times.push_back(run_time(command));
    }
    std::ranges::nth_element(times, times.begin() + STARTS / 2);
    return times[STARTS / 2];
}

void add_process(const char *name, int64_t items, const Command &command,
                 double (*measure)(const Command &))
{
    const auto work = [=](benchmark::State &state) {
        for (auto unused : state) {
            (void)unused;
            state.SetIterationTime(measure(command));
        }
        state.SetItemsProcessed(state.iterations() * items);
    };
    benchmark::RegisterBenchmark(name, work)->UseManualTime()->Iterations(3);
}

std::string shown(const Command &command)
{
    const Ended ended = run(command);
    return ended.status == 0 ? ended.output : "";
}

} // namespace

bool contenders_agree()
{
    constexpr int64_t SOME = 500;
    const std::string csv = shown(bare_records(SOME, CSV, "/dev/stdout"));
    const std::string text = shown(bare_records(SOME, TEXT, "/dev/stdout"));
    const std::string version = shown({VERSION_PROGRAM});
    return !csv.empty() && shown(our_records(SOME, "csv", "-")) == csv &&
           shown(our_records(SOME, "jsonl", "-")) == json_lines(csv) && !text.empty() &&
           shown(our_records(SOME, "text", "-")) == text && !version.empty() &&
           shown({STMCTL_PROGRAM, "--version"}) == version;
}

void register_contenders()
{
    constexpr char NOWHERE[] = "/dev/null";
    const auto add_records = [](const char *name, const Command &command) {
        add_process(name, RECORDS, command, processor_time);
    };
    add_records("stmctl_csv/ours", our_records(RECORDS, "csv", NOWHERE));
    add_records("stmctl_csv/bare", bare_records(RECORDS, CSV, NOWHERE));
    add_records("stmctl_jsonl/ours", our_records(RECORDS, "jsonl", NOWHERE));
    add_records("stmctl_jsonl/bare_csv", bare_records(RECORDS, CSV, NOWHERE));
    add_records("stmctl_text/ours", our_records(RECORDS, "text", NOWHERE));
    add_records("stmctl_text/bare", bare_records(RECORDS, TEXT, NOWHERE));
    add_process("stmctl_start/ours", 1, {STMCTL_PROGRAM, "--version"}, median_start);
    add_process("stmctl_start/trivial", 1, {VERSION_PROGRAM}, median_start);
}

} // namespace bench
