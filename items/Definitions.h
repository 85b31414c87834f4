// Questions about content definitions that several items ask.
#pragma once

#include <kxutl/kxString.h>

namespace kxudm {
class UDMItemHandle;
}

namespace kxct {

class UDMDBCtrl;

// The type of the content definition of a handle, such as "Foldertype". Empty for an empty handle
// and without a session.
kxString DefinitionTypeOf(const UDMDBCtrl* session, const kxudm::UDMItemHandle& handle);

// Makes a content of `definition` in `group` of `parent` under a name that no display name there
// has: the definition's display name ("new_item" if that is empty), else that with 1, 2, 3 ...
// behind it. The result goes into `handle`.
void CreateUnderFreeName(UDMDBCtrl& session,
                         kxudm::UDMItemHandle& handle,
                         const kxudm::UDMItemHandle& parent,
                         const kxString& group,
                         const kxString& definition);

}  // namespace kxct
