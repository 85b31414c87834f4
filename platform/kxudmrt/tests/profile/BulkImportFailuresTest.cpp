#include <fcntl.h>
#include <sys/stat.h>

#include "ImportTree.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class BulkImportFailures : public ImportFixture {};

TEST_F(BulkImportFailures, I12_ReportsWhatCanNotBeReadAndGoesOn) {
    Write("tree/a.txt", "a");
    Write("tree/z.txt", "z");
    std::filesystem::create_symlink(Path("gone"), Path("tree/dangling.txt"));
    ASSERT_EQ(mkfifo(Path("tree/pipe.txt").c_str(), 0600), 0);
    const UDMProgressScope scope(ann, listener);
    EXPECT_EQ(ann->AddFoldersAndFiles({Path("tree"), Path("no folder"), Path("tree/a.txt")},
                                      {Path("no file"), Path("tree"), Path("tree/pipe.txt")},
                                      "/R",
                                      {}),
              2);
    EXPECT_THAT(listener.failed,
                ElementsAre(Path("no file"),
                            Path("tree"),
                            Path("tree/pipe.txt"),
                            Path("tree/dangling.txt"),
                            Path("tree/pipe.txt"),
                            Path("no folder"),
                            Path("tree/a.txt")));
    EXPECT_THAT(listener.reasons[0], HasSubstr("No such file"));
    EXPECT_THAT(listener.reasons[1], HasSubstr("folder; name it among the folders"));
    EXPECT_THAT(listener.reasons[2], HasSubstr("device, pipe or socket"));
    EXPECT_THAT(listener.reasons[6], HasSubstr("no folder; name it among the files"));
    EXPECT_THAT(In(ann, "/R/tree"), ElementsAre("a.txt: TextDocument", "z.txt: TextDocument"));
}

TEST_F(BulkImportFailures, I12_GoesOnWithoutAListener) {
    Write("tree/a.txt", "a");
    std::filesystem::create_symlink(Path("gone"), Path("tree/dangling.txt"));
    EXPECT_EQ(Import(), 1);
}

TEST_F(BulkImportFailures, I10_ReportsFoldersThatLeadBackIntoThemselves) {
    Write("tree/sub/a.txt", "a");
    std::filesystem::create_directory_symlink(Path("tree"), Path("tree/sub/back"));
    std::filesystem::create_directory_symlink(".", Path("tree/self"));
    const UDMProgressScope scope(ann, listener);
    EXPECT_EQ(Import(), 1);
    EXPECT_THAT(listener.failed, ElementsAre(Path("tree/self"), Path("tree/sub/back")));
    EXPECT_THAT(listener.reasons.front(), HasSubstr("never end"));
}

TEST_F(BulkImportFailures, I10_ReportsFoldersThatLeadIntoEachOther) {
    Write("tree/a/a.txt", "a");
    Write("tree/b/b.txt", "b");
    std::filesystem::create_directory_symlink(Path("tree/b"), Path("tree/a/b"));
    std::filesystem::create_directory_symlink(Path("tree/a"), Path("tree/b/a"));
    const UDMProgressScope scope(ann, listener);
    EXPECT_EQ(Import(), 4);
    EXPECT_THAT(listener.failed, ElementsAre(Path("tree/a/b/a"), Path("tree/b/a/b")));
}

TEST_F(BulkImportFailures, I11_ReportsNamesThatTheLibraryCanNotKeep) {
    Write("tree/good.txt", "g");
    const Names bad = {
        "tree/bad\xFF.txt", "tree/bell\a.txt", "tree/back\\slash.txt", "tree/nul.txt", "tree/dot."};
    for (const std::string& name : bad) {
        Write(name, "x");
    }
    Write("tree/fold\xFF/in.txt", "x");
    Write("tree/fold\n/in.txt", "x");
    const UDMProgressScope scope(ann, listener);
    EXPECT_EQ(Import(), 1);
    Names expected = {Path("tree/fold\xFF"), Path("tree/fold\n")};
    for (const std::string& name : bad) {
        expected.push_back(Path(name));
    }
    EXPECT_THAT(listener.failed, testing::UnorderedElementsAreArray(expected));
    for (const std::string& reason : listener.reasons) {
        EXPECT_EQ(reason.find('\n'), std::string::npos) << reason;
    }
    EXPECT_THAT(In(ann, "/tree"), ElementsAre("good.txt: TextDocument"));
}

