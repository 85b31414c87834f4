// A library with some of everything, for tests of its care.
#pragma once

#include <kxudm/UDMMaintenance.h>
#include <kxudm/UDMProgress.h>

#include <fstream>

#include "Revisions.h"
#include "store/LibraryStore.h"
#include "vault/Vault.h"

namespace kxudm::test {

inline constexpr UDMVerifyOptions AT_ONCE{.minimumAge = std::chrono::seconds(0)};

inline void Write(const std::string& path, const std::string& text) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::filesystem::remove(path);
    std::ofstream(path, std::ios::binary) << text;
}

// "<name of the kind> <object>: <text>"
inline Names Texts(const kxStlVector<UDMFinding>& findings) {
    Names texts;
    for (const UDMFinding& finding : findings) {
        texts.push_back(std::string(UDMMaintenance::Name(finding.kind)) + " " + finding.object +
                        ": " + finding.text);
    }
    return texts;
}

// With a file at the note.
class Maintained : public testing::Test {
  protected:
    Maintained() {
        wheel = Published(ann, "Wheel");
        ann->MoveContent(CheckOut(ann, wheel), Folder("/A/B"));
        const UDMItemHandle hub = ann->CreateEntity("Part", "Hub");
        const UDMItemHandle front =
            ann->CreateAndAddChild("Drawing", "Front", Newest(ann, wheel), "drawings");
        ann->AddChild(Newest(ann, wheel), hub, "uses");
        ann->AddClassification(hub, ann->CreateEntity("Categories", "Metals"));
        ann->SetAttributeValue(Newest(ann, wheel), "material", "steel");
        wheel = Publish(ann, wheel);
        Publish(ann, front);
        ann->RemoveChild(CheckOut(ann, wheel), hub);
        ann->SetAttributeValue(Newest(ann, wheel), "mass", 4.0);
        ann->SetAttributeValue(Newest(ann, wheel), "count", 3);
        ann->SaveEntity(Newest(ann, wheel), "so far", true);
        Published(ann, "\xc3\x84rger");
        ann->CreateEntity("Note", "Note");
        used = AddFile("deck.inp", std::string(3000, 'd'));
    }

    UDMItemHandle Folder(const kxString& path) {
        UDMItemHandle folder;
        ann->GetOrCreateFolder(folder, path, true);
        return folder;
    }
    std::string Vault() const { return library.BaseDirectory() + "/vault"; }
    vault::Stored Store(const std::string& text, const std::string& vaultDirectory) {
        Write(library.Folder().File("source"), text);
        return vault::Vault(vaultDirectory).Add(library.Folder().File("source"));
    }
    // A file of the note; the hash of its content.
    std::string AddFile(const std::string& name, const std::string& text) {
        const vault::Stored stored = Store(text, Vault());
        store::FileRow row;
        row.name = name;
        row.hash = stored.hash;
        row.size = static_cast<std::int64_t>(stored.size);
        const auto store = store::LibraryStore::Open(library.File());
        store::EntityRow note;
        store->FindInFolder(0, "Note", "Note", store::THE_PUBLIC, false, rows);
        EXPECT_TRUE(store->AddFile(rows.front().id, 0, row, {{"ann", "desk"}, 1}));
        return stored.hash;
    }
    std::string Content(const std::string& hash) const {
        const std::string path = Vault() + "/" + hash.substr(0, 2) + "/" + hash;
        return std::filesystem::exists(path) ? path : path + ".zst";
    }
    void Sql(const std::string& script) {
        const auto store = store::LibraryStore::Open(library.File());
        store->Connection().Execute("PRAGMA foreign_keys=OFF");
        store->Connection().Execute("PRAGMA ignore_check_constraints=ON");
        store->Connection().Execute(script);
    }
    UDMMaintenance Care() { return UDMMaintenance(ann); }
    Names Verify(const UDMVerifyOptions& options = AT_ONCE) {
        return Texts(Care().Verify(options));
    }
    UDMPurged Purge(bool deletedEntities = false, int minutes = 0) {
        UDMPurgeOptions options;
        options.minimumAge = std::chrono::minutes(minutes);
        options.deletedEntities = deletedEntities;
        return Care().Purge(options);
    }

    Library library;
    ProfilePtr ann = library.Open("ann");
    UDMItemHandle wheel;
    std::string used;
    std::vector<store::EntityRow> rows;
};

}  // namespace kxudm::test
