// SPDX-License-Identifier: Apache-2.0
// Reads a word from an odd address, which the alignment check must not let pass.

#include <cstdint>
#include <cstdio>

int main()
{
    alignas(4) static volatile char bytes[8] = {};
    const volatile void *odd = bytes + 1;
    printf("%d\n", static_cast<int>(*static_cast<const volatile int32_t *>(odd)));
    return 0;
}
