// References: links through the groups of category "reference", borne by the revision that refers.
#include <algorithm>
#include <utility>

#include "profile/Profile.h"

namespace kxudm::profile {

namespace {

using catalogue::GroupDefinition;
using store::LinkKind;

void RequireReferenceGroup(const catalogue::ContentDefinition& definition, const kxString& type) {
    std::string known;
    for (const GroupDefinition* group : definition.Groups()) {
        if (group->category != catalogue::kReference) {
            continue;
        }
        if (group->name == type) {
            return;
        }
        known += (known.empty() ? "\"" : ", \"") + group->name + "\"";
    }
    throw UDMNotFoundException("The content definition \"" + definition.Name() +
                               "\" has no group of references \"" + catalogue::Printable(type) +
                               "\"; it has " + (known.empty() ? "none" : known));
}

const GroupDefinition& ReferenceGroupFor(const EntityState& referring,
                                         const EntityState& target,
                                         const kxString& type) {
    if (!type.empty()) {
        RequireReferenceGroup(*referring.Definition(), type);
        return GroupFor(referring, *target.Definition(), type);
    }
    const GroupDefinition* first =
        referring.Definition()->FirstGroupFor(*target.Definition(), catalogue::kReference);
    if (first == nullptr) {
        throw UDMException(referring.Cdef() + " " + referring.Uid() +
                           " has no group of references that takes a \"" + target.Cdef() +
                           "\"; refer to it from another content");
    }
    return *first;
}

// Which references a list of types asks for. An empty list, or one with an empty type, means all.
class TypeFilter {
  public:
    explicit TypeFilter(const kxStlVector<kxString>& types)
        : _types(types),
          _all(types.empty() || std::find(types.begin(), types.end(), "") != types.end()) {}

    // What the library can be asked for at once; empty: everything, to be sifted.
    [[nodiscard]] kxString Only() const { return _types.size() == 1 ? _types.front() : kxString(); }
    [[nodiscard]] bool Takes(const std::string& type) const {
        return _all || std::find(_types.begin(), _types.end(), type) != _types.end();
    }

  private:
    const kxStlVector<kxString>& _types;
    bool _all;
};

}  // namespace

void Profile::AddReference(const UDMItemHandle& handle,
                           const UDMItemHandle& target,
                           const kxString& type) {
    Operation operation(*_session, "AddReference");
    const Session::State referring = _session->Resolve(handle);
    const Session::State referred = _session->Resolve(target);
    const GroupDefinition& group = ReferenceGroupFor(*referring, *referred, type);
    LinkChild(*_session, operation, referring, referred, group);
    operation.Commit();
    operation.Tell();
}

void Profile::GetReferences(kxStlVector<UDMItemHandle>& targets,
                            const UDMItemHandle& handle,
                            const kxString& type) {
    _session->Poll("GetReferences");
    const Session::State referring = _session->Resolve(handle);
    if (!type.empty()) {
        RequireReferenceGroup(*referring->Definition(), type);
    }
    ListSelected(*_session, *referring, {LinkKind::Reference, type}, targets);
}

void Profile::RemoveReference(const UDMItemHandle& handle, const UDMItemHandle& target) {
    Operation operation(*_session, "RemoveReference");
    const Session::State referring = _session->Resolve(handle);
    const Session::State referred = _session->Resolve(target);
    if (!operation.Store().HasLink(
            referring->Id(), referred->Id(), LinkKind::Reference, {}, referring->Revision())) {
        throw UDMNotFoundException(referring->Cdef() + " " + referring->Uid() +
                                   " does not refer to " + referred->Uid() +
                                   "; name one of its references");
    }
    UnlinkChild(*_session, operation, referring, referred, LinkKind::Reference);
    operation.Commit();
    operation.Tell();
}

void Profile::GetReferredBy(kxStlVector<UDMItemHandle>& referring,
                            kxStlVector<kxString>& types,
                            const UDMItemHandle& handle) {
    _session->Poll("GetReferredBy");
    const Session::State target = _session->Resolve(handle);
    const TypeFilter filter(types);
    std::vector<store::LinkedRow> rows;
    _session->Store().Parents(target->Id(),
                              target->Revision(),
                              LinkKind::Reference,
                              filter.Only(),
                              _session->Viewer(),
                              rows);
    std::erase_if(rows, [&](const store::LinkedRow& row) { return !filter.Takes(row.name); });
    kxStlVector<kxString> found;
    for (store::LinkedRow& row : rows) {
        found.emplace_back(std::move(row.name));
        referring.emplace_back(_session->StateOf(std::move(row.entity), false));
    }
    types = std::move(found);
}

}  // namespace kxudm::profile
