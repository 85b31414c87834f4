// How a file comes into a library: its content first, then its row.
//
//     const store::FileRow row = TakeInFile(session, *state, path);  // no transaction; durable
//     Operation operation(session, "AddFile");
//     AttachFile(session, operation, state, row);
//     operation.Commit();
//
// Layer: profile. Many files are taken in with a vault::Batch and become rows by StoredFile; their
// rows may be attached only after Batch::Commit has returned.
#pragma once

#include "profile/LibraryVaults.h"
#include "profile/Session.h"

namespace kxudm::profile {

// Absolute, without "." and "..", links not followed, no '/' at its end.
[[nodiscard]] std::string AbsolutePath(const std::string& path);

// The name that a file has as a document, its last component. Throws UDMException for a path
// without one and for what vault::CheckDocumentName refuses.
[[nodiscard]] std::string DocumentNameOf(const std::string& path);

// The row of a file that was taken into a vault; `directory` as of LibraryVaults::In.
[[nodiscard]] store::FileRow StoredFile(const std::string& name,
                                        const vault::Stored& stored,
                                        const std::string& directory);
// The row of a file that stays where it is. Looks at its status and its beginning.
[[nodiscard]] store::FileRow ExternalFile(LibraryVaults& vaults, const std::string& path);

// The directory of the vault that takes the entity's further files.
[[nodiscard]] std::string VaultDirectoryOf(Session& session, const EntityState& state);
// Takes one file into the entity's vault; durable when it returns, or in a bulk edit before that is
// committed. Tells the session's listener how far it is, before the file, with each part of a large
// one, and at the end. Cancelled, it throws UDMCancelledException: no row is made then, and after
// the last call a content without a row stays.
[[nodiscard]] store::FileRow TakeInFile(Session& session,
                                        const EntityState& state,
                                        const std::string& path);

// Throws UDMException if the revision has a document of that name already.
void RequireNewDocument(Session& session, const EntityState& state, const std::string& name);
// The document of that name. Throws UDMNotFoundException if the revision has none.
[[nodiscard]] store::FileRow RequireDocument(Session& session,
                                             const EntityState& state,
                                             const std::string& name);

// Makes a row a document of an editable revision. Records the change, unless the operation made the
// entity last: nobody can know it. Throws UDMException if the name is taken or refused; of what is
// not editable, too.
void AttachFile(Session& session,
                Operation& operation,
                const Session::State& state,
                const store::FileRow& file);

}  // namespace kxudm::profile
