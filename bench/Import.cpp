// Import of files: a folder of `size` files of 16 KiB that don't shrink, brought into an empty
// library by AddFoldersAndFiles, published. Making the library and the folder is not counted.
//
// Floor: read each file, SHA-256, write it to a temporary name beside the library and rename it,
// one flush of the file system before and one after; then on a copy of the empty library one
// transaction of prepared inserts of the same rows, published: entity, revision with packed
// attributes, a row for each attribute, the link to the folder, the file.
//
// "import of a large file": one file of `size` MiB that doesn't shrink, in the machine's cache;
// time of the clock, with the flush to the disk. Floor: the program `sha256sum` on it.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <kxct/MasterDBManagerImpl.h>
#include <kxudm/IUDMProfile.h>
#include <openssl/evp.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <random>

#include "Floor.h"
#include "SampleLibrary.h"

namespace {

constexpr std::size_t FILE_SIZE = 16 << 10;
constexpr std::size_t BLOCK = 1 << 20;

// Files that stay for the whole run, one set for each size.
const std::filesystem::path& Folder(std::int64_t files, std::size_t bytes) {
    static TemporaryFolder home;
    static std::map<std::pair<std::int64_t, std::size_t>, std::filesystem::path> made;
    std::filesystem::path& folder = made[{files, bytes}];
    if (folder.empty()) {
        folder = home.Path() / ("in-" + std::to_string(files) + "-" + std::to_string(bytes));
        std::filesystem::create_directory(folder);
        std::mt19937_64 random(static_cast<std::uint64_t>(files));
        std::vector<std::uint64_t> words(std::min(bytes, BLOCK) / sizeof(std::uint64_t));
        for (std::int64_t i = 0; i < files; ++i) {
            std::ofstream file(folder / ("deck" + std::to_string(i) + ".inp"), std::ios::binary);
            for (std::size_t written = 0; written < bytes; written += words.size() * 8) {
                std::generate(words.begin(), words.end(), std::ref(random));
                file.write(reinterpret_cast<const char*>(words.data()),
                           static_cast<std::streamsize>(words.size() * 8));
            }
        }
    }
    return folder;
}

class EmptyLibrary {
  public:
    EmptyLibrary() : _host(_folder.Path()) {
        _host.Create("Import");
        _session = &bench::SessionOf(_host, "Import");
    }
    kxct::UDMDBCtrl& Session() { return *_session; }
    std::filesystem::path File() const { return _host.LibraryFile("Import"); }
    std::filesystem::path Beside(const char* name) const { return _folder.Path() / name; }

  private:
    TemporaryFolder _folder;
    Host _host;
    kxct::UDMDBCtrl* _session = nullptr;
};

class Hash {
  public:
    Hash() : _context(EVP_MD_CTX_new()) { EVP_DigestInit_ex(_context, EVP_sha256(), nullptr); }
    ~Hash() { EVP_MD_CTX_free(_context); }
    Hash(const Hash&) = delete;
    Hash& operator=(const Hash&) = delete;

    void Update(const char* bytes, std::size_t size) { EVP_DigestUpdate(_context, bytes, size); }
    std::string Hex() {
        unsigned char digest[EVP_MAX_MD_SIZE];
        unsigned size = 0;
        EVP_DigestFinal_ex(_context, digest, &size);
        std::string hex;
        for (unsigned i = 0; i < size; ++i) {
            constexpr char digits[] = "0123456789abcdef";
            hex += digits[digest[i] >> 4];
            hex += digits[digest[i] & 15];
        }
        return hex;
    }

