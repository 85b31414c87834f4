// What a purge takes and what it leaves, and what can be brought back until then.
#include "Maintained.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace fs = std::filesystem;

TEST_F(Maintained, APurgeRemovesOrphansAndNothingElse) {
    const vault::Stored orphan = Store("nobody's", Vault());
    const std::uint64_t size = fs::file_size(Content(orphan.hash));
    EXPECT_EQ(Purge(false, 60).contents, 0U);
    EXPECT_TRUE(fs::exists(Content(orphan.hash)));
    const UDMPurged purged = Purge();
    EXPECT_EQ(purged.contents, 1U);
    EXPECT_EQ(purged.bytes, size);
    EXPECT_EQ(purged.entities, 0U);
    EXPECT_FALSE(fs::exists(Content(orphan.hash)));
    EXPECT_TRUE(fs::exists(Content(used)));
    EXPECT_THAT(Verify(), IsEmpty());
    EXPECT_EQ(Purge().contents, 0U);
}

TEST_F(Maintained, APurgeLooksAfterVaultsBesideTheCommonOne) {
    const vault::Stored kept = Store("kept", library.BaseDirectory() + "/archive");
    const vault::Stored orphan = Store("nobody's", library.BaseDirectory() + "/archive");
    Sql("UPDATE file SET vault = 'archive', hash = '" + kept.hash + "'");
    // The content that the row named before is one more.
    EXPECT_THAT(Verify(), testing::UnorderedElementsAre(HasSubstr(orphan.hash), HasSubstr(used)));
    EXPECT_EQ(Purge().contents, 2U);
    EXPECT_THAT(Verify(), IsEmpty());
}

TEST_F(Maintained, APurgeRemovesWhatDeadProcessesLeft) {
    Write(Vault() + "/tmp/.part-" + std::string(32, '0') + "-1-1-1", "half");
    const std::string strange = Vault() + "/tmp/note";
    Write(strange, "x");
    const auto old = fs::file_time_type::clock::now() - std::chrono::hours(48);
    for (const auto& entry : fs::directory_iterator(Vault() + "/tmp")) {
        fs::last_write_time(entry.path(), old);
    }
    EXPECT_EQ(Purge().temporaries, 1U);
    EXPECT_TRUE(fs::exists(strange));
}

TEST_F(Maintained, DeletedEntitiesArePurgedOnRequestOnceTheyAreOldEnough) {
    const UDMItemHandle note = ann->CreateEntity("Note", "Last");
    ann->DeleteEntity(Newest(ann, wheel), true, false);
    EXPECT_EQ(Purge(false).entities, 0U);
    EXPECT_EQ(Purge(true, 60).entities, 0U);
    EXPECT_EQ(Care().DeletedEntities().size(), 2U);
    EXPECT_EQ(Purge(true).entities, 2U);
    EXPECT_THAT(Care().DeletedEntities(), IsEmpty());
    EXPECT_FALSE(Care().Undelete(Base(wheel)));
    EXPECT_FALSE(Sees(ann, Base(wheel)));
    EXPECT_TRUE(Sees(ann, Base(note)));
    EXPECT_THAT(Verify(), IsEmpty());
}

TEST_F(Maintained, FilesOfPurgedEntitiesGoWithThem) {
    const UDMItemHandle last = ann->CreateEntity("Note", "Last");
    ann->DeleteEntity(ann->GetEntity(rows.front().uid), true, false);
    EXPECT_EQ(Purge(false).contents, 0U);
    const UDMPurged purged = Purge(true);
    EXPECT_EQ(purged.entities, 1U);
    EXPECT_EQ(purged.contents, 1U);
    EXPECT_FALSE(fs::exists(Content(used)));
}

TEST_F(Maintained, TheYoungestEntityStaysUntilThereIsALaterOne) {
    const UDMItemHandle last = ann->CreateEntity("Note", "Last");
    ann->DeleteEntity(last, true, false);
    EXPECT_EQ(Purge(true).entities, 0U);
    ann->CreateEntity("Note", "Later");
    EXPECT_EQ(Purge(true).entities, 1U);
}

