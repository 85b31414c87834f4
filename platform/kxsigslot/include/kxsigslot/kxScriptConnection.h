#pragma once

// Connections of signals to scripts, in three kinds: to a procedure, to a script method of a
// listener, and to a script method of any other object. Used through connect_script of kxSignal.h.
// Layer: above kxinterp.
//
// Each raising turns the arguments of the signal into values for the script: a text into a text, a
// pointer into a pointer of its simple class name, a variant and a number into themselves. The
// class of an object is looked at anew at each raising, so that it is the run-time one.
//
// A script that fails does not end the round, and nobody is told but the interpreter's LastError.

#include <kxinterp/kxPointerRegistry.h>
#include <kxinterp/kxScriptCallback.h>
#include <kxsigslot/kxSignalBase.h>
#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>
#include <kxutl/kxVariant.h>

#include <concepts>
#include <type_traits>
#include <typeinfo>
#include <utility>

// A value for a script.
inline kxVariant kxToScript(const kxVariant& value) {
    return value;
}
inline kxVariant kxToScript(const char* text) {
    return kxVariant(text);
}
template <class Object>
requires(!std::is_function_v<Object>) kxVariant kxToScript(Object* object) {
    kxVariant value;
    value.SetPointer(const_cast<void*>(static_cast<const volatile void*>(object)),
                     typeid(Object*).name());
    value._extract_simple_type();
    return value;
}

// What a signal to scripts may have as an argument.
template <class Argument>
concept kxScriptArgument = requires(Argument argument) {
    { kxToScript(argument) } -> std::same_as<kxVariant>;
};

// Tells script connections of one signal apart from each other and from the rest.
class KXSIGSLOT_EXPORT kxScriptTarget {
  public:
    // `object` is null for a procedure, whose name is `name`.
    kxScriptTarget(const void* object, const kxString& name) : _object(object), _name(name) {}
    kxScriptTarget(const kxScriptTarget&) = default;
    kxScriptTarget& operator=(const kxScriptTarget&) = default;
    virtual ~kxScriptTarget();

    friend bool operator==(const kxScriptTarget& a, const kxScriptTarget& b) {
        return a._object == b._object && a._name == b._name;
    }
    const kxString& GetName() const noexcept { return _name; }

  private:
    const void* _object;
    kxString _name;
};

// Calls a procedure.
template <class... Arguments>
class kxProcedureConnection final : public kxConnection<Arguments...>, public kxScriptTarget {
  public:
    explicit kxProcedureConnection(const kxString& procedure)
        : kxConnection<Arguments...>(nullptr),
          kxScriptTarget(nullptr, procedure),
          _callback(procedure) {}

    void Call(Arguments... arguments) override { _callback.Call({kxToScript(arguments)...}); }

  private:
    kxScriptCallback _callback;
};

// Calls a script method of an object. A listener is told of the connection, and scripts can't use
// its pointer any more once the connection has ended. Any other object has to outlive the
// connection, and whoever destroys it says so to kxPointerRegistry.
template <class Object, bool IsListener, class... Arguments>
class kxScriptMethodConnection final : public kxConnection<Arguments...>, public kxScriptTarget {
  public:
    kxScriptMethodConnection(Object* object, const kxString& method)
        : kxConnection<Arguments...>(ListenerOf(object)),
          kxScriptTarget(AddressOf(object), method),
          _object(object) {}

    void Call(Arguments... arguments) override {
        kxVariant object;
        object.SetPointer(AddressOf(_object), typeid(*_object).name());
        object._extract_simple_type();
        if constexpr (IsListener) {
            _handedOut = object.GetPointer();
        }
        // The script may end this connection; nothing of it is used after the call.
        kxScriptCallback(object, GetName()).Call({kxToScript(arguments)...});
    }

    // Scripts get a pointer to the whole object, as its run-time class says.
    static void* AddressOf(Object* object) {
        if constexpr (std::is_polymorphic_v<Object>) {
            return dynamic_cast<void*>(object);
        } else {
            return object;
        }
    }

  private:
    void Ended() noexcept override {
        if (_handedOut != nullptr) {
            kxPointerRegistry::Forget(std::exchange(_handedOut, nullptr));
        }
    }

    static kxListenerBase* ListenerOf([[maybe_unused]] Object* object) {
        if constexpr (IsListener) {
            return object;
        } else {
            return nullptr;
        }
    }

    Object* _object;
    void* _handedOut = nullptr;
};
