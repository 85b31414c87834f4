// Takes in the files of a group that is flushed as one, by any number of threads at once.
//
// Each thread gets an Intake that nobody else uses meanwhile; they are kept until the group ends.
//
// Layer: vault, inside. Any thread.
#ifndef KXUDMRT_VAULT_GROUPINTAKE_H
#define KXUDMRT_VAULT_GROUPINTAKE_H

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "vault/Expected.h"
#include "vault/Intake.h"
#include "vault/Layout.h"

namespace kxudm::vault {

class GroupIntake {
  public:
    // The layout outlives this.
    explicit GroupIntake(Layout& layout) : layout_(layout), directory_(layout.Files()) {}

    // As of Intake. The file is closed, as thousands may wait for their turn; a failure says that
    // `name` was not stored.
    Incoming TakeIn(const std::string& path,
                    const AddOptions& options,
                    const Expected* expected = nullptr);
    Incoming TakeIn(Source& source, const std::string& name, const AddOptions& options);

    // Whether anything came.
    [[nodiscard]] bool HasBegun() const;
    // Everything on the vault's file system. Reports what failed since the first file came.
    void Flush();

  private:
    template <typename Taking>
    Incoming Take(const std::string& name, const Taking& taking);
    void Begin();
    std::unique_ptr<Intake> Borrow();
    void GiveBack(std::unique_ptr<Intake> intake);

    Layout& layout_;

    mutable std::mutex mutex_;  // of what follows
    bool hasBegun_ = false;
    FileHandle directory_;
    std::vector<std::unique_ptr<Intake>> intakes_;  // that no thread uses just now
};

}  // namespace kxudm::vault

#endif
