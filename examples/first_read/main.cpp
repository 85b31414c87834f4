// Keeps a folder of real files as a managed tree, the way a host would: makes settings, creates a
// library and a workspace, imports the folder and publishes it, takes one content through the life
// of revisions, classifies and relates some contents, lets go of everything, opens the library
// again, reads every entry back by its UID, searches, retrieves all files and compares them with
// the folder, and carries everything over to a second library.
//
//     first_read DATA HOME FOLDER
//
// DATA holds the default settings and the catalogue, HOME is where settings, master database and
// library go, FOLDER is what is imported. A second run opens the library and takes what is new.
// The exit code is 0 if all of it came in, but for what is told to be left out, and every content
// read back equal and every file identical; 1 if not; and 2 if nothing could be done.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <system_error>

#include "Connections.h"
#include "Exchange.h"
#include "FolderImport.h"
#include "Library.h"
#include "Report.h"
#include "Retrieval.h"
#include "RevisionTour.h"
#include "Search.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kTreeLines = 40;

class Stopwatch {
  public:
    // Seconds since it was made, or since the last call.
    double Lap() {
        const auto now = std::chrono::steady_clock::now();
        const double seconds = std::chrono::duration<double>(now - _start).count();
        _start = now;
        return seconds;
    }

  private:
    std::chrono::steady_clock::time_point _start = std::chrono::steady_clock::now();
};

// What is wrong with the folder as a whole; empty if nothing is.
std::string Complaint(const fs::path& folder) {
    std::error_code error;
    const fs::file_status status = fs::status(folder, error);
    if (status.type() == fs::file_type::not_found) {
        return "does not exist; name a folder that does";
    }
    if (error) {
        return "can't be read: " + error.message();
    }
    if (!fs::is_directory(status)) {
        return "is no folder; name one";
    }
    const fs::directory_iterator probe(folder, error);
    return error ? "can't be listed: " + error.message() : std::string();
}

int Run(const fs::path& data, const fs::path& home, const fs::path& folder) {
    if (const std::string complaint = Complaint(folder); !complaint.empty()) {
        std::cerr << "The folder \"" << demo::Printable(folder.string()) << "\" " << complaint
                  << '\n';
        return 2;
    }

    Stopwatch watch;
    std::vector<demo::Entry> entries;
    bool complete = true;
    double createSeconds = 0;
    {
        demo::Library library(data, home);
        if (library.Exists()) {
            std::cout << "The library \"Demo\" exists; opening it\n";
            library.Open();
        } else {
            library.Create();
        }
        demo::FolderImport import(library);
        import.Run(folder);
        entries = import.Entries();
        complete = import.IsComplete();
        if (import.LeftOut() > 0) {
            std::cerr << "left out in all: " << import.LeftOut() << '\n';
        }
        createSeconds = watch.Lap();
        const auto content = std::find_if(
            entries.begin(), entries.end(), [](const auto& entry) { return !entry.isFolder; });
        if (content != entries.end()) {
            complete = demo::LiveThrough(library, *content) && complete;
            complete = demo::Connect(library, entries) && complete;
        }
    }
    watch.Lap();

    demo::Library library(data, home);
    library.Open();
    const double openSeconds = watch.Lap();
    const std::size_t equal = demo::CountEqual(library, entries);
    const double readSeconds = watch.Lap();

    demo::PrintTree(library, entries, kTreeLines);
    demo::PrintConnections(library);
    demo::PrintSearches(library);
    const std::size_t contents = demo::CountContents(entries);
    std::cout << "folders: " << entries.size() - contents << "\ncontents: " << contents
              << "\nread back: " << equal << " of " << contents
              << " equal\nlibrary: " << library.Path() << std::endl;
    std::printf(
        "time: create %.2f s, open %.2f s, read %.2f s\n", createSeconds, openSeconds, readSeconds);
    std::fflush(stdout);
    const std::size_t identical = demo::CountIdentical(library, entries, home);
    const demo::VaultUse vault = demo::MeasureVault(library, entries);
    std::cout << "retrieved: " << identical << " of " << contents
              << " identical\nrevisions: " << demo::CountRevisions(library, entries)
              << "\nvault: " << vault.distinct << " distinct of " << vault.files << " files, "
              << vault.bytes << " bytes" << std::endl;
    demo::Library copy(data, home, "Copy", "copy");
    copy.Exists() ? copy.Open() : copy.Create();
    const std::size_t exchanged = demo::CountExchanged(library, copy, entries, home);
    std::cout << "exchange: " << exchanged << " of " << contents << " equal\n";
    return complete && equal == contents && identical == contents && exchanged == contents ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::cerr << "usage: first_read DATA HOME FOLDER\n";
        return 2;
    }
    try {
        return Run(fs::absolute(argv[1]), fs::absolute(argv[2]), argv[3]);
    } catch (const std::exception& failure) {
        std::cerr << "first_read: " << failure.what() << '\n';
        return 2;
    }
}
