// A node of the content tree, and everything that can be asked of it.
//
// The model. A repository holds entities. An entity has a content definition (its kind),
// attributes, attached files, and a line of revisions; it hangs below other entities in named
// groups, which its parent's content definition declares. An application never sees an entity
// directly: it sees items. An item is one of
//
//   - a content: one revision of one entity;
//   - a content without revision: the entity with all its revisions together;
//   - a group: the children of one content that stand in one group;
//   - a view: a node made up for display, such as "all parts of aluminium";
//   - a history node, or a category of history nodes ("Branches", "Versions");
//   - the ghost: the placeholder child that makes a tree view draw an expander.
//
// What kind an item is, IsA() tells. All kinds answer all operations; one that makes no sense for a
// kind answers false, 0, null or an empty value and changes nothing.
//
// Identity. The UID text of a content is `<entity>:<revision>`. One UID is one Item object for as
// long as it stays cached, so pointers can be compared. When an entity moves on to a new revision,
// its object follows, and GetUID() answers the new text.
//
// Check-out, save, publish. A content is read-only until it is checked out (IsEditable() tells), is
// then changed, saved any number of times, and published by Persist() or given up by
// UndoCheckout().
//
// Ownership: items belong to the manager that made them. Applications hold pointers, which are
// valid until the manager's cache is cleared or its controller goes, and never delete one. Errors:
// operations that answer bool tell a failure by false. Reading attributes lets exceptions
// (std::exception) of the repository pass.
// Threads: items belong to the one thread that drives their controller. Nothing is locked.
//
// Layer: interfaces; nothing of kxct stands below.
//
//     kxStlVector<Item*> parts;
//     project->GetChildren(parts, "parts");
//     for (Item* part : parts) {
//         if (part->Checkout("mass corrected")) {
//             part->SetAttributeValue("mass", 12.5f);
//             part->Persist("mass corrected", false);
//         }
//     }
#pragma once

#include <kxctinterfaces/kxctinterfaces_export.h>
#include <kxutl/kxStlMap.h>
#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>
#include <kxutl/kxVariant.h>

#include <cstddef>
#include <cstdint>

namespace kxudm {
class UDMItemHandle;
}

namespace kxct {

class ItemFilterList;

// Which tree an item belongs to. Any other value is an unknown tree without items.
enum ManagerType : int {
    MANAGER_DEFAULT = 0,  // the content tree
    MANAGER_HISTORY = 1,  // the history tree
};

// What a browser has seen of an item's children.
enum ItemRenderState : int {
    RENDER_NONE = 0,      // nothing
    RENDER_GHOSTED = 1,   // only the placeholder, so that it shows an expander
    RENDER_EXPANDED = 2,  // the real children
};

// The two sides of a content's history.
enum HistoryCategory : int {
    HISTORY_BRANCHES = 0,
    HISTORY_VERSIONS = 1,
};

// What a node stands for, for hosts that mix items with data of their own. Every item answers
// DATA_TYPE_ITEM.
enum DataType : int {
    DATA_TYPE_ITEM = 2,
};

// A content definition name against group names of it. Used as hide map (these groups vanish as
// nodes, their children show directly) and as filter map (only these groups show as nodes).
using ChildFilterMap = kxStlMap<kxString, kxStlVector<kxString>>;

// One attached file.
struct DocumentInfo {
    kxString name;          // plain file name
    kxString lastModified;  // as the repository gives it
    kxString type;
    kxString path;
    int32_t size = 0;  // bytes
    bool isText = false;
};

class KXCTINTERFACES_EXPORT Item {
  public:
    Item() = default;
    Item(const Item& other) = default;
    Item& operator=(const Item& other) = default;

    // The order of the virtual operations is part of the binary interface.

    // Makes the content editable, as a new working revision. False if somebody else holds it.
    virtual bool Checkout(const kxString& comment) = 0;

    // Records a save point of a checked out content. False if it is not editable.
    virtual bool Save(const kxString& comment) = 0;

