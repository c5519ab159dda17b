// SPDX-License-Identifier: Apache-2.0
#include "engine/text.h"

#include <climits>
#include <cstdlib>
#include <cstring>

namespace engine
{

void copyText(char *to, size_t size, const char *from)
{
    const size_t length = strnlen(from, size - 1);
    memcpy(to, from, length);
    to[length] = '\0';
}

bool same(const char *a, const char *b)
{
    return a && b && strcmp(a, b) == 0;
}

bool isDecimal(const char *text)
{
    char *end = nullptr;
    static_cast<void>(strtol(text, &end, 10));
    return *end == '\0';
}

int decimalValue(const char *text)
{
    const long value = strtol(text, nullptr, 10);
    return value > INT_MAX ? INT_MAX : value < INT_MIN ? INT_MIN : static_cast<int>(value);
}

} // namespace engine
