#include <kxudm/UDMBulkEdit.h>

#include <regex>
#include <vector>

#include "Library.h"
#include "store/LibraryStore.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class Entities : public testing::Test {
  protected:
    Library library;
    ProfilePtr ann = library.Open("ann");
};

TEST_F(Entities, S1_ANewVersionedOneIsEditableAtRevision0) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    EXPECT_TRUE(std::regex_match(part.GetUID(), std::regex("[0-9A-HJKMNP-TV-Z]{26}:0")));
    EXPECT_EQ(part.GetRevision(), 0);
    EXPECT_EQ(part.GetCdef(), "Part");
    EXPECT_EQ(part.GetDisplayName(), "Wheel");
    EXPECT_EQ(part.GetAttributeValue("name"), kxVariant("Wheel"));
    EXPECT_TRUE(part.IsEditable());
    EXPECT_TRUE(part.IsRootEntity());
    EXPECT_FALSE(part.hasparent());
}

TEST_F(Entities, S1_ANewVersionedOneIsSeenByItsUserInItsWorkspaceAlone) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    const kxString base = UDMUID(part.GetUID()).GetDmUid();
    const ProfilePtr sameWorkspace = library.Open("ann", "desk");
    const ProfilePtr otherWorkspace = library.Open("ann", "bench");
    const ProfilePtr otherUser = library.Open("bob", "desk");
    EXPECT_EQ(sameWorkspace->GetEntity(base).GetUID(), part.GetUID());
    for (const ProfilePtr& other : {otherWorkspace, otherUser}) {
        EXPECT_THAT(Refusal<UDMNotFoundException>([&] { other->GetEntity(base); }),
                    HasSubstr(base));
        EXPECT_THROW(other->GetEntity(part.GetUID()), UDMNotFoundException);
    }
}

TEST_F(Entities, S2_ANewUnversionedOneIsSeenByEverybodyAtOnce) {
    const UDMItemHandle note = ann->CreateEntity("Note", "Read me");
    const ProfilePtr bob = library.Open("bob");
    const UDMItemHandle seen = bob->GetEntity(note.GetUID());
    EXPECT_EQ(seen.GetDisplayName(), "Read me");
    EXPECT_TRUE(seen.IsEditable());
    bob->SetAttributeValue(seen, "text", "done");
    EXPECT_EQ(ann->GetEntity(note.GetUID()).GetAttributeValue("text"), kxVariant("done"));
}

TEST_F(Entities, S3_AnEditedAttributeIsThereInEveryHandleAndAfterReopening) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    const UDMItemHandle copy = part;
    ann->SetAttributeValue(part, "mass", 2.25);
    EXPECT_EQ(copy.GetAttributeValue("mass"), kxVariant(2.25));
    EXPECT_EQ(ann->GetEntity(part.GetUID()).GetAttributeValue("mass"), kxVariant(2.25));
    UDMProfileMgr::DiscardProfile(ann);
    const ProfilePtr again = library.Open("ann");
    EXPECT_EQ(again->GetEntity(part.GetUID()).GetAttributeValue("mass"), kxVariant(2.25));
}

TEST_F(Entities, S3_AnEditIsThereInTheHandlesThatAreLeftOfMany) {
    constexpr std::size_t MANY = 3000;
    std::vector<UDMItemHandle> notes;
    {
        UDMBulkEdit edit(ann);
        for (std::size_t i = 0; i < MANY; ++i) {
            notes.push_back(ann->CreateEntity("Note", "Page " + std::to_string(i)));
        }
        edit.Commit();
    }
    for (const std::size_t left : {MANY / 2, MANY / 10, MANY / 300}) {
        while (notes.size() > left) {
            notes.pop_back();
        }
        for (const UDMItemHandle& note : notes) {
            const kxString text = note.GetDisplayName() + " of " + std::to_string(left);
            ann->SetAttributeValue(ann->GetEntity(note.GetUID()), "text", text);
            EXPECT_EQ(note.GetAttributeValue("text"), kxVariant(text));
        }
    }
}

TEST_F(Entities, S11_CheckOutSavePublishAndUndoOfAnUnversionedOneSucceedAndDoNothing) {
    const UDMItemHandle note = ann->CreateEntity("Note", "Read me");
    const auto recorder = Listen(ann);
    ann->Checkout(note, "");
    ann->SaveEntity(note, "saved", true);
    ann->PersistEntity(note, "published", false, true, true);
    ann->UndoCheckout(note);
    EXPECT_EQ(ann->GetEntity(note.GetUID()).GetRevision(), 0);
    EXPECT_TRUE(note.IsEditable());
    EXPECT_EQ(ann->GetWorkingHandle(note).GetUID(), note.GetUID());
    EXPECT_THAT(recorder->told, testing::IsEmpty());
}

