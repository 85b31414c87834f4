// What a session offers besides IUDMProfile if it can run many operations in one transaction. A
// provider's session derives from it too; UDMBulkEdit finds it there.
#pragma once

#include <kxudmrt/kxudmrt_export.h>

namespace kxudm::spi {

class KXUDMRT_EXPORT IBulkEdit {
  public:
    IBulkEdit() = default;
    IBulkEdit(const IBulkEdit&) = delete;
    IBulkEdit& operator=(const IBulkEdit&) = delete;
    virtual ~IBulkEdit();

    // MUST, each of them; UDMBulkEdit.h tells their contracts. Begin throws where one is open.
    virtual void BeginBulk() = 0;
    // A failure leaves the library as it was before BeginBulk, and the bulk edit closed.
    virtual void CommitBulk() = 0;
    // Does nothing if none is open. Never fails.
    virtual void RollbackBulk() noexcept = 0;
};

}  // namespace kxudm::spi
