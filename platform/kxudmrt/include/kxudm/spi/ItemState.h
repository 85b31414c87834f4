// What a provider implements behind a UDMItemHandle: one entity at one revision in one session.
//
// One state is shared by all handles of a revision in a session. Operations may load lazily and
// may throw an exception derived from std::exception, whose text names the entity.
#pragma once

#include <kxudmrt/kxudmrt_export.h>
#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>
#include <kxutl/kxVariant.h>

#include <optional>

namespace kxudm::spi {

class KXUDMRT_EXPORT ItemState {
  public:
    ItemState() = default;
    ItemState(const ItemState&) = delete;
    ItemState& operator=(const ItemState&) = delete;
    virtual ~ItemState();

    // MUST: never fails; the reference stays valid as long as the state.
    virtual const kxString& Uid() const = 0;
    // MUST
    virtual kxString Cdef() const = 0;
    // MUST
    virtual kxString DisplayName() const = 0;
    // MUST
    virtual int Revision() const = 0;
    // MUST: throw on a name that the definition doesn't have.
    virtual kxVariant AttributeValue(const kxString& name) const = 0;
    // MUST
    virtual kxStlVector<kxString> AttributeNames(bool omitSystem) const = 0;
    // MAY: empty variants if not provided.
    virtual kxVariant CreationTime() const;
    virtual kxVariant ModifiedTime() const;
    virtual kxVariant CreatedBy() const;
    virtual kxVariant ModifiedBy() const;
    // MAY: true if not provided.
    virtual bool IsRootEntity() const;
    // MAY: false if not provided.
    virtual bool HasParent() const;
    // MAY: false if not provided.
    virtual bool IsEditable() const;
    // MAY: whether this classification is a master one; nothing if the entity is no classification,
    // which is also the default.
    virtual std::optional<bool> IsMasterClassification() const;
};

}  // namespace kxudm::spi
