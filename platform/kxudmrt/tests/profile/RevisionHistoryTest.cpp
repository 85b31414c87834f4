// History, reading of older revisions, and how a local library stands to its data source.
#include "Revisions.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class RevisionHistory : public testing::Test {
  protected:
    std::vector<std::string> ParentsOfAnyRevision(const ProfilePtr& profile,
                                                  const UDMItemHandle& handle,
                                                  const kxString& relation) {
        kxStlVector<UDMItemHandle> parents;
        profile->GetParents(parents, handle, relation, true);
        return DisplayNames(parents);
    }

    Library library;
    ProfilePtr ann = library.Open("ann");
    ProfilePtr bob = library.Open("bob");
    UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
};

TEST_F(RevisionHistory, ListsVersionsAscendingAsTheSessionSeesThem) {
    EXPECT_THAT(Versions(ann, part), ElementsAre(0));
    Publish(ann, part);
    for (int i = 0; i < 11; ++i) {
        CheckOut(ann, part);
        Publish(ann, part);
    }
    CheckOut(ann, part);
    EXPECT_THAT(Versions(ann, Newest(ann, part)),
                ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13));
    EXPECT_THAT(Versions(bob, Newest(bob, part)),
                ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12));
}

TEST_F(RevisionHistory, TheRootIsTheRevisionAskedFor) {
    Publish(ann, part);
    CheckOut(ann, part);
    const auto root = ann->GetHistory(ann->GetEntity(At(part, 1)));
    EXPECT_EQ(root->GetBaseUID(), Base(part));
    EXPECT_EQ(root->GetVersion(), 1);
    ASSERT_EQ(root->GetVersionList().size(), 2u);
    EXPECT_EQ(root->GetVersionList()[1]->GetBaseUID(), Base(part));
    EXPECT_EQ(ann->GetHistory(Newest(ann, part))->GetVersion(), 2);
}

TEST_F(RevisionHistory, ListsBranchesInTheOrderOfTheirCreationAndWithTheVersionTheyLeave) {
    for (int i = 0; i < 3; ++i) {
        Publish(ann, part, "", i < 2);
    }
    std::vector<std::string> order;
    for (const int revision : {2, 1, 2}) {
        bob->Checkout(bob->GetEntity(At(part, revision)), "");
        const auto history = bob->GetHistory(Newest(bob, part));
        order.push_back(history->GetBranchList().back()->GetBaseUID());
        Publish(bob, bob->GetEntity(order.back()));
    }
    const auto root = ann->GetHistory(Newest(ann, part));
    ASSERT_EQ(root->GetBranchList().size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(root->GetBranchList()[i]->GetBaseUID(), order[i]);
        EXPECT_EQ(root->GetBranchList()[i]->GetVersion(), 1);
    }
    const auto& versions = root->GetVersionList();
    ASSERT_EQ(versions.size(), 3u);
    ASSERT_EQ(versions[0]->GetBranchList().size(), 1u);
    EXPECT_EQ(versions[0]->GetBranchList()[0]->GetBaseUID(), order[1]);
    ASSERT_EQ(versions[1]->GetBranchList().size(), 2u);
    EXPECT_TRUE(versions[2]->GetBranchList().empty());
    // A branch has a history of its own.
    EXPECT_THAT(Versions(ann, ann->GetEntity(order[0])), ElementsAre(1));
    EXPECT_TRUE(ann->GetHistory(ann->GetEntity(order[0]))->GetBranchList().empty());
}

TEST_F(RevisionHistory, AnOlderRevisionListsOnlyTheBranchesThatLeaveIt) {
    for (int i = 0; i < 3; ++i) {
        Publish(ann, part, "", i < 2);
    }
    bob->Checkout(bob->GetEntity(At(part, 2)), "");
    const auto branches = [&](int revision) {
        return ann->GetHistory(ann->GetEntity(At(part, revision)))->GetBranchList().size();
    };
    // Nobody else sees a branch that was never published.
    EXPECT_EQ(branches(2), 0u);
    const UDMItemHandle branch =
        bob->GetEntity(bob->GetHistory(Newest(bob, part))->GetBranchList().at(0)->GetBaseUID());
    Publish(bob, branch);
    EXPECT_EQ(branches(1), 0u);
    EXPECT_EQ(branches(2), 1u);
    EXPECT_EQ(branches(3), 1u);
}

