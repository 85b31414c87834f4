// Where the registry gets the provider of "local" from, without knowing its class.
#pragma once

#include <kxudm/spi/IUDMProvider.h>

namespace kxudm::core {

boost::shared_ptr<spi::IUDMProvider> MakeLocalProvider();

}  // namespace kxudm::core
