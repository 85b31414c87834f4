// Copies entities of a session into another library: an export into a temporary archive in that
// library's vault, and an import of it, with a place for what was copied.
//
// Layer: profile. Rules: docs/data-model.md, "Merge". Holds both sessions; that of the target also
// lives as long as that of the source, because handles of the target are given out.
#pragma once

#include <kxudm/UDMKXMergeToCatalog.h>

#include <utility>
#include <vector>

#include "exchange/LibraryExchange.h"
#include "profile/Session.h"

namespace kxudm::profile {

class Profile;

class Merge final : public UDMKXMergeToCatalog {
  public:
    // Throws UDMException for a folder path that is none; an empty one stands for the top.
    Merge(boost::shared_ptr<Profile> source,
          boost::shared_ptr<Session> target,
          const kxString& folder,
          kxString comment);

    kxStlVector<UDMItemHandle> merge(kxStlVector<UDMUID> entities, bool publish) override;
    kxStlVector<UDMItemHandle> merge(const kxStlMap<UDMUID, kxStlVector<kxString>>& entities,
                                     bool publish) override;

  private:
    struct Wanted {
        Session::State entity;
        kxStlVector<kxString> groups;  // empty: all
    };
    using Wants = std::vector<Wanted>;

    Wanted Want(const UDMUID& uid, const kxStlVector<kxString>& groups);
    kxStlVector<UDMItemHandle> Run(Wants wants, bool publish);
    void Publish(Wants& wants);
    void Select(const Wants& wants, exchange::ExportSelection& selection);
    [[nodiscard]] std::vector<Session::State> MembersOf(const Wanted& wanted);
    void Place(Operation& operation, const catalogue::Catalogue& catalogue, const Wants& wants);
    [[nodiscard]] store::EntityRow RowOf(const Wanted& wanted);

    boost::shared_ptr<Profile> _source;
    boost::shared_ptr<Session> _target;
    std::vector<kxString> _folder;  // parts of the path
    kxString _comment;
};

}  // namespace kxudm::profile
