#include <boost/smart_ptr/make_shared.hpp>

#include "profile/DefinitionRecords.h"
#include "profile/Definitions.h"
#include "profile/Profile.h"

namespace kxudm::profile {

Profile::~Profile() = default;

void Profile::Connect(boost::shared_ptr<IUDMProfileSlot>& slot) {
    // What was done before is told before: the new slot must not hear of it.
    _session->Poll("Connect");
    _session->Slots().Connect(slot, _session->Id());
}

void Profile::Disconnect(boost::shared_ptr<IUDMProfileSlot>& slot) {
    _session->RequireOpen("Disconnect");
    _session->Slots().Disconnect(slot, _session->Id());
}

kxString Profile::GetSessionId() {
    return _session->Id();
}

void Profile::DumpSession() {
    _session->Dump();
}

void Profile::GetContentDefinitionMetadata(const kxString& definition,
                                           kxStlVector<UDMCdefMetaData>& metadata) {
    _session->Poll("GetContentDefinitionMetadata");
    AppendMetadata(_session->Catalogue()->Get(definition), metadata);
}

UDMProfileUtils Profile::GetProfileUtils() {
    _session->RequireOpen("GetProfileUtils");
    return UDMProfileUtils(boost::make_shared<DefinitionSource>(_session));
}

void Profile::BeginBulk() {
    _session->BeginBulk();
}

void Profile::CommitBulk() {
    _session->CommitBulk();
}

void Profile::RollbackBulk() noexcept {
    _session->RollbackBulk();
}

IUDMProgressListener* Profile::SetProgressListener(IUDMProgressListener* listener) noexcept {
    IUDMProgressListener* const before = _session->ProgressListener();
    _session->SetProgressListener(listener);
    return before;
}

IUDMProgressListener* Profile::ProgressListener() const noexcept {
    return _session->ProgressListener();
}

}  // namespace kxudm::profile