TEST_F(Maintained, ADeletionIsStillToldToWhoHearsOfItAfterThePurge) {
    const ProfilePtr bob = library.Open("bob");
    const UDMItemHandle note = ann->CreateEntity("Note", "Doomed");
    ann->CreateEntity("Note", "Later");
    const UDMItemHandle seen = Newest(bob, note);
    const auto told = Listen(bob);
    // Bob's session reads nothing while it is in a bulk edit, as another process would not.
    const std::string file = library.File();
    const auto store = store::LibraryStore::Open(file);
    const store::Stamp stamp{{"eve", "desk"}, 1};
    store::EntityRow row;
    ASSERT_TRUE(store->FindByUid(Base(note), store::THE_PUBLIC, row));
    store->Update([&] {
        store->Delete(row.id, stamp);
        store::JournalEntry entry;
        entry.time = 1;
        entry.op = SIGNAL_ENTITY_DELETED;
        entry.entity = row.id;
        entry.session = "another";
        store->Append(entry);
    });
    store->Connection().Execute("DELETE FROM revision WHERE id = " + std::to_string(row.id << 24));
    store->Connection().Execute("DELETE FROM entity WHERE id = " + std::to_string(row.id));
    UDMProfileMgr::DispatchUpdates();
    EXPECT_THAT(told->Take(), ElementsAre("44 " + seen.GetUID()));
    EXPECT_FALSE(seen.IsEditable());
    EXPECT_THROW(seen.GetAttributeValue("text"), UDMNotFoundException);
}

TEST_F(Maintained, CareIsNotForBulkEdits) {
    UDMBulkEdit edit(ann);
    EXPECT_THAT(Refusal([&] { Verify(); }), HasSubstr("bulk edit"));
    EXPECT_THAT(Refusal([&] { Purge(); }), HasSubstr("bulk edit"));
    EXPECT_THAT(Refusal([&] { Care().Undelete("x"); }), HasSubstr("bulk edit"));
}

TEST_F(Maintained, CareNeedsAnOpenSession) {
    EXPECT_THROW(UDMMaintenance{ProfilePtr()}, UDMException);
    UDMMaintenance care(ann);
    ProfilePtr closing = ann;
    UDMProfileMgr::DiscardProfile(closing);
    EXPECT_THAT(Refusal([&] { static_cast<void>(care.Verify()); }), HasSubstr("is closed"));
    EXPECT_THAT(Refusal([&] { care.Purge(); }), HasSubstr("is closed"));
    EXPECT_THAT(Refusal([&] { static_cast<void>(care.DeletedEntities()); }),
                HasSubstr("is closed"));
    EXPECT_THAT(Refusal([&] { care.Undelete("x"); }), HasSubstr("is closed"));
}

// --- Undelete ---

TEST_F(Maintained, WhatWasMovedOutOfADeletedFolderDoesNotComeBackIntoIt) {
    const UDMItemHandle old = Folder("/Old");
    const UDMItemHandle place = Folder("/New");
    const UDMItemHandle note = ann->CreateEntity("Note", "Moved");
    const UDMItemHandle stays = ann->CreateEntity("Note", "Stays");
    ann->MoveContent(note, old);
    ann->MoveContent(stays, old);
    ann->MoveContent(Newest(ann, wheel), old);
    Publish(ann, wheel);
    ann->DeleteEntity(old, false, false);
    ann->MoveContent(note, place);
    ann->MoveContent(CheckOut(ann, wheel), place);
    EXPECT_THAT(Verify(), IsEmpty());
    EXPECT_TRUE(Care().Undelete(Base(old)));
    EXPECT_THAT(Children(ann, Newest(ann, old), "folder"), ElementsAre("Stays"));
    EXPECT_THAT(Children(ann, place, "folder"), testing::UnorderedElementsAre("Moved", "Wheel"));
    ann->UndoCheckout(Newest(ann, wheel));
    EXPECT_THAT(Children(ann, Newest(ann, old), "folder"),
                testing::UnorderedElementsAre("Stays", "Wheel"));
    EXPECT_THAT(Verify(), IsEmpty());
}

TEST_F(Maintained, WhatWasDeletedTogetherComesBackTogether) {
    const UDMItemHandle two = ann->GetEntity(At(wheel, 2));
    ann->DeleteEntity(Newest(ann, wheel), true, false);
    const kxStlVector<UDMDeletedEntity> deleted = Care().DeletedEntities();
    ASSERT_EQ(deleted.size(), 2U);
    EXPECT_EQ(deleted[0].uid, Base(wheel));
    EXPECT_EQ(deleted[0].definition, "Part");
    EXPECT_EQ(deleted[0].name, "Wheel");
    EXPECT_THAT(deleted[0].time, testing::MatchesRegex("20..-..-..T..:..:..Z"));
    EXPECT_EQ(deleted[1].name, "Front");
    EXPECT_TRUE(Care().Undelete(Base(wheel)));
    EXPECT_THAT(Care().DeletedEntities(), IsEmpty());
    EXPECT_EQ(NewestNumber(ann, wheel), 3);
    EXPECT_EQ(two.GetAttributeValue("material"), kxVariant("steel"));
    EXPECT_THAT(Children(ann, Newest(ann, wheel), "drawings"), ElementsAre("Front"));
    EXPECT_THAT(Children(ann, Folder("/A/B"), "folder"), ElementsAre("Wheel"));
    EXPECT_THAT(Verify(), IsEmpty());
    EXPECT_FALSE(Care().Undelete(Base(wheel)));
    EXPECT_FALSE(Care().Undelete("unknown"));
}

