// SPDX-License-Identifier: Apache-2.0
#include "faults.h"

namespace test_support
{

Faults faults;

const char *describe(Fault fault)
{
    switch (fault) {
    case Fault::none:
        return "works";
    case Fault::fails:
        return "fails";
    case Fault::silent:
        return "delivers nothing, with status OK";
    case Fault::noHandle:
        return "delivers an object without a handle";
    case Fault::noTable:
        return "delivers an object without a function table";
    }
    return "?";
}

void Faults::disarm()
{
    *this = {};
}

void Faults::arm(int nth, Fault fault)
{
    *this = {};
    target = nth;
    armed = fault;
}

void Faults::arm(const std::string &theFunction, int nth, Fault fault)
{
    *this = {};
    target = nth;
    function = theFunction;
    armed = fault;
}

Fault Faults::strike(const std::string &called)
{
    ++count;
    if (armed == Fault::none) {
        return Fault::none;
    }
    const bool hit =
        function.empty() ? count == target : called == function && (++counted == target || target == 0);
    if (!hit) {
        return Fault::none;
    }
    name = called;
    return armed;
}

} // namespace test_support
