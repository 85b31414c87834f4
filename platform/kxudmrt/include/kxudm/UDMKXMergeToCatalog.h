// Engine that copies entities of one session into another library.
#pragma once

#include <kxudm/UDMItemHandle.h>
#include <kxudm/UDMUID.h>
#include <kxutl/kxStlMap.h>

namespace kxudm {

class IUDMProfile;

enum class UDMResult : int { Ok = 0, Failed = 1 };

class KXUDMRT_EXPORT UDMKXMergeToCatalog {
  public:
    UDMKXMergeToCatalog() = default;
    UDMKXMergeToCatalog(const UDMKXMergeToCatalog&) = delete;
    UDMKXMergeToCatalog& operator=(const UDMKXMergeToCatalog&) = delete;
    virtual ~UDMKXMergeToCatalog();

    // Fills `out` with an engine that copies from `profile` into the library `library`. What it
    // copies is put into the folder of the path `folder`, which is made; an empty one is the top.
    // `comment` is that of revisions that the engine publishes. The provider that opened `profile`
    // makes it; where that provider can't merge, or the library can't be opened, `out` is left null
    // and the result is Failed. Throws UDMException for a text that is no folder path.
    static UDMResult CreateInstance(boost::shared_ptr<UDMKXMergeToCatalog>& out,
                                    kxString library,
                                    kxString folder,
                                    boost::shared_ptr<IUDMProfile> profile,
                                    const kxString& comment);

    // Copies all published revisions of the entities, with files and whatever they own, under
    // their UIDs; merging again adds only what is new. `publish`: what the session has in work of
    // them is published first, in its own library. Returns handles of the target, one for each
    // entity in the order given; they live as long as the session. A failure leaves the target as
    // it was. The rules in full: docs/data-model.md, "Merge".
    virtual kxStlVector<UDMItemHandle> merge(kxStlVector<UDMUID> entities, bool publish) = 0;
    // The same with, for each entity, the names of the groups to bring along (empty: all).
    virtual kxStlVector<UDMItemHandle> merge(
        const kxStlMap<UDMUID, kxStlVector<kxString>>& entities, bool publish) = 0;
};

}  // namespace kxudm
