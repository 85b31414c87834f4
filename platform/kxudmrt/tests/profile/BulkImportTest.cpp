#include "ImportTree.h"
#include "profile/ImportOptions.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class BulkImport : public ImportFixture {};

TEST_F(BulkImport, MakesFoldersAndContentsWithTheirFiles) {
    Write("tree/a.inp", "*NODE\n1, 0, 0, 0\n");
    Write("tree/results/b.frd", "result");
    Write("tree/results/deep/notes.txt", "a note");
    EXPECT_EQ(Import(), 3);
    EXPECT_THAT(In(ann, "/tree"), ElementsAre("a.inp: UDMDSFileDeck", "results: Foldertype"));
    EXPECT_THAT(In(ann, "/tree/results"),
                ElementsAre("b.frd: UDMDSFileResult", "deep: Foldertype"));
    EXPECT_THAT(In(ann, "/tree/results/deep"), ElementsAre("notes.txt: TextDocument"));
    const UDMItemHandle deck = Find(ann, "/tree", "a.inp");
    EXPECT_TRUE(deck.IsEditable());
    EXPECT_THAT(Documents(ann, deck), ElementsAre("a.inp"));
    EXPECT_EQ(Retrieved(ann, deck), "*NODE\n1, 0, 0, 0\n");
}

TEST_F(BulkImport, I1_PutsEverythingBelowTheRootThatItMakesWithItsParents) {
    Write("tree/a.inp", "a");
    const std::string single = Write("single.txt", "s");
    EXPECT_EQ(ann->AddFoldersAndFiles({Path("tree")}, {single}, "/A/B", {}), 2);
    EXPECT_THAT(In(ann, "/A/B"), ElementsAre("single.txt: TextDocument", "tree: Foldertype"));
    EXPECT_THAT(In(ann, "/A/B/tree"), ElementsAre("a.inp: UDMDSFileDeck"));
}

TEST_F(BulkImport, I1_TakesASlashAndAnEmptyRootForTheTop) {
    const std::string first = Write("first.txt", "1");
    const std::string second = Write("second.txt", "2");
    EXPECT_EQ(ann->AddFoldersAndFiles({}, {first}, "/", {}), 1);
    EXPECT_EQ(ann->AddFoldersAndFiles({}, {second}, "", {}), 1);
    kxStlVector<UDMItemHandle> hits;
    ann->RunQuery(hits, "type == TextDocument", -1, 0, 0, {}, true, false);
    EXPECT_THAT(DisplayNames(hits), ElementsAre("first.txt", "second.txt"));
    kxStlVector<UDMItemHandle> folders;
    ann->GetParents(folders, hits.front(), "folder", false);
    EXPECT_TRUE(folders.empty());
}

TEST_F(BulkImport, I1_RefusesARootThatIsNoPath) {
    const std::string file = Write("a.txt", "a");
    for (const char* root : {"A", "/A//B", "/A/", "/A/../B", "/\xFF"}) {
        EXPECT_THAT(Refusal([&] { ann->AddFoldersAndFiles({}, {file}, root, {}); }),
                    HasSubstr("folder path"))
            << root;
    }
    EXPECT_EQ(VaultFiles(), 0U);
}

TEST_F(BulkImport, I2_MakesTheRootAndEmptyFoldersToo) {
    std::filesystem::create_directories(Path("tree/empty/deeper"));
    EXPECT_EQ(Import({}, "/R"), 0);
    EXPECT_THAT(In(ann, "/R/tree/empty"), ElementsAre("deeper: Foldertype"));
    EXPECT_EQ(ann->AddFoldersAndFiles({}, {}, "/Only", {}), 0);
    EXPECT_THAT(In(ann, "/Only"), IsEmpty());
}

TEST_F(BulkImport, I1_NamesAFolderAfterWhatThePathStandsFor) {
    Write("tree/sub/a.txt", "a");
    EXPECT_EQ(ann->AddFoldersAndFiles({Path("tree/")}, {}, "/1", {}), 1);
    EXPECT_EQ(ann->AddFoldersAndFiles({Path("tree/sub/..")}, {}, "/2", {}), 1);
    EXPECT_EQ(ann->AddFoldersAndFiles({Path("tree/sub/.")}, {}, "/3", {}), 1);
    EXPECT_THAT(In(ann, "/1"), ElementsAre("tree: Foldertype"));
    EXPECT_THAT(In(ann, "/2"), ElementsAre("tree: Foldertype"));
    EXPECT_THAT(In(ann, "/3"), ElementsAre("sub: Foldertype"));
}

