// A relation between two entities.
#pragma once

#include <kxudm/UDMItemHandle.h>

namespace kxudm {

class KXUDMRT_EXPORT UDMRelationHandle : public UDMHandle {
  public:
    UDMRelationHandle();
    UDMRelationHandle(const UDMItemHandle& first,
                      const UDMItemHandle& second,
                      const kxString& type);
    UDMRelationHandle(const UDMRelationHandle&) = default;
    UDMRelationHandle& operator=(const UDMRelationHandle&) = default;
    ~UDMRelationHandle() override;

    // "<type> <first UID> <second UID>".
    kxString ToString() const override;
    const UDMItemHandle& GetFirst() const { return _first; }
    const UDMItemHandle& GetSecond() const { return _second; }
    const kxString& GetType() const { return _type; }

  private:
    UDMItemHandle _first;
    UDMItemHandle _second;
    kxString _type;
};

}  // namespace kxudm
