#include <random>

#include "TclFixture.h"

namespace {

class kxInterpTclText : public TclFixture {
  protected:
    kxString EchoText(const kxString& text) { return Echo(text, "").GetString(); }
};

TEST_F(kxInterpTclText, PassesPlainAndUnicodeText) {
    for (const char* text :
         {"", "abc", "a b\n{}$[]\\\"", "\xc3\xa4\xe2\x82\xac", "\xf0\x9f\x98\x80"}) {
        EXPECT_EQ(EchoText(text), text);
    }
}

TEST_F(kxInterpTclText, CharactersCountAsTclCountsThem) {
    EXPECT_EQ(Evaluate("proc len x {string length $x}"), kxVariant(""));
    EXPECT_EQ(Invoke("len", "\xc3\xa4\xe2\x82\xac", 0).GetInteger(), 2);
    EXPECT_EQ(Invoke("len", kxString("a\0b", 3), 0).GetInteger(), 3);
}

TEST_F(kxInterpTclText, KeepsEmbeddedNul) {
    const kxString text("\0a\0\0b\0", 6);
    EXPECT_EQ(EchoText(text), text);
}

TEST_F(kxInterpTclText, AScriptSeesAndMakesNul) {
    Run("proc second x {string index $x 1}");
    EXPECT_EQ(Invoke("second", kxString("a\0b", 3), "").GetString(), kxString("\0", 1));
    EXPECT_EQ(Evaluate("format %c%c 0 65", "").GetString(), kxString("\0A", 2));
    EXPECT_EQ(Evaluate("string length \"\\0\"", 0).GetInteger(), 1);
}

TEST_F(kxInterpTclText, ACharacterBeyondTheBasicPlaneIsTheSameAsTclsOwn) {
    Run("proc same x {expr {$x eq [encoding convertfrom utf-8 [binary decode hex f09f9880]]}}");
    EXPECT_TRUE(Invoke("same", "\xf0\x9f\x98\x80", false).GetBoolean());
    EXPECT_EQ(Evaluate("encoding convertfrom utf-8 [binary decode hex f09f9880]", "").GetString(),
              "\xf0\x9f\x98\x80");
    Run("proc cut x {string range $x 1 end}");
    EXPECT_EQ(Invoke("cut", "a\xf0\x9f\x98\x80z", "").GetString(), "\xf0\x9f\x98\x80z");
}

TEST_F(kxInterpTclText, KeepsBytesThatAreNoUtf8) {
    for (const kxString& text : {kxString("\xff"),
                                 kxString("\xc0"),
                                 kxString("\xc3("),
                                 kxString("a\xf0\x9f\x98"),
                                 kxString("\xf8\x88\x80\x80\x80"),
                                 kxString("\xf4\x90\x80\x80"),
                                 kxString("\xf0\x80\x80\x80"),
                                 kxString("\xed\xa0\xbd"),
                                 kxString("\xed\xb8\x80\xed\xa0\xbd"),
                                 kxString("\xed"),
                                 kxString("\xc1\x80\xfe\0\xff", 5)}) {
        EXPECT_EQ(EchoText(text), text);
    }
}

// Every sequence of bytes but the two that Tcl's own form claims for itself.
TEST_F(kxInterpTclText, RandomBytesComeBackExactly) {
    std::mt19937 random(99);
    for (int round = 0; round < 2000; ++round) {
        kxString text;
        const std::size_t length = random() % 40;
        while (text.size() < length) {
            text += static_cast<char>(random() % 256);
        }
        if (text.find("\xC0\x80") == kxString::npos && text.find('\xED') == kxString::npos) {
            ASSERT_EQ(EchoText(text), text);
        }
    }
}

TEST_F(kxInterpTclText, TclsOwnFormOfNulReadsAsNul) {
    EXPECT_EQ(EchoText("\xC0\x80"), kxString("\0", 1));
    EXPECT_EQ(EchoText("\xed\xa0\xbd\xed\xb8\x80"), "\xf0\x9f\x98\x80");
}

TEST_F(kxInterpTclText, PassesMuchText) {
    const kxString plain(20'000'000, 'x');
    EXPECT_EQ(EchoText(plain), plain);
    const kxString nuls(3'000'000, '\0');
    EXPECT_EQ(EchoText(nuls), nuls);
}

TEST_F(kxInterpTclText, ErrorsCarryNulAndUnicodeToo) {
    kxStlVector<kxVariant> arguments = {kxString("x\0\xf0\x9f\x98\x80", 6)};
    kxVariant result("");
    EXPECT_FALSE(_interp->invoke("error", arguments, result));
    EXPECT_EQ(_interp->LastError(), kxString("x\0\xf0\x9f\x98\x80", 6));
}

TEST_F(kxInterpTclText, ScriptsMayHoldUnicodeAndNul) {
    EXPECT_EQ(Evaluate("set x \"\xc3\xa4\xf0\x9f\x98\x80\"", "").GetString(),
              "\xc3\xa4\xf0\x9f\x98\x80");
    EXPECT_EQ(Evaluate(kxString("set x {a\0b}", 11), "").GetString(), kxString("a\0b", 3));
}

}  // namespace
