// What a writer writes, a reader reads again, however the bytes come in.
#include "Documents.h"
#include "SampleDocument.h"
#include "catalogue/Catalogue.h"

namespace kxudm::exchange {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(Document, ReadsWhatWasWritten) {
    const std::string text = Written(SampleDocument());
    Kept kept;
    Read(text, kept);
    EXPECT_TRUE(kept.ended);
    EXPECT_EQ(kept.counts, (DocumentCounts{2, 3, 2, 3}));
    ASSERT_EQ(kept.entities.size(), 2U);
    const EntityRecord wheel = SampleWheel();
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
    const std::string text = Written(SampleDocument());
    Kept kept;
    Read(text, kept);
    kept.catalogue = catalogue::Catalogue::ReadText(kept.catalogue, "again")->ToXml();
    EXPECT_EQ(Written(kept), text);
}

TEST(Document, TakesItsBytesInPiecesOfAnySize) {
    const std::string text = Written(SampleDocument());
    for (const std::size_t piece : {1U, 2U, 3U, 7U, 64U, 1000U}) {
        Kept kept;
        Read(text, kept, piece);
        kept.catalogue = catalogue::Catalogue::ReadText(kept.catalogue, "again")->ToXml();
        ASSERT_EQ(Written(kept), text) << piece;
    }
}

TEST(Document, HandsOnDefinitionsInTheirLines) {
    Kept kept;
    std::string text = Written(SampleDocument());
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
    writer.Begin(Scope::AllWithFiles, kSampleCatalogue);
    for (int i = 0; i < 2000; ++i) {
        writer.Entity(SampleWheel());
    }
    for (int i = 0; i < 2000; ++i) {
        writer.Link(kUidA, {store::LinkKind::Owner, "parts", kUidB, 1});
    }
    writer.End();
    EXPECT_LT(largest, 100000U);
}

TEST(Document, IsNotWrittenWhereNoReaderWouldTakeIt) {
    DocumentWriter writer([](std::string_view) {});
    writer.Begin(Scope::AllWithFiles, kSampleCatalogue);
    EntityRecord wheel = SampleWheel();
    wheel.revisions[1].comment.assign(kLongestTag, 'c');
    EXPECT_THROW(writer.Entity(wheel), UDMException);
    wheel = SampleWheel();
    wheel.name.assign(kLongestTag, 'n');
    EXPECT_THROW(writer.Entity(wheel), UDMException);
    wheel = SampleWheel();
    wheel.revisions[0].attributes = {{"long", kxVariant(std::string(kLongestText, 'v'))}};
    EXPECT_THROW(writer.Entity(wheel), UDMException);
}

}  // namespace
}  // namespace kxudm::exchange