TEST_F(BulkImportFailures, ReportsFilesThatVanishAfterTheyWereFound) {
    Write("tree/a.txt", "a");
    const std::string gone = Write("tree/b.txt", "b");
    listener.onAdvance = [&](const UDMProgress& progress) {
        if (progress.name == gone) {
            std::filesystem::remove(gone);
        }
        return true;
    };
    const UDMProgressScope scope(ann, listener);
    EXPECT_EQ(Import(), 1);
    EXPECT_THAT(listener.failed, ElementsAre(gone));
    EXPECT_THAT(In(ann, "/tree"), ElementsAre("a.txt: TextDocument"));
}

TEST_F(BulkImportFailures, ReportsFilesThatChangeWhileTheyAreRead) {
    const std::string growing = Write("tree/a.bin", std::string(5 << 20, 'x'));
    Write("tree/b.txt", "b");
    listener.onAdvance = [&](const UDMProgress& progress) {
        if (progress.name == growing && progress.doneBytes > 0) {
            std::ofstream(growing, std::ios::app) << "more";
        }
        return true;
    };
    const UDMProgressScope scope(ann, listener);
    EXPECT_EQ(Import(), 1);
    EXPECT_THAT(listener.failed, ElementsAre(growing));
    EXPECT_THAT(listener.reasons.front(), HasSubstr("changed while it was read"));
}

TEST_F(BulkImportFailures, I4_ReportsFilesThatNoDefinitionClaims) {
    // The definitions of these tests claim no extension at all.
    const ProfilePtr profile = library.Keep([&] {
        Parameters params = library.Params("ann");
        params["RepositoryName"] = "Plain";
        return UDMProfileMgr::GetProfile(params);
    }());
    const std::string file = Write("tree/a.inp", "a");
    const UDMProgressScope scope(profile, listener);
    EXPECT_EQ(profile->AddFoldersAndFiles({Path("tree")}, {}, "", {}), 0);
    EXPECT_THAT(listener.failed, ElementsAre(file));
    EXPECT_THAT(listener.reasons.front(), HasSubstr("option \"definition\""));
    EXPECT_EQ(profile->AddFoldersAndFiles({Path("tree")}, {}, "", {{"definition", "Part"}}), 1);
}

// An order can't be published as it is created, a part can.
class BulkImportOfOrders : public BulkImportFailures {
  protected:
    ProfilePtr OpenOrders() {
        Parameters params = library.Params("ann");
        params["RepositoryName"] = "Orders";
        params["UDMConfigFile"] = Write("catalogue.xml", R"(<catalogue version="1">
            <definition name="Content" abstract="true">
              <attribute name="name" type="String" mandatory="true"/>
            </definition>
            <definition name="Foldertype" base="Content" type="Foldertype" versioned="false">
              <group name="contents" category="folder"><child definition="Content"/></group>
            </definition>
            <definition name="Free" base="Content" extensions="*"/>
            <definition name="Bound" base="Content" extensions="bound">
              <attribute name="number" type="String" mandatory="true"/>
            </definition>
          </catalogue>)");
        return library.Keep(UDMProfileMgr::GetProfile(params));
    }
};

