// What a query means, comparison by comparison. Each row is asked of the evaluator and of the
// database, as a search and as a listing.
#include "QueryLibrary.h"

using kxudm::UDMException;
using kxudm::store::EntityId;
using kxudm::store::LinkKind;
using kxudm::test::QueryLibrary;
using testing::ElementsAre;

namespace {

struct Meaning {
    const char* text;
    std::vector<std::string> hits;
};

class Meanings : public QueryLibrary {
  protected:
    Meanings() {
        folder_ = store_->Insert(
            {.uid = "F", .definition = "Folder", .name = "F"}, {}, {kxudm::store::ANN, 1});
        Put(Make("Part",
                 "plate",
                 {{"mass", 2.5},
                  {"count", 12},
                  {"flag", true},
                  {"material", "Steel"},
                  {"code", "007"},
                  {"size", 7},
                  {"tags", kxStlVector<kxString>{"red", "very light"}},
                  {"due", "2026-01-31T12:00:00Z"}}));
        Put(Make("Bolt", "Bolt_M8", {{"mass", 0.25}, {"count", 9}, {"material", "steel"}}));
        Put(Make("Document", "\xC3\x84nderung", {{"size", "7"}, {"code", "7"}, {"material", ""}}));
        Put(Make("Document", "100% [a]", {{"size", "A4"}, {"due", "2025-12-01T00:00:00Z"}}));
    }

    void Put(EntityId id) {
        store_->AddLink({.parent = folder_, .child = id, .kind = LinkKind::Folder},
                        {kxudm::store::ANN, 2});
    }

    void Check(const std::vector<Meaning>& meanings, Letters letters = Letters::Exact) {
        for (const auto& [text, hits] : meanings) {
            EXPECT_EQ(Expected(text, letters), hits) << text;
            std::vector<std::string> found = Hits(text, letters);
            std::erase(found, "F");
            EXPECT_EQ(found, hits) << text << "\n" << Compiled(text, letters).sql;
            EXPECT_EQ(ChildHits(folder_, text, letters), hits)
                << text << "\n"
                << Compiled(text, letters, kxudm::query::CompileOptions::Use::Listing).sql;
        }
    }

    EntityId folder_ = 0;
    const std::string change_ = "\xC3\x84nderung";
};

}  // namespace

TEST_F(Meanings, TypeIsTheDefinitionAndClassTheDerivedOnesToo) {
    Check({{"type == Part", {"plate"}},
           {"class == Part", {"plate", "Bolt_M8"}},
           {"type in (Bolt, Document)", {"Bolt_M8", change_, "100% [a]"}},
           {"class in (Bolt, Document)", {"Bolt_M8", change_, "100% [a]"}},
           {"type != Document", {"plate", "Bolt_M8"}},
           {"class != Part", {change_, "100% [a]"}},
           {"type like Pa", {"plate"}},
           {"class like \"Pa*\"", {"plate", "Bolt_M8"}},
           {"class == Root", {"plate", "Bolt_M8", change_, "100% [a]"}},
           {"type == part", {}},
           {"type == Unknown", {}},
           {"class != Unknown", {"plate", "Bolt_M8", change_, "100% [a]"}}});
}

TEST_F(Meanings, NamesOfDefinitionsKeepTheirCaseWhereLettersAreFolded) {
    Check({{"type == part", {}}, {"class == Part", {"plate", "Bolt_M8"}}, {"id == u1000", {}}},
          Letters::Folded);
}

TEST_F(Meanings, AnIdMayHaveARevision) {
    Check({{"id == U1000", {"plate"}},
           {"id == \"U1000:0\"", {"plate"}},
           {"id == U1000:1", {}},
           {"id != U1000:1 && type == Part", {"plate"}},
           {"id != U1000", {"Bolt_M8", change_, "100% [a]"}},
           {"id in (U1001:0, U1003, U1002:7)", {"Bolt_M8", "100% [a]"}},
           {"id like U100", {"plate", "Bolt_M8", change_, "100% [a]"}},
           {"id > U1001", {change_, "100% [a]"}},
           {"id == U1000:x", {}},
           {"id == \"U1000:-0\"", {}}});
}

TEST_F(Meanings, NumbersCompareAsNumbersWhetherQuotedOrNot) {
    Check({{"attrib.count > 9", {"plate"}},
           {"attrib.count >= \"9\"", {"plate", "Bolt_M8"}},
           {"attrib.count == 12.0", {"plate"}},
           {"attrib.mass == \"2.50\"", {"plate"}},
           {"attrib.mass < 1e0", {"Bolt_M8"}},
           {"attrib.mass <= 0.25", {"Bolt_M8"}},
           {"attrib.mass in (1, 2.5, abc)", {"plate"}},
           {"attrib.mass > abc", {}},
           {"attrib.mass == abc", {}},
           {"attrib.mass like 2", {}},
           {"attrib.flag == true", {"plate"}},
           {"attrib.flag == 1", {"plate"}},
           {"attrib.flag != True", {"Bolt_M8", change_, "100% [a]"}}});
}

