#include "Connections.h"

#include <kxudm/IUDMProfile.h>
#include <kxudm/UDMBulkEdit.h>

#include <exception>
#include <iostream>

#include "Report.h"

namespace demo {

namespace {

using Handles = kxStlVector<kxudm::UDMItemHandle>;

constexpr std::size_t kSome = 5;
constexpr char kClassification[] = "Reviewed";
constexpr char kRelation[] = "compared with";

// The one that is there, or a new one.
kxudm::UDMItemHandle Classification(kxudm::IUDMProfile& session) {
    Handles found;
    session.GetClassifications(found, kxString("name == \"") + kClassification + "\"");
    return found.empty() ? session.CreateEntity("Categories", kClassification) : found.front();
}

bool IsClassified(kxudm::IUDMProfile& session, const kxudm::UDMItemHandle& content) {
    Handles classifications;
    session.GetParents(classifications, content, "category", false);
    return !classifications.empty();
}

Handles Unclassified(kxudm::IUDMProfile& session, const std::vector<Entry>& entries) {
    Handles contents;
    std::size_t looked = 0;
    for (const Entry& entry : entries) {
        if (entry.isFolder || looked++ >= kSome) {
            continue;
        }
        const kxudm::UDMItemHandle content = session.GetEntity(entry.uid);
        if (!IsClassified(session, content)) {
            contents.push_back(content);
        }
    }
    return contents;
}

kxudm::UDMItemHandle Working(kxudm::IUDMProfile& session, const kxudm::UDMItemHandle& content) {
    if (!content.IsEditable()) {
        session.Checkout(content, "to classify it");
    }
    return session.GetWorkingHandle(content);
}

void Publish(kxudm::IUDMProfile& session,
             const kxudm::UDMItemHandle& content,
             const kxString& comment) {
    session.PersistEntity(content, comment, false, true, true);
}

void Classify(kxudm::IUDMProfile& session, const Handles& contents) {
    const kxudm::UDMItemHandle classification = Classification(session);
    Handles working;
    for (const kxudm::UDMItemHandle& content : contents) {
        working.push_back(Working(session, content));
        session.AddClassification(working.back(), classification);
    }
    for (std::size_t i = 1; i < working.size(); ++i) {
        session.CreateRelation(working.front(), working[i], kRelation, false);
    }
    for (const kxudm::UDMItemHandle& content : working) {
        Publish(session, content, "classified");
    }
    // A classification has revisions, too.
    if (classification.IsEditable()) {
        Publish(session, classification, "made");
    }
}

}  // namespace

bool Connect(Library& library, const std::vector<Entry>& entries) {
    try {
        const Handles contents = Unclassified(*library.Session(), entries);
        if (contents.empty()) {
            return true;
        }
        // All of it or nothing: to the next run, what this one had classified and not yet published
        // would look done.
        kxudm::UDMBulkEdit edit(library.Session());
        Classify(*library.Session(), contents);
        edit.Commit();
        return true;
    } catch (const std::exception& failure) {
        std::cerr << "the first contents could not be classified and related: " << failure.what()
                  << '\n';
        return false;
    }
}

void PrintConnections(Library& library) {
    kxudm::IUDMProfile& session = *library.Session();
    Handles classifications;
    session.GetClassifications(classifications, "");
    for (const kxudm::UDMItemHandle& classification : classifications) {
        Handles contents;
        session.GetChildren(contents, classification, "category", "");
        std::cout << "classification " << Printable(classification.GetDisplayName()) << ": "
                  << contents.size() << " contents\n";
        for (const kxudm::UDMItemHandle& content : contents) {
            // A relation is found from the end that it leads to.
            Handles others;
            session.GetParents(others, content, kRelation, false);
            for (const kxudm::UDMItemHandle& other : others) {
                std::cout << "  " << Printable(other.GetDisplayName()) << ' ' << kRelation << ' '
                          << Printable(content.GetDisplayName()) << '\n';
            }
        }
    }
}

}  // namespace demo
