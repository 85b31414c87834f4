#include "tests/mock/FakeItemState.h"

#include <boost/smart_ptr/make_shared.hpp>
#include <cstdlib>

namespace kxct::mock {

FakeItemState::FakeItemState(const kxString& uid_,
                             const kxString& definition_,
                             const kxString& name)
    : uid(uid_), definition(definition_), displayName(name) {
    if (const auto colon = uid.find(':'); colon != kxString::npos) {
        revision = std::atoi(uid.c_str() + colon + 1);
    }
}

FakeItemState::~FakeItemState() = default;

kxVariant FakeItemState::AttributeValue(const kxString& name) const {
    const auto found = attributes.find(name);
    if (found == attributes.end()) {
        throw kxudm::UDMNotFoundException("no attribute " + name);
    }
    return found->second;
}

kxStlVector<kxString> FakeItemState::AttributeNames(bool omitSystem) const {
    kxStlVector<kxString> names;
    for (const auto& [name, value] : attributes) {
        if (!omitSystem || systemAttributes.count(name) == 0) {
            names.push_back(name);
        }
    }
    return names;
}

kxudm::UDMItemHandle HandleOf(const boost::shared_ptr<FakeItemState>& state) {
    return kxudm::UDMItemHandle(state);
}

kxudm::UDMItemHandle NewHandle(const kxString& uid,
                               const kxString& definition,
                               const kxString& name) {
    return HandleOf(boost::make_shared<FakeItemState>(uid, definition, name));
}

}  // namespace kxct::mock
