// A library whose catalogue file can be edited, and shorthands for changes of its definitions.
#pragma once

#include <kxudm/UDMCdefMetaData.h>
#include <kxudm/UDMProfileUtils.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "Revisions.h"

namespace kxudm::test {

using Records = kxStlVector<UDMCdefMetaData>;

class ChangedDefinitions : public testing::Test {
  protected:
    ChangedDefinitions() {
        std::filesystem::copy_file(KXUDMRT_TEST_CATALOGUE, file);
        std::filesystem::create_directory(custom);
    }

    Parameters Params(const std::string& user) const {
        Parameters params = library.Params(user);
        params["UDMConfigFile"] = file;
        params["CustomEntityDefinitionsFolder"] = custom;
        return params;
    }
    ProfilePtr Open(const std::string& user) {
        return library.Keep(UDMProfileMgr::GetProfile(Params(user)));
    }

    // Replaces a text of the catalogue file, which must be there.
    void Edit(const std::string& from, const std::string& to) const {
        std::string text = Text();
        const std::size_t place = text.find(from);
        ASSERT_NE(place, std::string::npos) << from;
        Write(text.replace(place, from.size(), to));
    }
    std::string Text() const {
        std::stringstream text;
        text << std::ifstream(file).rdbuf();
        return text.str();
    }
    void Write(const std::string& text) const { std::ofstream(file) << text; }

    static Records RecordsOf(const ProfilePtr& profile, const kxString& definition) {
        Records records;
        profile->GetContentDefinitionMetadata(definition, records);
        return records;
    }
    static UDMCdefMetaData Record(const kxString& name,
                                  const kxString& type,
                                  const kxString& defaultValue = "",
                                  const kxStlVector<kxString>& valid = {}) {
        return {name, name, "", defaultValue, type, "", false, true, true, valid};
    }
    static bool Add(const ProfilePtr& profile,
                    const kxString& definition,
                    const UDMCdefMetaData& record) {
        Records records = RecordsOf(profile, definition);
        records.push_back(record);
        return profile->UpdateContentDefinition(definition, records, false);
    }
    static bool Remove(const ProfilePtr& profile,
                       const kxString& definition,
                       const kxString& attribute) {
        Records records = RecordsOf(profile, definition);
        std::erase_if(records, [&](const auto& record) { return record.Name() == attribute; });
        return profile->UpdateContentDefinition(definition, records, false);
    }
    static Records With(Records records, const UDMCdefMetaData& changed) {
        std::replace_if(
            records.begin(),
            records.end(),
            [&](const auto& record) { return record.Name() == changed.Name(); },
            changed);
        return records;
    }
    // Puts the record in the place of the one of its name.
    static bool Change(const ProfilePtr& profile,
                       const kxString& definition,
                       const UDMCdefMetaData& record,
                       bool force = false) {
        return profile->UpdateContentDefinition(
            definition, With(RecordsOf(profile, definition), record), force);
    }
    static Names AttributesOf(const ProfilePtr& profile, const kxString& definition) {
        Names names;
        for (const UDMCdefMetaData& record : RecordsOf(profile, definition)) {
            names.push_back(record.Name());
        }
        return names;
    }
    // What is there of a definition, in one text.
    static std::string Description(const ProfilePtr& profile, const kxString& definition) {
        std::string text;
        for (const UDMCdefMetaData& record : RecordsOf(profile, definition)) {
            text += record.Name() + "|" + record.DisplayName() + "|" + record.Description() + "|" +
                    record.DefaultValue() + "|" + record.Type() + "|" + record.Category() + "|" +
                    (record.isSystem ? "s" : "") + (record.isDisplayable ? "d" : "") +
                    (record.isEditable ? "e" : "") + "|" +
                    kxVariant(record.ValidVal()).GetString() + "\n";
        }
        return text;
    }
    static Names Hits(const ProfilePtr& profile, const kxString& query) {
        kxStlVector<UDMItemHandle> hits;
        profile->RunQuery(hits, query, -1, 0, 0, {}, false, false);
        return DisplayNames(hits);
    }

    Library library;
    const std::string file = library.Folder().File("definitions.xml");
    const std::string custom = library.Folder().File("custom");
};

}  // namespace kxudm::test
