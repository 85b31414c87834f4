// Adding, listing, replacing and removing documents.
#include <fcntl.h>
#include <kxudm/UDMProgress.h>
#include <sys/stat.h>

#include <limits>

#include "Files.h"

namespace kxudm::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

TEST_F(Files, F7_AreListedWithTheirFields) {
    const UDMItemHandle part = Part();
    const std::string source = Write("Front.INP", "GRID 1\n");
    const timespec time{1714521600, 0};
    const timespec times[] = {time, time};
    ASSERT_EQ(utimensat(AT_FDCWD, source.c_str(), times, 0), 0);
    AddFile(ann, part, source);
    const auto documents = Documents(ann, part);
    ASSERT_EQ(documents.size(), 1u);
    EXPECT_EQ(documents[0].GetName(), "Front.INP");
    EXPECT_EQ(documents[0].GetType(), "inp");
    EXPECT_EQ(documents[0].GetLastmodTime(), "2024-05-01T00:00:00Z");
    EXPECT_EQ(documents[0].GetSize(), 7);
    EXPECT_TRUE(documents[0].IsText());
    EXPECT_THAT(documents[0].GetPath(), StartsWith(library.BaseDirectory() + "/vault/"));
    EXPECT_EQ(ReadFile(documents[0].GetPath()), "GRID 1\n");
}

TEST_F(Files, F7_TellTextFromWhatIsNone) {
    const UDMItemHandle part = Part();
    Put(part,
        "a",
        std::string("\x7f"
                    "ELF\0\1",
                    6));
    Put(part, "b", "Grün\n");
    EXPECT_FALSE(Documents(ann, part)[0].IsText());
    EXPECT_TRUE(Documents(ann, part)[1].IsText());
}

TEST_F(Files, F7_WithoutExtensionHaveTheTypeOfTheirContentIfItHasOne) {
    const UDMItemHandle part = Part();
    Put(part, "LICENSE", "x");
    Put(part, ".profile", "x");
    EXPECT_EQ(Documents(ann, part)[0].GetType(), "");
    EXPECT_EQ(Documents(ann, part)[1].GetType(), "");
}

TEST_F(Files, F7_AreListedByNameBehindWhatTheListHolds) {
    const UDMItemHandle part = Part();
    Put(part, "b", "1");
    Put(part, "a", "2");
    Put(part, "B", "3");
    EXPECT_THAT(DocumentNames(ann, part), ElementsAre("B", "a", "b"));
    kxStlVector<UDMGenericDocument> documents(1);
    ann->GetDocuments(part, documents, true);
    EXPECT_EQ(documents.size(), 4u);
}

TEST_F(Files, AContentWithoutAnyHasAnEmptyList) {
    EXPECT_THAT(DocumentNames(ann, Part()), IsEmpty());
}

TEST_F(Files, F4_AddingANameTwiceIsRefusedAndTellsHowToReplaceIt) {
    const UDMItemHandle part = Part();
    Put(part, "a.inp", "1");
    const auto told = Listen(ann);
    EXPECT_THAT(Refusal([&] { Put(part, "a.inp", "2"); }),
                AllOf(HasSubstr("'a.inp'"), HasSubstr(part.GetUID()), HasSubstr("ReAddFile")));
    EXPECT_THAT(Contents(part), ElementsAre("a.inp=1"));
    EXPECT_THAT(told->Take(), IsEmpty());
}

TEST_F(Files, F2_APublishedRevisionRefusesEveryChange) {
    const UDMItemHandle part = Part();
    Put(part, "a", "1");
    const UDMItemHandle published = Publish(ann, part);
    const std::string source = Write("b", "2");
    for (const auto& change : std::vector<std::function<void()>>{
             [&] { AddFile(ann, published, source); },
             [&] { AddFile(ann, published, source, true); },
             [&] { ann->ReAddFile(published, Write("a", "2"), false, false); },
             [&] { ann->RemoveFile(published, "a"); },
             [&] { ann->SetVault(published, library.BaseDirectory() + "/fast"); }}) {
        EXPECT_THAT(Refusal(change), HasSubstr("check it out first"));
    }
    EXPECT_THAT(Contents(published), ElementsAre("a=1"));
}

