// Each kind of damage is made with plain SQL or in the vault's files, and must be the only thing
// that a verification finds.
#include <kxudm/UDMMaintenance.h>
#include <kxudm/UDMProgress.h>

#include <fstream>

#include "Revisions.h"
#include "store/LibraryStore.h"
#include "vault/Vault.h"

namespace kxudm::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace fs = std::filesystem;

using Kind = UDMFindingKind;

constexpr UDMVerifyOptions AT_ONCE{.minimumAge = std::chrono::seconds(0)};

void Write(const std::string& path, const std::string& text) {
    fs::create_directories(fs::path(path).parent_path());
    fs::remove(path);
    std::ofstream(path, std::ios::binary) << text;
}

// "<name of the kind> <object>: <text>"
Names Texts(const kxStlVector<UDMFinding>& findings) {
    Names texts;
    for (const UDMFinding& finding : findings) {
        texts.push_back(std::string(UDMMaintenance::Name(finding.kind)) + " " + finding.object +
                        ": " + finding.text);
    }
    return texts;
}

// A library with some of everything, and files at a part.
class Maintained : public testing::Test {
  protected:
    Maintained() {
        wheel = Published(ann, "Wheel");
        ann->MoveContent(CheckOut(ann, wheel), Folder("/A/B"));
        const UDMItemHandle hub = ann->CreateEntity("Part", "Hub");
        const UDMItemHandle front =
            ann->CreateAndAddChild("Drawing", "Front", Newest(ann, wheel), "drawings");
        ann->AddChild(Newest(ann, wheel), hub, "uses");
        ann->AddClassification(hub, ann->CreateEntity("Categories", "Metals"));
        ann->SetAttributeValue(Newest(ann, wheel), "material", "steel");
        wheel = Publish(ann, wheel);
        Publish(ann, front);
        ann->RemoveChild(CheckOut(ann, wheel), hub);
        ann->SetAttributeValue(Newest(ann, wheel), "mass", 4.0);
        ann->SetAttributeValue(Newest(ann, wheel), "count", 3);
        ann->SaveEntity(Newest(ann, wheel), "so far", true);
        Published(ann, "\xc3\x84rger");
        ann->CreateEntity("Note", "Note");
        used = AddFile("deck.inp", std::string(3000, 'd'));
    }

    UDMItemHandle Folder(const kxString& path) {
        UDMItemHandle folder;
        ann->GetOrCreateFolder(folder, path, true);
        return folder;
    }
    std::string Vault() const { return library.BaseDirectory() + "/vault"; }
    vault::Stored Store(const std::string& text, const std::string& vaultDirectory) {
        Write(library.Folder().File("source"), text);
        return vault::Vault(vaultDirectory).Add(library.Folder().File("source"));
    }
    // A file of the note; the hash of its content.
    std::string AddFile(const std::string& name, const std::string& text) {
        const vault::Stored stored = Store(text, Vault());
        store::FileRow row;
        row.name = name;
        row.hash = stored.hash;
        row.size = static_cast<std::int64_t>(stored.size);
        const auto store = store::LibraryStore::Open(library.File());
        store::EntityRow note;
        store->FindInFolder(0, "Note", "Note", store::THE_PUBLIC, false, rows);
        EXPECT_TRUE(store->AddFile(rows.front().id, 0, row, {{"ann", "desk"}, 1}));
        return stored.hash;
    }
    std::string Content(const std::string& hash) const {
        const std::string path = Vault() + "/" + hash.substr(0, 2) + "/" + hash;
        return fs::exists(path) ? path : path + ".zst";
    }
    void Sql(const std::string& script) {
        const auto store = store::LibraryStore::Open(library.File());
        store->Connection().Execute("PRAGMA foreign_keys=OFF");
        store->Connection().Execute("PRAGMA ignore_check_constraints=ON");
        store->Connection().Execute(script);
    }
    UDMMaintenance Care() { return UDMMaintenance(ann); }
    Names Verify(const UDMVerifyOptions& options = AT_ONCE) {
        return Texts(Care().Verify(options));
    }
    UDMPurged Purge(bool deletedEntities = false, int minutes = 0) {
        UDMPurgeOptions options;
        options.minimumAge = std::chrono::minutes(minutes);
        options.deletedEntities = deletedEntities;
        return Care().Purge(options);
    }

    Library library;
    ProfilePtr ann = library.Open("ann");
    UDMItemHandle wheel;
    std::string used;
    std::vector<store::EntityRow> rows;
};

TEST_F(Maintained, ASoundLibraryHasNoFindings) {
    EXPECT_THAT(Verify(), IsEmpty());
    EXPECT_THAT(Verify({.contents = false}), IsEmpty());
    Publish(ann, wheel, "", true);
    ann->UndoCheckout(wheel);
    ann->DeleteEntity(wheel, true, false);
    EXPECT_THAT(Verify(), IsEmpty());
}

