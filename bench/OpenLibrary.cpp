// Opening a library: Factory::GetController on a library of `size` contents that no session has
// open. That reads settings, asks the master database for library and workspace, opens the
// library's file and reads its catalogue of content definitions. Closing is not counted.
//
// Floor: sqlite3_open of the library's file with a session's settings, and the text of its
// catalogue by a statement prepared on the spot.
#include <benchmark/benchmark.h>

#include "Floor.h"
#include "SampleLibrary.h"

namespace {

using bench::SampleLibrary;

void Floor(benchmark::State& state) {
    const std::filesystem::path file = SampleLibrary::OfSize(state.range(0)).CopyForFloor();
    for (auto _ : state) {
        bench::Database database = bench::OpenByHand(file);
        std::string catalogue;
        {
            const bench::Statement read =
                bench::Prepare(database, "SELECT value FROM info WHERE key = 'catalogue'");
            if (sqlite3_step(read.get()) != SQLITE_ROW) {
                bench::Fail(database.get());
            }
            catalogue = reinterpret_cast<const char*>(sqlite3_column_text(read.get(), 0));
        }
        benchmark::DoNotOptimize(catalogue.data());
        state.PauseTiming();
        database.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(Floor)
    ->Name("open a library/floor")
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMicrosecond);

// A session of another workspace, so that it is none that is open.
void Ours(benchmark::State& state) {
    Host& host = SampleLibrary::OfSize(state.range(0)).GetHost();
    host.Close(host.Create("Sample", "opening"));
    for (auto _ : state) {
        kxct::Controller* controller = host.Open("Sample", "opening");
        if (!controller->IsDBValid()) {
            state.SkipWithError("not opened");
        }
        state.PauseTiming();
        host.Close(controller);
        state.ResumeTiming();
    }
}
BENCHMARK(Ours)
    ->Name("open a library/ours")
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMicrosecond);

}  // namespace
