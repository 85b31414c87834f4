#include <optional>

#include "catalogue/Value.h"
#include "profile/Profile.h"
#include "profile/Queries.h"
#include "profile/Texts.h"
#include "query/Parser.h"
#include "query/SqlCompiler.h"
#include "store/RowReader.h"

namespace kxudm::profile {

namespace {

constexpr int ATTRIBUTE_QUERY = -1;
constexpr int LAST_FULL_TEXT_MODE = 2;

void RequireMode(int mode, bool fullText) {
    if (fullText != (mode != ATTRIBUTE_QUERY) || mode < ATTRIBUTE_QUERY ||
        mode > LAST_FULL_TEXT_MODE) {
        throw UDMException("The query mode " + std::to_string(mode) +
                           (fullText ? " is none of a full text query; use 0, 1 or 2"
                                     : " is none of an attribute query; use -1"));
    }
}

void RequireRange(long from, long to) {
    if (from < 0 || to < from) {
        throw UDMException("Hits " + std::to_string(from) + " up to " + std::to_string(to) +
                           " are no range; use 0 or more for the first one and not less for the "
                           "one behind the last");
    }
}

using Visit = std::function<void(store::EntityRow&)>;

// Which of the hits.
struct Wanted {
    long from;
    long to;
    bool rootsOnly;
};

std::int64_t FindEntities(Session& session,
                          const kxString& query,
                          const UDMQuerySettings& settings,
                          const Wanted& wanted,
                          const Visit& visit) {
    const query::Tree tree = query::Parse(query);
    const store::Condition condition = query::Compile(
        tree,
        *session.Catalogue(),
        {.letters = settings.IgnoresCase() ? query::Letters::Folded : query::Letters::Exact,
         .withExcluded = settings.SearchesInExcluded()});
    return session.Store().VisitHits(condition,
                                     session.Viewer(),
                                     wanted.rootsOnly || tree.IsEmpty(),
                                     wanted.from,
                                     wanted.to,
                                     visit);
}

std::int64_t FindTexts(Session& session,
                       const kxString& query,
                       int mode,
                       const UDMQuerySettings& settings,
                       const Wanted& wanted,
                       const Visit& visit) {
    const text::Question question(
        query,
        static_cast<text::Mode>(mode),
        settings.IgnoresCase() ? text::Letters::Folded : text::Letters::Exact);
    if (question.IsEmpty()) {
        return 0;
    }
    const store::TextReader reader = TextsOf(session);
    const store::Condition allowed = query::Compile(
        query::Parse({}), *session.Catalogue(), {.withExcluded = settings.SearchesInExcluded()});
    store::FullText texts(session.Store(), reader);
    const auto visitHits = [&] {
        return texts.VisitHits(
            question, allowed, session.Viewer(), wanted.rootsOnly, wanted.from, wanted.to, visit);
    };
    // Mostly nothing is new, which is seen within the same transaction.
    const std::optional<std::int64_t> count = session.Store().View(
        [&] { return texts.IsCurrent() ? std::optional(visitHits()) : std::nullopt; });
    if (count) {
        return *count;
    }
    BringTextsForward(session);
    return session.Store().View(visitHits);
}

}  // namespace

store::Condition ListingCondition(const Session& session, const kxString& expression) {
    if (expression.empty()) {
        return {};
    }
    return query::Compile(
        query::Parse(expression),
        *session.Catalogue(),
        {.letters = query::Letters::Exact, .use = query::CompileOptions::Use::Listing});
}

std::size_t Profile::RunQuery(kxStlVector<UDMItemHandle>& hits,
                              const kxString& query,
                              int mode,
                              long from,
                              long to,
                              const UDMQuerySettingHandle& settings,
                              bool rootsOnly,
                              bool fullText) {
    _session->Poll("RunQuery");
    RequireMode(mode, fullText);
    RequireRange(from, to);
    const Wanted wanted{from, to, rootsOnly};
    const UDMQuerySettings& chosen = settings.GetSettings();
    const Visit visit = [&](store::EntityRow& row) {
        hits.emplace_back(_session->StateOf(std::move(row)));
    };
    const std::int64_t count = fullText ? FindTexts(*_session, query, mode, chosen, wanted, visit)
                                        : FindEntities(*_session, query, chosen, wanted, visit);
    return static_cast<std::size_t>(count);
}

}  // namespace kxudm::profile
