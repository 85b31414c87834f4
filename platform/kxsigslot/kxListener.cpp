#include <kxsigslot/kxListener.h>
#include <kxsigslot/kxSignalBase.h>

kxListenerBase::~kxListenerBase() {
    // Derived parts are gone, so an override of DisconnectAll would not be reached anyway.
    kxListenerBase::DisconnectAll();
}

void kxListenerBase::SignalConnected(kxSignalBase& signal) {
    ++_signals[&signal];
}

void kxListenerBase::SignalDisconnected(kxSignalBase& signal) {
    const auto found = _signals.find(&signal);
    if (found != _signals.end() && --found->second == 0) {
        _signals.erase(found);
    }
}

void kxListenerBase::DisconnectAll() {
    while (!_signals.empty()) {
        kxSignalBase* signal = _signals.begin()->first;
        _signals.erase(_signals.begin());
        signal->DropListener(*this);
    }
}

std::size_t kxListenerBase::GetNumConnections() const {
    std::size_t count = 0;
    for (const auto& [signal, connections] : _signals) {
        count += connections;
    }
    return count;
}