  private:
    EVP_MD_CTX* _context;
};

struct Descriptor {
    explicit Descriptor(int opened) : number(opened) {
        if (number < 0) {
            throw std::runtime_error("a file can't be opened");
        }
    }
    ~Descriptor() { close(number); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    const int number;
};

// Copies unless `target` is empty. The hash.
std::string HashFile(const std::filesystem::path& source,
                     const std::filesystem::path& target,
                     std::vector<char>& block) {
    const Descriptor in(open(source.c_str(), O_RDONLY | O_CLOEXEC));
    std::optional<Descriptor> out;
    if (!target.empty()) {
        out.emplace(open(target.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0444));
    }
    Hash hash;
    while (const ssize_t count = read(in.number, block.data(), block.size())) {
        hash.Update(block.data(), static_cast<std::size_t>(count));
        if (out && write(out->number, block.data(), static_cast<std::size_t>(count)) != count) {
            throw std::runtime_error("a file can't be written");
        }
    }
    return hash.Hex();
}

// Rows of one content, as the library wrote them for the first one of an import.
struct Pattern {
    std::int64_t folder = 0;
    std::string definition;
    std::string attributes;
    std::vector<std::pair<std::string, std::string>> heads;
};

std::string Column(const bench::Statement& statement, int column) {
    return {static_cast<const char*>(sqlite3_column_blob(statement.get(), column)),
            static_cast<std::size_t>(sqlite3_column_bytes(statement.get(), column))};
}

Pattern PatternOf(const bench::Database& database) {
    const bench::Statement find = bench::Prepare(
        database,
        "SELECT l.first, l.second, e.definition, r.attributes FROM link l, entity e, revision r"
        " WHERE l.kind = 3 AND e.id = l.first AND r.id = (e.id << 24) + 1");
    if (sqlite3_step(find.get()) != SQLITE_ROW) {
        bench::Fail(database.get());
    }
    Pattern pattern;
    pattern.folder = sqlite3_column_int64(find.get(), 1);
    pattern.definition = Column(find, 2);
    pattern.attributes = Column(find, 3);
    const bench::Statement heads =
        bench::Prepare(database, "SELECT name, value FROM head_attribute WHERE entity = ?1");
    sqlite3_bind_int64(heads.get(), 1, sqlite3_column_int64(find.get(), 0));
    while (sqlite3_step(heads.get()) == SQLITE_ROW) {
        std::string name = Column(heads, 0);
        pattern.heads.emplace_back(std::move(name), Column(heads, 1));
    }
    return pattern;
}

class RowsByHand {
  public:
    RowsByHand(const bench::Database& database, Pattern pattern)
        : _database(database),
          _pattern(std::move(pattern)),
          _entity(bench::Prepare(database,
                                 "INSERT INTO entity(uid, definition, name, published,"
                                 " created_time, created_user, created_workspace)"
                                 " VALUES (?1, ?2, ?3, 1, ?4, 'anna', 'ws')")),
          _revision(bench::Prepare(database,
                                   "INSERT INTO revision(id, state, display_name, created_time,"
                                   " created_user, modified_time, modified_user, published_time,"
                                   " published_user, workspace, comment, attributes)"
                                   " VALUES (?1, 1, ?2, ?3, 'anna', ?3, 'anna', ?3, 'anna', 'ws',"
                                   " 'first', ?4)")),
          _head(bench::Prepare(database,
                               "INSERT INTO head_attribute(entity, name, working, value)"
                               " VALUES (?1, ?2, 0, ?3)")),
          _link(bench::Prepare(database,
                               "INSERT INTO link(first, kind, name, position, second, from_rev,"
                               " entry) VALUES (?1, 3, '', 0, ?2, 0, ?3)")),
          _file(bench::Prepare(database,
                               "INSERT INTO file(entity, name, from_rev, hash, size,"
                               " modified_time, added_time, is_text)"
                               " VALUES (?1, ?2, 0, ?3, ?4, ?5, ?5, 0)")) {}

    void operator()(std::int64_t number, const std::string& name, const std::string& hash) {
        const std::int64_t time = 1700000000000000 + number;
        std::string uid = std::to_string(number);
        uid.insert(0, "01ZZZZZZZZZZZZZZZZ" + std::string(8 - uid.size(), '0'));
        bench::BindText(_entity, 1, uid);
        bench::BindText(_entity, 2, _pattern.definition);
        bench::BindText(_entity, 3, name);
        sqlite3_bind_int64(_entity.get(), 4, time);
        bench::Run(_database, _entity);
        const std::int64_t id = sqlite3_last_insert_rowid(_database.get());
        sqlite3_bind_int64(_revision.get(), 1, (id << 24) + 1);
        bench::BindText(_revision, 2, name);
        sqlite3_bind_int64(_revision.get(), 3, time);
        bench::BindBlob(_revision, 4, _pattern.attributes);
        bench::Run(_database, _revision);
        for (const auto& [attribute, value] : _pattern.heads) {
            sqlite3_bind_int64(_head.get(), 1, id);
            bench::BindText(_head, 2, attribute);
            bench::BindText(_head, 3, attribute == "displayname" ? name : value);
            bench::Run(_database, _head);
        }
        sqlite3_bind_int64(_link.get(), 1, id);
        sqlite3_bind_int64(_link.get(), 2, _pattern.folder);
        bench::BindText(_link, 3, name);
        bench::Run(_database, _link);
        sqlite3_bind_int64(_file.get(), 1, id);
        bench::BindText(_file, 2, name);
        bench::BindText(_file, 3, hash);
        sqlite3_bind_int64(_file.get(), 4, static_cast<std::int64_t>(FILE_SIZE));
        sqlite3_bind_int64(_file.get(), 5, time);
        bench::Run(_database, _file);
    }

