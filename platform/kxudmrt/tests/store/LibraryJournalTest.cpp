#include "LibraryFixture.h"

using namespace kxudm::store;

namespace {

class LibraryJournal : public LibraryFixture {
  protected:
    std::vector<int> Ops(std::int64_t after, const Viewer& viewer, int limit = 1000) {
        std::vector<JournalEntry> entries;
        store_->Journal(after, viewer, entries, limit);
        std::vector<int> ops;
        for (const JournalEntry& entry : entries) {
            ops.push_back(entry.op);
        }
        return ops;
    }
};

}  // namespace

TEST_F(LibraryJournal, IsEmptyAtFirst) {
    EXPECT_EQ(store_->LastSequence(), 0);
    EXPECT_TRUE(Ops(0, ANN).empty());
}

TEST_F(LibraryJournal, AnEntryComesBackWithTheUids) {
    const EntityId parent = Add("P");
    const EntityId child = Add("C");
    const std::int64_t sequence = store_->Append({.time = 77,
                                                  .op = 35,
                                                  .entity = child,
                                                  .revision = 3,
                                                  .parent = parent,
                                                  .session = "S1",
                                                  .process = 4711});
    std::vector<JournalEntry> entries;
    store_->Journal(0, BOB, entries);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].sequence, sequence);
    EXPECT_EQ(entries[0].time, 77);
    EXPECT_EQ(entries[0].op, 35);
    EXPECT_EQ(entries[0].entity, child);
    EXPECT_EQ(entries[0].revision, 3);
    EXPECT_EQ(entries[0].parent, parent);
    EXPECT_EQ(entries[0].child, 0);
    EXPECT_EQ(entries[0].session, "S1");
    EXPECT_EQ(entries[0].process, 4711);
    EXPECT_EQ(entries[0].entityUid, "C");
    EXPECT_EQ(entries[0].parentUid, "P");
    EXPECT_EQ(entries[0].childUid, "");
    EXPECT_EQ(store_->LastSequence(), sequence);
}

TEST_F(LibraryJournal, IsReadFromASequenceOnUpToALimit) {
    std::vector<std::int64_t> sequences;
    for (int op = 1; op <= 5; ++op) {
        sequences.push_back(store_->Append({.op = op}));
    }
    EXPECT_TRUE(std::is_sorted(sequences.begin(), sequences.end()));
    EXPECT_EQ(Ops(sequences[1], ANN), (std::vector{3, 4, 5}));
    EXPECT_EQ(Ops(0, ANN, 2), (std::vector{1, 2}));
    EXPECT_TRUE(Ops(sequences[4], ANN).empty());
}

TEST_F(LibraryJournal, WhatOneWorkspaceSeesIsToldOnlyThere) {
    store_->Append({.op = 1, .user = "ann", .workspace = "desk"});
    store_->Append({.op = 2});
    EXPECT_EQ(Ops(0, ANN), (std::vector{1, 2}));
    EXPECT_EQ(Ops(0, ANN_ELSEWHERE), (std::vector{2}));
    EXPECT_EQ(Ops(0, BOB), (std::vector{2}));
}

TEST_F(LibraryJournal, AnEntryGoesWithItsTransaction) {
    try {
        store_->Update([&] {
            store_->Append({.op = 1});
            throw std::runtime_error("the change failed");
        });
    } catch (const std::runtime_error&) {
    }
    EXPECT_TRUE(Ops(0, ANN).empty());
}

TEST_F(LibraryJournal, TellsOfDeletedEntities) {
    const EntityId id = Add("A");
    store_->Delete(id, {ANN, 1});
    store_->Append({.op = 44, .entity = id});
    std::vector<JournalEntry> entries;
    store_->Journal(0, ANN, entries);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].entityUid, "A");
}
