#include "exchange/EntityCheck.h"

#include <algorithm>

#include "vault/DocumentName.h"
#include "vault/Sha256.h"

namespace kxudm::exchange {

namespace {

bool HasRevision(const EntityRecord& entity, int number) {
    return std::any_of(entity.revisions.begin(),
                       entity.revisions.end(),
                       [&](const RevisionRecord& each) { return each.number == number; });
}

std::string ProblemOfRevisions(const EntityRecord& entity, Scope scope) {
    if (entity.revisions.empty()) {
        return "it has no revision; expected at least one";
    }
    if (!entity.versioned &&
        (entity.revisions.size() != 1 || entity.revisions.front().number != 0)) {
        return "it has no revisions by its own word, and other ones than 0; expected revision 0";
    }
    if (entity.versioned && entity.revisions.front().number == 0) {
        return "it has a revision 0, which is never a published one; expected 1 or more";
    }
    if (scope != Scope::AllWithFiles && entity.revisions.size() != 1) {
        return "it has several revisions in a document of newest ones; expected one";
    }
    for (std::size_t i = 1; i < entity.revisions.size(); ++i) {
        if (entity.revisions[i - 1].number >= entity.revisions[i].number) {
            return "its revision " + std::to_string(entity.revisions[i].number) +
                   " is not behind the one before; expected them ascending";
        }
    }
    return {};
}

std::string ProblemOfName(const std::string& name) {
    try {
        vault::CheckDocumentName(name);
    } catch (const UDMException& refusal) {
        return refusal.what();
    }
    return {};
}

std::string ProblemOfFile(const EntityRecord& entity, const FileRecord& file) {
    const std::string subject = "its file '" + vault::Printable(file.name) + "' ";
    if (std::string problem = ProblemOfName(file.name); !problem.empty()) {
        return problem;
    }
    if (!file.IsExternal() && !vault::IsHash(file.hash)) {
        return subject + "has no SHA-256; expected 64 hexadecimal digits in lower case";
    }
    if (file.IsExternal() &&
        (file.externalPath.front() != '/' || file.externalPath.find('\0') != std::string::npos)) {
        return subject + "is external and has no absolute path; expected one like \"/a/b\"";
    }
    if (!HasRevision(entity, file.from) || (file.to != kOpen && !HasRevision(entity, file.to)) ||
        file.from >= file.to) {
        return subject +
               "holds from or to a revision that is not there; expected the first one "
               "that has it, and the first one behind that has it no more";
    }
    return {};
}

std::string ProblemOfFiles(const EntityRecord& entity, Scope scope) {
    if (scope == Scope::Newest && !entity.files.empty()) {
        return "it has files in a document without files; expected none";
    }
    for (std::size_t i = 0; i < entity.files.size(); ++i) {
        const FileRecord& file = entity.files[i];
        if (std::string problem = ProblemOfFile(entity, file); !problem.empty()) {
            return problem;
        }
        if (i > 0) {
            const FileRecord& before = entity.files[i - 1];
            if (before.name > file.name || (before.name == file.name && before.to > file.from)) {
                return "its file '" + vault::Printable(file.name) +
                       "' is not behind the one before; expected byte order, and each name once "
                       "in a revision";
            }
        }
    }
    return {};
}

}  // namespace

std::string ProblemOf(const EntityRecord& entity, Scope scope) {
    std::string problem = ProblemOfRevisions(entity, scope);
    if (problem.empty()) {
        problem = ProblemOfFiles(entity, scope);
    }
    if (problem.empty() && entity.branchUid == entity.uid) {
        problem = "it is a branch of itself; expected another origin";
    }
    return problem.empty() ? problem : "entity " + entity.uid + ": " + problem;
}

std::string ProblemOf(const LinkRecord& link) {
    using store::LinkKind;
    const bool isPlace = link.kind == LinkKind::Folder || link.kind == LinkKind::Category;
    if (link.from >= link.to) {
        return "a link ends before it begins; expected \"to\" to be greater than \"from\"";
    }
    if (isPlace != link.name.empty()) {
        return isPlace ? "a place has a name; expected none"
                       : "a link has no name; expected that of its group, or its type";
    }
    if (link.composition && link.kind != LinkKind::Owner) {
        return "a link that is no owner's says composition; expected that of owners only";
    }
    if (link.exact != store::NO_REVISION && link.kind != LinkKind::Relation) {
        return "a link that is no relation stays on a revision; expected that of relations only";
    }
    return {};
}

}  // namespace kxudm::exchange
