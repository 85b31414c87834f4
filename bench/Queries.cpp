// Queries of attributes with 100 hits among `size` contents: UDMDBCtrl::ExecQuery, from the text of
// the query to handles with their attributes; and a listing of `size` children that an expression
// thins out to 100: UDMDBCtrl::GetChildren; and full text search: UDMDBCtrl::ExecQueryFullText.
//
// Floor: the best statement for it, written by hand, prepared once and with values bound: the index
// finds the entities; entity and newest revision are joined to them; each row is copied into one of
// its own, the packed attributes as they are.
#include <benchmark/benchmark.h>
#include <kxudm/UDMBulkEdit.h>
#include <kxudm/UDMQuerySettings.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include "Floor.h"
#include "SampleLibrary.h"

namespace {

using bench::SampleLibrary;

constexpr std::size_t HITS = 100;
constexpr const char* RARE = "Bonnet hinge, batch 7";
// What 100 of the descriptions of any 1,000 contents or more begin with.
constexpr const char* CHILDREN_FROM = "load case 0000001";
constexpr const char* CHILDREN_TO = "load case 0000002";

// A library in which 100 contents, evenly among the others, are described otherwise.
SampleLibrary& Library(std::int64_t size) {
    static std::vector<std::int64_t> prepared;
    SampleLibrary& library = SampleLibrary::OfSize(size);
    if (std::find(prepared.begin(), prepared.end(), size) == prepared.end()) {
        kxudm::UDMBulkEdit edit(library.Session().GetProfile());
        for (std::size_t i = 0; i < HITS; ++i) {
            const kxString& uid = library.Uids()[i * library.Uids().size() / HITS];
            library.Session().SetMetaData(
                library.Session().GetUDMItemHandle(uid), "description", kxVariant(RARE));
        }
        edit.Commit();
        prepared.push_back(size);
    }
    return library;
}

// The session's user sees a working revision of their own and else the published one. An attribute
// in which a working revision differs from the published one stands in the index for both.
#define MINE "coalesce(e.lock_user = 'anna' AND e.lock_workspace = 'ws', 0)"
constexpr const char* FOUND =
    "SELECT " BENCH_ROW_COLUMNS
    " FROM head_attribute h CROSS JOIN entity e ON e.id = h.entity AND e.deleted = 0"
    " CROSS JOIN revision r ON r.id ="
    " (e.id << 24) + CASE WHEN " MINE
    " THEN e.working ELSE e.published END"
    " WHERE h.name = 'description' AND (h.working = " MINE " OR (" MINE
    " AND NOT EXISTS (SELECT 1 FROM head_attribute w"
    " WHERE w.entity = e.id AND w.name = h.name AND w.working = 1)))";

using Handles = kxStlVector<kxudm::UDMItemHandle>;

// Rounds of a prepared statement, each row copied into one of its own.
void MeasureRows(benchmark::State& state,
                 const bench::Statement& find,
                 const std::vector<std::string>& values) {
    for (auto _ : state) {
        std::vector<bench::Row> rows;
        for (std::size_t i = 0; i < values.size(); ++i) {
            bench::BindText(find, static_cast<int>(i + 1), values[i]);
        }
        while (sqlite3_step(find.get()) == SQLITE_ROW) {
            bench::CopyRow(find, rows.emplace_back());
        }
        sqlite3_reset(find.get());
        state.PauseTiming();
        if (rows.size() != HITS) {
            state.SkipWithError("wrong number of rows");
        }
        rows = {};
        state.ResumeTiming();
    }
}

// Rounds of what gives handles. Letting go of these is not counted.
template <typename Find>
void MeasureHandles(benchmark::State& state, const Find& find) {
    for (auto _ : state) {
        Handles handles;
        find(handles);
        state.PauseTiming();
        if (handles.size() != HITS) {
            state.SkipWithError("wrong number of handles");
        }
        handles = {};
        state.ResumeTiming();
    }
}

void FloorOf(benchmark::State& state,
             const std::string& condition,
             const std::vector<std::string>& values) {
    SampleLibrary& library = Library(state.range(0));
    const bench::Database database = bench::OpenByHand(library.File());
    const std::string text = FOUND + condition + " ORDER BY e.id";
    const bench::Statement find = bench::Prepare(database, text.c_str());
    MeasureRows(state, find, values);
}

void OursOf(benchmark::State& state, const kxString& query, bool ignoreCase) {
    SampleLibrary& library = Library(state.range(0));
    kxudm::UDMQuerySettingHandle settings;
    settings.GetSettings().SetIgnoreCase(ignoreCase);
    MeasureHandles(state, [&](Handles& hits) {
        library.Session().ExecQuery(query, settings, hits, 0, 0, false);
    });
}

void FloorValue(benchmark::State& state) {
    FloorOf(state, " AND h.value = ?1", {RARE});
}
BENCHMARK(FloorValue)->Name("query/floor")->Arg(40000)->Arg(400000)->Unit(benchmark::kMicrosecond);

void OursValue(benchmark::State& state) {
    OursOf(state, std::string("attrib.description == \"") + RARE + "\"", false);
}
BENCHMARK(OursValue)->Name("query/ours")->Arg(40000)->Arg(400000)->Unit(benchmark::kMicrosecond);

// A text whose folded form is the text itself has no folded form of its own in the index; this one
// has.
void FloorPrefix(benchmark::State& state) {
    FloorOf(state,
            " AND h.folded >= ?1 AND h.folded < ?2 AND e.definition = 'UDMSimulation'",
            {"bonnet hinge", "bonnet hingf"});
}
BENCHMARK(FloorPrefix)
    ->Name("query, prefix and definition/floor")
    ->Arg(40000)
    ->Arg(400000)
    ->Unit(benchmark::kMicrosecond);

void OursPrefix(benchmark::State& state) {
    OursOf(state, "type == UDMSimulation && attrib.description like \"BONNET hinge\"", true);
}
BENCHMARK(OursPrefix)
    ->Name("query, prefix and definition/ours")
    ->Arg(40000)
    ->Arg(400000)
    ->Unit(benchmark::kMicrosecond);

void FloorChildren(benchmark::State& state) {
    SampleLibrary& library = SampleLibrary::OfSize(10000);
    const std::string uid = library.ProjectWith(state.range(0));
    const bench::Database database = bench::OpenByHand(library.File());
    const bench::Statement list =
        bench::Prepare(database,
                       "SELECT " BENCH_ROW_COLUMNS
                       " FROM entity p CROSS JOIN link l ON l.first = p.id"
                       " CROSS JOIN head_attribute h ON h.entity = l.second"
                       " AND h.name = 'description'"
                       " CROSS JOIN entity e ON e.id = l.second AND e.deleted = 0"
                       " CROSS JOIN revision r"
                       " ON r.id = (e.id << 24) + coalesce(l.exact, CASE WHEN " MINE
                       " THEN e.working ELSE e.published END)"
                       " WHERE p.uid = ?1 AND l.kind = 1 AND l.to_rev = 2147483647"
                       " AND l.ending IS NULL AND l.name = 'simulations'"
                       " AND +h.value >= ?2 AND +h.value < ?3 AND (h.working = " MINE " OR (" MINE
                       " AND NOT EXISTS (SELECT 1 FROM head_attribute w"
                       " WHERE w.entity = e.id AND w.name = h.name AND w.working = 1)))"
                       " ORDER BY l.position");
    MeasureRows(state, list, {uid.substr(0, uid.find(':')), CHILDREN_FROM, CHILDREN_TO});
}
BENCHMARK(FloorChildren)
    ->Name("children that meet a query/floor")
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMicrosecond);

