// Node of a history tree: one revision of an entity, the versions of that entity and the branches
// that leave it.
//
// The node that GetHistory answers has all versions and all branches. The node of a version has the
// branches that leave it, that of a branch stands at its newest revision and has no lists: a branch
// is an entity with a history of its own.
#pragma once

#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>

#include <boost/smart_ptr/shared_ptr.hpp>
#include <cstdint>
#include <utility>

namespace kxudm {

class UDMHistoryNode {
  public:
    using List = kxStlVector<boost::shared_ptr<UDMHistoryNode>>;

    UDMHistoryNode(kxString baseUid, std::int32_t version, List versions, List branches)
        : _baseUid(std::move(baseUid)),
          _version(version),
          _versions(std::move(versions)),
          _branches(std::move(branches)) {}

    // The entity's UID without revision.
    const kxString& GetBaseUID() const { return _baseUid; }
    std::int32_t GetVersion() const { return _version; }
    // Versions ascending.
    const List& GetVersionList() const { return _versions; }
    // Branches in order of their creation.
    const List& GetBranchList() const { return _branches; }

  private:
    kxString _baseUid;
    std::int32_t _version;
    List _versions;
    List _branches;
};

}  // namespace kxudm
