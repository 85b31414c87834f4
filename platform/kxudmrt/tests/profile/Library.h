// A library of one test in a folder of its own, and a slot that writes down what it is told.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxudm/ClassificationReader.h>
#include <kxudm/IUDMProfile.h>
#include <kxudm/UDMBulkEdit.h>
#include <kxudm/UDMProfileMgr.h>
#include <kxudm/UDMProfileUpdate.h>
#include <stdlib.h>

#include <boost/smart_ptr/make_shared.hpp>
#include <boost/smart_ptr/weak_ptr.hpp>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace kxudm::test {

using Parameters = UDMProfileMgr::Parameters;
using ProfilePtr = boost::shared_ptr<IUDMProfile>;
using Names = std::vector<std::string>;

class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string pattern = std::filesystem::canonical(std::filesystem::temp_directory_path());
        pattern += "/kxudmXXXXXX";
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        _path = pattern;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] const std::string& Path() const { return _path; }
    [[nodiscard]] std::string File(const std::string& name) const { return _path + "/" + name; }

  private:
    std::string _path;
};

// Opens sessions and discards them at its end.
class Library {
  public:
    ~Library() {
        for (ProfilePtr& profile : _open) {
            UDMProfileMgr::DiscardProfile(profile);
        }
    }

    [[nodiscard]] const TemporaryFolder& Folder() const { return _folder; }
    [[nodiscard]] std::string BaseDirectory() const { return _folder.File("base"); }
    [[nodiscard]] std::string File() const { return _folder.File("base/Lib.ldb"); }

    [[nodiscard]] Parameters Params(const std::string& user = "ann",
                                    const std::string& workspace = "desk") const {
        Parameters params;
        params["DataSource"] = "local";
        params["MasterDBFile"] = _folder.File("master/master.db");
        params["UDMConfigFile"] = KXUDMRT_TEST_CATALOGUE;
        params["RepositoryName"] = "Lib";
        params["RepositoryBaseDir"] = BaseDirectory();
        params["ProfileName"] = "Local";
        params["WorkspaceName"] = workspace;
        params["WorkspaceBaseDir"] = _folder.File("ws/" + user + "/" + workspace);
        params["username"] = user;
        params["password"] = "s3cret!";
        return params;
    }

    ProfilePtr Open(const std::string& user = "ann", const std::string& workspace = "desk") {
        return Keep(UDMProfileMgr::GetProfile(Params(user, workspace)));
    }
    ProfilePtr Keep(ProfilePtr profile) {
        _open.push_back(profile);
        return profile;
    }

  private:
    TemporaryFolder _folder;
    std::vector<ProfilePtr> _open;
};

// Writes down each update as "<code> <name>" or "<code> <parent> <child>", "44 <UID>", "34".
class Recorder : public IUDMProfileSlot {
  public:
    void update(UDMProfileUpdate update) override {
        told.push_back(Text(update));
        updates.push_back(update);
        if (react) {
            react(update);
        }
    }

    static std::string Text(const UDMProfileUpdate& update) {
        std::string text = std::to_string(update.GetOpCode());
        if (!update.GetUDMHandle().IsEmpty()) {
            text += " " + update.GetUDMHandle().GetDisplayName();
        }
        if (!update.GetChild().IsEmpty()) {
            text += " " + update.GetChild().GetDisplayName();
        }
        if (update.GetOpCode() == SIGNAL_ENTITY_DELETED) {
            text += " " + kxString(update.GetUID());
        }
        return text;
    }

    // What was told since the last call.
    Names Take() { return std::exchange(told, {}); }

    Names told;
    std::vector<UDMProfileUpdate> updates;
    std::function<void(const UDMProfileUpdate&)> react;
};

inline boost::shared_ptr<Recorder> Listen(const ProfilePtr& profile) {
    auto recorder = boost::make_shared<Recorder>();
    boost::shared_ptr<IUDMProfileSlot> slot = recorder;
    profile->Connect(slot);
    return recorder;
}

// The text of the exception of type E that `action` throws; fails the test if it throws none.
template <typename E = UDMException, typename Action>
std::string Refusal(Action&& action) {
    try {
        action();
    } catch (const E& failure) {
        return failure.what();
    } catch (const std::exception& failure) {
        ADD_FAILURE() << "another exception: " << failure.what();
        return {};
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}

inline Names DisplayNames(const kxStlVector<UDMItemHandle>& handles) {
    Names names;
    for (const UDMItemHandle& handle : handles) {
        names.push_back(handle.GetDisplayName());
    }
    return names;
}

inline Names Children(const ProfilePtr& profile,
                      const UDMItemHandle& parent,
                      const kxString& group = "") {
    kxStlVector<UDMItemHandle> children;
    profile->GetChildren(children, parent, group, "");
    return DisplayNames(children);
}

inline Names Parents(const ProfilePtr& profile,
                     const UDMItemHandle& handle,
                     const kxString& relation) {
    kxStlVector<UDMItemHandle> parents;
    profile->GetParents(parents, handle, relation, false);
    return DisplayNames(parents);
}

}  // namespace kxudm::test
