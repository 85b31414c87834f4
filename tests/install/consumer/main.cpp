#include <kxct/EntryPoints.h>
#include <kxct/KXCTFramework.h>
#include <kxctinterfaces/Controller.h>
#include <kxctinterfaces/Factory.h>
#include <kxudm/UDMProfileMgr.h>

#include <iostream>

int main() {
    std::cout << kxct::KXCTFramework::GetCurrentVersion() << ' '
              << kxudm::UDMProfileMgr::GetDataSources()[0] << ' '
              << (CreateFactory()->GetController("none", "", "", "", "") == nullptr) << '\n';
}
