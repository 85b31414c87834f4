// Records that are put aside come back as they were, or not at all.
#include <limits>

#include "Documents.h"
#include "SampleDocument.h"
#include "exchange/Records.h"

namespace kxudm::exchange {
namespace {

using testing::HasSubstr;

struct PutAside {
    std::string bytes;
    std::string hash;
};

PutAside Put(const Kept& kept) {
    PutAside aside;
    RecordWriter writer([&](std::string_view bytes) { aside.bytes += bytes; });
    DocumentCounts counts;
    for (const EntityRecord& entity : kept.entities) {
        writer.Entity(entity);
        ++counts.entities;
        counts.revisions += entity.revisions.size();
        counts.files += entity.files.size();
    }
    for (const auto& [first, link] : kept.links) {
        writer.Link(first, link);
        ++counts.links;
    }
    aside.hash = writer.Finish(counts);
    return aside;
}

void Take(const PutAside& aside, DocumentHandler& handler, std::size_t piece = 1 << 20) {
    std::string_view left = aside.bytes;
    ReadRecords(
        [&](char* bytes, std::size_t size) {
            const std::size_t count = left.copy(bytes, std::min(size, piece));
            left.remove_prefix(count);
            return count;
        },
        aside.hash,
        "'a.kxa'",
        handler);
}

// With the sample's head and definitions, which are not among the records.
std::string WrittenAs(Kept& kept) {
    const SampleDocument sample;
    kept.scope = sample.scope;
    kept.catalogue = sample.catalogue;
    return Written(kept);
}

TEST(Records, ComeBackAsTheyWereInPiecesOfAnySize) {
    const PutAside aside = Put(SampleDocument());
    for (const std::size_t piece : {std::size_t{1}, std::size_t{7}, std::size_t{1} << 20}) {
        Kept kept;
        Take(aside, kept, piece);
        EXPECT_TRUE(kept.ended);
        EXPECT_EQ(kept.counts, (DocumentCounts{2, 3, 2, 3}));
        EXPECT_EQ(WrittenAs(kept), Written(SampleDocument())) << piece;
    }
}

TEST(Records, KeepNumbersAtTheirLimits) {
    Kept kept;
    EntityRecord& entity = kept.entities.emplace_back();
    entity.created = std::numeric_limits<store::Microseconds>::min();
    entity.branchRevision = store::NO_REVISION;
    FileRecord& file = entity.files.emplace_back();
    file.size = std::numeric_limits<std::uint64_t>::max();
    file.modified = std::numeric_limits<store::Microseconds>::max();
    file.to = kOpen;
    Kept read;
    Take(Put(kept), read);
    ASSERT_EQ(read.entities.size(), 1U);
    EXPECT_EQ(read.entities[0].created, entity.created);
    EXPECT_EQ(read.entities[0].branchRevision, store::NO_REVISION);
    EXPECT_EQ(read.entities[0].files[0].size, file.size);
    EXPECT_EQ(read.entities[0].files[0].modified, file.modified);
    EXPECT_EQ(read.entities[0].files[0].to, kOpen);
}

TEST(Records, AreRefusedWithAnyByteChangedAndWithAnyMissing) {
    const PutAside whole = Put(SampleDocument());
    for (std::size_t i = 0; i < whole.bytes.size(); ++i) {
        for (const bool cut : {false, true}) {
            PutAside aside = whole;
            if (cut) {
                aside.bytes.resize(i);
            } else {
                aside.bytes[i] = static_cast<char>(aside.bytes[i] ^ 1);
            }
            Kept kept;
            std::string error;
            try {
                Take(aside, kept);
            } catch (const UDMStoreException& refusal) {
                error = refusal.what();
            }
            ASSERT_THAT(error, HasSubstr("put aside of 'a.kxa' is not what was written")) << i;
            ASSERT_FALSE(kept.ended) << i;
        }
    }
}

TEST(Records, AreRefusedWithBytesBehindTheirEnd) {
    PutAside aside = Put(SampleDocument());
    aside.bytes += '\0';
    Kept kept;
    EXPECT_THROW(Take(aside, kept), UDMStoreException);
}

TEST(Records, AreWrittenInPiecesThatDontGrowWithThem) {
    std::size_t largest = 0;
    std::size_t all = 0;
    RecordWriter writer([&](std::string_view bytes) {
        largest = std::max(largest, bytes.size());
        all += bytes.size();
    });
    const SampleDocument sample;
    for (int i = 0; i < 5000; ++i) {
        writer.Entity(sample.entities.front());
    }
    static_cast<void>(writer.Finish({}));
    EXPECT_GT(all, std::size_t{1} << 20);
    EXPECT_LT(largest, std::size_t{512} << 10);
}

}  // namespace
}  // namespace kxudm::exchange
