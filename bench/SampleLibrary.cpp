#include "SampleLibrary.h"

#include <kxct/MasterDBManagerImpl.h>
#include <kxudm/IUDMProfile.h>
#include <kxudm/UDMBulkEdit.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <stdexcept>

#include "Floor.h"

namespace bench {

namespace {

constexpr const char* LIBRARY = "Sample";

std::map<std::int64_t, std::unique_ptr<SampleLibrary>>& Libraries() {
    static std::map<std::int64_t, std::unique_ptr<SampleLibrary>> libraries;
    return libraries;
}

std::string Padded(std::int64_t number) {
    std::string text = std::to_string(number);
    return std::string(9 - std::min<std::size_t>(9, text.size()), '0') + text;
}

}  // namespace

kxVariant DescriptionOf(std::int64_t number) {
    return kxVariant("load case " + Padded(number) + " of the front axle, stiffened");
}

kxString NameOf(std::int64_t number) {
    return kxString("simulation " + Padded(number));
}

kxct::UDMDBCtrl& SessionOf(Host& host, const kxString& library) {
    kxct::UDMDBCtrl* session = host.Impl().Open(library, "ws", "anna", "", kxct::CONN_TYPE_LIBRARY);
    if (session == nullptr) {
        throw std::runtime_error("the library " + library + " did not open");
    }
    return *session;
}

SampleLibrary& SampleLibrary::OfSize(std::int64_t size) {
    auto& library = Libraries()[size];
    if (!library) {
        library = std::make_unique<SampleLibrary>(size);
    }
    return *library;
}

void SampleLibrary::CloseAll() {
    Libraries().clear();
}

SampleLibrary::SampleLibrary(std::int64_t size)
    : _host(_folder.Path()),
      _controller(_host.Create(LIBRARY)),
      _session(&SessionOf(_host, LIBRARY)) {
    Fill(size);
}

void SampleLibrary::Fill(std::int64_t size) {
    _uids.reserve(static_cast<std::size_t>(size));
    kxudm::UDMBulkEdit edit(_session->GetProfile());
    for (std::int64_t i = 0; i < size; ++i) {
        const kxudm::UDMItemHandle content = _session->CreateEntity(DEFINITION, NameOf(i));
        _session->SetMetaData(content, "description", DescriptionOf(i));
        _session->SetMetaData(content, "filetype", kxVariant("input deck"));
        _session->SetMetaData(content, "solver", kxVariant("implicit"));
        _session->SetMetaData(content, "analysistype", kxVariant("Linear static"));
        _session->SetMetaData(content, "rundate", kxVariant("2026-01-31T12:00:00Z"));
        _uids.push_back(content.GetUID());
    }
    edit.Commit();
    std::shuffle(_uids.begin(), _uids.end(), std::mt19937(42));
}

std::filesystem::path SampleLibrary::CopyForFloor() {
    const auto copy = _folder.Path() / ("floor" + std::to_string(++_copies) + ".ldb");
    CopyLibrary(File(), copy);
    return copy;
}

const std::vector<kxudm::UDMItemHandle>& SampleLibrary::Handles() {
    if (_handles.empty()) {
        _handles.reserve(_uids.size());
        for (const kxString& uid : _uids) {
            _handles.push_back(_session->GetUDMItemHandle(uid));
        }
    }
    return _handles;
}

kxct::DefaultItemManager& SampleLibrary::FullManager() {
    if (!_fullManager) {
        _fullManager = std::make_unique<kxct::DefaultItemManager>(_session, nullptr);
        for (const kxudm::UDMItemHandle& handle : Handles()) {
            _fullManager->CreateItem(handle);
        }
    }
    return *_fullManager;
}

const kxString& SampleLibrary::ProjectWith(std::int64_t count) {
    for (const auto& [size, uid] : _projects) {
        if (size == count) {
            return uid;
        }
    }
    kxudm::UDMBulkEdit edit(_session->GetProfile());
    const kxudm::UDMItemHandle project = _session->CreateEntity("UDMProject", NameOf(count));
    for (std::int64_t i = 0; i < count; ++i) {
        const auto child = _session->CreateAndAdd(DEFINITION, NameOf(i), project, "simulations");
        _session->SetMetaData(child, "description", DescriptionOf(i));
    }
    edit.Commit();
    return _projects.emplace_back(count, project.GetUID()).second;
}

}  // namespace bench
