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
    target_ = nth;
    armed_ = fault;
}

void Faults::arm(const std::string &function, int nth, Fault fault)
{
    *this = {};
    target_ = nth;
    function_ = function;
    armed_ = fault;
}

Fault Faults::strike(const std::string &called)
{
    ++count_;
    if (armed_ == Fault::none) {
        return Fault::none;
    }
    const bool hit = function_.empty() ? count_ == target_
                                       : called == function_ && (++counted_ == target_ || target_ == 0);
    if (!hit) {
        return Fault::none;
    }
    name_ = called;
    return armed_;
}

} // namespace test_support
