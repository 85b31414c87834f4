// One entity at one revision, or nothing.
//
// A value type over a state that the provider shares among all handles of that revision in one
// session: copying costs a reference count, and the handle is a live view. After an attribute was
// set through the session, every handle of that revision answers the new value.
//
//     UDMItemHandle part = profile->GetEntity("01J...:2");
//     kxVariant mass = part.GetAttributeValue("mass");
//
// The read operations ask the provider when the state has to be loaded first, and throw what it
// throws. On an empty handle they throw UDMException, except IsEmpty, GetUID, GetCdef,
// GetDisplayName and ToString, which answer empty texts ("empty handle" for ToString), and the
// boolean ones, which answer false.
#pragma once

#include <kxudm/UDMHandle.h>
#include <kxutl/kxStlVector.h>
#include <kxutl/kxVariant.h>

#include <boost/smart_ptr/shared_ptr.hpp>

namespace kxudm {

namespace spi {
class ItemState;
}

class KXUDMRT_EXPORT UDMItemHandle : public UDMHandle {
  public:
    static const char* TypeName() { return "kxudm::UDMItemHandle"; }

    UDMItemHandle();
    // A handle of what `state` stands for; a null pointer makes an empty handle.
    explicit UDMItemHandle(boost::shared_ptr<spi::ItemState> state);
    UDMItemHandle(const UDMItemHandle&);
    UDMItemHandle(UDMItemHandle&&) noexcept;
    UDMItemHandle& operator=(const UDMItemHandle&);
    UDMItemHandle& operator=(UDMItemHandle&&) noexcept;
    ~UDMItemHandle() override;

    // "<definition> <UID>".
    kxString ToString() const override;

    // UID text with its revision, "<base>:<revision>".
    kxString GetUID() const { return Uid(); }
    // The same without a copy; valid as long as a handle of this revision lives.
    const kxString& Uid() const;

    // Name of the entity's content definition.
    kxString GetCdef() const;
    kxString GetDisplayName() const;
    int GetRevision() const;
    // Value of one attribute. An attribute that the definition has and that was never set has the
    // definition's default. A name that the definition doesn't have throws.
    kxVariant GetAttributeValue(const kxString& name) const;
    // Names of the attributes that have a value or a default, in the definition's order; without
    // the system ones where `omitSystem` is true.
    kxStlVector<kxString> GetFilteredAttributeNameList(bool omitSystem) const;
    // Times are texts in ISO 8601, UTC, "2026-01-31T12:00:00Z"; users are names.
    kxVariant GetCreationTime() const;
    kxVariant GetModifiedTime() const;
    kxVariant GetCreatedBy() const;
    kxVariant GetModifiedBy() const;
    // True for an entity that no other entity owns.
    bool IsRootEntity() const;
    // True where an entity owns this one.
    bool hasparent() const;
    bool IsEditable() const;
    bool IsEmpty() const { return !_state; }

    // For providers and their tests: the state behind the handle, null for an empty one.
    const boost::shared_ptr<spi::ItemState>& State() const { return _state; }

  private:
    const spi::ItemState& Loaded(const char* question) const;

    boost::shared_ptr<spi::ItemState> _state;
};

}  // namespace kxudm
