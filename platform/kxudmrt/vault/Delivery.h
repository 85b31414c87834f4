// Contents that come into a vault in any number, each once, and get their names together.
//
// Like a Batch, but memory doesn't grow with their number: which file waits for which name stands
// in a file beside them. The contents of an archive come in this way.
//
// Layer: vault. One thread at a time, apart from Prepare.
#ifndef KXUDMRT_VAULT_DELIVERY_H
#define KXUDMRT_VAULT_DELIVERY_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "vault/Vault.h"

namespace kxudm::vault {

class Delivery {
  public:
    // The vault outlives the delivery and may be used for other things meanwhile.
    explicit Delivery(Vault& vault);
    // Removes what was added and not committed.
    ~Delivery();
    Delivery(const Delivery&) = delete;
    Delivery& operator=(const Delivery&) = delete;

    // As Vault::Add, but durable and in its final place only after Commit. `name` is told in
    // messages. A failure concerns this content only. No content comes twice.
    Stored Add(Source& source, const std::string& name, const AddOptions& options = {});
    // The same in two steps: all the work, by any thread, while others do the same and the delivery
    // is used; then the part of the delivery. A content that is dropped in between is removed.
    [[nodiscard]] Incoming Prepare(Source& source,
                                   const std::string& name,
                                   const AddOptions& options = {});
    Stored Add(Incoming&& prepared);
    // Makes the bytes survive a loss of power, without giving them their names: what Commit then
    // has to do takes no time.
    void Flush();
    // Nothing is added afterwards. After a failure some contents may have their names; the others
    // go with the delivery.
    void Commit();
    // Once Commit was called: removes contents that it gave their names and that are not `used`,
    // unless somebody has added them again since.
    void TakeBack(const std::function<bool(const std::string& hash)>& used);

  private:
    // A file that waits, as the list has it: one line each.
    struct Waiting {
        std::string hash = {};
        bool compressed = false;
        bool hasImpostor = false;
        std::string file = {};  // its name in the folder of temporaries
    };

    void CheckUsable() const;
    void Note(Incoming&& incoming);
    void WriteList();
    void Visit(const std::function<void(const Waiting&)>& visit);
    void RememberNow();
    [[nodiscard]] std::string PathOf(const Waiting& waiting) const;

    Vault& vault_;
    GroupIntake intake_;
    std::unique_ptr<TemporaryFile> list_;
    std::string unwritten_;  // lines that are not in the file yet
    std::uint64_t written_ = 0;
    std::int64_t named_ = 0;  // microseconds since 1970: before this nothing had its name
    bool failed_ = false;
    bool committed_ = false;
};

}  // namespace kxudm::vault

#endif
