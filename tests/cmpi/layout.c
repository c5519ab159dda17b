/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The headers in a C translation unit: type and place of every member, value of every constant.
 */
#include <stddef.h>

#include "cmpimacs.h"
#include <cmpi/cmpidt.h>
#include <cmpi/cmpift.h>

#define CMPI_MEMBER(structure, member, offset64, offset32, ...)                                              \
    _Static_assert(offsetof(structure, member) == (sizeof(void *) == 8 ? (offset64) : (offset32)),           \
                   "offset of " #structure "." #member);                                                     \
    _Static_assert(__builtin_types_compatible_p(__typeof__(((structure *)0)->member), __VA_ARGS__),          \
                   "type of " #structure "." #member);
#define CMPI_LATER_MEMBER(structure, member)
#define CMPI_CONSTANT(name, value) _Static_assert((name) == (value), #name);
#define CMPI_ENUMERATOR(type, name, value) _Static_assert((name) == (value), #name);
#define CMPI_TEXT(name, text) _Static_assert(sizeof(name) == sizeof(text), #name);
#include "cmpi_rows.inc"

/* The constants must also serve the preprocessor. */
#if CMPI_uint16 != 144 || CMPI_badValue != 32768 || CMPICurrentVersion != 200 || CMPI_MB_Tracing != 131072
#error "constants in #if"
#endif

size_t cmpiSizeOfStatusInC(void);

/* The size of CMPIStatus as C sees it. */
size_t cmpiSizeOfStatusInC(void)
{
    return sizeof(CMPIStatus);
}
