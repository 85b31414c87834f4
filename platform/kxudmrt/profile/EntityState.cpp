#include "profile/EntityState.h"

#include <kxudm/UDMException.h>

#include <algorithm>
#include <utility>

#include "core/Clock.h"
#include "profile/Session.h"
#include "profile/Words.h"

namespace kxudm::profile {

using store::RevisionState;

kxString RevisionedUid(std::string_view base, int revision) {
    kxString uid;
    uid.reserve(base.size() + 3);
    uid.append(base).append(1, ':').append(std::to_string(revision));
    return uid;
}

EntityState::EntityState(boost::shared_ptr<SessionLink> link, store::EntityRow&& row, bool complete)
    : _uid(RevisionedUid(row.uid, row.revision)),
      _link(std::move(link)),
      _definition(_link->catalogue->Find(row.definition)),
      _id(row.id),
      _revision(row.revision),
      _baseLength(static_cast<unsigned short>(row.uid.size())) {
    if (_definition == nullptr) {
        throw UDMException("The entity " + _uid + " is of the content definition \"" +
                           row.definition +
                           "\", which the library's catalogue doesn't have; it must be added");
    }
    Take(std::move(row), complete);
}

EntityState::EntityState(boost::shared_ptr<SessionLink> link, const kxString& baseUid, int revision)
    : _uid(RevisionedUid(baseUid, revision)),
      _link(std::move(link)),
      _revision(revision),
      _baseLength(static_cast<unsigned short>(baseUid.size())),
      _freshness(Freshness::Gone) {}

EntityState::~EntityState() {
    LeaveListings();
    if (_link->session != nullptr) {
        _link->session->States().Remove(*this);
    }
}

const kxString* EntityState::UserText(std::string_view user) {
    const auto found = _link->users.find(user);
    return found != _link->users.end() ? &*found : &*_link->users.emplace(user).first;
}

void EntityState::Take(store::EntityRow&& row, bool complete) {
    // Attributes that are known stay: a change of them would have been told.
    const bool keep = !complete && _complete && _freshness == Freshness::Current;
    const std::string kept = keep ? std::string(Packed()) : std::string();
    SetTexts(row.name, row.displayName, keep ? kept : row.packed);
    _complete = complete || keep;
    _createdTime = row.createdTime;
    _modifiedTime = row.modifiedTime;
    _createdUser = UserText(row.createdUser);
    _modifiedUser = row.modifiedUser == row.createdUser ? _createdUser : UserText(row.modifiedUser);
    _state = row.state;
    _neverPublished = row.published == store::NO_REVISION;
    _freshness = Freshness::Current;
}

store::EntityRow EntityState::Row() const {
    Current();
    return {.id = _id,
            .uid = std::string(BaseUid()),
            .definition = _definition->Name(),
            .name = std::string(NameText()),
            .revision = _revision,
            .state = _state,
            .displayName = std::string(DisplayText()),
            .createdTime = _createdTime,
            .createdUser = *_createdUser,
            .modifiedTime = _modifiedTime,
            .modifiedUser = *_modifiedUser,
            .packed = std::string(Packed())};
}

void EntityState::SetModified(const store::Stamp& stamp) {
    _modifiedTime = stamp.time;
    _modifiedUser = UserText(stamp.by.user);
}

void EntityState::SetTexts(std::string_view name,
                           std::string_view displayName,
                           std::string_view packed) {
    _sameNames = name == displayName;
    std::string texts;
    texts.reserve(name.size() + (_sameNames ? 0 : displayName.size()) + packed.size());
    texts.append(name);
    if (!_sameNames) {
        texts.append(displayName);
    }
    texts.append(packed);
    _nameSize = static_cast<std::uint32_t>(name.size());
    _displaySize = _sameNames ? 0 : static_cast<std::uint32_t>(displayName.size());
    _texts = std::move(texts);
}

void EntityState::SetName(std::string_view name) {
    SetTexts(name, DisplayText(), Packed());
}

void EntityState::TakePacked(std::string_view packed, const store::Stamp& stamp) {
    SetTexts(NameText(), DisplayText(), packed);
    _complete = true;
    SetModified(stamp);
}

void EntityState::SetDisplayName(std::string_view name, const store::Stamp& stamp) {
    SetTexts(NameText(), name, Packed());
    SetModified(stamp);
}

void EntityState::SetNewest(bool newest) {
    if (_newest && !newest) {
        LeaveListings();
    }
    _newest = newest;
}

void EntityState::LeaveListings() noexcept {
    if (_listed && _link->session != nullptr) {
        _link->session->Listed().Clear();
    }
    _listed = false;
}

void EntityState::SetStale() {
    _freshness = Freshness::Stale;
}

void EntityState::SetGone() {
    LeaveListings();
    _freshness = Freshness::Gone;
    _newest = false;
}

void EntityState::Redefine(const catalogue::ContentDefinition& definition, bool changed) {
    _definition = &definition;
    if (changed && _freshness == Freshness::Current) {
        _freshness = Freshness::Stale;
    }
}

Session& EntityState::OpenSession() const {
    if (_link->session == nullptr) {
        throw UDMException("The session of " + _uid +
                           " is closed; the entity must be fetched from an open one");
    }
    return *_link->session;
}

// Handles see states as constant; a state itself never is.
void EntityState::ReadAgain() const {
    OpenSession().Reload(const_cast<EntityState&>(*this));
}

const EntityState& EntityState::Current() const {
    if (_freshness == Freshness::Stale) {
        ReadAgain();
    }
    if (_freshness == Freshness::Gone) {
        ThrowGone();
    }
    return *this;
}

// Whether the entity is gone or this revision of it, as 0 is after the first publish.
void EntityState::ThrowGone() const {
    store::EntityRow row;
    const bool isOpen = _link->session != nullptr && _link->session->IsOpen();
    if (isOpen && _link->session->Store().FindByUid(BaseUid(), _link->session->Viewer(), row) &&
        row.revision != _revision) {
        throw UDMNotFoundException("The revision " + _uid + " is there no more: the entity " +
                                   "stands at revision " + std::to_string(row.revision) +
                                   "; use that one");
    }
    throw UDMNotFoundException("The entity " + _uid +
                               " is deleted or not visible any more; use one that is there");
}

const EntityState& EntityState::Complete() const {
    Current();
    if (!_complete) {
        ReadAgain();
    }
    return Current();
}

kxString EntityState::Cdef() const {
    return _definition != nullptr ? _definition->Name() : kxString();
}

kxString EntityState::DisplayName() const {
    if (_freshness == Freshness::Stale) {
        ReadAgain();
    }
    return kxString(DisplayText());
}

kxVariant EntityState::CreationTime() const {
    return WholeSeconds(Current()._createdTime);
}
kxVariant EntityState::ModifiedTime() const {
    return WholeSeconds(Current()._modifiedTime);
}
kxVariant EntityState::CreatedBy() const {
    return *Current()._createdUser;
}
kxVariant EntityState::ModifiedBy() const {
    return *Current()._modifiedUser;
}

bool EntityState::HasParent() const {
    if (_freshness == Freshness::Gone) {
        return false;
    }
    Session& session = OpenSession();
    if (const std::uint32_t now = session.LinkEpoch(); _ownerAsked != now) {
        _hasOwner = session.HasOwner(*this);
        _ownerAsked = now;
    }
    return _hasOwner;
}

bool EntityState::IsRootEntity() const {
    return !HasParent();
}

bool EntityState::IsEditable() const {
    if (_freshness == Freshness::Stale) {
        ReadAgain();
    }
    return _freshness == Freshness::Current && _state != RevisionState::Published;
}

std::optional<bool> EntityState::IsMasterClassification() const {
    if (_definition == nullptr || _definition->Type() != CLASSIFICATION_TYPE) {
        return std::nullopt;
    }
    kxVariant value;
    return Complete().StoredValue(CATEGORY_KIND, value) && value.GetString() == MASTER_CATEGORY;
}

kxVariant EntityState::AttributeValue(const kxString& name) const {
    Complete();
    const catalogue::AttributeDefinition* attribute = _definition->FindAttribute(name);
    if (attribute == nullptr) {
        throw UDMNotFoundException("The content definition \"" + _definition->Name() + "\" of " +
                                   _uid + " has no attribute \"" + catalogue::Printable(name) +
                                   "\"; use one of its own");
    }
    kxVariant value;
    if (ComputedValue(name, value) || StoredValue(name, value)) {
        return value;
    }
    return attribute->defaultValue;
}

bool EntityState::StoredValue(std::string_view name, kxVariant& value) const {
    try {
        return store::FindPackedAttribute(Packed(), name, value);
    } catch (const store::DamagedAttributes& damage) {
        throw store::DamagedAttributes(_uid, damage.Cause());
    }
}

kxStlVector<kxString> EntityState::AttributeNames(bool omitSystem) const {
    Complete();
    kxStlVector<kxString> names;
    for (const catalogue::AttributeDefinition* attribute : _definition->Attributes()) {
        if (!(omitSystem && attribute->system) && !AttributeValue(attribute->name).IsEmpty()) {
            names.push_back(attribute->name);
        }
    }
    return names;
}

// Attributes that are not stored with the others, because the row or the links say them.
bool EntityState::ComputedValue(std::string_view name, kxVariant& value) const {
    if (name == NAME) {
        value = kxVariant(NameText());
    } else if (name == DISPLAY_NAME) {
        value = kxVariant(DisplayText());
    } else if (!name.starts_with(SYSTEM_PREFIX)) {
        return false;
    } else if (name == "smd_contentrevision") {
        value = _revision;
    } else if (name == "smd_createduser") {
        value = *_createdUser;
    } else if (name == "smd_creatime") {
        value = WholeSeconds(_createdTime);
    } else if (name == "smd_user") {
        value = *_modifiedUser;
    } else if (name == "smd_ctime") {
        value = WholeSeconds(_modifiedTime);
    } else if (name == "smd_id") {
        value = kxString(BaseUid());
    } else if (name == "smd_ctype") {
        value = _definition->Name();
    } else if (name == "smd_ctypedn") {
        value = _definition->DisplayName();
    } else if (name == "smd_folder") {
        const kxString path = OpenSession().FolderPathOf(*this);
        value = path.empty() ? kxVariant() : kxVariant(path);
    } else if (name == "smd_filehash") {
        value = FileHash();
    } else {
        return DetailValue(name, value);
    }
    return true;
}

// The one file that is kept in the library; of several nobody could say which is meant.
kxVariant EntityState::FileHash() const {
    std::vector<store::FileRow> files;
    OpenSession().Store().Files(Id(), _revision, files);
    const bool has = files.size() == 1 && !files.front().IsExternal();
    return has ? kxVariant(kxString(files.front().hash)) : kxVariant();
}

bool EntityState::DetailValue(std::string_view name, kxVariant& value) const {
    const bool comment = name == "smd_comment";
    const bool time = name == "smd_branchedtime";
    const bool revision = name == "smd_branchfromver";
    if (!comment && !time && !revision && name != "smd_branchfrom") {
        return false;
    }
    const store::EntityDetails details = OpenSession().DetailsOf(*this);
    value.Clear();
    if (comment) {
        value = details.comment.empty() ? kxVariant() : kxVariant(details.comment);
    } else if (!details.branchUid.empty()) {
        value = time       ? kxVariant(WholeSeconds(_createdTime))
                : revision ? kxVariant(details.branchRevision)
                           : kxVariant(details.branchUid);
    }
    return true;
}

}  // namespace kxudm::profile
