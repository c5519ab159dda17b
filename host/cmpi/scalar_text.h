// SPDX-License-Identifier: Apache-2.0
// Values that arrive as text: from clients and from class definitions.
#ifndef HOST_CMPI_SCALAR_TEXT_H
#define HOST_CMPI_SCALAR_TEXT_H

#include "cmpi/objects.h"

#include <string_view>

namespace host
{

/** Reads the text as a value of the type, which is not a reference. White space around a value that is no
 * text does not count. Whatever is no other type is a string. False when the text is not of the type. */
[[nodiscard]] bool readScalar(Arena &arena, std::string_view text, cim::Type type, CMPIData &data);

/** Gives the properties of a new instance the defaults of its class, inherited ones included. A property that
 * has a value already keeps it: a key that came with the path. */
void applyDefaults(Instance &instance);

} // namespace host

#endif
