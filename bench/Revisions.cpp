// The life of revisions, in a library of `size` contents, with an item manager connected.
//
// "check-out and publish": Item::Checkout and Item::Persist of one of 200 published contents.
// Floor: the rows of both by hand, one transaction each, the second one flushed to the disk: the
// working revision, the lock, the published revision, the entity, and two entries of the journal
// for each step. What is copied is at hand, nothing is read.
//
// "check-out of a parent": Item::Checkout of a project that owns `size` contents; taking it back is
// not measured. Floor: the rows of the check-out by hand. It must not grow with the size.
//
// "history": UDMDBCtrl::GetHistory of a content with `size` revisions, with the numbers of all of
// them. Floor: the listing of their rows.
#include <benchmark/benchmark.h>
#include <kxudm/IUDMProfile.h>
#include <kxudm/UDMBulkEdit.h>
#include <kxudm/UDMHistoryNode.h>

#include "Floor.h"
#include "SampleLibrary.h"

namespace {

using bench::SampleLibrary;

constexpr std::size_t PUBLISHED = 200;

std::vector<kxct::Item*> PublishedItems(SampleLibrary& library) {
    std::vector<kxct::Item*> items;
    for (std::size_t i = 0; i < PUBLISHED; ++i) {
        kxct::Item* item = library.Controller().GetItem(library.Uids()[i], false);
        if (item == nullptr) {
            // Published by an earlier benchmark of this process.
            const kxString& uid = library.Uids()[i];
            item = library.Controller().GetItem(uid.substr(0, uid.find(':')), true);
        } else {
            item->Persist("first", false);
        }
        items.push_back(item);
    }
    return items;
}

struct Target {
    std::int64_t entity = 0;
    std::int64_t published = 0;
    std::string name;
    std::string attributes;
};

// The published contents of a library.
std::vector<Target> TargetsIn(const bench::Database& database, std::size_t limit) {
    const bench::Statement find =
        bench::Prepare(database,
                       "SELECT e.id, e.published, r.display_name, r.attributes FROM entity e"
                       " JOIN revision r ON r.id = (e.id << 24) + e.published"
                       " WHERE e.working IS NULL AND e.lock_user IS NULL AND r.state = 1 LIMIT ?1");
    sqlite3_bind_int64(find.get(), 1, static_cast<std::int64_t>(limit));
    std::vector<Target> targets;
    while (sqlite3_step(find.get()) == SQLITE_ROW) {
        targets.push_back(
            {sqlite3_column_int64(find.get(), 0),
             sqlite3_column_int64(find.get(), 1),
             reinterpret_cast<const char*>(sqlite3_column_text(find.get(), 2)),
             std::string(static_cast<const char*>(sqlite3_column_blob(find.get(), 3)),
                         static_cast<std::size_t>(sqlite3_column_bytes(find.get(), 3)))});
    }
    return targets;
}

class StepsByHand {
  public:
    explicit StepsByHand(const bench::Database& database)
        : _database(database),
          _begin(bench::Prepare(database, "BEGIN IMMEDIATE")),
          _commit(bench::Prepare(database, "COMMIT")),
          _working(bench::Prepare(database,
                                  "INSERT INTO revision(id, state, display_name, created_time,"
                                  " created_user, modified_time, modified_user, workspace, comment,"
                                  " attributes) VALUES (?1, 0, ?2, ?3, 'anna', ?3, 'anna', 'ws',"
                                  " 'next', ?4)")),
          _lock(bench::Prepare(database,
                               "UPDATE entity SET working = ?2, lock_user = 'anna',"
                               " lock_workspace = 'ws', lock_time = ?3 WHERE id = ?1")),
          _publish(bench::Prepare(database,
                                  "UPDATE revision SET state = 1, published_time = ?2,"
                                  " published_user = 'anna', comment = 'done' WHERE id = ?1")),
          _release(bench::Prepare(database,
                                  "UPDATE entity SET published = ?2, working = NULL,"
                                  " lock_user = NULL, lock_workspace = NULL, lock_time = NULL"
                                  " WHERE id = ?1")),
          _undo(bench::Prepare(database, "DELETE FROM revision WHERE id = ?1")),
          _unlock(bench::Prepare(database,
                                 "UPDATE entity SET working = NULL, lock_user = NULL,"
                                 " lock_workspace = NULL, lock_time = NULL WHERE id = ?1")),
          _journal(bench::Prepare(database,
                                  "INSERT INTO journal(time, op, entity, revision, parent, child,"
                                  " session, process, user, workspace) VALUES (?1, 5, ?2, ?3, 0, 0,"
                                  " '01ARZ3NDEKTSV4RRFFQ69G5FAV', 0, 'anna', 'ws')")) {}

