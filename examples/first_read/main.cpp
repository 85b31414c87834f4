// Keeps a folder of real files as a managed tree, the way a host would: makes settings, creates a
// library and a workspace, mirrors the folder, lets go of everything, opens the library again and
// reads every entry back by its UID.
//
//     first_read DATA HOME FOLDER
//
// DATA holds the default settings and the catalogue, HOME is where settings, master database and
// library go, FOLDER is what is mirrored. A second run opens the library and takes what is new.
// The exit code is 0 if every content read back equal, 1 if not, and 2 if nothing could be done.
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <system_error>

#include "FolderMirror.h"
#include "Library.h"
#include "Report.h"

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
    {
        demo::Library library(data, home);
        if (library.Exists()) {
            std::cout << "The library \"Demo\" exists; opening it\n";
            library.Open();
        } else {
            library.Create();
        }
        demo::FolderMirror mirror(library);
        mirror.Run(folder);
        entries = mirror.Entries();
        if (mirror.LeftOut() > 0) {
            std::cerr << "left out in all: " << mirror.LeftOut() << '\n';
        }
    }
    const double createSeconds = watch.Lap();

    demo::Library library(data, home);
    library.Open();
    const double openSeconds = watch.Lap();
    const std::size_t equal = demo::CountEqual(library, entries);
    const double readSeconds = watch.Lap();

    demo::PrintTree(library, entries, kTreeLines);
    std::size_t folders = 0;
    for (const demo::Entry& entry : entries) {
        folders += entry.isFolder ? 1 : 0;
    }
    const std::size_t contents = entries.size() - folders;
    std::cout << "folders: " << folders << "\ncontents: " << contents << "\nread back: " << equal
              << " of " << contents << " equal\nlibrary: " << library.Path() << '\n';
    std::printf(
        "time: create %.2f s, open %.2f s, read %.2f s\n", createSeconds, openSeconds, readSeconds);
    return equal == contents ? 0 : 1;
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
