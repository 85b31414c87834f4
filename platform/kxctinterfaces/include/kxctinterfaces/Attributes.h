// The words under which attributes and their descriptions are asked for.
//
// Layer: interfaces, below everything of kxct. The values are part of the persisted model: they
// stand in repositories, in settings documents and in hosts' scripts, so they never change.
//
//     kxVariant label = item->GetAttributeValue(kxct::ATTRIBUTE_NAME::LABEL);
//     kxVariant fixed = item->GetAttributeDescription("mass",
//     kxct::ATTRIBUTE_DEFINITION::ISEDITABLE);
#pragma once

#include <kxutl/kxString.h>

namespace kxct {

// Attribute names that items answer themselves; every other name goes to the repository.
namespace ATTRIBUTE_NAME {

// Integer, number of the picture that a view shows for the item.
inline const kxString ICON("icon");
// Text, the display name. Setting it renames the entity.
inline const kxString LABEL("label");
// Text, the identifier of the item: UID and revision of an entity.
inline const kxString ID("id");
// Text, the type of the content definition, such as "Foldertype".
inline const kxString CONTENTDEFINITION("contentdefinition");

// Integer, the revision number.
inline const kxString SMD_CONTENTREVISION("smd_contentrevision");
// Text, who created the entity, and the time of it.
inline const kxString SMD_CREATEDUSER("smd_createduser");
inline const kxString SMD_CREATIME("smd_creatime");
// Time of the last change, and text, who made it.
inline const kxString SMD_CTIME("smd_ctime");
inline const kxString SMD_USER("smd_user");

// The words that are plain attributes of every entity.
inline const kxString NAME("name");
inline const kxString DISPLAYNAME("displayname");
inline const kxString FILETYPE("filetype");

}  // namespace ATTRIBUTE_NAME

// Properties of an attribute, as Item::GetAttributeDescription answers them.
namespace ATTRIBUTE_DEFINITION {

// Booleans.
inline const kxString ISEDITABLE("iseditable");
inline const kxString ISDISPLAYABLE("isdisplayable");
inline const kxString ISMANDATORY("ismandatory");
inline const kxString ISSYSTEM("issystem");
inline const kxString HASDEPENDENCIES("hasdependencies");
// Texts.
inline const kxString CATEGORY("category");
inline const kxString TYPE("type");
inline const kxString DESCRIPTION("description");
inline const kxString DISPLAYNAME("displayname");
// String list; empty variant where the attribute takes any value.
inline const kxString VALIDVALUES("validvalues");

}  // namespace ATTRIBUTE_DEFINITION

}  // namespace kxct
