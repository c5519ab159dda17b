// SPDX-License-Identifier: Apache-2.0
// CIM-XML messages (DSP0201, DSP0200): the request that stands for an operation, and what an answer says.
#ifndef DISPLAYCTL_WBEM_MESSAGE_H
#define DISPLAYCTL_WBEM_MESSAGE_H

#include "wbem/operation.h"

#include <string>
#include <string_view>

namespace displayctl::wbem
{

/** The body of the request. nameSpace: that of the connection. */
[[nodiscard]] std::string requestBody(const Operation &operation, std::string_view nameSpace);

/** The value of the header CIMMethod: the name of the operation or method. */
[[nodiscard]] std::string_view methodHeader(const Operation &operation);

/** The value of the header CIMObject, in ASCII. */
[[nodiscard]] std::string objectHeader(const Operation &operation, std::string_view nameSpace);

/** What the body of a successful HTTP answer says: ok, cimError, or broken with what is wrong with it. The
 * body is parsed in its place. */
[[nodiscard]] Answer parseAnswer(std::string &body, const Operation &operation);

} // namespace displayctl::wbem

#endif
