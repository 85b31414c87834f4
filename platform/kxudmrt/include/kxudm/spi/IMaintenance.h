// What a session offers besides IUDMProfile if its library can be verified and purged. A provider's
// session derives from it too; UDMMaintenance finds it there.
#pragma once

#include <kxudm/UDMMaintenance.h>

namespace kxudm::spi {

class KXUDMRT_EXPORT IMaintenance {
  public:
    IMaintenance() = default;
    IMaintenance(const IMaintenance&) = delete;
    IMaintenance& operator=(const IMaintenance&) = delete;
    virtual ~IMaintenance();

    // MUST, each of them; UDMMaintenance.h tells their contracts.
    virtual kxStlVector<UDMFinding> VerifyLibrary(const UDMVerifyOptions& options) = 0;
    virtual UDMPurged PurgeLibrary(const UDMPurgeOptions& options) = 0;
    virtual kxStlVector<UDMDeletedEntity> ListDeleted() = 0;
    virtual bool UndeleteEntity(const kxString& uid) = 0;
    virtual void RebuildFullTextIndex() = 0;
};

}  // namespace kxudm::spi