void OursChildren(benchmark::State& state) {
    SampleLibrary& library = SampleLibrary::OfSize(10000);
    const auto project = library.Session().GetUDMItemHandle(library.ProjectWith(state.range(0)));
    const kxString expression = std::string("attrib.description like \"") + CHILDREN_FROM + "\"";
    MeasureHandles(state, [&](Handles& children) {
        library.Session().GetChildren(children, project, "simulations", expression);
    });
}
BENCHMARK(OursChildren)
    ->Name("children that meet a query/ours")
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMicrosecond);

// Words of the same 100 contents. Floor: an index of its own over the same texts, which bare FTS5
// folds by itself, and the rows of what it finds.
void FloorWords(benchmark::State& state, const char* match) {
    SampleLibrary& library = Library(state.range(0));
    static std::map<std::int64_t, std::filesystem::path> copies;
    std::filesystem::path& copy = copies[state.range(0)];
    const bool isNew = copy.empty();
    if (isNew) {
        copy = library.CopyForFloor();
    }
    const bench::Database database = bench::OpenByHand(copy);
    if (isNew) {
        bench::Execute(database,
                       "CREATE VIRTUAL TABLE bare USING fts5(words, content='',"
                       " tokenize='unicode61 remove_diacritics 2');"
                       "INSERT INTO bare(rowid, words) SELECT entity, group_concat(value, ' ')"
                       " FROM head_attribute WHERE typeof(value) = 'text' GROUP BY entity");
    }
    const bench::Statement find =
        bench::Prepare(database,
                       "SELECT " BENCH_ROW_COLUMNS
                       " FROM bare b CROSS JOIN entity e ON e.id = b.rowid AND e.deleted = 0"
                       " CROSS JOIN revision r ON r.id ="
                       " (e.id << 24) + CASE WHEN " MINE
                       " THEN e.working ELSE e.published END WHERE bare MATCH ?1 ORDER BY b.rowid");
    MeasureRows(state, find, {match});
}

void OursWords(benchmark::State& state, const char* text, int mode) {
    SampleLibrary& library = Library(state.range(0));
    kxudm::UDMQuerySettingHandle settings;
    const auto search = [&](Handles& hits) {
        library.Session().ExecQueryFullText(text, mode, settings, hits, 0, 0, false);
    };
    {
        // What was created is indexed now.
        Handles hits;
        search(hits);
    }
    MeasureHandles(state, search);
}

void Libraries(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(40000)->Arg(400000)->Unit(benchmark::kMicrosecond);
}
BENCHMARK_CAPTURE(FloorWords, word, "bonnet")->Name("full text, a word/floor")->Apply(Libraries);
BENCHMARK_CAPTURE(OursWords, word, "bonnet", 0)->Name("full text, a word/ours")->Apply(Libraries);
BENCHMARK_CAPTURE(FloorWords, words, "implicit AND hinge")
    ->Name("full text, all words/floor")
    ->Apply(Libraries);
BENCHMARK_CAPTURE(OursWords, words, "implicit hinge", 0)
    ->Name("full text, all words/ours")
    ->Apply(Libraries);
BENCHMARK_CAPTURE(FloorWords, phrase, "\"bonnet hin\" *")
    ->Name("full text, a phrase/floor")
    ->Apply(Libraries);
BENCHMARK_CAPTURE(OursWords, phrase, "bonnet hin*", 2)
    ->Name("full text, a phrase/ours")
    ->Apply(Libraries);

}  // namespace
