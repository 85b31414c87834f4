// A small library that is put back to how it was before each try, with sources to take files from.
//
// In it, all of ann at her desk:
//   Wing     published at 2; "wing.inp" was another one at 1; in folder /Model
//   Spar     published at 1 with "spar.inp" and "spar.dat"; checked out, its description changed,
//            "spar.inp" replaced, "spar.dat" removed, "spar.log" added
//   Old      published at 1 with "old.inp", then deleted
//   Rib      never published, with "rib.inp" and 3 as its count
#pragma once

#include <string>
#include <vector>

#include "../profile/Library.h"
#include "../vault/Support.h"
#include "FailingVfs.h"

namespace kxudm::test {

class World {
  public:
    World();
    ~World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    // Forgets what was done since the beginning, and opens a session.
    void Restore();
    void Close();

    IUDMProfile& Profile() { return *_profile; }
    const ProfilePtr& Session() { return _profile; }
    UDMItemHandle Named(const std::string& name);
    [[nodiscard]] std::string Source(const std::string& name) const;
    // The catalogue file, which may be changed.
    [[nodiscard]] std::string Definitions() const { return _folder.File("definitions.xml"); }
    [[nodiscard]] std::string Out() const { return _folder.File("out"); }
    [[nodiscard]] std::string Base() const { return _folder.File("base"); }

    // All of the library, and what it became elsewhere: there Wing is published at 3 with another
    // description, and there is Strut with the file "strut.inp".
    [[nodiscard]] std::string Archive() const { return _folder.File("all.kxa"); }
    [[nodiscard]] std::string Other() const { return _folder.File("other.kxa"); }

    // Every row of the library apart from the journal.
    [[nodiscard]] std::string Rows() const;
    // "name=content" of each document, in the order of names.
    std::vector<std::string> Documents(const UDMItemHandle& handle);
    // What is wrong with the library; orphaned contents of files are not.
    std::string Problems();

    vault::MeddlingLayer files;

  private:
    void Fill();
    void MakeArchives();
    void Write(const std::string& name, const std::string& content) const;

    TemporaryFolder _folder;
    boost::shared_ptr<spi::IUDMProvider> _machine;
    ProfilePtr _profile;
};

}  // namespace kxudm::test
