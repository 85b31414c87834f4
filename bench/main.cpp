// Runs the benchmarks. scripts/bench.sh does so interleaved and sets ours beside the floors.
#include <benchmark/benchmark.h>

#include "SampleLibrary.h"

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    bench::SampleLibrary::CloseAll();
    benchmark::Shutdown();
    return 0;
}
