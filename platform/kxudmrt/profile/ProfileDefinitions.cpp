// Changes of content definitions.
#include "profile/DefinitionChange.h"
#include "profile/DefinitionRecords.h"
#include "profile/Profile.h"

namespace kxudm::profile {

namespace {

kxString CatalogueFile(const SessionOptions& options) {
    if (options.catalogueFile.empty()) {
        throw UDMException("The session on the library \"" + options.libraryName +
                           "\" has no catalogue file to read content definitions from; open it "
                           "with one under \"UDMConfigFile\"");
    }
    return options.catalogueFile;
}

// Throws with the whole document's errors, too: one with an error says nothing for sure.
CataloguePtr FileWith(const kxString& definition, const SessionOptions& options) {
    const kxString file = CatalogueFile(options);
    auto read = catalogue::Catalogue::ReadFiles(file, options.customDefinitions);
    if (read->Find(definition) == nullptr) {
        throw UDMNotFoundException("The content definition \"" + catalogue::Printable(definition) +
                                   "\" is not in the catalogue file \"" + file +
                                   "\" nor in the custom definitions read after it; add it there");
    }
    return read;
}

}  // namespace

bool Profile::ReloadContentDefinition(const kxString& definition) {
    const char* const name = "ReloadContentDefinition";
    _session->RequireOpen(name);
    const CataloguePtr file = FileWith(definition, _session->Options());
    return ChangeCatalogue(*_session, name, false, [&](const catalogue::Catalogue& now) {
        try {
            return now.WithDefinition(file->Get(definition).Declaration());
        } catch (const UDMException& cause) {
            throw UDMException("The content definition \"" + definition +
                               "\" can't be taken into the library \"" +
                               _session->Options().libraryName + "\": " + cause.what() +
                               "; reload what it builds on first");
        }
    });
}

bool Profile::UpdateContentDefinition(const kxString& definition,
                                      const kxStlVector<UDMCdefMetaData>& metadata,
                                      bool force) {
    return ChangeCatalogue(
        *_session, "UpdateContentDefinition", force, [&](const catalogue::Catalogue& now) {
            return now.WithDefinition(WithMetadata(now.Get(definition), metadata));
        });
}

}  // namespace kxudm::profile
