// What a session offers besides IUDMProfile if an import into its library can be reported. A
// provider's session derives from it too; UDMExchange finds it there.
#pragma once

#include <kxudm/UDMExchange.h>

namespace kxudm::spi {

class KXUDMRT_EXPORT IExchange {
  public:
    IExchange() = default;
    IExchange(const IExchange&) = delete;
    IExchange& operator=(const IExchange&) = delete;
    virtual ~IExchange();

    // MUST. IUDMProfile::Import, telling what it did.
    virtual UDMImportReport ImportArchive(const kxString& path) = 0;
};

}  // namespace kxudm::spi
