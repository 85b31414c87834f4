// Texts of queries and the trees they make; texts that are none, and what is said of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "query/Parser.h"

using namespace kxudm::query;
using testing::HasSubstr;

namespace {

struct Row {
    const char* text;
    const char* tree;
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << row.text;
}

class Trees : public testing::TestWithParam<Row> {};

struct Wrong {
    const char* text;
    std::size_t position;
    const char* fragment;
    const char* problem;
};

void PrintTo(const Wrong& wrong, std::ostream* out) {
    *out << wrong.text;
}

class Errors : public testing::TestWithParam<Wrong> {};

std::string Repeated(const std::string& text, int times) {
    std::string out;
    for (int i = 0; i < times; ++i) {
        out += text;
    }
    return out;
}

}  // namespace

TEST_P(Trees, IsWhatTheTextSays) {
    EXPECT_EQ(Parse(GetParam().text).Dump(), GetParam().tree) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Parser,
    Trees,
    testing::Values(
        Row{"", "(roots)"},
        Row{" \t\r\n ", "(roots)"},
        // Fields and operators
        Row{"type == UDMPart", R"((== type "UDMPart"))"},
        Row{"class != UDMPart", R"((!= class "UDMPart"))"},
        // Definitions may have blanks in their names
        Row{"(type == Wing box part) && name == a",
            R"((and (== type "Wing box part") (== name "a")))"},
        Row{"class != Wing  box||!type == Rib 2",
            R"((or (!= class "Wing  box") (not (== type "Rib 2"))))"},
        Row{"type in (Wing box, \"Rib\", a in b)", R"((in type "Wing box" "Rib" "a in b"))"},
        Row{"id == 01HZX3:4", R"((== id "01HZX3:4"))"},
        Row{"name < b", R"((< name "b"))"},
        Row{"name <= b", R"((<= name "b"))"},
        Row{"name > b", R"((> name "b"))"},
        Row{"name >= b", R"((>= name "b"))"},
        Row{"name like b", R"((like name "b"))"},
        Row{"attrib.mass > 1", R"((> attrib.mass "1"=1))"},
        Row{"attrib.smd_user == anna", R"((== attrib.smd_user "anna"))"},
        Row{"attrib.a-b.c_1 == x", R"((== attrib.a-b.c_1 "x"))"},
        Row{"attrib.\"Young's modulus\" > 2", R"((> attrib."Young's modulus" "2"=2))"},
        Row{"attrib.\"mass\" > 2", R"((> attrib.mass "2"=2))"},
        Row{"attrib.Gr\xC3\xB6\xC3\x9F"
            "e == 1",
            "(== attrib.Gr\xC3\xB6\xC3\x9F"
            "e \"1\"=1)"},
        Row{"name in (a, \"b c\", 3)", R"((in name "a" "b c" "3"=3))"},
        Row{"name in(a)", R"((in name "a"))"},
        // No blank is needed where nothing runs together
        Row{"type==UDMPart&&name!=\"x\"", R"((and (== type "UDMPart") (!= name "x")))"},
        Row{"attrib.mass>=-1.5||attrib.mass<1e3",
            R"((or (>= attrib.mass "-1.5"=-1.5) (< attrib.mass "1e3"=1000)))"},
        Row{"name like\"part\"", R"((like name "part"))"},
        // Values
        Row{R"(name == "a \"b\" \\ c")", R"((== name "a \"b\" \\ c"))"},
        Row{R"(name == "C:\temp")", R"((== name "C:\\temp"))"},
        Row{"name == \"\"", R"((== name ""))"},
        Row{"name == \"12\"", R"((== name "12"=12))"},
        Row{"name == 007", R"((== name "007"=7))"},
        Row{"name == +5", R"((== name "+5"=5))"},
        Row{"name == .5", R"((== name ".5"=0.5))"},
        Row{"name == 9223372036854775807",
            R"((== name "9223372036854775807"=9223372036854775807))"},
        Row{"name == 01E99999999999999999999999", R"((== name "01E99999999999999999999999"))"},
        Row{"name == 1.2.3", R"((== name "1.2.3"))"},
        Row{"name == inf", R"((== name "inf"))"},
        Row{"name == 0x10", R"((== name "0x10"))"},
        Row{"name == +-5", R"((== name "+-5"))"},
        Row{"name == true", R"((== name "true"=1))"},
        Row{"name == False", R"((== name "False"=0))"},
        Row{"name == like", R"((== name "like"))"},
        Row{"name like part*", R"((like name "part*"))"},
        Row{"name like \"100%_[a]\"", R"((like name "100%_[a]"))"},
        // Structure
        Row{"name == a && name == b && name == c",
            R"((and (== name "a") (== name "b") (== name "c")))"},
        Row{"name == a || name == b && name == c",
            R"((or (== name "a") (and (== name "b") (== name "c"))))"},
        Row{"(name == a || name == b) && name == c",
            R"((and (or (== name "a") (== name "b")) (== name "c")))"},
        Row{"name == a && (name == b && name == c)",
            R"((and (== name "a") (== name "b") (== name "c")))"},
        Row{"((((name == a))))", R"((== name "a"))"},
        Row{"!name == a", R"((not (== name "a")))"},
        Row{"!(name == a || name == b)", R"((not (or (== name "a") (== name "b"))))"},
        Row{"!!name == a", R"((== name "a"))"},
        Row{"!(!(name == a && !!!name == b))", R"((and (== name "a") (not (== name "b"))))"},
        Row{"!name == a && name == b", R"((and (not (== name "a")) (== name "b")))"},
        // As the controller and the child filters write them
        Row{"(type == UDMPart) && (attrib.displayname like \"part\")",
            R"((and (== type "UDMPart") (like attrib.displayname "part")))"},
        Row{"(type == Foldertype) && (attrib.name like \"\")",
            R"((and (== type "Foldertype") (like attrib.name "")))"},
        Row{"type == UDMRepPartMesh && attrib.state == \"approved\"",
            R"((and (== type "UDMRepPartMesh") (== attrib.state "approved")))"},
        // ... with names that hold signs of the language
        Row{R"((type == UDMPart) && (attrib.displayname like "3" bolt"))",
            R"((and (== type "UDMPart") (like attrib.displayname "3\" bolt")))"},
        Row{R"((type == Wing box) && (attrib.displayname like """))",
            R"((and (== type "Wing box") (like attrib.displayname "\"")))"},
        Row{R"((type == Foldertype) && (attrib.name like "a\"))",
            R"((and (== type "Foldertype") (like attrib.name "a\\")))"},
        Row{R"((type == A) && (attrib.name like "x") || (type == B"))",
            R"((and (== type "A") (like attrib.name "x\") || (type == B")))"}),
    [](const auto& parameter) { return "Row" + std::to_string(parameter.index); });