TEST_F(Entities, S12_ADeletedOneIsGoneForEverybody) {
    const UDMItemHandle note = ann->CreateEntity("Note", "Read me");
    const ProfilePtr bob = library.Open("bob");
    const UDMItemHandle seen = bob->GetEntity(note.GetUID());
    ann->DeleteEntity(note, true, false);
    for (const ProfilePtr& profile : {ann, bob}) {
        EXPECT_THAT(Refusal<UDMNotFoundException>([&] { profile->GetEntity(note.GetUID()); }),
                    HasSubstr(note.GetUID()));
    }
    for (const UDMItemHandle& handle : {note, seen}) {
        EXPECT_EQ(handle.GetDisplayName(), "Read me");
        EXPECT_FALSE(handle.IsEditable());
        EXPECT_THROW(handle.GetAttributeValue("text"), UDMNotFoundException);
        EXPECT_THROW(ann->SetAttributeValue(handle, "text", "x"), UDMNotFoundException);
    }
}

TEST_F(Entities, S12_DeletingTakesTheOwnedChildrenOfACompositionAlong) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    const UDMItemHandle drawing = ann->CreateAndAddChild("Drawing", "Front", part, "drawings");
    const UDMItemHandle other = ann->CreateAndAddChild("Part", "Screw", part, "parts");
    ann->DeleteEntity(part, true, false);
    EXPECT_THROW(ann->GetEntity(drawing.GetUID()), UDMNotFoundException);
    // Owned, but not by a composition: it stays and becomes a root entity.
    EXPECT_TRUE(ann->GetEntity(other.GetUID()).IsRootEntity());
}

TEST_F(Entities, S12_DeletingWithoutChildrenRefusesOneThatOwnsSome) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    const UDMItemHandle drawing = ann->CreateAndAddChild("Drawing", "Front", part, "drawings");
    EXPECT_THAT(Refusal([&] { ann->DeleteEntity(part, false, false); }),
                HasSubstr("owns 1 children"));
    ann->DeleteEntity(drawing, false, false);
    ann->DeleteEntity(part, false, false);
    EXPECT_THROW(ann->GetEntity(part.GetUID()), UDMNotFoundException);
}

TEST_F(Entities, S13_DeletingWhatSomebodyElseHasCheckedOutIsRefusedUnlessForced) {
    const UDMItemHandle note = ann->CreateEntity("Note", "Shared");
    const ProfilePtr bob = library.Open("bob", "bench");
    // Below Ann's note, where she doesn't see it.
    const UDMItemHandle draft = bob->CreateAndAddChild("Drawing", "Draft", note, "sketches");
    EXPECT_THAT(Children(ann, note), testing::IsEmpty());
    const std::string refusal = Refusal([&] { ann->DeleteEntity(note, true, false); });
    EXPECT_THAT(refusal, HasSubstr("bob"));
    EXPECT_THAT(refusal, HasSubstr("bench"));
    EXPECT_EQ(bob->GetEntity(draft.GetUID()).GetDisplayName(), "Draft");
    ann->DeleteEntity(note, true, true);
    EXPECT_THROW(bob->GetEntity(draft.GetUID()), UDMNotFoundException);
}

TEST_F(Entities, DefaultsAreThereFromTheBeginning) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    EXPECT_EQ(part.GetAttributeValue("mass"), kxVariant(1.5));
    EXPECT_EQ(part.GetAttributeValue("spare"), kxVariant(false));
    EXPECT_TRUE(part.GetAttributeValue("count").IsEmpty());
}

TEST_F(Entities, AnEmptiedAttributeStaysEmptyWhateverItsDefault) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    ann->SetAttributeValue(part, "mass", kxVariant());
    EXPECT_TRUE(part.GetAttributeValue("mass").IsEmpty());
    UDMProfileMgr::DiscardProfile(ann);
    const ProfilePtr again = library.Open("ann");
    EXPECT_TRUE(again->GetEntity(part.GetUID()).GetAttributeValue("mass").IsEmpty());
}

