#include "profile/Texts.h"

#include <system_error>
#include <utility>

#include "core/Worker.h"
#include "text/Decode.h"
#include "text/Terms.h"

namespace kxudm::profile {

namespace {

constexpr std::size_t kMostWaitingBytes = std::size_t{16} << 20;

std::string PreparedFile(std::string_view beginning) {
    const std::string decoded = text::Decode(beginning);
    return text::Prepare(decoded, text::Source::File);
}

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

store::TextReader TextsOf(Session& session) {
    return [&session](const std::string& vault,
                      const std::string& hash) -> std::optional<std::string> {
        try {
            return PreparedFile(session.Vaults().In(vault).ReadText(hash, text::kLongestText));
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

TextPreparer::~TextPreparer() {
    if (!_thread.joinable()) {
        return;
    }
    {
        const std::lock_guard lock(_mutex);
        _ended = true;
    }
    _changed.notify_one();
    _thread.join();
}

std::future<std::string> TextPreparer::Prepare(std::string_view beginning) {
    beginning = beginning.substr(0, text::kLongestText);
    Task task([bytes = std::string(beginning)] { return PreparedFile(bytes); });
    std::future<std::string> prepared = task.get_future();
    const bool hasThread = Begin();
    {
        const std::lock_guard lock(_mutex);
        if (hasThread && _waitingBytes < kMostWaitingBytes) {
            _waitingBytes += beginning.size();
            _waiting.emplace_back(std::move(task), beginning.size());
        }
    }
    if (task.valid()) {
        task();
    } else {
        _changed.notify_one();
    }
    return prepared;
}

// False where the machine has no thread to spare.
bool TextPreparer::Begin() {
    if (!_thread.joinable()) {
        try {
            _thread = core::StartWorker([this] { Work(); });
        } catch (const std::system_error&) {
            return false;
        }
    }
    return true;
}

void TextPreparer::Work() {
    std::unique_lock lock(_mutex);
    for (;;) {
        _changed.wait(lock, [this] { return _ended || !_waiting.empty(); });
        if (_waiting.empty()) {
            return;
        }
        auto [task, bytes] = std::move(_waiting.front());
        _waiting.pop_front();
        lock.unlock();
        task();
        lock.lock();
        _waitingBytes -= bytes;
    }
}

}  // namespace kxudm::profile
