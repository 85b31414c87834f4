// What a writer writes, a reader reads again, however the bytes come in.
#include <random>

#include "Documents.h"
#include "catalogue/Catalogue.h"

namespace kxudm::exchange {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kCatalogue =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<catalogue version=\"1\">\n"
    "  <definition name=\"Part\">\n"
    "    <attribute name=\"name\" type=\"String\" description=\"a &lt; b &amp; &quot;c&quot;\" />\n"
    "    <attribute name=\"kind\" type=\"String\">\n"
    "      <value>one &amp; only</value>\n"
    "    </attribute>\n"
    "  </definition>\n"
    "</catalogue>\n";

RevisionRecord Revision(int number) {
    RevisionRecord revision;
    revision.number = number;
    revision.displayName = "Wheel <" + std::to_string(number) + ">";
    revision.created = 1000000 * number;
    revision.creator = "ann";
    revision.modified = 1000000 * number + 5;
    revision.modifier = "bob";
    revision.published = 1000000 * number + 7;
    revision.publisher = "ann";
    revision.workspace = "desk";
    revision.comment = "line 1\nline 2 \\ \x01";
    return revision;
}

EntityRecord Wheel() {
    EntityRecord entity;
    entity.uid = kUidA;
    entity.definition = "Part";
    entity.name = "Wheel";
    entity.created = 1;
    entity.creator = "ann";
    entity.workspace = "desk";
    entity.revisions = {Revision(1), Revision(3)};
    entity.revisions[0].savePoints = {{5, "ann", "so far"}, {6, "ann", ""}};
    kxStlVector<kxString> list;
    list.push_back("a ");
    list.push_back("");
    entity.revisions[0].attributes = {{"empty", kxVariant()},
                                      {"flag", kxVariant(true)},
                                      {"float", kxVariant(1.5F)},
                                      {"list", kxVariant(list)},
                                      {"mass", kxVariant(0.1)},
                                      {"none", kxVariant(kxStlVector<kxString>())},
                                      {"number", kxVariant(-9007199254740993LL)},
                                      {"text", kxVariant("  \xFF\n<b>  ")},
                                      {"void", kxVariant("")}};
    FileRecord file;
    file.name = "wheel.inp";
    file.hash = std::string(64, 'a');
    file.size = 12;
    file.modified = 3;
    file.added = 4;
    file.isText = true;
    file.from = 1;
    file.to = 3;
    FileRecord external;
    external.name = "wheel.inp";
    external.externalPath = "/data/wheel.inp";
    external.size = 99;
    external.from = 3;
    entity.files = {file, external};
    return entity;
}

EntityRecord Note() {
    EntityRecord entity;
    entity.uid = kUidB;
    entity.definition = "Note";
    entity.name = "";
    entity.versioned = false;
    entity.branchUid = kUidC;
    entity.branchRevision = 4;
    entity.revisions.emplace_back();
    return entity;
}

class Sample : public Kept {
  public:
    Sample() {
        scope = Scope::AllWithFiles;
        catalogue = kCatalogue;
        entities.push_back(Wheel());
        entities.push_back(Note());
        links.emplace_back(
            kUidA,
            LinkRecord{store::LinkKind::Owner, "parts", kUidB, 1, 3, store::NO_REVISION, true});
        links.emplace_back(kUidA, LinkRecord{store::LinkKind::Folder, "", kUidC, 1});
        links.emplace_back(
            kUidB, LinkRecord{store::LinkKind::Relation, "made \"of\"", kUidA, 0, kOpen, 3});
    }
};

TEST(Document, ReadsWhatWasWritten) {
    const std::string text = Written(Sample());
    Kept kept;
    Read(text, kept);
    EXPECT_TRUE(kept.ended);
    EXPECT_EQ(kept.counts, (DocumentCounts{2, 3, 2, 3}));
    ASSERT_EQ(kept.entities.size(), 2U);
    const EntityRecord wheel = Wheel();
    const EntityRecord& read = kept.entities[0];
    EXPECT_EQ(read.revisions[0].comment, wheel.revisions[0].comment);
    EXPECT_EQ(read.revisions[0].savePoints, wheel.revisions[0].savePoints);
    ASSERT_EQ(read.revisions[0].attributes.size(), wheel.revisions[0].attributes.size());
    for (std::size_t i = 0; i < wheel.revisions[0].attributes.size(); ++i) {
        const auto& [name, value] = wheel.revisions[0].attributes[i];
        EXPECT_EQ(read.revisions[0].attributes[i].first, name);
        EXPECT_EQ(read.revisions[0].attributes[i].second.GetKind(), value.GetKind()) << name;
        EXPECT_EQ(read.revisions[0].attributes[i].second, value) << name;
    }
    EXPECT_EQ(read.files[1].externalPath, "/data/wheel.inp");
    EXPECT_FALSE(kept.entities[1].versioned);
    EXPECT_EQ(kept.entities[1].branchUid, kUidC);
    EXPECT_EQ(kept.links[0].second.composition, true);
    EXPECT_EQ(kept.links[2].second.exact, 3);
    EXPECT_EQ(kept.links[2].second.name, "made \"of\"");
}

TEST(Document, WritesTheSameBytesAgain) {
    const std::string text = Written(Sample());
    Kept kept;
    Read(text, kept);
    kept.catalogue = catalogue::Catalogue::ReadText(kept.catalogue, "again")->ToXml();
    EXPECT_EQ(Written(kept), text);
}

TEST(Document, TakesItsBytesInPiecesOfAnySize) {
    const std::string text = Written(Sample());
    for (const std::size_t piece : {1U, 2U, 3U, 7U, 64U, 1000U}) {
        Kept kept;
        Read(text, kept, piece);
        kept.catalogue = catalogue::Catalogue::ReadText(kept.catalogue, "again")->ToXml();
        ASSERT_EQ(Written(kept), text) << piece;
    }
}

TEST(Document, HandsOnDefinitionsInTheirLines) {
    Kept kept;
    std::string text = Written(Sample());
    text.replace(text.find("type=\"String\""), 13, "type=\"Strong\"");
    Read(text, kept);
    try {
        static_cast<void>(catalogue::Catalogue::ReadText(kept.catalogue, "library.xml"));
        ADD_FAILURE() << "an unknown type was taken";
    } catch (const UDMException& error) {
        EXPECT_THAT(error.what(), HasSubstr("library.xml:5:"));
    }
}

TEST(Document, OfNothingIsADocument) {
    Kept none;
    Kept kept;
    Read(Written(none), kept);
    EXPECT_TRUE(kept.ended);
    EXPECT_EQ(kept.scope, Scope::Newest);
    EXPECT_EQ(catalogue::Catalogue::ReadText(kept.catalogue, "none")->Names().size(), 0U);
}

TEST(Document, IsWrittenInPiecesThatDontGrowWithIt) {
    std::size_t largest = 0;
    DocumentWriter writer(
        [&](std::string_view bytes) { largest = std::max(largest, bytes.size()); });
    writer.Begin(Scope::AllWithFiles, kCatalogue);
    for (int i = 0; i < 2000; ++i) {
        writer.Entity(Wheel());
    }
    for (int i = 0; i < 2000; ++i) {
        writer.Link(kUidA, {store::LinkKind::Owner, "parts", kUidB, 1});
    }
    writer.End();
    EXPECT_LT(largest, 100000U);
}

TEST(Document, IsNotWrittenWhereNoReaderWouldTakeIt) {
    DocumentWriter writer([](std::string_view) {});
    writer.Begin(Scope::AllWithFiles, kCatalogue);
    EntityRecord wheel = Wheel();
    wheel.revisions[1].comment.assign(kLongestTag, 'c');
    EXPECT_THROW(writer.Entity(wheel), UDMException);
    wheel = Wheel();
    wheel.name.assign(kLongestTag, 'n');
    EXPECT_THROW(writer.Entity(wheel), UDMException);
    wheel = Wheel();
    wheel.revisions[0].attributes = {{"long", kxVariant(std::string(kLongestText, 'v'))}};
    EXPECT_THROW(writer.Entity(wheel), UDMException);
}

}  // namespace
}  // namespace kxudm::exchange
