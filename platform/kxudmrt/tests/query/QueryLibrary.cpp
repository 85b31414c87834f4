#include "QueryLibrary.h"

namespace kxudm::test {

namespace {

constexpr const char* CATALOGUE = R"(<catalogue version="1">
<definition name="Root" abstract="true">
  <attribute name="name" type="String" mandatory="true"/>
  <attribute name="displayname" type="String"/>
  <attribute name="material" type="String"/>
  <attribute name="code" type="String"/>
  <attribute name="tags" type="StringList"/>
  <attribute name="due" type="Time"/>
  <attribute name="smd_contentrevision" type="Integer" system="true"/>
  <attribute name="smd_createduser" type="String" system="true"/>
  <attribute name="smd_creatime" type="Time" system="true"/>
  <attribute name="smd_user" type="String" system="true"/>
  <attribute name="smd_ctime" type="Time" system="true"/>
  <attribute name="smd_comment" type="String" system="true"/>
  <attribute name="smd_folder" type="String" system="true"/>
  <attribute name="smd_branchfrom" type="String" system="true"/>
  <attribute name="smd_branchfromver" type="Integer" system="true"/>
  <attribute name="smd_branchedtime" type="Time" system="true"/>
  <attribute name="smd_id" type="String" system="true"/>
  <attribute name="smd_ctype" type="String" system="true"/>
  <attribute name="smd_ctypedn" type="String" system="true"/>
</definition>
<definition name="Part" base="Root" displayname="Teil">
  <attribute name="mass" type="Double"/>
  <attribute name="count" type="Integer"/>
  <attribute name="flag" type="Boolean"/>
  <attribute name="size" type="Integer"/>
</definition>
<definition name="Bolt" base="Part" displayname="Schraube"/>
<definition name="Document" base="Root">
  <attribute name="size" type="String"/>
</definition>
<definition name="Hidden" base="Root" excludedfromsearch="true"/>
<definition name="Folder" base="Root" versioned="false"/>
</catalogue>)";

}  // namespace

kxVariant Seen::Attribute(const std::string& attribute) const {
    const auto found = attributes.find(attribute);
    return found != attributes.end() ? found->second : kxVariant();
}

QueryLibrary::QueryLibrary() : catalogue_(catalogue::Catalogue::ReadText(CATALOGUE, "test.xml")) {}

store::AttributeList QueryLibrary::Changes(const Attributes& from, const Attributes& to) const {
    store::AttributeList changes;
    for (const auto& [name, value] : to) {
        changes.emplace_back(name, value);
    }
    for (const auto& [name, value] : from) {
        if (!to.contains(name)) {
            changes.emplace_back(name, kxVariant());
        }
    }
    return changes;
}

// The operations on revisions belong to the session; here the rows are set to what they leave.
void QueryLibrary::Publish(store::EntityId id) {
    PublishByHand(id, 0);
    store_->Connection().Execute("UPDATE head_attribute SET working=0 WHERE entity=" +
                                 std::to_string(id));
}

void QueryLibrary::CheckOut(store::EntityId id, const store::Viewer& viewer) {
    CheckOutByHand(id, 1);
    store_->Connection().Execute("UPDATE entity SET lock_user='" + std::string(viewer.user) +
                                 "' WHERE id=" + std::to_string(id));
}

store::EntityId QueryLibrary::Make(const std::string& definition,
                                   const std::string& name,
                                   const Attributes& attributes,
                                   Life life,
                                   const Attributes& other) {
    const bool twice = life == Life::MyCheckOut || life == Life::AnotherCheckOut;
    const Attributes& first = life == Life::MyCheckOut ? other : attributes;
    const Attributes& second = life == Life::MyCheckOut ? attributes : other;
    Seen seen;
    seen.uid = "U" + std::to_string(1000 + seen_.size());
    seen.name = name;
    seen.attributes = attributes;
    seen.attributes["name"] = kxVariant(name);
    seen.attributes["displayname"] = kxVariant(name);
    seen.revision = life == Life::MyCheckOut ? 1 : 0;
    for (const auto* each = catalogue_->Find(definition); each != nullptr; each = each->Base()) {
        seen.definitions.push_back(each->Name());
    }
    const store::EntityId id =
        store_->Insert({.uid = seen.uid,
                        .definition = definition,
                        .name = name,
                        .displayName = name,
                        .state = life == Life::Unversioned ? store::RevisionState::Unversioned
                                                           : store::RevisionState::Working},
                       Changes({}, first),
                       {store::ANN, 1714566896000000});
    if (life == Life::Published || twice) {
        Publish(id);
    }
    if (twice) {
        const store::Viewer& owner = life == Life::MyCheckOut ? store::ANN : store::BOB;
        CheckOut(id, owner);
        store_->UpdateAttributes(id, 1, Changes(first, second), {owner, 1714566896000000});
    }
    seen_.push_back(std::move(seen));
    return id;
}

QueryLibrary::Names QueryLibrary::Hits(const std::string& text, Letters letters) {
    std::vector<store::EntityRow> rows;
    store_->VisitHits(Compiled(text, letters), store::ANN, false, 0, 0, store::Into(rows));
    Names names;
    for (const store::EntityRow& row : rows) {
        names.push_back(row.name);
    }
    return names;
}

QueryLibrary::Names QueryLibrary::ChildHits(store::EntityId folder,
                                            const std::string& text,
                                            Letters letters) {
    std::vector<store::LinkedRow> rows;
    store_->Children(folder,
                     0,
                     store::LinkKind::Folder,
                     {},
                     store::ANN,
                     rows,
                     false,
                     Compiled(text, letters, query::CompileOptions::Use::Listing));
    Names names;
    for (const store::LinkedRow& row : rows) {
        names.push_back(row.entity.name);
    }
    return names;
}

QueryLibrary::Names QueryLibrary::Expected(const std::string& text, Letters letters) const {
    const query::Evaluator evaluator(query::Parse(text), letters);
    Names names;
    for (const Seen& seen : seen_) {
        if (evaluator.Matches(seen)) {
            names.push_back(seen.name);
        }
    }
    return names;
}

}  // namespace kxudm::test
