#include "profile/Folders.h"

#include <utility>

#include "profile/Words.h"

namespace kxudm::profile {

namespace {

[[noreturn]] void ThrowBadPath(const kxString& path, const char* reason) {
    throw UDMException("The folder path \"" + catalogue::Printable(path) + "\" " + reason +
                       "; write it like \"/A/B\"");
}

const char* WhyNoName(std::string_view name) {
    if (name.empty()) {
        return "has an empty name";
    }
    if (name == "." || name == "..") {
        return "has the name \".\" or \"..\"";
    }
    if (catalogue::FirstInvalidUtf8(name) != std::string_view::npos ||
        name.find('\0') != std::string_view::npos) {
        return "is not UTF-8 text without zero bytes";
    }
    return nullptr;
}

}  // namespace

void RequireFolderName(const kxString& name) {
    const char* why = name.find('/') != kxString::npos ? "holds a \"/\"" : WhyNoName(name);
    if (why != nullptr) {
        throw UDMException("The folder name \"" + catalogue::Printable(name) + "\" " + why +
                           "; choose one that can stand in a path");
    }
}

std::vector<kxString> FolderPathParts(const kxString& path) {
    if (path.size() < 2 || path.front() != '/') {
        ThrowBadPath(path, path.empty() ? "is empty" : "doesn't begin with \"/\" and a name");
    }
    std::vector<kxString> parts;
    for (std::size_t begin = 1; begin <= path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        kxString part(path.substr(begin, end - begin));
        if (const char* why = WhyNoName(part)) {
            ThrowBadPath(path, why);
        }
        parts.push_back(std::move(part));
        begin = end + 1;
    }
    return parts;
}

const catalogue::ContentDefinition& FolderDefinition(const Session& session) {
    for (const auto& definition : session.Catalogue()->Definitions()) {
        if (definition->Type() == FOLDER_TYPE && !definition->IsAbstract()) {
            return *definition;
        }
    }
    throw UDMNotFoundException("The library \"" + session.Options().libraryName +
                               "\" has no content definition of the type \"" +
                               std::string(FOLDER_TYPE) + "\"; add one to its catalogue");
}

store::EntityId FolderOf(Session& session, const EntityState& state) {
    std::vector<store::LinkedRow> above;
    session.Store().Parents(
        state.Id(), state.Revision(), store::LinkKind::Folder, {}, session.Viewer(), above);
    return above.empty() ? 0 : above.front().entity.id;
}

bool FindFolder(Session& session,
                store::EntityId parent,
                const kxString& name,
                bool ignoreCase,
                store::EntityRow& row) {
    bool found = false;
    std::vector<store::EntityRow> rows;
    for (const auto& definition : session.Catalogue()->Definitions()) {
        if (definition->Type() != FOLDER_TYPE || definition->IsAbstract()) {
            continue;
        }
        rows.clear();
        session.Store().FindInFolder(
            parent, definition->Name(), name, session.Viewer(), ignoreCase, rows);
        for (store::EntityRow& each : rows) {
            const bool exact = each.name == name;
            if (exact || !found) {
                row = std::move(each);
                found = true;
            }
            if (exact) {
                return true;
            }
        }
    }
    return found;
}

void RequireFreeFolderName(Session& session, store::EntityId parent, const kxString& name) {
    store::EntityRow row;
    if (FindFolder(session, parent, name, false, row)) {
        throw UDMException("A folder \"" + catalogue::Printable(name) + "\" is there already (" +
                           row.uid + "); choose another name or place");
    }
}

void RequireFreeNamesAtTop(Session& session, const EntityState& leaving) {
    std::vector<store::LinkedRow> inside;
    session.Store().Children(
        leaving.Id(), leaving.Revision(), store::LinkKind::Folder, {}, session.Viewer(), inside);
    store::EntityRow other;
    for (const store::LinkedRow& each : inside) {
        const auto* definition = session.Catalogue()->Find(each.entity.definition);
        if (definition == nullptr || definition->Type() != FOLDER_TYPE ||
            !FindFolder(session, 0, each.entity.name, false, other) || other.id == leaving.Id()) {
            continue;
        }
        throw UDMException("The folder \"" + catalogue::Printable(each.entity.name) + "\" in " +
                           leaving.Uid() +
                           " would come beside the folder of that name at the top (" + other.uid +
                           "); move it or delete it first");
    }
}

}  // namespace kxudm::profile
