#include "vault/GroupIntake.h"

#include <utility>

#include "vault/DocumentName.h"

namespace kxudm::vault {

template <typename Taking>
Incoming GroupIntake::Take(const std::string& name, const Taking& taking) {
    try {
        Begin();
        std::unique_ptr<Intake> intake = Borrow();
        Incoming incoming = taking(*intake);
        GiveBack(std::move(intake));
        if (incoming.file != nullptr) {
            incoming.file->Close();
        }
        return incoming;
    } catch (const FileError& error) {
        throw FileError("'" + Printable(name) + "' was not stored", error);
    }
}

Incoming GroupIntake::TakeIn(const std::string& path,
                             const AddOptions& options,
                             const Expected* expected) {
    return Take(path, [&](Intake& intake) { return intake.TakeIn(path, options, expected); });
}

Incoming GroupIntake::TakeIn(Source& source, const std::string& name, const AddOptions& options) {
    return Take(name, [&](Intake& intake) { return intake.TakeIn(source, name, options); });
}

// Before the first byte is written: a flush reports only what failed since then.
void GroupIntake::Begin() {
    const std::lock_guard lock(mutex_);
    if (!hasBegun_) {
        layout_.OpenDirectory(directory_.File());
        hasBegun_ = true;
    }
}

bool GroupIntake::HasBegun() const {
    const std::lock_guard lock(mutex_);
    return hasBegun_;
}

void GroupIntake::Flush() {
    layout_.Files().FlushFileSystem(directory_.File());
}

std::unique_ptr<Intake> GroupIntake::Borrow() {
    const std::lock_guard lock(mutex_);
    if (intakes_.empty()) {
        return std::make_unique<Intake>(layout_);
    }
    std::unique_ptr<Intake> intake = std::move(intakes_.back());
    intakes_.pop_back();
    return intake;
}

void GroupIntake::GiveBack(std::unique_ptr<Intake> intake) {
    const std::lock_guard lock(mutex_);
    intakes_.push_back(std::move(intake));
}

}  // namespace kxudm::vault
