// Documents through the life of revisions, for several users and sessions.
#include "ChildProcess.h"
#include "Files.h"

namespace kxudm::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class FilesOfRevisions : public Files {
  protected:
    // Publishes revision 1 with a=1 and b=1, 2 with a=2 and c=2, and has 3 checked out with b=3
    // and c=2.
    UDMItemHandle ThreeRevisions() {
        const UDMItemHandle part = Part();
        Put(part, "a", "1");
        Put(part, "b", "1");
        Publish(ann, part);
        const UDMItemHandle second = CheckOut(ann, part);
        PutAgain(second, "a", "2");
        ann->RemoveFile(second, "b");
        Put(second, "c", "2");
        Publish(ann, second);
        const UDMItemHandle third = CheckOut(ann, part);
        ann->RemoveFile(third, "a");
        Put(third, "b", "3");
        return third;
    }
    void ExpectOldOnes(const ProfilePtr& profile, const UDMItemHandle& part) {
        EXPECT_THAT(Contents(profile, profile->GetEntity(At(part, 1))), ElementsAre("a=1", "b=1"));
        EXPECT_THAT(Contents(profile, profile->GetEntity(At(part, 2))), ElementsAre("a=2", "c=2"));
    }
};

TEST_F(FilesOfRevisions, F1_AnOldRevisionGivesItsFilesAfterEveryLaterChange) {
    const UDMItemHandle third = ThreeRevisions();
    ExpectOldOnes(ann, third);
    EXPECT_THAT(Contents(third), ElementsAre("b=3", "c=2"));
    Publish(ann, third);
    ExpectOldOnes(ann, third);
    const ProfilePtr bob = library.Open("bob");
    ExpectOldOnes(bob, third);
    EXPECT_THAT(Contents(bob, Newest(bob, third)), ElementsAre("b=3", "c=2"));
}

TEST_F(FilesOfRevisions, F1_UndoBringsBackWhatWasRemovedOrReplaced) {
    const UDMItemHandle third = ThreeRevisions();
    PutAgain(third, "c", "3");
    PutAgain(third, "c", "4");
    ann->UndoCheckout(third);
    ExpectOldOnes(ann, third);
    EXPECT_THAT(Contents(Newest(ann, third)), ElementsAre("a=2", "c=2"));
    EXPECT_THAT(Contents(CheckOut(ann, third)), ElementsAre("a=2", "c=2"));
}

TEST_F(FilesOfRevisions, AKeptCheckOutGoesOnWithThem) {
    const UDMItemHandle part = Part();
    Put(part, "a", "1");
    const UDMItemHandle second = Publish(ann, part, "", true);
    EXPECT_EQ(second.GetRevision(), 2);
    PutAgain(second, "a", "2");
    EXPECT_THAT(Contents(ann->GetEntity(At(part, 1))), ElementsAre("a=1"));
    EXPECT_THAT(Contents(second), ElementsAre("a=2"));
}

TEST_F(FilesOfRevisions, F1_ABranchHasThoseOfItsOriginAndChangesThemForItself) {
    const UDMItemHandle third = ThreeRevisions();
    ann->Checkout(ann->GetEntity(At(third, 1)), "");
    const auto branches = ann->GetHistory(third)->GetBranchList();
    ASSERT_EQ(branches.size(), 1u);
    const UDMItemHandle branch = ann->GetEntity(branches[0]->GetBaseUID());
    EXPECT_THAT(Contents(branch), ElementsAre("a=1", "b=1"));
    PutAgain(branch, "a", "9");
    ann->RemoveFile(branch, "b");
    ExpectOldOnes(ann, third);
    EXPECT_THAT(Contents(branch), ElementsAre("a=9"));
    EXPECT_THAT(Contents(third), ElementsAre("b=3", "c=2"));
}