TEST_F(RevisionHistory, ADeletedBranchIsListedNoMore) {
    Publish(ann, part, "", true);
    Publish(ann, part);
    ann->Checkout(ann->GetEntity(At(part, 1)), "");
    const UDMItemHandle newest = Newest(ann, part);
    const kxString branch = ann->GetHistory(newest)->GetBranchList().at(0)->GetBaseUID();
    ann->DeleteEntity(ann->GetEntity(branch), true, false);
    EXPECT_TRUE(ann->GetHistory(newest)->GetBranchList().empty());
}

TEST_F(RevisionHistory, EachRevisionAnswersWithItsOwnAttributesNameAndChildren) {
    const UDMItemHandle a = Published(ann, "A");
    const UDMItemHandle b = Published(ann, "B");
    const UDMItemHandle c = Published(ann, "C");
    ann->AddChild(part, a, "parts");
    ann->AddChild(part, b, "uses");
    UDMItemHandle at = Publish(ann, part, "", true);
    ann->SetAttributeValue(at, "mass", 2.0);
    ann->SetDisplayName("Rim", at);
    ann->RemoveChild(at, a);
    ann->AddChild(at, b, "parts");
    at = Publish(ann, part, "", true);
    ann->RemoveChild(at, b);
    ann->AddChild(at, c, "parts");
    ann->AddChild(at, a, "parts");
    Publish(ann, part);
    // Children stand at their newest revisions, whichever revision of the parent is read.
    const UDMItemHandle newA = CheckOut(ann, a);
    ann->SetDisplayName("A new", newA);
    Publish(ann, a);
    for (const ProfilePtr& session : {ann, bob, library.Open("carl")}) {
        const UDMItemHandle one = session->GetEntity(At(part, 1));
        const UDMItemHandle two = session->GetEntity(At(part, 2));
        const UDMItemHandle three = session->GetEntity(At(part, 3));
        EXPECT_EQ(one.GetDisplayName(), "Wheel");
        EXPECT_EQ(two.GetDisplayName(), "Rim");
        EXPECT_EQ(one.GetAttributeValue("mass"), kxVariant(1.5));
        EXPECT_EQ(three.GetAttributeValue("mass"), kxVariant(2.0));
        EXPECT_THAT(Children(session, one), ElementsAre("A new"));
        EXPECT_THAT(Children(session, one, "uses"), ElementsAre("B"));
        EXPECT_THAT(Children(session, two), ElementsAre("B"));
        EXPECT_THAT(Children(session, two, "uses"), ElementsAre("B"));
        EXPECT_THAT(Children(session, three), ElementsAre("C", "A new"));
        EXPECT_THAT(Children(session, three, "uses"), IsEmpty());
        EXPECT_EQ(session->GetChildCount(one, "", ""), 1u);
        EXPECT_EQ(session->GetChildCount(three, "parts", ""), 2u);
        EXPECT_FALSE(one.IsEditable());
    }
}

TEST_F(RevisionHistory, PlacesBelongToTheRevision) {
    UDMItemHandle f;
    UDMItemHandle g;
    ann->CreateFolder(f, "/F");
    ann->CreateFolder(g, "/G");
    ann->MoveContent(part, f);
    const UDMItemHandle two = Publish(ann, part, "", true);
    ann->MoveContent(two, g);
    const UDMItemHandle bobsOne = bob->GetEntity(Base(part));
    EXPECT_EQ(bobsOne.GetAttributeValue("smd_folder"), kxVariant("/F"));
    EXPECT_EQ(two.GetAttributeValue("smd_folder"), kxVariant("/G"));
    EXPECT_THAT(Children(bob, f, "folder"), ElementsAre("Wheel"));
    EXPECT_THAT(Children(bob, g, "folder"), IsEmpty());
    EXPECT_THAT(Children(ann, f, "folder"), IsEmpty());
    EXPECT_THAT(Children(ann, g, "folder"), ElementsAre("Wheel"));
    Publish(ann, part);
    EXPECT_THAT(Children(bob, f, "folder"), IsEmpty());
    EXPECT_THAT(Children(bob, g, "folder"), ElementsAre("Wheel"));
    EXPECT_EQ(bobsOne.GetAttributeValue("smd_folder"), kxVariant("/F"));
    EXPECT_THAT(Parents(bob, bobsOne, "folder"), ElementsAre("F"));
    EXPECT_THAT(ParentsOfAnyRevision(bob, Newest(bob, part), "folder"),
                UnorderedElementsAre("F", "G"));
}

