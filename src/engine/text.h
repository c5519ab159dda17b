// SPDX-License-Identifier: Apache-2.0
// Texts in buffers of a fixed size, and numbers in texts.
#ifndef ENGINE_TEXT_H
#define ENGINE_TEXT_H

#include <cstddef>

namespace engine
{

/** Copies `from` into a buffer of `size` characters, shortened where it does not fit, always terminated. */
void copyText(char *to, size_t size, const char *from);

/** Compares exactly; nothing is equal to a text that is not there. */
[[nodiscard]] bool same(const char *a, const char *b);

/** Whether the whole text is a base-10 integer, as strtol reads it. */
[[nodiscard]] bool isDecimal(const char *text);

/** The leading base-10 integer of `text` as atoi reads it, 0 where there is none; a number beyond int becomes
 *  the nearest int, on every machine as on the controller's. */
int decimalValue(const char *text);

} // namespace engine

#endif
