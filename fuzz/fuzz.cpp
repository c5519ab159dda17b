// SPDX-License-Identifier: Apache-2.0
#include "fuzz.h"

#include <cstdio>
#include <cstdlib>

namespace fuzz
{

void require(bool holds, std::string_view property, std::string_view detail)
{
    if (holds) {
        return;
    }
    std::fprintf(stderr, "The property does not hold: %.*s\n%.*s\n", static_cast<int>(property.size()),
                 property.data(), static_cast<int>(detail.size()), detail.data());
    std::abort();
}

} // namespace fuzz
