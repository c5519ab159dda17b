// SPDX-License-Identifier: Apache-2.0
// What a parsed document takes of a request's memory.
#ifndef HOST_CORE_XML_MEMORY_H
#define HOST_CORE_XML_MEMORY_H

#include "cmpi/memory_budget.h"

namespace host
{

/** While it lives, what pugixml allocates in this thread counts as the request's, until the request ends.
 * Past its limit, or that of all requests, a document is not loaded: its status is out of memory. */
class XmlMemory
{
  public:
    explicit XmlMemory(MemoryShare &memory);
    XmlMemory(const XmlMemory &) = delete;
    XmlMemory &operator=(const XmlMemory &) = delete;
    ~XmlMemory();

  private:
    MemoryShare *const before_;
};

} // namespace host

#endif
