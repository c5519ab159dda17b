// SPDX-License-Identifier: Apache-2.0
// Where libFuzzer is not: runs the kept inputs of a target, one after the other, as an ordinary test.
//
//     fuzz-TARGET CORPUS|FILE...     ends with 1 when there is no input; a property that does not hold ends
//     the program
#include "fuzz.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" [[gnu::weak]] int LLVMFuzzerInitialize(int *argc, char ***argv);

// Mutators are linked, and nothing is mutated here.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t *, std::size_t size, std::size_t)
{
    return size;
}

namespace
{

std::vector<std::filesystem::path> filesOf(const std::filesystem::path &place)
{
    if (!std::filesystem::is_directory(place)) {
        return {place};
    }
    std::vector<std::filesystem::path> files;
    for (const auto &entry : std::filesystem::directory_iterator(place)) {
        files.push_back(entry.path());
    }
    std::ranges::sort(files);
    return files;
}

bool run(const std::filesystem::path &file)
{
    std::ifstream stream(file, std::ios::binary);
    const std::vector<char> input{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    if (!stream.good() && !stream.eof()) {
        std::fprintf(stderr, "%s cannot be read\n", file.c_str());
        return false;
    }
    std::fprintf(stderr, "%s\n", file.c_str()); // the last one is the one that failed
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(input.data()), input.size());
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    if (LLVMFuzzerInitialize != nullptr) {
        LLVMFuzzerInitialize(&argc, &argv);
    }
    std::size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        for (const std::filesystem::path &file : filesOf(argv[i])) {
            if (!run(file)) {
                return 1;
            }
            ++count;
        }
    }
    std::fprintf(stderr, "%zu inputs\n", count);
    return count > 0 ? 0 : 1;
}