// --- Rows ---

struct Damage {
    const char* name;
    const char* sql;
    const char* found;  // the beginning of the only finding
};

// For the SQL of damage.
#define ENTITY(name) "(SELECT id FROM entity WHERE name = '" name "')"
#define NEWEST(name) \
    "(SELECT (id << 24) + coalesce(working, published) FROM entity WHERE name = '" name "')"
#define ADD_LINK \
    "INSERT INTO link(first, kind, name, position, second, from_rev, composition, entry) VALUES "

const Damage DAMAGES[] = {
    {"AFileThatBreaksARuleOfTheDatabase",
     "UPDATE entity SET lock_user = 'eve' WHERE name = '\xc3\x84rger'",
     "damaged database"},
    {"ADefinitionThatTheCatalogueLacks",
     "UPDATE entity SET definition = 'Gone' WHERE name = 'Note'",
     "missing definition"},
    {"ANewestRevisionThatIsGone",
     "DELETE FROM revision WHERE id = " NEWEST("\xc3\x84rger"),
     "missing revision"},
    {"AWorkingRevisionThatIsGone",
     "DELETE FROM revision WHERE id = " NEWEST("Hub"),
     "missing revision"},
    {"ARevisionBehindTheNewest",
     "INSERT INTO revision SELECT id + 5, state, display_name, created_time, created_user,"
     " modified_time, modified_user, published_time, published_user, workspace, comment,"
     " attributes FROM revision WHERE id = " NEWEST("\xc3\x84rger"),
     "stray revision"},
    {"ARevisionOfNoEntity",
     "UPDATE revision SET id = (999 << 24) WHERE id = " NEWEST(
         "Hub") "; DELETE FROM link WHERE first = " ENTITY("Hub") " OR second = " ENTITY("Hub") "; "
                                                                                                "DE"
                                                                                                "LE"
                                                                                                "TE"
                                                                                                " F"
                                                                                                "RO"
                                                                                                "M "
                                                                                                "he"
                                                                                                "ad"
                                                                                                "_a"
                                                                                                "tt"
                                                                                                "ri"
                                                                                                "bu"
                                                                                                "te"
                                                                                                " W"
                                                                                                "HE"
                                                                                                "RE"
                                                                                                " e"
                                                                                                "nt"
                                                                                                "it"
                                                                                                "y "
                                                                                                "="
                                                                                                " " ENTITY("Hub") "; DELETE FROM entity WHERE name = 'Hub'",
     "stray revision #999:0: it is of no entity"},
    {"APublishedRevisionThatIsMarkedAsWorking",
     "UPDATE revision SET state = 0 WHERE id = " NEWEST("\xc3\x84rger"),
     "stray revision"},
    {"AVersionedRevisionThatIsMarkedAsUnversioned",
     "UPDATE revision SET state = 2 WHERE id = " NEWEST("\xc3\x84rger"),
     "stray revision"},
    {"AWorkingRevisionThatLeavesAGap",
     "DELETE FROM savepoint; DELETE FROM link WHERE ending IS NOT NULL;"
     " UPDATE revision SET id = id + 1 WHERE id = " NEWEST(
         "Wheel") "; UPDATE entity SET working = working + 1 WHERE name = 'Wheel'",
     "stray revision"},
    {"AttributesThatCanNotBeRead",
     "UPDATE revision SET attributes = x'0105' WHERE id = " NEWEST("\xc3\x84rger"),
     "damaged attributes"},
    {"AnAttributeThatQueriesSeeOtherwise",
     "UPDATE head_attribute SET value = 9.5, folded = nullif(kxudm_fold(9.5), 9.5)"
     " WHERE name = 'mass' AND entity = " ENTITY("\xc3\x84rger"),
     "wrong search attributes"},
    {"AnAttributeThatQueriesDoNotSee",
     "DELETE FROM head_attribute WHERE name = 'count' AND entity = " ENTITY("Wheel"),
     "wrong search attributes"},
    {"AnAttributeThatOnlyQueriesSee",
     "INSERT INTO head_attribute(entity, name, working, value) VALUES (" ENTITY(
         "Note") ", 'text', 0, 'x')",
     "wrong search attributes"},
    {"AnAttributeOfTheWorkingRevisionThatQueriesSeeOtherwise",
     "UPDATE head_attribute SET value = 5 WHERE name = 'count' AND entity = " ENTITY("Wheel"),
     "wrong search attributes"},
    {"ATextThatQueriesDoNotFindWhateverItsCase",
     "UPDATE head_attribute SET folded = 'x' WHERE name = 'displayname' AND entity = " ENTITY(
         "\xc3\x84rger"),
     "wrong search attributes"},
    {"ANameThatQueriesDoNotFindWhateverItsCase",
     "UPDATE entity SET name_folded = NULL WHERE name = '\xc3\x84rger'",
     "wrong search attributes"},
    {"ALinkThatBeginsLaterThanItsParent",
     "UPDATE link SET from_rev = 7 WHERE kind = 1",
     "broken link interval"},
    {"ALinkThatEndedLaterThanItsParent",
     "UPDATE link SET to_rev = 7 WHERE kind = 1",
     "broken link interval"},
    {"ALinkThatIsToEndAtNoWorkingRevision",
     "UPDATE link SET ending = 9 WHERE ending IS NOT NULL",
     "broken link interval"},
    {"ALinkThatHoldsTwice",
     ADD_LINK "(" ENTITY("Wheel") ", 1, 'drawings', 9, " ENTITY("Front") ", 3, 1, NULL)",
     "broken link interval"},
    {"ALinkToNothing", "UPDATE link SET second = 999 WHERE kind = 2", "dangling link"},
    {"ALinkToARevisionThatIsNotThere",
     "UPDATE link SET exact = 99 WHERE kind = 2",
     "dangling link"},
    {"ACycleOfOwners",
     ADD_LINK "(" ENTITY("Front") ", 1, 'parts', 1, " ENTITY("Wheel") ", 0, 0, NULL)",
     "cycle of links"},
    {"AFolderInItself",
     ADD_LINK "(" ENTITY("A") ", 3, '', 1, " ENTITY("A") ", 0, 0, 'A')",
     "cycle of links"},
    {"ACycleOfFolders",
     ADD_LINK "(" ENTITY("A") ", 3, '', 1, " ENTITY("B") ", 0, 0, 'A')",
     "cycle of links"},
    {"AClassificationUnderWhatItClassifies",
     ADD_LINK "(" ENTITY("Metals") ", 4, '', 1, " ENTITY("Hub") ", 0, 0, NULL)",
     "cycle of links"},
    {"ASecondOwner",
     ADD_LINK "(" ENTITY("Hub") ", 1, 'drawings', 1, " ENTITY("Front") ", 0, 1, NULL)",
     "second owner"},
    {"ASecondFolder",
     ADD_LINK "(" ENTITY("Wheel") ", 3, '', 1, " ENTITY("A") ", 1, 0, 'Wheel')",
     "second folder"},
    {"AFolderEntryOfAnotherName",
     "UPDATE link SET entry = 'x' WHERE kind = 3 AND first = " ENTITY("Wheel"),
     "wrong folder entry"},
    {"AFileThatBeginsLaterThanItsEntity", "UPDATE file SET from_rev = 3", "broken file interval"},
    {"AFileThatEndedLaterThanItsEntity", "UPDATE file SET to_rev = 3", "broken file interval"},
    {"AFileThatIsToEndAtNoWorkingRevision", "UPDATE file SET ending = 3", "broken file interval"},
    {"AFileThatIsThereTwice",
     "UPDATE file SET entity = " ENTITY(
         "\xc3\x84rger") "; INSERT INTO file SELECT entity, to_rev, name, 1, ending, hash, size, "
                         "modified_time,"
                         " added_time, is_text, external_path, vault FROM file",
     "broken file interval"},
    {"AFileOfNoEntity",
     "INSERT INTO file SELECT 999, to_rev, name, from_rev, ending, hash, size, modified_time,"
     " added_time, is_text, external_path, vault FROM file",
     "dangling file"},
    {"ASearchAttributeOfNoEntity",
     "INSERT INTO head_attribute(entity, name, working, value) VALUES (999, 'text', 0, 'x')",
     "stray row"},
    {"ASavePointOfNoRevision", "UPDATE savepoint SET revision = revision + 7", "stray row"},
    {"AWorkspaceWithARevisionThatIsNotThere",
     "INSERT INTO workspace_state VALUES ('ann', 'desk', " ENTITY("Note") ", 7, 1)",
     "stray row"},
};

