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

    // Fills `out` with an engine that copies from `profile` into the library `library`, below the
    // folder path `folder`, with `comment` on what it makes. The provider that opened `profile`
    // makes it; where that provider can't merge, `out` is left null and the result is Failed.
    static UDMResult CreateInstance(boost::shared_ptr<UDMKXMergeToCatalog>& out,
                                    kxString library,
                                    kxString folder,
                                    boost::shared_ptr<IUDMProfile> profile,
                                    const kxString& comment);

    // Copies the entities; returns their handles in the target. `publish`: publish what was copied.
    virtual kxStlVector<UDMItemHandle> merge(kxStlVector<UDMUID> entities, bool publish) = 0;
    // The same with, for each entity, the names of the groups to bring along (empty: all).
    virtual kxStlVector<UDMItemHandle> merge(
        const kxStlMap<UDMUID, kxStlVector<kxString>>& entities, bool publish) = 0;
};

}  // namespace kxudm
