// A library whose words are searched for.
#pragma once

#include "Files.h"

namespace kxudm::test {

inline constexpr int ALL = 0;
inline constexpr int ANY = 1;
inline constexpr int PHRASE = 2;

inline Names Search(const ProfilePtr& profile,
                    const kxString& text,
                    int mode = ALL,
                    bool ignoreCase = true) {
    UDMQuerySettingHandle settings;
    settings.GetSettings().SetIgnoreCase(ignoreCase);
    kxStlVector<UDMItemHandle> hits;
    const std::size_t count = profile->RunQuery(hits, text, mode, 0, 0, settings, false, true);
    EXPECT_EQ(count, hits.size());
    return DisplayNames(hits);
}

class FullText : public Files {
  protected:
    UDMItemHandle Described(const std::string& name, const kxString& description) {
        const UDMItemHandle part = Part(name);
        ann->SetAttributeValue(part, "description", description);
        return part;
    }
    Names Hits(const kxString& text, int mode = ALL, bool ignoreCase = true) {
        return Search(ann, text, mode, ignoreCase);
    }
    // How many entities and contents wait to be indexed.
    std::int64_t Pending() {
        const auto store = providers::OpenLibraryFile(library.File(), 1000);
        sql::Statement count(
            store->Connection(),
            "SELECT (SELECT count(*) FROM text_pending) +"
            " (SELECT count(*) FROM file WHERE text IS NULL AND hash IS NOT NULL)");
        return count.Step() ? count.Int64(0) : -1;
    }
};

}  // namespace kxudm::test
