// What every entry function has: libFuzzer calls it, and so does Replay.cpp.
//
//     fuzz_settings -max_len=4096 -max_total_time=300 found fuzz/corpus/settings
//     replay_settings fuzz/corpus/settings
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

inline std::string_view TextOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

// Ends the program in a way that libFuzzer takes for a find.
inline void Demand(bool condition, const std::string& what) {
    if (!condition) {
        std::cerr << what << std::endl;
        std::abort();
    }
}

}  // namespace fuzz
