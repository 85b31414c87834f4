// Export and import of `size` contents with a file each, 1 to 15 KiB of deck text, a tenth of them
// bytes that don't shrink: UDMDBCtrl::Export of all of them, and UDMDBCtrl::Import into an empty
// library. Making the library is not counted.
//
// Floor: `zip -r` of a folder with the same files, and `unzip` of that archive into an empty
// folder. Neither flushes anything to the disk, checks a hash, or keeps what the files belong to;
// ours compresses at a lower level.
//
// All are told in processor time, user and system, the floors' being that of their processes;
// import by the clock as well, as it uses several processors and `unzip` doesn't.
#include <benchmark/benchmark.h>
#include <kxct/MasterDBManagerImpl.h>
#include <kxudm/UDMQuerySettings.h>
#include <sys/resource.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <random>

#include "SampleLibrary.h"

namespace {

constexpr std::size_t LEAST = 1 << 10;
constexpr std::size_t SPREAD = 14 << 10;

std::string DeckText(std::mt19937_64& random, std::size_t size) {
    std::string text = "*NODE\n";
    for (std::int64_t node = 1; text.size() < size; ++node) {
        text += std::to_string(node);
        for (int axis = 0; axis < 3; ++axis) {
            text += ", " + std::to_string(static_cast<double>(random() % 1'000'000) / 1000);
        }
        text += '\n';
    }
    return text;
}

std::string Noise(std::mt19937_64& random, std::size_t size) {
    std::string bytes;
    while (bytes.size() < size) {
        const std::uint64_t word = random();
        bytes.append(reinterpret_cast<const char*>(&word), sizeof(word));
    }
    return bytes;
}

void Run(const std::string& command) {
    if (std::system(command.c_str()) != 0) {
        throw std::runtime_error("failed: " + command);
    }
}

// A folder of files, a library that holds them, and an archive by each side; made on first use and
// kept for the run.
class Sample {
  public:
    static Sample& OfSize(std::int64_t size) {
        static std::map<std::int64_t, std::unique_ptr<Sample>> samples;
        auto& sample = samples[size];
        if (!sample) {
            sample = std::make_unique<Sample>(size);
        }
        return *sample;
    }

    explicit Sample(std::int64_t size) : _size(size), _host(_home.Path()) {
        std::filesystem::create_directory(Files());
        std::mt19937_64 random(7);
        for (std::int64_t i = 0; i < size; ++i) {
            const std::size_t bytes = LEAST + random() % SPREAD;
            std::ofstream file(Files() / ("deck" + std::to_string(i) + ".inp"), std::ios::binary);
            file << (i % 10 == 0 ? Noise(random, bytes) : DeckText(random, bytes));
        }
        _host.Create("Source");
        _session = &bench::SessionOf(_host, "Source");
        _session->AddFoldersAndFiles(
            {Files().string()}, {}, "", {{"publish", "true"}, {"comment", "first"}});
        kxudm::UDMQuerySettingHandle settings;
        kxStlVector<kxudm::UDMItemHandle> hits;
        _session->ExecQuery("name like \"deck\"", settings, hits, 0, 0, false);
        for (const kxudm::UDMItemHandle& hit : hits) {
            _uids.push_back(hit.GetUID());
        }
    }

    std::filesystem::path Files() const { return _home.Path() / "files"; }
    std::string Zip() const { return (_home.Path() / "files.zip").string(); }
    std::string Archive() const { return (_home.Path() / "library.kxa").string(); }
    const kxStlVector<kxString>& Uids() const { return _uids; }
    bool IsWhole() const { return static_cast<std::int64_t>(_uids.size()) >= _size; }

    void ZipFiles() {
        std::filesystem::remove(Zip());
        Run("cd '" + _home.Path().string() + "' && zip -qr files.zip files");
    }
    void Export() { _session->Export(Archive(), _uids); }

  private:
    const std::int64_t _size;
    TemporaryFolder _home;
    Host _host;
    kxct::UDMDBCtrl* _session = nullptr;
    kxStlVector<kxString> _uids;
};

double ProcessorSeconds(int who) {
    rusage usage{};
    getrusage(who, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void Count(benchmark::State& state, int who, const std::function<void()>& work) {
    const double before = ProcessorSeconds(who);
    work();
    state.SetIterationTime(ProcessorSeconds(who) - before);
}

void CountClock(benchmark::State& state, int /*who*/, const std::function<void()>& work) {
    const auto before = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - before;
    state.SetIterationTime(seconds.count());
}

void ExportByHand(benchmark::State& state) {
    Sample& sample = Sample::OfSize(state.range(0));
    for (auto _ : state) {
        Count(state, RUSAGE_CHILDREN, [&] { sample.ZipFiles(); });
    }
}

void Export(benchmark::State& state) {
    Sample& sample = Sample::OfSize(state.range(0));
    if (!sample.IsWhole()) {
        state.SkipWithError("not all contents were found");
    }
    for (auto _ : state) {
        Count(state, RUSAGE_SELF, [&] { sample.Export(); });
    }
}

template <typename Counting>
void ImportByHand(benchmark::State& state, const Counting& count) {
    Sample& sample = Sample::OfSize(state.range(0));
    if (!std::filesystem::exists(sample.Zip())) {
        sample.ZipFiles();
    }
    for (auto _ : state) {
        const TemporaryFolder target;
        count(state, RUSAGE_CHILDREN, [&] {
            Run("unzip -qq '" + sample.Zip() + "' -d '" + target.Path().string() + "'");
        });
    }
}

template <typename Counting>
void Import(benchmark::State& state, const Counting& count) {
    Sample& sample = Sample::OfSize(state.range(0));
    if (!std::filesystem::exists(sample.Archive())) {
        sample.Export();
    }
    for (auto _ : state) {
        const TemporaryFolder target;
        Host host(target.Path());
        host.Create("Target");
        kxct::UDMDBCtrl& session = bench::SessionOf(host, "Target");
        count(state, RUSAGE_SELF, [&] { session.Import(sample.Archive()); });
        if (session.GetUDMItemHandle(sample.Uids().back()).IsEmpty()) {
            state.SkipWithError("a content did not come in");
        }
    }
}

BENCHMARK(ExportByHand)
    ->Name("export/floor")
    ->Arg(5000)
    ->Arg(50000)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(Export)
    ->Name("export/ours")
    ->Arg(5000)
    ->Arg(50000)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
void Imports(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(5000)->Arg(50000)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
}
BENCHMARK_CAPTURE(ImportByHand, processor, Count)
    ->Name("import of an archive/floor")
    ->Apply(Imports);
BENCHMARK_CAPTURE(Import, processor, Count)->Name("import of an archive/ours")->Apply(Imports);
BENCHMARK_CAPTURE(ImportByHand, clock, CountClock)
    ->Name("import of an archive, clock/floor")
    ->Apply(Imports);
BENCHMARK_CAPTURE(Import, clock, CountClock)
    ->Name("import of an archive, clock/ours")
    ->Apply(Imports);

}  // namespace
