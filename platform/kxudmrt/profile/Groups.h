// Groups of content definitions and the links that stand for them.
//
// Layer: profile. Links of the kinds Owner and Reference bear the group's name. What lies in a
// folder or under a classification is linked without one: the content's definition says to which
// group of the folder it belongs.
#pragma once

#include <string_view>

#include "profile/Session.h"

namespace kxudm::profile {

// The link kind of a category of groups; nothing for any other word.
[[nodiscard]] std::optional<store::LinkKind> KindOfCategory(std::string_view category);
[[nodiscard]] bool IsContainerKind(store::LinkKind kind);

// Which children are meant by the `group` argument of GetChildren.
struct Selection {
    store::LinkKind kind = store::LinkKind::Owner;
    kxString name = {};  // of the links; empty: all
    // Where the links don't say the group: the children must be allowed in it.
    const catalogue::GroupDefinition* filter = nullptr;
};
// Throws UDMNotFoundException, naming definition and group.
[[nodiscard]] Selection SelectionOf(const catalogue::ContentDefinition& parent,
                                    const kxString& group);

// What this revision holds by the selected links, in their order; groups in the definition's order.
// `out` is appended to. In ProfileChildren.cpp.
void ListSelected(Session& session,
                  const EntityState& parent,
                  const Selection& selection,
                  kxStlVector<UDMItemHandle>& out);

// The group of `parent` into which a child of this definition is put. An empty name means the
// first one that takes it, owners before others. Throws if it isn't there or doesn't take it.
[[nodiscard]] const catalogue::GroupDefinition& GroupFor(const EntityState& parent,
                                                         const catalogue::ContentDefinition& child,
                                                         const kxString& group);

// Whether a folder or classification takes contents of this definition: in one of its groups of
// that category, or any at all if it is of the type `type` and has no such group.
[[nodiscard]] bool TakesInto(const catalogue::ContentDefinition& container,
                             std::string_view category,
                             std::string_view type,
                             const catalogue::ContentDefinition& content);

// Whether parent holds child by a link of that kind, whatever its name.
[[nodiscard]] bool Holds(Session& session,
                         const EntityState& parent,
                         const EntityState& child,
                         store::LinkKind kind);

// Links inside of an operation, with all checks, journal and states.
void LinkChild(Session& session,
               Operation& operation,
               const Session::State& parent,
               const Session::State& child,
               const catalogue::GroupDefinition& group);
// Ends the owner links, references or relations from parent to child, whatever their name.
void UnlinkChild(Session& session,
                 Operation& operation,
                 const Session::State& parent,
                 const Session::State& child,
                 store::LinkKind kind);
// Does nothing if it lies there already.
void PutIntoFolder(Session& session,
                   Operation& operation,
                   const Session::State& content,
                   const Session::State& folder);
void Classify(Session& session,
              Operation& operation,
              const Session::State& content,
              const Session::State& classification);
// Ends the link of a content to its folder or one of its classifications.
void LeaveContainer(Session& session,
                    Operation& operation,
                    const Session::State& content,
                    const Session::State& container,
                    store::LinkKind kind);

}  // namespace kxudm::profile
