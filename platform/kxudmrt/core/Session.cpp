#include <kxudm/GetEnvironmentVar.h>
#include <kxudm/IUDMProfile.h>
#include <kxudm/UDMKXMergeToCatalog.h>
#include <kxudm/UDMProfileUpdate.h>
#include <kxudm/spi/IUDMProvider.h>

#include <cstdlib>

namespace kxudm {

UDMException::~UDMException() = default;
UDMNotFoundException::~UDMNotFoundException() = default;
UDMStoreException::~UDMStoreException() = default;
UDMNotSupportedException::~UDMNotSupportedException() = default;
UDMInvalidArgException::UDMInvalidArgException(const kxString& message,
                                               const kxString& signature,
                                               ExceptionSubCategory subCategory)
    : UDMException(message), _signature(signature), _subCategory(subCategory) {}
UDMInvalidArgException::~UDMInvalidArgException() = default;

void ThrowInvalidArgException(const kxString& message,
                              const kxString& signature,
                              const ExceptionSubCategory& subCategory) {
    throw UDMInvalidArgException(message, signature, subCategory);
}

UDMUID::UDMUID(const kxString& text)
    : _text(text), _base(std::string_view(text).substr(0, text.find(':'))) {}

UDMProfileUpdate UDMProfileUpdate::OfHandle(SignalOption code, const UDMItemHandle& handle) {
    UDMProfileUpdate update(code);
    update._handle = handle;
    return update;
}

UDMProfileUpdate UDMProfileUpdate::OfChild(SignalOption code,
                                           const UDMItemHandle& parent,
                                           const UDMItemHandle& child) {
    UDMProfileUpdate update = OfHandle(code, parent);
    update._child = child;
    return update;
}

UDMProfileUpdate UDMProfileUpdate::OfUndo(const UDMItemHandle& handle, const UDMUID& gone) {
    UDMProfileUpdate update = OfHandle(SIGNAL_REVISION_UNDONE, handle);
    update._uid = gone;
    return update;
}

UDMProfileUpdate UDMProfileUpdate::OfDeletion(const UDMUID& uid) {
    UDMProfileUpdate update(SIGNAL_ENTITY_DELETED);
    update._uid = uid;
    return update;
}

UDMProfileUpdate UDMProfileUpdate::OfSession(const kxString& sessionId) {
    UDMProfileUpdate update(SIGNAL_SESSION_CLOSED);
    update._sessionId = sessionId;
    return update;
}

IUDMProfileSlot::~IUDMProfileSlot() = default;
void IUDMProfileSlot::connected(const kxString& /*sessionId*/) {}
void IUDMProfileSlot::disconnected(const kxString& /*sessionId*/) {}
void IUDMProfileSlot::beginUpdates() {}
void IUDMProfileSlot::endUpdates() {}

IUDMProfile::~IUDMProfile() = default;

UDMKXMergeToCatalog::~UDMKXMergeToCatalog() = default;

bool GetEnvironmentVar(kxString& value, const kxString& name) {
    const char* text = std::getenv(name.c_str());
    if (text == nullptr) {
        return false;
    }
    value = text;
    return true;
}

}  // namespace kxudm
