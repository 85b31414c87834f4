// What a session offers besides IUDMProfile if its long operations tell how far they are. A
// provider's session derives from it too; UDMProgressScope finds it there.
#pragma once

#include <kxudmrt/kxudmrt_export.h>

namespace kxudm {
class IUDMProgressListener;
}

namespace kxudm::spi {

class KXUDMRT_EXPORT IProgressSource {
  public:
    IProgressSource() = default;
    IProgressSource(const IProgressSource&) = delete;
    IProgressSource& operator=(const IProgressSource&) = delete;
    virtual ~IProgressSource();

    // MUST. Who is told from now on, null for nobody; returns who was told until now. The listener
    // stays the caller's. Also on a closed session.
    virtual IUDMProgressListener* SetProgressListener(IUDMProgressListener* listener) noexcept = 0;
    // MUST. Null if there is none.
    [[nodiscard]] virtual IUDMProgressListener* ProgressListener() const noexcept = 0;
};

}  // namespace kxudm::spi
