#include "Exchange.h"

#include <kxudm/IUDMProfile.h>

#include <iostream>
#include <map>
#include <stdexcept>
#include <string>

#include "Report.h"

namespace demo {

namespace fs = std::filesystem;

namespace {

// What one revision holds, by name. A file is told by where the vault keeps its content, which is
// named after the content's hash.
std::map<std::string, std::string> Facts(kxudm::IUDMProfile& session,
                                         const kxudm::UDMItemHandle& revision) {
    std::map<std::string, std::string> facts{{"definition", revision.GetCdef()}};
    for (const kxString& name : revision.GetFilteredAttributeNameList(false)) {
        facts["attribute " + name] = revision.GetAttributeValue(name).GetString();
    }
    kxStlVector<kxudm::UDMGenericDocument> documents;
    session.GetDocuments(revision, documents, false);
    for (const kxudm::UDMGenericDocument& document : documents) {
        facts["file " + document.GetName()] =
            fs::path(std::string(document.GetPath())).filename().string();
    }
    return facts;
}

kxStlVector<kxString> RevisionsOf(kxudm::IUDMProfile& session, const kxString& uid) {
    kxStlVector<kxString> revisions;
    const auto history = session.GetHistory(session.GetEntity(uid));
    for (const auto& version : history->GetVersionList()) {
        revisions.push_back(uid + ":" + std::to_string(version->GetVersion()));
    }
    return revisions;
}

bool IsEqual(kxudm::IUDMProfile& original, kxudm::IUDMProfile& copy, const Entry& entry) {
    const kxStlVector<kxString> revisions = RevisionsOf(original, entry.uid);
    if (RevisionsOf(copy, entry.uid) != revisions) {
        std::cerr << "differs: " << Printable(entry.name) << " has other revisions in the copy\n";
        return false;
    }
    for (const kxString& uid : revisions) {
        const auto mine = Facts(original, original.GetEntity(uid));
        const auto its = Facts(copy, copy.GetEntity(uid));
        if (mine != its) {
            std::cerr << "differs: " << Printable(entry.name) << ", " << uid
                      << ", is not the same in the copy\n";
            return false;
        }
    }
    return true;
}

}  // namespace

std::size_t CountExchanged(Library& library,
                           Library& copy,
                           const std::vector<Entry>& entries,
                           const fs::path& place) {
    kxStlVector<kxString> uids;
    for (const Entry& entry : entries) {
        uids.push_back(entry.uid);
    }
    const std::string archive = (place / "exchange.zip").string();
    fs::remove(archive);
    library.Session()->Export(archive, uids, 2);
    copy.Session()->Import(archive);
    fs::remove(archive);
    std::size_t equal = 0;
    for (const Entry& entry : entries) {
        try {
            equal += !entry.isFolder && IsEqual(*library.Session(), *copy.Session(), entry) ? 1 : 0;
        } catch (const std::exception& failure) {
            std::cerr << "not in the copy: " << Printable(entry.name) << ": " << failure.what()
                      << '\n';
        }
    }
    return equal;
}

}  // namespace demo