TEST_F(BulkImportOfOrders, ReportsContentsThatTheLibraryRefusesAndKeepsTheOthers) {
    const ProfilePtr profile = OpenOrders();
    Write("tree/1.txt", "1");
    Write("tree/2.bound", "2");
    Write("tree/3.txt", "3");
    Write("tree/4.bound", "4");
    Write("tree/empty/deep.bound", "5");
    const UDMProgressScope scope(profile, listener);
    EXPECT_EQ(profile->AddFoldersAndFiles({Path("tree")}, {}, "", {{"publish", "true"}}), 2);
    EXPECT_THAT(
        listener.failed,
        ElementsAre(Path("tree/2.bound"), Path("tree/4.bound"), Path("tree/empty/deep.bound")));
    EXPECT_THAT(listener.reasons.front(), HasSubstr("can't be published"));
    UDMItemHandle folder;
    profile->GetFolder(folder, "/tree/empty", false);
    EXPECT_EQ(profile->GetChildCount(folder, "contents", ""), 0U);
    profile->GetFolder(folder, "/tree", false);
    EXPECT_THAT(Children(profile, folder, "folder"),
                UnorderedElementsAre("1.txt", "3.txt", "empty"));
    EXPECT_THROW(profile->AddFoldersAndFiles(
                     {Path("tree")}, {}, "/Strict", {{"publish", "true"}, {"strict", "true"}}),
                 UDMException);
    EXPECT_THROW(profile->GetFolder(folder, "/Strict", false), UDMNotFoundException);
}

TEST_F(BulkImportOfOrders, I19_AContentThatIsRefusedEndsAnImportInABulkEdit) {
    const ProfilePtr profile = OpenOrders();
    Write("tree/1.txt", "1");
    Write("tree/2.bound", "2");
    {
        UDMBulkEdit edit(profile);
        const std::string refusal = Refusal([&] {
            profile->AddFoldersAndFiles({Path("tree")}, {}, "", {{"publish", "true"}});
        });
        EXPECT_THAT(refusal, HasSubstr("can't be published"));
        EXPECT_THROW(edit.Commit(), UDMException);
    }
    UDMItemHandle folder;
    EXPECT_THROW(profile->GetFolder(folder, "/tree", false), UDMNotFoundException);
}

TEST_F(BulkImportFailures, I13_KeepsNothingOfAStrictImport) {
    Write("tree/a.txt", "a");
    const std::string bad = Path("tree/dangling.txt");
    std::filesystem::create_symlink(Path("gone"), bad);
    const std::string refusal = Refusal([&] { Import({{"strict", "true"}}, "/R"); });
    EXPECT_THAT(refusal, HasSubstr(bad));
    EXPECT_THAT(refusal, HasSubstr("nothing was"));
    EXPECT_THAT(In(ann, "/R"), ElementsAre("absent"));
    EXPECT_EQ(VaultFiles(), 0U);
}

TEST_F(BulkImportFailures, I13_KeepsNothingOfAStrictImportThatFailsLate) {
    for (int i = 0; i < 1100; ++i) {
        Write("tree/" + std::to_string(1000 + i) + ".txt", std::to_string(i));
    }
    const std::string gone = Path("tree/2099.txt");
    listener.onAdvance = [&](const UDMProgress& progress) {
        if (progress.name == gone) {
            std::filesystem::remove(gone);
        }
        return true;
    };
    const auto told = Listen(ann);
    const UDMProgressScope scope(ann, listener);
    EXPECT_THAT(Refusal([&] { Import({{"strict", "true"}}); }), HasSubstr(gone));
    EXPECT_THAT(In(ann, "/tree"), ElementsAre("absent"));
    EXPECT_EQ(VaultFiles(), 0U);
    EXPECT_THAT(told->Take(), IsEmpty());
    EXPECT_EQ(Import({{"strict", "true"}}), 1099);
}

TEST_F(BulkImportFailures, RefusesAChangedFileInAStrictImport) {
    Write("tree/a.txt", "before");
    Import();
    Write("tree/a.txt", "after!");
    Write("tree/b.txt", "new");
    EXPECT_THAT(Refusal([&] { Import({{"strict", "true"}}); }), HasSubstr("a.txt"));
    EXPECT_THAT(In(ann, "/tree"), ElementsAre("a.txt: TextDocument"));
}

