// Documents when the machine refuses: a clear error, nothing half done, no row without its content,
// and success once it can go on.
#include <cerrno>
#include <fstream>

#include "Files.h"
#include "store/LibraryStore.h"

namespace kxudm::test {
namespace {

using testing::AllOf;
using testing::AnyOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace fs = std::filesystem;

class FilesWithFaults : public Files {
  protected:
    ~FilesWithFaults() override { layer.before = nullptr; }

    // From now on the call with this number fails.
    void FailCall(int number) {
        calls = 0;
        layer.before = [this, number](const std::string& call, const std::string& path) {
            if (++calls == number) {
                throw vault::FileError(
                    call == "Write" || call == "Create" ? ENOSPC : EIO, "used", path);
            }
        };
    }
    // Every row has its content.
    void ExpectWhole(const UDMItemHandle& handle) {
        layer.before = nullptr;
        const Names names = DocumentNames(layered, handle);
        EXPECT_EQ(Contents(layered, handle).size(), names.size());
    }

    vault::MeddlingLayer layer;
    ProfilePtr layered = OpenOver(layer);
    int calls = 0;
};

TEST_F(FilesWithFaults, F5_AnAdditionThatFailsAtAnyCallLeavesNoRowAndSucceedsOnRetry) {
    for (const bool external : {false, true}) {
        const std::string source = Write("a", Deck(1'500'000, external ? 2 : 1));
        bool failed = true;
        for (int number = 1; failed; ++number) {
            const UDMItemHandle part = layered->CreateEntity("Part", "Wheel");
            FailCall(number);
            const std::string error = ErrorOf([&] { AddFile(layered, part, source, external); });
            failed = calls >= number;
            layer.before = nullptr;
            if (!error.empty()) {
                EXPECT_TRUE(failed);
                EXPECT_THAT(DocumentNames(layered, part), IsEmpty()) << number;
                AddFile(layered, part, source, external);
            }
            EXPECT_THAT(DocumentNames(layered, part), ElementsAre("a"));
            ExpectWhole(part);
        }
    }
}

TEST_F(FilesWithFaults, AReplacementThatFailsAtAnyCallLeavesTheOldDocument) {
    const UDMItemHandle part = layered->CreateEntity("Part", "Wheel");
    AddFile(layered, part, Write("a", "old"));
    bool failed = true;
    for (int number = 1; failed; ++number) {
        const std::string source = Write("a", "new");
        FailCall(number);
        const std::string error = ErrorOf([&] { layered->ReAddFile(part, source, true, false); });
        failed = calls >= number;
        layer.before = nullptr;
        const Names contents = Contents(layered, part);
        if (contents == Names{"a=old"}) {
            EXPECT_NE(error, "");
            EXPECT_EQ(ReadFile(source), "new");
        } else {
            // Stored. The source may have stayed, which is then told.
            EXPECT_THAT(contents, ElementsAre("a=new"));
            EXPECT_EQ(error.empty(), !Exists(source)) << error;
            layered->ReAddFile(part, Write("a", "old"), false, false);
        }
    }
}

TEST_F(FilesWithFaults, F8_ARetrievalThatFailsAtAnyCallLeavesTheFolderAsItWas) {
    const UDMItemHandle part = layered->CreateEntity("Part", "Wheel");
    AddFile(layered, part, Write("a", Deck(1'200'000)));
    AddFile(layered, part, Write("b", "2"), true);
    AddFile(layered, part, Write("c", "3"));
    const std::string folder = sources.File("out");
    bool failed = true;
    for (int number = 1; failed; ++number) {
        FailCall(number);
        kxStlVector<kxString> paths;
        const std::string error = ErrorOf(
            [&] { layered->RetrieveFilesToFolder(part, folder + "/sub", false, false, paths); });
        failed = calls >= number;
        layer.before = nullptr;
        if (error.empty()) {
            // Closing what was only read may fail unheard.
            EXPECT_THAT(FilesIn(folder + "/sub"), ElementsAre("a", "b", "c"));
            fs::remove_all(folder);
        } else {
            EXPECT_FALSE(Exists(folder)) << number << " " << error;
        }
        EXPECT_EQ(paths.empty(), !error.empty());
    }
}

TEST_F(FilesWithFaults, AFullDiskIsTold) {
    const UDMItemHandle part = layered->CreateEntity("Part", "Wheel");
    const std::string source = Write("a", "1");
    const auto full = [](const std::string& call, const std::string& path) {
        if (call == "Write") {
            throw vault::FileError(ENOSPC, "written", path);
        }
    };
    layer.before = full;
    EXPECT_THAT(Refusal<UDMStoreException>([&] { AddFile(layered, part, source); }),
                AllOf(HasSubstr(source), HasSubstr("No space left")));
    EXPECT_EQ(vault::CountFiles(library.BaseDirectory() + "/vault"), 0u);
    layer.before = nullptr;
    AddFile(layered, part, source);
    layer.before = full;
    kxStlVector<kxString> paths;
    EXPECT_THAT(Refusal<UDMStoreException>(
                    [&] { layered->RetrieveFilesToPath(part, sources.File("out"), paths, ""); }),
                AllOf(HasSubstr(sources.File("out/a")), HasSubstr("No space left")));
    EXPECT_FALSE(Exists(sources.File("out")));
}

TEST_F(FilesWithFaults, F5_ASourceThatChangesOrVanishesWhileItIsReadIsRefused) {
    const UDMItemHandle part = layered->CreateEntity("Part", "Wheel");
    const std::string source = Write("a", Deck(1'500'000));
    const auto once = [&](const std::function<void()>& meddle) {
        layer.before = [&, meddle, done = false](const std::string& call,
                                                 const std::string& path) mutable {
            if (call == "Read" && path == source && !std::exchange(done, true)) {
                meddle();
            }
        };
    };
    once([&] { Write("a", Deck(1'500'000, 2)); });
    EXPECT_THAT(Refusal<UDMStoreException>([&] { AddFile(layered, part, source); }),
                HasSubstr("was changed while it was read"));
    once([&] { fs::remove(source); });
    EXPECT_THAT(Refusal<UDMStoreException>([&] { AddFile(layered, part, source); }),
                HasSubstr("was removed or replaced while it was read"));
    EXPECT_THAT(DocumentNames(layered, part), IsEmpty());
}

TEST_F(FilesWithFaults, F6_AMovedSourceThatChangedMeanwhileStaysAndIsTold) {
    const UDMItemHandle part = layered->CreateEntity("Part", "Wheel");
    AddFile(layered, part, Write("a", "1"));
    const auto told = Listen(layered);
    const std::string source = Write("a", "22");
    int opened = 0;
    layer.before = [&](const std::string& call, const std::string& path) {
        if (call == "OpenToRead" && path == source && ++opened == 2) {
            Write("a", "333");
        }
    };
    EXPECT_THAT(Refusal<UDMStoreException>([&] { layered->ReAddFile(part, source, true, false); }),
                AllOf(HasSubstr(source), HasSubstr("was stored"), HasSubstr("changed meanwhile")));
    layer.before = nullptr;
    EXPECT_EQ(ReadFile(source), "333");
    EXPECT_THAT(Contents(layered, part), ElementsAre("a=22"));
    EXPECT_THAT(told->Take(), ElementsAre("3 Wheel"));
}

TEST_F(FilesWithFaults, F6_AMovedSourceThatStaysWithABulkEditIsToldAfterItsCommit) {
    const UDMItemHandle part = layered->CreateEntity("Part", "Wheel");
    AddFile(layered, part, Write("a", "1"));
    const auto told = Listen(layered);
    const std::string source = Write("a", "22");
    UDMBulkEdit edit(layered);
    layered->ReAddFile(part, source, true, false);
    layer.before = [&](const std::string& call, const std::string& path) {
        if (call == "Remove") {
            throw vault::FileError(EACCES, "removed", path);
        }
    };
    EXPECT_THAT(Refusal<UDMStoreException>([&] { edit.Commit(); }),
                AllOf(HasSubstr(source), HasSubstr("not taken away")));
    layer.before = nullptr;
    EXPECT_TRUE(Exists(source));
    EXPECT_THAT(told->Take(), ElementsAre("3 Wheel"));
    EXPECT_THAT(Contents(layered, part), ElementsAre("a=22"));
}

TEST_F(FilesWithFaults, AFileThatComesUpWhileOthersAreWrittenIsKept) {
    const UDMItemHandle part = layered->CreateEntity("Part", "Wheel");
    AddFile(layered, part, Write("a", "1"));
    AddFile(layered, part, Write("b", "2"));
    const std::string folder = sources.File("out");
    layer.before = [&](const std::string& call, const std::string& path) {
        if (call == "RenameToNew" && path == folder + "/a") {
            std::ofstream(folder + "/b") << "theirs";
        }
    };
    kxStlVector<kxString> paths;
    EXPECT_THAT(Refusal<UDMStoreException>(
                    [&] { layered->RetrieveFilesToFolder(part, folder, false, false, paths); }),
                HasSubstr(folder + "/b"));
    EXPECT_THAT(FilesIn(folder), ElementsAre("b"));
    EXPECT_EQ(ReadFile(folder + "/b"), "theirs");
}

TEST_F(FilesWithFaults, F5_ALockedLibraryLeavesAContentWithoutRow) {
    const ProfilePtr hasty = OpenOver(layer, 20);
    const UDMItemHandle part = hasty->CreateEntity("Part", "Wheel");
    const std::string source = Write("a", "1");
    {
        const UDMBulkEdit edit(ann);
        EXPECT_THAT(Refusal<UDMStoreException>([&] { AddFile(hasty, part, source); }),
                    HasSubstr(library.File()));
    }
    EXPECT_THAT(DocumentNames(hasty, part), IsEmpty());
    AddFile(hasty, part, source);
    EXPECT_THAT(Contents(hasty, part), ElementsAre("a=1"));
}

TEST(FilesWithoutRights, AreRefusedAndNothingIsHalfDone) {
    const vault::Folder sources;
    const std::string result = vault::AsNobody([&] {
        Library own;
        const ProfilePtr nobody = own.Open("nobody");
        const UDMItemHandle part = nobody->CreateEntity("Part", "Wheel");
        const std::string source = sources.Write("a", "1");
        std::string report;
        const auto require = [&](const std::string& what, const std::string& error) {
            report += error.empty() ? what + " succeeded\n" : "";
        };
        fs::permissions(source, fs::perms::none);
        require("reading", ErrorOf([&] { AddFile(nobody, part, source); }));
        fs::permissions(source, fs::perms::owner_all);
        fs::create_directory(own.BaseDirectory() + "/vault");
        fs::permissions(own.BaseDirectory() + "/vault",
                        fs::perms::owner_read | fs::perms::owner_exec);
        const std::string error = ErrorOf([&] { AddFile(nobody, part, source); });
        require("writing", error);
        if (error.find("Permission denied") == std::string::npos) {
            report += error + "\n";
        }
        fs::permissions(own.BaseDirectory() + "/vault", fs::perms::owner_all);
        if (!DocumentNames(nobody, part).empty()) {
            report += "a row without content\n";
        }
        AddFile(nobody, part, source);
        fs::create_directory(sources.File("locked"));
        fs::permissions(sources.File("locked"), fs::perms::owner_read | fs::perms::owner_exec);
        kxStlVector<kxString> paths;
        require("retrieving", ErrorOf([&] {
                    nobody->RetrieveFilesToPath(part, sources.File("locked"), paths, "");
                }));
        nobody->ReAddFile(part, source, false, false);
        return report.empty() ? std::string("fine") : report;
    });
    EXPECT_EQ(result, "fine");
}

}  // namespace
}  // namespace kxudm::test
