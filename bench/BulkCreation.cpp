// Creation in bulk: `size` simulations made in an empty library, in one bulk edit.
//   "alone": UDMDBCtrl::CreateEntity.
//   "owned": UDMDBCtrl::CreateAndAdd into one group of one project.
// Making the empty library, and closing it, is not counted.
//
// Floor: on a copy of that empty library, one transaction of prepared inserts of the same rows:
// entity, revision with packed attributes, a row for each attribute that has a value (the display
// name and a default, each with its folded text where folding changes it), the link in case
// "owned". UIDs, names and folded texts are at hand; the names are small letters, which folding
// leaves alone.
#include <benchmark/benchmark.h>
#include <kxct/MasterDBManagerImpl.h>
#include <kxudm/IUDMProfile.h>
#include <kxudm/UDMBulkEdit.h>

#include <optional>

#include "Floor.h"
#include "SampleLibrary.h"

namespace {

// An empty library in a folder of its own, with a project in it.
class EmptyLibrary {
  public:
    EmptyLibrary() : _host(_folder.Path()) {
        _host.Create("Bulk");
        _session = &bench::SessionOf(_host, "Bulk");
        _project.emplace(_session->CreateEntity("UDMProject", "project"));
    }

    kxct::UDMDBCtrl& Session() { return *_session; }
    const kxudm::UDMItemHandle& Project() const { return *_project; }
    std::filesystem::path File() const { return _host.LibraryFile("Bulk"); }
    std::filesystem::path FloorFile() const { return _folder.Path() / "floor.ldb"; }

  private:
    TemporaryFolder _folder;
    Host _host;
    kxct::UDMDBCtrl* _session = nullptr;
    std::optional<kxudm::UDMItemHandle> _project;
};

// Rows as a session writes them, from one that it wrote.
struct Pattern {
    struct Head {
        std::string name;
        std::string value;
        std::optional<std::string> folded;
    };

    std::int64_t project = 0;
    std::string attributes;
    std::vector<Head> heads;
};

std::string TextAt(const bench::Statement& row, int column) {
    return {reinterpret_cast<const char*>(sqlite3_column_text(row.get(), column)),
            static_cast<std::size_t>(sqlite3_column_bytes(row.get(), column))};
}

Pattern PatternOf(const bench::Database& database) {
    Pattern pattern;
    const bench::Statement entity = bench::Prepare(
        database,
        "SELECT p.id, r.attributes, r.id >> 24 FROM entity p, revision r WHERE p.definition ="
        " 'UDMProject' AND r.id >> 24 = (SELECT id FROM entity WHERE definition = ?1)");
    bench::BindText(entity, 1, bench::DEFINITION);
    if (sqlite3_step(entity.get()) != SQLITE_ROW) {
        bench::Fail(database.get());
    }
    pattern.project = sqlite3_column_int64(entity.get(), 0);
    pattern.attributes.assign(static_cast<const char*>(sqlite3_column_blob(entity.get(), 1)),
                              static_cast<std::size_t>(sqlite3_column_bytes(entity.get(), 1)));
    const bench::Statement heads = bench::Prepare(
        database, "SELECT name, value, folded FROM head_attribute WHERE entity = ?1");
    sqlite3_bind_int64(heads.get(), 1, sqlite3_column_int64(entity.get(), 2));
    while (sqlite3_step(heads.get()) == SQLITE_ROW) {
        Pattern::Head head{TextAt(heads, 0), TextAt(heads, 1), {}};
        if (sqlite3_column_type(heads.get(), 2) != SQLITE_NULL) {
            head.folded = TextAt(heads, 2);
        }
        pattern.heads.push_back(std::move(head));
    }
    return pattern;
}

class CreationByHand {
  public:
    CreationByHand(const bench::Database& database, Pattern pattern, bool owned)
        : _database(database),
          _pattern(std::move(pattern)),
          _owned(owned),
          _entity(bench::Prepare(database,
                                 "INSERT INTO entity(uid, definition, name, published, working,"
                                 " lock_user, lock_workspace, lock_time, created_time,"
                                 " created_user, created_workspace)"
                                 " VALUES (?1, ?2, ?3, NULL, 0, 'anna', 'ws', ?4, ?4, 'anna',"
                                 " 'ws')")),
          _revision(bench::Prepare(database,
                                   "INSERT INTO revision(id, state, display_name, created_time,"
                                   " created_user, modified_time, modified_user, workspace,"
                                   " attributes) VALUES (?1, 0, ?2, ?3, 'anna', ?3, 'anna', 'ws',"
                                   " ?4)")),
          _head(bench::Prepare(database,
                               "INSERT INTO head_attribute(entity, name, working, value, folded)"
                               " VALUES (?1, ?2, 1, ?3, ?4)")),
          _link(bench::Prepare(database,
                               "INSERT INTO link(first, kind, name, position, second, from_rev,"
                               " composition) VALUES (?1, 1, 'simulations', ?2, ?3, 0, 1)")) {}