class Damaged : public Maintained, public testing::WithParamInterface<Damage> {};

TEST_P(Damaged, IsTheOnlyFinding) {
    Sql(GetParam().sql);
    EXPECT_THAT(Verify(), ElementsAre(testing::StartsWith(GetParam().found)));
    // And nothing was mended in silence.
    EXPECT_THAT(Verify({.contents = false}), ElementsAre(testing::StartsWith(GetParam().found)));
}

INSTANTIATE_TEST_SUITE_P(Rows, Damaged, testing::ValuesIn(DAMAGES), [](const auto& test) {
    return std::string(test.param.name);
});

TEST_F(Maintained, EachOfTwoCyclesIsAFinding) {
    Sql(ADD_LINK "(" ENTITY("A") ", 3, '', 1, " ENTITY(
        "B") ", 0, 0, 'A'); " ADD_LINK
             "(" ENTITY("Hub") ", 1, '', 1, " ENTITY(
                 "Metals") ", 0, 0, NULL); " ADD_LINK
                           "(" ENTITY("Metals") ", 1, '', 1, " ENTITY(
                               "\xc3\x84rger") ", 0, 0, NULL); " ADD_LINK
                                               "(" ENTITY("\xc3\x84rger") ", 1, '', 1, " ENTITY(
                                                   "Hub") ", 0, 0, NULL)");
    EXPECT_THAT(Verify(),
                ElementsAre(AllOf(HasSubstr("owned children go in a circle"),
                                  testing::ContainsRegex(" -> .* -> .* -> ")),
                            HasSubstr("folders go in a circle")));
}

