// Documents on their way out.
#include <kxudm/UDMProgress.h>
#include <sys/stat.h>

#include <fstream>

#include "Files.h"

namespace kxudm::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace fs = std::filesystem;

class FilesRetrieved : public Files {
  protected:
    FilesRetrieved() { fs::create_directory(folder); }

    // A file that is in the folder already.
    std::string InFolder(const std::string& name, const std::string& content) const {
        return sources.Write("out/" + name, content);
    }
    UDMItemHandle Child(const UDMItemHandle& parent,
                        const std::string& name,
                        const std::string& group = "parts") {
        return ann->CreateAndAddChild("Part", name, parent, group);
    }
    std::string Got(const std::string& name) const { return ReadFile(folder + "/" + name); }

    const std::string folder = sources.File("out");
};

TEST_F(FilesRetrieved, F8_ComeBackByteForByteWithTheirTimes) {
    const UDMItemHandle part = Part();
    const std::string noise = vault::Noise(3'000'000);
    Put(part, "deck.inp", Deck(2'500'000));
    Put(part, "noise.bin", noise);
    Put(part, "nothing", "");
    const auto time = fs::last_write_time(sources.File("deck.inp"));
    EXPECT_THAT(Retrieve(part, folder),
                ElementsAre(folder + "/deck.inp", folder + "/noise.bin", folder + "/nothing"));
    EXPECT_EQ(Got("deck.inp"), Deck(2'500'000));
    EXPECT_EQ(Got("noise.bin"), noise);
    EXPECT_EQ(Got("nothing"), "");
    const auto apart = fs::last_write_time(folder + "/deck.inp") - time;
    EXPECT_LT(std::chrono::abs(apart), std::chrono::microseconds(1));
    EXPECT_THAT(FilesIn(folder), ElementsAre("deck.inp", "noise.bin", "nothing"));
}

TEST_F(FilesRetrieved, PathsAreAppendedAndAbsolute) {
    const UDMItemHandle part = Part();
    Put(part, "a", "1");
    kxStlVector<kxString> paths{"before"};
    const fs::path relative = fs::relative(folder + "/x/../sub/");
    ann->RetrieveFilesToPath(part, relative.string() + "/", paths, "");
    EXPECT_THAT(paths, ElementsAre("before", folder + "/sub/a"));
    EXPECT_TRUE(Exists(folder + "/sub/a"));
    EXPECT_FALSE(Exists(folder + "/x"));
}

TEST_F(FilesRetrieved, F8_MakeTheirFolderWithItsParents) {
    const UDMItemHandle part = Part();
    Retrieve(part, folder + "/a/b");
    EXPECT_FALSE(Exists(folder + "/a"));  // nothing to write
    Put(part, "a", "1");
    Retrieve(part, folder + "/a/b");
    EXPECT_EQ(Got("a/b/a"), "1");
}

TEST_F(FilesRetrieved, WhatIsNoFolderIsRefused) {
    const UDMItemHandle part = Part();
    Put(part, "a", "1");
    InFolder("file", "x");
    EXPECT_THAT(Refusal([&] { Retrieve(part, ""); }), HasSubstr("must be named"));
    EXPECT_THAT(Refusal([&] { Retrieve(part, folder + "/file"); }), HasSubstr("is no folder"));
    EXPECT_THAT(Refusal<UDMStoreException>([&] { Retrieve(part, folder + "/file/below"); }),
                HasSubstr(folder + "/file"));
    fs::create_symlink(folder + "/file", folder + "/link");
    EXPECT_THAT(Refusal<UDMStoreException>([&] { Retrieve(part, folder + "/link"); }),
                HasSubstr(folder + "/link"));
    EXPECT_EQ(Got("file"), "x");
}

TEST_F(FilesRetrieved, ALinkToAFolderIsFollowed) {
    const UDMItemHandle part = Part();
    Put(part, "a", "1");
    fs::create_directory(sources.File("real"));
    fs::create_directory_symlink(sources.File("real"), folder + "/link");
    Retrieve(part, folder + "/link");
    EXPECT_EQ(ReadFile(sources.File("real/a")), "1");
}

