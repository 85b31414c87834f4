// A process is killed at random moments while it imports folders, publishes contents, and replaces
// files in bulk edits. What it reported as done is there afterwards, and nothing is wrong with the
// library apart from contents in the vault that no row names, which a purge takes away.
//
// KXUDM_KILLS sets how often, KXCT_TEST_SEED the moments.
#include <kxudm/UDMMaintenance.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <thread>

#include "../profile/ChildProcess.h"
#include "../profile/Library.h"
#include "../vault/Support.h"
#include "tests/support/Seed.h"

namespace kxudm::test {
namespace {

using testing::IsEmpty;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// A process takes ten times as long there.
constexpr int KILLS = 60;
#else
constexpr int KILLS = 300;
#endif
constexpr int KILLS_OF_A_LIBRARY = 15;
constexpr int FILES = 6;

std::string FileName(int number) {
    return "part" + std::to_string(number) + ".stp";
}

// Where a round keeps the files that replace others.
std::string NewerOf(const std::string& sources) {
    return sources + "-newer";
}

// Every library has the same files, and each round its own versions of them.
void WriteSources(const std::string& folder, int round) {
    std::filesystem::create_directories(folder);
    for (int i = 0; i < FILES; ++i) {
        std::ofstream(folder + "/" + FileName(i), std::ios::binary)
            << vault::Noise(static_cast<std::size_t>(2000 * i), round * FILES + i);
    }
}

UDMItemHandle ContentIn(IUDMProfile& profile, const std::string& folder, int number) {
    UDMItemHandle place;
    profile.GetFolder(place, folder, false);
    kxStlVector<UDMItemHandle> contents;
    profile.GetChildren(contents, place, "contents", "name == \"" + FileName(number) + "\"");
    if (contents.size() != 1) {
        throw std::runtime_error(std::to_string(contents.size()) + " contents are " + folder + "/" +
                                 FileName(number));
    }
    return contents.front();
}

// One bulk edit gives all of them their files back and publishes, then replaces these and
// publishes.
void EditInBulk(const ProfilePtr& profile, const Names& bases, const std::string& sources) {
    UDMBulkEdit edit(profile);
    for (std::size_t number = 0; number < bases.size(); ++number) {
        const kxString& base = bases[number];
        const std::string name = "/" + FileName(static_cast<int>(number));
        profile->Checkout(profile->GetEntity(base), "next");
        profile->BeginAddFile(profile->GetEntity(base)).setFilePath(sources + name).go();
        profile->PersistEntity(profile->GetEntity(base), "third", false, true, true);
        profile->Checkout(profile->GetEntity(base), "next");
        profile->ReAddFile(profile->GetEntity(base), NewerOf(sources) + name, false, false);
        profile->PersistEntity(profile->GetEntity(base), "fourth", false, true, true);
    }
    edit.Commit();
}

// What the process does until it is killed. Each line is written once its work is done.
void Work(Library& library, const std::string& sources, int round, int out) {
    const ProfilePtr profile = library.Open();
    WriteLine(out, "open");
    for (int i = 0;; ++i) {
        const std::string name = "/R" + std::to_string(round) + "-" + std::to_string(i);
        profile->AddFoldersAndFiles({sources}, {}, name, {{"definition", "Part"}});
        WriteLine(out, "imported " + name);
        const std::string folder = name + "/" + std::filesystem::path(sources).filename().string();
        Names bases;
        for (int number = 0; number < FILES; ++number) {
            const kxString uid = ContentIn(*profile, folder, number).GetUID();
            const kxString base = uid.substr(0, uid.find(':'));
            profile->PersistEntity(profile->GetEntity(base), "first", false, true, true);
            WriteLine(out, "published " + base + " 1 " + std::to_string(number));
            profile->Checkout(profile->GetEntity(base), "next");
            profile->SetAttributeValue(profile->GetEntity(base), "count", kxVariant(number));
            profile->RemoveFile(profile->GetEntity(base), FileName(number));
            profile->PersistEntity(profile->GetEntity(base), "second", false, true, true);
            WriteLine(out, "published " + base + " 2 " + std::to_string(number));
            bases.push_back(base);
        }
        EditInBulk(profile, bases, sources);
        for (int number = 0; number < FILES; ++number) {
            const std::string& base = bases[static_cast<std::size_t>(number)];
            WriteLine(out, "published " + base + " 3 " + std::to_string(number));
            WriteLine(out, "published " + base + " 4 " + std::to_string(number));
        }
    }
}

std::string ContentOf(IUDMProfile& profile, const UDMItemHandle& handle, const std::string& out) {
    std::filesystem::remove_all(out);
    std::filesystem::create_directories(out);
    kxStlVector<kxString> paths;
    profile.RetrieveFilesToFolder(handle, out, false, false, paths);
    return paths.size() == 1 ? vault::ReadFile(paths.front())
                             : std::to_string(paths.size()) + " documents";
}

void ExpectDone(IUDMProfile& profile,
                const std::string& line,
                const std::string& sources,
                const std::string& out) {
    std::istringstream words(line);
    std::string what;
    std::string subject;
    words >> what >> subject;
    if (what == "imported") {
        const std::string folder =
            subject + "/" + std::filesystem::path(sources).filename().string();
        for (int number = 0; number < FILES; ++number) {
            EXPECT_FALSE(ContentIn(profile, folder, number).IsEmpty());
        }
    } else if (what == "published") {
        int revision = 0;
        int number = 0;
        words >> revision >> number;
        const UDMItemHandle handle =
            profile.GetEntity(kxString(subject + ":" + std::to_string(revision)));
        EXPECT_FALSE(handle.IsEditable());
        if (revision != 2) {
            const std::string folder = revision == 4 ? NewerOf(sources) : sources;
            EXPECT_EQ(ContentOf(profile, handle, out),
                      vault::ReadFile(folder + "/" + FileName(number)));
        } else {
            EXPECT_EQ(handle.GetAttributeValue("count").GetInteger(), number);
        }
    }
}

// Findings apart from orphans, which a process that died may leave.
Names WrongIn(UDMMaintenance& care) {
    Names wrong;
    UDMVerifyOptions options;
    options.minimumAge = std::chrono::seconds(0);
    for (const UDMFinding& finding : care.Verify(options)) {
        if (finding.kind != UDMFindingKind::ContentOrphan) {
            wrong.push_back(std::string(UDMMaintenance::Name(finding.kind)) + " " + finding.object +
                            ": " + finding.text);
        }
    }
    return wrong;
}

// The lines that the process wrote before its end.
Names LinesOf(Child& child) {
    Names lines;
    for (std::string line = child.Line(); !line.empty(); line = child.Line()) {
        lines.push_back(line);
    }
    return lines;
}

// How long the work takes up to its first publications, on this machine as it is now.
std::chrono::microseconds TimeOfWork() {
    constexpr int LINES = 1 + 4 * FILES;
    Library library;
    const std::string sources = library.Folder().File("in");
    WriteSources(sources, 0);
    WriteSources(NewerOf(sources), 1);
    Child child([&](int to) { Work(library, sources, 0, to); });
    child.Go();
    child.Line();
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < LINES; ++i) {
        child.Line();
    }
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() -
                                                                 start);
}