TEST_F(RevisionHistory, ParentsOfAnyRevisionIncludeThoseThatGaveTheChildUp) {
    const UDMItemHandle child = Published(ann, "Child");
    ann->AddChild(part, child, "parts");
    ann->AddChild(part, child, "uses");
    const UDMItemHandle two = Publish(ann, part, "", true);
    ann->RemoveChild(two, child);
    // In ann's working revision it is gone already, for bob it is there.
    EXPECT_THAT(Parents(ann, child, "owner"), IsEmpty());
    EXPECT_THAT(ParentsOfAnyRevision(ann, child, "owner"), ElementsAre("Wheel"));
    EXPECT_THAT(Parents(bob, Newest(bob, child), "owner"), ElementsAre("Wheel"));
    Publish(ann, part);
    EXPECT_THAT(Parents(bob, Newest(bob, child), "owner"), IsEmpty());
    EXPECT_THAT(Parents(bob, Newest(bob, child), "reference"), IsEmpty());
    EXPECT_THAT(ParentsOfAnyRevision(bob, Newest(bob, child), "owner"), ElementsAre("Wheel"));
    EXPECT_THAT(ParentsOfAnyRevision(bob, Newest(bob, child), "uses"), ElementsAre("Wheel"));
    EXPECT_TRUE(child.IsRootEntity());
}

TEST_F(RevisionHistory, AnOwnerOfAnOlderRevisionOnlyIsNone) {
    const UDMItemHandle child = Published(ann, "Child");
    ann->AddChild(part, child, "parts");
    Publish(ann, part);
    const UDMItemHandle two = CheckOut(ann, part);
    ann->RemoveChild(two, child);
    EXPECT_THAT(Children(ann, ann->GetEntity(At(part, 1)), "parts"), ElementsAre("Child"));
    EXPECT_TRUE(child.IsRootEntity());
    EXPECT_FALSE(Newest(bob, child).IsRootEntity());
}

TEST_F(RevisionHistory, AParentThatIsNotSeenIsReportedForNoRevision) {
    const UDMItemHandle child = Published(ann, "Child");
    const UDMItemHandle other = CheckOut(ann, Published(ann, "Other"));
    ann->AddChild(part, child, "uses");
    ann->AddChild(other, child, "uses");
    EXPECT_THAT(ParentsOfAnyRevision(ann, child, "uses"), UnorderedElementsAre("Wheel", "Other"));
    EXPECT_THAT(ParentsOfAnyRevision(bob, Newest(bob, child), "uses"), IsEmpty());
}

TEST_F(RevisionHistory, ARevisionThatIsNotThereIsAnError) {
    Publish(ann, part);
    for (const char* revision :
         {":0", ":2", ":-1", ":01", ":1 ", ":", ":16777216", ":4294967297"}) {
        EXPECT_THROW(ann->GetEntity(Base(part) + revision), UDMNotFoundException) << revision;
    }
}

TEST_F(RevisionHistory, ALocalLibraryIsAlwaysInSync) {
    EXPECT_TRUE(ann->GetSyncStatus(part));
    ann->Synchronize(part);
    Publish(ann, part);
    const UDMItemHandle bobs = Newest(bob, part);
    CheckOut(ann, part);
    EXPECT_TRUE(bob->GetSyncStatus(bobs));
    bob->Synchronize(bobs);
    EXPECT_EQ(bobs.GetRevision(), 1);
    ann->DeleteEntity(Newest(ann, part), true, false);
    EXPECT_THROW(bob->GetSyncStatus(bobs), UDMNotFoundException);
    EXPECT_THROW(bob->Synchronize(bobs), UDMNotFoundException);
}

}  // namespace
}  // namespace kxudm::test