TEST_F(Entities, AttributeNamesAreThoseWithAValueInTheOrderOfTheDefinition) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    ann->SetAttributeValue(part, "count", 3);
    EXPECT_THAT(part.GetFilteredAttributeNameList(true),
                ElementsAre("name", "displayname", "mass", "count", "spare"));
    EXPECT_THAT(part.GetFilteredAttributeNameList(false),
                testing::IsSupersetOf({"smd_contentrevision", "smd_id", "mass"}));
}

TEST_F(Entities, SystemAttributesAnswerWhatTheLibraryKeeps) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    EXPECT_EQ(part.GetAttributeValue("smd_contentrevision"), kxVariant(0));
    EXPECT_EQ(part.GetAttributeValue("smd_createduser"), kxVariant("ann"));
    EXPECT_EQ(part.GetAttributeValue("smd_user"), kxVariant("ann"));
    EXPECT_EQ(part.GetAttributeValue("smd_ctype"), kxVariant("Part"));
    EXPECT_EQ(part.GetAttributeValue("smd_id"), kxVariant(UDMUID(part.GetUID()).GetDmUid()));
    EXPECT_EQ(part.GetAttributeValue("smd_creatime"), part.GetCreationTime());
    EXPECT_EQ(part.GetAttributeValue("smd_ctime"), part.GetModifiedTime());
    EXPECT_TRUE(part.GetAttributeValue("smd_folder").IsEmpty());
    EXPECT_TRUE(part.GetAttributeValue("smd_branchfrom").IsEmpty());
    EXPECT_TRUE(std::regex_match(part.GetCreationTime().GetString(),
                                 std::regex("\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZ")));
}

TEST_F(Entities, TheModifyingUserIsWhoChangedItLast) {
    const UDMItemHandle note = ann->CreateEntity("Note", "Read me");
    const ProfilePtr bob = library.Open("bob");
    bob->SetAttributeValue(note, "text", "x");
    EXPECT_EQ(note.GetModifiedBy(), kxVariant("bob"));
    EXPECT_EQ(note.GetCreatedBy(), kxVariant("ann"));
}

TEST_F(Entities, SystemAttributesCanNotBeSet) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    EXPECT_THAT(Refusal([&] { ann->SetAttributeValue(part, "smd_user", "eve"); }),
                HasSubstr("smd_user"));
    EXPECT_EQ(part.GetAttributeValue("smd_user"), kxVariant("ann"));
}

TEST_F(Entities, AValueThatDoesNotFitIsRefusedAndChangesNothing) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    const auto recorder = Listen(ann);
    EXPECT_THAT(Refusal([&] { ann->SetAttributeValue(part, "material", "cheese"); }),
                HasSubstr("cheese"));
    EXPECT_THROW(ann->SetAttributeValue(part, "mass", "heavy"), UDMException);
    EXPECT_THROW(ann->SetAttributeValue(part, "name", ""), UDMException);
    EXPECT_TRUE(part.GetAttributeValue("material").IsEmpty());
    EXPECT_THAT(recorder->told, testing::IsEmpty());
}

TEST_F(Entities, ADisplayNameIsTextOrWhatHasAText) {
    // The definition of the first says what a display name is, that of the second doesn't.
    for (const kxString definition : {"Part", "Shelf"}) {
        const UDMItemHandle handle = ann->CreateEntity(definition, "Name");
        ann->SetAttributeValue(handle, "displayname", 12);
        EXPECT_EQ(handle.GetDisplayName(), "12");
        kxVariant pointer(static_cast<void*>(this), "kxct::Item");
        EXPECT_THAT(Refusal([&] { ann->SetAttributeValue(handle, "displayname", pointer); }),
                    HasSubstr("a pointer"));
        EXPECT_THROW(ann->SetDisplayName("\xff", handle), UDMException);
        EXPECT_THROW(ann->SetDisplayName(kxString("a\0b", 3), handle), UDMException);
        EXPECT_EQ(handle.GetDisplayName(), "12");
    }
}

TEST_F(Entities, DamagedAttributesAreAnErrorThatNamesTheRevision) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    {
        const auto store = store::LibraryStore::Open(library.File());
        sql::Statement spoil(store->Connection(), "UPDATE revision SET attributes = x'0105'");
        spoil.Run();
    }
    const ProfilePtr again = library.Open("ann");
    const UDMItemHandle spoiled = again->GetEntity(part.GetUID());
    const auto names = HasSubstr("the stored attributes of " + part.GetUID() + " are damaged");
    EXPECT_THAT(Refusal([&] { spoiled.GetAttributeValue("mass"); }), names);
    EXPECT_THAT(Refusal([&] { again->SetAttributeValue(spoiled, "mass", 2.0); }), names);
    EXPECT_THAT(Refusal([&] { ann->SetAttributeValue(part, "mass", 2.0); }), names);
    EXPECT_EQ(spoiled.GetDisplayName(), "Wheel");
}

