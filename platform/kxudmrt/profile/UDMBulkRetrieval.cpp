#include <kxudm/IUDMProfile.h>
#include <kxudm/UDMBulkRetrieval.h>
#include <kxudm/spi/IBulkRetrieval.h>

namespace kxudm {

spi::IBulkRetrieval::~IBulkRetrieval() = default;

UDMBulkRetrieval::UDMBulkRetrieval(const boost::shared_ptr<IUDMProfile>& profile)
    : _profile(profile), _source(dynamic_cast<spi::IBulkRetrieval*>(profile.get())) {
    if (!profile) {
        throw UDMException("A bulk retrieval needs a session; the profile is null");
    }
    if (_source == nullptr) {
        throw UDMNotSupportedException("The data source of session " + profile->GetSessionId() +
                                       " doesn't offer bulk retrieval; retrieve one by one");
    }
}

void UDMBulkRetrieval::Add(const UDMItemHandle& handle, const kxString& folder, bool withChildren) {
    _wanted.push_back({handle, folder, withChildren});
}

void UDMBulkRetrieval::Run(kxStlVector<kxString>& paths, bool overwrite) {
    _source->RetrieveBulk(_wanted, overwrite, paths);
    _wanted.clear();
}

}  // namespace kxudm
