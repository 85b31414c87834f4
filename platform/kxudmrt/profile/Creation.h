// Making entities: what creating one, a child or a folder have in common.
#pragma once

#include "profile/Session.h"

namespace kxudm::profile {

// The definition of that name, which must allow entities. Throws otherwise.
[[nodiscard]] const catalogue::ContentDefinition& CreatableDefinition(const Session& session,
                                                                      const kxString& definition);
// A new entity at revision 0, with the defaults of its definition and, over them, `values`, which
// fit the definition. Inside of an operation; the name is not checked against its place.
[[nodiscard]] Session::State CreateState(Session& session,
                                         Operation& operation,
                                         const catalogue::ContentDefinition& definition,
                                         const kxString& name,
                                         const store::AttributeList& values = {});
// `name` as the definition takes it. Folders' names must be fit for a path.
[[nodiscard]] kxString CheckedName(const catalogue::ContentDefinition& definition,
                                   const kxString& name);

}  // namespace kxudm::profile
