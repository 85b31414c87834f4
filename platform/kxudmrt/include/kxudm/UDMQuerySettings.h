// Options of a query.
//
//     UDMQuerySettingHandle settings;
//     settings.GetSettings().SetIgnoreCase(true);
//     profile->RunQuery(hits, "class == UDMPart", -1, 0, 0, settings, false, false);
#pragma once

#include <kxudm/UDMHandle.h>

#include <boost/smart_ptr/shared_ptr.hpp>

namespace kxudm {

class UDMQuerySettings {
  public:
    // Whether entities of definitions that are excluded from search are found too. False at first.
    void SearchInExcluded(bool search) { _searchInExcluded = search; }
    bool SearchesInExcluded() const { return _searchInExcluded; }
    // Whether case and accents are folded. True at first.
    void SetIgnoreCase(bool ignore) { _ignoreCase = ignore; }
    bool IgnoresCase() const { return _ignoreCase; }

  private:
    bool _searchInExcluded = false;
    bool _ignoreCase = true;
};

// Copies share one UDMQuerySettings.
class KXUDMRT_EXPORT UDMQuerySettingHandle : public UDMHandle {
  public:
    UDMQuerySettingHandle();
    UDMQuerySettingHandle(const UDMQuerySettingHandle&) = default;
    UDMQuerySettingHandle& operator=(const UDMQuerySettingHandle&) = default;
    ~UDMQuerySettingHandle() override;

    kxString ToString() const override;
    UDMQuerySettings& GetSettings() { return *_settings; }
    const UDMQuerySettings& GetSettings() const { return *_settings; }

  private:
    boost::shared_ptr<UDMQuerySettings> _settings;
};

}  // namespace kxudm
