// SPDX-License-Identifier: Apache-2.0
// The class definitions of the namespace "interop", as a text.
#ifndef HOST_CORE_INTEROP_MOF_H
#define HOST_CORE_INTEROP_MOF_H

namespace host
{

/** The file interop.mof. */
extern const char *const interopMof;

} // namespace host

#endif