TEST_F(Files, F3_WhatCanNameNoDocumentIsRefused) {
    const UDMItemHandle part = Part();
    for (const char* name : {"a\\b", "con.txt", "two\nlines", "end.", "\xff"}) {
        const std::string source = Write(name, "x");
        for (const bool external : {false, true}) {
            EXPECT_THAT(Refusal([&] { AddFile(ann, part, source, external); }),
                        HasSubstr("is no name for a document"))
                << name;
        }
    }
    EXPECT_THAT(DocumentNames(ann, part), IsEmpty());
    EXPECT_FALSE(Exists(library.BaseDirectory() + "/vault"));
}

TEST_F(Files, WhatIsNoFileIsRefused) {
    const UDMItemHandle part = Part();
    std::filesystem::create_directory(sources.File("folder"));
    for (const bool external : {false, true}) {
        EXPECT_THAT(Refusal([&] { AddFile(ann, part, "", external); }), HasSubstr("empty"));
        EXPECT_THAT(Refusal([&] { AddFile(ann, part, sources.Path() + "/", external); }),
                    HasSubstr("name a file"));
        EXPECT_THAT(Refusal([&] { AddFile(ann, part, sources.Path() + "/..", external); }),
                    HasSubstr("no name for a document"));
        EXPECT_THAT(
            Refusal<UDMStoreException>([&] { AddFile(ann, part, sources.File("none"), external); }),
            HasSubstr(sources.File("none")));
        EXPECT_THAT(Refusal<UDMStoreException>(
                        [&] { AddFile(ann, part, sources.File("folder"), external); }),
                    HasSubstr(sources.File("folder")));
    }
    EXPECT_THAT(DocumentNames(ann, part), IsEmpty());
}

TEST_F(Files, AnEmptyOneComesBackEmpty) {
    const UDMItemHandle part = Part();
    Put(part, "nothing", "");
    EXPECT_EQ(Documents(ann, part)[0].GetSize(), 0);
    EXPECT_THAT(Contents(part), ElementsAre("nothing="));
}

TEST_F(Files, EqualContentsAreStoredOnce) {
    Put(Part("Wheel"), "a", Deck(5000));
    Put(Part("Tyre"), "b", Deck(5000));
    EXPECT_EQ(vault::CountFiles(library.BaseDirectory() + "/vault"), 1u);
}

TEST_F(Files, AFolderMayHaveSomeToo) {
    UDMItemHandle folder;
    ann->CreateFolder(folder, "/Decks");
    Put(folder, "readme", "1");
    PutAgain(folder, "readme", "2");
    EXPECT_THAT(Contents(folder), ElementsAre("readme=2"));
}

TEST_F(Files, ARemovedOneIsGone) {
    const UDMItemHandle part = Part();
    Put(part, "a", "1");
    Put(part, "b", "2");
    ann->RemoveFile(part, "a");
    EXPECT_THAT(DocumentNames(ann, part), ElementsAre("b"));
    EXPECT_THAT(Refusal<UDMNotFoundException>([&] { ann->RemoveFile(part, "a"); }),
                AllOf(HasSubstr("no document 'a'"), HasSubstr("it has 'b'")));
    Put(part, "a", "3");
    EXPECT_THAT(Contents(part), ElementsAre("a=3", "b=2"));
}

TEST_F(Files, AnAdditionThatWasBegunNeedsNoMoreThanItsSession) {
    const UDMItemHandle part = Part();
    AddFileBuilder builder = ann->BeginAddFile(part);
    builder.setFilePath(Write("a", "1"));
    builder.go();
    EXPECT_THAT(DocumentNames(ann, part), ElementsAre("a"));
    UDMProfileMgr::DiscardProfile(ann);
    EXPECT_THAT(Refusal([&] { builder.setFilePath(Write("b", "1")).go(); }), HasSubstr("closed"));
}

TEST_F(Files, AClosedSessionRefusesEverything) {
    const UDMItemHandle part = Part();
    const ProfilePtr closed = ann;
    UDMProfileMgr::DiscardProfile(ann);
    kxStlVector<kxString> paths;
    for (const auto& operation : std::vector<std::function<void()>>{
             [&] { Documents(closed, part); },
             [&] { static_cast<void>(closed->BeginAddFile(part)); },
             [&] { closed->ReAddFile(part, "/a", false, false); },
             [&] { closed->RemoveFile(part, "a"); },
             [&] { closed->RetrieveFilesIntoWorkspace(part, false, false, paths); },
             [&] { closed->RetrieveFilesToPath(part, "/a", paths, ""); },
             [&] { closed->RetrieveFilesToFolder(part, "/a", false, false, paths); },
             [&] { closed->SetVault(part, "a"); }}) {
        EXPECT_THAT(Refusal(operation), HasSubstr("is closed"));
    }
}

