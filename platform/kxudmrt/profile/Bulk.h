// An open bulk edit of a session: one transaction around many operations.
#pragma once

#include "profile/Session.h"

namespace kxudm::profile {

// Runs all of them; the first exception is returned.
[[nodiscard]] std::exception_ptr RunDeeds(std::vector<std::function<void()>>&& deeds) noexcept;

struct Session::Bulk {
    // Flushed from the start: a flush of its own behind the commit, for an operation within that
    // asks for it, could fail when nothing can be taken back any more.
    explicit Bulk(sql::Connection& connection)
        : transaction(
              connection, sql::Transaction::Mode::Write, sql::Transaction::Durability::Full) {}

    sql::Transaction transaction;
    ChangeList changes;
    std::vector<std::function<void()>> deeds;  // as of Operation::AfterCommit
};

}  // namespace kxudm::profile
