// Content definitions as handles of a session see them: the catalogue behind the interface's
// states.
#pragma once

#include <kxudm/spi/DefinitionState.h>

#include "profile/Session.h"

namespace kxudm::profile {

// Answers the questions of UDMProfileUtils as long as the session is open, from the catalogue as it
// is when asked. What was answered stays as it was.
class DefinitionSource final : public spi::DefinitionSource {
  public:
    explicit DefinitionSource(const boost::shared_ptr<Session>& session) : _session(session) {}

    UDMContentDefinitionHandle ContentDefinition(const kxString& definition) override;
    UDMAttributeDefinitionHandle AttributeDefinition(const kxString& definition,
                                                     const kxString& attribute) override;
    kxStlVector<kxString> DefinitionNames() override;
    kxStlVector<boost::shared_ptr<UDMContentDefinition>> Definitions() override;
    kxStlSet<kxString> ClassNames() override;
    void AllowedChildren(const kxString& definition,
                         kxStlVector<kxString>& names,
                         const kxString& group) override;
    void GroupNames(const kxString& definition,
                    kxStlVector<kxString>& names,
                    const kxString& category) override;
    kxString DefinitionForExtension(const kxString& extension) override;

  private:
    [[nodiscard]] std::shared_ptr<const catalogue::Catalogue> Catalogue() const;

    boost::weak_ptr<Session> _session;
};

}  // namespace kxudm::profile
