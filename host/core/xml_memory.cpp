// SPDX-License-Identifier: Apache-2.0
#include "core/xml_memory.h"

#include <cstdlib>
#include <pugixml.hpp>

namespace host
{
namespace
{

thread_local MemoryShare *current = nullptr; // null: nobody pays

void *allocate(std::size_t size)
{
    return current == nullptr || current->take(size) ? std::malloc(size) : nullptr;
}

/** It is given back with the request, whose document lives as long. */
void deallocate(void *memory)
{
    std::free(memory);
}

} // namespace

XmlMemory::XmlMemory(MemoryShare &memory) : before_(current)
{
    static const bool isInstalled = [] {
        pugi::set_memory_management_functions(&allocate, &deallocate);
        return true;
    }();
    static_cast<void>(isInstalled);
    current = &memory;
}

XmlMemory::~XmlMemory()
{
    current = before_;
}

} // namespace host
