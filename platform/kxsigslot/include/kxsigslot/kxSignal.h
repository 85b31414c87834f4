#pragma once

// Signals with one and with two arguments. Layer: above kxutl.
//
// kxiSignal1 and kxiSignal2 are what a class has as members: holders that stay empty, and raise at
// the cost of one test, until somebody connects. Then they own a signal object, kxSignal1 or
// kxSignal2. The rules of raising stand in kxSignalBase.h; the thread is that of the policy
// (kxListener.h).
//
//     struct Signals {
//         kxiSignal1<Item*> ItemUpdated;
//     };
//     signals.ItemUpdated.connect(&view, &View::OnItemUpdated);
//     signals.ItemUpdated.raise(item);
//     signals.ItemUpdated.disconnect(&view);
//
// A method may be connected several times and is then called as often. Its result is ignored.
//
// Scripts are connected in three ways (kxScriptConnection.h):
//
//     signals.ItemUpdated.connect_script("heard");                 // heard ITEM
//     signals.ItemUpdated.connect_script(&view, "OnItemUpdated");  // View::OnItemUpdated VIEW ITEM
//     signals.ItemUpdated.disconnect_script("heard");
//
// The object in the second form may be a listener, and is then disconnected when it dies, or any
// other object, which has to be disconnected before.

#include <kxsigslot/kxScriptConnection.h>
#include <kxsigslot/kxSignalBase.h>

#include <concepts>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

// Calls a method of a listener. `Method` is a pointer to a member function.
template <class Listener, class Method, class... Arguments>
class kxMethodConnection final : public kxConnection<Arguments...> {
  public:
    kxMethodConnection(Listener* listener, Method method)
        : kxConnection<Arguments...>(listener), _listener(listener), _method(method) {}

    void Call(Arguments... arguments) override {
        static_cast<void>(std::invoke(_method, _listener, static_cast<Arguments>(arguments)...));
    }
    Method GetMethod() const noexcept { return _method; }

  private:
    Listener* _listener;
    Method _method;
};

// A method of `Listener`, itself a listener of the policy, that takes the arguments.
template <class Listener, class Method, class Policy, class... Arguments>
concept kxConnectable = std::derived_from<Listener, kxListener<Policy>> &&
    std::is_member_function_pointer_v<Method> && std::invocable<Method, Listener*, Arguments...>;

// The signal object of either number of arguments. Always owned by a shared pointer.
template <class Policy, class... Arguments>
class kxSignalOf : public kxSignalBase {
  public:
    using kxSignalBase::disconnect;

    template <class Listener, class Method>
    requires kxConnectable<Listener, Method, Policy, Arguments...>
    void connect(Listener* listener, Method method) {
        Connect(
            std::make_unique<kxMethodConnection<Listener, Method, Arguments...>>(listener, method));
    }
    // Adds a connection of another kind.
    void Connect(std::unique_ptr<kxConnection<Arguments...>> connection) {
        Add(std::move(connection));
    }
    // Ends every connection of that method of that listener; false if there was none.
    template <class Listener, class Method>
    requires kxConnectable<Listener, Method, Policy, Arguments...>
    bool disconnect(Listener* listener, Method method) {
        return DisconnectIf([listener, method](const kxConnectionBase& connection) {
            using Connection = kxMethodConnection<Listener, Method, Arguments...>;
            const auto* candidate = dynamic_cast<const Connection*>(&connection);
            return candidate != nullptr && candidate->GetListener() == listener &&
                   candidate->GetMethod() == method;
        });
    }
    // A script procedure by its name.
    void connect_script(const kxString& procedure) requires(kxScriptArgument<Arguments>&&...) {
        Connect(std::make_unique<kxProcedureConnection<Arguments...>>(procedure));
    }
    // A script method of an object.
    template <class Object>
    void connect_script(Object* object,
                        const kxString& method) requires(kxScriptArgument<Arguments>&&...) {
        Connect(std::make_unique<MethodConnection<Object>>(object, method));
    }
    // Ends every connection to that procedure, or to that method of that object; false if there was
    // none.
    bool disconnect_script(const kxString& procedure) {
        return DisconnectScript(kxScriptTarget(nullptr, procedure));
    }
    template <class Object>
    bool disconnect_script(Object* object, const kxString& method) {
        return DisconnectScript(
            kxScriptTarget(MethodConnection<Object>::AddressOf(object), method));
    }
    void raise(Arguments... arguments) {
        Round([&](kxConnectionBase& connection) {
            static_cast<kxConnection<Arguments...>&>(connection)
                .Call(static_cast<Arguments>(arguments)...);
        });
    }

