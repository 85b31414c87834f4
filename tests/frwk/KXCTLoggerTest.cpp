#include <kxct/EntryPoints.h>
#include <kxlmcore/Message.h>
#include <kxlmcore/iMessageLogger.h>

#include <memory>

#include "tests/frwk/LibraryManager.h"
#include "tests/settings/TemporaryFolder.h"

namespace {

using kxct::test::Content;
using kxlm::Message;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;

using Logger = std::unique_ptr<kxlm::iMessageLogger>;

class KXCTLogger : public testing::Test {
  protected:
    Logger Make(int mode, const kxString& level = "") {
        HostSettings settings{{"KXEDMLogFilePath", path}, {"KXEDMLogLevel", level}};
        return Logger(KXCT_CreateLogger(mode, &settings));
    }
    // The file without the times; fails for a line without one.
    std::string Written() const {
        std::istringstream file(Content(path));
        std::string text;
        for (std::string line; std::getline(file, line); text += line + "\n") {
            const std::size_t time = line.find(" :: ");
            if (time != std::string::npos) {
                line.erase(0, time + 4);
            }
        }
        return text;
    }
    std::string Extended(const kxString& text, const kxStlVector<kxString>& details) {
        std::filesystem::remove(path);
        Make(0)->LogMessageExtended(text, details);
        const std::string line = Written();
        EXPECT_EQ(line.back(), '\n');
        return line.substr(0, line.size() - 1);
    }

