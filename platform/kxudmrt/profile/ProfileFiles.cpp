// The documents of entities: what GetDocuments to SetVault of IUDMProfile promise.
#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <limits>
#include <optional>
#include <utility>

#include "profile/FileIntake.h"
#include "profile/FileRetrieval.h"
#include "profile/Profile.h"
#include "profile/Words.h"
#include "vault/DocumentName.h"
#include "vault/SourceFile.h"

namespace kxudm::profile {

namespace {

using Durability = sql::Transaction::Durability;
using vault::Printable;

constexpr const char* FILE_TYPE = "filetype";
constexpr const char* FILE_SIZE = "filesize";
constexpr const char* FILE_MODIFIED = "filelastmodified";

kxString TypeOf(const EntityState& state, const store::FileRow& file) {
    std::string extension = std::filesystem::path(file.name).extension().string();
    if (extension.size() <= 1) {
        const bool has = state.Definition()->FindAttribute(FILE_TYPE) != nullptr;
        return has ? state.AttributeValue(FILE_TYPE).GetString() : kxString();
    }
    extension.erase(0, 1);
    for (char& letter : extension) {
        letter = letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    }
    return extension;
}

UDMGenericDocument DocumentOf(Session& session,
                              const EntityState& state,
                              const store::FileRow& file) {
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    return {
        file.name,
        file.IsExternal() ? file.externalPath : session.Vaults().In(file.vault).PathOf(file.hash),
        TypeOf(state, file),
        core::FormatTime(file.modified),
        static_cast<std::int32_t>(std::min(file.size, most)),
        file.isText};
}

// A row that is to be stored, taken in with no transaction open.
store::FileRow FileFor(Session& session,
                       const EntityState& state,
                       const kxString& path,
                       bool external) {
    return external ? ExternalFile(session.Vaults(), path) : TakeInFile(session, state, path);
}

void AddFile(Session& session, const UDMItemHandle& handle, const kxString& path, bool external) {
    session.Poll("AddFile");
    session.Store().Connection().RequireWritable();
    Session::State state = session.Resolve(handle);
    session.RequireEditable(*state);
    RequireNewDocument(session, *state, DocumentNameOf(path));
    const store::FileRow file = FileFor(session, *state, path, external);
    Operation operation(session, "AddFile");
    // Others may have done something meanwhile.
    state = session.Resolve(handle);
    session.RequireEditable(*state);
    AttachFile(session, operation, state, file);
    operation.Commit();
    operation.Tell();
}

// What is refused as the source of a move: it would be missed.
void RequireMovable(Session& session, const kxString& path, bool external) {
    const std::string what = "'" + Printable(path) + "' can't be moved into the library: ";
    if (external) {
        throw UDMException(what +
                           "an external file stays where it is; either move it or make it "
                           "external");
    }
    if (session.Vaults().Keeps(path)) {
        throw UDMException(what + "it is part of a vault of this library; copy it instead");
    }
    const std::string absolute = AbsolutePath(path);
    std::error_code error;
    const std::string followed = std::filesystem::weakly_canonical(absolute, error).string();
    if (session.Store().IsExternalSomewhere(absolute) ||
        session.Store().IsExternalSomewhere(followed)) {
        throw UDMException(what +
                           "a revision in the library has it as an external file; copy it "
                           "instead");
    }
}

void RemoveSource(vault::FileLayer& files, const std::string& path, const store::FileRow& file) {
    const std::string task =
        "'" + Printable(path) + "' was stored as a document, but not taken away";
    try {
        {
            const vault::SourceFile source(files, path);
            if (static_cast<std::int64_t>(source.Size()) != file.size ||
                source.Modified() != file.modified) {
                throw UDMStoreException(task +
                                        ": it was changed meanwhile; look at it, and add it again "
                                        "or remove it");
            }
        }
        files.Remove(path);
    } catch (const vault::FileError& error) {
        // Somebody else has taken it away.
        if (error.Code() != ENOENT) {
            throw vault::FileError(task, error);
        }
    }
}

// An import tells of a content's file in attributes. Where they tell of `before`, they are to tell
// of `after`, or of nothing if that is null. Empty if there are none.
store::AttributeList ToldAnew(const EntityState& state,
                              const store::FileRow& before,
                              const store::FileRow* after) {
    store::AttributeList values;
    const auto follow = [&](const char* name, auto&& told) {
        const kxString key(name);
        const catalogue::AttributeDefinition* const attribute =
            state.Definition()->FindAttribute(key);
        if (attribute == nullptr || attribute->system) {
            return;
        }
        const auto checked = [&](const store::FileRow& file) {
            return state.Definition()->CheckedValue(key, told(file));
        };
        const kxVariant value = after == nullptr ? kxVariant() : checked(*after);
        if (state.AttributeValue(key) == checked(before) && value != checked(before)) {
            values.emplace_back(key, value);
        }
    };
    follow(FILE_SIZE,
           [](const store::FileRow& file) { return kxVariant(static_cast<long long>(file.size)); });
    follow(FILE_MODIFIED,
           [](const store::FileRow& file) { return kxVariant(WholeSeconds(file.modified)); });
    return values;
}

// The new packed attributes, if anything is told anew.
std::optional<std::string> TellAnew(Operation& operation,
                                    const EntityState& state,
                                    const store::FileRow& before,
                                    const store::FileRow* after) {
    const store::AttributeList values = ToldAnew(state, before, after);
    if (values.empty()) {
        return std::nullopt;
    }
    return operation.Store().UpdateAttributes(
        state.Id(), state.Revision(), values, operation.Stamp());
}

bool IsSameDocument(const store::FileRow& a, const store::FileRow& b) {
    return a.hash == b.hash && a.size == b.size && a.modified == b.modified &&
           a.externalPath == b.externalPath && a.vault == b.vault;
}

}  // namespace

void Profile::GetDocuments(const UDMItemHandle& handle,
                           kxStlVector<UDMGenericDocument>& documents,
                           bool withExternal) {
    _session->Poll("GetDocuments");
    const Session::State state = _session->Resolve(handle);
    std::vector<store::FileRow> files;
    _session->Store().Files(state->Id(), state->Revision(), files);
    for (const store::FileRow& file : files) {
        if (withExternal || !file.IsExternal()) {
            documents.push_back(DocumentOf(*_session, *state, file));
        }
    }
}

AddFileBuilder Profile::BeginAddFile(const UDMItemHandle& handle) {
    _session->RequireOpen("BeginAddFile");
    return AddFileBuilder([session = _session, handle](const kxString& path, bool external) {
        AddFile(*session, handle, path, external);
    });
}

void Profile::ReAddFile(const UDMItemHandle& handle,
                        const kxString& path,
                        bool move,
                        bool external) {
    _session->Poll("ReAddFile");
    _session->Store().Connection().RequireWritable();
    Session::State state = _session->Resolve(handle);
    _session->RequireEditable(*state);
    const std::string name = DocumentNameOf(path);
    static_cast<void>(RequireDocument(*_session, *state, name));
    if (move) {
        RequireMovable(*_session, path, external);
    }
    const store::FileRow file = FileFor(*_session, *state, path, external);
    // The source of a move must not go before its document is safe from a loss of power.
    Operation operation(*_session, "ReAddFile", move ? Durability::Full : Durability::Normal);
    state = _session->Resolve(handle);
    _session->RequireEditable(*state);
    const store::FileRow before = RequireDocument(*_session, *state, name);
    std::optional<std::string> packed;
    if (!IsSameDocument(before, file)) {
        operation.Store().ReplaceFile(state->Id(), state->Revision(), file, operation.Stamp());
        packed = TellAnew(operation, *state, before, &file);
        operation.NoteStamped(state);
        operation.Record(Change::Of(SIGNAL_CONTENT_CHANGED, state).Private(state->IsPrivate()));
    }
    if (move) {
        operation.AfterCommit([&files = _session->Vaults().Files(),
                               path = AbsolutePath(path),
                               file] { RemoveSource(files, path, file); });
    }
    operation.Commit();
    if (packed) {
        state->TakePacked(*packed, operation.Stamp());
    }
    operation.Tell();
}

void Profile::RemoveFile(const UDMItemHandle& handle, const kxString& name) {
    Operation operation(*_session, "RemoveFile");
    const Session::State state = _session->Resolve(handle);
    _session->RequireEditable(*state);
    const store::FileRow before = RequireDocument(*_session, *state, name);
    static_cast<void>(
        operation.Store().RemoveFile(state->Id(), state->Revision(), name, operation.Stamp()));
    const std::optional<std::string> packed = TellAnew(operation, *state, before, nullptr);
    operation.NoteStamped(state);
    operation.Record(Change::Of(SIGNAL_CONTENT_CHANGED, state).Private(state->IsPrivate()));
    operation.Commit();
    if (packed) {
        state->TakePacked(*packed, operation.Stamp());
    }
    operation.Tell();
}

void Profile::RetrieveFilesIntoWorkspace(const UDMItemHandle& handle,
                                         const bool& overwrite,
                                         const bool& withChildren,
                                         kxStlVector<kxString>& paths) {
    RetrieveFilesToFolder(
        handle, _session->Options().workspaceDirectory, overwrite, withChildren, paths);
}

void Profile::RetrieveFilesToPath(const UDMItemHandle& handle,
                                  const kxString& folder,
                                  kxStlVector<kxString>& paths,
                                  const kxString& document) {
    _session->Poll("RetrieveFilesToPath");
    const Session::State state = _session->Resolve(handle);
    FileRetrieval retrieval(*_session, false);
    retrieval.SetFolder(folder);
    if (document.empty()) {
        retrieval.AddAll(*state, false);
    } else {
        retrieval.AddOne(*state, document);
    }
    retrieval.Run(paths);
}

void Profile::RetrieveFilesToFolder(const UDMItemHandle& handle,
                                    const kxString& folder,
                                    const bool& overwrite,
                                    const bool& withChildren,
                                    kxStlVector<kxString>& paths) {
    _session->Poll("RetrieveFilesToFolder");
    const Session::State state = _session->Resolve(handle);
    FileRetrieval retrieval(*_session, overwrite);
    retrieval.SetFolder(folder);
    retrieval.AddAll(*state, withChildren);
    retrieval.Run(paths);
}

void Profile::RetrieveBulk(const std::vector<UDMRetrieved>& wanted,
                           bool overwrite,
                           kxStlVector<kxString>& paths) {
    _session->Poll("RetrieveBulk");
    FileRetrieval retrieval(*_session, overwrite);
    _session->Store().View([&] {
        for (const UDMRetrieved& each : wanted) {
            retrieval.SetFolder(each.folder);
            retrieval.AddAll(*_session->Resolve(each.handle), each.withChildren);
        }
    });
    retrieval.Run(paths);
}

void Profile::SetVault(const UDMItemHandle& handle, const kxString& directory) {
    Operation operation(*_session, "SetVault");
    const Session::State state = _session->Resolve(handle);
    _session->RequireEditable(*state);
    const std::string vault = _session->Vaults().DirectoryOf(directory);
    if (vault == VaultDirectoryOf(*_session, *state)) {
        operation.Leave();
        return;
    }
    operation.Store().SetVault(state->Id(), vault);
    operation.Commit();
    operation.Tell();
}

}  // namespace kxudm::profile
