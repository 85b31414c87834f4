// Full text search in the files of contents.
#include <kxudm/UDMMaintenance.h>

#include "FullText.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class FullTextFiles : public FullText {
  protected:
    UDMItemHandle With(const std::string& name, const std::string& content) {
        const UDMItemHandle part = Part(name);
        Put(part, "deck.txt", content);
        return part;
    }
    void Import(const std::string& folder, const std::string& publish = "true") {
        ann->AddFoldersAndFiles({folder}, {}, "", {{"definition", "Part"}, {"publish", publish}});
    }
    // Segments of the index of contents.
    std::int64_t Pieces() {
        const auto store = providers::OpenLibraryFile(library.File(), 1000);
        sql::Statement count(
            store->Connection(),
            "SELECT count(DISTINCT id >> 37) FROM text_content_data WHERE id >> 37 > 0");
        return count.Step() ? count.Int64(0) : -1;
    }

    ProfilePtr bob = library.Open("bob");
};

TEST_F(FullTextFiles, FindsTheirWords) {
    With("One", "** steel plate\n1, 2.0, 3.0, 4.0\n*END STEP\n");
    EXPECT_THAT(Hits("plate"), ElementsAre("One"));
    EXPECT_THAT(Hits("end step", PHRASE), ElementsAre("One"));
    EXPECT_THAT(Hits("plate end", PHRASE), IsEmpty());
    EXPECT_THAT(Hits("END", ALL, false), ElementsAre("One"));
    EXPECT_THAT(Hits("end", ALL, false), IsEmpty());
    EXPECT_THAT(Search(bob, "plate"), IsEmpty());
}

TEST_F(FullTextFiles, FindsAllWordsTogetherWithThoseOfAttributesAndOtherFiles) {
    const UDMItemHandle one = With("One", "plate");
    ann->SetAttributeValue(one, "description", "forged");
    Put(one, "other.txt", "hinge");
    With("Two", "plate hinge");
    for (int indexed = 0; indexed < 2; ++indexed) {
        EXPECT_THAT(Hits("plate forged"), ElementsAre("One"));
        EXPECT_THAT(Hits("plate hinge"), ElementsAre("One", "Two"));
        EXPECT_THAT(Hits("one plate hinge forged"), ElementsAre("One"));
        EXPECT_THAT(Hits("plate hinge wood"), IsEmpty());
        EXPECT_THAT(Hits("plate hinge", PHRASE), ElementsAre("Two"));
        EXPECT_THAT(Hits("forged two", ANY), ElementsAre("One", "Two"));
    }
}

TEST_F(FullTextFiles, FindsEachOnceAndInOrderThroughAttributesFilesAndBoth) {
    With("One", "plate");
    Described("Two", "plate");
    ann->SetAttributeValue(With("Three", "plate"), "description", "a plate");
    Described("Four", "plate");
    With("Five", "plate");
    for (int indexed = 0; indexed < 2; ++indexed) {
        EXPECT_THAT(Hits("plate"), ElementsAre("One", "Two", "Three", "Four", "Five"));
        kxStlVector<UDMItemHandle> hits;
        EXPECT_EQ(ann->RunQuery(hits, "plate", ALL, 1, 4, {}, false, true), 5U);
        EXPECT_THAT(DisplayNames(hits), ElementsAre("Two", "Three", "Four"));
    }
}

TEST_F(FullTextFiles, FindsAllWordsAmongManyContents) {
    for (int i = 0; i < 120; ++i) {
        const UDMItemHandle part =
            With("P" + std::to_string(i), "plate number " + std::to_string(i));
        ann->SetAttributeValue(part, "description", i % 40 == 7 ? "rare hinge" : "hinge");
    }
    EXPECT_THAT(Hits("plate rare"), ElementsAre("P7", "P47", "P87"));
    EXPECT_EQ(Hits("plate hinge").size(), 120U);
    EXPECT_EQ(Hits("number hinge p*").size(), 120U);
}

TEST_F(FullTextFiles, FollowsAddedReplacedAndRemovedFiles) {
    const UDMItemHandle one = Publish(ann, With("One", "plate"));
    EXPECT_THAT(Search(bob, "plate"), ElementsAre("One"));
    PutAgain(CheckOut(ann, one), "deck.txt", "hinge");
    EXPECT_THAT(Hits("hinge"), ElementsAre("One"));
    EXPECT_THAT(Hits("plate"), IsEmpty());
    EXPECT_THAT(Search(bob, "hinge"), IsEmpty());
    EXPECT_THAT(Search(bob, "plate"), ElementsAre("One"));
    Publish(ann, one);
    EXPECT_THAT(Search(bob, "hinge"), ElementsAre("One"));
    EXPECT_THAT(Search(bob, "plate"), IsEmpty());
    ann->RemoveFile(CheckOut(ann, one), "deck.txt");
    EXPECT_THAT(Hits("hinge"), IsEmpty());
    EXPECT_THAT(Search(bob, "hinge"), ElementsAre("One"));
    ann->UndoCheckout(one);
    EXPECT_THAT(Hits("hinge"), ElementsAre("One"));
}

