// An open bulk edit of a session: one transaction around many operations.
#pragma once

#include "profile/Session.h"

namespace kxudm::profile {

// Runs all of them; the first exception is returned.
[[nodiscard]] std::exception_ptr RunDeeds(std::vector<std::function<void()>>&& deeds) noexcept;

struct Session::Bulk {
    explicit Bulk(sql::Connection& connection) : transaction(connection) {}

    sql::Transaction transaction;
    ChangeList changes;
    std::vector<std::function<void()>> deeds;  // as of Operation::AfterCommit
};

}  // namespace kxudm::profile
