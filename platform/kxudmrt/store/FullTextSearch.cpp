// How the full text index is searched.
//
// An expression of the index is met by one document. Most questions are answered by that alone; for
// two things entities are looked at one by one: what is not indexed yet, and, where all words are
// asked for, those that have some in their attributes and some in their files.
#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <unordered_set>
#include <utility>

#include "store/FullText.h"
#include "store/RowReader.h"
#include "store/TextDocuments.h"
#include "store/TextStatements.h"

namespace kxudm::store {
namespace {

using text::Places;
using text::Question;
using Ids = std::vector<EntityId>;

// Beyond, whole lists are cheaper than looking at each entity.
constexpr std::size_t kFew = 2000;

std::string JsonOf(const Ids& ids) {
    std::string json = "[";
    for (const EntityId id : ids) {
        json += (json.size() > 1 ? "," : "") + std::to_string(id);
    }
    return json + "]";
}

void SortAsSet(Ids& ids) {
    std::sort(ids.begin(), ids.end());
    ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
}

class Searching {
  public:
    Searching(LibraryStore& store,
              const TextReader& reader,
              const Question& question,
              const Viewer& viewer)
        : _connection(store.Connection()), _reader(reader), _question(question), _viewer(viewer) {}

    // Entities that no single document of the index yields.
    Ids Others(bool isCurrent) {
        Ids found;
        if (!isCurrent) {
            for (const EntityId id : Pending()) {
                if (IsMet(id)) {
                    found.push_back(id);
                }
            }
        }
        if (_question.HowMany() == text::Mode::All && _question.Count() > 1 && AnyInContents()) {
            const Ids spread = Spread();
            found.insert(found.end(), spread.begin(), spread.end());
        }
        SortAsSet(found);
        return found;
    }

  private:
    // Words that an entity has been found to have.
    struct Words {
        std::vector<bool> found;

        [[nodiscard]] bool All() const {
            return std::find(found.begin(), found.end(), false) == found.end();
        }
        [[nodiscard]] bool Any() const {
            return std::find(found.begin(), found.end(), true) != found.end();
        }
    };

    Ids ReadIds(sql::Statement& statement) {
        Ids ids;
        while (statement.Step()) {
            ids.push_back(statement.Int64(0));
        }
        return ids;
    }

    Ids Pending() {
        sql::Statement find(_connection, statements::SEEN_TEXT_PENDING);
        find.BindAll(_viewer.user, _viewer.workspace);
        return ReadIds(find);
    }

    Ids FoundBy(const std::string& match) {
        sql::Statement find(_connection, statements::TEXT_FOUND);
        find.BindAll(_viewer.user, _viewer.workspace, match);
        return ReadIds(find);
    }

    bool AnyInContents() {
        const std::string match = _question.MatchAny();
        sql::Statement find(_connection, statements::ANY_CONTENT_HAS);
        find.BindAll(match);
        return find.Step();
    }

    // --- One entity ---

    bool IsDone(const Words& words) const {
        return _question.HowMany() == text::Mode::All ? words.All() : words.Any();
    }

    bool IsMet(EntityId id) {
        Words words{std::vector<bool>(_question.Count(), false)};
        LookAtAttributes(id, words);
        if (!IsDone(words)) {
            LookAtContents(id, words);
        }
        return IsDone(words);
    }

    void Look(const Places& places, Words& words) const {
        for (std::size_t i = 0; i < words.found.size(); ++i) {
            words.found[i] = words.found[i] || _question.IsIn(i, places);
        }
    }

    void LookAtAttributes(EntityId id, Words& words) {
        sql::Statement held(_connection, statements::TEXT_HELD);
        held.BindAll(_viewer.user, _viewer.workspace, id);
        const bool working = held.Step() && held.Int(0) != 0;
        sql::Statement pending(_connection, statements::IS_TEXT_PENDING);
        pending.BindAll(id);
        if (pending.Step()) {
            const TextDocuments documents = DocumentsOf(_connection, id);
            Look(Places(working ? documents.working : documents.published), words);
            return;
        }
        sql::Statement find(_connection, statements::TEXT_OF);
        find.BindAll(TextRow(id, working));
        if (find.Step()) {
            Look(Places(find.Text(0)), words);
        }
    }

    void LookAtContents(EntityId id, Words& words) {
        sql::Statement find(_connection, statements::SEEN_CONTENTS);
        find.BindAll(_viewer.user, _viewer.workspace, id);
        while (find.Step() && !IsDone(words)) {
            if (find.IsNull(0)) {
                Look(Places(TextOf(find.String(2), find.String(1))), words);
            } else {
                LookAtContent(find.Int64(0), words);
            }
        }
    }

    void LookAtContent(std::int64_t document, Words& words) {
        for (std::size_t i = 0; i < words.found.size(); ++i) {
            if (!words.found[i]) {
                const std::string match = _question.Match(i);
                sql::Statement has(_connection, statements::CONTENT_HAS);
                has.BindAll(match, document);
                words.found[i] = has.Step();
            }
        }
    }

