#include <kxct/ViewItem.h>
#include <kxctinterfaces/Attributes.h>

#include <algorithm>
#include <cstdlib>

namespace kxct {

namespace {

// Not seeded here: the host decides whether the sequence repeats.
kxString RandomUID() {
    static const char alphabet[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    kxString uid;
    for (int i = 0; i < 32; ++i) {
        uid += alphabet[std::rand() % 62];
    }
    return uid;
}

// One process-wide text, also for the const operations that answer it.
const kxString& KindName() {
    static const kxString name("ViewItem");
    return name;
}

}  // namespace

ViewItem::ViewItem(kxStlVector<Item*>& items,
                   kxStlVector<kxString> attributes,
                   const kxString& name)
    : m_items(items), m_attributes(std::move(attributes)), m_name(name) {
    m_uid = RandomUID();
}

ViewItem::~ViewItem() = default;

const kxString& ViewItem::IsA() {
    return KindName();
}

kxString ViewItem::GetDisplayName() const {
    return m_name;
}

bool ViewItem::Add(Item* child, const kxString&) {
    m_items.push_back(child);
    return true;
}

size_t ViewItem::GetChildren(kxStlVector<Item*>& children) {
    children = m_items;
    return children.size();
}

size_t ViewItem::GetNumChildren() {
    return m_items.size();
}

kxStlVector<kxString> ViewItem::GetAttributeNameList(bool, bool) const {
    return m_attributes;
}

kxStlVector<kxString> ViewItem::GetAttributeNameDiplaynameMap(bool, bool) const {
    kxStlVector<kxString> names;
    for (const kxString& name : m_attributes) {
        names.push_back(name);
        names.push_back(
            GetAttributeDescription(name, ATTRIBUTE_DEFINITION::DISPLAYNAME).GetString());
    }
    return names;
}

const Item* ViewItem::_Speaker(const kxString& attribute) const {
    const bool shown =
        std::find(m_attributes.begin(), m_attributes.end(), attribute) != m_attributes.end();
    return shown && !m_items.empty() ? m_items.front() : nullptr;
}

kxVariant ViewItem::GetAttributeDescription(const kxString& attribute,
                                            const kxString& property) const {
    const Item* speaker = _Speaker(attribute);
    return speaker ? speaker->GetAttributeDescription(attribute, property) : kxVariant();
}

kxVariant ViewItem::GetAttributeValue(const kxString& attribute) const {
    if (attribute == ATTRIBUTE_NAME::LABEL) {
        return kxVariant(GetDisplayName());
    }
    if (attribute == ATTRIBUTE_NAME::CONTENTDEFINITION) {
        return kxVariant(KindName());
    }
    const Item* speaker = _Speaker(attribute);
    return speaker ? speaker->GetAttributeValue(attribute) : kxVariant();
}

}  // namespace kxct
