// Folders by name and path: "/A/B", names byte-exact, no empty part, no "." or "..".
#pragma once

#include <vector>

#include "profile/Session.h"

namespace kxudm::profile {

// Throws UDMException unless `name` can be a part of a path.
void RequireFolderName(const kxString& name);
// The parts of a path, at least one. Throws UDMException, naming the path.
[[nodiscard]] std::vector<kxString> FolderPathParts(const kxString& path);

// What folders that are made by path are of. Throws UDMNotFoundException if the catalogue has none.
[[nodiscard]] const catalogue::ContentDefinition& FolderDefinition(const Session& session);
// The folder of a path, made with its parents where it is missing.
[[nodiscard]] Session::State FolderOfPath(Session& session,
                                          Operation& operation,
                                          const std::vector<kxString>& parts);
// The folder that an entity lies in; 0 for none.
[[nodiscard]] store::EntityId FolderOf(Session& session, const EntityState& state);
// The folder of that name in `parent` (0: at the top). With `ignoreCase` the exact name wins. False
// if there is none.
bool FindFolder(Session& session,
                store::EntityId parent,
                const kxString& name,
                bool ignoreCase,
                store::EntityRow& row);
// Throws UDMException if `parent` has a folder of that name.
void RequireFreeFolderName(Session& session, store::EntityId parent, const kxString& name);
// Throws UDMException if a folder in this one bears the name of another folder at the top, where it
// would come to stand if this one went.
void RequireFreeNamesAtTop(Session& session, const EntityState& leaving);

}  // namespace kxudm::profile