// --- Replacing ---

TEST_F(Files, ReAddingTakesThePlaceOfTheDocumentOfThatName) {
    const UDMItemHandle part = Part();
    Put(part, "a.inp", "1");
    const std::string source = Write("a.inp", "22");
    ann->ReAddFile(part, source, false, false);
    EXPECT_THAT(Contents(part), ElementsAre("a.inp=22"));
    EXPECT_TRUE(Exists(source));
}

TEST_F(Files, F4_ReAddingWhatIsNotThereIsRefused) {
    const UDMItemHandle part = Part();
    EXPECT_THAT(Refusal<UDMNotFoundException>([&] { PutAgain(part, "a", "1"); }),
                AllOf(HasSubstr("no document 'a'"), HasSubstr("add it first")));
    EXPECT_THAT(DocumentNames(ann, part), IsEmpty());
}

TEST_F(Files, F2_ReAddingTheSameFileChangesNothing) {
    const UDMItemHandle part = Part();
    const std::string source = Write("a", "1");
    AddFile(ann, part, source);
    const auto told = Listen(ann);
    ann->ReAddFile(part, source, false, false);
    EXPECT_THAT(told->Take(), IsEmpty());
}

TEST_F(Files, F6_AMovedSourceGoesOnceItsDocumentIsThere) {
    const UDMItemHandle part = Part();
    Put(part, "a", "1");
    const std::string source = Write("a", "2");
    ann->ReAddFile(part, source, true, false);
    EXPECT_FALSE(Exists(source));
    EXPECT_THAT(Contents(part), ElementsAre("a=2"));
}

TEST_F(Files, F6_AMovedSourceGoesAlsoWhereNothingChanged) {
    const UDMItemHandle part = Part();
    const std::string source = Write("a", "1");
    AddFile(ann, part, source);
    ann->ReAddFile(part, source, true, false);
    EXPECT_FALSE(Exists(source));
}

TEST_F(Files, F6_AMovedSourceGoesWithTheCommitOfABulkEditAndStaysWithItsRollback) {
    const UDMItemHandle part = Part();
    Put(part, "a", "1");
    const std::string source = Write("a", "2");
    {
        UDMBulkEdit edit(ann);
        ann->ReAddFile(part, source, true, false);
        EXPECT_TRUE(Exists(source));
    }
    EXPECT_TRUE(Exists(source));
    EXPECT_THAT(Contents(part), ElementsAre("a=1"));
    {
        UDMBulkEdit edit(ann);
        ann->ReAddFile(part, source, true, false);
        EXPECT_TRUE(Exists(source));
        edit.Commit();
    }
    EXPECT_FALSE(Exists(source));
    EXPECT_THAT(Contents(part), ElementsAre("a=2"));
}

TEST_F(Files, F6_MovingALinkTakesTheLinkAway) {
    const UDMItemHandle part = Part();
    Put(part, "a", "1");
    const std::string real = Write("real", "2");
    std::filesystem::remove(sources.File("a"));
    std::filesystem::create_symlink(real, sources.File("a"));
    ann->ReAddFile(part, sources.File("a"), true, false);
    EXPECT_FALSE(Exists(sources.File("a")));
    EXPECT_TRUE(Exists(real));
    EXPECT_THAT(Contents(part), ElementsAre("a=2"));
}

TEST_F(Files, F6_WhatWouldBeMissedIsNotMoved) {
    const UDMItemHandle part = Part();
    const UDMItemHandle other = Part("Tyre");
    Put(part, "a", "1");
    AddFile(ann, other, Write("a", "2"), true);
    const auto move = [&](bool external) {
        ann->ReAddFile(part, sources.File("a"), true, external);
    };
    EXPECT_THAT(Refusal([&] { move(true); }), HasSubstr("an external file stays where it is"));
    EXPECT_THAT(Refusal([&] { move(false); }), HasSubstr("has it as an external file"));
    std::filesystem::create_directory_symlink(sources.Path(), sources.File("link"));
    EXPECT_THAT(Refusal([&] { ann->ReAddFile(part, sources.File("link/a"), true, false); }),
                HasSubstr("has it as an external file"));
    EXPECT_THAT(Contents(part), ElementsAre("a=1"));
    EXPECT_EQ(ReadFile(sources.File("a")), "2");
}

