// Each kind of damage is made with plain SQL or in the vault's files, and must be the only thing
// that a verification finds.
#include "Maintained.h"

namespace kxudm::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace fs = std::filesystem;

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

void PrintTo(const Damage& damage, std::ostream* out) {
    *out << damage.name;
}

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
         "Hub") "; DELETE FROM link "
                "WHERE first = " ENTITY("Hub") " OR second = " ENTITY("Hub") "; "
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
                                                                             " " ENTITY("Hub") "; "
                                                                                               "DE"
                                                                                               "LE"
                                                                                               "TE"
                                                                                               " F"
                                                                                               "RO"
                                                                                               "M "
                                                                                               "en"
                                                                                               "ti"
                                                                                               "ty"
                                                                                               " W"
                                                                                               "HE"
                                                                                               "RE"
                                                                                               " n"
                                                                                               "am"
                                                                                               "e "
                                                                                               "= "
                                                                                               "'H"
                                                                                               "ub"
                                                                                               "'",
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
         "\xc3\x84rger") "; INSERT INTO file(entity, to_rev, name, from_rev, ending, hash, size, "
                         "modified_time, added_time, is_text, external_path, vault) SELECT entity, "
                         "to_rev, name, 1, ending, hash, "
                         "size, "
                         "modified_time,"
                         " added_time, is_text, external_path, vault FROM file",
     "broken file interval"},
    {"AFileOfNoEntity",
     "INSERT INTO file(entity, to_rev, name, from_rev, ending, hash, size, modified_time, "
     "added_time, is_text, external_path, vault) SELECT 999, to_rev, name, from_rev, ending, hash, "
     "size, modified_time,"
     " added_time, is_text, external_path, vault FROM file",
     "dangling file"},
    {"ASearchAttributeOfNoEntity",
     "INSERT INTO head_attribute(entity, name, working, value) VALUES (999, 'text', 0, 'x')",
     "stray row"},
    {"ASavePointOfNoRevision", "UPDATE savepoint SET revision = revision + 7", "stray row"},
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

// More than one thread takes in one go.
TEST_F(Maintained, EachOfManyContentsIsFoundAsItIs) {
    std::vector<std::string> hashes;
    for (int i = 0; i < 100; ++i) {
        hashes.push_back(AddFile("f" + std::to_string(i), "content " + std::to_string(i)));
    }
    for (const int i : {3, 15, 16, 50, 99}) {
        Write(Content(hashes[i]), "content ?");
    }
    for (const int i : {4, 17, 98}) {
        fs::remove(Content(hashes[i]));
    }
    const Names found = Verify();
    EXPECT_EQ(found.size(), 8U);
    const auto tells = [&](const std::string& kind, int i) {
        return testing::Contains(AllOf(testing::StartsWith(kind + " content " + hashes[i] + ": "),
                                       HasSubstr(" f" + std::to_string(i) + ":")));
    };
    for (const int i : {3, 15, 16, 50, 99}) {
        EXPECT_THAT(found, tells("damaged", i));
    }
    for (const int i : {4, 17, 98}) {
        EXPECT_THAT(found, tells("missing", i));
    }
    EXPECT_TRUE(std::is_sorted(found.begin() + 3, found.end())) << "as if one had looked";
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

TEST_F(Maintained, ANewerNeighbourCanNotBeReadAndAnEmptyFileIsNone) {
    Parameters params = library.Params();
    params["RepositoryName"] = "Newer";
    ProfilePtr other = UDMProfileMgr::GetProfile(params);
    UDMProfileMgr::DiscardProfile(other);
    Write(library.BaseDirectory() + "/Empty.ldb", "");
    EXPECT_THAT(Verify(), IsEmpty());
    const std::string newer = library.BaseDirectory() + "/Newer.ldb";
    store::LibraryStore::Open(newer)->Connection().SetSchemaVersion(1000);
    EXPECT_THAT(Verify(), ElementsAre(testing::StartsWith("unreadable neighbour " + newer)));
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
    for (const int calls : {0, 1, 2}) {
        counter.left = calls;
        EXPECT_THROW(Verify(), UDMCancelledException) << calls;
        EXPECT_TRUE(scope.WasCancelled());
    }
    counter.left = 100;
    EXPECT_THAT(Verify(), IsEmpty());
}

}  // namespace
}  // namespace kxudm::test
