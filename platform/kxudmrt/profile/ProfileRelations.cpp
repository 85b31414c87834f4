// Relations: links of a free type, borne by the first end's revision.
#include "profile/Profile.h"

namespace kxudm::profile {

namespace {

using store::LinkKind;

// GetParents must be able to ask for the type, and takes the words of categories for themselves.
void RequireRelationType(const kxString& type) {
    const char* why = nullptr;
    if (type.empty()) {
        why = "is empty";
    } else if (KindOfCategory(type)) {
        why = "is the word for a category of groups";
    } else if (catalogue::FirstInvalidUtf8(type) != std::string_view::npos ||
               type.find('\0') != kxString::npos) {
        why = "is not UTF-8 text without zero bytes";
    }
    if (why != nullptr) {
        throw UDMException("The relation type \"" + catalogue::Printable(type) + "\" " + why +
                           "; choose another name");
    }
}

kxString Ends(const EntityState& first, const EntityState& second) {
    return first.Cdef() + " " + first.Uid() + " to " + second.Cdef() + " " + second.Uid();
}

}  // namespace

UDMRelationHandle Profile::CreateRelation(const UDMItemHandle& first,
                                          const UDMItemHandle& second,
                                          const kxString& type,
                                          bool exact) {
    RequireRelationType(type);
    Operation operation(*_session, "CreateRelation");
    const Session::State from = _session->Resolve(first);
    const Session::State to = _session->Resolve(second);
    _session->RequireEditable(*from);
    const store::Link link{.parent = from->Id(),
                           .child = to->Id(),
                           .kind = LinkKind::Relation,
                           .name = type,
                           .revision = from->Revision(),
                           .exactChildRevision = exact ? to->Revision() : store::NO_REVISION};
    if (operation.Store().IsThere(link)) {
        throw UDMException("The relation \"" + type + "\" from " + Ends(*from, *to) +
                           " is there already; it can be there once");
    }
    operation.Store().AddLink(link, operation.Stamp());
    const bool hidden = exact ? to->IsPrivate() : to->IsNeverPublished();
    operation.Record(Change::Of(SIGNAL_REFERENCE_ADDED, from).Private(from->IsPrivate() || hidden));
    operation.Touch(from);
    operation.Commit();
    UDMRelationHandle relation{UDMItemHandle(from), UDMItemHandle(to), type};
    operation.Tell();
    return relation;
}

bool Profile::RemoveRelation(const UDMItemHandle& first, const UDMItemHandle& second) {
    Operation operation(*_session, "RemoveRelation");
    const Session::State from = _session->Resolve(first);
    const Session::State to = _session->Resolve(second);
    if (!operation.Store().HasLink(
            from->Id(), to->Id(), LinkKind::Relation, {}, from->Revision())) {
        operation.Leave();
        return false;
    }
    UnlinkChild(*_session, operation, from, to, LinkKind::Relation);
    operation.Commit();
    operation.Tell();
    return true;
}

}  // namespace kxudm::profile
