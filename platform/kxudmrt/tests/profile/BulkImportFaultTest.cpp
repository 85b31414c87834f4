// Bulk imports when the machine refuses, and when the process is killed: what is there is whole.
#include <cerrno>
#include <chrono>
#include <random>
#include <thread>

#include "ChildProcess.h"
#include "Files.h"
#include "ImportTree.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class BulkImportWithFaults : public ImportFixture {
  protected:
    BulkImportWithFaults() {
        Write("tree/a.txt", "a");
        Write("tree/large.inp", vault::Deck(1'200'000));
        Write("tree/sub/c.txt", "c");
    }
    ~BulkImportWithFaults() override { layer.before = nullptr; }

    ProfilePtr OpenOver() {
        providers::LocalOptions options;
        options.files = &layer;
        return library.Keep(
            providers::LocalProvider(options).OpenProfile(Shipped(library.Params())));
    }
    void FailCall(int number) {
        calls = 0;
        layer.before = [this, number](const std::string& call, const std::string& path) {
            if (++calls == number) {
                throw vault::FileError(
                    call == "Write" || call == "Create" ? ENOSPC : EIO, "used", path);
            }
        };
    }
    // The number of contents below the folder; each must give its file back.
    std::size_t CountWhole(const ProfilePtr& profile, const kxString& path) const {
        UDMItemHandle folder;
        try {
            profile->GetFolder(folder, path, false);
        } catch (const UDMNotFoundException&) {
            return 0;
        }
        std::size_t count = 0;
        kxStlVector<UDMItemHandle> children;
        profile->GetChildren(children, folder, "folder", "");
        for (const UDMItemHandle& child : children) {
            if (child.GetCdef() == "Foldertype") {
                count += CountWhole(profile, path + "/" + child.GetDisplayName());
            } else {
                EXPECT_THAT(DocumentNames(profile, child), ElementsAre(child.GetDisplayName()));
                const std::string relative =
                    path.substr(path.find("/tree") + 1) + "/" + child.GetDisplayName();
                EXPECT_EQ(Retrieved(profile, child), vault::ReadFile(Path(relative)));
                ++count;
            }
        }
        return count;
    }

    vault::MeddlingLayer layer;
    ProfilePtr layered = OpenOver();
    int calls = 0;
};

TEST_F(BulkImportWithFaults, I15_KeepWholeContentsAtAnyFailureAndGoOnNextTime) {
    bool failed = true;
    for (int number = 1; failed; ++number) {
        const kxString root("/run" + std::to_string(number));
        // Contents that are in the vault already would be no test of storing them.
        Write("tree/a.txt", "a" + root);
        Write("tree/large.inp", vault::Deck(1'200'000, number));
        Write("tree/sub/c.txt", "c" + root);
        FailCall(number);
        ImportListener heard;
        int made = 0;
        std::string error;
        {
            const UDMProgressScope scope(layered, heard);
            error = vault::ErrorOf([&] {
                made = layered->AddFoldersAndFiles({Path("tree")}, {}, root, {{"publish", "true"}});
            });
        }
        failed = calls >= number;
        layer.before = nullptr;
        const std::size_t there = CountWhole(layered, root);
        if (error.empty()) {
            EXPECT_EQ(there, static_cast<std::size_t>(made)) << number;
            EXPECT_EQ(there + heard.failed.size(), 3U) << number;
        } else {
            EXPECT_EQ(there, 0U) << number << ": " << error;
        }
        EXPECT_EQ(layered->AddFoldersAndFiles({Path("tree")}, {}, root, {}),
                  static_cast<int>(3 - there))
            << number;
        EXPECT_EQ(CountWhole(layered, root), 3U);
    }
}

