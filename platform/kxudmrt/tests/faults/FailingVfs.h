// The file layer of SQLite with faults: forwards to the machine's and lets one call fail.
//
//     FailingVfs& disk = FailingVfs::Install();   // of every connection opened from now on
//     disk.Arm(7);                                // the seventh call fails
//     ...
//     disk.Disarm();
//     if (disk.Failed().empty()) ...              // there were fewer than seven
#pragma once

#include <string>

namespace kxudm::test {

class FailingVfs {
  public:
    // Becomes SQLite's default of this process; the same object each time.
    static FailingVfs& Install();

    // Counts from now on and lets call number `number` fail.
    void Arm(long number);
    void Disarm() { _number = 0; }
    // What failed since the last Arm, such as "write"; empty if nothing did.
    [[nodiscard]] const std::string& Failed() const { return _failed; }

    // For the layer itself: whether this call is the one.
    bool Fails(const char* call);

  private:
    FailingVfs() = default;

    long _number = 0;
    long _calls = 0;
    std::string _failed;
};

}  // namespace kxudm::test
