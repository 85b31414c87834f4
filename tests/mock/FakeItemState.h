// An entity behind a handle, made of plain fields that a test sets.
//
//     auto state = boost::make_shared<FakeItemState>("A:1", "UDMPart", "Bracket");
//     state->attributes["mass"] = 12.5;
//     UDMItemHandle part = HandleOf(state);
//     UDMItemHandle other = NewHandle("B:1");
#pragma once

#include <kxudm/UDMItemHandle.h>
#include <kxudm/spi/ItemState.h>
#include <kxutl/kxStlMap.h>
#include <kxutl/kxStlSet.h>

#include <optional>

namespace kxct::mock {

class FakeItemState : public kxudm::spi::ItemState {
  public:
    explicit FakeItemState(const kxString& uid,
                           const kxString& definition = "UDMItem",
                           const kxString& name = "");
    ~FakeItemState() override;

    // The revision is what stands behind the ":" of the UID, 0 without one.
    const kxString& Uid() const override { return uid; }
    kxString Cdef() const override { return definition; }
    kxString DisplayName() const override { return displayName; }
    int Revision() const override { return revision; }
    // Throws UDMNotFoundException, "no attribute <name>", for a name that isn't in `attributes`.
    kxVariant AttributeValue(const kxString& name) const override;
    // The names of `attributes` in byte order.
    kxStlVector<kxString> AttributeNames(bool omitSystem) const override;
    kxVariant CreationTime() const override { return creationTime; }
    kxVariant ModifiedTime() const override { return modifiedTime; }
    kxVariant CreatedBy() const override { return createdBy; }
    kxVariant ModifiedBy() const override { return modifiedBy; }
    bool IsRootEntity() const override { return isRoot; }
    bool HasParent() const override { return hasParent; }
    bool IsEditable() const override { return isEditable; }
    std::optional<bool> IsMasterClassification() const override { return isMaster; }

    kxString uid;
    kxString definition;
    kxString displayName;
    int revision = 0;
    kxStlMap<kxString, kxVariant> attributes;
    kxStlSet<kxString> systemAttributes;
    kxVariant creationTime;
    kxVariant modifiedTime;
    kxVariant createdBy;
    kxVariant modifiedBy;
    bool isRoot = true;
    bool hasParent = false;
    bool isEditable = false;
    // Nothing: no classification.
    std::optional<bool> isMaster;
};

kxudm::UDMItemHandle HandleOf(const boost::shared_ptr<FakeItemState>& state);

// A handle of a new FakeItemState.
kxudm::UDMItemHandle NewHandle(const kxString& uid,
                               const kxString& definition = "UDMItem",
                               const kxString& name = "");

}  // namespace kxct::mock
