// One revision of an entity in one session: what the handles of that revision share.
//
// Layer: profile. Held by its handles alone; the session's cache finds it as long as it lives. The
// state came with one row, attributes packed as they stand in the library, and picks single
// attributes out of them. The session marks it stale when the revision changed behind its back; it
// then reads the row again on the next question. It outlives its session and goes on answering
// what it knows.
#pragma once

#include <kxudm/UDMItemHandle.h>
#include <kxudm/spi/ItemState.h>

#include <boost/smart_ptr/enable_shared_from_this.hpp>
#include <functional>
#include <memory>
#include <set>
#include <string_view>
#include <vector>

#include "catalogue/Catalogue.h"
#include "store/Rows.h"

namespace kxudm::profile {

class Session;

// UID text of one revision.
[[nodiscard]] kxString RevisionedUid(std::string_view base, int revision);

// What the states of a session have in common; outlives the session as long as one of them lives.
struct SessionLink {
    Session* session = nullptr;  // null once the session is closed
    std::shared_ptr<const catalogue::Catalogue> catalogue;
    // Those that it took the place of. Kept: deleted states, and operations under way, point into
    // them. There is one for each change of definitions while the session is open.
    std::vector<std::shared_ptr<const catalogue::Catalogue>> former;
    std::set<kxString, std::less<>> users;  // each user name once
};

class EntityState final : public spi::ItemState,
                          public boost::enable_shared_from_this<EntityState> {
  public:
    // A revision that is there. Throws UDMException if the catalogue doesn't have its definition.
    EntityState(boost::shared_ptr<SessionLink> link, store::EntityRow&& row, bool complete);
    // One that is gone and was never seen: has its UID and nothing else.
    EntityState(boost::shared_ptr<SessionLink> link, const kxString& baseUid, int revision);
    EntityState(const EntityState&) = delete;
    EntityState& operator=(const EntityState&) = delete;
    ~EntityState() override;

    const kxString& Uid() const override { return _uid; }
    kxString Cdef() const override;
    kxString DisplayName() const override;
    int Revision() const override { return _revision; }
    kxVariant AttributeValue(const kxString& name) const override;
    kxStlVector<kxString> AttributeNames(bool omitSystem) const override;
    kxVariant CreationTime() const override;
    kxVariant ModifiedTime() const override;
    kxVariant CreatedBy() const override;
    kxVariant ModifiedBy() const override;
    bool IsRootEntity() const override;
    bool HasParent() const override;
    bool IsEditable() const override;
    std::optional<bool> IsMasterClassification() const override;

    // --- For the session ---

    [[nodiscard]] store::EntityId Id() const { return _id; }
    [[nodiscard]] std::string_view BaseUid() const {
        return std::string_view(_uid).substr(0, _baseLength);
    }
    [[nodiscard]] const boost::shared_ptr<SessionLink>& Link() const { return _link; }
    // Null only for a state that was made without a row.
    [[nodiscard]] const catalogue::ContentDefinition* Definition() const { return _definition; }
    [[nodiscard]] kxString Name() const { return kxString(NameText()); }
    [[nodiscard]] store::RevisionState State() const { return _state; }
    // Seen by the session's user in its workspace alone.
    [[nodiscard]] bool IsPrivate() const { return _state == store::RevisionState::Working; }
    // Never published: nobody else sees any revision of it.
    [[nodiscard]] bool IsNeverPublished() const { return IsPrivate() && _neverPublished; }
    [[nodiscard]] bool IsGone() const { return _freshness == Freshness::Gone; }
    [[nodiscard]] bool IsCurrent() const { return _freshness == Freshness::Current; }
    [[nodiscard]] bool IsComplete() const { return _complete; }
    // Known to be what a UID without revision stands for.
    [[nodiscard]] bool IsNewest() const { return _newest; }
    // Reads the row again if it has changed. Throws UDMNotFoundException if it is gone.
    const EntityState& Current() const;

    // What is known of its row: all but who has the entity checked out, and the attributes only
    // where they are there.
    [[nodiscard]] store::EntityRow Row() const;
    // `complete`: the row came with its attributes.
    void Take(store::EntityRow&& row, bool complete = true);
    void SetModified(const store::Stamp& stamp);
    void TakePacked(std::string_view packed, const store::Stamp& stamp);
    void SetName(std::string_view name);
    void SetDisplayName(std::string_view name, const store::Stamp& stamp);
    void SetNewest(bool newest);
    // Stands in one of the session's listings, which it clears when it is no more what it was.
    void SetListed() { _listed = true; }
    // An entity owns this one, at this state of the session's links.
    void NoteOwner(std::uint32_t epoch) {
        _ownerAsked = epoch;
        _hasOwner = true;
    }
    void SetStale();
    void SetGone();
    // The catalogue has this one in place of its definition. `changed`: it says something else, so
    // that the attributes are read again.
    void Redefine(const catalogue::ContentDefinition& definition, bool changed);

  private:
    enum class Freshness : unsigned char { Current, Stale, Gone };

    [[nodiscard]] std::string_view NameText() const {
        return std::string_view(_texts).substr(0, _nameSize);
    }
    [[nodiscard]] std::string_view DisplayText() const {
        return _sameNames ? NameText() : std::string_view(_texts).substr(_nameSize, _displaySize);
    }
    [[nodiscard]] std::string_view Packed() const {
        return std::string_view(_texts).substr(_nameSize + _displaySize);
    }
    void SetTexts(std::string_view name, std::string_view displayName, std::string_view packed);

    void LeaveListings() noexcept;
    [[nodiscard]] Session& OpenSession() const;
    void ReadAgain() const;
    [[noreturn]] void ThrowGone() const;
    // Like Current, with the attributes there.
    const EntityState& Complete() const;
    const kxString* UserText(std::string_view user);
    bool StoredValue(std::string_view name, kxVariant& value) const;
    bool ComputedValue(std::string_view name, kxVariant& value) const;
    [[nodiscard]] kxVariant FileHash() const;
    bool DetailValue(std::string_view name, kxVariant& value) const;

    // First, beside what makes it a state: nearly all that is asked of many states at once.
    kxString _uid;  // with its revision
    boost::shared_ptr<SessionLink> _link;
    const catalogue::ContentDefinition* _definition = nullptr;
    store::EntityId _id = 0;
    // Name, display name unless it is the same, packed attributes: one block of memory, because a
    // session holds very many states.
    std::string _texts;
    store::Microseconds _createdTime = 0;
    store::Microseconds _modifiedTime = 0;
    const kxString* _createdUser = nullptr;
    const kxString* _modifiedUser = nullptr;
    std::uint32_t _nameSize = 0;
    std::uint32_t _displaySize = 0;
    int _revision = 0;
    // Whether the entity has an owner, and at which state of the session's links that was asked.
    mutable std::uint32_t _ownerAsked = 0;
    unsigned short _baseLength = 0;
    mutable bool _hasOwner = false;
    bool _sameNames = true;
    store::RevisionState _state = store::RevisionState::Unversioned;
    Freshness _freshness = Freshness::Current;
    bool _newest = false;
    bool _listed = false;
    bool _complete = false;  // the attributes are there
    bool _neverPublished = false;

  public:
    // For the cache: of the entity's UID, and the next state of a chain there.
    std::uint32_t hash = 0;
    EntityState* next = nullptr;
};

}  // namespace kxudm::profile
