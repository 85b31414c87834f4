// What a comparison looks at, in terms of SQL.
//
// Layer: query, inside.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "catalogue/Catalogue.h"
#include "query/Evaluator.h"

namespace kxudm::query {

struct Operand {
    enum class Kind {
        Stored,      // an attribute among those of head_attribute
        Expression,  // a column, or computed from columns
        Definition,  // decided by the entity's definition alone
    };

    Kind kind = Kind::Stored;
    std::string expression = {};  // Expression: over e and r; Stored: h.value
    // Not null: costly, so that it is computed once as x.value, which is the expression then.
    const char* computedOnce = nullptr;
    bool numbers = false;  // Expression: yields numbers, else texts
    Letters letters = Letters::Exact;
    // Expression: the indexed column of `entity c`, and where letters are folded the one beside it
    // with the folded texts that differ; null if it is none.
    const char* indexed = nullptr;
    const char* indexedFolded = nullptr;
    // Definition: names of the definitions that meet the comparison.
    std::vector<std::string> definitions = {};
};

// Makes operands.
class Operands {
  public:
    Operands(const catalogue::Catalogue& catalogue, Letters letters);

    // Throws UDMException for an attribute that no definition has.
    [[nodiscard]] Operand Of(const Comparison& comparison) const;
    [[nodiscard]] std::vector<std::string> ExcludedDefinitions() const;

  private:
    [[nodiscard]] std::vector<std::string> DefinitionsThatMeet(const Comparison& comparison) const;
    void RequireKnown(const Comparison& comparison) const;

    const catalogue::Catalogue& _catalogue;
    Letters _letters;
};

}  // namespace kxudm::query