TEST_F(Files, F6_AContentOfAVaultIsNeitherMovedNorExternal) {
    const UDMItemHandle part = Part();
    Put(part, "a", "1");
    const std::string stored = StoredPath();
    const std::string name = std::filesystem::path(stored).filename();
    AddFile(ann, part, stored);
    EXPECT_THAT(Refusal([&] { ann->ReAddFile(part, stored, true, false); }),
                HasSubstr("part of a vault"));
    EXPECT_THAT(Refusal([&] { AddFile(ann, Part("Tyre"), stored, true); }),
                HasSubstr("lies in a vault"));
    EXPECT_TRUE(Exists(stored));
    EXPECT_THAT(Contents(part), testing::UnorderedElementsAre("a=1", name + "=1"));
}

// --- External files ---

TEST_F(Files, ExternalOnesStayWhereTheyAre) {
    const UDMItemHandle part = Part();
    const std::string source = Write("big.odb", Deck(100));
    std::filesystem::create_directory(sources.File("sub"));
    AddFile(ann, part, sources.File("sub/../big.odb"), true);
    Put(part, "a", "1");
    EXPECT_THAT(DocumentNames(ann, part), ElementsAre("a", "big.odb"));
    EXPECT_THAT(DocumentNames(ann, part, false), ElementsAre("a"));
    const UDMGenericDocument document = Documents(ann, part)[1];
    EXPECT_EQ(document.GetPath(), source);
    EXPECT_EQ(document.GetSize(), 100);
    EXPECT_EQ(document.GetType(), "odb");
    EXPECT_TRUE(document.IsText());
    EXPECT_EQ(vault::CountFiles(library.BaseDirectory() + "/vault"), 1u);
    EXPECT_THAT(Contents(part), ElementsAre("a=1", "big.odb=" + Deck(100)));
    EXPECT_TRUE(Exists(source));
}

TEST_F(Files, AnExternalOneOfManyGigabytesIsNotReadAndHasTheGreatestSize) {
    const UDMItemHandle part = Part();
    const std::string source = Write("big", "");
    std::filesystem::resize_file(source, std::uintmax_t{5} << 30);
    AddFile(ann, part, source, true);
    EXPECT_EQ(Documents(ann, part)[0].GetSize(), std::numeric_limits<std::int32_t>::max());
    EXPECT_FALSE(Documents(ann, part)[0].IsText());
}

TEST_F(Files, ADocumentMayBecomeExternalAndComeBack) {
    const UDMItemHandle part = Part();
    Put(part, "a", "1");
    const std::string source = Write("a", "2");
    ann->ReAddFile(part, source, false, true);
    EXPECT_EQ(Documents(ann, part)[0].GetPath(), source);
    ann->ReAddFile(part, source, false, false);
    std::filesystem::remove(source);
    EXPECT_THAT(Contents(part), ElementsAre("a=2"));
}

// --- Who is told ---

TEST_F(Files, N30_AChangeTellsThoseWhoSeeTheRevision) {
    const UDMItemHandle part = Part();
    const auto here = Listen(ann);
    const auto there = Listen(library.Open("ann", "desk"));
    const auto bob = Listen(library.Open("bob"));
    Put(part, "a", "1");
    PutAgain(part, "a", "2");
    ann->RemoveFile(part, "a");
    EXPECT_THAT(here->Take(), ElementsAre("3 Wheel", "3 Wheel", "3 Wheel"));
    EXPECT_THAT(there->Take(), ElementsAre("3 Wheel", "3 Wheel", "3 Wheel"));
    EXPECT_THAT(bob->Take(), IsEmpty());
    const UDMItemHandle note = ann->CreateEntity("Note", "Memo");
    Put(note, "a", "1");
    EXPECT_THAT(bob->Take(), ElementsAre("3 Memo"));
}

TEST_F(Files, F2_AChangeStampsTheRevision) {
    const UDMItemHandle note = ann->CreateEntity("Note", "Memo");
    const ProfilePtr bob = library.Open("bob");
    const UDMItemHandle seen = bob->GetEntity(note.GetUID());
    AddFile(bob, seen, Write("a", "1"));
    EXPECT_EQ(note.GetModifiedBy(), kxVariant("bob"));
    EXPECT_EQ(seen.GetModifiedBy(), kxVariant("bob"));
}

TEST_F(Files, ABulkEditTellsOncePerContent) {
    const UDMItemHandle part = Part();
    const auto told = Listen(ann);
    UDMBulkEdit edit(ann);
    Put(part, "a", "1");
    Put(part, "b", "2");
    EXPECT_THAT(DocumentNames(ann, part), ElementsAre("a", "b"));
    EXPECT_THAT(told->Take(), IsEmpty());
    edit.Commit();
    EXPECT_THAT(told->Take(), ElementsAre("3 Wheel"));
}

