// Content definitions made of plain fields, and the source that answers from them.
//
//     auto definitions = boost::make_shared<FakeDefinitions>();
//     auto& part = definitions->Add("UDMPart");
//     part.attributes.push_back({.name = "mass", .displayName = "Mass", .dataType = "Double"});
//     part.groups.push_back({"parts", "owner", {"UDMPart"}});
//     ON_CALL(*profile, GetProfileUtils).WillByDefault(
//         [definitions] { return kxudm::UDMProfileUtils(definitions); });
#pragma once

#include <gmock/gmock.h>
#include <kxudm/UDMProfileUtils.h>
#include <kxudm/spi/DefinitionState.h>

#include <deque>
#include <vector>

#include "tests/mock/MockSignatures.h"

namespace kxct::mock {

struct FakeAttribute {
    kxString name{};
    kxString displayName{};
    kxString description{};
    kxString category{};
    kxString dataType = "String";
    bool isSystem = false;
    bool isDisplayable = true;
    bool isMandatory = false;
    bool isEditable = true;
    // Empty: any value.
    kxStlVector<kxString> validValues{};
};

struct FakeGroup {
    kxString name{};
    kxString category{};
    kxStlVector<kxString> allowed{};
};

struct FakeDefinition {
    kxString name{};
    kxString type = "Normal";
    kxString displayName{};
    std::vector<FakeAttribute> attributes{};
    std::vector<FakeGroup> groups{};
};

kxudm::UDMAttributeDefinitionHandle HandleOf(const FakeAttribute& attribute);
kxudm::UDMContentDefinitionHandle HandleOf(const FakeDefinition& definition);

// Answers from the definitions that were added. Unknown names throw UDMNotFoundException, "no
// definition <name>", "no attribute <name>", "no group <name>".
class FakeDefinitions : public kxudm::spi::DefinitionSource {
  public:
    FakeDefinitions();
    ~FakeDefinitions() override;

    // The reference stays valid while definitions are added. The display name is `name` until set.
    FakeDefinition& Add(const kxString& name);

    kxudm::UDMContentDefinitionHandle ContentDefinition(const kxString& definition) override;
    kxudm::UDMAttributeDefinitionHandle AttributeDefinition(const kxString& definition,
                                                            const kxString& attribute) override;
    kxStlVector<kxString> DefinitionNames() override;
    kxStlVector<boost::shared_ptr<kxudm::UDMContentDefinition>> Definitions() override;
    // The names of all definitions.
    kxStlSet<kxString> ClassNames() override;
    void AllowedChildren(const kxString& definition,
                         kxStlVector<kxString>& names,
                         const kxString& group) override;
    void GroupNames(const kxString& definition,
                    kxStlVector<kxString>& names,
                    const kxString& category) override;

  private:
    const FakeDefinition& Find(const kxString& definition) const;

    std::deque<FakeDefinition> _definitions;
};

// The same questions as a GoogleMock, for proving arguments.
class MockDefinitions : public kxudm::spi::DefinitionSource {
  public:
    using Names = kxStlVector<kxString>;

    MockDefinitions();
    ~MockDefinitions() override;

    MOCK_METHOD(kxudm::UDMContentDefinitionHandle,
                ContentDefinition,
                (const kxString&),
                (override));
    MOCK_METHOD(kxudm::UDMAttributeDefinitionHandle,
                AttributeDefinition,
                (const kxString&, const kxString&),
                (override));
    MOCK_METHOD(Names, DefinitionNames, (), (override));
    MOCK_METHOD(kxStlVector<boost::shared_ptr<kxudm::UDMContentDefinition>>,
                Definitions,
                (),
                (override));
    MOCK_METHOD(kxStlSet<kxString>, ClassNames, (), (override));
    MOCK_METHOD(void, AllowedChildren, (const kxString&, Names&, const kxString&), (override));
    MOCK_METHOD(void, GroupNames, (const kxString&, Names&, const kxString&), (override));
};

}  // namespace kxct::mock