    kxct::test::TemporaryFolder folder;
    const std::string path = folder / "manager.log";
    HostFileMgr manager;
};

TEST_F(KXCTLogger, TheTypeGivesTheLineItsPrefix) {
    const Logger logger = Make(0);
    for (const unsigned int type : {0U, 1U, 2U, 3U, 4U, 5U, 7U, 4294967295U}) {
        logger->LogMessage(type, "text");
    }
    EXPECT_EQ(Written(),
              "MSG: text\nINFO: text\nWARNING: text\nERROR: text\nFATAL: text\n"
              "text\ntext\ntext\n");
    EXPECT_THAT(manager.messages, IsEmpty());
}

TEST_F(KXCTLogger, ALineBeginsWithTheLocalTime) {
    Make(0)->LogMessage(3, "text");
    EXPECT_THAT(
        Content(path),
        MatchesRegex("[A-Z][a-z]+ [A-Z][a-z]+ [ 0-9]+:[0-9]+:[0-9]+ [0-9]+ :: ERROR: text\n"));
}

TEST_F(KXCTLogger, ALineIsInTheFileAtOnce) {
    const Logger logger = Make(0);
    logger->LogMessage(1, "first");
    EXPECT_EQ(Written(), "INFO: first\n");
}

TEST_F(KXCTLogger, MessagesBelowTheLevelAreNotWritten) {
    const Logger logger = Make(0, "2");
    logger->LogMessage(1, "one");
    logger->LogMessage(2, "two");
    logger->LogMessage(Message(0, "three"));
    logger->LogMessage(Message(3, "four"), "file", 1);
    logger->LogMessage(Message(1, "five"), "file", 1, "extra");
    EXPECT_EQ(Written(), "WARNING: two\nERROR: four\n");
}

TEST_F(KXCTLogger, ALevelThatIsNoNumberIsZero) {
    Make(0, "loud")->LogMessage(0, "text");
    EXPECT_EQ(Written(), "MSG: text\n");
}

TEST_F(KXCTLogger, ANegativeLevelLetsEverythingThrough) {
    Make(0, "-1")->LogMessage(0, "text");
    EXPECT_EQ(Written(), "MSG: text\n");
}

TEST_F(KXCTLogger, ReadsPathAndLevelFromTheSettings) {
    HostSettings settings{};
    const Logger logger(KXCT_CreateLogger(0, &settings));
    EXPECT_THAT(settings.asked, ElementsAre("KXEDMLogFilePath 1 0", "KXEDMLogLevel 1 0"));
}

TEST_F(KXCTLogger, ASecondLoggerAppends) {
    const Logger first = Make(0);
    first->LogMessage(1, "first");
    const Logger second = Make(0);
    second->LogMessage(1, "second");
    first->LogMessage(1, "third");
    EXPECT_EQ(Written(), "INFO: first\nINFO: second\nINFO: third\n");
}

TEST_F(KXCTLogger, AFileThatDoesNotOpenMakesALoggerThatWritesNothing) {
    for (const kxString& nowhere :
         {kxString(), kxString(folder / "missing/a.log"), kxString("/")}) {
        HostSettings settings{{"KXEDMLogFilePath", nowhere}};
        const Logger logger(KXCT_CreateLogger(0, &settings));
        ASSERT_NE(logger, nullptr);
        logger->LogMessage(4, "text");
        logger->LogMessage(Message(4, "text"), "file", 1, "extra");
        logger->LogMessageExtended("%s", {"text"});
    }
    EXPECT_THAT(manager.messages, IsEmpty());
    EXPECT_EQ(folder.Entries(), 0U);
}

TEST_F(KXCTLogger, AFullDiskFailsSilently) {
    HostSettings settings{{"KXEDMLogFilePath", "/dev/full"}};
    const Logger logger(KXCT_CreateLogger(0, &settings));
    logger->LogMessage(4, kxString(100000, 'x'));
    logger->LogMessage(4, "text");
}

TEST_F(KXCTLogger, OnlyTheFormWithMoreInformationTellsThePositionInTheFile) {
    const Logger logger = Make(0);
    logger->LogMessage(1, "a", "Store.cpp", 7);
    logger->LogMessage(Message(2, "b"), "Store.cpp", 8);
    logger->LogMessage(Message(9, "c"), "Store.cpp", 9);
    EXPECT_EQ(Written(), "INFO: a\nWARNING: b\nc\n");
    logger->LogMessage(Message(3, "d"), "Store.cpp", -10, "disk 2");
    EXPECT_THAT(Written(), HasSubstr("ERROR: Store.cpp(-10): d\nAdditional Info:disk 2\n"));
}

TEST_F(KXCTLogger, InAnotherModeTheFileManagerGetsWhatIsSerious) {
    for (const int mode : {1, -1, 42}) {
        manager.messages.clear();
        const Logger logger = Make(mode, "4");
        logger->LogMessage(2, "a");
        logger->LogMessage(Message(2, "b"));
        logger->LogMessage(2, "c", "Store.cpp", 7);
        logger->LogMessage(Message(2, "d"), "Store.cpp", 7);
        logger->LogMessage(Message(2, "e"), "Store.cpp", 7, "extra");
        EXPECT_THAT(manager.messages, IsEmpty());
        logger->LogMessage(3, "a");
        logger->LogMessage(Message(4, "b"));
        logger->LogMessage(5, "c", "Store.cpp", 7);
        logger->LogMessage(Message(3, "d"), "Store.cpp", 8);
        logger->LogMessage(Message(3, "e"), "Store.cpp", 9, "extra");
        EXPECT_THAT(
            manager.messages,
            ElementsAre(
                "3 a", "4 b", "5 Store.cpp(7): c", "3 Store.cpp(8): d", "3 Store.cpp(9): e"));
    }
    EXPECT_EQ(folder.Entries(), 0U);
}

TEST_F(KXCTLogger, WithoutAFileManagerNothingHappens) {
    kxLMUtls::SetFileMgr(nullptr);
    const Logger logger = Make(1);
    logger->LogMessage(4, "text");
    logger->LogMessage(Message(4, "text"));
    logger->LogMessage(4, "text", "file", 1);
    logger->LogMessage(Message(4, "text"), "file", 1, "extra");
    logger->LogMessageExtended("text", {});
    EXPECT_THAT(manager.messages, IsEmpty());
}

TEST_F(KXCTLogger, SupportsTheNewInterface) {
    EXPECT_TRUE(Make(0)->SupportsNewInterface());
}

TEST_F(KXCTLogger, AnExtendedMessageHasNoPrefixAndNoLevel) {
    Make(0, "4")->LogMessageExtended("stored %s of %s", {"3", "4"});
    EXPECT_EQ(Written(), "stored 3 of 4\n");
}

TEST_F(KXCTLogger, AnExtendedMessageWithoutDetailsIsWrittenAsItStands) {
    EXPECT_EQ(Extended("100% of %s%n", {}), "100% of %s%n");
    const kxString text(5000, 'x');
    EXPECT_EQ(Extended(text, {}), text);
}

TEST_F(KXCTLogger, AFileManagerGetsAnExtendedMessageAsAnErrorWithoutDetails) {
    Make(1)->LogMessageExtended("stored %s", {"3"});
    EXPECT_THAT(manager.messages, ElementsAre("3 stored %s"));
}

TEST_F(KXCTLogger, FlagsWidthPrecisionAndPositionOfATextCount) {
    EXPECT_EQ(Extended("[%5s|%-5s|%.2s|%05.1s|%s%%]", {"ab", "cd", "efg", "hij", "k"}),
              "[   ab|cd   |ef|    h|k%]");
    EXPECT_EQ(Extended("%2$s before %1$s, %2$-4s|", {"b", "a"}), "a before b, a   |");
}

TEST_F(KXCTLogger, AtMostFiveDetailsAreUsedAndMissingOnesAreEmpty) {
    EXPECT_EQ(Extended("%s%s%s%s%s[%s]", {"1", "2", "3", "4", "5", "6"}), "12345[]");
    EXPECT_EQ(Extended("%s,%s,%s", {"1"}), "1,,");
    EXPECT_EQ(Extended("%6$s,%0$s,%99999999999$s|", {"1", "2", "3", "4", "5", "6"}), ",%0$s,|");
    EXPECT_EQ(Extended("none", {"1"}), "none");
}

TEST_F(KXCTLogger, AConversionThatIsNotOfATextStandsAsItIs) {
    EXPECT_EQ(Extended("%n%d%x%p%c%ls%hhs%*s%f%", {"a", "b", "c", "d", "e"}),
              "%n%d%x%p%c%ls%hhs%*s%f%");
    EXPECT_EQ(Extended("%5", {"a"}), "%5");
    EXPECT_EQ(Extended("%.", {"a"}), "%.");
    EXPECT_EQ(Extended("%1$", {"a"}), "%1$");
    EXPECT_EQ(Extended("%d %s", {"a", "b"}), "%d a");
}

TEST_F(KXCTLogger, WhatDoesNotFitInto499BytesIsCut) {
    EXPECT_EQ(Extended("%s", {kxString(498, 'x')}), std::string(498, 'x'));
    EXPECT_EQ(Extended("%s", {kxString(499, 'x')}), std::string(499, 'x'));
    EXPECT_EQ(Extended("%s", {kxString(500, 'x')}), std::string(499, 'x'));
    EXPECT_EQ(Extended("%s", {kxString(3000000, 'x')}), std::string(499, 'x'));
    EXPECT_EQ(Extended("%s%s", {kxString(498, 'x'), "yz"}), std::string(498, 'x') + "y");
    EXPECT_EQ(Extended(kxString(600, 'x') + "%s", {"y"}), std::string(499, 'x'));
    EXPECT_EQ(Extended("%s%%%s", {kxString(499, 'x'), "y"}), std::string(499, 'x'));
}

TEST_F(KXCTLogger, HugeWidthsAndPrecisionsAreBounded) {
    const std::string blanks(499, ' ');
    EXPECT_EQ(Extended("%2147483647s", {"x"}), blanks);
    EXPECT_EQ(Extended("%99999999999999999999s%s", {"x", "y"}), blanks);
    EXPECT_EQ(Extended("%-99999999999s|", {"x"}), "x" + blanks.substr(1));
    EXPECT_EQ(Extended("%.99999999999s|", {"x"}), "x|");
    EXPECT_EQ(Extended("%497s|", {"x"}), blanks.substr(0, 496) + "x|");
    EXPECT_EQ(Extended("%1000.1s|", {kxString(900, 'x')}), blanks);
}

TEST_F(KXCTLogger, FormatAndDetailsEndAtAZeroByte) {
    EXPECT_EQ(Extended(kxString("a%s\0b%s", 7), {kxString("x\0y", 3)}), "ax");
}

// Whatever stands in a format, a logger writes one line of at most 499 bytes.
TEST_F(KXCTLogger, GeneratedFormatsNeverOverflow) {
    constexpr std::string_view alphabet = "%%%%s$-+ #0.*123456789nldhxX";
    std::uint32_t seed = 20240607;
    const auto next = [&seed] { return (seed = seed * 1664525U + 1013904223U) >> 8; };
    const Logger logger = Make(0);
    for (int round = 0; round < 2000; ++round) {
        kxString format;
        for (std::uint32_t i = next() % 60; i > 0; --i) {
            format += alphabet[next() % alphabet.size()];
        }
        kxStlVector<kxString> details;
        for (std::uint32_t i = 1 + next() % 6; i > 0; --i) {
            details.emplace_back(next() % 700, 'x');
        }
        logger->LogMessageExtended(format, details);
    }
    std::istringstream written(Written());
    int lines = 0;
    for (std::string line; std::getline(written, line); ++lines) {
        EXPECT_LE(line.size(), 499U);
    }
    EXPECT_EQ(lines, 2000);
}

}  // namespace
