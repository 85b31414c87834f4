// A library in memory with a few shorthands.
#ifndef KXUDMRT_TESTS_STORE_LIBRARYFIXTURE_H
#define KXUDMRT_TESTS_STORE_LIBRARYFIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sql/sqlite/Connection.h"
#include "store/LibraryStore.h"
#include "store/RowReader.h"

namespace kxudm::store {

constexpr Viewer ANN{"ann", "desk"};
constexpr Viewer ANN_ELSEWHERE{"ann", "laptop"};
constexpr Viewer BOB{"bob", "desk"};

// Collects what LibraryStore::VisitHits finds.
inline auto Into(std::vector<EntityRow>& rows) {
    return [&rows](EntityRow& row) { rows.push_back(std::move(row)); };
}

class LibraryFixture : public testing::Test {
  protected:
    EntityId Add(const std::string& uid,
                 const AttributeList& attributes = {},
                 RevisionState state = RevisionState::Unversioned,
                 const std::string& definition = "Part") {
        return store_->Insert({.uid = uid,
                               .definition = definition,
                               .name = uid,
                               .displayName = "The " + uid,
                               .state = state},
                              attributes,
                              {ANN, 1000});
    }
    void Own(EntityId parent, EntityId child, std::string_view group = "parts", int revision = 0) {
        store_->AddLink({.parent = parent,
                         .child = child,
                         .kind = LinkKind::Owner,
                         .name = group,
                         .revision = revision,
                         .composition = true},
                        {ANN, 2000});
    }
    void Put(EntityId folder, EntityId content) {
        store_->AddLink({.parent = folder, .child = content, .kind = LinkKind::Folder},
                        {ANN, 2000});
    }
    // UIDs of the children in order.
    std::vector<std::string> ChildrenOf(EntityId parent,
                                        LinkKind kind = LinkKind::Owner,
                                        std::string_view group = {},
                                        int revision = 0,
                                        const Viewer& viewer = ANN) {
        std::vector<LinkedRow> rows;
        store_->Children(parent, revision, kind, group, viewer, rows);
        return Uids(rows);
    }
    std::vector<std::string> ParentsOf(EntityId child,
                                       LinkKind kind = LinkKind::Owner,
                                       std::string_view group = {},
                                       bool older = false,
                                       int revision = 0,
                                       const Viewer& viewer = ANN) {
        std::vector<LinkedRow> rows;
        store_->Parents(child, revision, kind, group, viewer, rows, older);
        return Uids(rows);
    }
    static std::vector<std::string> Uids(const std::vector<LinkedRow>& rows) {
        std::vector<std::string> uids;
        for (const LinkedRow& row : rows) {
            uids.push_back(row.entity.uid);
        }
        return uids;
    }
    static std::vector<std::string> Uids(const std::vector<EntityRow>& rows) {
        std::vector<std::string> uids;
        for (const EntityRow& row : rows) {
            uids.push_back(row.uid);
        }
        return uids;
    }
    // One value of the first row of a statement, as text.
    std::string Ask(const std::string& text) {
        sql::Statement statement(store_->Connection(), text);
        return statement.Step() ? statement.String(0) : "no row";
    }
    // Publishes a working revision by hand, and opens revision `number` for ANN at her desk, for
    // tests of what is read out of the tables, whoever wrote them.
    void PublishByHand(EntityId id, int number) {
        const std::string entity = std::to_string(id);
        store_->Connection().Execute(
            "UPDATE entity SET published=" + std::to_string(number) +
            ", working=NULL, lock_user=NULL, lock_workspace=NULL, lock_time=NULL WHERE id=" +
            entity +
            "; UPDATE revision SET state=1 WHERE id=" + std::to_string(RevisionId(id, number)) +
            "; UPDATE link SET to_rev=ending, ending=NULL"
            " WHERE first=" +
            entity + " AND ending IS NOT NULL;");
    }
    void CheckOutByHand(EntityId id, int number) {
        store_->Connection().Execute(
            "UPDATE entity SET working=" + std::to_string(number) +
            ", lock_user='ann', lock_workspace='desk', lock_time=1714566896000000 WHERE id=" +
            std::to_string(id) +
            "; INSERT INTO revision SELECT id+1, 0, display_name, created_time, created_user,"
            " modified_time, modified_user, NULL, NULL, workspace, comment, attributes"
            " FROM revision WHERE id=" +
            std::to_string(RevisionId(id, number - 1)));
    }

    static std::unique_ptr<LibraryStore> NewLibrary() {
        return LibraryStore::Create(sql::sqlite::Open({.file = ":memory:", .create = true}),
                                    {.name = "Test", .id = "0123456789ABCDEFGHJKMNPQRS"},
                                    "<catalogue/>");
    }

    std::unique_ptr<LibraryStore> store_ = NewLibrary();
};

}  // namespace kxudm::store

#endif