TEST_F(BulkImport, I5_DescribesTheFileWhereTheDefinitionHasAPlaceForIt) {
    Write("tree/a.INP", "12345");
    Write("tree/.profile", "x");
    Import();
    const UDMItemHandle deck = Find(ann, "/tree", "a.INP");
    EXPECT_EQ(deck.GetCdef(), "UDMDSFileDeck");
    EXPECT_EQ(deck.GetAttributeValue("filetype"), kxVariant("INP"));
    EXPECT_EQ(deck.GetAttributeValue("filesize"), kxVariant(5));
    EXPECT_THAT(deck.GetAttributeValue("filelastmodified").GetString(), HasSubstr("Z"));
    const UDMItemHandle hidden = Find(ann, "/tree", ".profile");
    EXPECT_EQ(hidden.GetCdef(), "Document");
    EXPECT_TRUE(hidden.GetAttributeValue("filetype").IsEmpty());
}

TEST_F(BulkImport, StoresEqualFilesOnce) {
    for (int i = 0; i < 10; ++i) {
        Write("tree/" + std::to_string(i) + ".txt", "the same");
    }
    EXPECT_EQ(Import(), 10);
    EXPECT_EQ(VaultFiles(), 1U);
}

TEST_F(BulkImport, TakesFilesOfEverySize) {
    const std::string large(3 << 20, 'x');
    Write("tree/empty.txt", "");
    Write("tree/large.txt", large);
    EXPECT_EQ(Import(), 2);
    EXPECT_EQ(Retrieved(ann, Find(ann, "/tree", "empty.txt")), "");
    EXPECT_EQ(Retrieved(ann, Find(ann, "/tree", "large.txt")), large);
}

TEST_F(BulkImport, I10_FollowsLinksToFilesAndFolders) {
    Write("elsewhere/b.txt", "linked");
    Write("tree/a.txt", "a");
    std::filesystem::create_symlink(Path("elsewhere/b.txt"), Path("tree/link.txt"));
    std::filesystem::create_directory_symlink(Path("elsewhere"), Path("tree/folder"));
    EXPECT_EQ(Import(), 3);
    EXPECT_EQ(Retrieved(ann, Find(ann, "/tree", "link.txt")), "linked");
    EXPECT_THAT(In(ann, "/tree/folder"), ElementsAre("b.txt: TextDocument"));
}

// --- Options ---

TEST_F(BulkImport, I2_StaysInTheNamedFoldersUnlessRecursive) {
    Write("tree/a.txt", "a");
    Write("tree/sub/b.txt", "b");
    EXPECT_EQ(Import({{"recursive", "false"}}), 1);
    EXPECT_THAT(In(ann, "/tree"), ElementsAre("a.txt: TextDocument"));
    EXPECT_EQ(Import({{"recursive", "true"}}), 1);
    EXPECT_THAT(In(ann, "/tree/sub"), ElementsAre("b.txt: TextDocument"));
}

TEST_F(BulkImport, I3_TakesWhatIsIncludedAndTheFoldersThatItNeeds) {
    Write("tree/a.inp", "a");
    Write("tree/a.log", "log");
    Write("tree/sub/b.inp", "b");
    Write("tree/logs/c.log", "c");
    const std::string single = Write("single.log", "s");
    EXPECT_EQ(ann->AddFoldersAndFiles({Path("tree")}, {single}, "", {{"include", "*.inp;*.frd"}}),
              2);
    EXPECT_THAT(In(ann, "/tree"), ElementsAre("a.inp: UDMDSFileDeck", "sub: Foldertype"));
}

TEST_F(BulkImport, I3_LeavesAloneWhatIsExcludedWithAllBelowIt) {
    Write("tree/a.inp", "a");
    Write("tree/a.bak", "old");
    Write("tree/.git/config", "g");
    Write("tree/sub/.git/config", "g");
    Write("tree/sub/tmp/x.inp", "x");
    Write("tree/tmp/y.inp", "y");
    EXPECT_EQ(Import({{"exclude", ".git;*.bak;sub/tmp"}}), 2);
    EXPECT_THAT(In(ann, "/tree"),
                ElementsAre("a.inp: UDMDSFileDeck", "sub: Foldertype", "tmp: Foldertype"));
    EXPECT_THAT(In(ann, "/tree/sub"), IsEmpty());
}

