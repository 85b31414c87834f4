// Full text search finds what the session sees, and nothing else.
#include <kxudm/UDMMaintenance.h>

#include "FullText.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class FullTextRevisions : public FullText {
  protected:
    void Describe(const UDMItemHandle& handle, const kxString& description) {
        ann->SetAttributeValue(handle, "description", description);
    }

    ProfilePtr bob = library.Open("bob");
    ProfilePtr elsewhere = library.Open("ann", "laptop");
};

TEST_F(FullTextRevisions, OfAnotherUserAreNotFound) {
    Described("One", "bolt");
    EXPECT_THAT(Hits("bolt"), ElementsAre("One"));
    EXPECT_THAT(Search(bob, "bolt"), IsEmpty());
    EXPECT_THAT(Search(elsewhere, "bolt"), IsEmpty());
}

TEST_F(FullTextRevisions, AreFoundByEverybodyOncePublished) {
    Publish(ann, Described("One", "bolt"));
    EXPECT_THAT(Search(bob, "bolt"), ElementsAre("One"));
    EXPECT_THAT(Search(elsewhere, "bolt"), ElementsAre("One"));
}

TEST_F(FullTextRevisions, InWorkAreFoundByTheirOwnerByTheNewWordsAndByOthersByTheOld) {
    const UDMItemHandle one = Publish(ann, Described("One", "bolt"));
    EXPECT_THAT(Search(bob, "bolt"), ElementsAre("One"));
    Describe(CheckOut(ann, one), "screw");
    for (int again = 0; again < 2; ++again) {
        EXPECT_THAT(Hits("screw"), ElementsAre("One"));
        EXPECT_THAT(Hits("bolt"), IsEmpty());
        for (const ProfilePtr& other : {bob, elsewhere}) {
            EXPECT_THAT(Search(other, "bolt"), ElementsAre("One"));
            EXPECT_THAT(Search(other, "screw"), IsEmpty());
        }
    }
    ann->SaveEntity(Newest(ann, one), "so far", true);
    EXPECT_THAT(Search(bob, "screw"), IsEmpty());
    Publish(ann, one);
    EXPECT_THAT(Search(bob, "screw"), ElementsAre("One"));
    EXPECT_THAT(Search(bob, "bolt"), IsEmpty());
}

TEST_F(FullTextRevisions, ThatAreUndoneAreFoundByTheirOldWords) {
    const UDMItemHandle one = Publish(ann, Described("One", "bolt"));
    Describe(CheckOut(ann, one), "screw");
    EXPECT_THAT(Hits("screw"), ElementsAre("One"));
    ann->UndoCheckout(one);
    EXPECT_THAT(Hits("screw"), IsEmpty());
    EXPECT_THAT(Hits("bolt"), ElementsAre("One"));
}

TEST_F(FullTextRevisions, PublishedAndKeptAreFoundByBoth) {
    const UDMItemHandle one = Described("One", "bolt");
    Publish(ann, one, "", true);
    EXPECT_THAT(Search(bob, "bolt"), ElementsAre("One"));
    Describe(Newest(ann, one), "screw");
    EXPECT_THAT(Hits("screw"), ElementsAre("One"));
    EXPECT_THAT(Search(bob, "bolt"), ElementsAre("One"));
}

TEST_F(FullTextRevisions, WithAnAttributeThatWasEmptiedAreNotFoundByIt) {
    const UDMItemHandle one = Publish(ann, Described("One", "bolt"));
    Describe(CheckOut(ann, one), "");
    EXPECT_THAT(Hits("bolt"), IsEmpty());
    ann->SetAttributeValue(Newest(ann, one), "description", kxVariant());
    EXPECT_THAT(Hits("bolt"), IsEmpty());
    EXPECT_THAT(Search(bob, "bolt"), ElementsAre("One"));
}

TEST_F(FullTextRevisions, OfOneEntityShareItsName) {
    const UDMItemHandle one = Publish(ann, Part("Bolt"));
    ann->SetAttributeValue(CheckOut(ann, one), "name", "Screw");
    EXPECT_THAT(Search(bob, "screw").size(), 1U);
    EXPECT_THAT(Hits("screw").size(), 1U);
}

TEST_F(FullTextRevisions, ThatAreDeletedAreNotFoundUntilTheyAreBroughtBack) {
    const UDMItemHandle one = Publish(ann, Described("One", "bolt"));
    EXPECT_THAT(Hits("bolt"), ElementsAre("One"));
    ann->DeleteEntity(Newest(ann, one), true, false);
    EXPECT_THAT(Hits("bolt"), IsEmpty());
    UDMMaintenance(ann).Undelete(Base(one));
    EXPECT_THAT(Hits("bolt"), ElementsAre("One"));
    EXPECT_THAT(Search(bob, "bolt"), ElementsAre("One"));
}

TEST_F(FullTextRevisions, ThatArePurgedLeaveNoWords) {
    const UDMItemHandle one = Publish(ann, Described("One", "bolt"));
    Part("Last");
    EXPECT_THAT(Hits("bolt"), ElementsAre("One"));
    ann->DeleteEntity(Newest(ann, one), true, false);
    UDMPurgeOptions options;
    options.minimumAge = std::chrono::seconds(0);
    options.deletedEntities = true;
    EXPECT_EQ(UDMMaintenance(ann).Purge(options).entities, 1U);
    EXPECT_THAT(Hits("bolt"), IsEmpty());
    EXPECT_EQ(Pending(), 0);
    EXPECT_THAT(UDMMaintenance(ann).Verify(), IsEmpty());
}

TEST_F(FullTextRevisions, OfABranchAreFoundByTheWordsOfTheirOrigin) {
    const UDMItemHandle one = Described("One", "bolt");
    Put(one, "deck.txt", "washer");
    Publish(ann, one);
    ann->SetDisplayName("Changed", CheckOut(ann, one));
    Describe(Newest(ann, one), "screw");
    Publish(ann, one);
    ann->Checkout(ann->GetEntity(At(one, 1)), "");
    EXPECT_THAT(Hits("bolt"), ElementsAre("One"));
    EXPECT_THAT(Hits("screw"), ElementsAre("Changed"));
    EXPECT_THAT(Hits("washer"), ElementsAre("Changed", "One"));
    EXPECT_THAT(Search(bob, "bolt"), IsEmpty());
}

TEST_F(FullTextRevisions, WithoutVersionsAreFoundByEverybodyAtOnce) {
    const UDMItemHandle note = ann->CreateEntity("Note", "Remark");
    ann->SetAttributeValue(note, "text", "beware");
    EXPECT_THAT(Search(bob, "beware"), ElementsAre("Remark"));
    bob->SetAttributeValue(Newest(bob, note), "text", "relax");
    EXPECT_THAT(Hits("relax"), ElementsAre("Remark"));
    EXPECT_THAT(Hits("beware"), IsEmpty());
}

}  // namespace
}  // namespace kxudm::test
