// A document with every kind of record and of value in it.
#pragma once

#include "Documents.h"

namespace kxudm::exchange {

inline constexpr const char* kSampleCatalogue =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<catalogue version=\"1\">\n"
    "  <definition name=\"Part\">\n"
    "    <attribute name=\"name\" type=\"String\" description=\"a &lt; b &amp; &quot;c&quot;\" />\n"
    "    <attribute name=\"kind\" type=\"String\">\n"
    "      <value>one &amp; only</value>\n"
    "    </attribute>\n"
    "  </definition>\n"
    "</catalogue>\n";

inline RevisionRecord SampleRevision(int number) {
    RevisionRecord revision;
    revision.number = number;
    revision.displayName = "Wheel <" + std::to_string(number) + ">";
    revision.created = 1000000 * number;
    revision.creator = "ann";
    revision.modified = 1000000 * number + 5;
    revision.modifier = "bob";
    revision.published = 1000000 * number + 7;
    revision.publisher = "ann";
    revision.workspace = "desk";
    revision.comment = "line 1\nline 2 \\ \x01";
    return revision;
}

inline EntityRecord NamedEntity(const std::string& uid,
                                const std::string& definition,
                                const std::string& name) {
    EntityRecord entity;
    entity.uid = uid;
    entity.definition = definition;
    entity.name = name;
    return entity;
}

inline EntityRecord SampleWheel() {
    EntityRecord entity = NamedEntity(kUidA, "Part", "Wheel");
    entity.created = 1;
    entity.creator = "ann";
    entity.workspace = "desk";
    entity.revisions = {SampleRevision(1), SampleRevision(3)};
    entity.revisions[0].savePoints = {{5, "ann", "so far"}, {6, "ann", ""}};
    kxStlVector<kxString> list;
    list.push_back("a ");
    list.push_back("");
    entity.revisions[0].attributes = {{"empty", kxVariant()},
                                      {"flag", kxVariant(true)},
                                      {"float", kxVariant(1.5F)},
                                      {"list", kxVariant(list)},
                                      {"mass", kxVariant(0.1)},
                                      {"none", kxVariant(kxStlVector<kxString>())},
                                      {"number", kxVariant(-9007199254740993LL)},
                                      {"text", kxVariant("  \xFF\n<b>  ")},
                                      {"void", kxVariant("")}};
    FileRecord file;
    file.name = "wheel.inp";
    file.hash = std::string(64, 'a');
    file.size = 12;
    file.modified = 3;
    file.added = 4;
    file.isText = true;
    file.from = 1;
    file.to = 3;
    FileRecord external;
    external.name = "wheel.inp";
    external.externalPath = "/data/wheel.inp";
    external.size = 99;
    external.from = 3;
    entity.files = {file, external};
    return entity;
}

inline EntityRecord SampleNote() {
    EntityRecord entity = NamedEntity(kUidB, "Note", "");
    entity.versioned = false;
    entity.branchUid = kUidC;
    entity.branchRevision = 4;
    entity.revisions.emplace_back();
    return entity;
}

class SampleDocument : public Kept {
  public:
    SampleDocument() {
        scope = Scope::AllWithFiles;
        catalogue = kSampleCatalogue;
        entities.push_back(SampleWheel());
        entities.push_back(SampleNote());
        links.emplace_back(
            kUidA,
            LinkRecord{store::LinkKind::Owner, "parts", kUidB, 1, 3, store::NO_REVISION, true});
        links.emplace_back(kUidA, LinkRecord{store::LinkKind::Folder, "", kUidC, 1});
        links.emplace_back(
            kUidB, LinkRecord{store::LinkKind::Relation, "made \"of\"", kUidA, 0, kOpen, 3});
    }
};

}  // namespace kxudm::exchange
