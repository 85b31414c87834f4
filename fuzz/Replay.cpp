// Gives each file of the named folders to the entry function. An input that fails ends the program,
// with its name as the last line of the output.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "Fuzz.h"

int main(int argc, char** argv) {
    std::vector<std::filesystem::path> files;
    for (int i = 1; i < argc; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    if (files.empty()) {
        std::cerr << "no inputs\n";
        return 1;
    }
    for (const auto& file : files) {
        std::cout << file.filename().string() << std::endl;
        std::ifstream stream(file, std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(stream),
                                      std::istreambuf_iterator<char>()};
        if (!stream) {
            std::cerr << "can't be read\n";
            return 1;
        }
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    std::cout << files.size() << " inputs pass\n";
    return 0;
}