TEST_F(FilesRetrieved, F9_AFileThatDiffersIsKeptAndNothingElseIsWritten) {
    const UDMItemHandle part = Part();
    Put(part, "a", "1");
    Put(part, "b", "2");
    Put(part, "c", "3");
    InFolder("b", "mine");
    EXPECT_THAT(Refusal<UDMStoreException>([&] { Retrieve(part, folder); }),
                AllOf(HasSubstr(folder + "/b"), HasSubstr("differs")));
    EXPECT_THAT(FilesIn(folder), ElementsAre("b"));
    EXPECT_EQ(Got("b"), "mine");
    // Of the same size, too.
    InFolder("b", "4");
    EXPECT_THROW(Retrieve(part, folder), UDMStoreException);
    kxStlVector<kxString> paths;
    EXPECT_THROW(ann->RetrieveFilesToPath(part, folder, paths, "b"), UDMStoreException);
    EXPECT_THAT(paths, IsEmpty());
}

TEST_F(FilesRetrieved, F9_EqualFilesAreLeftAlone) {
    const UDMItemHandle part = Part();
    Put(part, "a", Deck(5000));
    Put(part, "b", "2");
    InFolder("a", Deck(5000));
    struct stat before {};
    struct stat after {};
    ASSERT_EQ(stat((folder + "/a").c_str(), &before), 0);
    for (const bool overwrite : {false, true}) {
        EXPECT_THAT(Retrieve(part, folder, overwrite), ElementsAre(folder + "/a", folder + "/b"));
        ASSERT_EQ(stat((folder + "/a").c_str(), &after), 0);
        EXPECT_EQ(before.st_ino, after.st_ino);
    }
}

TEST_F(FilesRetrieved, F9_AFileThatDiffersIsReplacedWhereThatIsAllowed) {
    const UDMItemHandle part = Part();
    Put(part, "a", "1");
    InFolder("a", "mine");
    Retrieve(part, folder, true);
    EXPECT_EQ(Got("a"), "1");
}

TEST_F(FilesRetrieved, F9_WhatIsNoFileIsNeverReplaced) {
    const UDMItemHandle part = Part();
    Put(part, "a", "1");
    Put(part, "b", "1");
    fs::create_directory(folder + "/b");
    EXPECT_THAT(Refusal<UDMStoreException>([&] { Retrieve(part, folder, true); }),
                HasSubstr("is a folder"));
    fs::remove(folder + "/b");
    ASSERT_EQ(mkfifo((folder + "/b").c_str(), 0600), 0);
    EXPECT_THAT(Refusal<UDMStoreException>([&] { Retrieve(part, folder, true); }),
                HasSubstr("no regular file"));
    EXPECT_THAT(FilesIn(folder), ElementsAre("b"));
}

TEST_F(FilesRetrieved, F9_ALinkInTheWayIsReplacedAndWhatItPointsToIsNot) {
    const UDMItemHandle part = Part();
    Put(part, "a", "1");
    const std::string other = Write("other", "precious");
    fs::create_symlink(other, folder + "/a");
    EXPECT_THROW(Retrieve(part, folder), UDMStoreException);
    Retrieve(part, folder, true);
    EXPECT_EQ(ReadFile(other), "precious");
    EXPECT_FALSE(fs::is_symlink(folder + "/a"));
    EXPECT_EQ(Got("a"), "1");
}

TEST_F(FilesRetrieved, OneIsTakenByItsName) {
    const UDMItemHandle part = Part();
    Put(part, "a", "1");
    Put(part, "b", "2");
    kxStlVector<kxString> paths;
    ann->RetrieveFilesToPath(part, folder, paths, "b");
    EXPECT_THAT(paths, ElementsAre(folder + "/b"));
    EXPECT_THAT(FilesIn(folder), ElementsAre("b"));
    EXPECT_THAT(
        Refusal<UDMNotFoundException>([&] { ann->RetrieveFilesToPath(part, folder, paths, "c"); }),
        AllOf(HasSubstr("no document 'c'"), HasSubstr("'a', 'b'")));
}

