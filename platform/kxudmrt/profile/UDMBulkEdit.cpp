#include <kxudm/IUDMProfile.h>
#include <kxudm/UDMBulkEdit.h>
#include <kxudm/spi/IBulkEdit.h>

#include <utility>

namespace kxudm {

spi::IBulkEdit::~IBulkEdit() = default;

UDMBulkEdit::UDMBulkEdit(const boost::shared_ptr<IUDMProfile>& profile)
    : _profile(profile), _bulk(dynamic_cast<spi::IBulkEdit*>(profile.get())) {
    if (!profile) {
        throw UDMException("A bulk edit needs a session; the profile is null");
    }
    if (_bulk == nullptr) {
        throw UDMNotSupportedException("The data source of session " + profile->GetSessionId() +
                                       " doesn't offer bulk edits; change one by one");
    }
    _bulk->BeginBulk();
}

UDMBulkEdit::~UDMBulkEdit() {
    if (_bulk != nullptr) {
        _bulk->RollbackBulk();
    }
}

void UDMBulkEdit::Commit() {
    if (_bulk == nullptr) {
        throw UDMException("The bulk edit of session " + _profile->GetSessionId() +
                           " is committed already; begin another one");
    }
    std::exchange(_bulk, nullptr)->CommitBulk();
}

}  // namespace kxudm
