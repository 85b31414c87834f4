#pragma once

// The receiving side of signals: a class that derives from kxListener can have its methods
// connected to signals, and is disconnected from all of them when it dies. Layer: above kxutl.
//
// Listener and signal know each other by plain pointers and each tells the other of its end, so
// they may die in any order. The policy says who may call: with `single_threaded`, the only one, a
// listener and every signal that it is connected to belong to one thread, and nothing is locked.
//
//     class View : public kxListener<single_threaded> {
//       public:
//         void OnItemUpdated(Item* item);
//     };

#include <kxsigslot/kxsigslot_export.h>

#include <cstddef>
#include <map>

class kxSignalBase;

struct single_threaded {};

// What listeners of every policy share.
class KXSIGSLOT_EXPORT kxListenerBase {
  public:
    virtual ~kxListenerBase();

    // A signal made a connection to this listener, or ended one. Called by signals only. An
    // override must call the base's, and may not connect or disconnect anything.
    virtual void SignalConnected(kxSignalBase& signal);
    virtual void SignalDisconnected(kxSignalBase& signal);
    // Ends every connection to this listener.
    virtual void DisconnectAll();
    // The number of connections to this listener.
    virtual std::size_t GetNumConnections() const;

  protected:
    kxListenerBase() = default;
    // Connections belong to one object: a copy starts without any, and assignment changes none.
    kxListenerBase(const kxListenerBase&) noexcept {}
    kxListenerBase& operator=(const kxListenerBase&) noexcept { return *this; }

  private:
    // Each signal with the number of its connections to this listener.
    std::map<kxSignalBase*, std::size_t> _signals;
};

template <class Policy>
class kxListener : public kxListenerBase {
  protected:
    kxListener() = default;
};
