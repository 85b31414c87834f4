#include "profile/Creation.h"

#include <utility>

#include "core/UidGenerator.h"
#include "profile/Folders.h"
#include "profile/Words.h"

namespace kxudm::profile {

namespace {

using catalogue::ContentDefinition;

store::AttributeList Defaults(const ContentDefinition& definition) {
    store::AttributeList defaults;
    for (const catalogue::AttributeDefinition* attribute : definition.Attributes()) {
        if (!attribute->defaultValue.IsEmpty() && !IsComputed(attribute->name)) {
            defaults.emplace_back(attribute->name, attribute->defaultValue);
        }
    }
    return defaults;
}

store::AttributeList WithValues(store::AttributeList defaults, const store::AttributeList& values) {
    for (const auto& value : values) {
        std::erase_if(defaults, [&](const auto& each) { return each.first == value.first; });
        if (!value.second.IsEmpty()) {
            defaults.push_back(value);
        }
    }
    return defaults;
}

}  // namespace

const ContentDefinition& CreatableDefinition(const Session& session, const kxString& definition) {
    const ContentDefinition& found = session.Catalogue()->Get(definition);
    if (found.IsAbstract()) {
        throw UDMException("The content definition \"" + definition +
                           "\" is abstract; create an entity of one derived from it");
    }
    return found;
}

kxString CheckedName(const ContentDefinition& definition, const kxString& name) {
    if (definition.Type() == FOLDER_TYPE) {
        RequireFolderName(name);
    }
    if (definition.FindAttribute(NAME) != nullptr) {
        return definition.CheckedValue(NAME, name).GetString();
    }
    if (catalogue::FirstInvalidUtf8(name) != std::string_view::npos) {
        throw UDMException("The name \"" + catalogue::Printable(name) +
                           "\" is not UTF-8; encode it first");
    }
    return name;
}

Session::State CreateState(Session& session,
                           Operation& operation,
                           const ContentDefinition& definition,
                           const kxString& name,
                           const store::AttributeList& values) {
    const store::AttributeList attributes = WithValues(Defaults(definition), values);
    store::EntityRow row;
    row.uid = core::ProcessUidGenerator().Next();
    row.definition = definition.Name();
    row.name = name;
    row.displayName = name;
    row.state = definition.IsVersioned() ? store::RevisionState::Working
                                         : store::RevisionState::Unversioned;
    if (definition.IsVersioned()) {
        row.working = 0;
        row.lockUser = session.Options().user;
        row.lockWorkspace = session.Options().workspace;
        row.lockTime = operation.Stamp().time;
    } else {
        row.published = 0;
    }
    row.createdTime = row.modifiedTime = operation.Stamp().time;
    row.createdUser = row.modifiedUser = session.Options().user;
    row.packed = store::PackAttributes(attributes);
    row.id = operation.Store().Insert({.uid = row.uid,
                                       .definition = row.definition,
                                       .name = row.name,
                                       .displayName = row.displayName,
                                       .state = row.state},
                                      attributes,
                                      operation.Stamp());
    Session::State state = session.StateOf(std::move(row));
    operation.NoteMade(*state);
    return state;
}

}  // namespace kxudm::profile
