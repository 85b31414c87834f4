#include "frwk/KXCTLogger.h"

#include <kxct/EntryPoints.h>
#include <kxlmcore/Message.h>
#include <kxlmcore/iFileMgr.h>
#include <kxlmcore/iSettings.h>
#include <kxlmcore/kxLMUtls.h>
#include <kxlmosa/osaTime.h>
#include <kxutl/kxVariant.h>

#include <array>
#include <utility>

#include "frwk/_private/MessageFormat.h"

namespace kxct {

namespace {

// The logger works on numbers: types above the last of these have no prefix.
constexpr std::array<const char*, 5> prefixes = {
    "MSG: ", "INFO: ", "WARNING: ", "ERROR: ", "FATAL: "};
constexpr unsigned int SERIOUS = 3;

const char* PrefixOf(unsigned int type) {
    return type < prefixes.size() ? prefixes[type] : "";
}

kxString WithPosition(const char* file, int line, const kxString& text) {
    return kxString(file != nullptr ? file : "") + "(" + std::to_string(line) + "): " + text;
}

void SendToFileMgr(unsigned int type, const kxString& text) {
    kxlm::iFileMgr* const manager = kxLMUtls::GetFileMgr();
    if (type >= SERIOUS && manager != nullptr) {
        manager->LogMessage(type, text);
    }
}

void Put(const kxString& text, std::FILE* file) {
    static_cast<void>(std::fwrite(text.data(), 1, text.size(), file));
}

}  // namespace

KXCTLogger::KXCTLogger(int mode, kxString path) : _logFilePath(std::move(path)), _mode(mode) {
    if (_mode == 0) {
        _logFile = std::fopen(_logFilePath.c_str(), "a+");
    }
}

KXCTLogger::~KXCTLogger() {
    if (_logFile != nullptr) {
        std::fclose(_logFile);
    }
}

void KXCTLogger::_WriteLine(const kxString& line) {
    kxString time;
    osaTime::GetCurrentTime().GetFormatTime("%c", time);
    Put(time + " :: ", _logFile);
    Put(line, _logFile);
    Put("\n", _logFile);
    std::fflush(_logFile);
}

void KXCTLogger::LogMessage(unsigned int type, const kxString& text) {
    if (_mode != 0) {
        SendToFileMgr(type, text);
    } else if (_logFile != nullptr && std::cmp_greater_equal(type, _logLevel)) {
        _WriteLine(PrefixOf(type) + text);
    }
}

void KXCTLogger::LogMessage(const kxlm::Message& message) {
    if (_mode != 0) {
        SendToFileMgr(message.GetType(), message.GetMessage());
    } else {
        LogMessage(message.GetType(), message.GetMessage());
    }
}

void KXCTLogger::LogMessage(unsigned int type, const kxString& text, const char* file, int line) {
    if (_mode != 0) {
        SendToFileMgr(type, WithPosition(file, line, text));
    } else {
        LogMessage(type, text);
    }
}

void KXCTLogger::LogMessage(const kxlm::Message& message, const char* file, int line) {
    LogMessage(message.GetType(), message.GetMessage(), file, line);
}

void KXCTLogger::LogMessage(const kxlm::Message& message,
                            const char* file,
                            int line,
                            const kxString& extra) {
    const kxString text = WithPosition(file, line, message.GetMessage());
    if (_mode != 0) {
        SendToFileMgr(message.GetType(), text);
    } else {
        LogMessage(message.GetType(), text + "\nAdditional Info:" + extra);
    }
}

bool KXCTLogger::SupportsNewInterface() {
    return true;
}

void KXCTLogger::LogMessageExtended(const kxString& text, kxStlVector<kxString> details) {
    if (_mode != 0) {
        SendToFileMgr(SERIOUS, text);
    } else if (_logFile != nullptr) {
        _WriteLine(details.empty() ? text : FormatMessage(text, details));
    }
}

}  // namespace kxct

kxlm::iMessageLogger* KXCT_CreateLogger(int mode, kxlm::iSettings* settings) {
    auto* logger = new kxct::KXCTLogger(mode, settings->GetString("KXEDMLogFilePath", 1, 0));
    logger->SetLogLevel(kxVariant(settings->GetString("KXEDMLogLevel", 1, 0)).GetInteger());
    return logger;
}