TEST_F(FilesOfRevisions, F13_OfADeletedContentNobodyGetsAny) {
    const UDMItemHandle third = ThreeRevisions();
    const UDMItemHandle second = ann->GetEntity(At(third, 2));
    ann->DeleteEntity(third, true, false);
    kxStlVector<kxString> paths;
    const std::string folder = library.Folder().File("out");
    for (const auto& operation : std::vector<std::function<void()>>{
             [&] { Documents(ann, second); },
             [&] { AddFile(ann, third, Write("d", "1")); },
             [&] { ann->RemoveFile(third, "b"); },
             [&] { ann->RetrieveFilesToPath(second, folder, paths, "a"); },
             [&] { ann->RetrieveFilesToFolder(second, folder, false, false, paths); }}) {
        EXPECT_THROW(operation(), UDMNotFoundException);
    }
    EXPECT_FALSE(Exists(folder));
}

TEST_F(FilesOfRevisions, SharingAContentTheyOutliveTheDeletionOfOne) {
    const UDMItemHandle part = Part();
    const UDMItemHandle other = Part("Tyre");
    Put(part, "a", "1");
    Put(other, "b", "1");
    ann->DeleteEntity(part, true, false);
    EXPECT_THAT(Contents(other), ElementsAre("b=1"));
}

TEST_F(FilesOfRevisions, OthersSeeThoseOfAWorkingRevisionOnceItIsPublished) {
    const UDMItemHandle part = Part();
    Put(part, "a", "1");
    Publish(ann, part);
    const ProfilePtr bob = library.Open("bob");
    const UDMItemHandle theirs = Newest(bob, part);
    const UDMItemHandle working = CheckOut(ann, part);
    PutAgain(working, "a", "2");
    EXPECT_THAT(Contents(bob, theirs), ElementsAre("a=1"));
    EXPECT_THAT(Refusal([&] { AddFile(bob, theirs, Write("b", "1")); }),
                AllOf(HasSubstr("ann"), HasSubstr("desk")));
    EXPECT_THAT(Refusal([&] { AddFile(bob, working, Write("b", "1")); }), HasSubstr("not visible"));
    Publish(ann, working);
    EXPECT_THAT(Contents(bob, Newest(bob, part)), ElementsAre("a=2"));
    EXPECT_THAT(Contents(bob, theirs), ElementsAre("a=1"));
}

TEST_F(FilesOfRevisions, TwoSessionsOfOneUserSeeThemAtOnce) {
    const UDMItemHandle part = Part();
    const ProfilePtr again = library.Open("ann");
    const UDMItemHandle same = again->GetEntity(part.GetUID());
    Put(part, "a", "1");
    EXPECT_THAT(DocumentNames(again, same), ElementsAre("a"));
    again->RemoveFile(same, "a");
    EXPECT_THAT(DocumentNames(ann, part), IsEmpty());
}

TEST_F(FilesOfRevisions, ACheckOutThatWasUndoneMeanwhileTakesNoFile) {
    const UDMItemHandle part = Part();
    Publish(ann, part);
    const UDMItemHandle working = CheckOut(ann, part);
    // While the content is on its way into the vault.
    vault::MeddlingLayer layer;
    const ProfilePtr layered = OpenOver(layer);
    const UDMItemHandle same = layered->GetEntity(working.GetUID());
    bool undone = false;
    layer.before = [&](const std::string& call, const std::string&) {
        if (call == "OpenToRead" && !std::exchange(undone, true)) {
            ann->UndoCheckout(working);
        }
    };
    EXPECT_THROW(AddFile(layered, same, Write("a", "1")), UDMNotFoundException);
    EXPECT_TRUE(undone);
    EXPECT_THAT(DocumentNames(ann, Newest(ann, part)), IsEmpty());
}

TEST(FilesOfProcesses, ADocumentSurvivesTheDeathOfTheProcess) {
    Library library;
    const vault::Folder sources;
    const std::string source = sources.Write("a", Deck(3000));
    Child child([&](int out) {
        const ProfilePtr ann = library.Open("ann");
        const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
        AddFile(ann, part, source);
        WriteLine(out, part.GetUID());
        _exit(0);
    });
    child.Go();
    const std::string uid = child.Line();
    EXPECT_EQ(child.Wait(), 0);
    const ProfilePtr ann = library.Open("ann");
    kxStlVector<kxString> paths;
    ann->RetrieveFilesToPath(ann->GetEntity(uid), sources.File("out"), paths, "a");
    EXPECT_EQ(ReadFile(sources.File("out/a")), Deck(3000));
}

}  // namespace
}  // namespace kxudm::test