TEST_F(FilesRetrieved, F12_IntoTheWorkspaceLieInItsDirectory) {
    const UDMItemHandle part = Part();
    Put(part, "a", "1");
    kxStlVector<kxString> paths;
    ann->RetrieveFilesIntoWorkspace(part, false, false, paths);
    const std::string directory = library.Folder().File("ws/ann/desk");
    EXPECT_THAT(paths, ElementsAre(directory + "/a"));
    EXPECT_EQ(ReadFile(directory + "/a"), "1");
}

// --- With children ---

TEST_F(FilesRetrieved, F10_OwnedChildrenGiveTheirsAtAnyDepthWhereAskedFor) {
    const UDMItemHandle car = Part("Car");
    const UDMItemHandle wheel = Child(car, "Wheel");
    const UDMItemHandle tyre = Child(wheel, "Tyre");
    const UDMItemHandle motor = Child(car, "Motor");
    const UDMItemHandle used = Part("Used");
    ann->AddChild(car, used, "uses");
    Put(car, "d", "1");
    Put(wheel, "c", "2");
    Put(tyre, "b", "3");
    Put(motor, "a", "4");
    Put(used, "e", "5");
    EXPECT_THAT(Retrieve(car, folder), ElementsAre(folder + "/d"));
    EXPECT_THAT(Retrieve(car, folder, false, true),
                ElementsAre(folder + "/d", folder + "/c", folder + "/b", folder + "/a"));
    EXPECT_THAT(FilesIn(folder), ElementsAre("a", "b", "c", "d"));
}

TEST_F(FilesRetrieved, F10_AChildThatSeveralShareGivesItsFilesOnce) {
    const UDMItemHandle car = Part("Car");
    const UDMItemHandle front = Child(car, "Front");
    const UDMItemHandle rear = Child(car, "Rear");
    const UDMItemHandle wheel = Child(front, "Wheel");
    ann->AddChild(rear, wheel, "parts");
    Put(wheel, "a", "1");
    EXPECT_THAT(Retrieve(car, folder, false, true), ElementsAre(folder + "/a"));
}

TEST_F(FilesRetrieved, F10_ChildrenGiveThoseOfTheRevisionThatTheSessionSees) {
    const UDMItemHandle car = Part("Car");
    const UDMItemHandle wheel = Child(car, "Wheel");
    Put(wheel, "a", "1");
    Publish(ann, wheel);
    const UDMItemHandle published = Publish(ann, car);
    PutAgain(CheckOut(ann, wheel), "a", "2");
    Retrieve(published, folder, false, true);
    EXPECT_EQ(Got("a"), "2");
    const ProfilePtr bob = library.Open("bob");
    kxStlVector<kxString> paths;
    bob->RetrieveFilesToFolder(
        bob->GetEntity(published.GetUID()), sources.File("bob"), false, true, paths);
    EXPECT_EQ(ReadFile(sources.File("bob/a")), "1");
}

TEST_F(FilesRetrieved, F10_DifferentDocumentsOfOneNameAreRefusedBeforeAnythingIsWritten) {
    const UDMItemHandle car = Part("Car");
    const UDMItemHandle wheel = Child(car, "Wheel");
    Put(car, "a", "1");
    Put(car, "b", "1");
    Put(wheel, "b", "2");
    EXPECT_THAT(Refusal([&] { Retrieve(car, folder, true, true); }),
                AllOf(HasSubstr("'b'"), HasSubstr(car.GetUID()), HasSubstr(wheel.GetUID())));
    EXPECT_THAT(FilesIn(folder), IsEmpty());
}

TEST_F(FilesRetrieved, F10_EqualDocumentsOfOneNameAreWrittenOnce) {
    const UDMItemHandle car = Part("Car");
    const UDMItemHandle wheel = Child(car, "Wheel");
    Put(car, "b", "1");
    Put(wheel, "b", "1");
    EXPECT_THAT(Retrieve(car, folder, false, true), ElementsAre(folder + "/b"));
}

