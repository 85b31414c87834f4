#include "profile/Words.h"

#include <algorithm>
#include <array>

#include "core/Clock.h"

namespace kxudm::profile {

bool IsComputed(std::string_view attribute) {
    constexpr std::array<std::string_view, 16> computed{NAME,
                                                        DISPLAY_NAME,
                                                        "smd_contentrevision",
                                                        "smd_createduser",
                                                        "smd_creatime",
                                                        "smd_user",
                                                        "smd_ctime",
                                                        "smd_id",
                                                        "smd_ctype",
                                                        "smd_ctypedn",
                                                        "smd_folder",
                                                        "smd_comment",
                                                        "smd_filehash",
                                                        "smd_branchfrom",
                                                        "smd_branchfromver",
                                                        "smd_branchedtime"};
    return std::find(computed.begin(), computed.end(), attribute) != computed.end();
}

kxString WholeSeconds(std::int64_t microseconds) {
    constexpr std::int64_t second = 1000000;
    const std::int64_t fraction = ((microseconds % second) + second) % second;
    return core::FormatTime(microseconds - fraction);
}

}  // namespace kxudm::profile
