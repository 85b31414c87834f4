// Evaluates a query in memory, one entity at a time.
//
// Layer: query. This is the plain reading of what a query means: stores without an SQL database use
// it, and the tests hold the SQL that SqlCompiler makes against it.
//
//     const Evaluator evaluator(Parse(text), Letters::Exact);
//     if (evaluator.Matches(entity)) ...
#pragma once

#include <kxutl/kxVariant.h>

#include <string>
#include <vector>

#include "query/Pattern.h"
#include "query/Tree.h"

namespace kxudm::query {

// Whether the letters of texts count as they are, or without case and accents (sql/Fold.h).
// Definitions and UIDs always count as they are.
enum class Letters { Exact, Folded };

// What a query may ask of an entity: its newest revision, as the one who asks sees it.
class EntityView {
  public:
    virtual ~EntityView() = default;
    // The content definition and those above it, in this order; never empty.
    [[nodiscard]] virtual const std::vector<std::string>& Definitions() const = 0;
    [[nodiscard]] virtual std::string BaseUid() const = 0;
    [[nodiscard]] virtual int Revision() const = 0;
    [[nodiscard]] virtual std::string Name() const = 0;
    // EMPTY for an attribute that the entity does not have.
    [[nodiscard]] virtual kxVariant Attribute(const std::string& name) const = 0;
};

class Evaluator {
  public:
    Evaluator(Tree tree, Letters letters);

    // The empty query matches everything: that roots are meant is up to the caller.
    [[nodiscard]] bool Matches(const EntityView& entity) const;

  private:
    // A comparison with its values made ready.
    struct Prepared {
        std::vector<Literal> values;
        std::vector<Pattern> patterns;  // for "like", one
    };

    [[nodiscard]] bool Holds(std::size_t comparison, const EntityView& entity) const;
    [[nodiscard]] bool AttributeHolds(const Comparison& comparison,
                                      const Prepared& prepared,
                                      const kxVariant& value) const;

    Tree _tree;
    Letters _letters;
    std::vector<Prepared> _prepared;
};

// Whether a text of the catalogue or a UID meets a comparison, letters as they are.
[[nodiscard]] bool TextHolds(const Comparison& comparison, std::string_view text);

// The base and the number of a UID text with a revision ("BASE:3"). False: it has none.
[[nodiscard]] bool SplitRevision(std::string_view uid, std::string_view& base, int& revision);

}  // namespace kxudm::query
