#include "fuzz/fuzz.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

// Used instead of libFuzzer: runs every file in the given folders.
int main(int argc, char** argv) {
    LLVMFuzzerInitialize(&argc, &argv);
    int tried = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            std::fprintf(stderr, "%s\n", entry.path().c_str());
            std::ifstream file(entry.path(), std::ios::binary);
            const std::string bytes{std::istreambuf_iterator<char>(file), {}};
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                   bytes.size());
            ++tried;
        }
    }
    if (tried == 0) std::fputs("no input\n", stderr);
    return tried == 0 ? 1 : 0;
}
