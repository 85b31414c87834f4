#include <kxudm/AddFileBuilder.h>
#include <kxudm/ClassificationReader.h>
#include <kxudm/UDMHistoryNode.h>
#include <kxudm/UDMProfileUtils.h>
#include <kxudm/UDMQuerySettings.h>
#include <kxudm/UDMRelationHandle.h>
#include <kxudm/spi/DefinitionState.h>
#include <kxudm/spi/ItemState.h>

#include <boost/smart_ptr/make_shared.hpp>
#include <utility>

namespace kxudm {

namespace {

const kxString& EmptyText() {
    static const kxString& text = *new kxString;
    return text;
}

[[noreturn]] void ThrowEmpty(const char* handle, const char* question) {
    throw UDMException(std::string("An empty ") + handle + " has no " + question +
                       "; it must stand for something first");
}

}  // namespace

UDMHandle::~UDMHandle() = default;

kxString UDMHandle::ToString() const {
    return "empty handle";
}

UDMItemHandle::UDMItemHandle() = default;
UDMItemHandle::UDMItemHandle(boost::shared_ptr<spi::ItemState> state) : _state(std::move(state)) {}
UDMItemHandle::UDMItemHandle(const UDMItemHandle&) = default;
UDMItemHandle::UDMItemHandle(UDMItemHandle&&) noexcept = default;
UDMItemHandle& UDMItemHandle::operator=(const UDMItemHandle&) = default;
UDMItemHandle& UDMItemHandle::operator=(UDMItemHandle&&) noexcept = default;
UDMItemHandle::~UDMItemHandle() = default;

const spi::ItemState& UDMItemHandle::Loaded(const char* question) const {
    if (!_state) {
        ThrowEmpty("item handle", question);
    }
    return *_state;
}

kxString UDMItemHandle::ToString() const {
    return _state ? kxString(_state->Cdef() + " " + _state->Uid()) : UDMHandle::ToString();
}

const kxString& UDMItemHandle::Uid() const {
    return _state ? _state->Uid() : EmptyText();
}
kxString UDMItemHandle::GetCdef() const {
    return _state ? _state->Cdef() : kxString();
}
kxString UDMItemHandle::GetDisplayName() const {
    return _state ? _state->DisplayName() : kxString();
}
int UDMItemHandle::GetRevision() const {
    return Loaded("revision").Revision();
}
kxVariant UDMItemHandle::GetAttributeValue(const kxString& name) const {
    return Loaded("attributes").AttributeValue(name);
}
kxStlVector<kxString> UDMItemHandle::GetFilteredAttributeNameList(bool omitSystem) const {
    return Loaded("attributes").AttributeNames(omitSystem);
}
kxVariant UDMItemHandle::GetCreationTime() const {
    return Loaded("creation time").CreationTime();
}
kxVariant UDMItemHandle::GetModifiedTime() const {
    return Loaded("modification time").ModifiedTime();
}
kxVariant UDMItemHandle::GetCreatedBy() const {
    return Loaded("creating user").CreatedBy();
}
kxVariant UDMItemHandle::GetModifiedBy() const {
    return Loaded("modifying user").ModifiedBy();
}
bool UDMItemHandle::IsRootEntity() const {
    return _state && _state->IsRootEntity();
}
bool UDMItemHandle::hasparent() const {
    return _state && _state->HasParent();
}
bool UDMItemHandle::IsEditable() const {
    return _state && _state->IsEditable();
}

namespace spi {

ItemState::~ItemState() = default;
kxVariant ItemState::CreationTime() const {
    return {};
}
kxVariant ItemState::ModifiedTime() const {
    return {};
}
kxVariant ItemState::CreatedBy() const {
    return {};
}
kxVariant ItemState::ModifiedBy() const {
    return {};
}
bool ItemState::IsRootEntity() const {
    return true;
}
bool ItemState::HasParent() const {
    return false;
}
bool ItemState::IsEditable() const {
    return false;
}
std::optional<bool> ItemState::IsMasterClassification() const {
    return std::nullopt;
}

AttributeDefinitionState::~AttributeDefinitionState() = default;
bool AttributeDefinitionState::ValidValues(kxStlVector<kxString>& /*values*/) const {
    return false;
}
ContentDefinitionState::~ContentDefinitionState() = default;
DefinitionSource::~DefinitionSource() = default;
kxString DefinitionSource::DefinitionForExtension(const kxString& /*extension*/) {
    return {};
}

}  // namespace spi

ClassificationReader& ClassificationReader::operator=(const UDMItemHandle& handle) {
    _handle = handle;
    return *this;
}
ClassificationReader::~ClassificationReader() = default;
kxString ClassificationReader::GetName() const {
    return "ClassificationReader";
}
bool ClassificationReader::IsSupported() const {
    return !_handle.IsEmpty() && _handle.State()->IsMasterClassification().has_value();
}
bool ClassificationReader::IsMaster() const {
    return !_handle.IsEmpty() && _handle.State()->IsMasterClassification().value_or(false);
}

UDMAttributeDefinitionHandle::UDMAttributeDefinitionHandle(
    boost::shared_ptr<const spi::AttributeDefinitionState> state)
    : _state(std::move(state)) {}
UDMAttributeDefinitionHandle::~UDMAttributeDefinitionHandle() = default;
const spi::AttributeDefinitionState& UDMAttributeDefinitionHandle::State() const {
    if (!_state) {
        ThrowEmpty("attribute definition handle", "properties");
    }
    return *_state;
}
kxString UDMAttributeDefinitionHandle::ToString() const {
    return _state ? kxString("attribute " + _state->Name()) : UDMHandle::ToString();
}
kxString UDMAttributeDefinitionHandle::GetName() const {
    return State().Name();
}
kxString UDMAttributeDefinitionHandle::GetDisplayName() const {
    return State().DisplayName();
}
kxString UDMAttributeDefinitionHandle::GetDescription() const {
    return State().Description();
}
kxString UDMAttributeDefinitionHandle::GetCategory() const {
    return State().Category();
}
kxString UDMAttributeDefinitionHandle::GetDataType() const {
    return State().DataType();
}
bool UDMAttributeDefinitionHandle::IsSystem() const {
    return State().IsSystem();
}
bool UDMAttributeDefinitionHandle::IsDisplayable() const {
    return State().IsDisplayable();
}
bool UDMAttributeDefinitionHandle::IsMandatory() const {
    return State().IsMandatory();
}
bool UDMAttributeDefinitionHandle::IsEditable() const {
    return State().IsEditable();
}
bool UDMAttributeDefinitionHandle::GetStaticValidValues(kxStlVector<kxString>& values) const {
    values.clear();
    return State().ValidValues(values);
}

UDMContentDefinitionHandle::UDMContentDefinitionHandle(
    boost::shared_ptr<const spi::ContentDefinitionState> state)
    : _state(std::move(state)) {}
UDMContentDefinitionHandle::~UDMContentDefinitionHandle() = default;
const spi::ContentDefinitionState& UDMContentDefinitionHandle::State() const {
    if (!_state) {
        ThrowEmpty("content definition handle", "properties");
    }
    return *_state;
}
kxString UDMContentDefinitionHandle::ToString() const {
    return _state ? kxString("content definition " + _state->Name()) : UDMHandle::ToString();
}
const kxString& UDMContentDefinitionHandle::GetType() const {
    return State().Type();
}
void UDMContentDefinitionHandle::DisplayName(kxString& name) const {
    name = State().DisplayName();
}
void UDMContentDefinitionHandle::GetAttributeNames(kxStlVector<kxString>& names) const {
    State().AttributeNames(names);
}
void UDMContentDefinitionHandle::GetAttributeDefinitions(
    kxStlVector<UDMAttributeDefinitionHandle>& definitions) const {
    State().Attributes(definitions);
}

UDMContentDefinition::UDMContentDefinition(const kxString& name,
                                           const UDMContentDefinitionHandle& handle)
    : _name(name), _handle(handle) {}
UDMContentDefinition::~UDMContentDefinition() = default;

UDMProfileUtils::UDMProfileUtils(boost::shared_ptr<spi::DefinitionSource> source)
    : _source(std::move(source)) {}
UDMProfileUtils::~UDMProfileUtils() = default;
UDMContentDefinitionHandle UDMProfileUtils::GetContentDefinitionHandle(
    const kxString& definition) const {
    return _source->ContentDefinition(definition);
}
UDMAttributeDefinitionHandle UDMProfileUtils::GetAttributeDefinitionHandle(
    const kxString& definition, const kxString& attribute) const {
    return _source->AttributeDefinition(definition, attribute);
}
kxStlVector<kxString> UDMProfileUtils::GetRegisteredContentDefinitionNames() const {
    return _source->DefinitionNames();
}
kxStlVector<boost::shared_ptr<UDMContentDefinition>>
UDMProfileUtils::GetRegisteredContentDefinition() const {
    return _source->Definitions();
}
kxStlSet<kxString> UDMProfileUtils::GetRegisteredContentDefinitionClassNames() const {
    return _source->ClassNames();
}
void UDMProfileUtils::GetAllowedChildCdefNames(const kxString& definition,
                                               kxStlVector<kxString>& names,
                                               const kxString& group) const {
    _source->AllowedChildren(definition, names, group);
}
void UDMProfileUtils::GetGroupNames(const kxString& definition,
                                    kxStlVector<kxString>& names,
                                    // By value: the interface's form.
                                    // NOLINTNEXTLINE(performance-unnecessary-value-param)
                                    kxString category) const {
    _source->GroupNames(definition, names, category);
}
kxString UDMProfileUtils::FindContentDefinitionByExtension(const kxString& extension) const {
    return _source->DefinitionForExtension(extension);
}

UDMRelationHandle::UDMRelationHandle() = default;
UDMRelationHandle::UDMRelationHandle(const UDMItemHandle& first,
                                     const UDMItemHandle& second,
                                     const kxString& type)
    : _first(first), _second(second), _type(type) {}
UDMRelationHandle::~UDMRelationHandle() = default;
kxString UDMRelationHandle::ToString() const {
    return _first.IsEmpty() ? UDMHandle::ToString()
                            : kxString(_type + " " + _first.Uid() + " " + _second.Uid());
}

UDMQuerySettingHandle::UDMQuerySettingHandle()
    : _settings(boost::make_shared<UDMQuerySettings>()) {}
UDMQuerySettingHandle::~UDMQuerySettingHandle() = default;
kxString UDMQuerySettingHandle::ToString() const {
    return "query settings";
}

AddFileBuilder::AddFileBuilder(Action action) : _action(std::move(action)) {}
AddFileBuilder::AddFileBuilder(const AddFileBuilder&) = default;
AddFileBuilder& AddFileBuilder::operator=(const AddFileBuilder&) = default;
AddFileBuilder::~AddFileBuilder() = default;
AddFileBuilder& AddFileBuilder::setFilePath(const kxString& path) {
    _path = path;
    return *this;
}
AddFileBuilder& AddFileBuilder::setIsExternal(bool external) {
    _external = external;
    return *this;
}
void AddFileBuilder::go() {
    _action(_path, _external);
}

}  // namespace kxudm
