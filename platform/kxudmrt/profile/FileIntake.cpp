#include "profile/FileIntake.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "vault/DocumentName.h"
#include "vault/Intake.h"
#include "vault/SourceFile.h"

namespace kxudm::profile {

namespace {

constexpr std::size_t TEXT_SAMPLE = 4096;

// Of one file. Nothing of it is in the library before its row is.
class IntakeProgress {
  public:
    IntakeProgress(Session& session, const std::string& path)
        : _listener(session.ProgressListener()), _path(path) {
        vault::FileStatus status;
        if (_listener != nullptr && session.Vaults().Files().Status(path, status)) {
            _progress.totalBytes = status.size;
        }
        _progress.total = 1;
        _progress.name = path;
        Tell();
    }

    bool Advance(std::uint64_t bytes) {
        _progress.doneBytes = std::min(_progress.doneBytes + bytes, _progress.totalBytes);
        Tell();
        return true;
    }
    void End() {
        _progress.done = 1;
        _progress.doneBytes = _progress.totalBytes;
        _progress.name.clear();
        Tell();
    }

  private:
    void Tell() {
        if (_listener != nullptr && !_listener->Advance(_progress)) {
            throw UDMCancelledException("Adding '" + vault::Printable(_path) +
                                        "' was cancelled; its content's documents are as they "
                                        "were");
        }
    }

    IUDMProgressListener* _listener;
    const std::string& _path;
    UDMProgress _progress;
};

}  // namespace

std::string AbsolutePath(const std::string& path) {
    std::error_code error;
    std::filesystem::path normal = std::filesystem::absolute(path, error).lexically_normal();
    if (!normal.has_filename() && normal.has_relative_path()) {
        normal = normal.parent_path();
    }
    return normal.string();
}

std::string DocumentNameOf(const std::string& path) {
    if (path.empty()) {
        throw UDMException("A file to be added must be named; its path is empty");
    }
    std::string name = path.substr(path.rfind('/') + 1);
    if (name.empty()) {
        throw UDMException("'" + vault::Printable(path) +
                           "' can't be added, it names a folder; name a file");
    }
    vault::CheckDocumentName(name);
    return name;
}

store::FileRow StoredFile(const std::string& name,
                          const vault::Stored& stored,
                          const std::string& directory) {
    store::FileRow row;
    row.name = name;
    row.hash = stored.hash;
    row.size = static_cast<std::int64_t>(stored.size);
    row.modified = stored.modified;
    row.isText = stored.isText;
    row.vault = directory;
    return row;
}

store::FileRow ExternalFile(LibraryVaults& vaults, const std::string& path) {
    store::FileRow row;
    row.name = DocumentNameOf(path);
    row.externalPath = AbsolutePath(path);
    if (vaults.Keeps(row.externalPath)) {
        throw UDMException("'" + vault::Printable(path) +
                           "' can't be an external file, it lies in a vault of the library; name a "
                           "file outside of it");
    }
    vault::SourceFile source(vaults.Files(), row.externalPath);
    row.size = static_cast<std::int64_t>(source.Size());
    row.modified = source.Modified();
    char beginning[TEXT_SAMPLE];
    row.isText = vault::LooksLikeText({beginning, source.Fill(beginning, sizeof beginning)});
    return row;
}

std::string VaultDirectoryOf(Session& session, const EntityState& state) {
    return session.DetailsOf(state).vault;
}

store::FileRow TakeInFile(Session& session, const EntityState& state, const std::string& path) {
    const std::string name = DocumentNameOf(path);
    const std::string directory = VaultDirectoryOf(session, state);
    IntakeProgress progress(session, path);
    const vault::AddOptions options{
        .progress = [&progress](std::uint64_t bytes) { return progress.Advance(bytes); }};
    LibraryVaults& vaults = session.Vaults();
    const vault::Stored stored = session.InBulk() ? vaults.TakeInLater(directory, path, options)
                                                  : vaults.In(directory).Add(path, options);
    progress.End();
    return StoredFile(name, stored, directory);
}

void RequireNewDocument(Session& session, const EntityState& state, const std::string& name) {
    store::FileRow there;
    if (session.Store().FindFile(state.Id(), state.Revision(), name, there)) {
        throw UDMException(state.Cdef() + " " + state.Uid() + " has a document '" +
                           vault::Printable(name) +
                           "' already; replace it by ReAddFile, or remove it first");
    }
}

store::FileRow RequireDocument(Session& session,
                               const EntityState& state,
                               const std::string& name) {
    store::FileRow row;
    if (session.Store().FindFile(state.Id(), state.Revision(), name, row)) {
        return row;
    }
    std::vector<store::FileRow> all;
    session.Store().Files(state.Id(), state.Revision(), all);
    std::string known;
    for (const store::FileRow& each : all) {
        known += (known.empty() ? "it has '" : ", '") + vault::Printable(each.name) + "'";
    }
    throw UDMNotFoundException(state.Cdef() + " " + state.Uid() + " has no document '" +
                               vault::Printable(name) + "'; " +
                               (known.empty() ? "it has none, add it first" : known));
}

void AttachFile(Session& session,
                Operation& operation,
                const Session::State& state,
                const store::FileRow& file) {
    vault::CheckDocumentName(file.name);
    if (!operation.Store().AddFile(state->Id(), state->Revision(), file, operation.Stamp())) {
        RequireNewDocument(session, *state, file.name);
    }
    operation.NoteStamped(state);
    if (!operation.HasJustMade(*state)) {
        operation.Record(Change::Of(SIGNAL_CONTENT_CHANGED, state).Private(state->IsPrivate()));
    }
}

}  // namespace kxudm::profile