TEST_F(BulkImport, I4_GivesAllFilesTheDefinitionThatIsNamed) {
    Write("tree/a.inp", "a");
    Write("tree/b.txt", "b");
    EXPECT_EQ(Import({{"definition", "UDMReport"}}), 2);
    EXPECT_THAT(In(ann, "/tree"), ElementsAre("a.inp: UDMReport", "b.txt: UDMReport"));
}

TEST_F(BulkImport, I6_PublishesWithTheComment) {
    Write("tree/a.inp", "a");
    const ProfilePtr bob = Open("bob");
    EXPECT_EQ(Import({{"publish", "true"}, {"comment", "as delivered"}}), 1);
    const UDMItemHandle deck = Find(bob, "/tree", "a.inp");
    EXPECT_EQ(deck.GetRevision(), 1);
    EXPECT_FALSE(deck.IsEditable());
    EXPECT_EQ(deck.GetAttributeValue("smd_comment"), kxVariant("as delivered"));
    EXPECT_EQ(Retrieved(bob, deck), "a");
}

TEST_F(BulkImport, I6_KeepsContentsPrivateUntilTheyArePublished) {
    Write("tree/a.inp", "a");
    EXPECT_EQ(Import({{"comment", "a first try"}}), 1);
    const ProfilePtr bob = Open("bob");
    EXPECT_THAT(In(bob, "/tree"), IsEmpty());
    const UDMItemHandle deck = Find(ann, "/tree", "a.inp");
    EXPECT_EQ(deck.GetRevision(), 0);
    EXPECT_EQ(deck.GetAttributeValue("smd_comment"), kxVariant("a first try"));
    ann->PersistEntity(deck, "", false, true, true);
    EXPECT_EQ(Retrieved(bob, Find(bob, "/tree", "a.inp")), "a");
}

TEST_F(BulkImport, I7_RecordsExternalFilesWithoutTakingThem) {
    Write("tree/a.inp", "outside");
    EXPECT_EQ(Import({{"external", "true"}}), 1);
    EXPECT_EQ(VaultFiles(), 0U);
    const UDMItemHandle deck = Find(ann, "/tree", "a.inp");
    kxStlVector<UDMGenericDocument> documents;
    ann->GetDocuments(deck, documents, true);
    ASSERT_EQ(documents.size(), 1U);
    EXPECT_EQ(documents.front().GetPath(), Path("tree/a.inp"));
    EXPECT_EQ(documents.front().GetSize(), 7);
}

TEST_F(BulkImport, I14_RefusesAnUnknownOptionBeforeItDoesAnything) {
    Write("tree/a.inp", "a");
    const std::string refusal = Refusal([&] { Import({{"recurse", "true"}}); });
    EXPECT_THAT(refusal, HasSubstr("\"recurse\" is unknown"));
    EXPECT_THAT(
        refusal,
        HasSubstr("comment, definition, exclude, external, include, publish, recursive, strict"));
    EXPECT_THAT(In(ann, "/tree"), ElementsAre("absent"));
}

TEST_F(BulkImport, I14_RefusesValuesThatAnOptionDoesNotTake) {
    for (const char* name : {"recursive", "publish", "external", "strict"}) {
        for (const char* value : {"", "yes", "TRUE", "1"}) {
            EXPECT_THAT(Refusal([&] {
                            Import({{kxString(name), kxString(value)}});
                        }),
                        HasSubstr("The import option \"" + std::string(name) + "\" is \"" + value +
                                  "\"; it must be \"true\" or \"false\""));
        }
    }
    EXPECT_THAT(Refusal([&] { Import({{"comment", "\xFF"}}); }), HasSubstr("not UTF-8"));
    EXPECT_THAT(Refusal([&] {
                    Import({{"comment", std::string("a\0b", 3)}});
                }),
                HasSubstr("without zero bytes"));
}

TEST_F(BulkImport, I4_RefusesDefinitionsThatAreAbstractOrOfFoldersOrUnknown) {
    Write("tree/a.inp", "a");
    EXPECT_THAT(Refusal([&] { Import({{"definition", "Foldertype"}}); }), HasSubstr("folders"));
    EXPECT_THAT(Refusal([&] { Import({{"definition", "FileContent"}}); }), HasSubstr("abstract"));
    EXPECT_THAT(Refusal<UDMNotFoundException>([&] {
                    Import({{"definition", "Nothing"}});
                }),
                HasSubstr("Nothing"));
    EXPECT_THAT(In(ann, "/tree"), ElementsAre("absent"));
}

