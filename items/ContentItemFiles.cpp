// ContentItem: check-out and publishing, files, and adding children.
#include <kxct/ContentItem.h>
#include <kxct/UDMDBCtrl.h>
#include <kxctinterfaces/Attributes.h>
#include <kxudm/UDMGenericDocument.h>

#include <boost/filesystem/path.hpp>

#include "items/Contained.h"
#include "items/Definitions.h"

using kxudm::UDMGenericDocument;
using kxudm::UDMItemHandle;

namespace kxct {

namespace {

// Runs a session call on a copy of the item's handle; true if it succeeds.
template <class Call>
bool Succeeds(ContentItem& item, UDMDBCtrl* session, Call&& call) {
    if (!session) {
        return false;
    }
    return Contained(false, [&] {
        UDMItemHandle handle = item.GetItemHandle();
        call(*session, handle);
        return true;
    });
}

// The same for a call whose own answer counts.
template <class Call>
bool Answer(ContentItem& item, UDMDBCtrl* session, Call&& call) {
    if (!session) {
        return false;
    }
    return Contained(false, [&] {
        UDMItemHandle handle = item.GetItemHandle();
        return call(*session, handle);
    });
}

}  // namespace

bool ContentItem::Checkout(const kxString& comment) {
    return Succeeds(*this, m_session, [&](UDMDBCtrl& session, UDMItemHandle& handle) {
        session.Checkout(handle, comment);
    });
}

bool ContentItem::UndoCheckout() {
    return Succeeds(*this, m_session, [&](UDMDBCtrl& session, UDMItemHandle& handle) {
        session.UndoCheckout(handle);
    });
}

bool ContentItem::Save(const kxString& comment) {
    if (!m_session) {
        return false;
    }
    return Contained(false, [&] {
        // The member itself, so that the session can bring it up to date.
        m_session->Save(m_handle, comment);
        return true;
    });
}

bool ContentItem::Persist(const kxString& comment, bool flag) {
    if (!m_session) {
        return false;
    }
    return Contained(false, [&] {
        m_session->Persist(GetItemHandle(), comment, flag);
        return true;
    });
}

bool ContentItem::Add(Item* child, const kxString& group) {
    if (!child) {
        return false;
    }
    return Succeeds(*this, m_session, [&](UDMDBCtrl& session, UDMItemHandle& handle) {
        session.AddChild(handle, GetItemHandle(child), group);
    });
}

bool ContentItem::Remove(Item* child) {
    if (!child) {
        return false;
    }
    return Succeeds(*this, m_session, [&](UDMDBCtrl& session, UDMItemHandle& handle) {
        session.RemoveChildFromParent(handle, GetItemHandle(child));
    });
}

bool ContentItem::ReAddFile(const kxString& path, bool first, bool second) {
    return Answer(*this, m_session, [&](UDMDBCtrl& session, UDMItemHandle& handle) {
        return session.ReAddFile(handle, path, first, second);
    });
}

bool ContentItem::RemoveFile(const kxString& path) {
    return Answer(*this, m_session, [&](UDMDBCtrl& session, UDMItemHandle& handle) {
        return session.RemoveFile(handle, path);
    });
}

bool ContentItem::RetrieveFilesIntoFolder(const kxString& folder,
                                          kxStlVector<kxString>& paths,
                                          const bool& first,
                                          const bool& second) {
    return Succeeds(*this, m_session, [&](UDMDBCtrl& session, UDMItemHandle& handle) {
        session.RetrieveFilesIntoFolder(handle, folder, first, second, paths);
    });
}

bool ContentItem::RetrieveFilesIntoFolder(const kxString& folder,
                                          const kxString& document,
                                          kxStlVector<kxString>& paths) {
    return Succeeds(*this, m_session, [&](UDMDBCtrl& session, UDMItemHandle& handle) {
        session.RetrieveFilesIntoFolder(handle, folder, document, paths);
    });
}

bool ContentItem::RetrieveFilesIntoWorkspace(kxStlVector<kxString>& paths,
                                             const bool& first,
                                             const bool& second) {
    return Succeeds(*this, m_session, [&](UDMDBCtrl& session, UDMItemHandle& handle) {
        session.RetrieveFilesIntoWorkspace(handle, first, second, paths);
    });
}

bool ContentItem::RetrieveFilesIntoWorkspace() {
    kxStlVector<kxString> paths;
    return RetrieveFilesIntoWorkspace(paths, false, false);
}

namespace {

// Appends what `make` makes of each attached file. What was appended before a failure stays.
template <class Result, class Make>
bool ListDocuments(ContentItem& item, UDMDBCtrl* session, kxStlVector<Result>& out, Make&& make) {
    if (!session) {
        return false;
    }
    return Contained(false, [&] {
        UDMItemHandle handle = item.GetItemHandle();
        if (handle.IsEmpty()) {
            return false;
        }
        kxStlVector<UDMGenericDocument> documents;
        session->GetDocuments(handle, documents);
        for (const UDMGenericDocument& document : documents) {
            out.push_back(make(document));
        }
        return true;
    });
}

}  // namespace

bool ContentItem::GetDocuments(kxStlVector<kxString>& paths) {
    return ListDocuments(*this, m_session, paths, [](const UDMGenericDocument& document) {
        return document.GetPath();
    });
}

bool ContentItem::GetDocumentNames(kxStlVector<kxString>& names) {
    return ListDocuments(*this, m_session, names, [](const UDMGenericDocument& document) {
        return document.GetName();
    });
}

bool ContentItem::GetDocumentInfo(kxStlVector<DocumentInfo>& info) {
    return ListDocuments(*this, m_session, info, [](const UDMGenericDocument& document) {
        return DocumentInfo{document.GetName(),
                            document.GetLastmodTime(),
                            document.GetType(),
                            document.GetPath(),
                            document.GetSize(),
                            document.IsText()};
    });
}

bool ContentItem::AddFile(const kxString& fileType, const kxString& path, bool flag) {
    if (!m_session) {
        return false;
    }
    return Contained(false, [&] {
        const kxString fileName = boost::filesystem::path(path).filename().string();
        if (!SetAttributeValue(ATTRIBUTE_NAME::DISPLAYNAME, fileName) ||
            !SetAttributeValue(ATTRIBUTE_NAME::FILETYPE, fileType)) {
            return false;
        }
        UDMItemHandle handle = GetItemHandle();
        return m_session->AddFile(handle, path, flag);
    });
}

bool ContentItem::AddItem(UDMItemHandle& handle,
                          const kxString& group,
                          const kxString& definition) {
    return Answer(*this, m_session, [&](UDMDBCtrl& session, UDMItemHandle& own) {
        CreateUnderFreeName(session, handle, own, group, definition);
        return true;
    });
}

}  // namespace kxct
