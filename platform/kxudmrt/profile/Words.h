// Words of the model that the runtime itself looks at, and small texts made of them.
#pragma once

#include <kxutl/kxString.h>

#include <cstdint>
#include <string_view>

namespace kxudm::profile {

// Types of content definitions.
inline constexpr std::string_view FOLDER_TYPE = "Foldertype";
inline constexpr std::string_view CLASSIFICATION_TYPE = "Categories";

// Attributes that are kept with the entity and not among the other attributes.
inline constexpr std::string_view NAME = "name";
inline constexpr std::string_view DISPLAY_NAME = "displayname";
inline constexpr std::string_view SYSTEM_PREFIX = "smd_";

// Whether the library computes the attribute: its values are not among those stored for a revision.
[[nodiscard]] bool IsComputed(std::string_view attribute);

// Attribute under which a classification says that it is a master one.
inline constexpr std::string_view CATEGORY_KIND = "smd_cattype";
inline constexpr std::string_view MASTER_CATEGORY = "master";

// "2026-01-31T12:00:00Z": attributes of the type Time have no fraction.
kxString WholeSeconds(std::int64_t microseconds);

}  // namespace kxudm::profile