TEST_F(FullTextFiles, ReadsAContentThatSeveralHaveOnce) {
    With("One", "plate");
    With("Two", "plate");
    EXPECT_THAT(Hits("plate"), ElementsAre("One", "Two"));
    With("Three", "plate");
    EXPECT_THAT(Hits("plate"), ElementsAre("One", "Two", "Three"));
}

TEST_F(FullTextFiles, TakesEncodingsByTheirContent) {
    With("Utf8",
         "\xEF\xBB\xBF"
         "M\xC3\xBCller");
    With("Latin1", "M\xFCller");
    With("Utf16",
         std::string("\xFF\xFE"
                     "M\0\xFC\0l\0l\0e\0r\0",
                     14));
    With("Binary", std::string("Muller\0", 7));
    EXPECT_THAT(Hits("muller"), ElementsAre("Utf8", "Latin1", "Utf16"));
}

TEST_F(FullTextFiles, LooksAtTheFirstMebibyte) {
    const std::string filler = "\nfiller of a line that says nothing much ";
    std::string text = "begin";
    for (int i = 0; text.size() < (std::size_t{1} << 20) - 200; ++i) {
        text += filler + "x" + std::to_string(i);
    }
    With("One", text + " within" + std::string(400, ' ') + "beyond");
    EXPECT_THAT(Hits("begin"), ElementsAre("One"));
    EXPECT_THAT(Hits("within"), ElementsAre("One"));
    EXPECT_THAT(Hits("beyond"), IsEmpty());
}

TEST_F(FullTextFiles, DoesNotLookIntoExternalOnes) {
    AddFile(ann, Part("One"), Write("deck.txt", "plate"), true);
    EXPECT_THAT(Hits("plate"), IsEmpty());
}

TEST_F(FullTextFiles, LooksIntoOtherVaults) {
    const UDMItemHandle one = Part("One");
    ann->SetVault(one, library.BaseDirectory() + "/big");
    Put(one, "deck.txt", "plate");
    EXPECT_THAT(Hits("plate"), ElementsAre("One"));
}

TEST_F(FullTextFiles, OfAnImportAreFoundAtOnceAndIndexedWithIt) {
    std::filesystem::create_directories(sources.File("in/deep"));
    sources.Write("in/one.txt", "steel plate");
    sources.Write("in/two.bin", std::string("steel\0", 6));
    sources.Write("in/deep/three.txt", "steel hinge");
    Import(sources.File("in"));
    // Three contents and two folders, and no files.
    EXPECT_EQ(Pending(), 5);
    EXPECT_THAT(Search(bob, "steel"), UnorderedElementsAre("one.txt", "three.txt"));
    EXPECT_THAT(Search(bob, "hinge three"), ElementsAre("three.txt"));
    EXPECT_THAT(UDMMaintenance(ann).Verify(), IsEmpty());
}

// Each piece of the index costs its writing, its merging with others, and time in every search.
TEST_F(FullTextFiles, ThatComeTogetherAreWrittenIntoTheIndexAsOnePiece) {
    std::filesystem::create_directories(sources.File("in"));
    for (int i = 0; i < 30; ++i) {
        sources.Write("in/" + std::to_string(i) + ".txt", "plate w" + std::to_string(i));
    }
    EXPECT_EQ(Pieces(), 0);
    Import(sources.File("in"));
    EXPECT_EQ(Pieces(), 1);
    for (int i = 0; i < 30; ++i) {
        With("P" + std::to_string(i), "hinge w" + std::to_string(i));
    }
    EXPECT_EQ(Hits("hinge").size(), 30U);
    EXPECT_EQ(Pieces(), 2);
}

TEST_F(FullTextFiles, ThatCannotBeReadDoNotHinderASearch) {
    const UDMItemHandle one = With("One", "plate");
    std::filesystem::remove(StoredPath());
    ann->SetAttributeValue(one, "description", "forged");
    EXPECT_THAT(Hits("forged"), ElementsAre("One"));
    EXPECT_THAT(Hits("plate"), IsEmpty());
    EXPECT_THAT(Hits("forged plate"), IsEmpty());
    EXPECT_EQ(Pending(), 0);
}

}  // namespace
}  // namespace kxudm::test
