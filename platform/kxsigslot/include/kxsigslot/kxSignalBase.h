#pragma once

// What signals of all argument types share: the list of connections, blocking, and the rules of a
// round. Used through kxSignal1 and kxSignal2. Layer: above kxutl.
//
// A round is one raising of the signal. While it lasts
// - raising the signal again does nothing;
// - connections that are added are called in this round too;
// - a connection that is ended is not called any more, and its object goes at the end of the round,
//   so that a method may disconnect itself or anybody else;
// - the signal object stays alive, whatever its owners do.
// An exception of a called method ends the round and reaches the one who raised the signal.

#include <kxsigslot/kxListener.h>
#include <kxsigslot/kxsigslot_export.h>

#include <cstddef>
#include <memory>
#include <vector>

// One connection. Derived classes know whom to call, and with what.
class KXSIGSLOT_EXPORT kxConnectionBase {
  public:
    virtual ~kxConnectionBase();
    kxConnectionBase(const kxConnectionBase&) = delete;
    kxConnectionBase& operator=(const kxConnectionBase&) = delete;

    // Null for a connection without listener object.
    kxListenerBase* GetListener() const noexcept { return _listener; }
    bool IsDisconnected() const noexcept { return _disconnected; }

  protected:
    explicit kxConnectionBase(kxListenerBase* listener) noexcept : _listener(listener) {}

  private:
    friend class kxSignalBase;

    // The connection was ended just now; it will not be called any more. May not call back.
    virtual void Ended() noexcept {}

    kxListenerBase* _listener;
    bool _disconnected = false;
};

// A connection that can be called with the arguments of a signal.
template <class... Arguments>
class kxConnection : public kxConnectionBase {
  public:
    virtual void Call(Arguments... arguments) = 0;

  protected:
    using kxConnectionBase::kxConnectionBase;
};

class KXSIGSLOT_EXPORT kxSignalBase : public std::enable_shared_from_this<kxSignalBase> {
  public:
    virtual ~kxSignalBase();
    kxSignalBase(const kxSignalBase&) = delete;
    kxSignalBase& operator=(const kxSignalBase&) = delete;

    // A blocked signal does nothing when raised; a round that is under way goes on. Not counted:
    // one unblock ends any number of blocks.
    void block() noexcept { _blocked = true; }
    void unblock() noexcept { _blocked = false; }
    bool is_blocked() const noexcept { return _blocked; }

    // Ends every connection to the listener; false if there was none.
    bool disconnect(kxListenerBase* listener);
    void disconnect_all();
    std::size_t GetNumConnections() const noexcept;

  protected:
    kxSignalBase() = default;

    using Connections = std::vector<std::unique_ptr<kxConnectionBase>>;

    // Takes the connection over and tells its listener.
    void Add(std::unique_ptr<kxConnectionBase> connection);
    // Ends the connections for which `matches(connection)` is true; false if there was none.
    template <class Predicate>
    bool DisconnectIf(const Predicate& matches);
    // Calls `call(connection)` for each connection by the rules at the top.
    template <class Call>
    void Round(const Call& call);

  private:
    friend class kxListenerBase;

    // Marks the round, and at its end removes what was disconnected meanwhile.
    class RoundMark;

    // Ends the connections to a listener that has already forgotten this signal.
    void DropListener(const kxListenerBase& listener);
    void End(kxConnectionBase& connection);
    void RemoveEnded();

    Connections _connections;
    bool _blocked = false;
    bool _raising = false;
    bool _anyEnded = false;
};

class kxSignalBase::RoundMark {
  public:
    explicit RoundMark(kxSignalBase& signal) noexcept : _signal(signal) { _signal._raising = true; }
    ~RoundMark() {
        _signal._raising = false;
        _signal.RemoveEnded();
    }
    RoundMark(const RoundMark&) = delete;
    RoundMark& operator=(const RoundMark&) = delete;

  private:
    kxSignalBase& _signal;
};

template <class Predicate>
bool kxSignalBase::DisconnectIf(const Predicate& matches) {
    bool any = false;
    for (const auto& connection : _connections) {
        if (!connection->_disconnected && matches(*connection)) {
            End(*connection);
            any = true;
        }
    }
    RemoveEnded();
    return any;
}

template <class Call>
void kxSignalBase::Round(const Call& call) {
    if (_connections.empty() || _blocked || _raising) {
        return;
    }
    const std::shared_ptr<kxSignalBase> alive = shared_from_this();
    const RoundMark mark(*this);
    // By index and with the size read anew, because a called method may add connections.
    for (std::size_t i = 0; i < _connections.size(); ++i) {
        kxConnectionBase& connection = *_connections[i];
        if (!connection._disconnected) {
            call(connection);
        }
    }
}
