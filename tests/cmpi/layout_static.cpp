// SPDX-License-Identifier: Apache-2.0
// The headers in a C++ translation unit that needs no library: what other compilers check without linking.

#include "cmpimacs.h"

#include <cstddef>
#include <string_view>
#include <type_traits>

#include "layout_static.h"

#define CMPI_MEMBER(structure, member, offset64, offset32, ...)                                              \
    static_assert(offsetof(structure, member) == (sizeof(void *) == 8 ? (offset64) : (offset32)));           \
    static_assert(std::is_same_v<decltype(structure::member), __VA_ARGS__>);
#define CMPI_LATER_MEMBER(structure, member)
#define CMPI_CONSTANT(name, value) static_assert((name) == (value));
#define CMPI_ENUMERATOR(type, name, value)                                                                   \
    static_assert(static_cast<int>(name) == (value) && std::is_same_v<decltype(name), type>);
#define CMPI_TEXT(name, text) static_assert(std::string_view(name) == (text));
#include "cmpi_rows.inc"
