// An open bulk edit of a session: one transaction around many operations.
#pragma once

#include "profile/Session.h"

namespace kxudm::profile {

struct Session::Bulk {
    explicit Bulk(sql::Connection& connection) : transaction(connection) {}

    sql::Transaction transaction;
    ChangeList changes;
};

}  // namespace kxudm::profile
