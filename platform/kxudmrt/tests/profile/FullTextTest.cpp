// Full text search: which words are found, and what else a search takes.
#include <kxudm/UDMBulkEdit.h>

#include "FullText.h"
#include "Maintained.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST_F(FullText, FindsWordsOfAllAttributesThatAreTexts) {
    const UDMItemHandle wheel = Described("Wheel", "Front left, forged");
    ann->SetAttributeValue(wheel, "tags", kxStlVector<kxString>{"racing", "very light"});
    ann->SetAttributeValue(wheel, "material", "steel");
    ann->SetDisplayName("Front wheel", wheel);
    for (const char* word : {"forged", "RACING", "light", "steel", "wheel", "front"}) {
        EXPECT_THAT(Hits(word), ElementsAre("Front wheel")) << word;
    }
    EXPECT_THAT(Hits("wood"), IsEmpty());
    EXPECT_THAT(Hits("forge"), IsEmpty());
}

TEST_F(FullText, FindsAllWordsAnyWordOrAPhrase) {
    Described("One", "forged steel bolt");
    Described("Two", "bolt of steel");
    Described("Three", "wooden bolt");
    EXPECT_THAT(Hits("steel bolt"), ElementsAre("One", "Two"));
    EXPECT_THAT(Hits("bolt steel", ANY), ElementsAre("One", "Two", "Three"));
    EXPECT_THAT(Hits("wooden forged", ANY), ElementsAre("One", "Three"));
    EXPECT_THAT(Hits("steel bolt", PHRASE), ElementsAre("One"));
    EXPECT_THAT(Hits("one forged", PHRASE), IsEmpty()) << "across two attributes";
}

TEST_F(FullText, FindsWordsByTheirBeginning) {
    Described("One", "forged");
    Described("Two", "forging of steel");
    EXPECT_THAT(Hits("forg*"), ElementsAre("One", "Two"));
    EXPECT_THAT(Hits("FORGI* st*"), ElementsAre("Two"));
    EXPECT_THAT(Hits("of ste*", PHRASE), ElementsAre("Two"));
    EXPECT_THAT(Hits("forge*"), ElementsAre("One"));
}

TEST_F(FullText, IgnoresCaseAndAccentsUnlessToldOtherwise) {
    Described("One",
              "Stra\xC3\x9F"
              "e \xC3\x89t\xC3\xA9");
    Described("Two", "strasse ete");
    EXPECT_THAT(Hits("STRASSE"), ElementsAre("One", "Two"));
    EXPECT_THAT(Hits("\xC3\xA9te"), ElementsAre("One", "Two"));
    EXPECT_THAT(Hits("\xC3\x89t\xC3\xA9", ALL, false), ElementsAre("One"));
    EXPECT_THAT(Hits("ete", ALL, false), ElementsAre("Two"));
    EXPECT_THAT(Hits("\xC3\xA9t\xC3\xA9", ALL, false), IsEmpty());
    EXPECT_THAT(Hits("Stra*", ALL, false), ElementsAre("One"));
    EXPECT_THAT(Hits("stra*", ALL, false), ElementsAre("Two"));
    EXPECT_THAT(Hits("strasse ete", PHRASE, false), ElementsAre("Two"));
}

TEST_F(FullText, FindsJapanese) {
    Described("One",
              "\xE6\x9D\xB1\xE4\xBA\xAC\xE9\x83\xBD\xE3\x81\xAE\xE6\xA9\x8B");  // a bridge of Tokyo
    Described("Two", "\xE4\xBA\xAC\xE9\x83\xBD");                               // Kyoto
    EXPECT_THAT(Hits("\xE6\x9D\xB1\xE4\xBA\xAC"), ElementsAre("One"));
    EXPECT_THAT(Hits("\xE4\xBA\xAC\xE9\x83\xBD"), ElementsAre("One", "Two"));
    EXPECT_THAT(Hits("\xE6\xA9\x8B"), ElementsAre("One"));
    EXPECT_THAT(Hits("\xE6\xA9\x8B \xE4\xBA\xAC\xE9\x83\xBD"), ElementsAre("One"));
    EXPECT_THAT(Hits("\xE6\xA9\x8B\xE4\xBA\xAC"), IsEmpty());
}

