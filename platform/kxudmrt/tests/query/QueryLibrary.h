// A library in memory with entities of a small catalogue, and the same entities as the evaluator
// sees them.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "LibraryFixture.h"
#include "catalogue/Catalogue.h"
#include "query/Evaluator.h"
#include "query/Parser.h"
#include "query/SqlCompiler.h"

namespace kxudm::test {

// What ann at her desk sees of one entity.
struct Seen final : query::EntityView {
    std::vector<std::string> definitions;
    std::string uid;
    int revision = 0;
    std::string name;
    std::map<std::string, kxVariant> attributes;

    const std::vector<std::string>& Definitions() const override { return definitions; }
    std::string BaseUid() const override { return uid; }
    int Revision() const override { return revision; }
    std::string Name() const override { return name; }
    kxVariant Attribute(const std::string& attribute) const override;
};

// Definitions: Root (abstract) > Part > Bolt, Root > Document, Root > Hidden (excluded from
// search), Folder. Attributes: mass (Double), count (Integer), flag (Boolean), material, code
// (String), tags (StringList), due (Time); "size" is an Integer of Part and a String of Document.
class QueryLibrary : public store::LibraryFixture {
  protected:
    using Attributes = std::map<std::string, kxVariant>;
    using Names = std::vector<std::string>;
    using Letters = query::Letters;

    QueryLibrary();

    // Life of an entity as ann sees it.
    enum class Life {
        Unversioned,
        MyDraft,         // never published, ann's
        Published,       // as it was made
        MyCheckOut,      // published with other values, then checked out and changed by ann
        AnotherCheckOut  // the reverse: what was changed is bob's
    };
    // `other` are the values of the revision that is not seen; EMPTY takes one away.
    store::EntityId Make(const std::string& definition,
                         const std::string& name,
                         const Attributes& attributes,
                         Life life = Life::Unversioned,
                         const Attributes& other = {});

    [[nodiscard]] store::Condition Compiled(
        const std::string& text,
        Letters letters = Letters::Exact,
        query::CompileOptions::Use use = query::CompileOptions::Use::Search) const {
        return query::Compile(query::Parse(text), *catalogue_, {letters, use});
    }
    // Names of the hits, in order of creation.
    Names Hits(const std::string& text, Letters letters = Letters::Exact);
    Names ChildHits(store::EntityId folder,
                    const std::string& text,
                    Letters letters = Letters::Exact);
    // The same by the evaluator, over all that was made.
    Names Expected(const std::string& text, Letters letters = Letters::Exact) const;

    std::shared_ptr<const catalogue::Catalogue> catalogue_;
    std::vector<Seen> seen_;

  private:
    void Publish(store::EntityId id);
    void CheckOut(store::EntityId id, const store::Viewer& viewer);
    store::AttributeList Changes(const Attributes& from, const Attributes& to) const;
};

}  // namespace kxudm::test
