// SPDX-License-Identifier: Apache-2.0
// What every fuzz target has: the function that gets an input, and properties that it holds the code to.
#ifndef FUZZ_FUZZ_H
#define FUZZ_FUZZ_H

#include <cstddef>
#include <cstdint>
#include <string_view>

/** Gets one input; returns 0. Ends the program when a property does not hold. */
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

/** Of libFuzzer: changes the bytes in their place, to at most `most` of them, and tells how many there are.
 */
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t *data, std::size_t size, std::size_t most);

namespace fuzz
{

inline std::string_view textOf(const std::uint8_t *data, std::size_t size)
{
    return {reinterpret_cast<const char *>(data), size};
}

/** Ends the program with the texts, the way a sanitizer does, unless the property holds. */
void require(bool holds, std::string_view property, std::string_view detail = {});

} // namespace fuzz

#endif