TEST_F(FullText, FindsArabicWithAndWithoutVowelSigns) {
    Described("One", "\xD9\x85\xD9\x8F\xD9\x87\xD9\x8E\xD9\x86\xD9\x92\xD8\xAF\xD9\x90\xD8\xB3");
    Described("Two", "\xD9\x85\xD9\x87\xD9\x86\xD8\xAF\xD8\xB3");
    EXPECT_THAT(Hits("\xD9\x85\xD9\x87\xD9\x86\xD8\xAF\xD8\xB3"), ElementsAre("One", "Two"));
    EXPECT_THAT(Hits("\xD9\x85\xD9\x87\xD9\x86*"), ElementsAre("One", "Two"));
    EXPECT_THAT(Hits("\xD9\x85\xD9\x87\xD9\x86\xD8\xAF\xD8\xB3", ALL, false), ElementsAre("Two"));
}

TEST_F(FullText, TakesNothingForAnOperator) {
    Described("One", "black and white");
    for (const char* text : {"\"white",
                             "white\"\"",
                             "^white",
                             "(white",
                             "white)",
                             "white:",
                             "-white",
                             "{white}",
                             "white +",
                             "'white",
                             "white*",
                             "white; --",
                             "a~white"}) {
        EXPECT_THAT(Hits(text, ANY), ElementsAre("One")) << text;
    }
    EXPECT_THAT(Hits("black AND white"), ElementsAre("One"));
    EXPECT_THAT(Hits("black OR green"), IsEmpty());
    EXPECT_THAT(Hits("NOT green", ANY), IsEmpty());
    EXPECT_THAT(Hits("words : white", ANY), ElementsAre("One"));
}

TEST_F(FullText, WithoutAWordFindsNothing) {
    Described("One", "white");
    for (const char* text : {"", " ", "\"", "*", "- + ^"}) {
        for (const int mode : {ALL, ANY, PHRASE}) {
            EXPECT_THAT(Hits(text, mode), IsEmpty()) << text;
        }
    }
}

TEST_F(FullText, RefusesOtherModes) {
    kxStlVector<UDMItemHandle> hits;
    EXPECT_THAT(Refusal([&] { ann->RunQuery(hits, "a", 3, 0, 0, {}, false, true); }),
                HasSubstr("use 0, 1 or 2"));
    EXPECT_THAT(Refusal([&] { ann->RunQuery(hits, "a", -1, 0, 0, {}, false, true); }),
                HasSubstr("use 0, 1 or 2"));
}

TEST_F(FullText, CutsARangeAndCountsAllHits) {
    for (const char* name : {"One", "Two", "Three", "Four"}) {
        Described(name, "bolt");
    }
    kxStlVector<UDMItemHandle> hits;
    EXPECT_EQ(ann->RunQuery(hits, "bolt", ALL, 1, 3, {}, false, true), 4U);
    EXPECT_THAT(DisplayNames(hits), ElementsAre("Two", "Three"));
    EXPECT_EQ(ann->RunQuery(hits, "bolt", ALL, 4, 9, {}, false, true), 4U);
    EXPECT_EQ(hits.size(), 2U);
    EXPECT_THAT(Refusal([&] { ann->RunQuery(hits, "bolt", ALL, 3, 1, {}, false, true); }),
                HasSubstr("no range"));
}

TEST_F(FullText, FindsHitsInTheOrderOfCreationWhateverWasIndexedFirst) {
    const UDMItemHandle one = Described("One", "bolt");
    Described("Two", "bolt");
    EXPECT_THAT(Hits("bolt"), ElementsAre("One", "Two"));
    ann->SetAttributeValue(one, "description", "a bolt");
    EXPECT_THAT(Hits("bolt"), ElementsAre("One", "Two"));
}

TEST_F(FullText, FindsRootEntitiesAlone) {
    const UDMItemHandle car = Described("Car", "bolted");
    ann->AddChild(car, Described("Wheel", "bolted"), "parts");
    kxStlVector<UDMItemHandle> hits;
    EXPECT_EQ(ann->RunQuery(hits, "bolted", ALL, 0, 0, {}, true, true), 1U);
    EXPECT_THAT(DisplayNames(hits), ElementsAre("Car"));
}

TEST_F(FullText, LeavesOutWhatIsExcludedFromSearchUnlessToldOtherwise) {
    sources.Write("secret.xml",
                  "<catalogue version=\"1\"><definition name=\"Secret\" base=\"Item\""
                  " excludedfromsearch=\"true\"/></catalogue>");
    Parameters params = library.Params();
    params["RepositoryName"] = "Other";
    params["CustomEntityDefinitionsFolder"] =
        std::filesystem::path(sources.File("secret.xml")).parent_path().string();
    ann = library.Keep(UDMProfileMgr::GetProfile(params));
    ann->CreateEntity("Secret", "Bolt");
    Part("Bolt");
    EXPECT_THAT(Hits("bolt").size(), 1U);
    UDMQuerySettingHandle settings;
    settings.GetSettings().SearchInExcluded(true);
    kxStlVector<UDMItemHandle> hits;
    EXPECT_EQ(ann->RunQuery(hits, "bolt", ALL, 0, 0, settings, false, true), 2U);
}