TEST_F(Meanings, TextsCompareByTheirBytesEvenIfTheyLookLikeNumbers) {
    Check({{"attrib.code == 7", {change_}},
           {"attrib.code == 007", {"plate"}},
           {"attrib.code < 7", {"plate"}},
           {"attrib.material == Steel", {"plate"}},
           {"attrib.material > Steel", {"Bolt_M8"}},
           {"attrib.due < 2026", {"100% [a]"}},
           {"attrib.due >= \"2026-01-31T12:00:00Z\"", {"plate"}}});
}

TEST_F(Meanings, AnAttributeOfTwoKindsComparesAsEachValueIs) {
    Check({{"attrib.size == 7", {"plate", change_}},
           {"attrib.size == 7.0", {"plate"}},
           {"attrib.size > 6", {"plate", change_, "100% [a]"}},
           {"attrib.size < 8", {"plate", change_}},
           {"attrib.size like A", {"100% [a]"}}});
}

TEST_F(Meanings, AListComparesAsItsWholeText) {
    Check({{"attrib.tags == \"red {very light}\"", {"plate"}},
           {"attrib.tags == red", {}},
           {"attrib.tags like \"*very light\"", {"plate"}}});
}

TEST_F(Meanings, NoValueEqualsTheEmptyTextAndNothingElse) {
    Check({{"attrib.material == \"\"", {change_, "100% [a]"}},
           {"attrib.material != \"\"", {"plate", "Bolt_M8"}},
           {"attrib.material in (\"\", Steel)", {"plate", change_, "100% [a]"}},
           {"attrib.mass == \"\"", {change_, "100% [a]"}},
           {"attrib.mass < 100", {"plate", "Bolt_M8"}},
           {"!attrib.mass < 100", {change_, "100% [a]"}},
           {"attrib.material < z", {"plate", "Bolt_M8", change_}},
           {"attrib.material like \"*\"", {"plate", "Bolt_M8", change_}},
           {"attrib.material like \"?*\"", {"plate", "Bolt_M8"}},
           {"!(attrib.material like \"*\")", {"100% [a]"}},
           {"attrib.material != Steel", {"Bolt_M8", change_, "100% [a]"}}});
}

TEST_F(Meanings, LikeComparesFromTheStartWithTwoWildcards) {
    Check({{"name like Bolt", {"Bolt_M8"}},
           {"name like bolt", {}},
           {"name like \"Bolt?\"", {}},
           {"name like \"B?lt*8\"", {"Bolt_M8"}},
           {"name like BoltxM", {}},
           {"name like \"100%\"", {"100% [a]"}},
           {"name like \"*[a]\"", {"100% [a]"}},
           {"name like \"1*[b]\"", {}},
           {"attrib.displayname like \"?nderung\"", {change_}},
           {"name like \"\"", {"plate", "Bolt_M8", change_, "100% [a]"}}});
}

TEST_F(Meanings, FoldedLettersIgnoreCaseAndAccents) {
    Check({{"name == anderung", {change_}},
           {"name like BOLT", {"Bolt_M8"}},
           {"attrib.displayname like \"\xC3\xA4nd\"", {change_}},
           {"attrib.displayname like \"*M8\"", {"Bolt_M8"}},
           {"attrib.material == STEEL", {"plate", "Bolt_M8"}},
           {"attrib.material != STEEL", {change_, "100% [a]"}},
           {"attrib.material >= S && attrib.material < T", {"plate", "Bolt_M8"}},
           {"attrib.material == \"\xCC\x81\"", {change_, "100% [a]"}},
           {"attrib.mass == 2.5", {"plate"}},
           {"attrib.code == 7", {change_}}},
          Letters::Folded);
}

TEST_F(Meanings, AndOrAndNotCombine) {
    Check({{"type == Part && attrib.mass > 2 || name like Bolt", {"plate", "Bolt_M8"}},
           {"type == Part && (attrib.mass > 9 || name like Bolt)", {}},
           {"!(type == Part || type == Bolt)", {change_, "100% [a]"}},
           {"!type == Part && !attrib.size == A4 && !type == Bolt", {change_}},
           {"attrib.mass > 0.25 && attrib.mass <= 2.5", {"plate"}},
           {"attrib.count >= 9 && name like Bolt && attrib.count < 12", {"Bolt_M8"}}});
}

TEST_F(Meanings, TheAuthorsOfRevisionsSeeTheirOwnValues) {
    Put(Make("Part", "mine", {{"material", "new"}}, Life::MyCheckOut, {{"material", "old"}}));
    Put(Make("Part", "his", {{"material", "old"}}, Life::AnotherCheckOut, {{"material", "new"}}));
    Put(Make("Part", "gone", {}, Life::MyCheckOut, {{"material", "old"}}));
    Put(Make("Part", "draft", {{"material", "new"}}, Life::MyDraft));
    Check({{"attrib.material == new", {"mine", "draft"}},
           {"attrib.material == old", {"his"}},
           {"attrib.material == \"\" && type == Part", {"gone"}},
           {"attrib.material != old && type == Part && attrib.material != Steel",
            {"mine", "gone", "draft"}},
           {"attrib.material like o", {"his"}},
           {"id == U1004:1", {"mine"}},
           {"id == U1005:0", {"his"}}});
}