// --- External files ---

TEST_F(FilesRetrieved, F11_ExternalOnesAreCopied) {
    const UDMItemHandle part = Part();
    const std::string source = Write("a", Deck(700'000));
    AddFile(ann, part, source, true);
    Retrieve(part, folder);
    EXPECT_EQ(Got("a"), Deck(700'000));
    Retrieve(part, folder);
    InFolder("a", Deck(700'000, 2));
    EXPECT_THROW(Retrieve(part, folder), UDMStoreException);
    Retrieve(part, folder, true);
    EXPECT_EQ(Got("a"), Deck(700'000));
    EXPECT_EQ(ReadFile(source), Deck(700'000));
}

TEST_F(FilesRetrieved, F11_AnExternalOneIsLeftAloneInItsOwnFolder) {
    const UDMItemHandle part = Part();
    AddFile(ann, part, InFolder("a", "1"), true);
    for (const bool overwrite : {false, true}) {
        EXPECT_THAT(Retrieve(part, folder, overwrite), ElementsAre(folder + "/a"));
    }
    EXPECT_EQ(Got("a"), "1");
}

TEST_F(FilesRetrieved, F11_AnExternalOneThatIsMissingOrChangedIsAnErrorThatNamesIt) {
    const UDMItemHandle part = Part();
    const std::string source = Write("b", "1");
    Put(part, "a", "1");
    AddFile(ann, part, source, true);
    Write("b", "22");
    EXPECT_THAT(Refusal<UDMStoreException>([&] { Retrieve(part, folder); }),
                AllOf(HasSubstr(source),
                      HasSubstr("was changed"),
                      HasSubstr("it was 1 bytes"),
                      HasSubstr("is 2 bytes")));
    Write("b", "1");
    fs::last_write_time(source, fs::last_write_time(source) + std::chrono::hours(1));
    EXPECT_THAT(Refusal<UDMStoreException>([&] { Retrieve(part, folder); }),
                HasSubstr("was changed"));
    fs::remove(source);
    EXPECT_THAT(Refusal<UDMStoreException>([&] { Retrieve(part, folder); }),
                AllOf(HasSubstr(source), HasSubstr("is missing")));
    EXPECT_THAT(FilesIn(folder), IsEmpty());
}

// --- Libraries that can't be trusted ---

TEST_F(FilesRetrieved, F3_AHostileNameDoesNotLeaveTheFolder) {
    const UDMItemHandle part = Part();
    Put(part, "a", "1");
    for (const char* name : {"../escaped", "/tmp/kxudm-escaped", "..", "sub/a", "a\nb"}) {
        Tamper("UPDATE file SET name = '" + std::string(name) + "'");
        EXPECT_THAT(Refusal([&] { Retrieve(part, folder, true); }),
                    AllOf(HasSubstr(part.GetUID()), HasSubstr("can't be retrieved")));
        kxStlVector<kxString> paths;
        EXPECT_THAT(Refusal([&] { ann->RetrieveFilesToPath(part, folder, paths, name); }),
                    HasSubstr("can't be retrieved"));
    }
    EXPECT_THAT(FilesIn(folder), IsEmpty());
    EXPECT_FALSE(Exists(sources.File("escaped")));
    EXPECT_FALSE(Exists("/tmp/kxudm-escaped"));
    // It can be listed and removed.
    EXPECT_THAT(DocumentNames(ann, part), ElementsAre("a\nb"));
    ann->RemoveFile(part, "a\nb");
}

TEST_F(FilesRetrieved, AHostileVaultOrHashIsRefused) {
    const UDMItemHandle part = Part();
    Put(part, "a", "1");
    for (const char* vault : {"../elsewhere", "/etc", "vault/x", "a//b", "."}) {
        Tamper("UPDATE file SET vault = '" + std::string(vault) + "'");
        EXPECT_THROW(Retrieve(part, folder), UDMException) << vault;
    }
    Tamper("UPDATE file SET vault = NULL, hash = '../../../../etc/passwd'");
    EXPECT_THROW(Retrieve(part, folder), UDMException);
    EXPECT_THAT(FilesIn(folder), IsEmpty());
}

TEST_F(FilesRetrieved, F8_ADamagedContentIsAnErrorAndNothingIsWritten) {
    const UDMItemHandle part = Part();
    Put(part, "b", "1234");
    const std::string stored = StoredPath();
    Put(part, "a", "1");
    fs::permissions(stored, fs::perms::owner_all);
    std::ofstream(stored) << "1235";
    EXPECT_THAT(Refusal<UDMStoreException>([&] { Retrieve(part, folder + "/sub"); }),
                AllOf(HasSubstr(stored), HasSubstr("damaged")));
    EXPECT_THAT(FilesIn(folder), IsEmpty());
}

TEST_F(FilesRetrieved, AMissingContentIsAnErrorThatNamesTheDocument) {
    const UDMItemHandle part = Part();
    Put(part, "b", "1234");
    fs::remove(StoredPath());
    Put(part, "a", "1");
    EXPECT_THAT(Refusal<UDMStoreException>([&] { Retrieve(part, folder); }),
                AllOf(HasSubstr("'b'"), HasSubstr(part.GetUID()), HasSubstr("is missing")));
    EXPECT_THAT(FilesIn(folder), IsEmpty());
}

// --- Progress ---

class Counter : public IUDMProgressListener {
  public:
    bool Advance(const UDMProgress& progress) override {
        EXPECT_GE(progress.done, last.done);
        EXPECT_GE(progress.doneBytes, last.doneBytes);
        last = progress;
        ++calls;
        if (fail) {
            throw std::logic_error("the window is gone");
        }
        return calls != cancelAt;
    }

    UDMProgress last;
    int calls = 0;
    int cancelAt = 0;
    bool fail = false;
};

TEST_F(FilesRetrieved, AListenerHearsOfEachFileAndTheEnd) {
    const UDMItemHandle part = Part();
    Put(part, "a", Deck(2'500'000));
    Put(part, "b", "2");
    InFolder("b", "2");
    AddFile(ann, part, Write("c", "333"), true);
    Counter counter;
    {
        const UDMProgressScope scope(ann, counter);
        Retrieve(part, folder);
    }
    EXPECT_EQ(counter.last.done, 3u);
    EXPECT_EQ(counter.last.total, 3u);
    EXPECT_EQ(counter.last.doneBytes, 2'500'004u);
    EXPECT_EQ(counter.last.totalBytes, 2'500'004u);
    EXPECT_EQ(counter.last.name, "");
    EXPECT_GT(counter.calls, 6);
}

TEST_F(FilesRetrieved, CancellingAtAnyMomentLeavesTheFolderAsItWas) {
    const UDMItemHandle part = Part();
    Put(part, "a", Deck(2'500'000));
    Put(part, "b", "2");
    InFolder("b", "mine");
    bool cancelled = true;
    int moments = 0;
    while (cancelled) {
        Counter counter;
        counter.cancelAt = ++moments;
        UDMProgressScope scope(ann, counter);
        try {
            Retrieve(part, folder, true);
            cancelled = false;
        } catch (const UDMCancelledException& cancellation) {
            EXPECT_THAT(cancellation.what(), HasSubstr(folder));
            EXPECT_TRUE(scope.WasCancelled());
            EXPECT_EQ(counter.calls, moments);
            EXPECT_THAT(FilesIn(folder), ElementsAre("b"));
            EXPECT_EQ(Got("b"), "mine");
        }
    }
    EXPECT_GT(moments, 4);
    EXPECT_EQ(Got("b"), "2");
}

TEST_F(FilesRetrieved, WhatAListenerThrowsComesOutAndNothingIsWritten) {
    const UDMItemHandle part = Part();
    Put(part, "a", "1");
    Counter counter;
    counter.fail = true;
    const UDMProgressScope scope(ann, counter);
    EXPECT_THROW(Retrieve(part, folder + "/sub"), std::logic_error);
    EXPECT_THAT(FilesIn(folder), IsEmpty());
}

}  // namespace
}  // namespace kxudm::test
