// What a session offers besides IUDMProfile if it can retrieve the files of many entities at once.
// A provider's session derives from it too; UDMBulkRetrieval finds it there.
#pragma once

#include <kxudm/UDMBulkRetrieval.h>

#include <vector>

namespace kxudm::spi {

class KXUDMRT_EXPORT IBulkRetrieval {
  public:
    IBulkRetrieval() = default;
    IBulkRetrieval(const IBulkRetrieval&) = delete;
    IBulkRetrieval& operator=(const IBulkRetrieval&) = delete;
    virtual ~IBulkRetrieval();

    // MUST; UDMBulkRetrieval::Run tells its contract.
    virtual void RetrieveBulk(const std::vector<UDMRetrieved>& wanted,
                              bool overwrite,
                              kxStlVector<kxString>& paths) = 0;
};

}  // namespace kxudm::spi
