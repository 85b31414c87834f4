// Two libraries and what is carried between them.
#pragma once

#include <kxudm/UDMCdefMetaData.h>
#include <kxudm/UDMExchange.h>
#include <kxudm/UDMMaintenance.h>
#include <kxudm/UDMProgress.h>

#include <algorithm>
#include <fstream>

#include "../profile/Files.h"

namespace kxudm::test {

using Uids = kxStlVector<kxString>;

inline Uids UidsOf(std::initializer_list<UDMItemHandle> handles) {
    Uids uids;
    for (const UDMItemHandle& handle : handles) {
        uids.push_back(Base(handle));
    }
    return uids;
}

// "<name> <outcome> <revisions>", in the order of the archive.
inline Names Outcomes(const UDMImportReport& report) {
    Names texts;
    for (const UDMImportedEntity& each : report.entities) {
        texts.push_back(each.name + " " + UDMExchange::Name(each.outcome) + " " +
                        std::to_string(each.revisions));
    }
    return texts;
}

// Everything that is wrong with a library, contents, too; orphans, which undone edits leave behind,
// only if they are asked for.
inline Names Problems(const ProfilePtr& profile, bool withOrphans = false) {
    UDMVerifyOptions options;
    options.minimumAge = std::chrono::seconds(0);
    Names problems;
    for (const UDMFinding& finding : UDMMaintenance(profile).Verify(options)) {
        if (finding.kind == UDMFindingKind::ContentOrphan && !withOrphans) {
            continue;
        }
        problems.push_back(std::string(UDMMaintenance::Name(finding.kind)) + " " + finding.object +
                           ": " + finding.text);
    }
    return problems;
}

// Writes down what it hears; the n-th call ends the operation.
class Steps : public IUDMProgressListener {
  public:
    explicit Steps(std::size_t last = 0) : _last(last) {}
    bool Advance(const UDMProgress& progress) override {
        heard.push_back(progress);
        return heard.size() != _last;
    }

    std::vector<UDMProgress> heard;

  private:
    std::size_t _last;
};

class Exchange : public testing::Test {
  protected:
    [[nodiscard]] std::string Archive(const std::string& name = "a.kxa") const {
        return outside.File(name);
    }
    // The bytes of an archive of these entities (none: of all).
    std::string Exported(const ProfilePtr& profile, const Uids& uids = {}, int scope = 2) {
        profile->Export(Archive("compared.kxa"), uids, scope);
        return ReadFile(Archive("compared.kxa"));
    }
    void Export(const Uids& uids = {}, int scope = 2) { ann->Export(Archive(), uids, scope); }
    UDMImportReport Import(const ProfilePtr& profile) {
        return UDMExchange(profile).Import(Archive());
    }
    UDMImportReport Import() { return Import(tom); }
    // Carries these entities over.
    UDMImportReport Carry(const Uids& uids = {}, int scope = 2) {
        Export(uids, scope);
        return Import();
    }
    UDMItemHandle There(const UDMItemHandle& handle) { return tom->GetEntity(Base(handle)); }
    UDMItemHandle There(const UDMItemHandle& handle, int revision) {
        return tom->GetEntity(At(handle, revision));
    }
    UDMItemHandle Folder(const ProfilePtr& profile, const kxString& path) {
        UDMItemHandle folder;
        profile->GetOrCreateFolder(folder, path, true);
        return folder;
    }
    void Put(const UDMItemHandle& handle, const std::string& name, const std::string& content) {
        AddFile(ann, handle, sources.Write(name, content));
    }
    // "name=content" of each document.
    static Names Contents(const ProfilePtr& profile, const UDMItemHandle& handle) {
        return RetrievedContents(profile, handle);
    }
    static Names References(const ProfilePtr& profile, const UDMItemHandle& handle) {
        kxStlVector<UDMItemHandle> targets;
        profile->GetReferences(targets, handle, "");
        return DisplayNames(targets);
    }
    static kxString Attribute(const UDMItemHandle& handle, const char* name) {
        return handle.GetAttributeValue(name).GetString();
    }
    // Publishes what the deed changes in a check-out.
    template <typename Deed>
    static UDMItemHandle Revise(const ProfilePtr& profile,
                                const UDMItemHandle& handle,
                                Deed&& deed) {
        deed(CheckOut(profile, handle));
        return Publish(profile, handle);
    }
    static UDMItemHandle Describe(const ProfilePtr& profile,
                                  const UDMItemHandle& handle,
                                  const kxString& text) {
        return Revise(profile, handle, [&](const UDMItemHandle& working) {
            profile->SetAttributeValue(working, "description", text);
        });
    }
    static UDMItemHandle Make(const ProfilePtr& profile, const kxString& name) {
        return Published(profile, name);
    }
    // The only content in a library's common vault.
    static std::string StoredIn(const Library& library) {
        for (const auto& entry :
             std::filesystem::recursive_directory_iterator(library.BaseDirectory() + "/vault")) {
            if (entry.is_regular_file()) {
                return entry.path();
            }
        }
        return {};
    }
    // Every path below a folder, with sizes of files, sorted.
    static Names Tree(const std::string& folder) {
        Names tree;
        if (std::filesystem::exists(folder)) {
            for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
                if (entry.is_regular_file()) {
                    tree.push_back(entry.path().string() + " " + std::to_string(entry.file_size()));
                }
            }
        }
        std::sort(tree.begin(), tree.end());
        return tree;
    }

    vault::Folder sources;
    TemporaryFolder outside;
    Library source;
    Library target;
    ProfilePtr ann = source.Open("ann");
    ProfilePtr tom = target.Open("tom", "bench");
};

}  // namespace kxudm::test