TEST_F(Maintained, N31_WhatComesBackIsToldToEachAsHeSeesIt) {
    const ProfilePtr bob = library.Open("bob");
    const UDMItemHandle seen = Newest(bob, wheel);
    ann->DeleteEntity(Newest(ann, wheel), true, false);
    EXPECT_THAT(Children(bob, Folder("/A/B"), "folder"), IsEmpty());
    Listening mine(ann);
    Listening bobs(bob);
    EXPECT_TRUE(Care().Undelete(Base(wheel)));
    EXPECT_THAT(mine.Take(), ElementsAre("5 Wheel:3", "5 Front:1", "42 B:0"));
    EXPECT_THAT(bobs.Take(), ElementsAre("5 Wheel:2", "5 Front:1", "42 B:0"));
    EXPECT_EQ(seen.GetAttributeValue("material"), kxVariant("steel"));
    EXPECT_THAT(Children(bob, bob->GetEntity(Base(Folder("/A/B"))), "folder"),
                ElementsAre("Wheel"));
}

TEST_F(Maintained, N31_WhatComesBackIsToldToOneWhoAloneSeesItsParent) {
    const ProfilePtr bob = library.Open("bob");
    const ProfilePtr eve = library.Open("eve");
    const UDMItemHandle doomed = Published(ann, "Doomed");
    const UDMItemHandle owner = Published(ann, "Owner");
    UDMItemHandle place;
    bob->CreateFolder(place, "/Bobs");
    bob->AddChild(CheckOut(bob, owner), bob->GetEntity(Base(doomed)), "parts");
    bob->AddChild(Newest(bob, owner), bob->GetEntity(Base(doomed)), "uses");
    const UDMItemHandle draft = bob->CreateEntity("Part", "Draft");
    bob->CreateRelation(draft, bob->GetEntity(Base(doomed)), "fits", false);
    ann->DeleteEntity(Newest(ann, doomed), true, false);
    Listening mine(ann);
    Listening bobs(bob);
    Listening eves(eve);
    EXPECT_TRUE(Care().Undelete(Base(doomed)));
    EXPECT_THAT(mine.Take(), ElementsAre("5 Doomed:1"));
    EXPECT_THAT(bobs.Take(), ElementsAre("5 Doomed:1", "40 Owner:2", "40 Draft:0", "35 Owner:2"));
    EXPECT_THAT(eves.Take(), ElementsAre("5 Doomed:1"));
    EXPECT_THAT(Children(bob, Newest(bob, owner), "parts"), ElementsAre("Doomed"));
}

TEST_F(Maintained, N31_WhatComesBackIsToldToItsHolderInItsPlaces) {
    const ProfilePtr bob = library.Open("bob");
    const ProfilePtr eve = library.Open("eve");
    const UDMItemHandle doomed = Published(ann, "Doomed");
    UDMItemHandle place;
    bob->CreateFolder(place, "/Bobs");
    bob->MoveContent(CheckOut(bob, doomed), place);
    ann->DeleteEntity(Newest(ann, doomed), true, true);
    Listening bobs(bob);
    Listening eves(eve);
    EXPECT_TRUE(Care().Undelete(Base(doomed)));
    EXPECT_EQ(bobs.Take().back(), "42 Bobs:0");
    EXPECT_THAT(eves.Take(), ElementsAre("5 Doomed:1"));
    EXPECT_THAT(Children(bob, place, "contents"), ElementsAre("Doomed"));
}