  private:
    template <class Object>
    using MethodConnection = kxScriptMethodConnection<Object,
                                                      std::derived_from<Object, kxListener<Policy>>,
                                                      Arguments...>;

    bool DisconnectScript(const kxScriptTarget& target) {
        return DisconnectIf([&target](const kxConnectionBase& connection) {
            const auto* candidate = dynamic_cast<const kxScriptTarget*>(&connection);
            return candidate != nullptr && *candidate == target;
        });
    }
};

template <class A, class Policy = single_threaded>
class kxSignal1 : public kxSignalOf<Policy, A> {};

template <class A, class B, class Policy = single_threaded>
class kxSignal2 : public kxSignalOf<Policy, A, B> {};

// The holder of either number of arguments. Not copied: connections belong to one place.
template <class Signal, class Policy, class... Arguments>
class kxSignalHolder {
  public:
    kxSignalHolder() = default;
    ~kxSignalHolder() = default;
    kxSignalHolder(const kxSignalHolder&) = delete;
    kxSignalHolder& operator=(const kxSignalHolder&) = delete;

    template <class Listener, class Method>
    requires kxConnectable<Listener, Method, Policy, Arguments...>
    void connect(Listener* listener, Method method) { GetSignal().connect(listener, method); }
    bool disconnect(kxListenerBase* listener) {
        return _signal != nullptr && _signal->disconnect(listener);
    }
    template <class Listener, class Method>
    requires kxConnectable<Listener, Method, Policy, Arguments...>
    bool disconnect(Listener* listener, Method method) {
        return _signal != nullptr && _signal->disconnect(listener, method);
    }
    // See kxSignalOf.
    void connect_script(const kxString& procedure) requires(kxScriptArgument<Arguments>&&...) {
        GetSignal().connect_script(procedure);
    }
    template <class Object>
    void connect_script(Object* object,
                        const kxString& method) requires(kxScriptArgument<Arguments>&&...) {
        GetSignal().connect_script(object, method);
    }
    bool disconnect_script(const kxString& procedure) {
        return _signal != nullptr && _signal->disconnect_script(procedure);
    }
    template <class Object>
    bool disconnect_script(Object* object, const kxString& method) {
        return _signal != nullptr && _signal->disconnect_script(object, method);
    }
    // Makes the signal object if need be, so that a later connection finds it blocked.
    void block() { GetSignal().block(); }
    void unblock() {
        if (_signal != nullptr) {
            _signal->unblock();
        }
    }
    bool is_blocked() const noexcept { return _signal != nullptr && _signal->is_blocked(); }

    void raise(Arguments... arguments) const {
        if (_signal != nullptr) {
            // Here too, because the call may destroy this holder and its pointer with it.
            const std::shared_ptr<Signal> alive = _signal;
            alive->raise(static_cast<Arguments>(arguments)...);
        }
    }

    // True until the signal object is made.
    bool IsEmpty() const noexcept { return _signal == nullptr; }
    // The signal object, made if need be.
    Signal& GetSignal() {
        if (_signal == nullptr) {
            _signal = std::make_shared<Signal>();
        }
        return *_signal;
    }

  private:
    std::shared_ptr<Signal> _signal;
};

template <class A, class Policy = single_threaded>
class kxiSignal1 : public kxSignalHolder<kxSignal1<A, Policy>, Policy, A> {};

template <class A, class B, class Policy = single_threaded>
class kxiSignal2 : public kxSignalHolder<kxSignal2<A, B, Policy>, Policy, A, B> {};
