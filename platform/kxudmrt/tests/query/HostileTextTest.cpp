// Texts that are meant to do harm: each is refused in words, or read as what it says.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "QueryLibrary.h"
#include "query/Parser.h"
#include "tests/support/Seed.h"

using namespace kxudm::query;
using testing::HasSubstr;

namespace {

std::string RefusalOf(const std::string& text) {
    try {
        static_cast<void>(Parse(text));
    } catch (const kxudm::UDMException& error) {
        return error.what();
    }
    ADD_FAILURE() << "nothing was refused";
    return {};
}

}  // namespace

TEST(HostileText, TenThousandParenthesesAreRefusedAtTheHundredAndFirst) {
    EXPECT_THAT(RefusalOf(std::string(10000, '(')), HasSubstr("character 101 "));
    EXPECT_THAT(RefusalOf(std::string(10000, '!')), HasSubstr("character 101 "));
    EXPECT_THAT(RefusalOf("name == a" + std::string(10000, ')')), HasSubstr("character 10 "));
}

TEST(HostileText, AMegabyteIsRefusedByItsSize) {
    EXPECT_THAT(RefusalOf(std::string(1 << 20, 'x')), HasSubstr("1048576 bytes"));
    EXPECT_THAT(RefusalOf(std::string(1 << 20, ' ')), HasSubstr("1048576 bytes"));
}

TEST(HostileText, NulIsRefusedWithItsPosition) {
    EXPECT_THAT(RefusalOf(std::string("name == \"a\0b\"", 13)), HasSubstr("character 11 "));
    EXPECT_THAT(RefusalOf(std::string("\0", 1)), HasSubstr("can't hold NUL"));
}

TEST(HostileText, WhatIsNoUtf8IsRefusedWithItsPosition) {
    EXPECT_THAT(RefusalOf("name == \"\xC3\xA4\xFF\""), HasSubstr("character 11 "));
    EXPECT_THAT(RefusalOf("name == \"\xC3\xA4\xFF\""), HasSubstr("not UTF-8"));
    for (const char* bytes : {"\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE2\x82", "\x80"}) {
        EXPECT_THAT(RefusalOf("name == \"" + std::string(bytes) + "\""), HasSubstr("not UTF-8"));
    }
}

TEST(HostileText, FragmentsOfSqlAreNoQueries) {
    for (const char* text : {"1=1",
                             "' OR '1'='1",
                             "name == a; DROP TABLE entity",
                             "name == a -- x",
                             "name == a) OR (1",
                             "name == a /* x */",
                             "name == a UNION SELECT 1",
                             "(SELECT 1)"}) {
        EXPECT_THAT(RefusalOf(text), HasSubstr("The query has an error")) << text;
    }
}

// The parser must end with a tree or a refusal, whatever comes.
TEST(HostileText, RandomTokensNeverDoMoreThanFail) {
    const char* tokens[] = {
        "name", "type", "attrib.", "attrib.x",     "==", "!=",   "<",     ">=", "like", "in",
        "(",    ")",    ",",       "&&",           "||", "!",    "\"a\"", "\"", "\\",   "12",
        "*",    "?",    "\xC3",    "\xE2\x82\xAC", " ",  "\x7F", "true",  ";",  "&",    "="};
    const unsigned seed = kxct_test::Seed();
    std::mt19937 random(seed);
    int trees = 0;
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        for (unsigned left = random() % 12; left > 0; --left) {
            text += tokens[random() % std::size(tokens)];
            text += random() % 2 == 0 ? " " : "";
        }
        try {
            trees += Parse(text).Dump().empty() ? 0 : 1;
        } catch (const kxudm::UDMException& error) {
            ASSERT_FALSE(std::string(error.what()).empty()) << "seed " << seed;
        }
    }
    EXPECT_GT(trees, 0) << "seed " << seed;
}
