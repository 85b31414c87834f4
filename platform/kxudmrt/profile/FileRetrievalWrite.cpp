// How a retrieval writes what it has checked.
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <mutex>
#include <utility>

#include "core/Team.h"
#include "profile/ExternalFile.h"
#include "profile/FileRetrieval.h"
#include "vault/DocumentName.h"

namespace kxudm::profile {

namespace {

using vault::FileStatus;
using vault::Printable;

// Threads take about 0.1 ms to come and go.
constexpr std::size_t MANY_FILES = 32;
constexpr std::uint64_t MANY_BYTES = std::uint64_t{8} << 20;

// What the threads of a retrieval tell the calling one.
struct Told {
    std::atomic<std::uint64_t> bytes{0};
    std::atomic<std::uint64_t> files{0};
    std::mutex mutex;
    std::string name;  // of the file begun last

    void Begin(const std::string& target) {
        const std::lock_guard<std::mutex> lock(mutex);
        name = target;
    }
    std::string Name() {
        const std::lock_guard<std::mutex> lock(mutex);
        return name;
    }
};

}  // namespace

bool FileRetrieval::IsLarge() const {
    return _pieces.size() > 1 &&
           (_pieces.size() >= MANY_FILES || _progress.totalBytes >= MANY_BYTES);
}

void FileRetrieval::WriteOneByOne() {
    vault::Fetcher fetcher;
    const Heard heard = [this](std::uint64_t bytes) {
        Advance(bytes);
        return true;
    };
    for (Piece& piece : _pieces) {
        Begin(piece.target);
        if (piece.inPlace) {
            Advance(static_cast<std::uint64_t>(piece.file.size));
        } else {
            MakeFolder(*piece.folder);
            Write(piece, fetcher, heard);
        }
        ++_progress.done;
    }
    Begin({});
}

// The listener hears of the files that were begun now and then, not of each one.
void FileRetrieval::WriteTogether() {
    std::vector<Piece*> open;
    Told told;
    for (Piece& piece : _pieces) {
        if (piece.inPlace) {
            told.bytes += static_cast<std::uint64_t>(piece.file.size);
            ++told.files;
        } else {
            MakeFolder(*piece.folder);
            open.push_back(&piece);
        }
    }
    core::Team team(core::Team::UsefulThreads(open.size()));
    const Heard heard = [&](std::uint64_t bytes) {
        told.bytes += bytes;
        return !team.Stopped();
    };
    const auto makeWork = [&]() -> core::Team::Work {
        const auto fetcher = std::make_shared<vault::Fetcher>();
        return [&, fetcher](std::size_t i) {
            told.Begin(open[i]->target);
            Write(*open[i], *fetcher, heard);
            ++told.files;
        };
    };
    team.Run(open.size(), makeWork, [&] {
        _progress.done = told.files;
        _progress.name = told.files < _pieces.size() ? told.Name() : std::string();
        Advance(told.bytes - _progress.doneBytes);
    });
}

void FileRetrieval::Write(Piece& piece, vault::Fetcher& fetcher, const Heard& heard) {
    try {
        if (piece.vault == nullptr) {
            piece.written = CopyExternal(_files, piece.file, piece.target, heard);
            return;
        }
        vault::RetrieveOptions options;
        options.modified = piece.file.modified;
        options.progress = heard;
        piece.written = fetcher.Fetch(*piece.vault, piece.file.hash, piece.target, options);
    } catch (const vault::FileError& error) {
        throw vault::FileError("'" + Printable(piece.target) + "' was not retrieved", error);
    }
}

void FileRetrieval::MakeFolder(Folder& folder) {
    if (std::exchange(folder.ready, true)) {
        return;
    }
    std::vector<std::string> missing;
    FileStatus status;
    for (std::filesystem::path path = folder.path; !_files.Status(path.string(), status);
         path = path.parent_path()) {
        missing.push_back(path.string());
    }
    for (; !missing.empty(); missing.pop_back()) {
        _files.MakeFolder(missing.back());
        _madeFolders.push_back(missing.back());
    }
}

void FileRetrieval::MoveAll() {
    for (Piece& piece : _pieces) {
        if (piece.written == nullptr) {
            continue;
        }
        try {
            if (_overwrite) {
                piece.written->MoveTo(piece.target);
            } else if (!piece.written->MoveToNew(piece.target)) {
                throw vault::FileError(EEXIST, "made", piece.target);
            }
        } catch (const vault::FileError& error) {
            throw vault::FileError("'" + Printable(piece.target) + "' was not retrieved", error);
        }
        if (!piece.wasThere) {
            _madeFiles.push_back(piece.target);
        }
    }
}

void FileRetrieval::TakeBack() noexcept {
    for (Piece& piece : _pieces) {
        piece.written.reset();
    }
    for (const std::string& file : _madeFiles) {
        try {
            _files.Remove(file);
        } catch (const std::exception&) {
            // The failure that is on its way says more.
        }
    }
    std::error_code ignored;
    for (auto folder = _madeFolders.rbegin(); folder != _madeFolders.rend(); ++folder) {
        std::filesystem::remove(*folder, ignored);
    }
}

void FileRetrieval::Begin(const std::string& name) {
    _progress.name = name;
    Advance(0);
}

void FileRetrieval::Advance(std::uint64_t bytes) {
    _progress.doneBytes = std::min(_progress.doneBytes + bytes, _progress.totalBytes);
    IUDMProgressListener* const listener = _session.ProgressListener();
    if (listener != nullptr && !listener->Advance(_progress)) {
        throw UDMCancelledException("Retrieving files into '" + Printable(_folder->path) +
                                    "' was cancelled; it is as it was");
    }
}

}  // namespace kxudm::profile