TEST_F(BulkImportWithFaults, I13_KeepNothingOfAStrictImportAtAnyFailure) {
    bool failed = true;
    for (int number = 1; failed; ++number) {
        const kxString root("/run" + std::to_string(number));
        Write("tree/a.txt", "a" + root);
        Write("tree/sub/c.txt", "c" + root);
        FailCall(number);
        const std::string error = vault::ErrorOf([&] {
            layered->AddFoldersAndFiles({Path("tree")}, {}, root, {{"strict", "true"}});
        });
        failed = calls >= number;
        layer.before = nullptr;
        EXPECT_EQ(CountWhole(layered, root), error.empty() ? 3U : 0U) << number << ": " << error;
        if (!error.empty()) {
            EXPECT_THAT(In(layered, root), ElementsAre("absent")) << number;
        }
    }
}

TEST_F(BulkImportWithFaults, I17_EndOnAFullDiskWithoutTryingTheRest) {
    layer.before = [](const std::string& call, const std::string& path) {
        if (call == "Write") {
            throw vault::FileError(ENOSPC, "written", path);
        }
    };
    const UDMProgressScope scope(layered, listener);
    EXPECT_THAT(Refusal<UDMStoreException>(
                    [&] { layered->AddFoldersAndFiles({Path("tree")}, {}, "", {}); }),
                HasSubstr("No space left"));
    EXPECT_EQ(scope.FailureCount(), 0U);
    layer.before = nullptr;
    EXPECT_THAT(In(layered, "/tree"), ElementsAre("absent"));
    EXPECT_EQ(VaultFiles(), 0U);
}

TEST_F(BulkImportWithFaults, I17_SayWhatStandsWhereTheyEndLate) {
    for (int i = 0; i < 1100; ++i) {
        Write("many/" + std::to_string(1000 + i) + ".txt", std::to_string(i));
    }
    layer.before = [this](const std::string& call, const std::string& path) {
        if (call == "Create" && ++calls == 1050) {
            throw vault::FileError(ENOSPC, "made", path);
        }
    };
    const auto told = Listen(layered);
    EXPECT_THAT(Refusal<UDMStoreException>(
                    [&] { layered->AddFoldersAndFiles({Path("many")}, {}, "/R", {}); }),
                testing::AllOf(HasSubstr("ended after 1000 contents"), HasSubstr("No space left")));
    layer.before = nullptr;
    EXPECT_EQ(In(layered, "/R/many").size(), 1000U);
    EXPECT_THAT(told->Take(), ElementsAre("42 R", "42 many"));
    EXPECT_EQ(layered->AddFoldersAndFiles({Path("many")}, {}, "/R", {}), 100);
}

TEST_F(BulkImportWithFaults, I15_KeepWholeContentsWhenTheProcessIsKilled) {
    for (int i = 0; i < 120; ++i) {
        Write("tree/many/" + std::to_string(i) + ".txt", "number " + std::to_string(i));
    }
    // A library that nobody has open while the child is forked.
    const Library other;
    const auto open = [&] { return UDMProfileMgr::GetProfile(Shipped(other.Params())); };
    ProfilePtr maker = open();
    UDMProfileMgr::DiscardProfile(maker);
    std::mt19937 random(20261121);
    for (int round = 0; round < 6; ++round) {
        const kxString root("/round" + std::to_string(round));
        Child child([&](int out) {
            const ProfilePtr profile = open();
            WriteLine(out, "opened");
            profile->AddFoldersAndFiles({Path("tree")}, {}, root, {{"publish", "true"}});
        });
        child.Go();
        ASSERT_EQ(child.Line(), "opened");
        std::this_thread::sleep_for(std::chrono::milliseconds(random() % 200));
        child.Kill();
        child.Wait();
        ProfilePtr profile = open();
        const std::size_t there = CountWhole(profile, root);
        EXPECT_EQ(profile->AddFoldersAndFiles({Path("tree")}, {}, root, {{"publish", "true"}}),
                  static_cast<int>(123 - there));
        EXPECT_EQ(CountWhole(profile, root), 123U);
        UDMProfileMgr::DiscardProfile(profile);
    }
}

}  // namespace
}  // namespace kxudm::test