    // The kind of the item, as the name of its class: "ContentItem", "NoRevItem",
    // "ContentGroupItem", "ViewItem", "GhostItem", "HistoryItem", "HistoryCategoryItem". The
    // reference stays valid for the life of the process.
    virtual const kxString& IsA() = 0;

    // One property (see ATTRIBUTE_DEFINITION) of one attribute. Empty variant for an unknown
    // property; an unknown attribute is an exception of the repository.
    virtual kxVariant GetAttributeDescription(const kxString& attribute,
                                              const kxString& property) const = 0;

    // Names of the attributes, each once. `omitSystem` leaves out those that the system keeps,
    // `displayableOnly` those that are not meant for display.
    virtual kxStlVector<kxString> GetAttributeNameList(bool omitSystem,
                                                       bool displayableOnly) const = 0;

    // A flat list: name, display name, name, display name, and so on. The spelling of the name is
    // part of the interface.
    virtual kxStlVector<kxString> GetAttributeNameDiplaynameMap(bool omitSystem,
                                                                bool displayableOnly) const = 0;

    // The value of an attribute; for the names that items answer themselves see ATTRIBUTE_NAME.
    virtual kxVariant GetAttributeValue(const kxString& attribute) const = 0;

    // Whether attributes of this item can be set now. The name is not looked at; whether the
    // content definition lets an attribute be edited at all, GetAttributeDescription tells.
    virtual bool IsAttributeEditable(const kxString& attribute) = 0;

    virtual kxString GetDisplayName() const = 0;

    // Reserved for items that stand for a query; empty for all others.
    virtual kxString GetQueryString() const = 0;

    // The identifier, unique among the items of one manager.
    virtual kxString GetUID() const = 0;

    // The name of the content definition; empty for an item that stands for no content.
    virtual kxString GetType() const = 0;

    // Whether the content is checked out by this session (or needs no check-out).
    virtual bool IsEditable() = 0;

    // Publishes a checked out content. `flag` keeps it checked out, as the next working revision.
    virtual bool Persist(const kxString& comment, bool flag) = 0;

    // Puts copies of the attached files into `folder` and appends their paths to `paths`. `first`
    // overwrites files that differ (else they are an error and nothing is touched), `second` takes
    // the files of owned children too.
    virtual bool RetrieveFilesIntoFolder(const kxString& folder,
                                         kxStlVector<kxString>& paths,
                                         const bool& first,
                                         const bool& second) = 0;
    virtual bool RetrieveFilesIntoFolder(const kxString& folder) = 0;
    // The same for the one attached file of the name `document`.
    virtual bool RetrieveFilesIntoFolder(const kxString& folder,
                                         const kxString& document,
                                         kxStlVector<kxString>& paths) = 0;

    // Puts copies of the attached files into the session's workspace directory.
    virtual bool RetrieveFilesIntoWorkspace(kxStlVector<kxString>& paths,
                                            const bool& first,
                                            const bool& second) = 0;
    virtual bool RetrieveFilesIntoWorkspace() = 0;

    // Append the paths, the names, or all that is known of the attached files, in one order. True
    // also if there are none.
    virtual bool GetDocuments(kxStlVector<kxString>& paths) = 0;
    virtual bool GetDocumentNames(kxStlVector<kxString>& names) = 0;
    virtual bool GetDocumentInfo(kxStlVector<DocumentInfo>& info) = 0;

    // Sets an attribute. It is written to the repository at once. ATTRIBUTE_NAME::LABEL sets the
    // display name.
    virtual bool SetAttributeValue(const kxString& attribute, const float& value) = 0;
    virtual bool SetAttributeValue(const kxString& attribute, const int& value) = 0;
    virtual bool SetAttributeValue(const kxString& attribute, const kxString& value) = 0;
    virtual bool SetAttributeValue(const kxString& attribute, kxVariant& value) = 0;

    // Moves an attribute on to its next value. Only scripted attributes of a controller have one.
    virtual bool NextAttributeValue(const kxString& attribute) = 0;

