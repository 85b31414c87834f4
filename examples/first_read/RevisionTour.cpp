#include "RevisionTour.h"

#include <kxudm/IUDMProfile.h>

#include <iostream>

#include "Report.h"

namespace demo {

namespace {

using Items = kxStlVector<kxct::Item*>;

bool PublishDescription(Library& library, const Entry& content) {
    kxct::Controller& controller = library.Controller();
    kxct::Item* item = controller.GetItem(content.uid, true);
    if (item == nullptr) {
        std::cerr << Printable(content.name) << " can't be read\n";
        return false;
    }
    Items items{item};
    // A run that was cut off may have left it checked out.
    if (!item->IsEditable() && !controller.CheckOut(items, "to describe it")) {
        std::cerr << Printable(content.name)
                  << " can't be checked out; somebody else may have it\n";
        return false;
    }
    kxString description("Read by ");
    description += item->GetAttributeValue("smd_user").GetString();
    return item->SetAttributeValue("description", description) &&
           controller.Save(items, "described") && controller.Publish(items, "described", false);
}

void Branch(kxudm::IUDMProfile& session, const Entry& content) {
    const kxudm::UDMItemHandle newest = session.GetEntity(content.uid);
    if (session.GetHistory(newest)->GetBranchList().empty()) {
        session.Checkout(session.GetEntity(content.uid + ":1"), "another way");
    }
}

void PrintHistory(kxudm::IUDMProfile& session, const Entry& content) {
    std::cout << "history of " << Printable(content.name) << ":\n";
    const auto history = session.GetHistory(session.GetEntity(content.uid));
    for (const auto& version : history->GetVersionList()) {
        const kxudm::UDMItemHandle revision =
            session.GetEntity(content.uid + ":" + std::to_string(version->GetVersion()));
        std::cout << "  revision " << version->GetVersion() << "  "
                  << revision.GetAttributeValue("smd_comment").GetString();
        for (const auto& branch : version->GetBranchList()) {
            std::cout << "  (branch " << branch->GetBaseUID() << ')';
        }
        std::cout << '\n';
    }
}

}  // namespace

bool LiveThrough(Library& library, const Entry& content) {
    try {
        const bool published = PublishDescription(library, content);
        if (published) {
            Branch(*library.Session(), content);
        }
        PrintHistory(*library.Session(), content);
        return published;
    } catch (const std::exception& failure) {
        std::cerr << Printable(content.name) << ": " << failure.what() << '\n';
        return false;
    }
}

std::size_t CountRevisions(Library& library, const std::vector<Entry>& entries) {
    kxudm::IUDMProfile& session = *library.Session();
    std::size_t count = 0;
    for (const Entry& entry : entries) {
        if (entry.isFolder) {
            continue;
        }
        const auto history = session.GetHistory(session.GetEntity(entry.uid));
        count += history->GetVersionList().size();
        for (const auto& branch : history->GetBranchList()) {
            count += session.GetHistory(session.GetEntity(branch->GetBaseUID()))
                         ->GetVersionList()
                         .size();
        }
    }
    return count;
}

}  // namespace demo
