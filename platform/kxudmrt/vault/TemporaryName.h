// Names of files that are being written. Each tells which process on which machine writes it, so
// that what a dead process left can be told from what a living one is still writing:
// ".part-<machine>-<process>-<start of the process>-<number>".
#ifndef KXUDMRT_VAULT_TEMPORARYNAME_H
#define KXUDMRT_VAULT_TEMPORARYNAME_H

#include <string>
#include <string_view>

namespace kxudm::vault {

// Never given twice, not in a forked child either.
std::string NewTemporaryName();

enum class WriterState {
    None,      // the name is not of this form
    Alive,     // the process still runs; process numbers that were given again don't deceive
    Gone,      // it ended
    Elsewhere  // it was on another machine, in another container or before a restart
};

WriterState WriterOf(std::string_view temporaryName);

}  // namespace kxudm::vault

#endif