    void operator()(std::string_view uid, std::string_view name, std::int64_t number) {
        const std::int64_t time = 1700000000000000 + number;
        bench::BindText(_entity, 1, uid);
        bench::BindText(_entity, 2, bench::DEFINITION);
        bench::BindText(_entity, 3, name);
        sqlite3_bind_int64(_entity.get(), 4, time);
        bench::Run(_database, _entity);
        const std::int64_t id = sqlite3_last_insert_rowid(_database.get());
        sqlite3_bind_int64(_revision.get(), 1, id << 24);
        bench::BindText(_revision, 2, name);
        sqlite3_bind_int64(_revision.get(), 3, time);
        bench::BindBlob(_revision, 4, _pattern.attributes);
        bench::Run(_database, _revision);
        for (const auto& [attribute, value, folded] : _pattern.heads) {
            sqlite3_bind_int64(_head.get(), 1, id);
            bench::BindText(_head, 2, attribute);
            bench::BindText(_head, 3, attribute == "displayname" ? name : value);
            if (folded) {
                bench::BindText(_head, 4, *folded);
            } else {
                sqlite3_bind_null(_head.get(), 4);
            }
            bench::Run(_database, _head);
        }
        if (_owned) {
            sqlite3_bind_int64(_link.get(), 1, _pattern.project);
            sqlite3_bind_int64(_link.get(), 2, number + 2);
            sqlite3_bind_int64(_link.get(), 3, id);
            bench::Run(_database, _link);
        }
    }

  private:
    const bench::Database& _database;
    const Pattern _pattern;
    const bool _owned;
    bench::Statement _entity;
    bench::Statement _revision;
    bench::Statement _head;
    bench::Statement _link;
};

// Texts of the form that a session gives: of 26 characters, rising.
std::vector<std::string> MakeUids(std::int64_t count) {
    std::vector<std::string> uids;
    for (std::int64_t i = 0; i < count; ++i) {
        std::string number = std::to_string(i);
        uids.push_back("01ZZZZZZZZZZZZZZZZ" + std::string(8 - number.size(), '0') + number);
    }
    return uids;
}

void Floor(benchmark::State& state, bool owned) {
    const std::vector<std::string> uids = MakeUids(state.range(0));
    std::vector<kxString> names;
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        names.push_back(bench::NameOf(i));
    }
    for (auto _ : state) {
        state.PauseTiming();
        {
            EmptyLibrary library;
            library.Session().CreateAndAdd(
                bench::DEFINITION, bench::NameOf(0), library.Project(), "simulations");
            bench::CopyLibrary(library.File(), library.FloorFile());
            const bench::Database database = bench::OpenByHand(library.FloorFile());
            CreationByHand create(database, PatternOf(database), owned);
            state.ResumeTiming();
            bench::Execute(database, "BEGIN IMMEDIATE");
            for (std::size_t i = 0; i < uids.size(); ++i) {
                create(uids[i], names[i], static_cast<std::int64_t>(i));
            }
            bench::Execute(database, "COMMIT");
            state.PauseTiming();
        }
        state.ResumeTiming();
    }
}

void Ours(benchmark::State& state, bool owned) {
    for (auto _ : state) {
        state.PauseTiming();
        {
            EmptyLibrary library;
            kxct::UDMDBCtrl& session = library.Session();
            state.ResumeTiming();
            kxudm::UDMBulkEdit edit(session.GetProfile());
            for (std::int64_t i = 0; i < state.range(0); ++i) {
                if (owned) {
                    session.CreateAndAdd(
                        bench::DEFINITION, bench::NameOf(i), library.Project(), "simulations");
                } else {
                    session.CreateEntity(bench::DEFINITION, bench::NameOf(i));
                }
            }
            edit.Commit();
            state.PauseTiming();
        }
        state.ResumeTiming();
    }
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(10000)->Arg(100000)->Iterations(1)->Unit(benchmark::kMillisecond);
}
BENCHMARK_CAPTURE(Floor, alone, false)->Name("bulk creation, alone/floor")->Apply(Sizes);
BENCHMARK_CAPTURE(Ours, alone, false)->Name("bulk creation, alone/ours")->Apply(Sizes);
BENCHMARK_CAPTURE(Floor, owned, true)->Name("bulk creation, owned/floor")->Apply(Sizes);
BENCHMARK_CAPTURE(Ours, owned, true)->Name("bulk creation, owned/ours")->Apply(Sizes);

}  // namespace