// --- Contents ---

TEST_F(Maintained, AMissingContentIsFoundWithItsFile) {
    fs::remove(Content(used));
    for (const bool contents : {true, false}) {
        EXPECT_THAT(Verify({.contents = contents}),
                    ElementsAre(AllOf(testing::StartsWith("missing content " + used),
                                      HasSubstr(" deck.inp:"))));
    }
}

TEST_F(Maintained, ADamagedContentIsFoundByReadingItAlone) {
    const std::string other = AddFile("other", "another content");
    Write(Content(other), "another CONTENT");
    EXPECT_THAT(Verify(), ElementsAre(testing::StartsWith("damaged content " + other)));
    EXPECT_THAT(Verify({.contents = false}), IsEmpty());
}

TEST_F(Maintained, AContentWhoseVaultLeadsElsewhereIsUnreadable) {
    Sql("UPDATE file SET vault = '../x'");
    const Names found = Verify({.contents = true});
    ASSERT_FALSE(found.empty());
    EXPECT_THAT(found.front(), testing::StartsWith("unreadable content"));
}

TEST_F(Maintained, AnOrphanIsFoundOnceItIsOldEnough) {
    const vault::Stored orphan = Store("nobody's", Vault());
    EXPECT_THAT(Verify(), ElementsAre(testing::StartsWith("orphaned content " + orphan.hash)));
    EXPECT_THAT(Verify(UDMVerifyOptions()), IsEmpty());
}

TEST_F(Maintained, AStrangerInTheVaultIsFound) {
    const std::string stranger = Vault() + "/ab/readme.txt";
    Write(stranger, "hello");
    EXPECT_THAT(Verify(), ElementsAre(testing::StartsWith("stranger in the vault " + stranger)));
}

TEST_F(Maintained, ANeighbourThatCanNotBeReadIsFoundAndForbidsAPurge) {
    const std::string bad = library.BaseDirectory() + "/Bad.ldb";
    Write(bad, std::string(5000, 'x'));
    const vault::Stored orphan = Store("nobody's", Vault());
    EXPECT_THAT(Verify(), ElementsAre(testing::StartsWith("unreadable neighbour " + bad)));
    EXPECT_THAT(Refusal<UDMStoreException>([&] { Purge(); }), HasSubstr(bad));
    EXPECT_TRUE(fs::exists(Content(orphan.hash)));
}

TEST_F(Maintained, WhatANeighbourUsesIsNoOrphan) {
    Parameters params = library.Params();
    params["RepositoryName"] = "Other";
    const ProfilePtr other = library.Keep(UDMProfileMgr::GetProfile(params));
    EXPECT_THAT(Texts(UDMMaintenance(other).Verify(AT_ONCE)), IsEmpty());
    UDMPurgeOptions options;
    options.minimumAge = std::chrono::seconds(0);
    EXPECT_EQ(UDMMaintenance(other).Purge(options).contents, 0U);
    EXPECT_TRUE(fs::exists(Content(used)));
}

TEST_F(Maintained, VerifyingTellsHowFarItIsAndCanBeCancelled) {
    class Counter : public IUDMProgressListener {
      public:
        bool Advance(const UDMProgress& progress) override {
            last = progress;
            return --left >= 0;
        }
        UDMProgress last;
        int left = 100;
    };
    Counter counter;
    const UDMProgressScope scope(ann, counter);
    AddFile("other", "another content");
    EXPECT_THAT(Verify(), IsEmpty());
    EXPECT_EQ(counter.last.done, 2U);
    EXPECT_EQ(counter.last.total, 2U);
    EXPECT_EQ(counter.last.doneBytes, 3015U);
    counter.left = 1;
    EXPECT_THROW(Verify(), UDMCancelledException);
    EXPECT_TRUE(scope.WasCancelled());
}

// --- Purge ---

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