TEST_P(Errors, NamePositionFragmentAndWhatWasExpected) {
    const Wrong& wrong = GetParam();
    try {
        const Tree tree = Parse(wrong.text);
        FAIL() << wrong.text << " was taken for " << tree.Dump();
    } catch (const SyntaxError& error) {
        EXPECT_EQ(error.Position(), wrong.position) << error.what();
        EXPECT_EQ(error.Fragment(), wrong.fragment) << error.what();
        EXPECT_THAT(error.what(), HasSubstr(wrong.problem));
        EXPECT_THAT(error.what(), HasSubstr("character " + std::to_string(wrong.position)));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Parser,
    Errors,
    testing::Values(
        Wrong{"mass > 1", 1, "mass", "expected type, class, id, name, attrib.NAME"},
        Wrong{"Type == a", 1, "Type", "expected type"},
        Wrong{"\"type\" == a", 1, "\"type\"", "expected type"},
        Wrong{"&& name == a", 1, "&&", "expected type"},
        Wrong{"name", 5, "", "expected ==, !="},
        Wrong{"name = a", 6, "=", "no meaning outside of quotation marks"},
        Wrong{"name a", 6, "a", "expected ==, !="},
        Wrong{"name LIKE a", 6, "LIKE", "expected ==, !="},
        Wrong{"name ==", 8, "", "expected a value"},
        Wrong{"name == && name == b", 9, "&&", "expected a value"},
        Wrong{"name == a name == b", 11, "name", "expected && or ||"},
        Wrong{"name == a & name == b", 11, "&", "no meaning"},
        Wrong{"type == a \"b\"", 11, "\"b\"", "expected && or ||"},
        Wrong{"type == \"a\" b", 13, "b", "expected && or ||"},
        Wrong{"type == a and name == b", 20, "==", "expected && or ||"},
        // Only that one question is read so
        Wrong{"(type == A) && (attrib.name == \"a\"b\")", 35, "b", "expected"},
        Wrong{"name like \"a\"b\"", 14, "b", "expected && or ||"},
        Wrong{"(type == A) || (attrib.name like \"a\"b\")", 37, "b", "expected"},
        Wrong{"(type == \"A\") && (attrib.name like \"a\"b\")", 39, "b", "expected"},
        Wrong{"name == a and name == b", 11, "and", "expected && or ||"},
        Wrong{"name == a &&", 13, "", "expected type"},
        Wrong{"(name == a", 11, "", "expected &&, || or \")\""},
        Wrong{"name == a)", 10, ")", "no \"(\" that this closes"},
        Wrong{"()", 2, ")", "expected type"},
        Wrong{"!", 2, "", "expected type"},
        Wrong{"name == \"a", 9, "\"a", "closes this text is missing"},
        Wrong{"name == \"a\\\"", 9, "\"a\\\"", "closes this text is missing"},
        Wrong{"name == (a, b)", 9, "(", "only follow the operator in"},
        Wrong{"name in a", 9, "a", "expected \"(\""},
        Wrong{"name in ()", 10, ")", "expected a value"},
        Wrong{"name in (a b)", 12, "b", "expected \",\" or \")\""},
        Wrong{"name in (a,)", 12, ")", "expected a value"},
        Wrong{"name in (a", 11, "", "expected \",\" or \")\""},
        Wrong{"attrib == a", 1, "attrib", "expected type"},
        Wrong{"attrib. == a", 9, "==", "expected the name of an attribute"},
        Wrong{"attrib. \"x\" == a", 9, "\"x\"", "directly after"},
        Wrong{"attrib.\"\" == a", 8, "\"\"", "expected the name of an attribute"},
        Wrong{"attrib.a*b == a", 1, "attrib.a*b", "must stand in quotation marks"},
        Wrong{"type < UDMPart", 6, "<", "definitions have no order"},
        Wrong{"class >= UDMPart", 7, ">=", "definitions have no order"},
        Wrong{"name == a; DROP TABLE entity", 10, ";", "no meaning"},
        Wrong{"name == 'a'", 9, "'", "no meaning"},
        // Positions count characters, not bytes
        Wrong{"name == \"\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\" x", 15, "x", "expected && or ||"},
        Wrong{"name == a\x01", 10, "\x01", "control character"}),
    [](const auto& parameter) { return "Row" + std::to_string(parameter.index); });

TEST(Parser, AnErrorIsOneLineThatShowsTheFragmentInPrintableForm) {
    try {
        static_cast<void>(Parse("name == a\x1B"));
        FAIL();
    } catch (const kxudm::UDMException& error) {
        EXPECT_STREQ(error.what(),
                     "The query has an error at character 10 at \"\\x1B\": a control character "
                     "must stand in quotation marks");
    }
}

TEST(Parser, ALongFragmentIsCutBetweenCharacters) {
    try {
        static_cast<void>(Parse("name == a " + Repeated("\xE2\x82\xAC", 100)));
        FAIL();
    } catch (const SyntaxError& error) {
        EXPECT_EQ(error.Fragment(), Repeated("\xE2\x82\xAC", 13));
        EXPECT_THAT(error.what(), HasSubstr("...\": expected && or ||"));
    }
}

TEST(Parser, AHundredLevelsAreTakenAndOneMoreIsNot) {
    const auto nested = [](int levels) {
        return Repeated("(", levels) + "name == a" + Repeated(")", levels);
    };
    EXPECT_EQ(Parse(nested(100)).Dump(), R"((== name "a"))");
    try {
        static_cast<void>(Parse(nested(101)));
        FAIL();
    } catch (const SyntaxError& error) {
        EXPECT_EQ(error.Position(), 101U);
        EXPECT_THAT(error.what(), HasSubstr("100 levels"));
    }
    EXPECT_EQ(Parse(Repeated("!", 100) + "name == a").Dump(), R"((== name "a"))");
    EXPECT_THROW(static_cast<void>(Parse(Repeated("!", 101) + "name == a")), SyntaxError);
}

TEST(Parser, AThousandTermsAreTakenAndOneMoreIsNot) {
    const std::string more = " || name == a";
    EXPECT_EQ(Parse("name == a" + Repeated(more, 999)).Comparisons().size(), 1000U);
    EXPECT_THROW(static_cast<void>(Parse("name == a" + Repeated(more, 1000))), SyntaxError);
    EXPECT_EQ(Parse("name in (a" + Repeated(",a", 999) + ")").Comparisons()[0].values.size(),
              1000U);
    EXPECT_THROW(static_cast<void>(Parse("name in (a" + Repeated(",a", 1000) + ")")), SyntaxError);
}

TEST(Parser, APatternHasALimitOfItsOwn) {
    const std::string longest(MAX_PATTERN_BYTES, 'x');
    EXPECT_NO_THROW(static_cast<void>(Parse("name like " + longest)));
    EXPECT_THROW(static_cast<void>(Parse("name like x" + longest)), SyntaxError);
    EXPECT_NO_THROW(static_cast<void>(Parse("name == x" + longest)));
}

TEST(Parser, ATextOf64KiBIsTakenAndALongerOneIsNot) {
    const std::string text = "name == \"" + std::string(MAX_QUERY_BYTES - 10, 'x') + "\"";
    EXPECT_EQ(Parse(text).Comparisons().size(), 1U);
    try {
        static_cast<void>(Parse(text + " "));
        FAIL();
    } catch (const kxudm::UDMException& error) {
        EXPECT_THAT(error.what(), HasSubstr("65537 bytes"));
    }
}

TEST(Tree, ItsNodesStandAfterTheirChildren) {
    const Tree tree = Parse("!(name == a && !!(name == b || name == c)) || !!name == d");
    for (std::size_t i = 0; i < tree.Nodes().size(); ++i) {
        for (const std::size_t child : tree.Nodes()[i].children) {
            EXPECT_LT(child, i);
        }
    }
    EXPECT_EQ(Tree(tree).Dump(), tree.Dump());
}
