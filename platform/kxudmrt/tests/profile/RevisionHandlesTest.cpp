// What the handles of a session answer after each step of an entity's life is what the library has:
// what a session that is opened afterwards reads.
#include <map>

#include "Revisions.h"

namespace kxudm::test {
namespace {

using Facts = std::map<std::string, std::string>;

Facts FactsOf(const UDMItemHandle& handle) {
    Facts facts{
        {"definition", handle.GetCdef()},
        {"display name", handle.GetDisplayName()},
        {"editable", handle.IsEditable() ? "yes" : "no"},
        {"created", handle.GetCreationTime().GetString() + " " + handle.GetCreatedBy().GetString()},
        {"modified",
         handle.GetModifiedTime().GetString() + " " + handle.GetModifiedBy().GetString()},
        {"has parent", handle.hasparent() ? "yes" : "no"}};
    for (const kxString& name : handle.GetFilteredAttributeNameList(false)) {
        facts.emplace("attribute " + name, handle.GetAttributeValue(name).GetString());
    }
    return facts;
}

class RevisionHandles : public testing::Test {
  protected:
    // The newest revision, and the one before it.
    void ExpectAsStored(const UDMItemHandle& newest, const UDMItemHandle& former) {
        const ProfilePtr reader = library.Open("bob");
        EXPECT_EQ(Newest(bob, newest).GetUID(), Newest(reader, newest).GetUID());
        EXPECT_EQ(Newest(bob, newest).GetUID(), newest.GetUID());
        for (const UDMItemHandle& handle : {newest, former}) {
            EXPECT_EQ(FactsOf(handle), FactsOf(reader->GetEntity(handle.GetUID())));
        }
    }

    Library library;
    ProfilePtr ann = library.Open("ann");
    ProfilePtr bob = library.Open("bob");
    // Keeps what it is told: states that nobody holds are read again.
    boost::shared_ptr<Recorder> slot = Listen(bob);
};

TEST_F(RevisionHandles, AnswerWhatTheLibraryHasAfterEachStep) {
    const UDMItemHandle made = ann->CreateEntity("Part", "Wheel");
    ann->SetAttributeValue(made, "mass", 3.0);
    ann->SetDisplayName("Front wheel", made);
    Publish(ann, made, "first");
    const UDMItemHandle one = Newest(bob, made);
    bob->Checkout(one, "thicker");
    const UDMItemHandle two = Newest(bob, made);
    ExpectAsStored(two, one);
    bob->SetAttributeValue(two, "mass", 4.0);
    bob->SetDisplayName("Wheel, thick", two);
    bob->PersistEntity(two, "done", true, true, true);
    const UDMItemHandle three = Newest(bob, made);
    EXPECT_EQ(three.GetRevision(), 3);
    ExpectAsStored(three, two);
    bob->PersistEntity(three, "", false, true, true);
    ExpectAsStored(three, two);
    bob->Checkout(three, "");
    bob->UndoCheckout(three);
    ExpectAsStored(three, two);
}

TEST_F(RevisionHandles, ThatWereListedWithoutAttributesAnswerThemAfterACheckOut) {
    const UDMItemHandle parent = ann->CreateEntity("Part", "Car");
    ann->SetAttributeValue(parent, "mass", 3.0);
    const UDMItemHandle child = ann->CreateAndAddChild("Part", "Wheel", parent, "parts");
    Publish(ann, child);
    Publish(ann, parent);
    slot->updates.clear();
    kxStlVector<UDMItemHandle> parents;
    bob->GetParents(parents, Newest(bob, child), "owner", false);
    ASSERT_EQ(parents.size(), 1U);
    bob->Checkout(parents.front(), "");
    ExpectAsStored(Newest(bob, parent), parents.front());
}

TEST_F(RevisionHandles, OfACheckOutThatWasUndoneStandForTheNextOne) {
    const UDMItemHandle one = Published(bob, "Wheel");
    const UDMItemHandle undone = CheckOut(bob, one);
    bob->SetAttributeValue(undone, "mass", 9.0);
    bob->UndoCheckout(one);
    const UDMItemHandle two = CheckOut(bob, one);
    EXPECT_EQ(two.GetUID(), undone.GetUID());
    ExpectAsStored(undone, one);
}

}  // namespace
}  // namespace kxudm::test