  private:
    const bench::Database& _database;
    const Pattern _pattern;
    bench::Statement _entity;
    bench::Statement _revision;
    bench::Statement _head;
    bench::Statement _link;
    bench::Statement _file;
};

void ImportByHand(const bench::Database& database,
                  RowsByHand& rows,
                  const std::filesystem::path& in,
                  const std::filesystem::path& vault) {
    std::vector<char> block(BLOCK);
    std::vector<std::pair<std::string, std::string>> files;
    std::filesystem::create_directories(vault);
    const Descriptor folder(open(vault.c_str(), O_RDONLY | O_CLOEXEC));
    for (const auto& entry : std::filesystem::directory_iterator(in)) {
        const std::string name = entry.path().filename().string();
        files.emplace_back(name, HashFile(entry.path(), vault / name, block));
    }
    syncfs(folder.number);
    for (const auto& [name, hash] : files) {
        const std::filesystem::path place = vault / hash.substr(0, 2);
        std::filesystem::create_directory(place);
        std::filesystem::rename(vault / name, place / hash);
    }
    syncfs(folder.number);
    bench::Execute(database, "BEGIN IMMEDIATE");
    std::int64_t number = 0;
    for (const auto& [name, hash] : files) {
        rows(++number, name, hash);
    }
    bench::Execute(database, "COMMIT");
}

int Import(kxct::UDMDBCtrl& session, const std::filesystem::path& folder) {
    return session.AddFoldersAndFiles(
        {folder.string()}, {}, "", {{"publish", "true"}, {"comment", "first"}});
}

void FilesByHand(benchmark::State& state) {
    const std::filesystem::path& in = Folder(state.range(0), FILE_SIZE);
    for (auto _ : state) {
        state.PauseTiming();
        {
            EmptyLibrary library;
            Import(library.Session(), Folder(1, FILE_SIZE));
            bench::CopyLibrary(library.File(), library.Beside("floor.ldb"));
            const bench::Database database = bench::OpenByHand(library.Beside("floor.ldb"));
            RowsByHand rows(database, PatternOf(database));
            state.ResumeTiming();
            ImportByHand(database, rows, in, library.Beside("floor-vault"));
            state.PauseTiming();
        }
        state.ResumeTiming();
    }
}

void Files(benchmark::State& state) {
    const std::filesystem::path& in = Folder(state.range(0), FILE_SIZE);
    for (auto _ : state) {
        state.PauseTiming();
        {
            EmptyLibrary library;
            state.ResumeTiming();
            if (Import(library.Session(), in) != state.range(0)) {
                state.SkipWithError("not all files came in");
            }
            state.PauseTiming();
        }
        state.ResumeTiming();
    }
}

void LargeFileByHand(benchmark::State& state) {
    const std::filesystem::path& in = Folder(1, static_cast<std::size_t>(state.range(0)) << 20);
    const std::string command = "sha256sum '" + (in / "deck0.inp").string() + "' >/dev/null";
    for (auto _ : state) {
        if (std::system(command.c_str()) != 0) {
            state.SkipWithError("there is no sha256sum");
        }
    }
}

void LargeFile(benchmark::State& state) {
    const std::filesystem::path& in = Folder(1, static_cast<std::size_t>(state.range(0)) << 20);
    for (auto _ : state) {
        state.PauseTiming();
        {
            EmptyLibrary library;
            state.ResumeTiming();
            if (Import(library.Session(), in) != 1) {
                state.SkipWithError("the file did not come in");
            }
            state.PauseTiming();
        }
        state.ResumeTiming();
    }
}

BENCHMARK(FilesByHand)
    ->Name("import of files/floor")
    ->Arg(500)
    ->Arg(5000)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(Files)
    ->Name("import of files/ours")
    ->Arg(500)
    ->Arg(5000)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(LargeFileByHand)
    ->Name("import of a large file/floor")
    ->Arg(100)
    ->Arg(1000)
    ->Iterations(1)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(LargeFile)
    ->Name("import of a large file/ours")
    ->Arg(100)
    ->Arg(1000)
    ->Iterations(1)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