TEST_F(Maintained, PurgeTrimsTheJournalAndWhoSleptReadsEverythingAnew) {
    const auto entries = [&] {
        const auto store = store::LibraryStore::Open(library.File());
        sql::Statement count(store->Connection(), "SELECT count(*) FROM journal");
        return count.Step() ? count.Int64(0) : -1;
    };
    ann->CreateEntity("Note", "Doomed");
    const ProfilePtr bob = library.Open("bob");
    const auto named = [&](const std::string& name) {
        kxStlVector<UDMItemHandle> hits;
        bob->RunQuery(hits, "name == \"" + name + "\"", -1, 0, 0, {}, false, false);
        return hits.at(0);
    };
    const UDMItemHandle note = named("Note");
    const UDMItemHandle doomed = named("Doomed");
    const UDMItemHandle seen = named("Wheel");
    EXPECT_TRUE(note.GetAttributeValue("text").IsEmpty());
    Listening bobs(bob);
    // As another process does it: nobody here is told.
    const auto store = store::LibraryStore::Open(library.File());
    const auto id = [&](const std::string& name) {
        std::vector<store::EntityRow> found;
        store->FindInFolder(0, "Note", name, store::THE_PUBLIC, false, found);
        return found.at(0).id;
    };
    const store::Stamp stamp{{"ann", "desk"}, 1};
    store->UpdateAttributes(id("Note"), 0, {{"text", kxVariant("new")}}, stamp);
    store->Append({.time = 1, .op = 3, .entity = id("Note"), .session = "another"});
    const store::EntityId gone = id("Doomed");
    store->Delete(gone, stamp);
    store->Append({.time = 1, .op = 44, .entity = gone, .session = "another"});
    store::EntityRow wheels;
    ASSERT_TRUE(store->FindByUid(Base(seen), store::THE_PUBLIC, wheels));
    store->Publish(wheels.id, "", true, stamp);
    store->Publish(wheels.id, "", false, stamp);
    const std::int64_t before = entries();
    Purge();
    EXPECT_EQ(entries(), before) << "they are young but for the last, of which one stays";
    Sql("UPDATE journal SET time = 2");
    Purge();
    EXPECT_EQ(entries(), 1) << "the last one, which tells of the deletion, too";
    EXPECT_THAT(bobs.Take(), IsEmpty());
    UDMProfileMgr::DispatchUpdates();
    // What is shown goes from one revision to the next.
    EXPECT_THAT(bobs.Take(), ElementsAre("44 ~:0", "5 Wheel:3", "5 Wheel:4", "5 Note:0"));
    EXPECT_EQ(note.GetAttributeValue("text"), kxVariant("new"));
    EXPECT_FALSE(doomed.IsEditable());
    EXPECT_EQ(seen.GetRevision(), 2);
    // And from then on as ever.
    ann->SetAttributeValue(ann->GetEntity(note.GetUID()), "text", "newer");
    EXPECT_THAT(bobs.Take(), ElementsAre("3 Note:0"));
    EXPECT_EQ(Care().DeletedEntities().size(), 1U);
    EXPECT_TRUE(Care().Undelete(Base(doomed)));
    EXPECT_THAT(Verify(), IsEmpty());
}

TEST_F(Maintained, AFolderDoesNotComeBackBesideANamesake) {
    const UDMItemHandle b = Folder("/A/B");
    ann->DeleteEntity(b, true, false);
    const UDMItemHandle other = Folder("/A/B");
    EXPECT_THAT(Refusal([&] { Care().Undelete(Base(b)); }), HasSubstr(Base(other)));
    EXPECT_FALSE(Sees(ann, Base(b)));
    EXPECT_FALSE(b.IsEditable());
    ann->SetAttributeValue(other, "name", "C");
    EXPECT_TRUE(Care().Undelete(Base(b)));
    EXPECT_TRUE(b.IsEditable());
    EXPECT_EQ(Folder("/A/B").GetUID(), b.GetUID());
}

TEST_F(Maintained, AnOwnerDoesNotComeBackWhereItsChildHasAnother) {
    const UDMItemHandle child = Published(ann, "Child");
    const UDMItemHandle first = ann->CreateEntity("Node", "First");
    const UDMItemHandle second = ann->CreateEntity("Node", "Second");
    const UDMItemHandle shared = ann->CreateEntity("Node", "Shared");
    ann->AddChild(first, shared, "mates");
    ann->DeleteEntity(first, true, false);
    ann->AddChild(second, shared, "kits");
    EXPECT_THAT(Refusal([&] { Care().Undelete(Base(first)); }), HasSubstr(Base(shared)));
    ann->RemoveChild(second, shared);
    EXPECT_TRUE(Care().Undelete(Base(first)));
    EXPECT_THAT(Children(ann, first, "mates"), ElementsAre("Shared"));
}

}  // namespace
}  // namespace kxudm::test
