// Base of the runtime's handle types: value types over a state that a provider implements.
//
// Copying a handle costs a reference count. A default-constructed handle stands for nothing.
#pragma once

#include <kxudm/UDMException.h>
#include <kxudmrt/kxudmrt_export.h>
#include <kxutl/kxString.h>

namespace kxudm {

class KXUDMRT_EXPORT UDMHandle {
  public:
    UDMHandle() = default;
    UDMHandle(const UDMHandle&) = default;
    UDMHandle(UDMHandle&&) noexcept = default;
    UDMHandle& operator=(const UDMHandle&) = default;
    UDMHandle& operator=(UDMHandle&&) noexcept = default;
    virtual ~UDMHandle();

    // A short text for messages: what the handle stands for. Never empty.
    virtual kxString ToString() const;

    // A reader over this handle: a default-made `Reader` that was given this object as a `Handle`.
    // Throws UDMInvalidArgException, "UnSupported reader <name> for given handle <ToString()>",
    // where the reader does not support what the handle stands for. Throws std::bad_cast where
    // this object is no `Handle`.
    template <class Reader, class Handle>
    Reader GetReader() const {
        Reader reader;
        reader = dynamic_cast<const Handle&>(*this);
        if (!reader.IsSupported()) {
            ThrowInvalidArgException(
                "UnSupported reader " + reader.GetName() + " for given handle " + ToString(),
                kxString("class ") + Reader::TypeName() +
                    " __cdecl kxudm::UDMHandle::GetReader<class " + Reader::TypeName() + ",class " +
                    Handle::TypeName() + ">(void)",
                ExceptionSubCategory::UnsupportedReader);
        }
        return reader;
    }
};

}  // namespace kxudm
