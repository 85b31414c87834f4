#include "profile/Texts.h"

#include "text/Decode.h"
#include "text/Terms.h"

namespace kxudm::profile {

namespace {

// A connection that doesn't wait for locks meanwhile.
class Impatience {
  public:
    explicit Impatience(sql::Connection& connection) : _connection(connection) {
        _connection.SetPatient(false);
    }
    ~Impatience() { _connection.SetPatient(true); }
    Impatience(const Impatience&) = delete;
    Impatience& operator=(const Impatience&) = delete;

  private:
    sql::Connection& _connection;
};

bool BringAPortionForward(Session& session, store::FullText& texts) {
    if (session.InBulk()) {
        return texts.BringForward();
    }
    const Impatience impatience(session.Store().Connection());
    try {
        return texts.BringForward();
    } catch (const sql::Error& error) {
        using Kind = sql::ErrorKind;
        // Search goes on without; where nothing can be written, everybody else will hear of it.
        if (error.Kind() == Kind::Busy || error.Kind() == Kind::Full ||
            error.Kind() == Kind::ReadOnly) {
            return false;
        }
        throw;
    }
}

}  // namespace

std::string PreparedText(std::string_view beginning) {
    return text::Prepare(text::Decode(beginning), text::Source::File);
}

store::TextReader TextsOf(Session& session) {
    return [&session](const std::string& vault,
                      const std::string& hash) -> std::optional<std::string> {
        try {
            return PreparedText(session.Vaults().In(vault).ReadText(hash, text::kLongestText));
        } catch (const UDMException&) {
            return std::nullopt;
        }
    };
}

void BringTextsForward(Session& session) {
    const store::TextReader reader = TextsOf(session);
    store::FullText texts(session.Store(), reader);
    while (BringAPortionForward(session, texts)) {
    }
}

}  // namespace kxudm::profile