TEST_F(FullText, FindsFoldersAndClassifications) {
    UDMItemHandle folder;
    ann->GetOrCreateFolder(folder, "/Crash tests", true);
    ann->CreateEntity("Categories", "Crash");
    EXPECT_THAT(Hits("crash"), ElementsAre("Crash tests", "Crash"));
}

TEST_F(FullText, GivesTheStatesThatTheSessionHas) {
    const UDMItemHandle one = Described("One", "bolt");
    kxStlVector<UDMItemHandle> hits;
    ann->RunQuery(hits, "bolt", ALL, 0, 0, {}, false, true);
    ASSERT_EQ(hits.size(), 1U);
    EXPECT_EQ(hits[0].State(), one.State());
}

TEST_F(FullText, IsIndexedByTheSearchThatNeedsIt) {
    Described("One", "bolt");
    EXPECT_GT(Pending(), 0);
    EXPECT_THAT(Hits("bolt"), ElementsAre("One"));
    EXPECT_EQ(Pending(), 0);
    EXPECT_THAT(Hits("bolt"), ElementsAre("One"));
}

// A search looks into each piece of the index.
TEST_F(FullText, IsIndexedInOnePieceAfterManyAndInFewAfterMore) {
    const auto pieces = [this] {
        const auto store = providers::OpenLibraryFile(library.File(), 1000);
        sql::Statement count(
            store->Connection(),
            "SELECT count(DISTINCT id >> 37) FROM text_attribute_data WHERE id >> 37 > 0");
        return count.Step() ? count.Int64(0) : -1;
    };
    const auto makeParts = [this](int count) {
        UDMBulkEdit edit(ann);
        for (int i = 0; i < count; ++i) {
            Part("Part number " + std::to_string(i));
        }
        edit.Commit();
    };
    makeParts(3500);
    EXPECT_EQ(Hits("part").size(), 3500U);
    EXPECT_EQ(pieces(), 1);
    makeParts(10);
    EXPECT_EQ(Hits("part").size(), 3510U);
    EXPECT_EQ(pieces(), 2);
    EXPECT_EQ(Pending(), 0);
    EXPECT_EQ(Hits("number 7").size(), 2U);
    EXPECT_EQ(Texts(UDMMaintenance(ann).Verify(AT_ONCE)), Names());
}

TEST_F(FullText, FindsWhatIsNotIndexedBecauseAWriterHasTheLock) {
    const UDMItemHandle one = Described("One", "bolt");
    EXPECT_THAT(Hits("bolt"), ElementsAre("One"));
    ann->SetAttributeValue(Described("Two", "nut"), "tags", kxStlVector<kxString>{"bolt"});
    ann->SetAttributeValue(one, "description", "screw");
    Put(one, "deck.txt", "a washer");
    const auto writer = providers::OpenLibraryFile(library.File(), 1000);
    const sql::Transaction transaction(writer->Connection());
    EXPECT_THAT(Hits("bolt"), ElementsAre("Two"));
    EXPECT_THAT(Hits("screw washer"), ElementsAre("One"));
    EXPECT_THAT(Hits("a washer", PHRASE), ElementsAre("One"));
    EXPECT_THAT(Hits("nut washer", ANY), ElementsAre("One", "Two"));
    EXPECT_GT(Pending(), 0);
}

TEST_F(FullText, OfABulkEditFindsWhatItHasDoneAndNobodyElseDoes) {
    const ProfilePtr bob = library.Open("bob");
    const UDMItemHandle one = Publish(ann, Described("One", "bolt"));
    {
        UDMBulkEdit bulk(ann);
        ann->SetAttributeValue(CheckOut(ann, one), "description", "screw");
        Publish(ann, one);
        EXPECT_THAT(Hits("screw"), ElementsAre("One"));
        EXPECT_THAT(Hits("bolt"), IsEmpty());
        EXPECT_THAT(Search(bob, "bolt"), ElementsAre("One"));
    }
    EXPECT_THAT(Hits("bolt"), ElementsAre("One"));
    EXPECT_THAT(Hits("screw"), IsEmpty());
}

}  // namespace
}  // namespace kxudm::test
