// SPDX-License-Identifier: Apache-2.0
// No exception passes through the frames of a provider, which may be of C: a function of the tables that
// finds no memory answers with a failure, and the call ends as if the exception had come through it.
#ifndef HOST_CMPI_GUARDED_H
#define HOST_CMPI_GUARDED_H

#include "cmpi/call.h"

#include <cmpi/cmpidt.h>
#include <new>
#include <type_traits>

namespace host
{

inline void reportNoMemory() {}

/** Sets the status of a function of the tables, where it has one: it is the last argument. */
template <typename First, typename... Rest>
void reportNoMemory(First first, Rest... rest)
{
    if constexpr (sizeof...(Rest) > 0) {
        reportNoMemory(rest...);
    } else if constexpr (std::is_same_v<First, CMPIStatus *>) {
        if (first != nullptr) {
            *first = {CMPI_RC_ERR_FAILED, nullptr};
        }
    }
}

template <auto function>
struct Guard;

template <typename Returned, typename... Arguments, Returned (*function)(Arguments...)>
struct Guard<function> {
    static Returned call(Arguments... arguments)
    {
        try {
            return function(arguments...);
        } catch (const std::bad_alloc &) {
            if (Call *current = currentCall(); current != nullptr) {
                current->outOfMemory = true;
            }
            reportNoMemory(arguments...);
            if constexpr (std::is_same_v<Returned, CMPIStatus>) {
                return {CMPI_RC_ERR_FAILED, nullptr};
            } else {
                return Returned();
            }
        }
    }
};

/** What stands in the table for a function that takes memory. */
template <auto function>
constexpr auto guarded = &Guard<function>::call;

} // namespace host

#endif