    void CheckOut(const Target& target, std::int64_t time) {
        bench::Run(_database, _begin);
        sqlite3_bind_int64(_working.get(), 1, (target.entity << 24) + target.published + 1);
        bench::BindText(_working, 2, target.name);
        sqlite3_bind_int64(_working.get(), 3, time);
        bench::BindBlob(_working, 4, target.attributes);
        bench::Run(_database, _working);
        sqlite3_bind_int64(_lock.get(), 1, target.entity);
        sqlite3_bind_int64(_lock.get(), 2, target.published + 1);
        sqlite3_bind_int64(_lock.get(), 3, time);
        bench::Run(_database, _lock);
        Journal(target, time);
        bench::Run(_database, _commit);
    }

    void Publish(Target& target, std::int64_t time) {
        bench::Execute(_database, "PRAGMA synchronous=FULL");
        bench::Run(_database, _begin);
        ++target.published;
        sqlite3_bind_int64(_publish.get(), 1, (target.entity << 24) + target.published);
        sqlite3_bind_int64(_publish.get(), 2, time);
        bench::Run(_database, _publish);
        sqlite3_bind_int64(_release.get(), 1, target.entity);
        sqlite3_bind_int64(_release.get(), 2, target.published);
        bench::Run(_database, _release);
        Journal(target, time);
        bench::Run(_database, _commit);
        bench::Execute(_database, "PRAGMA synchronous=NORMAL");
    }

    void Undo(const Target& target) {
        bench::Run(_database, _begin);
        sqlite3_bind_int64(_undo.get(), 1, (target.entity << 24) + target.published + 1);
        bench::Run(_database, _undo);
        sqlite3_bind_int64(_unlock.get(), 1, target.entity);
        bench::Run(_database, _unlock);
        bench::Run(_database, _commit);
    }

  private:
    void Journal(const Target& target, std::int64_t time) {
        for (int i = 0; i < 2; ++i) {
            sqlite3_bind_int64(_journal.get(), 1, time);
            sqlite3_bind_int64(_journal.get(), 2, target.entity);
            sqlite3_bind_int64(_journal.get(), 3, target.published);
            bench::Run(_database, _journal);
        }
    }