TEST(GlobList, I3_ComparesNamesUnlessTheGlobHasASlash) {
    const profile::GlobList globs("*.inp;sub/*.txt;[ab]?");
    EXPECT_TRUE(globs.Matches("x.inp"));
    EXPECT_TRUE(globs.Matches("deep/down/x.inp"));
    EXPECT_TRUE(globs.Matches("sub/x.txt"));
    EXPECT_TRUE(globs.Matches("b1"));
    EXPECT_FALSE(globs.Matches("x.txt"));
    EXPECT_FALSE(globs.Matches("sub/deep/x.txt"));
    EXPECT_FALSE(globs.Matches("above/sub/x.txt"));
    EXPECT_FALSE(globs.Matches("c1"));
    EXPECT_FALSE(globs.Matches("x.INP"));
}

TEST(GlobList, I3_MatchesNothingIfItIsEmpty) {
    EXPECT_TRUE(profile::GlobList("").Empty());
    EXPECT_TRUE(profile::GlobList(";;").Empty());
    EXPECT_FALSE(profile::GlobList(";;").Matches("a"));
    EXPECT_TRUE(profile::GlobList(";a;").Matches("a"));
    EXPECT_TRUE(profile::GlobList("\\*").Matches("*"));
    EXPECT_FALSE(profile::GlobList("\\*").Matches("a"));
}

TEST(GlobList, I3_BlanksAroundAGlobDoNotCount) {
    const profile::GlobList globs(" *.inp ; a b.txt;\t;c\\ ");
    EXPECT_TRUE(globs.Matches("x.inp"));
    EXPECT_TRUE(globs.Matches("a b.txt"));
    EXPECT_TRUE(globs.Matches("c "));
    EXPECT_FALSE(globs.Matches("c"));
    EXPECT_FALSE(globs.Matches("\t"));
    EXPECT_TRUE(profile::GlobList(" ").Empty());
}

// --- What is there already ---

TEST_F(BulkImport, I8_AddsNothingWhereTheSameTreeIsImportedAgain) {
    Write("tree/a.inp", "a");
    Write("tree/sub/b.txt", "b");
    EXPECT_EQ(Import({{"publish", "true"}}), 2);
    const auto told = Listen(ann);
    const UDMProgressScope scope(ann, listener);
    EXPECT_EQ(Import({{"publish", "true"}}), 0);
    EXPECT_EQ(scope.FailureCount(), 0U);
    EXPECT_THAT(told->Take(), IsEmpty());
    EXPECT_THAT(In(ann, "/tree"), ElementsAre("a.inp: UDMDSFileDeck", "sub: Foldertype"));
}

TEST_F(BulkImport, I8_TakesWhatIsNewInATreeThatWasImported) {
    Write("tree/sub/a.txt", "a");
    Import();
    Write("tree/sub/b.txt", "b");
    EXPECT_EQ(Import(), 1);
    EXPECT_THAT(In(ann, "/tree/sub"), ElementsAre("a.txt: TextDocument", "b.txt: TextDocument"));
}

TEST_F(BulkImport, I9_ReportsAChangedFileAndLeavesItsContentAsItIs) {
    const std::string changed = Write("tree/a.txt", "before");
    Import({{"publish", "true"}});
    Write("tree/a.txt", "after!");
    Write("tree/b.txt", "new");
    const UDMProgressScope scope(ann, listener);
    EXPECT_EQ(Import({{"publish", "true"}}), 1);
    EXPECT_THAT(listener.failed, ElementsAre(changed));
    EXPECT_THAT(listener.reasons.front(), HasSubstr("check that out and replace its file"));
    EXPECT_THAT(In(ann, "/tree"), ElementsAre("a.txt: TextDocument", "b.txt: TextDocument"));
    EXPECT_EQ(Retrieved(ann, Find(ann, "/tree", "a.txt")), "before");
    EXPECT_EQ(VaultFiles(), 2U);
}

