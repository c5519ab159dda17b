// SPDX-License-Identifier: Apache-2.0
// The intrinsic operations of DSP0200 with their parameters.
#ifndef HOST_CIMXML_INTRINSIC_READER_H
#define HOST_CIMXML_INTRINSIC_READER_H

#include "cimxml/reader.h"

namespace host
{

/** Reads an IMETHODCALL into the message. */
MessageVerdict readIntrinsic(const pugi::xml_node &call, Arena &arena, const cim::NameSpaces &nameSpaces,
                             CimXmlMessage &message);

} // namespace host

#endif
