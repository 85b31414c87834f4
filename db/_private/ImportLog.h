// Sends the files that an import leaves out to the host's log, while it lives. Whoever listens to
// the session's progress already goes on hearing everything.
#pragma once

#include <kxudm/UDMProgress.h>

#include <optional>

#include "frwk/KXCTLogger.h"

namespace kxct {

class ImportLog : public kxudm::IUDMProgressListener {
  public:
    // Does nothing for a session that tells no progress.
    explicit ImportLog(const boost::shared_ptr<kxudm::IUDMProfile>& profile);
    ImportLog(const ImportLog&) = delete;
    ImportLog& operator=(const ImportLog&) = delete;
    ~ImportLog() override;

    bool Advance(const kxudm::UDMProgress& progress) override;
    void Failed(const kxString& item, const kxString& reason) override;

  private:
    kxudm::IUDMProgressListener* _listener = nullptr;
    KXCTLogger _logger;
    std::optional<kxudm::UDMProgressScope> _scope;
};

}  // namespace kxct