TEST_F(Entities, AnUnknownAttributeIsAnErrorThatNamesIt) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    EXPECT_THAT(Refusal<UDMNotFoundException>([&] { part.GetAttributeValue("colour"); }),
                HasSubstr("colour"));
    EXPECT_THAT(
        Refusal<UDMNotFoundException>([&] { ann->SetAttributeValue(part, "colour", "red"); }),
        HasSubstr("colour"));
}

TEST_F(Entities, TheNameBelongsToTheEntityAndTheDisplayNameIsItsOwn) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    ann->SetAttributeValue(part, "name", "Disc");
    EXPECT_EQ(part.GetAttributeValue("name"), kxVariant("Disc"));
    EXPECT_EQ(part.GetDisplayName(), "Wheel");
    ann->SetDisplayName("The disc", part);
    EXPECT_EQ(part.GetDisplayName(), "The disc");
    EXPECT_EQ(part.GetAttributeValue("displayname"), kxVariant("The disc"));
    ann->SetAttributeValue(part, "displayname", "Disc 1");
    EXPECT_EQ(part.GetDisplayName(), "Disc 1");
}

TEST_F(Entities, UnknownAndAbstractDefinitionsCreateNothing) {
    EXPECT_THAT(Refusal<UDMNotFoundException>([&] { ann->CreateEntity("Nothing", "x"); }),
                HasSubstr("Nothing"));
    EXPECT_THAT(Refusal([&] { ann->CreateEntity("Item", "x"); }), HasSubstr("abstract"));
    EXPECT_THROW(ann->CreateEntity("Part", ""), UDMException);
    EXPECT_THROW(ann->CreateEntity("Part", "\xff"), UDMException);
}

TEST_F(Entities, TextsThatAreNoUidAreNotFound) {
    const kxString uid = ann->CreateEntity("Part", "Wheel").GetUID();
    const kxString base = UDMUID(uid).GetDmUid();
    for (const kxString& text : {kxString(),
                                 kxString(":"),
                                 kxString("x"),
                                 kxString(base + ":"),
                                 kxString(base + ":1"),
                                 kxString(base + ":-0"),
                                 kxString(base + ":00"),
                                 kxString(base + ": 0"),
                                 kxString(base + ":99999999999"),
                                 kxString(base + ":0:0"),
                                 kxString(base + " ")}) {
        EXPECT_THROW(ann->GetEntity(text), UDMNotFoundException) << text;
    }
}

TEST_F(Entities, AnEmptyHandleIsAnError) {
    const UDMItemHandle none;
    EXPECT_THAT(Refusal([&] { ann->SetAttributeValue(none, "mass", 1); }),
                HasSubstr("empty handle"));
    EXPECT_THROW(ann->DeleteEntity(none, true, false), UDMException);
}

TEST_F(Entities, AHandleOfAnotherSessionStandsForTheSameEntity) {
    const UDMItemHandle note = ann->CreateEntity("Note", "Read me");
    const ProfilePtr bob = library.Open("bob");
    bob->SetAttributeValue(note, "text", "from bob");
    EXPECT_EQ(note.GetAttributeValue("text"), kxVariant("from bob"));
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    EXPECT_THROW(bob->SetAttributeValue(part, "mass", 1), UDMNotFoundException);
}

TEST_F(Entities, AClosedSessionRefusesEverythingAndItsHandlesKeepWhatTheyKnow) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    ProfilePtr closing = ann;
    UDMProfileMgr::DiscardProfile(closing);
    EXPECT_THAT(Refusal([&] { ann->GetEntity(part.GetUID()); }), HasSubstr("closed"));
    EXPECT_THROW(ann->CreateEntity("Part", "x"), UDMException);
    EXPECT_EQ(part.GetDisplayName(), "Wheel");
    EXPECT_EQ(part.GetAttributeValue("mass"), kxVariant(1.5));
    EXPECT_FALSE(ann->GetSessionId().empty());
}

TEST_F(Entities, WorkingHandleOfANewContentIsItself) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    EXPECT_EQ(ann->GetWorkingHandle(part).GetUID(), part.GetUID());
}

}  // namespace
}  // namespace kxudm::test
