// One attribute edit: Item::SetAttributeValue of "description" of one of 1,000 cached items in a
// library of `size` contents, with an item manager connected, so that slots are told.
//
// Floor: on a copy of the library, one transaction that takes the write lock at once and writes the
// same rows with prepared statements: the revision with its packed attributes and stamp, the row of
// the attribute for queries, the journal's entry. Packed attributes of the same size are at hand,
// nothing is read. Both connections have the log and synchronous=NORMAL, as edits are made.
#include <benchmark/benchmark.h>

#include "Floor.h"
#include "SampleLibrary.h"

namespace {

using bench::SampleLibrary;

constexpr std::size_t EDITED = 1000;

struct Target {
    std::int64_t entity = 0;
    std::string attributes;
};

std::vector<Target> TargetsIn(const bench::Database& database, const std::vector<kxString>& uids) {
    const bench::Statement find =
        bench::Prepare(database,
                       "SELECT e.id, r.attributes FROM entity e JOIN revision r"
                       " ON r.id = (e.id << 24) + e.working WHERE e.uid = ?1");
    std::vector<Target> targets;
    for (std::size_t i = 0; i < EDITED; ++i) {
        const std::string_view uid = uids[i];
        bench::BindText(find, 1, uid.substr(0, uid.find(':')));
        if (sqlite3_step(find.get()) != SQLITE_ROW) {
            bench::Fail(database.get());
        }
        targets.push_back(
            {sqlite3_column_int64(find.get(), 0),
             std::string(static_cast<const char*>(sqlite3_column_blob(find.get(), 1)),
                         static_cast<std::size_t>(sqlite3_column_bytes(find.get(), 1)))});
        sqlite3_reset(find.get());
    }
    return targets;
}

// The statements of one edit.
class EditByHand {
  public:
    explicit EditByHand(const bench::Database& database)
        : _database(database),
          _begin(bench::Prepare(database, "BEGIN IMMEDIATE")),
          _revision(bench::Prepare(database,
                                   "UPDATE revision SET attributes = ?2, modified_time = ?3,"
                                   " modified_user = ?4 WHERE id = ?1")),
          _head(bench::Prepare(database,
                               "INSERT INTO head_attribute(entity, name, working, value)"
                               " VALUES (?1, 'description', 1, ?2)"
                               " ON CONFLICT(entity, name, working)"
                               " DO UPDATE SET value = excluded.value")),
          _journal(bench::Prepare(database,
                                  "INSERT INTO journal(time, op, entity, revision, parent, child,"
                                  " session, process, user, workspace)"
                                  " VALUES (?1, 10, ?2, 0, 0, 0, ?3, 0, 'anna', 'ws')")),
          _commit(bench::Prepare(database, "COMMIT")) {}

    void operator()(const Target& target, std::string_view value, std::int64_t time) {
        bench::Run(_database, _begin);
        sqlite3_bind_int64(_revision.get(), 1, target.entity << 24);
        bench::BindBlob(_revision, 2, target.attributes);
        sqlite3_bind_int64(_revision.get(), 3, time);
        bench::BindText(_revision, 4, "anna");
        bench::Run(_database, _revision);
        sqlite3_bind_int64(_head.get(), 1, target.entity);
        bench::BindText(_head, 2, value);
        bench::Run(_database, _head);
        sqlite3_bind_int64(_journal.get(), 1, time);
        sqlite3_bind_int64(_journal.get(), 2, target.entity);
        bench::BindText(_journal, 3, "01ARZ3NDEKTSV4RRFFQ69G5FAV");
        bench::Run(_database, _journal);
        bench::Run(_database, _commit);
    }

  private:
    const bench::Database& _database;
    bench::Statement _begin;
    bench::Statement _revision;
    bench::Statement _head;
    bench::Statement _journal;
    bench::Statement _commit;
};

void Floor(benchmark::State& state) {
    SampleLibrary& library = SampleLibrary::OfSize(state.range(0));
    const bench::Database database = bench::OpenByHand(library.CopyForFloor());
    const std::vector<Target> targets = TargetsIn(database, library.Uids());
    EditByHand edit(database);
    std::int64_t number = 0;
    for (auto _ : state) {
        const kxVariant value = bench::DescriptionOf(++number);
        edit(targets[static_cast<std::size_t>(number) % EDITED],
             value.GetString(),
             1700000000000000 + number);
    }
}
BENCHMARK(Floor)
    ->Name("attribute edit/floor")
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMicrosecond);

void Ours(benchmark::State& state) {
    SampleLibrary& library = SampleLibrary::OfSize(state.range(0));
    std::vector<kxct::Item*> items;
    for (std::size_t i = 0; i < EDITED; ++i) {
        items.push_back(library.Controller().GetItem(library.Uids()[i], false));
    }
    const kxString attribute("description");
    // Beyond what the library was filled with, and other values in each round.
    static std::int64_t number = 1000000;
    for (auto _ : state) {
        kxVariant value = bench::DescriptionOf(++number);
        if (!items[static_cast<std::size_t>(number) % EDITED]->SetAttributeValue(attribute,
                                                                                 value)) {
            state.SkipWithError("not set");
        }
    }
    library.Controller().ClearCache(kxct::MANAGER_DEFAULT);
}
BENCHMARK(Ours)
    ->Name("attribute edit/ours")
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMicrosecond);

}  // namespace
