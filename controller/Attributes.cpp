// Attributes: the repository's, those that a script computes, and the settings document over both.
#include <kxct/ControllerImpl.h>
#include <kxct/KXCTFramework.h>
#include <kxct/PASettings.h>
#include <kxct/SignalHandler.h>
#include <kxctinterfaces/Attributes.h>
#include <kxinterp/kxPointerRegistry.h>

#include <algorithm>
#include <typeinfo>

namespace kxct {

namespace {

bool Contains(const kxStlVector<kxString>& names, const kxString& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// How scripts get an item: as a pointer of the interface's type.
kxVariant PointerTo(Item* item) {
    kxVariant pointer;
    pointer.SetPointer(item, typeid(Item*).name());
    pointer._extract_simple_type();
    return pointer;
}

// Knows whether an item is still there after a script, which may have cleared the cache.
class ItemWatch {
  public:
    explicit ItemWatch(Item* item)
        : _text(kxPointerRegistry::ToText(item, PointerTo(item).GetPointerTypeName())) {}

    bool IsAlive() const {
        void* pointer = nullptr;
        kxString type;
        return kxPointerRegistry::FromText(_text, pointer, type);
    }

  private:
    kxString _text;
};

}  // namespace

bool ControllerImpl::_IsScripted(const kxString& attribute) const {
    return _scriptedAttributes.find(attribute) != _scriptedAttributes.end();
}

bool ControllerImpl::_IsInAttributeSettings(const kxString& definition) const {
    return Contains(_attributeSettings->GetContentDefinitions(), definition);
}

const kxVariant ControllerImpl::GetAttributeValue(const kxString& uid,
                                                  const kxString& attribute) const {
    // Finding an item may fill a cache, which doesn't show in what the controller answers.
    Item* item = const_cast<ControllerImpl*>(this)->GetItem(uid, false);
    return item != nullptr ? GetAttributeValue(item, attribute) : kxVariant();
}

const kxVariant ControllerImpl::GetAttributeValue(Item* item, const kxString& attribute) const {
    if (item == nullptr) {
        return {};
    }
    return _IsScripted(attribute) ? _GetScriptedAttributeValue(item, attribute)
                                  : item->GetAttributeValue(attribute);
}

bool ControllerImpl::SetAttributeValue(const kxString& uid,
                                       const kxString& attribute,
                                       kxVariant& value) {
    Item* item = GetItem(uid, false);
    return item != nullptr && SetAttributeValue(item, attribute, value);
}

bool ControllerImpl::SetAttributeValue(Item* item, const kxString& attribute, kxVariant& value) {
    if (item == nullptr) {
        return false;
    }
    if (!_IsScripted(attribute)) {
        return item->SetAttributeValue(attribute, value);
    }
    const ItemWatch watch(item);
    const bool answer = _SetScriptedAttributeValue(item, attribute, value);
    if (watch.IsAlive()) {
        _RaiseItemUpdated(item);
    }
    return answer;
}

bool ControllerImpl::NextAttributeValue(Item* item, const kxString& attribute) {
    if (item == nullptr) {
        return false;
    }
    if (!_IsScripted(attribute)) {
        return item->NextAttributeValue(attribute);
    }
    const ItemWatch watch(item);
    const bool answer = _NextScriptedAttributeValue(item, attribute);
    if (watch.IsAlive()) {
        _RaiseItemUpdated(item);
    }
    return answer;
}

bool ControllerImpl::IsAttributeEditable(Item* item, const kxString& attribute) {
    if (item == nullptr) {
        return false;
    }
    return _IsScripted(attribute) ? _IsScriptedAttributeEditable(item, attribute)
                                  : item->IsAttributeEditable(attribute);
}

void ControllerImpl::_RaiseItemUpdated(Item* item) {
    if (SignalHandler* handler = GetSignalHandler(MANAGER_DEFAULT)) {
        handler->ItemUpdated.raise(item);
    }
}

const kxVariant ControllerImpl::GetAttributeDescription(Item* item,
                                                        const kxString& attribute,
                                                        const kxString& key) const {
    if (_attributeSettings != nullptr && item != nullptr) {
        const kxString definition =
            item->GetAttributeValue(ATTRIBUTE_NAME::CONTENTDEFINITION).GetString();
        if (_IsInAttributeSettings(definition)) {
            kxVariant described =
                _attributeSettings->GetMetadataAttribute(definition, attribute, key);
            if (!described.IsEmpty()) {
                return described;
            }
        }
    }
    if (_IsScripted(attribute)) {
        return _GetScriptedAttributeDescription(item, attribute, key);
    }
    return item != nullptr ? item->GetAttributeDescription(attribute, key) : kxVariant();
}

const kxStlVector<kxString> ControllerImpl::GetAttributeNameList(Item* item,
                                                                 bool omitSystem,
                                                                 bool displayableOnly,
                                                                 bool settingsOnly) const {
    if (item == nullptr) {
        return {};
    }
    if (_attributeSettings != nullptr) {
        const kxString definition =
            item->GetAttributeValue(ATTRIBUTE_NAME::CONTENTDEFINITION).GetString();
        if (_IsInAttributeSettings(definition)) {
            kxStlVector<kxString> names = _attributeSettings->GetMetadataNames(definition);
            if (!settingsOnly) {
                for (const kxString& name :
                     item->GetAttributeNameList(omitSystem, displayableOnly)) {
                    if (!Contains(names, name)) {
                        names.push_back(name);
                    }
                }
            }
            return names;
        }
    }
    kxStlVector<kxString> names = item->GetAttributeNameList(omitSystem, displayableOnly);
    const kxStlVector<kxString> scripted = GetScriptedAttributes();
    names.insert(names.end(), scripted.begin(), scripted.end());
    return names;
}

const kxStlVector<kxString> ControllerImpl::GetAttributeNameDiplaynameMap(
    Item* item, bool omitSystem, bool displayableOnly) const {
    return item != nullptr ? item->GetAttributeNameDiplaynameMap(omitSystem, displayableOnly)
                           : kxStlVector<kxString>();
}

bool ControllerImpl::HasPendingAttributeChanges() const {
    return false;
}

void ControllerImpl::SetAttributeSettingsFile(const kxString& path) {
    if (path.empty()) {
        return;
    }
    auto* settings = new PASettings(path);
    delete _attributeSettings;
    _attributeSettings = settings;
}

bool ControllerImpl::RegisterScriptedAttribute(const kxString& attribute,
                                               const kxString& procedure) {
    // The key ends at the first zero byte: scripts see names as C strings.
    return _scriptedAttributes.emplace(kxString(attribute.c_str()), procedure).second;
}

bool ControllerImpl::UnRegisterScriptedAttribute(const kxString& attribute) {
    return _scriptedAttributes.erase(attribute) != 0;
}

const kxStlVector<kxString> ControllerImpl::GetScriptedAttributes() const {
    kxStlVector<kxString> names;
    for (const auto& [name, procedure] : _scriptedAttributes) {
        names.push_back(name);
    }
    return names;
}

// What the interpreter reports is not looked at: a script that fails leaves the empty text.
kxVariant ControllerImpl::_AskScript(const kxString& attribute,
                                     const char* verb,
                                     Item* item,
                                     const kxVariant* argument) const {
    const auto found = _scriptedAttributes.find(attribute);
    if (found == _scriptedAttributes.end()) {
        return {};
    }
    kxStlVector<kxVariant> arguments{kxVariant(verb), PointerTo(item)};
    if (argument != nullptr) {
        arguments.push_back(*argument);
    }
    // A copy: the script may take its own attribute out of the map.
    const kxString procedure = found->second;
    kxVariant result(kxString{});
    KXCTFramework::InvokeTclMethod(procedure, arguments, result);
    return result;
}

const kxVariant ControllerImpl::_GetScriptedAttributeValue(Item* item,
                                                           const kxString& attribute) const {
    return _AskScript(attribute, "get", item, nullptr);
}

const kxVariant ControllerImpl::_GetScriptedAttributeDescription(Item* item,
                                                                 const kxString& attribute,
                                                                 const kxString& key) const {
    const kxVariant property(key);
    return _AskScript(attribute, "description", item, &property);
}

bool ControllerImpl::_SetScriptedAttributeValue(Item* item,
                                                const kxString& attribute,
                                                kxVariant& value) {
    return _AskScript(attribute, "set", item, &value).GetBoolean();
}

bool ControllerImpl::_NextScriptedAttributeValue(Item* item, const kxString& attribute) {
    return _AskScript(attribute, "next", item, nullptr).GetBoolean();
}

bool ControllerImpl::_IsScriptedAttributeEditable(Item* item, const kxString& attribute) {
    return _AskScript(attribute, "editable", item, nullptr).GetBoolean();
}

}  // namespace kxct