TEST_F(BulkImportFailures, I17_EndsWhereTheVaultCanNotBeWritten) {
    Write("tree/a.txt", "a");
    Write("base/vault", "a file where the vault's folder would be");
    std::filesystem::copy_file(Path("base/vault"), library.BaseDirectory() + "/vault");
    const UDMProgressScope scope(ann, listener);
    EXPECT_EQ(Import(), 0);
    EXPECT_EQ(scope.FailureCount(), 1U);
    EXPECT_THAT(In(ann, "/tree"), IsEmpty());
    std::filesystem::remove(library.BaseDirectory() + "/vault");
    EXPECT_EQ(Import(), 1);
}

TEST_F(BulkImportFailures, I11_LeavesTheVaultOfTheLibraryAlone) {
    Write("tree/a.txt", "a");
    Import();
    const UDMProgressScope scope(ann, listener);
    const std::string vault = library.BaseDirectory() + "/vault";
    std::filesystem::create_directory_symlink(vault, Path("tree/vault"));
    EXPECT_EQ(ann->AddFoldersAndFiles({vault, Path("tree")}, {}, "", {}), 0);
    EXPECT_THAT(listener.failed, ElementsAre(vault, Path("tree/vault")));
    EXPECT_THAT(listener.reasons.front(), HasSubstr("is the vault of this library"));
    EXPECT_THAT(In(ann, "/vault"), ElementsAre("absent"));
    EXPECT_EQ(VaultFiles(), 1U);
}

TEST_F(BulkImportFailures, I11_LeavesFilesAloneThatAreNamedWithinAVault) {
    Write("tree/a.txt", "a");
    Import();
    const UDMProgressScope scope(ann, listener);
    kxStlVector<kxString> folders;
    for (const auto& entry :
         std::filesystem::directory_iterator(library.BaseDirectory() + "/vault")) {
        folders.push_back(entry.path().string());
    }
    EXPECT_EQ(ann->AddFoldersAndFiles(folders, {}, "", {}), 0);
    EXPECT_EQ(scope.FailureCount(), 1U);
    EXPECT_THAT(listener.reasons.front(), HasSubstr("part of a vault of this library"));
    EXPECT_EQ(VaultFiles(), 1U);
}

TEST_F(BulkImportFailures, FailsOnAClosedSession) {
    Write("tree/a.txt", "a");
    ProfilePtr closing = ann;
    UDMProfileMgr::DiscardProfile(closing);
    EXPECT_THAT(Refusal([&] { Import(); }), HasSubstr("AddFoldersAndFiles"));
}

// --- Progress ---

class BulkImportProgress : public ImportFixture {
  protected:
    void SetUp() override {
        Write("tree/a.txt", "12345");
        Write("tree/b.txt", "123");
        Write("tree/sub/c.txt", "1");
    }
};

TEST_F(BulkImportProgress, TellsEachItemAndEndsAtTheTotal) {
    const UDMProgressScope scope(ann, listener);
    EXPECT_EQ(Import(), 3);
    Names names;
    for (const UDMProgress& progress : listener.heard) {
        if (progress.total > 0 && (names.empty() || names.back() != progress.name)) {
            names.push_back(progress.name);
        }
        EXPECT_LE(progress.done, 3U);
        EXPECT_LE(progress.doneBytes, 9U);
    }
    EXPECT_THAT(names,
                ElementsAre(Path("tree/a.txt"), Path("tree/b.txt"), Path("tree/sub/c.txt"), ""));
    const UDMProgress& last = listener.heard.back();
    EXPECT_EQ(last.done, 3U);
    EXPECT_EQ(last.total, 3U);
    EXPECT_EQ(last.doneBytes, 9U);
    EXPECT_EQ(last.totalBytes, 9U);
}

TEST_F(BulkImportProgress, NeverGoesBack) {
    Write("tree/large.txt", std::string(5 << 20, 'x'));
    const UDMProgressScope scope(ann, listener);
    Import();
    UDMProgress before;
    std::size_t withinLarge = 0;
    for (const UDMProgress& progress : listener.heard) {
        EXPECT_GE(progress.done, before.done);
        EXPECT_GE(progress.doneBytes, before.doneBytes);
        EXPECT_GE(progress.total, before.total);
        withinLarge += progress.name == Path("tree/large.txt") ? 1 : 0;
        before = progress;
    }
    EXPECT_GT(withinLarge, 4U);
}