    const std::string& TextOf(const std::string& vault, const std::string& hash) {
        const auto [at, isNew] = _texts.try_emplace(hash);
        if (isNew) {
            at->second = _reader(vault, hash).value_or(std::string());
        }
        return at->second;
    }

    // --- All words, in several documents ---

    Ids Spread() {
        Ids candidates;
        if (!Rarest(candidates)) {
            return InAllLists();
        }
        Ids spread;
        const Ids found = FoundBy(_question.Match());
        for (const EntityId id : candidates) {
            if (!std::binary_search(found.begin(), found.end(), id) && IsMet(id)) {
                spread.push_back(id);
            }
        }
        return spread;
    }

    Ids InAllLists() {
        Ids all = FoundBy(_question.Match(0));
        for (std::size_t i = 1; i < _question.Count() && !all.empty(); ++i) {
            const Ids next = FoundBy(_question.Match(i));
            Ids both;
            std::set_intersection(
                all.begin(), all.end(), next.begin(), next.end(), std::back_inserter(both));
            all = std::move(both);
        }
        return all;
    }

    // Entities with the word that the fewest have, whoever sees them; false if all words have many.
    bool Rarest(Ids& entities) {
        for (std::size_t most = 100; most <= kFew; most *= 20) {
            for (std::size_t i = 0; i < _question.Count(); ++i) {
                if (EntitiesWith(_question.Match(i), most, entities)) {
                    return true;
                }
            }
        }
        return false;
    }

    bool EntitiesWith(const std::string& match, std::size_t most, Ids& entities) {
        const auto documents = [&](const sql::NamedStatement& named) {
            sql::Statement find(_connection, named);
            find.BindAll(match, most);
            return ReadIds(find);
        };
        entities = documents(statements::TEXTS_WITH);
        if (entities.size() == most) {
            return false;
        }
        for (EntityId& row : entities) {
            row >>= 1;
        }
        const Ids contents = documents(statements::CONTENT_TEXTS_WITH);
        for (std::size_t i = 0; i < contents.size() && entities.size() < most; ++i) {
            sql::Statement find(_connection, statements::ENTITIES_OF_TEXT);
            find.BindAll(contents[i]);
            const Ids more = ReadIds(find);
            entities.insert(entities.end(), more.begin(), more.end());
        }
        if (contents.size() == most || entities.size() >= most) {
            return false;
        }
        SortAsSet(entities);
        return true;
    }

    sql::Connection& _connection;
    const TextReader& _reader;
    const Question& _question;
    const Viewer& _viewer;
    std::map<std::string, std::string> _texts;  // of contents that are not indexed yet
};

// The rows of two statements, each in the order of its entities: each entity once, in this order.
class Merged {
  public:
    Merged(sql::Statement& one, sql::Statement& other) : _streams{Stream{one}, Stream{other}} {}

    // Stands at the next row; none at the end.
    sql::Statement* Next() {
        Stream* next = nullptr;
        for (Stream& stream : _streams) {
            if (stream.id == _last) {
                stream.Step();
            }
            if (stream.id != NO_MORE && (next == nullptr || stream.id < next->id)) {
                next = &stream;
            }
        }
        _last = next != nullptr ? next->id : NO_MORE;
        return next != nullptr ? &next->statement : nullptr;
    }

  private:
    static constexpr EntityId BEFORE_ALL = 0;
    static constexpr EntityId NO_MORE = -1;

    struct Stream {
        sql::Statement& statement;
        EntityId id = BEFORE_ALL;

        void Step() { id = statement.Step() ? statement.Int64(0) : NO_MORE; }
    };

    std::array<Stream, 2> _streams;
    EntityId _last = BEFORE_ALL;
};

}  // namespace

std::int64_t FullText::VisitHits(const Question& question,
                                 const Condition& allowed,
                                 const Viewer& viewer,
                                 bool rootsOnly,
                                 std::int64_t first,
                                 std::int64_t last,
                                 const std::function<void(EntityRow&)>& visit) {
    const std::string match = question.Match();
    const std::string others =
        JsonOf(Searching(_store, _reader, question, viewer).Others(IsCurrent()));
    const std::string further =
        AndCondition(allowed) + (rootsOnly ? statements::QUERY_ROOTS_ONLY : "");
    sql::Statement byAttributes(
        _store.Connection(),
        statements::ATTRIBUTE_HITS_FROM + further + statements::ATTRIBUTE_HITS_ORDER);
    byAttributes.BindAll(viewer.user, viewer.workspace, match);
    BindCondition(byAttributes, allowed, 4);
    sql::Statement byOthers(
        _store.Connection(),
        std::string(statements::QUERY_FROM) + statements::OTHER_HITS + further + " ORDER BY e.id");
    byOthers.BindAll(viewer.user, viewer.workspace, match, others);
    BindCondition(byOthers, allowed, 5);
    Merged merged(byAttributes, byOthers);
    const bool all = first == 0 && last == 0;
    std::int64_t hits = 0;
    EntityRow row;
    for (; sql::Statement* const hit = merged.Next(); ++hits) {
        if (all || (hits >= first && hits < last)) {
            ReadEntityRow(*hit, row);
            visit(row);
        }
    }
    return hits;
}

}  // namespace kxudm::store
