#include "items/Definitions.h"

#include <kxct/UDMDBCtrl.h>
#include <kxctinterfaces/Attributes.h>
#include <kxudm/UDMDefinitionHandles.h>
#include <kxudm/UDMItemHandle.h>
#include <kxutl/kxStlSet.h>
#include <kxutl/kxStlVector.h>
#include <kxutl/kxVariant.h>

using kxudm::UDMItemHandle;

namespace kxct {

kxString DefinitionTypeOf(const UDMDBCtrl* session, const UDMItemHandle& handle) {
    if (!session || handle.IsEmpty()) {
        return kxString();
    }
    return session->GetContentDefinitionHandle(handle.GetCdef()).GetType();
}

void CreateUnderFreeName(UDMDBCtrl& session,
                         UDMItemHandle& handle,
                         const UDMItemHandle& parent,
                         const kxString& group,
                         const kxString& definition) {
    kxStlVector<UDMItemHandle> siblings;
    session.GetChildren(siblings, parent, group, kxString());
    kxStlSet<kxString> taken;
    for (const UDMItemHandle& sibling : siblings) {
        taken.insert(sibling.GetDisplayName());
    }
    kxString base = session.GetCdefDisplayName(definition);
    if (base.empty()) {
        base = "new_item";
    }
    kxString candidate = base;
    for (unsigned long counter = 1; taken.count(candidate) != 0; ++counter) {
        candidate = base + std::to_string(counter);
    }
    handle = session.CreateAndAdd(definition, candidate, parent, group);
    session.SetMetaData(handle, ATTRIBUTE_NAME::DISPLAYNAME, kxVariant(candidate));
}

}  // namespace kxct
