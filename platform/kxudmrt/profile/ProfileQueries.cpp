#include "catalogue/Value.h"
#include "profile/Profile.h"
#include "profile/Queries.h"
#include "query/Parser.h"
#include "query/SqlCompiler.h"

namespace kxudm::profile {

namespace {

constexpr int ATTRIBUTE_QUERY = -1;
constexpr int LAST_FULL_TEXT_MODE = 2;

void RequireAttributeQuery(const kxString& query, int mode, bool fullText) {
    if (fullText != (mode != ATTRIBUTE_QUERY) || mode < ATTRIBUTE_QUERY ||
        mode > LAST_FULL_TEXT_MODE) {
        throw UDMException("The query mode " + std::to_string(mode) +
                           (fullText ? " is none of a full text query; use 0, 1 or 2"
                                     : " is none of an attribute query; use -1"));
    }
    if (fullText) {
        throw UDMNotSupportedException("The full text query \"" + catalogue::Printable(query) +
                                       "\" can't be run: this version of the library offers "
                                       "attribute queries only; use the mode -1");
    }
}

void RequireRange(long from, long to) {
    if (from < 0 || to < from) {
        throw UDMException("Hits " + std::to_string(from) + " up to " + std::to_string(to) +
                           " are no range; use 0 or more for the first one and not less for the "
                           "one behind the last");
    }
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
    RequireAttributeQuery(query, mode, fullText);
    RequireRange(from, to);
    const UDMQuerySettings& chosen = settings.GetSettings();
    const query::Tree tree = query::Parse(query);
    const store::Condition condition = query::Compile(
        tree,
        *_session->Catalogue(),
        {.letters = chosen.IgnoresCase() ? query::Letters::Folded : query::Letters::Exact,
         .withExcluded = chosen.SearchesInExcluded()});
    const std::int64_t count = _session->Store().VisitHits(
        condition,
        _session->Viewer(),
        rootsOnly || tree.IsEmpty(),
        from,
        to,
        [&](store::EntityRow& row) { hits.emplace_back(_session->StateOf(std::move(row))); });
    return static_cast<std::size_t>(count);
}

}  // namespace kxudm::profile
