// What a reader refuses, where it says that it stands, and what it expected.
#include "Documents.h"

namespace kxudm::exchange {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

const std::string kHead =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<library version=\"1\" scope=\"2\">\n";
const std::string kEntity =
    "<entity uid=\"" + kUidA +
    "\" definition=\"Part\" name=\"Wheel\" created=\"2026-01-31T12:00:00Z\" creator=\"ann\" "
    "workspace=\"desk\">\n";
const std::string kRevision =
    "<revision number=\"1\" displayname=\"Wheel\" created=\"2026-01-31T12:00:00Z\" "
    "creator=\"ann\" modified=\"2026-01-31T12:00:00Z\" modifier=\"ann\" "
    "published=\"2026-01-31T12:00:00Z\" publisher=\"ann\" workspace=\"desk\" comment=\"\">\n";
const std::string kFile =
    "<file name=\"a.inp\" sha256=\"" + std::string(64, 'b') +
    "\" size=\"3\" modified=\"2026-01-31T12:00:00Z\" added=\"2026-01-31T12:00:00Z\" from=\"1\"/>\n";
const std::string kLink =
    "<link kind=\"owner\" name=\"parts\" uid=\"" + kUidB + "\" from=\"1\"/>\n";

// One entity with one revision, one file and one link.
std::string Whole() {
    return kHead + "<definitions>\n</definitions>\n<entities>\n" + kEntity + kRevision +
           "<attribute name=\"mass\" type=\"Double\">1.5</attribute>\n</revision>\n" + kFile +
           "</entity>\n</entities>\n<links>\n<of uid=\"" + kUidA + "\">\n" + kLink +
           "</of>\n</links>\n<end entities=\"1\" revisions=\"1\" files=\"1\" links=\"1\"/>\n"
           "</library>\n";
}

std::string With(const std::string& from, const std::string& to) {
    std::string text = Whole();
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return text.replace(at, from.size(), to);
}

TEST(DocumentReader, TakesASmallDocument) {
    EXPECT_EQ(ErrorOf(Whole()), "");
}

TEST(DocumentReader, RefusesADocumentTypeAndWithItEveryEntity) {
    const std::string bomb =
        "<!DOCTYPE library [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;\">]>\n";
    EXPECT_EQ(ErrorOf(With("<library", bomb + "<library")),
              "library.xml:2:19: a document type and entities are not allowed; expected <library>");
    EXPECT_THAT(ErrorOf(With("name=\"Wheel\"", "name=\"&nbsp;\"")),
                HasSubstr("undefined entity; expected well-formed XML in UTF-8"));
}

TEST(DocumentReader, RefusesAnotherEncoding) {
    EXPECT_THAT(ErrorOf(With("name=\"Wheel\"", "name=\"\xE4rger\"")), HasSubstr("not well-formed"));
}

TEST(DocumentReader, RefusesANewerVersion) {
    EXPECT_EQ(
        ErrorOf(With("version=\"1\" scope", "version=\"2\" scope")),
        "library.xml:2:1: the document is of version 2; expected at most 1, so read it with a "
        "newer version of this program");
}

TEST(DocumentReader, RefusesADocumentThatIsCutAnywhere) {
    const std::string text = Whole();
    for (std::size_t size = 0; size + 1 < text.size(); ++size) {
        const std::string error = ErrorOf(text.substr(0, size));
        ASSERT_THAT(error, StartsWith("library.xml:")) << size;
        ASSERT_THAT(error, HasSubstr("; expected")) << size;
    }
    EXPECT_THAT(ErrorOf(text + "<more/>"), HasSubstr("junk after document element"));
}

struct Refused {
    const char* name;
    std::string from;
    std::string to;
    const char* error;
};

void PrintTo(const Refused& refused, std::ostream* out) {
    *out << refused.name;
}

class DocumentReaderRefuses : public testing::TestWithParam<Refused> {};

std::string NameOf(const testing::TestParamInfo<Refused>& info) {
    return info.param.name;
}

TEST_P(DocumentReaderRefuses, AndSaysWhereAndWhatItExpected) {
    const std::string error = ErrorOf(With(GetParam().from, GetParam().to));
    EXPECT_THAT(error, StartsWith("library.xml:"));
    EXPECT_THAT(error, HasSubstr(GetParam().error));
    EXPECT_THAT(error, HasSubstr(";"));
}

INSTANTIATE_TEST_SUITE_P(
    Documents,
    DocumentReaderRefuses,
    testing::Values(
        Refused{"another_root", "<library version", "<books version", "<books> stands where"},
        Refused{"no_scope", " scope=\"2\"", "", "no attribute \"scope\""},
        Refused{"an_unknown_scope", "scope=\"2\"", "scope=\"3\"", "whole number from 0 to 2"},
        Refused{"an_unknown_element", "<entities>", "<entities><ghost/>", "expected <entity>"},
        Refused{"an_unknown_attribute", "uid=", "colour=\"\" uid=", "unknown attribute \"colour\""},
        Refused{"parts_out_of_order",
                "<definitions>\n</definitions>",
                "<links/>",
                "expected <definitions>"},
        Refused{"a_part_twice", "<links>", "<entities/><links>", "expected <links>"},
        Refused{"no_end",
                "<end entities=\"1\" revisions=\"1\" files=\"1\" links=\"1\"/>",
                "",
                "expected <end>"},
        Refused{
            "wrong_counts", "<end entities=\"1\"", "<end entities=\"2\"", "expected 1 entities"},
        Refused{"text_between", "<entities>\n", "<entities>x", "there is text where none can be"},
        Refused{"a_bad_uid", kUidA, "nobody", "expected a UID without revision"},
        Refused{"a_bad_time", "2026-01-31", "2026-02-31", "expected a time like"},
        Refused{"a_bad_backslash", "name=\"Wheel\"", "name=\"a\\b\"", "for a backslash"},
        Refused{"a_needless_escape", "name=\"Wheel\"", "name=\"\\x41\"", "for a backslash"},
        Refused{"no_revision", kRevision, "<!-- none -->", "<attribute> stands where it can't"},
        Refused{"revision_0", "number=\"1\"", "number=\"0\"", "revision 0, which is never"},
        Refused{"a_leading_zero", "number=\"1\"", "number=\"01\"", "expected a whole number"},
        Refused{"a_huge_revision", "number=\"1\"", "number=\"16777216\"", "to 16777215"},
        Refused{"a_bad_type", "type=\"Double\"", "type=\"Real\"", "the type \"Real\" is unknown"},
        Refused{"a_bad_number", ">1.5<", ">1.50<", "is no value of the attribute \"mass\""},
        Refused{"a_value_without_type", " type=\"Double\"", "", "is no value of the attribute"},
        Refused{"an_item_in_no_list", ">1.5<", "><item/><", "expected text"},
        Refused{"text_in_a_list", "\"Double\">1.5", "\"StringList\">1.5", "expected <item>"},
        Refused{"an_attribute_twice",
                "</attribute>",
                "</attribute><attribute name=\"mass\"/>",
                "not behind the one before"},
        Refused{"a_late_save_point",
                "</attribute>",
                "</attribute><savepoint time=\"2026-01-31T12:00:00Z\" user=\"\" comment=\"\"/>",
                "expected save points first"},
        Refused{"a_late_revision", kFile, kFile + kRevision + "</revision>", "revisions first"},
        Refused{"a_revision_twice",
                "</revision>",
                "</revision>" + kRevision + "</revision>",
                "expected them ascending"},
        Refused{"revisions_of_an_unversioned_one",
                "name=\"Wheel\"",
                "name=\"Wheel\" versioned=\"false\"",
                "unknown attribute \"published\""},
        Refused{"a_usual_flag", "uid=", "versioned=\"true\" uid=", "\"false\" or no attribute"},
        Refused{"a_file_that_climbs", "a.inp", "../a.inp", "a.inp"},
        Refused{"a_bad_hash", "sha256=\"b", "sha256=\"B", "expected 64 hexadecimal digits"},
        Refused{"a_relative_path",
                "sha256=\"" + std::string(64, 'b') + "\"",
                "path=\"a.inp\"",
                "no absolute path"},
        Refused{"a_file_twice", kFile, kFile + kFile, "each name once in a revision"},
        Refused{
            "a_file_of_no_revision", "from=\"1\"/>", "from=\"2\"/>", "revision that is not there"},
        Refused{"a_negative_size", "size=\"3\"", "size=\"-3\"", "expected a whole number"},
        Refused{"a_bad_kind", "kind=\"owner\"", "kind=\"friend\"", "the kind of link \"friend\""},
        Refused{"a_link_without_name", " name=\"parts\"", "", "a link has no name"},
        Refused{"a_place_with_a_name", "kind=\"owner\"", "kind=\"folder\"", "a place has a name"},
        Refused{"a_link_that_ends_early",
                kLink,
                "<link kind=\"owner\" name=\"parts\" uid=\"" + kUidB + "\" from=\"2\" to=\"2\"/>",
                "ends before it begins"},
        Refused{"composition_of_a_reference",
                "kind=\"owner\"",
                "composition=\"true\" kind=\"reference\"",
                "that of owners only"},
        Refused{"an_exact_owner",
                "kind=\"owner\"",
                "exact=\"1\" kind=\"owner\"",
                "that of relations only"}),
    NameOf);

TEST(DocumentReader, RefusesSeveralRevisionsInADocumentOfNewestOnes) {
    std::string second = kRevision;
    second.replace(second.find("number=\"1\""), 10, "number=\"2\"");
    std::string text = With("</revision>", "</revision>" + second + "</revision>");
    text.replace(text.find("scope=\"2\""), 9, "scope=\"1\"");
    EXPECT_THAT(ErrorOf(text), HasSubstr("expected one"));
}

TEST(DocumentReader, RefusesFilesInADocumentWithoutFiles) {
    EXPECT_THAT(ErrorOf(With("scope=\"2\"", "scope=\"0\"")), HasSubstr("expected none"));
}

TEST(DocumentReader, RefusesTagsThatDontEndBeforeTheyFillTheMemory) {
    Kept kept;
    DocumentReader reader(kept, "library.xml");
    reader.Feed(kHead + "<definitions/><entities><entity name=\"");
    const std::string piece(std::size_t{1} << 20, 'n');
    std::size_t fed = 0;
    try {
        for (; fed < 100; ++fed) {
            reader.Feed(piece);
        }
        ADD_FAILURE() << "100 MiB of a tag were taken";
    } catch (const DocumentException& error) {
        EXPECT_THAT(error.what(), HasSubstr("a tag or comment does not end"));
    }
    EXPECT_LT(fed, 10U);
}

TEST(DocumentReader, RefusesAValueThatDoesntEnd) {
    Kept kept;
    DocumentReader reader(kept, "library.xml");
    reader.Feed(kHead + "<definitions/><entities>" + kEntity + kRevision +
                "<attribute name=\"a\" type=\"String\">");
    const std::string piece(std::size_t{8} << 20, 'v');
    std::size_t fed = 0;
    try {
        for (; fed < 100; ++fed) {
            reader.Feed(piece);
        }
        ADD_FAILURE() << "800 MiB of a value were taken";
    } catch (const DocumentException& error) {
        EXPECT_THAT(error.what(), HasSubstr("a text is longer than 67108864 bytes"));
    }
    EXPECT_EQ(fed, 8U);
}

TEST(DocumentReader, RefusesDeepDefinitions) {
    std::string deep = "<definitions>";
    for (int i = 0; i < 100; ++i) {
        deep += "<definition>";
    }
    EXPECT_THAT(ErrorOf(With("<definitions>", deep)), HasSubstr("nested more than 12 deep"));
}

TEST(DocumentReader, LetsOutWhatItsHandlerThrows) {
    class Thrower : public Kept {
        void Entity(EntityRecord&&) override { throw std::runtime_error("no room"); }
    } thrower;
    EXPECT_THROW(Read(Whole(), thrower), std::runtime_error);
}

TEST(DocumentReader, PassesOverCommentsAndBlanks) {
    EXPECT_EQ(ErrorOf(With("<entities>", "<!-- all of it -->\n\n  <entities>\t")), "");
}

}  // namespace
}  // namespace kxudm::exchange