TEST_F(BulkImportProgress, I16_KeepsWholeContentsWhenItIsCancelled) {
    listener.onAdvance = [&](const UDMProgress& progress) {
        return progress.name != Path("tree/b.txt");
    };
    const UDMProgressScope scope(ann, listener);
    EXPECT_EQ(Import(), 1);
    EXPECT_TRUE(scope.WasCancelled());
    EXPECT_EQ(listener.heard.back().name, Path("tree/b.txt"));
    EXPECT_THAT(In(ann, "/tree"), ElementsAre("a.txt: TextDocument"));
    EXPECT_EQ(Retrieved(ann, Find(ann, "/tree", "a.txt")), "12345");
    EXPECT_EQ(VaultFiles(), 1U);
}

TEST_F(BulkImportProgress, I16_CanBeCancelledWithinAFile) {
    Write("tree/aa.txt", std::string(5 << 20, 'x'));
    listener.onAdvance = [&](const UDMProgress& progress) {
        return progress.name != Path("tree/aa.txt") || progress.doneBytes < (2 << 20);
    };
    const UDMProgressScope scope(ann, listener);
    EXPECT_EQ(Import(), 1);
    EXPECT_THAT(In(ann, "/tree"), ElementsAre("a.txt: TextDocument"));
    EXPECT_EQ(VaultFiles(), 1U);
}

TEST_F(BulkImportProgress, I16_DoesNothingIfItIsCancelledBeforeTheFirstFile) {
    listener.onAdvance = [](const UDMProgress& /*progress*/) { return false; };
    const UDMProgressScope scope(ann, listener);
    EXPECT_EQ(Import({}, "/R"), 0);
    EXPECT_TRUE(scope.WasCancelled());
    EXPECT_EQ(listener.heard.size(), 1U);
    EXPECT_THAT(In(ann, "/R"), ElementsAre("absent"));
}

TEST_F(BulkImportProgress, I16_TakesAStrictImportBackWhenItIsCancelled) {
    listener.onAdvance = [&](const UDMProgress& progress) {
        return progress.name != Path("tree/b.txt");
    };
    const UDMProgressScope scope(ann, listener);
    EXPECT_THAT(Refusal<UDMCancelledException>([&] {
                    Import({{"strict", "true"}});
                }),
                HasSubstr("cancelled"));
    EXPECT_TRUE(scope.WasCancelled());
    EXPECT_THAT(In(ann, "/tree"), ElementsAre("absent"));
    EXPECT_EQ(VaultFiles(), 0U);
}

TEST_F(BulkImportProgress, GoesOnAfterACancelledImport) {
    {
        listener.onAdvance = [&](const UDMProgress& progress) {
            return progress.name != Path("tree/b.txt");
        };
        const UDMProgressScope scope(ann, listener);
        Import();
    }
    EXPECT_EQ(Import(), 2);
    EXPECT_THAT(In(ann, "/tree/sub"), ElementsAre("c.txt: TextDocument"));
}

TEST_F(BulkImportProgress, I16_LetsOutWhatTheListenerThrows) {
    listener.onAdvance = [&](const UDMProgress& progress) -> bool {
        if (progress.name == Path("tree/b.txt")) {
            throw std::out_of_range("no window");
        }
        return true;
    };
    const auto told = Listen(ann);
    const UDMProgressScope scope(ann, listener);
    EXPECT_THAT(Refusal<std::out_of_range>([&] { Import(); }), HasSubstr("no window"));
    EXPECT_THAT(In(ann, "/tree"), ElementsAre("a.txt: TextDocument"));
    EXPECT_THAT(told->Take(), ElementsAre("42 tree"));
}

}  // namespace
}  // namespace kxudm::test
