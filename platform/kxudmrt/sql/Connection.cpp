#include "sql/Connection.h"

#include <utility>

namespace kxudm::sql {

Statement::Statement(Connection& connection, const NamedStatement& named)
    : connection_(connection), named_(&named), cursor_(connection.Acquire(named)) {}

Statement::Statement(Connection& connection, std::string text)
    : connection_(connection), text_(std::move(text)), cursor_(connection.Acquire(text_)) {}

Statement::~Statement() {
    if (named_ != nullptr) {
        connection_.Release(*named_, std::move(cursor_));
    } else {
        connection_.Release(text_, std::move(cursor_));
    }
}

void Statement::Bind(int parameter, const Value& value) {
    switch (value.index()) {
        case 0:
            cursor_->BindNull(parameter);
            break;
        case 1:
            cursor_->BindInt64(parameter, std::get<1>(value));
            break;
        case 2:
            cursor_->BindDouble(parameter, std::get<2>(value));
            break;
        default:
            cursor_->BindText(parameter, std::get<3>(value));
            break;
    }
}

void Statement::Run() {
    while (cursor_->Step()) {
    }
    cursor_->Reset();
}

Transaction::Transaction(Connection& connection, Mode mode, Durability durability)
    : connection_(connection) {
    const bool write = mode == Mode::Write;
    const bool durable = durability == Durability::Full;
    if (connection_.depth_ == 0) {
        connection_.Begin(write, durable);
        outermost_ = true;
        connection_.writing_ = write;
        connection_.durable_ = durable;
        connection_.flushWanted_ = false;
        connection_.doomed_ = false;
    } else if (!connection_.InTransaction()) {
        // The database has rolled back by itself; what follows would be committed piece by piece.
        throw Error(ErrorKind::Other,
                    "'" + connection_.File() +
                        "': the transaction was rolled back after an earlier failure; begin anew");
    } else if (write && !connection_.writing_) {
        throw Error(ErrorKind::Other,
                    "'" + connection_.File() +
                        "': a change inside of a reading transaction; begin a writing one first");
    } else if (durable && !connection_.durable_) {
        connection_.flushWanted_ = true;
    }
    ++connection_.depth_;
    changesBefore_ = connection_.TotalChanges();
}

Transaction::~Transaction() {
    if (open_) {
        Leave();
    }
}

void Transaction::Leave() noexcept {
    open_ = false;
    --connection_.depth_;
    if (outermost_) {
        connection_.RollbackOutermost();
    } else if (connection_.TotalChanges() != changesBefore_) {
        connection_.doomed_ = true;
    }
}

void Transaction::Commit() {
    if (!open_) {
        return;
    }
    if (!outermost_) {
        open_ = false;
        --connection_.depth_;
        return;
    }
    if (connection_.doomed_ || !connection_.InTransaction()) {
        Leave();
        throw Error(ErrorKind::Other,
                    "'" + connection_.File() +
                        "': a part of the transaction failed before; nothing of it was stored");
    }
    try {
        connection_.CommitOutermost();
    } catch (...) {
        Leave();
        throw;
    }
    open_ = false;
    --connection_.depth_;
    if (connection_.flushWanted_) {
        connection_.Flush();
    }
}

}  // namespace kxudm::sql
