// A library of simulations that several benchmarks share, open in one session.
//
// Made on first use, so a run that is filtered to one benchmark makes what that one needs. All
// contents are working revisions of the session's user, with eight attributes that hold values:
// name, displayname and ATTRIBUTES.
#pragma once

#include <kxct/DefaultItemManager.h>
#include <kxct/UDMDBCtrl.h>
#include <kxctinterfaces/Controller.h>
#include <kxctinterfaces/Item.h>
#include <kxudm/UDMItemHandle.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <utility>
#include <vector>

#include "Host.h"

namespace bench {

inline constexpr const char* DEFINITION = "UDMSimulation";
inline constexpr std::array ATTRIBUTES{
    "description", "filetype", "solver", "analysistype", "status", "rundate"};
// Texts of this length and form stand in "description"; see DescriptionOf.
kxVariant DescriptionOf(std::int64_t number);
kxString NameOf(std::int64_t number);

// The session that a host's controllers on this library share.
kxct::UDMDBCtrl& SessionOf(Host& host, const kxString& library);

class SampleLibrary {
  public:
    // The one of this size in this process.
    static SampleLibrary& OfSize(std::int64_t size);
    // To be called before main returns: sessions end while everything that they need lives.
    static void CloseAll();

    explicit SampleLibrary(std::int64_t size);

    Host& GetHost() { return _host; }
    kxct::Controller& Controller() { return *_controller; }
    kxct::UDMDBCtrl& Session() { return *_session; }
    std::filesystem::path File() const { return _host.LibraryFile("Sample"); }
    // UIDs of all simulations with their revision, in an order that is mixed but always the same.
    const std::vector<kxString>& Uids() const { return _uids; }
    // A fresh copy of the library's file, for floors that write.
    std::filesystem::path CopyForFloor();

    // Handles of all simulations, in the order of Uids(), and a manager that has their items; made
    // on first use and kept.
    const std::vector<kxudm::UDMItemHandle>& Handles();
    kxct::DefaultItemManager& FullManager();
    // A project that owns `count` simulations in its group "simulations"; made on first use.
    const kxString& ProjectWith(std::int64_t count);

  private:
    void Fill(std::int64_t size);

    TemporaryFolder _folder;
    Host _host;
    kxct::Controller* _controller;
    kxct::UDMDBCtrl* _session;
    std::vector<kxString> _uids;
    std::vector<std::pair<std::int64_t, kxString>> _projects;
    std::vector<kxudm::UDMItemHandle> _handles;
    std::unique_ptr<kxct::DefaultItemManager> _fullManager;
    int _copies = 0;
};

}  // namespace bench
