#pragma once

// Variants as Tcl objects and back.

#include <kxutl/kxVariant.h>
#include <tcl.h>

namespace kxTclValue {

// An object with a reference count of its own.
class Object {
  public:
    Object() = default;
    explicit Object(Tcl_Obj* object) : _object(object) { Tcl_IncrRefCount(_object); }
    Object(Object&& other) noexcept : _object(std::exchange(other._object, nullptr)) {}
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    Object& operator=(Object&&) = delete;
    ~Object() {
        if (_object != nullptr) {
            Tcl_DecrRefCount(_object);
        }
    }
    Tcl_Obj* get() const noexcept { return _object; }

  private:
    Tcl_Obj* _object = nullptr;
};

// Null if the text or list is larger than Tcl can hold.
Tcl_Obj* ToTcl(const kxVariant& value);
Tcl_Obj* ToTcl(const kxString& text);

kxString TextOf(Tcl_Obj* object);

// Reads the object as the kind that `result` holds, or as what fits best if `result` is empty.
// False, with `result` unchanged and one line in `error`, if the object is not of that kind.
bool FromTcl(Tcl_Obj* object, kxVariant& result, kxString& error);

}  // namespace kxTclValue
