#include "Library.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class BulkEdit : public testing::Test {
  protected:
    Library library;
    ProfilePtr ann = library.Open("ann");
    UDMItemHandle note = ann->CreateEntity("Note", "Note");
    boost::shared_ptr<Recorder> told = Listen(ann);
};

TEST_F(BulkEdit, N16_TellsEachParentOnceWhenItIsCommitted) {
    const auto heard = Listen(library.Open("bob"));
    UDMBulkEdit edit(ann);
    UDMItemHandle folder;
    ann->CreateFolder(folder, "/A");
    for (int i = 0; i < 20; ++i) {
        ann->CreateAndAddChild("Note", "a" + std::to_string(i), note, "answers");
        ann->CreateAndAddChild("Note", "f" + std::to_string(i), folder, "contents");
        ann->SetAttributeValue(note, "text", i);
    }
    EXPECT_THAT(told->Take(), IsEmpty());
    EXPECT_THAT(heard->Take(), IsEmpty());
    edit.Commit();
    EXPECT_THAT(told->Take(), ElementsAre("35 Note", "42 A", "3 Note"));
    EXPECT_THAT(heard->Take(), ElementsAre("35 Note", "42 A", "3 Note"));
    EXPECT_EQ(ann->GetChildCount(note, "answers", ""), 20U);
}

TEST_F(BulkEdit, N16_TellsAFolderThatWasLeftAndEnteredAgainBehindTheLeaving) {
    UDMItemHandle folder;
    UDMItemHandle other;
    ann->CreateFolder(folder, "/A");
    ann->CreateFolder(other, "/B");
    const auto heard = Listen(library.Open("bob"));
    told->Take();
    UDMBulkEdit edit(ann);
    ann->MoveContent(note, folder);
    ann->RemoveChild(folder, note);
    ann->MoveContent(note, folder);
    ann->MoveContent(note, other);
    ann->MoveContent(note, folder);
    edit.Commit();
    EXPECT_THAT(Children(ann, folder, "contents"), ElementsAre("Note"));
    const Names expected{"43 A Note", "43 A Note", "42 B", "43 B Note", "42 A"};
    EXPECT_EQ(told->Take(), expected);
    EXPECT_EQ(heard->Take(), expected);
}

TEST_F(BulkEdit, N16_TellsAParentThatLostAndGotBackAChildBehindTheLoss) {
    const UDMItemHandle answer = ann->CreateEntity("Note", "Answer");
    const auto heard = Listen(library.Open("bob"));
    UDMBulkEdit edit(ann);
    for (int i = 0; i < 3; ++i) {
        ann->AddChild(note, answer, "answers");
        ann->RemoveChild(note, answer);
    }
    ann->AddChild(note, answer, "answers");
    edit.Commit();
    const Names expected{"36 Note Answer", "36 Note Answer", "36 Note Answer", "35 Note"};
    EXPECT_EQ(told->Take(), expected);
    EXPECT_EQ(heard->Take(), expected);
}

TEST_F(BulkEdit, N16_TellsAParentOfALossAloneWhereNothingCameAfterIt) {
    const UDMItemHandle answer = ann->CreateEntity("Note", "Answer");
    UDMBulkEdit edit(ann);
    ann->AddChild(note, answer, "answers");
    ann->RemoveChild(note, answer);
    edit.Commit();
    EXPECT_THAT(told->Take(), ElementsAre("35 Note", "36 Note Answer"));
}

TEST_F(BulkEdit, N16_TellsAReferenceThatWasEndedAndMadeAgainBehindItsEnd) {
    const UDMItemHandle other = ann->CreateEntity("Note", "Other");
    const auto heard = Listen(library.Open("bob"));
    UDMBulkEdit edit(ann);
    ann->AddReference(note, other, "");
    ann->RemoveReference(note, other);
    ann->AddReference(note, other, "");
    edit.Commit();
    EXPECT_THAT(told->Take(), ElementsAre("41 Note Other", "40 Note"));
    EXPECT_THAT(heard->Take(), ElementsAre("41 Note Other", "40 Note"));
}

TEST_F(BulkEdit, N16_TellsAParentWhoseChildWasDeletedOfTheNextOneBehindIt) {
    UDMBulkEdit edit(ann);
    const UDMItemHandle doomed = ann->CreateAndAddChild("Note", "Doomed", note, "answers");
    const kxString uid = doomed.GetUID();
    ann->DeleteEntity(doomed, true, false);
    ann->CreateAndAddChild("Note", "Next", note, "answers");
    edit.Commit();
    EXPECT_THAT(told->Take(), ElementsAre("12 Note Doomed", "44 " + uid, "35 Note"));
}

