#include <kxudm/IUDMProfile.h>
#include <kxudm/UDMProgress.h>
#include <kxudm/spi/IProgressSource.h>

namespace kxudm {

namespace {

spi::IProgressSource* SourceOf(const boost::shared_ptr<IUDMProfile>& profile) {
    if (!profile) {
        throw UDMException("A progress listener needs a session; the profile is null");
    }
    auto* source = dynamic_cast<spi::IProgressSource*>(profile.get());
    if (source == nullptr) {
        throw UDMNotSupportedException("The data source of session " + profile->GetSessionId() +
                                       " doesn't tell progress; do without a listener");
    }
    return source;
}

}  // namespace

spi::IProgressSource::~IProgressSource() = default;

IUDMProgressListener::~IUDMProgressListener() = default;

void IUDMProgressListener::Failed(const kxString& /*item*/, const kxString& /*reason*/) {}

UDMCancelledException::~UDMCancelledException() = default;

UDMProgressScope::UDMProgressScope(const boost::shared_ptr<IUDMProfile>& profile,
                                   IUDMProgressListener& listener)
    : _profile(profile),
      _source(SourceOf(profile)),
      _listener(listener),
      _outer(_source->SetProgressListener(this)) {}

UDMProgressScope::~UDMProgressScope() {
    _source->SetProgressListener(_outer);
}

bool UDMProgressScope::Advance(const UDMProgress& progress) {
    const bool goOn = _listener.Advance(progress);
    _cancelled = _cancelled || !goOn;
    return goOn;
}

void UDMProgressScope::Failed(const kxString& item, const kxString& reason) {
    ++_failures;
    _listener.Failed(item, reason);
}

}  // namespace kxudm
