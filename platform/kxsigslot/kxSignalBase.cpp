#include <kxsigslot/kxSignalBase.h>

#include <algorithm>
#include <utility>

kxConnectionBase::~kxConnectionBase() = default;

kxSignalBase::~kxSignalBase() {
    disconnect_all();
}

bool kxSignalBase::disconnect(kxListenerBase* listener) {
    return DisconnectIf([listener](const kxConnectionBase& connection) {
        return listener != nullptr && connection.GetListener() == listener;
    });
}

void kxSignalBase::disconnect_all() {
    DisconnectIf([](const kxConnectionBase&) { return true; });
}

std::size_t kxSignalBase::GetNumConnections() const noexcept {
    return static_cast<std::size_t>(
        std::count_if(_connections.begin(), _connections.end(), [](const auto& connection) {
            return !connection->IsDisconnected();
        }));
}

void kxSignalBase::Add(std::unique_ptr<kxConnectionBase> connection) {
    kxListenerBase* listener = connection->GetListener();
    _connections.push_back(std::move(connection));
    if (listener != nullptr) {
        listener->SignalConnected(*this);
    }
}

void kxSignalBase::DropListener(const kxListenerBase& listener) {
    for (const auto& connection : _connections) {
        if (connection->_listener == &listener) {
            connection->_listener = nullptr;
            connection->_disconnected = true;
            connection->Ended();
            _anyEnded = true;
        }
    }
    RemoveEnded();
}

void kxSignalBase::End(kxConnectionBase& connection) {
    connection._disconnected = true;
    connection.Ended();
    _anyEnded = true;
    if (kxListenerBase* listener = std::exchange(connection._listener, nullptr)) {
        listener->SignalDisconnected(*this);
    }
}

void kxSignalBase::RemoveEnded() {
    if (_raising || !_anyEnded) {
        return;
    }
    _anyEnded = false;
    std::erase_if(_connections,
                  [](const auto& connection) { return connection->IsDisconnected(); });
}
