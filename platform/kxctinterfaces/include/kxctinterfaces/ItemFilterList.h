// Which children count: per parent type and group, what type children must have and what further
// condition they must meet.
//
// A view that shows, say, parts and under them only the meshes that were approved, sets one filter
// list on its controller. Structure building and queries then ask, for each parent and group,
// which condition applies to its children (see Item::GetChildren with a filter list). A parent and
// group without a filter has all its children.
//
// Layer: interfaces. A value: copies are independent. Not for use from several threads at once.
//
//     ItemFilterList filters;
//     filters.Add("UDMPart", "representations", "UDMRepPartMesh", "attrib.state == \"approved\"");
//     filters.Add("UDMProject", "", "UDMPart", "");   // every group of a project
//     controller->SetFilterMapForChildren(filters);
#pragma once

#include <kxctinterfaces/kxctinterfaces_export.h>
#include <kxutl/kxStlSet.h>
#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>

#include <cstddef>

namespace kxct {

class KXCTINTERFACES_EXPORT ItemFilterList {
  public:
    // Adds one filter. `parentType` is the content definition name of the parent; an empty `group`
    // stands for every group of it. `childType`, a content definition name, and `expression`, a
    // query expression, may each be empty, which asks nothing. The expression is not checked here:
    // a faulty one makes the listing that uses it fail. A second filter for the same parent type
    // and group replaces the first.
    void Add(const kxString& parentType,
             const kxString& group,
             const kxString& childType,
             const kxString& expression);

    // Removes all filters.
    void Clear();

    // Number of filters. 0 tells callers that nothing is filtered at all.
    size_t size() const;

    // The parent types that have a filter, each once.
    kxStlSet<kxString> GetParentTypes() const;

    // The condition on the children of a parent of type `parentType` in `group`: the type that they
    // must have and a further query expression. The filter for exactly this group goes before the
    // one for every group. Either output stays empty where nothing is asked; both are emptied
    // first.
    void GetChildQueryExpr(kxString& childType,
                           kxString& expression,
                           kxString parentType,
                           kxString group) const;

  private:
    struct Filter {
        kxString parentType;
        kxString group;
        kxString childType;
        kxString expression;
    };

    const Filter* _Find(const kxString& parentType, const kxString& group) const;

    // A handful of entries in practice, in the order of their addition.
    kxStlVector<Filter> _filters;
};

}  // namespace kxct
