// How far a long operation of a session has got: import, a large file, retrieval, export. Whoever
// wants to know installs a listener for as long as it takes; it hears of every file, may end the
// operation, and is told of each item that failed while the rest went on.
//
//     class Bar : public IUDMProgressListener {
//       public:
//         bool Advance(const UDMProgress& progress) override {
//             Draw(progress.done, progress.total, progress.name);
//             return !_cancelPressed;
//         }
//         void Failed(const kxString& item, const kxString& reason) override { Show(reason); }
//     };
//
//     Bar bar;
//     UDMProgressScope scope(profile, bar);
//     const int made = profile->AddFoldersAndFiles({"/data/crash"}, {}, "/Decks", {});
//     if (scope.WasCancelled()) { ... `made` contents are there, whole; the rest is not ... }
//
// An operation that was cancelled keeps what it had finished and answers as usual, or takes
// everything back and throws UDMCancelledException; each says which.
//
// A listener is called on the thread that called the operation, with no transaction open unless the
// caller opened one (UDMBulkEdit) or an archive is being imported (UDMExchange.h). It must not use
// the session that calls it. What it throws comes out of the operation, which is otherwise
// cancelled.
#pragma once

#include <kxudm/UDMException.h>

#include <boost/smart_ptr/shared_ptr.hpp>
#include <cstddef>
#include <cstdint>

namespace kxudm {

class IUDMProfile;

namespace spi {
class IProgressSource;
}

struct UDMProgress {
    // Items (files, or what the operation counts), those that failed too. `total` is 0 while it is
    // not known; neither ever goes down within an operation, and `done` ends at `total`.
    std::uint64_t done = 0;
    std::uint64_t total = 0;
    // The same in bytes of the files; 0 where nobody counts them. A file that changes while it is
    // read may end at another number than was announced.
    std::uint64_t doneBytes = 0;
    std::uint64_t totalBytes = 0;
    // What is being worked at: a path or the name of an item; empty at the end.
    kxString name;
};

class KXUDMRT_EXPORT IUDMProgressListener {
  public:
    IUDMProgressListener() = default;
    IUDMProgressListener(const IUDMProgressListener&) = delete;
    IUDMProgressListener& operator=(const IUDMProgressListener&) = delete;
    virtual ~IUDMProgressListener();

    // Before each item, once more for each part of a large one, and at the end. False cancels; it
    // is not called again in this operation.
    virtual bool Advance(const UDMProgress& progress) = 0;
    // One item failed and the operation goes on without it. Does nothing unless overridden.
    virtual void Failed(const kxString& item, const kxString& reason);
};

// An operation that was cancelled and has left everything as it was before.
class KXUDMRT_EXPORT UDMCancelledException : public UDMException {
  public:
    using UDMException::UDMException;
    UDMCancelledException(const UDMCancelledException&) = default;
    UDMCancelledException& operator=(const UDMCancelledException&) = default;
    ~UDMCancelledException() override;
};

// Installs a listener on a session while it lives. Scopes nest: the innermost one listens, and the
// one around it again after that.
class KXUDMRT_EXPORT UDMProgressScope : private IUDMProgressListener {
  public:
    // Shares ownership of the session; the listener outlives the scope. Throws UDMException for a
    // null session, UDMNotSupportedException if the session's data source tells no progress.
    UDMProgressScope(const boost::shared_ptr<IUDMProfile>& profile, IUDMProgressListener& listener);
    UDMProgressScope(const UDMProgressScope&) = delete;
    UDMProgressScope& operator=(const UDMProgressScope&) = delete;
    ~UDMProgressScope() override;

    // Whether the listener has cancelled an operation since this scope began.
    [[nodiscard]] bool WasCancelled() const { return _cancelled; }
    // Items that were told as failed since this scope began.
    [[nodiscard]] std::size_t FailureCount() const { return _failures; }

  private:
    bool Advance(const UDMProgress& progress) override;
    void Failed(const kxString& item, const kxString& reason) override;

    boost::shared_ptr<IUDMProfile> _profile;
    spi::IProgressSource* _source;  // the same object
    IUDMProgressListener& _listener;
    IUDMProgressListener* _outer;
    bool _cancelled = false;
    std::size_t _failures = 0;
};

}  // namespace kxudm
