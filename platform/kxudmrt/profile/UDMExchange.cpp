#include <kxudm/IUDMProfile.h>
#include <kxudm/UDMExchange.h>
#include <kxudm/spi/IExchange.h>

#include <algorithm>

namespace kxudm {

spi::IExchange::~IExchange() = default;

std::size_t UDMImportReport::Count(UDMImportOutcome outcome) const {
    return static_cast<std::size_t>(
        std::count_if(entities.begin(), entities.end(), [&](const UDMImportedEntity& each) {
            return each.outcome == outcome;
        }));
}

UDMExchange::UDMExchange(const boost::shared_ptr<IUDMProfile>& profile)
    : _profile(profile), _exchange(dynamic_cast<spi::IExchange*>(profile.get())) {
    if (!profile) {
        throw UDMException("Export and import need a session; the profile is null");
    }
    if (_exchange == nullptr) {
        throw UDMNotSupportedException("The data source of session " + profile->GetSessionId() +
                                       " has no archives; ask its administrator");
    }
}

void UDMExchange::Export(const kxString& path, const kxStlVector<kxString>& uids, int scope) {
    _profile->Export(path, uids, scope);
}

UDMImportReport UDMExchange::Import(const kxString& path) {
    return _exchange->ImportArchive(path);
}

const char* UDMExchange::Name(UDMImportOutcome outcome) {
    switch (outcome) {
        case UDMImportOutcome::New:
            return "new";
        case UDMImportOutcome::Equal:
            return "equal";
        case UDMImportOutcome::Appended:
            return "appended";
        case UDMImportOutcome::Branched:
            return "branched";
        case UDMImportOutcome::Kept:
            return "kept";
        case UDMImportOutcome::SamePlace:
            return "same place";
        case UDMImportOutcome::Refused:
            return "refused";
    }
    return "unknown";
}

}  // namespace kxudm
