#include "Connections.h"

#include <kxudm/IUDMProfile.h>

#include <iostream>

#include "Report.h"

namespace demo {

namespace {

using Items = kxStlVector<kxct::Item*>;

constexpr std::size_t kSome = 5;
constexpr char kClassification[] = "Reviewed";
constexpr char kRelation[] = "compared with";

// The one that is there, or a new one; null where it can't be made.
kxct::Item* Classification(Library& library) {
    kxStlVector<kxudm::UDMItemHandle> found;
    library.Session()->GetClassifications(found, kxString("name == \"") + kClassification + "\"");
    if (!found.empty()) {
        return library.Controller().GetItem(found.front().GetUID(), false);
    }
    return library.Controller().CreateContent("Categories", kClassification);
}

bool IsClassified(kxudm::IUDMProfile& session, const Entry& content) {
    kxStlVector<kxudm::UDMItemHandle> classifications;
    session.GetParents(classifications, session.GetEntity(content.uid), "category", false);
    return !classifications.empty();
}

Items Unclassified(Library& library, const std::vector<Entry>& entries) {
    Items items;
    std::size_t looked = 0;
    for (const Entry& entry : entries) {
        if (!entry.isFolder && looked++ < kSome && !IsClassified(*library.Session(), entry)) {
            items.push_back(library.Controller().GetItem(entry.uid, true));
        }
    }
    return items;
}

bool Classify(kxct::Controller& controller, Items& items, kxct::Item& classification) {
    Items closed;
    for (kxct::Item* item : items) {
        if (!item->IsEditable()) {
            closed.push_back(item);
        }
    }
    if (!closed.empty() && !controller.CheckOut(closed, "to classify it")) {
        return false;
    }
    for (kxct::Item* item : items) {
        if (!controller.AddClassification(item, &classification)) {
            return false;
        }
    }
    for (std::size_t i = 1; i < items.size(); ++i) {
        if (!controller.AddRelation(items.front(), items[i], kRelation)) {
            return false;
        }
    }
    return controller.Publish(items, "classified", false);
}

}  // namespace

bool Connect(Library& library, const std::vector<Entry>& entries) {
    Items items = Unclassified(library, entries);
    if (items.empty()) {
        return true;
    }
    kxct::Item* classification = Classification(library);
    if (classification == nullptr || !Classify(library.Controller(), items, *classification)) {
        std::cerr << "the first contents could not be classified and related\n";
        return false;
    }
    // A classification has revisions, too.
    Items published{classification};
    return !classification->IsEditable() || library.Controller().Publish(published, "made", false);
}

void PrintConnections(Library& library) {
    kxudm::IUDMProfile& session = *library.Session();
    kxStlVector<kxudm::UDMItemHandle> classifications;
    session.GetClassifications(classifications, "");
    for (const kxudm::UDMItemHandle& classification : classifications) {
        kxStlVector<kxudm::UDMItemHandle> contents;
        session.GetChildren(contents, classification, "category", "");
        std::cout << "classification " << Printable(classification.GetDisplayName()) << ": "
                  << contents.size() << " contents\n";
        for (const kxudm::UDMItemHandle& content : contents) {
            // A relation is found from the end that it leads to.
            kxStlVector<kxudm::UDMItemHandle> others;
            session.GetParents(others, content, kRelation, false);
            for (const kxudm::UDMItemHandle& other : others) {
                std::cout << "  " << Printable(other.GetDisplayName()) << ' ' << kRelation << ' '
                          << Printable(content.GetDisplayName()) << '\n';
            }
        }
    }
}

}  // namespace demo