TEST_F(Files, ARolledBackBulkEditLeavesNone) {
    const UDMItemHandle note = ann->CreateEntity("Note", "Memo");
    const ProfilePtr bob = library.Open("bob");
    const UDMItemHandle seen = bob->GetEntity(note.GetUID());
    {
        UDMBulkEdit edit(bob);
        AddFile(bob, seen, Write("a", "1"));
    }
    EXPECT_THAT(DocumentNames(bob, seen), IsEmpty());
    EXPECT_EQ(seen.GetModifiedBy(), kxVariant("ann"));
}

class ByteCounter : public IUDMProgressListener {
  public:
    bool Advance(const UDMProgress& progress) override {
        EXPECT_GE(progress.doneBytes, last.doneBytes);
        last = progress;
        if (fail) {
            throw std::logic_error("the window is gone");
        }
        return ++calls != cancelAt;
    }

    UDMProgress last;
    int calls = 0;
    int cancelAt = 0;
    bool fail = false;
};

TEST_F(Files, AreTakenInUnderTheEyesOfAListener) {
    const UDMItemHandle part = Part();
    const std::string large = Write("a", Deck(5'500'000));
    for (const bool again : {false, true}) {
        ByteCounter counter;
        const UDMProgressScope scope(ann, counter);
        if (again) {
            ann->ReAddFile(part, large, false, false);
        } else {
            AddFile(ann, part, large);
        }
        EXPECT_GT(counter.calls, 5);
        EXPECT_EQ(counter.last.done, 1U);
        EXPECT_EQ(counter.last.total, 1U);
        EXPECT_EQ(counter.last.doneBytes, 5'500'000U);
        EXPECT_EQ(counter.last.totalBytes, 5'500'000U);
        EXPECT_EQ(counter.last.name, "");
    }
    ByteCounter counter;
    const UDMProgressScope scope(ann, counter);
    Put(part, "empty", "");
    EXPECT_EQ(counter.last.done, 1U);
    EXPECT_EQ(counter.last.totalBytes, 0U);
}

TEST_F(Files, ACancelledAdditionTakesNothingAtAnyMoment) {
    const UDMItemHandle part = Part();
    const std::string large = Write("a", Deck(5'500'000));
    const auto told = Listen(ann);
    bool cancelled = true;
    int moments = 0;
    while (cancelled) {
        ByteCounter counter;
        counter.cancelAt = ++moments;
        const UDMProgressScope scope(ann, counter);
        try {
            AddFile(ann, part, large);
            cancelled = false;
        } catch (const UDMCancelledException& cancellation) {
            EXPECT_THAT(cancellation.what(), HasSubstr(large));
            EXPECT_TRUE(scope.WasCancelled());
            EXPECT_EQ(counter.calls, moments);
            EXPECT_THAT(DocumentNames(ann, part), IsEmpty());
            EXPECT_THAT(told->Take(), IsEmpty());
            // All of it had been told when the last call came.
            EXPECT_EQ(vault::CountFiles(library.BaseDirectory() + "/vault"), counter.last.done);
        }
    }
    EXPECT_GT(moments, 5);
    EXPECT_THAT(DocumentNames(ann, part), ElementsAre("a"));
}

TEST_F(Files, ACancelledReplacementLeavesDocumentAndSource) {
    const UDMItemHandle part = Part();
    Put(part, "a", "old");
    const std::string large = Write("a", Deck(5'500'000));
    for (const int moment : {1, 2, 4}) {
        ByteCounter counter;
        counter.cancelAt = moment;
        const UDMProgressScope listening(ann, counter);
        EXPECT_THROW(ann->ReAddFile(part, large, true, false), UDMCancelledException);
        EXPECT_TRUE(Exists(large));
        // Retrieving is an operation of its own.
        counter.last = {};
        EXPECT_THAT(Contents(part), ElementsAre("a=old"));
    }
    ByteCounter counter;
    counter.fail = true;
    {
        const UDMProgressScope scope(ann, counter);
        EXPECT_THROW(ann->ReAddFile(part, large, true, false), std::logic_error);
    }
    EXPECT_THAT(Contents(part), ElementsAre("a=old"));
    ann->ReAddFile(part, large, true, false);
    EXPECT_FALSE(Exists(large));
}

}  // namespace
}  // namespace kxudm::test