void KillOften(long kills, std::chrono::microseconds time, std::mt19937& random) {
    Library library;
    const std::string out = library.Folder().File("out");
    std::uniform_int_distribution<std::int64_t> moment(0, 2 * time.count());
    std::size_t done = 0;
    for (int round = 0; round < kills; ++round) {
        const std::string sources = library.Folder().File("in" + std::to_string(round));
        WriteSources(sources, round);
        // Of no other round.
        WriteSources(NewerOf(sources), 100000 + round);
        Names lines;
        {
            Child child([&](int to) { Work(library, sources, round, to); });
            child.Go();
            ASSERT_EQ(child.Line(), "open");
            std::this_thread::sleep_for(std::chrono::microseconds(moment(random)));
            child.Kill();
            lines = LinesOf(child);
            ASSERT_EQ(child.Wait(), -SIGKILL);
        }
        ProfilePtr profile = UDMProfileMgr::GetProfile(library.Params());
        for (const std::string& line : lines) {
            SCOPED_TRACE("round " + std::to_string(round) + ", " + line);
            ExpectDone(*profile, line, sources, out);
        }
        done += lines.size();
        UDMMaintenance care(profile);
        ASSERT_THAT(WrongIn(care), IsEmpty());
        UDMProfileMgr::DiscardProfile(profile);
        if (testing::Test::HasFailure()) {
            return;
        }
    }
    EXPECT_GT(done, 0U);
    const ProfilePtr profile = library.Open();
    UDMMaintenance care(profile);
    UDMPurgeOptions everything;
    everything.minimumAge = std::chrono::seconds(0);
    care.Purge(everything);
    UDMVerifyOptions whole;
    whole.minimumAge = std::chrono::seconds(0);
    EXPECT_THAT(care.Verify(whole), IsEmpty());
}

TEST(KillTest, WhatAKilledProcessReportedIsThereAndTheLibraryIsSound) {
    const auto kills = static_cast<long>(kxct_test::Setting("KXUDM_KILLS", KILLS));
    std::mt19937 random(kxct_test::Seed());
    const std::chrono::microseconds time = TimeOfWork();
    for (long left = kills; left > 0 && !HasFailure(); left -= KILLS_OF_A_LIBRARY) {
        KillOften(std::min<long>(left, KILLS_OF_A_LIBRARY), time, random);
    }
}

}  // namespace
}  // namespace kxudm::test