TEST_F(BulkEdit, ShowsItsChangesToItsSessionAlone) {
    const ProfilePtr bob = library.Open("bob");
    UDMBulkEdit edit(ann);
    const UDMItemHandle answer = ann->CreateAndAddChild("Note", "Answer", note, "answers");
    EXPECT_THAT(Children(ann, note), ElementsAre("Answer"));
    EXPECT_THAT(Children(bob, note), IsEmpty());
    EXPECT_THROW(bob->GetEntity(answer.GetUID()), UDMNotFoundException);
    edit.Commit();
    EXPECT_THAT(Children(bob, note), ElementsAre("Answer"));
}

TEST_F(BulkEdit, TakesEverythingBackWithoutCommit) {
    const UDMItemHandle doomed = ann->CreateEntity("Note", "Doomed");
    UDMItemHandle created;
    {
        UDMBulkEdit edit(ann);
        created = ann->CreateAndAddChild("Note", "Answer", note, "answers");
        ann->SetAttributeValue(note, "text", "changed");
        ann->SetAttributeValue(note, "name", "Renamed");
        ann->DeleteEntity(doomed, true, false);
        EXPECT_FALSE(doomed.IsEditable());
        EXPECT_EQ(note.GetAttributeValue("text"), kxVariant("changed"));
    }
    EXPECT_TRUE(note.GetAttributeValue("text").IsEmpty());
    EXPECT_EQ(note.GetAttributeValue("name"), kxVariant("Note"));
    EXPECT_TRUE(doomed.IsEditable());
    EXPECT_THROW(created.GetAttributeValue("text"), UDMNotFoundException);
    EXPECT_THROW(ann->GetEntity(created.GetUID()), UDMNotFoundException);
    EXPECT_THAT(Children(ann, note), IsEmpty());
    EXPECT_THAT(told->Take(), IsEmpty());
    // And the session goes on.
    ann->SetAttributeValue(note, "text", "later");
    EXPECT_THAT(told->Take(), ElementsAre("3 Note"));
}

TEST_F(BulkEdit, GoesOnAfterAnOperationThatFailedBeforeItChangedAnything) {
    UDMBulkEdit edit(ann);
    ann->CreateAndAddChild("Note", "Answer", note, "answers");
    EXPECT_THROW(ann->CreateEntity("Nothing", "x"), UDMNotFoundException);
    EXPECT_THROW(ann->SetAttributeValue(note, "colour", "red"), UDMNotFoundException);
    EXPECT_THROW(ann->AddChild(note, note, "answers"), UDMException);
    edit.Commit();
    EXPECT_THAT(Children(ann, note), ElementsAre("Answer"));
}

TEST_F(BulkEdit, IsOneAtATimeAndCommittedOnce) {
    UDMBulkEdit edit(ann);
    EXPECT_THAT(Refusal([&] { UDMBulkEdit second(ann); }), HasSubstr("already"));
    edit.Commit();
    EXPECT_THROW(edit.Commit(), UDMException);
    UDMBulkEdit another(ann);
    another.Commit();
}

TEST_F(BulkEdit, EndsWithItsSession) {
    UDMItemHandle created;
    {
        UDMBulkEdit edit(ann);
        created = ann->CreateEntity("Note", "Lost");
        ProfilePtr closing = ann;
        UDMProfileMgr::DiscardProfile(closing);
        EXPECT_THROW(edit.Commit(), UDMException);
    }
    const ProfilePtr again = library.Open("ann");
    EXPECT_THROW(again->GetEntity(created.GetUID()), UDMNotFoundException);
}

TEST_F(BulkEdit, NeedsASession) {
    EXPECT_THROW(UDMBulkEdit edit{ProfilePtr()}, UDMException);
}

TEST_F(BulkEdit, DeletesManyAndTellsEachOfThem) {
    std::vector<std::string> expected;
    kxStlVector<UDMItemHandle> answers;
    for (int i = 0; i < 3; ++i) {
        answers.push_back(ann->CreateAndAddChild("Note", "a" + std::to_string(i), note, "answers"));
    }
    told->Take();
    UDMBulkEdit edit(ann);
    for (const UDMItemHandle& answer : answers) {
        ann->DeleteEntity(answer, true, false);
        expected.push_back("44 " + answer.GetUID());
        expected.push_back("12 Note " + answer.GetDisplayName());
    }
    edit.Commit();
    EXPECT_THAT(told->Take(), testing::UnorderedElementsAreArray(expected));
}

}  // namespace
}  // namespace kxudm::test
