// Libraries and workspaces in the master database: finding and adding them with all checks.
//
// Layer: providers.
#pragma once

#include <memory>

#include "providers/local/Parameters.h"
#include "store/MasterStore.h"

namespace kxudm::providers {

// The master database that the parameters name; it and its directory are made on first use.
[[nodiscard]] std::unique_ptr<store::MasterStore> OpenMaster(const Parameters& parameters);

// The library of a name. Throws UDMNotFoundException.
[[nodiscard]] store::LibraryRecord LibraryOfName(store::MasterStore& master, const kxString& name);
// The library of an id as GetRepositoryIds gives it. Throws UDMNotFoundException.
[[nodiscard]] store::LibraryRecord LibraryOfId(store::MasterStore& master, const kxString& id);

// Throws UDMException if the parameters ask for another base directory or data source than the
// library has.
void RequireSameLibrary(const Parameters& parameters, const store::LibraryRecord& library);
// Adds the library, or does nothing if it is there with the same file. Throws UDMException, naming
// both files, if the name is taken, and if the file has another name already.
void RegisterLibrary(store::MasterStore& master, const store::LibraryRecord& library);

// The workspace that the parameters name, not yet added where the user doesn't have it. Throws
// UDMException if the parameters give it another directory than it has.
[[nodiscard]] store::WorkspaceRecord WantedWorkspace(store::MasterStore& master,
                                                     const Parameters& parameters);

// A record as the interface's texts.
[[nodiscard]] kxStlMap<kxString, kxString> LibraryFields(const store::LibraryRecord& library);
[[nodiscard]] kxStlMap<kxString, kxString> WorkspaceFields(const store::WorkspaceRecord& workspace);

}  // namespace kxudm::providers
