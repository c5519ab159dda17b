// SPDX-License-Identifier: Apache-2.0
// What an enumeration is of: a class, what is associated with an object, or what a query selects.
#ifndef HOST_WSMAN_FILTER_H
#define HOST_WSMAN_FILTER_H

#include "wsman/exchange.h"

namespace host::wsman
{

struct Filter {
    explicit Filter(Arena &arena) : selectors(arena) {}

    /** What is to be done to get the objects. */
    Request request;
    /** Of the selector filter. */
    ArenaList<Selector> selectors;

    /** Leaves out the objects that the selectors do not fit. */
    [[nodiscard]] bool apply(Exchange &exchange, Answer &answer) const;
};

/** Reads the filter in the Enumerate element and makes the request of it. wantsPaths: endpoints are enough.
 */
[[nodiscard]] bool readFilter(Exchange &exchange, pugi::xml_node enumerate, const Target &target,
                              bool wantsPaths, Filter &filter);

} // namespace host::wsman

#endif
