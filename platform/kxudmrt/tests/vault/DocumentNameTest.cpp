#include <kxudm/UDMException.h>

#include "vault/DocumentName.h"

namespace kxudm::vault {
namespace {

using testing::HasSubstr;

std::string Refusal(const std::string& name) {
    try {
        CheckDocumentName(name);
    } catch (const UDMException& error) {
        return error.what();
    }
    return {};
}

TEST(DocumentName, PlainFileNamesAreTaken) {
    for (const char* name : {"a",
                             "front.inp",
                             ".hidden",
                             "..hidden",
                             "a..b",
                             "two words.txt",
                             " leading blank",
                             "div(phi,U)",
                             "50%_*?:<>|\"'.inp",
                             "Tür-Scharnier.step",
                             "\xE6\x9D\xB1\xE4\xBA\xAC.csv",
                             "\xF0\x9F\x9A\x97",
                             "CONTROL",
                             "COM10",
                             "com",
                             "nul_1.txt",
                             "my.nul"}) {
        EXPECT_EQ(Refusal(name), "") << name;
    }
}

TEST(DocumentName, TheEmptyNameIsRefused) {
    EXPECT_EQ(Refusal(""), "'' is no name for a document: it is empty; give a plain file name");
}

TEST(DocumentName, NamesOfFoldersAreRefused) {
    EXPECT_THAT(Refusal("."), HasSubstr("it names a folder"));
    EXPECT_THAT(Refusal(".."), HasSubstr("it names a folder"));
}

TEST(DocumentName, SeparatorsAreRefused) {
    for (const char* name : {"a/b", "/etc/passwd", "../a", "a/", "..\\a", "C:\\a", "\\"}) {
        EXPECT_THAT(Refusal(name), HasSubstr("it holds a separator")) << name;
    }
}

TEST(DocumentName, EveryControlCharacterIsRefusedAndShownAsItsNumber) {
    for (int code = 0; code < 0x20; ++code) {
        const std::string name = std::string("a") + static_cast<char>(code) + "b";
        EXPECT_THAT(Refusal(name), HasSubstr("it holds a control character")) << code;
        EXPECT_EQ(Refusal(name).find(static_cast<char>(code)), std::string::npos) << code;
    }
    EXPECT_THAT(Refusal("a\x7F"), HasSubstr("'a\\x7F' is no name"));
    EXPECT_THAT(Refusal("a\nb"), HasSubstr("'a\\x0Ab' is no name"));
    // U+0085, a line end in some encodings.
    EXPECT_THAT(Refusal("a\xC2\x85"), HasSubstr("it holds a control character"));
}

TEST(DocumentName, BytesThatAreNotUtf8AreRefused) {
    for (const char* name :
         {"a\xFF", "\xC3", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\x80"}) {
        EXPECT_THAT(Refusal(name), HasSubstr("it is no valid UTF-8")) << name;
    }
    EXPECT_THAT(Refusal("T\xFCr"), HasSubstr("'T\\xFCr' is no name"));
}

TEST(DocumentName, TheLimitIs255Bytes) {
    EXPECT_EQ(Refusal(std::string(255, 'a')), "");
    EXPECT_THAT(Refusal(std::string(256, 'a')), HasSubstr("it is longer than 255 bytes"));
    std::string umlauts;
    for (int i = 0; i < 128; ++i) {
        umlauts += "\xC3\xBC";
    }
    EXPECT_THAT(Refusal(umlauts), HasSubstr("it is longer than 255 bytes"));
}

TEST(DocumentName, ALongNameIsCutInTheMessage) {
    EXPECT_LT(Refusal(std::string(100000, 'a')).size(), 1200U);
}

TEST(DocumentName, DotsAndBlanksAtTheEndAreRefused) {
    for (const char* name : {"a.", "a ", "...", " "}) {
        EXPECT_THAT(Refusal(name), HasSubstr("it ends with a dot or a blank")) << name;
    }
}

TEST(DocumentName, NamesOfDevicesAreRefusedInAnyCaseAndWithAnyExtension) {
    for (const char* name : {"CON",
                             "con",
                             "Prn",
                             "aux.txt",
                             "NUL.tar.gz",
                             "nul .txt",
                             "COM0",
                             "com1",
                             "Com9.dat",
                             "LPT1",
                             "lpt\xC2\xB9",
                             "COM\xC2\xB2.x",
                             "COM\xC2\xB3",
                             "conin$",
                             "CONOUT$"}) {
        EXPECT_THAT(Refusal(name), HasSubstr("it is the name of a device")) << name;
    }
}

}  // namespace
}  // namespace kxudm::vault
