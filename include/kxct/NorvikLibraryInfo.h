// A description of entities of a library as an XML text: which entities of which type, with library
// attributes, metadata, categories and folder. Lives in memory only; an application hands the text
// from Serialize on, and the receiver makes a NorvikLibraryInfo from it.
//
// An entity is known by its type and id together. An id has 64 bits; GetEntities gives 32.
//
// Layer: settings. An object owns its document and belongs to one thread. A text that is malformed
// gives an empty document, or one with what stands before the damage. A question about an unknown
// entity has an empty answer.
//
//     kxct::NorvikLibraryInfo info;
//     info.AddEntity("Part", 17, {{"libraryname", "Bolts"}}, {{"material", "steel"}});
//     kxString text = info.Serialize();
//     kxct::NorvikLibraryInfo(text).GetEntityMetadata("Part", 17);  // material, steel
#pragma once

#include <kxct/kxct_export.h>
#include <kxutl/kxStlMap.h>
#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>

#include <cstdint>
#include <iosfwd>
#include <memory>

struct soap;

namespace kxct {

class _kxct__NorvikLibraryInfo;
class kxct__Entity;

class KXCT_EXPORT NorvikLibraryInfoImpl {
  public:
    // See NorvikLibraryInfo.
    NorvikLibraryInfoImpl();
    explicit NorvikLibraryInfoImpl(const kxString& xml);
    NorvikLibraryInfoImpl(const NorvikLibraryInfoImpl&) = delete;
    NorvikLibraryInfoImpl& operator=(const NorvikLibraryInfoImpl&) = delete;
    ~NorvikLibraryInfoImpl();

    bool AddEntity(const kxString& type, std::uint64_t id);
    bool AddEntity(const kxString& type,
                   std::uint64_t id,
                   const kxStlMap<kxString, kxString>& attributes);
    bool AddEntity(const kxString& type,
                   std::uint64_t id,
                   const kxStlMap<kxString, kxString>& attributes,
                   const kxStlMap<kxString, kxString>& metadata);
    bool AddEntity(const kxString& type,
                   std::uint64_t id,
                   const kxStlMap<kxString, kxString>& attributes,
                   const kxStlMap<kxString, kxString>& metadata,
                   const kxStlVector<kxString>& categories);
    bool AddEntity(const kxString& type,
                   std::uint64_t id,
                   const kxStlMap<kxString, kxString>& attributes,
                   const kxStlMap<kxString, kxString>& metadata,
                   const kxStlVector<kxString>& categories,
                   const kxString& folder);

    kxStlVector<unsigned int> GetEntities(const kxString& type) const;
    kxStlVector<kxString> GetEntityTypes() const;
    kxStlVector<kxString> GetEntityAttributes(const kxString& type, std::uint64_t id) const;
    kxStlVector<kxString> GetEntityMetadata(const kxString& type, std::uint64_t id) const;
    kxStlVector<kxString> GetEntityCategories(const kxString& type, std::uint64_t id) const;
    kxString GetEntityFolder(const kxString& type, std::uint64_t id) const;
    kxString Serialize() const;

  private:
    // Each form does what the one before does, and adds its last argument. Null without a document.
    kxct__Entity* _AddEntity(const kxString& type, std::uint64_t id);
    kxct__Entity* _AddEntity(const kxString& type,
                             std::uint64_t id,
                             const kxStlMap<kxString, kxString>& attributes);
    kxct__Entity* _AddEntity(const kxString& type,
                             std::uint64_t id,
                             const kxStlMap<kxString, kxString>& attributes,
                             const kxStlMap<kxString, kxString>& metadata);
    kxct__Entity* _AddEntity(const kxString& type,
                             std::uint64_t id,
                             const kxStlMap<kxString, kxString>& attributes,
                             const kxStlMap<kxString, kxString>& metadata,
                             const kxStlVector<kxString>& categories);
    kxct__Entity* _AddEntity(const kxString& type,
                             std::uint64_t id,
                             const kxStlMap<kxString, kxString>& attributes,
                             const kxStlMap<kxString, kxString>& metadata,
                             const kxStlVector<kxString>& categories,
                             const kxString& folder);
    // The first entity of the document of that type and id; null without one.
    kxct__Entity* _GetEntity(const kxString& type, std::uint64_t id) const;

    void _ReadFromStream(std::istream& stream,
                         _kxct__NorvikLibraryInfo* root,
                         const char* tag,
                         const char* type);
    void _WriteToStream(std::ostream& stream, const char* tag, const char* type) const;

    soap* _soap;
    _kxct__NorvikLibraryInfo* _root;

    // Finds an entity without going through the document. Only adding changes the document, and
    // adds here too.
    struct Index;
    std::unique_ptr<Index> _index;
};

class KXCT_EXPORT NorvikLibraryInfo {
  public:
    // An empty document.
    NorvikLibraryInfo();
    // The document that `xml` holds. std::bad_alloc for 2,147,483,648 characters or more.
    explicit NorvikLibraryInfo(const kxString& xml);

    // Copies share one document, which the first destructor frees: only one of them may be
    // destroyed, and an assignment abandons the document that was held before.
    NorvikLibraryInfo(const NorvikLibraryInfo&) = default;
    NorvikLibraryInfo& operator=(const NorvikLibraryInfo&) = default;
    ~NorvikLibraryInfo();

    // Makes sure that the document has the entity. True unless there is no memory for a document.
    bool AddEntity(const kxString& type, std::uint64_t id);
    // And sets its attributes "libraryentityid", "libraryname" and "librarycomment"; other keys are
    // ignored.
    bool AddEntity(const kxString& type,
                   std::uint64_t id,
                   const kxStlMap<kxString, kxString>& attributes);
    // And appends metadata, also to what an entity has: repeating a call doubles it.
    bool AddEntity(const kxString& type,
                   std::uint64_t id,
                   const kxStlMap<kxString, kxString>& attributes,
                   const kxStlMap<kxString, kxString>& metadata);
    // And appends categories in the same way. A category is a path.
    bool AddEntity(const kxString& type,
                   std::uint64_t id,
                   const kxStlMap<kxString, kxString>& attributes,
                   const kxStlMap<kxString, kxString>& metadata,
                   const kxStlVector<kxString>& categories);
    // And sets the path of its folder.
    bool AddEntity(const kxString& type,
                   std::uint64_t id,
                   const kxStlMap<kxString, kxString>& attributes,
                   const kxStlMap<kxString, kxString>& metadata,
                   const kxStlVector<kxString>& categories,
                   const kxString& folder);

    // The ids of a type in document order, each once. An id that isn't a number of 32 bits raises
    // boost::bad_lexical_cast; "-1" counts as 4,294,967,295.
    kxStlVector<unsigned int> GetEntities(const kxString& type) const;
    // In the order of their first entities.
    kxStlVector<kxString> GetEntityTypes() const;
    // Name, value, name, value: the attributes that are set, in the order told above.
    kxStlVector<kxString> GetEntityAttributes(const kxString& type, std::uint64_t id) const;
    // Name, value, name, value in document order.
    kxStlVector<kxString> GetEntityMetadata(const kxString& type, std::uint64_t id) const;
    kxStlVector<kxString> GetEntityCategories(const kxString& type, std::uint64_t id) const;
    kxString GetEntityFolder(const kxString& type, std::uint64_t id) const;

    // The document as XML. After a failure what was written so far.
    kxString Serialize() const;

    // True always, even after malformed text. Hosts ask it of every document alike, so that it must
    // not begin to tell anything.
    bool IsValid();

  private:
    NorvikLibraryInfoImpl* _impl;
};

}  // namespace kxct