TEST_F(BulkImport, ReportsAFileBesideAContentOfItsNameWithoutFile) {
    const std::string file = Write("tree/a.txt", "a");
    UDMItemHandle folder;
    ann->GetOrCreateFolder(folder, "/tree", true);
    ann->CreateAndAddChild("TextDocument", "a.txt", folder, "");
    const UDMProgressScope scope(ann, listener);
    EXPECT_EQ(Import(), 0);
    EXPECT_THAT(listener.failed, ElementsAre(file));
}

TEST_F(BulkImport, KnowsContentsAtTheTopFromOwnedOnes) {
    const std::string file = Write("a.txt", "a");
    const UDMItemHandle owner = ann->CreateEntity("UDMSimulation", "simulation");
    ann->CreateAndAddChild("UDMReport", "a.txt", owner, "");
    EXPECT_EQ(ann->AddFoldersAndFiles({}, {file}, "", {}), 1);
    EXPECT_EQ(ann->AddFoldersAndFiles({}, {file}, "", {}), 0);
}

TEST_F(BulkImport, I8_TakesTheFirstOfTwoFilesForOnePlace) {
    Write("x/tree/a.txt", "one");
    Write("x/tree/same.txt", "same");
    const std::string second = Write("y/tree/a.txt", "two");
    Write("y/tree/same.txt", "same");
    const UDMProgressScope scope(ann, listener);
    EXPECT_EQ(ann->AddFoldersAndFiles({Path("x/tree"), Path("y/tree")}, {}, "", {}), 2);
    EXPECT_THAT(listener.failed, ElementsAre(second));
    EXPECT_EQ(Retrieved(ann, Find(ann, "/tree", "a.txt")), "one");
}

TEST_F(BulkImport, I8_TakesExternalAndStoredFilesForDifferentOnes) {
    const std::string file = Write("tree/a.txt", "a");
    EXPECT_EQ(Import({{"external", "true"}}), 1);
    EXPECT_EQ(Import({{"external", "true"}}), 0);
    const UDMProgressScope scope(ann, listener);
    EXPECT_EQ(Import(), 0);
    EXPECT_THAT(listener.failed, ElementsAre(file));
}

// --- Who is told ---

TEST_F(BulkImport, I18_TellsEachParentOnceAndContentsNotAtAll) {
    UDMItemHandle folder;
    ann->GetOrCreateFolder(folder, "/tree", true);
    const ProfilePtr bob = Open("bob");
    const auto told = Listen(ann);
    const auto heard = Listen(bob);
    // More than one group of files.
    for (int i = 0; i < 1100; ++i) {
        Write("tree/" + std::to_string(i) + ".txt", "the same");
    }
    Write("tree/sub/b.txt", "b");
    EXPECT_EQ(Import({{"publish", "true"}}), 1101);
    EXPECT_THAT(told->Take(), ElementsAre("42 tree", "42 sub"));
    EXPECT_THAT(heard->Take(), ElementsAre("42 tree", "42 sub"));
    EXPECT_EQ(bob->GetChildCount(folder, "folder", ""), 1101U);
}

TEST_F(BulkImport, I18_TellsOthersNothingOfWhatTheyDoNotSee) {
    UDMItemHandle folder;
    ann->GetOrCreateFolder(folder, "/tree", true);
    const auto told = Listen(ann);
    const auto heard = Listen(Open("bob"));
    Write("tree/a.txt", "a");
    EXPECT_EQ(Import(), 1);
    EXPECT_THAT(told->Take(), ElementsAre("42 tree"));
    EXPECT_THAT(heard->Take(), IsEmpty());
}

TEST_F(BulkImport, ShowsInListingsThatWereThereBefore) {
    UDMItemHandle folder;
    ann->GetOrCreateFolder(folder, "/tree", true);
    Write("tree/a.txt", "a");
    EXPECT_THAT(In(ann, "/tree"), IsEmpty());
    Import();
    EXPECT_THAT(In(ann, "/tree"), ElementsAre("a.txt: TextDocument"));
}

TEST_F(BulkImport, I19_IsPartOfABulkEdit) {
    Write("tree/a.txt", "a");
    {
        const UDMBulkEdit edit(ann);
        EXPECT_EQ(Import(), 1);
    }
    EXPECT_THAT(In(ann, "/tree"), ElementsAre("absent"));
    UDMBulkEdit edit(ann);
    EXPECT_EQ(Import(), 1);
    edit.Commit();
    EXPECT_THAT(In(ann, "/tree"), ElementsAre("a.txt: TextDocument"));
}

}  // namespace
}  // namespace kxudm::test
