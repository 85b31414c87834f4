#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "text/Terms.h"

using namespace kxudm::text;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace {

std::string OfAttribute(std::string_view text) {
    return Prepare(text, Source::Attribute);
}
std::string OfFile(std::string_view text) {
    return Prepare(text, Source::File);
}
std::string Repeated(const std::string& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

}  // namespace

TEST(Terms, AreRunsOfLettersAndDigits) {
    EXPECT_EQ(OfAttribute("front_bumper-v2, (steel)!"), "front bumper v2 steel");
    EXPECT_EQ(OfAttribute("  "), "");
    EXPECT_EQ(OfAttribute("\"a\" AND* NEAR(b) ^c:d"), "a AND~and NEAR~near b c d");
}

TEST(Terms, StandBesideTheirFoldedFormWhereThatDiffers) {
    EXPECT_EQ(OfAttribute("Bolt M6"), "Bolt~bolt M6~m6");
    EXPECT_EQ(OfAttribute("Stra\xC3\x9F"
                          "e \xC3\xA9t\xC3\xA9"),
              "Stra\xC3\x9F"
              "e~strasse \xC3\xA9t\xC3\xA9~ete");
}

TEST(Terms, AreComposedSoThatOneLetterIsOneWhateverItWasTypedOn) {
    EXPECT_EQ(OfAttribute("e\xCC\x81t\xC3\xA9"), OfAttribute("\xC3\xA9te\xCC\x81"));
}

TEST(Terms, OfArabicLoseTheirVowelSigns) {
    // "muhandis" with and without vowel signs, and with a tatweel.
    const std::string plain = "\xD9\x85\xD9\x87\xD9\x86\xD8\xAF\xD8\xB3";
    EXPECT_EQ(Folded("\xD9\x85\xD9\x8F\xD9\x87\xD9\x8E\xD9\x86\xD9\x92\xD8\xAF\xD9\x90\xD8\xB3"),
              plain);
    EXPECT_EQ(Folded("\xD9\x85\xD9\x80\xD9\x87\xD9\x86\xD8\xAF\xD8\xB3"), plain);
    EXPECT_EQ(OfAttribute(plain), plain);
}

TEST(Terms, OfScriptsWithoutWordBreaksArePairsOfCharacters) {
    EXPECT_EQ(OfAttribute("\xE6\x9D\xB1\xE4\xBA\xAC\xE9\x83\xBD"),  // Tokyo-to
              "\xE6\x9D\xB1\xE4\xBA\xAC \xE4\xBA\xAC\xE9\x83\xBD \xE9\x83\xBD");
    EXPECT_EQ(OfAttribute("\xE6\x9D\xB1tower"), "\xE6\x9D\xB1 tower");
}

TEST(Terms, OfKanaAreComposedWhateverTheyWereTypedOn) {
    EXPECT_EQ(OfAttribute("\xE3\x81\x8B\xE3\x82\x99"), OfAttribute("\xE3\x81\x8C"));
}

TEST(Terms, FoldedASecondTimeStayAsTheyAre) {
    for (const char* word : {"Stra\xC3\x9F"
                             "e",
                             "\xC4\xB0zmir",
                             "\xEF\xAC\x83x",
                             "\xD8\xA3\xD8\xB3",
                             "A"}) {
        EXPECT_EQ(Folded(Folded(word)), Folded(word));
    }
}

TEST(Terms, ThatAreTooLongAreCut) {
    const std::string prepared = OfAttribute(std::string(5000, 'x'));
    EXPECT_EQ(prepared, std::string(100, 'x'));
    EXPECT_EQ(Written(Repeated("\xC3\xA9", 80)), Repeated("\xC3\xA9", 50));
    EXPECT_EQ(Written("x" + Repeated("\xC3\xA9", 80)), "x" + Repeated("\xC3\xA9", 49));
}

TEST(Terms, OfBytesThatAreNoUtf8AreNone) {
    EXPECT_EQ(OfAttribute("a\xFF"
                          "b\xC3"),
              "a b");
    EXPECT_EQ(OfAttribute(std::string_view("a\0b", 3)), "a b");
}

TEST(Terms, OfMarksAloneAreNone) {
    EXPECT_EQ(OfAttribute("a \xCC\x81 b"), "a b");
}

TEST(Terms, OfAttributesKeepAllNumbers) {
    EXPECT_EQ(OfAttribute("1 2 3 4.5"), "1 2 3 4 5");
}

TEST(Terms, OfFilesLeaveOutRunsOfNumbers) {
    EXPECT_EQ(OfFile("node 1, 0.5, 1.5e-3 end"), "node . end");
    EXPECT_EQ(OfFile("part 4711 of 12 bolts"), "part 4711 of 12 bolts");
    EXPECT_EQ(OfFile("width 0.25 mm"), "width . mm");
    EXPECT_EQ(OfFile("1 2\nsteel"), "1 2 steel");
    EXPECT_EQ(OfFile("a 1 2 3\n4 5 6\nb"), "a . b");
}

TEST(Terms, OfFilesLeaveOutLinesOfDataThatDifferInNumbersAlone) {
    std::string text;
    for (int i = 0; i < 100; ++i) {
        text += "GRID " + std::to_string(i) + "\n";
    }
    const std::string prepared = OfFile(text + "end");
    EXPECT_THAT(prepared, HasSubstr("GRID~grid 31 . end"));
    EXPECT_THAT(prepared, Not(HasSubstr("GRID~grid 32")));
}

TEST(Terms, OfAttributesKeepAllLines) {
    EXPECT_EQ(OfAttribute(Repeated("a\n", 100)).size(), 199U);
}

TEST(Terms, AreTheSameWhereLinesEndInAnotherWay) {
    EXPECT_EQ(OfFile("a 1\r\nb\r\n"), OfFile("a 1\nb"));
}

TEST(Terms, AGapKeepsTextsApart) {
    std::string prepared = OfAttribute("a");
    AppendGap(prepared);
    AppendPrepared(prepared, "b", Source::Attribute);
    EXPECT_EQ(prepared, "a . b");
}
