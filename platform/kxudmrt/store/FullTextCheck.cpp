// Compares the full text index with what should stand in it. Every term of the index is read, in
// the order of terms; each document gets a sum that doesn't depend on the order.
#include <functional>
#include <unordered_map>

#include "store/FullText.h"
#include "store/TextDocuments.h"
#include "store/TextStatements.h"
#include "text/Terms.h"

namespace kxudm::store {
namespace {

using Kind = UDMFindingKind;
using Sums = FullText::Sums;

// Tables of this connection alone.
constexpr const char* VOCABULARIES =
    "CREATE VIRTUAL TABLE IF NOT EXISTS temp.text_attribute_terms"
    " USING fts5vocab(main, text_attribute, instance);"
    "CREATE VIRTUAL TABLE IF NOT EXISTS temp.text_content_terms"
    " USING fts5vocab(main, text_content, instance);";
constexpr sql::NamedStatement ATTRIBUTE_TERMS{"terms of attributes",
                                              "SELECT doc, term, offset FROM text_attribute_terms"};
constexpr sql::NamedStatement CONTENT_TERMS{"terms of contents",
                                            "SELECT doc, term, offset FROM text_content_terms"};

std::uint64_t SumOfTerm(std::string_view term, std::uint64_t place) {
    std::uint64_t sum = std::hash<std::string_view>()(term) + place * 0x9E3779B97F4A7C15;
    sum ^= sum >> 31;
    return sum * 0xBF58476D1CE4E5B9;
}

Sums ReadSums(sql::Connection& connection, const sql::NamedStatement& terms) {
    Sums sums;
    sql::Statement find(connection, terms);
    while (find.Step()) {
        sums[find.Int64(0)] += SumOfTerm(find.Text(1), static_cast<std::uint64_t>(find.Int64(2)));
    }
    return sums;
}

// Takes what it finds out of the sums.
bool IsAsIn(Sums& sums, std::int64_t document, const std::string& prepared) {
    const auto found = sums.find(document);
    const std::uint64_t sum = found == sums.end() ? 0 : found->second;
    if (found != sums.end()) {
        sums.erase(found);
    }
    return sum == FullText::SumOf(prepared);
}

}  // namespace

std::uint64_t FullText::SumOf(std::string_view prepared) {
    std::uint64_t sum = 0;
    std::uint64_t place = 0;
    const text::Places places(prepared);
    for (const text::Places::Place& each : places.All()) {
        sum += SumOfTerm(each.written, place);
        if (each.written.data() != each.folded.data()) {
            sum += SumOfTerm(text::kFolded + std::string(each.folded), place);
        }
        ++place;
    }
    return sum;
}

void FullText::CheckAttributes(const Report& report) {
    sql::Connection& connection = _store.Connection();
    connection.Execute(VOCABULARIES);
    Sums sums = ReadSums(connection, ATTRIBUTE_TERMS);
    sql::Statement find(connection, statements::TEXT_ENTITIES);
    while (find.Step()) {
        const EntityId id = find.Int64(0);
        sql::Statement pending(connection, statements::IS_TEXT_PENDING);
        pending.BindAll(id);
        if (pending.Step()) {
            sums.erase(TextRow(id, false));
            sums.erase(TextRow(id, true));
            continue;
        }
        const TextDocuments expected = DocumentsOf(connection, id);
        const bool published = IsAsIn(sums, TextRow(id, false), expected.published);
        const bool working = IsAsIn(sums, TextRow(id, true), expected.working);
        if (!published || !working) {
            report(Kind::FullText,
                   find.String(1),
                   std::string("full text search finds it by other words than its ") +
                       (published ? "working" : "published") + " revision has" + REBUILD);
        }
    }
    for (const auto& [row, sum] : sums) {
        sql::Statement pending(connection, statements::IS_TEXT_PENDING);
        pending.BindAll(row >> 1);
        if (!pending.Step()) {
            report(Kind::FullText,
                   "#" + std::to_string(row >> 1),
                   std::string("the full text index has words of an entity that is not there") +
                       REBUILD);
        }
    }
}

FullText::Sums FullText::SumsOfContents() {
    _store.Connection().Execute(VOCABULARIES);
    return ReadSums(_store.Connection(), CONTENT_TERMS);
}

std::int64_t FullText::CountPending() {
    sql::Statement count(_store.Connection(), statements::COUNT_TEXT_PENDING);
    return count.Step() ? count.Int64(0) : 0;
}

}  // namespace kxudm::store
