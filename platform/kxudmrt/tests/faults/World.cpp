#include "World.h"

#include <kxudm/UDMMaintenance.h>
#include <sqlite3.h>

#include <fstream>
#include <map>
#include <memory>
#include <sstream>

#include "providers/local/LocalProvider.h"

namespace kxudm::test {

namespace {

std::string Content(const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

std::string BaseOf(const UDMItemHandle& handle) {
    return handle.GetUID().substr(0, handle.GetUID().find(':'));
}

}  // namespace

World::World() {
    Write("wing.inp", vault::Deck(30000, 1));
    Write("new/wing.inp", vault::Deck(31000, 2));
    Write("spar.inp", vault::Noise(2000, 3));
    Write("new/spar.inp", "");
    Write("spar.dat", vault::Deck(500, 4));
    Write("spar.log", "done\n");
    Write("rib.inp", vault::Noise(100000, 5));
    Write("old.inp", vault::Noise(5000, 7));
    Write("rib.dat", vault::Deck(40000, 6));
    for (const char* name : {"tree/a.inp", "tree/b.inp", "tree/sub/a.inp", "tree/sub/c.dat"}) {
        Write(name, vault::Deck(3000, static_cast<int>(std::string(name).size())) + name);
    }
    FailingVfs::Install();
    providers::LocalOptions options;
    options.files = &files;
    _machine = UDMProfileMgr::RegisterProvider(
        "local", boost::make_shared<providers::LocalProvider>(options));
    Fill();
    std::filesystem::copy(Base(), _folder.File("kept"), std::filesystem::copy_options::recursive);
    MakeArchives();
}

World::~World() {
    Close();
    UDMProfileMgr::RegisterProvider("local", _machine);
}

void World::Write(const std::string& name, const std::string& content) const {
    const std::string path = Source(name);
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << content;
}

std::string World::Source(const std::string& name) const {
    return _folder.File("source/" + name);
}

void World::Restore() {
    Close();
    std::filesystem::remove_all(Base());
    std::filesystem::remove_all(Out());
    if (std::filesystem::exists(_folder.File("kept"))) {
        std::filesystem::copy(
            _folder.File("kept"), Base(), std::filesystem::copy_options::recursive);
    }
    std::filesystem::create_directories(Out());
    std::filesystem::copy_file(
        KXUDMRT_TEST_CATALOGUE, Definitions(), std::filesystem::copy_options::overwrite_existing);
    Parameters params;
    params["DataSource"] = "local";
    params["MasterDBFile"] = _folder.File("master.db");
    params["UDMConfigFile"] = Definitions();
    params["RepositoryName"] = "Lib";
    params["RepositoryBaseDir"] = Base();
    params["ProfileName"] = "Local";
    params["WorkspaceName"] = "desk";
    params["WorkspaceBaseDir"] = _folder.File("desk");
    params["username"] = "ann";
    _profile = UDMProfileMgr::GetProfile(params);
}

void World::Close() {
    if (_profile) {
        UDMProfileMgr::DiscardProfile(_profile);
        _profile.reset();
    }
}

void World::Fill() {
    Restore();
    UDMItemHandle folder;
    Profile().GetOrCreateFolder(folder, "/Model", true);

    UDMItemHandle wing = Profile().CreateEntity("Part", "Wing");
    const std::string wingUid = BaseOf(wing);
    Profile().MoveContent(wing, folder);
    Profile().BeginAddFile(wing).setFilePath(Source("wing.inp")).go();
    Profile().PersistEntity(wing, "first", false, true, true);
    Profile().Checkout(Profile().GetEntity(wingUid), "next");
    Profile().ReAddFile(Profile().GetEntity(wingUid), Source("new/wing.inp"), false, false);
    Profile().PersistEntity(Profile().GetEntity(wingUid), "second", false, true, true);

    UDMItemHandle spar = Profile().CreateEntity("Part", "Spar");
    const std::string sparUid = BaseOf(spar);
    Profile().BeginAddFile(spar).setFilePath(Source("spar.inp")).go();
    Profile().BeginAddFile(spar).setFilePath(Source("spar.dat")).go();
    Profile().PersistEntity(spar, "first", true, true, true);
    spar = Profile().GetEntity(sparUid);
    Profile().SetAttributeValue(spar, "description", kxVariant("stiffer"));
    Profile().ReAddFile(spar, Source("new/spar.inp"), false, false);
    Profile().RemoveFile(spar, "spar.dat");
    Profile().BeginAddFile(spar).setFilePath(Source("spar.log")).go();

    UDMItemHandle old = Profile().CreateEntity("Part", "Old");
    Profile().BeginAddFile(old).setFilePath(Source("old.inp")).go();
    Profile().PersistEntity(old, "first", false, true, true);
    Profile().DeleteEntity(Named("Old"), true, false);

    UDMItemHandle rib = Profile().CreateEntity("Part", "Rib");
    Profile().BeginAddFile(rib).setFilePath(Source("rib.inp")).go();
    Profile().SetAttributeValue(rib, "count", kxVariant(3));
    Close();
}

void World::MakeArchives() {
    Restore();
    Profile().Export(Archive(), {}, 2);
    Profile().Checkout(Named("Wing"), "elsewhere");
    Profile().SetAttributeValue(Named("Wing"), "description", kxVariant("third"));
    Profile().PersistEntity(Named("Wing"), "third", false, true, true);
    const UDMItemHandle strut = Profile().CreateEntity("Part", "Strut");
    std::filesystem::copy_file(Source("rib.dat"), Source("strut.inp"));
    Profile().BeginAddFile(strut).setFilePath(Source("strut.inp")).go();
    Profile().PersistEntity(strut, "first", false, true, true);
    kxStlVector<kxString> uids;
    uids.push_back(Named("Wing").GetUID());
    uids.push_back(Named("Strut").GetUID());
    Profile().Export(Other(), uids, 2);
    Close();
}

UDMItemHandle World::Named(const std::string& name) {
    kxStlVector<UDMItemHandle> found;
    Profile().RunQuery(
        found, "name == \"" + name + "\"", -1, 0, 0, UDMQuerySettingHandle(), false, false);
    if (found.size() != 1) {
        throw std::runtime_error(std::to_string(found.size()) + " contents are named " + name);
    }
    return found.front();
}

std::string World::Rows() const {
    sqlite3* database = nullptr;
    sqlite3_open(_folder.File("base/Lib.ldb").c_str(), &database);
    std::ostringstream rows;
    for (const char* table :
         {"entity", "revision", "savepoint", "head_attribute", "link", "file", "info"}) {
        const std::string select = std::string("SELECT * FROM ") + table + " ORDER BY 1, 2";
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(database, select.c_str(), -1, &statement, nullptr);
        while (sqlite3_step(statement) == SQLITE_ROW) {
            rows << table;
            for (int i = 0; i < sqlite3_column_count(statement); ++i) {
                const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, i));
                rows << '|' << (text == nullptr ? "-" : text);
            }
            rows << '\n';
        }
        sqlite3_finalize(statement);
    }
    sqlite3_close(database);
    return rows.str();
}

std::vector<std::string> World::Documents(const UDMItemHandle& handle) {
    const std::string folder = _folder.File("looked");
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    kxStlVector<kxString> paths;
    Profile().RetrieveFilesToFolder(handle, folder, false, false, paths);
    std::map<std::string, std::string> found;
    for (const kxString& path : paths) {
        found[std::filesystem::path(std::string(path)).filename()] = Content(path);
    }
    std::vector<std::string> lines;
    for (const auto& [name, content] : found) {
        lines.push_back(name + "=" + content);
    }
    return lines;
}

std::string World::Problems() {
    UDMMaintenance care(_profile);
    UDMVerifyOptions options;
    options.minimumAge = std::chrono::seconds(0);
    std::string problems;
    for (const UDMFinding& finding : care.Verify(options)) {
        if (finding.kind != UDMFindingKind::ContentOrphan) {
            problems += finding.object + ": " + finding.text + "\n";
        }
    }
    return problems;
}

}  // namespace kxudm::test
