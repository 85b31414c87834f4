#include "profile/RevisionsCheck.h"

#include "profile/Groups.h"

namespace kxudm::profile {

namespace {

using catalogue::GroupDefinition;

bool HasContent(const kxVariant& value) {
    switch (value.GetKind()) {
        case kxVariant::EMPTY:
            return false;
        case kxVariant::STRING:
            return !value.PeekString()->empty();
        case kxVariant::STRINGLIST:
            return !value.PeekStringList()->empty();
        default:
            return true;
    }
}

void RequireMandatoryAttributes(const EntityState& working) {
    std::string missing;
    for (const catalogue::AttributeDefinition* attribute : working.Definition()->Attributes()) {
        if (attribute->mandatory && !attribute->system &&
            !HasContent(working.AttributeValue(attribute->name))) {
            missing += (missing.empty() ? "\"" : ", \"") + attribute->name + "\"";
        }
    }
    if (!missing.empty()) {
        throw UDMException(working.Cdef() + " " + working.Uid() +
                           " can't be published: it must have a value of " + missing +
                           "; set it first");
    }
}

void RequireMinimum(Session& session, const EntityState& working, const GroupDefinition& group) {
    const store::LinkKind kind = *KindOfCategory(group.category);
    if (group.minimum == 0 || IsContainerKind(kind)) {
        return;
    }
    const std::int64_t count =
        session.Store().CountChildrenUpTo(group.minimum, working.Id(), kind, group.name);
    if (count < static_cast<std::int64_t>(group.minimum)) {
        throw UDMException(working.Cdef() + " " + working.Uid() +
                           " can't be published: its group \"" + group.name + "\" has " +
                           std::to_string(count) + " and needs at least " +
                           std::to_string(group.minimum) + "; add what is missing first");
    }
}

}  // namespace

void RequirePublishable(Session& session, const EntityState& working) {
    RequireMandatoryAttributes(working);
    for (const GroupDefinition* group : working.Definition()->Groups()) {
        RequireMinimum(session, working, *group);
    }
}

void RequireComment(const kxString& comment) {
    if (catalogue::FirstInvalidUtf8(comment) != std::string_view::npos ||
        comment.find('\0') != kxString::npos) {
        throw UDMException("The comment \"" + catalogue::Printable(comment) +
                           "\" is not UTF-8 text without zero bytes; encode it first");
    }
}

}  // namespace kxudm::profile
