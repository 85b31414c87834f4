// What a library manager of a host brings along: settings and a file manager.
#pragma once

#include <kxlmcore/iFileMgr.h>
#include <kxlmcore/iSettings.h>
#include <kxlmcore/kxLMUtls.h>
#include <kxutl/kxStlMap.h>
#include <kxutl/kxStlVector.h>

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

class HostSettings : public kxlm::iSettings {
  public:
    HostSettings(std::initializer_list<std::pair<const kxString, kxString>> settings)
        : values(settings) {}
    HostSettings(const HostSettings&) = delete;
    HostSettings& operator=(const HostSettings&) = delete;

    kxString GetString(const kxString& key, int first, int second) override {
        asked.push_back(key + " " + std::to_string(first) + " " + std::to_string(second));
        const auto found = values.find(key);
        return found == values.end() ? kxString() : found->second;
    }

    kxStlMap<kxString, kxString> values;
    std::vector<std::string> asked;
};

// The host's file manager as long as the object lives.
class HostFileMgr : public kxlm::iFileMgr {
  public:
    HostFileMgr() { kxLMUtls::SetFileMgr(this); }
    HostFileMgr(const HostFileMgr&) = delete;
    HostFileMgr& operator=(const HostFileMgr&) = delete;
    ~HostFileMgr() override { kxLMUtls::SetFileMgr(nullptr); }

    void LogMessage(unsigned int type, const kxString& text) override {
        messages.push_back(std::to_string(type) + " " + text);
    }

    std::vector<std::string> messages;
};