    // Children. For a content: without a group its groups, with a group (and a query expression)
    // the contents in it. The maps, keyed by this item's content definition, choose which groups
    // show and which are replaced by their children; the filter list thins the latter out. The
    // result is the size of the vector (with a filter list: the number added). Contents append to
    // `children`, the other kinds replace what it held. 0 on failure.
    virtual size_t GetChildren(kxStlVector<Item*>& children,
                               const ChildFilterMap& hideMap,
                               const ChildFilterMap& filterMap,
                               const ItemFilterList& filters) = 0;
    virtual size_t GetChildren(kxStlVector<Item*>& children,
                               const ChildFilterMap& hideMap,
                               const ChildFilterMap& filterMap) = 0;
    virtual size_t GetChildren(kxStlVector<Item*>& children) = 0;
    virtual size_t GetChildren(kxStlVector<Item*>& children,
                               const kxString& group,
                               const kxString& queryExpression) = 0;
    virtual size_t GetChildren(kxStlVector<Item*>& children, const kxString& group) = 0;

    // Counts of the same children. With maps, a count of a content costs as much as fetching them.
    virtual size_t GetNumChildren(const ChildFilterMap& hideMap,
                                  const ChildFilterMap& filterMap,
                                  const ItemFilterList& filters) = 0;
    virtual size_t GetNumChildren(const ChildFilterMap& hideMap,
                                  const ChildFilterMap& filterMap) = 0;
    virtual size_t GetNumChildren(const kxString& group) = 0;
    virtual size_t GetNumChildren() = 0;

    virtual DataType GetDataType() = 0;

    // Whether the count of the same arguments is not 0. Leaves the render state as it is.
    virtual bool HasChildren(const ChildFilterMap& hideMap,
                             const ChildFilterMap& filterMap,
                             const ItemFilterList& filters) = 0;
    virtual bool HasChildren(const kxString& group) = 0;
    virtual bool HasChildren() = 0;

    // False for every item; GetParent answers the question.
    virtual bool HasParent() const = 0;

    // The first owner of a content; null if it has none. `flag` also counts owners of which only an
    // older revision holds the link.
    virtual Item* GetParent(bool flag) = 0;

    // Appends all parents by a relation: "owner", "reference", "folder", "category", a relation
    // type or a group name. The result is the size of the vector.
    virtual size_t GetParents(kxStlVector<Item*>& parents, const kxString& relation, bool flag) = 0;

    // What a browser has seen of the children. Any state may follow any other.
    virtual ItemRenderState GetRenderState() = 0;
    virtual void SetRenderState(ItemRenderState state) = 0;

    // Counted mark of views that show the item as somebody's child. A count of 0 stays at 0.
    virtual bool UsedAsChild() = 0;
    virtual void UseAsChild(bool use) = 0;

    // Gives up the working revision of a checked out content.
    virtual bool UndoCheckout() = 0;

    // Links an existing content below this one, in a group.
    virtual bool Add(Item* child, const kxString& group) = 0;

    // Attaches a file and names the content after it. `flag`: record it as an external file, by
    // path only.
    virtual bool AddFile(const kxString& fileType, const kxString& path, bool flag) = 0;

    // Takes a child out of this content. The child itself stays in the repository.
    virtual bool Remove(Item* child) = 0;

    // Detaches the file of this name.
    virtual bool RemoveFile(const kxString& path) = 0;

    // Replaces the attached file of the same name. `first`: move the source instead of copying it;
    // `second`: external.
    virtual bool ReAddFile(const kxString& path, bool first, bool second) = 0;

    virtual ~Item();

    // The repository's handle of an item; empty for one that stands for no content. The reference
    // is valid as long as the item. For use by kxct itself, which requires `other` to be one of its
    // own items.
    virtual kxudm::UDMItemHandle& GetItemHandle(Item* other) = 0;
    virtual kxudm::UDMItemHandle& GetItemHandle() = 0;

    // Makes a new content of a definition in a group of this one, with a name that is free there,
    // and sets `handle` to it.
    virtual bool AddItem(kxudm::UDMItemHandle& handle,
                         const kxString& group,
                         const kxString& definition) = 0;
};

}  // namespace kxct