    const bench::Database& _database;
    bench::Statement _begin;
    bench::Statement _commit;
    bench::Statement _working;
    bench::Statement _lock;
    bench::Statement _publish;
    bench::Statement _release;
    bench::Statement _undo;
    bench::Statement _unlock;
    bench::Statement _journal;
};

void LifeFloor(benchmark::State& state) {
    SampleLibrary& library = SampleLibrary::OfSize(state.range(0));
    PublishedItems(library);
    library.Controller().ClearCache(kxct::MANAGER_DEFAULT);
    const bench::Database database = bench::OpenByHand(library.CopyForFloor());
    std::vector<Target> targets = TargetsIn(database, PUBLISHED);
    StepsByHand steps(database);
    std::size_t number = 0;
    for (auto _ : state) {
        Target& target = targets[++number % targets.size()];
        steps.CheckOut(target, 1700000000000000);
        steps.Publish(target, 1700000000000001);
    }
}

void LifeOurs(benchmark::State& state) {
    SampleLibrary& library = SampleLibrary::OfSize(state.range(0));
    const std::vector<kxct::Item*> items = PublishedItems(library);
    std::size_t number = 0;
    for (auto _ : state) {
        kxct::Item* item = items[++number % items.size()];
        if (!item->Checkout("next") || !item->Persist("done", false)) {
            state.SkipWithError("not published");
        }
    }
    library.Controller().ClearCache(kxct::MANAGER_DEFAULT);
}

kxct::Item* PublishedProject(SampleLibrary& library, std::int64_t children) {
    const kxString uid = library.ProjectWith(children);
    kxct::Item* project = library.Controller().GetItem(uid, false);
    if (project != nullptr) {
        project->Persist("first", false);
        return project;
    }
    return library.Controller().GetItem(uid.substr(0, uid.find(':')), true);
}

void ParentFloor(benchmark::State& state) {
    SampleLibrary& library = SampleLibrary::OfSize(10);
    PublishedProject(library, state.range(0));
    const bench::Database database = bench::OpenByHand(library.CopyForFloor());
    const Target target = TargetsIn(database, 1).at(0);
    StepsByHand steps(database);
    for (auto _ : state) {
        steps.CheckOut(target, 1700000000000000);
        state.PauseTiming();
        steps.Undo(target);
        state.ResumeTiming();
    }
}

void ParentOurs(benchmark::State& state) {
    SampleLibrary& library = SampleLibrary::OfSize(10);
    kxct::Item* project = PublishedProject(library, state.range(0));
    const kxString uid = project->GetUID();
    for (auto _ : state) {
        if (!project->Checkout("next")) {
            state.SkipWithError("not checked out");
        }
        state.PauseTiming();
        project->UndoCheckout();
        project = library.Controller().GetItem(uid, false);
        state.ResumeTiming();
    }
    library.Controller().ClearCache(kxct::MANAGER_DEFAULT);
}

// A content with `revisions` published revisions.
kxudm::UDMItemHandle OldContent(SampleLibrary& library, std::int64_t revisions) {
    kxct::UDMDBCtrl& session = library.Session();
    kxudm::UDMItemHandle content =
        session.CreateEntity(bench::DEFINITION, bench::NameOf(revisions));
    const kxString uid = content.GetUID();
    const kxString base = uid.substr(0, uid.find(':'));
    for (std::int64_t i = 0; i < revisions; ++i) {
        if (i > 0) {
            session.Checkout(content, "next");
        }
        session.Persist(content, "done", false);
        content = session.GetUDMItemHandle(base);
    }
    return content;
}

void HistoryFloor(benchmark::State& state) {
    SampleLibrary& library = SampleLibrary::OfSize(10);
    OldContent(library, state.range(0));
    const bench::Database database = bench::OpenByHand(library.CopyForFloor());
    const bench::Statement list = bench::Prepare(
        database,
        "SELECT r.id & 16777215, e.uid FROM entity e JOIN revision r ON r.id >= e.id << 24"
        " AND r.id < (e.id + 1) << 24 WHERE e.id = (SELECT max(id) FROM entity) AND r.state = 1"
        " ORDER BY r.id");
    for (auto _ : state) {
        std::vector<std::pair<int, std::string>> rows;
        while (sqlite3_step(list.get()) == SQLITE_ROW) {
            rows.emplace_back(sqlite3_column_int(list.get(), 0),
                              reinterpret_cast<const char*>(sqlite3_column_text(list.get(), 1)));
        }
        sqlite3_reset(list.get());
        if (rows.size() != static_cast<std::size_t>(state.range(0))) {
            state.SkipWithError("not all");
        }
        benchmark::DoNotOptimize(rows);
    }
}

void HistoryOurs(benchmark::State& state) {
    SampleLibrary& library = SampleLibrary::OfSize(10);
    const kxudm::UDMItemHandle content = OldContent(library, state.range(0));
    for (auto _ : state) {
        const auto node = library.Session().GetHistory(content);
        const auto versions = node->GetVersionList();
        if (versions.size() != static_cast<std::size_t>(state.range(0))) {
            state.SkipWithError("not all");
        }
        benchmark::DoNotOptimize(versions.back()->GetVersion());
    }
}

void Libraries(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(10000)->Arg(100000)->Iterations(400)->Unit(benchmark::kMicrosecond);
}
void Children(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(10)->Arg(100000)->Iterations(500)->Unit(benchmark::kMicrosecond);
}
void Lengths(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(100)->Arg(1000)->Unit(benchmark::kMicrosecond);
}
BENCHMARK(LifeFloor)->Name("check-out and publish/floor")->Apply(Libraries);
BENCHMARK(LifeOurs)->Name("check-out and publish/ours")->Apply(Libraries);
BENCHMARK(ParentFloor)->Name("check-out of a parent/floor")->Apply(Children);
BENCHMARK(ParentOurs)->Name("check-out of a parent/ours")->Apply(Children);
BENCHMARK(HistoryFloor)->Name("history/floor")->Apply(Lengths);
BENCHMARK(HistoryOurs)->Name("history/ours")->Apply(Lengths);

}  // namespace
