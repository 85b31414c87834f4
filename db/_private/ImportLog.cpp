#include "db/_private/ImportLog.h"

#include <kxlmcore/Message.h>
#include <kxudm/IUDMProfile.h>
#include <kxudm/spi/IProgressSource.h>

namespace kxct {

namespace {

// Of the logger: serious messages go to the file manager of the host.
constexpr int MODE_FILE_MANAGER = 1;

}  // namespace

ImportLog::ImportLog(const boost::shared_ptr<kxudm::IUDMProfile>& profile)
    : _logger(MODE_FILE_MANAGER, kxString()) {
    if (auto* source = dynamic_cast<kxudm::spi::IProgressSource*>(profile.get())) {
        _listener = source->ProgressListener();
        _scope.emplace(profile, *this);
    }
}

ImportLog::~ImportLog() = default;

bool ImportLog::Advance(const kxudm::UDMProgress& progress) {
    return _listener == nullptr || _listener->Advance(progress);
}

void ImportLog::Failed(const kxString& item, const kxString& reason) {
    _logger.LogMessage(kxlm::LM_MSG_ERROR, "\"" + item + "\" was not imported: " + reason);
    if (_listener != nullptr) {
        _listener->Failed(item, reason);
    }
}

}  // namespace kxct
