#include <pugixml.hpp>
#include <utility>

#include "catalogue/Located.h"

namespace kxudm::catalogue {

namespace {

class TextWriter : public pugi::xml_writer {
  public:
    void write(const void* data, std::size_t size) override {
        _text.append(static_cast<const char*>(data), size);
    }

    kxString Take() { return std::move(_text); }

  private:
    kxString _text;
};

void Put(pugi::xml_node& node, const char* name, const kxString& text) {
    if (!text.empty()) {
        node.append_attribute(name).set_value(text.c_str());
    }
}

void Put(pugi::xml_node& node, const char* name, bool flag, bool usual) {
    if (flag != usual) {
        node.append_attribute(name).set_value(flag);
    }
}

void Put(pugi::xml_node& node, const char* name, std::optional<bool> flag) {
    if (flag) {
        node.append_attribute(name).set_value(*flag);
    }
}

void PutText(pugi::xml_node& node, const char* element, const kxString& text) {
    node.append_child(element).text().set(text.c_str());
}

void WriteAttribute(pugi::xml_node& parent, const AttributeDefinition& attribute) {
    pugi::xml_node node = parent.append_child("attribute");
    Put(node, "name", attribute.name);
    Put(node, "type", attribute.dataType);
    if (attribute.displayName != attribute.name) {
        Put(node, "displayname", attribute.displayName);
    }
    Put(node, "description", attribute.description);
    Put(node, "category", attribute.category);
    const kxStlVector<kxString>* list = attribute.defaultValue.PeekStringList();
    if (list == nullptr && !attribute.defaultValue.IsEmpty()) {
        // Also when empty: a default of the empty text is not the same as none.
        node.append_attribute("default").set_value(attribute.defaultValue.GetString().c_str());
    }
    Put(node, "system", attribute.system, false);
    Put(node, "displayable", attribute.displayable, true);
    Put(node, "mandatory", attribute.mandatory, false);
    Put(node, "editable", attribute.editable, true);
    if (list != nullptr) {
        for (const kxString& text : *list) {
            PutText(node, "default", text);
        }
    }
    for (const kxString& text : attribute.validValues) {
        PutText(node, "value", text);
    }
}

void WriteGroup(pugi::xml_node& parent, const GroupDefinition& group) {
    pugi::xml_node node = parent.append_child("group");
    Put(node, "name", group.name);
    if (group.category != kOwner) {
        Put(node, "category", group.category);
    }
    Put(node, "composition", group.composition, false);
    if (group.minimum != 0) {
        node.append_attribute("minimum").set_value(group.minimum);
    }
    if (group.maximum != GroupDefinition::kUnlimited) {
        node.append_attribute("maximum").set_value(group.maximum);
    }
    for (const kxString& child : group.allowedChildren) {
        pugi::xml_node element = node.append_child("child");
        Put(element, "definition", child);
    }
}

void WriteDefinition(pugi::xml_node& parent, const DefinitionDeclaration& declaration) {
    pugi::xml_node node = parent.append_child("definition");
    Put(node, "name", declaration.name);
    Put(node, "base", declaration.base);
    Put(node, "type", declaration.type);
    Put(node, "displayname", declaration.displayName);
    Put(node, "class", declaration.className);
    Put(node, "abstract", declaration.isAbstract, false);
    Put(node, "versioned", declaration.versioned);
    Put(node, "branchable", declaration.branchable);
    Put(node, "excludedfromsearch", declaration.excludedFromSearch);
    kxString extensions;
    for (const kxString& extension : declaration.fileExtensions) {
        extensions += (extensions.empty() ? "" : " ") + extension;
    }
    Put(node, "extensions", extensions);
    for (const AttributeDefinition& attribute : declaration.attributes) {
        WriteAttribute(node, attribute);
    }
    for (const GroupDefinition& group : declaration.groups) {
        WriteGroup(node, group);
    }
}

}  // namespace

kxString WriteDeclarations(
    const std::vector<std::unique_ptr<const ContentDefinition>>& definitions) {
    pugi::xml_document document;
    pugi::xml_node declaration = document.append_child(pugi::node_declaration);
    declaration.append_attribute("version").set_value("1.0");
    declaration.append_attribute("encoding").set_value("UTF-8");
    pugi::xml_node root = document.append_child("catalogue");
    root.append_attribute("version").set_value("1");
    for (const auto& definition : definitions) {
        WriteDefinition(root, definition->Declaration());
    }
    TextWriter writer;
    document.save(writer, "  ", pugi::format_indent, pugi::encoding_utf8);
    return writer.Take();
}

}  // namespace kxudm::catalogue
