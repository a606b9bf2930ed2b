// The parts of a program of benchmarks. A contender is the module's way of doing something ("ours")
// or a yardstick's; it is registered as benchmark/contender, or as benchmark/set/contender if it is
// measured on each data set.
#pragma once

#include "bench/data_set.hpp"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

namespace bench
{

// Each program has its own. Ratios are meaningful only if all contenders do the same work, so their
// results are compared before anything is measured.
bool contenders_agree();
void register_contenders();

// Measures a function that processes that many items per call.
template <typename Work>
benchmark::internal::Benchmark *add(const std::string &name, int64_t items, Work work)
{
    return benchmark::RegisterBenchmark(name.c_str(), [items, work](benchmark::State &state) {
        for (auto unused : state) {
            (void)unused;
            work();
        }
        state.SetItemsProcessed(state.iterations() * items);
    });
}

inline std::string named(const char *benchmark, const DataSet &set, const char *contender)
{
    return std::string(benchmark) + "/" + set.name + "/" + contender;
}

} // namespace bench
