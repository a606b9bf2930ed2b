// The one main function of the benchmarks.
#include "bench/harness.hpp"

#include <cstdio>

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    if (!bench::contenders_agree()) {
        fprintf(stderr, "%s: the contenders' results differ, there is nothing to compare\n",
                argv[0]);
        return 1;
    }
    bench::register_contenders();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
