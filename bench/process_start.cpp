// update without arguments, as a process: its time, and its peak resident memory.
#include "bench/harness.hpp"
#include "bench/process.hpp"

#include <algorithm>

namespace bench
{

namespace
{

// The time of an iteration is the shortest of this many runs, because most of it is the system's.
constexpr int RUNS = 50;

template <typename Measure>
auto least_of_runs(const char *program, Measure measure)
{
    auto least = measure(program);
    for (int run = 1; run < RUNS; ++run) {
        least = std::min(least, measure(program));
    }
    return least;
}

void measure(benchmark::State &state, const char *program)
{
    for (auto unused : state) {
        (void)unused;
        state.SetIterationTime(
            least_of_runs(program, [](const char *path) { return run_time({path}); }));
    }
    state.SetItemsProcessed(state.iterations());
    state.counters["peak_kib"] = static_cast<double>(least_of_runs(program, peak_memory));
}

void add_program(const char *name, const char *program)
{
    benchmark::RegisterBenchmark(name, measure, program)->UseManualTime()->Iterations(10);
}

} // namespace

bool contenders_agree()
{
    const Ended ours = run({UPDATE_PROGRAM});
    const Ended trivial = run({USAGE_PROGRAM});
    return ours.status == 1 && trivial.status == 1 && !ours.output.empty() &&
           ours.output == trivial.output;
}

void register_contenders()
{
    add_program("process_start/ours", UPDATE_PROGRAM);
    add_program("process_start/trivial", USAGE_PROGRAM);
}

} // namespace bench
