// SPDX-License-Identifier: Apache-2.0
// The methods of the library as clients know them, typed by hand: names, arguments with values that are
// taken, answers.
#ifndef TESTS_CONTRACT_METHOD_TABLE_H
#define TESTS_CONTRACT_METHOD_TABLE_H

#include "support/provider_fixture.h"
#include <span>
#include <vector>

namespace contract
{

struct Parameter {
    const char *name;
    Value given;         // a value with which the method succeeds, of the type that is to be declared
    const char *missing; // null: the method does not look at its argument
    const char *invalidType = "Invalid type of parameter.";
    bool asked = true;
};

struct MethodRow {
    const char *name;
    std::vector<Parameter> parameters = {};
    // What the method answers to complete arguments.
    CMPIrc code = CMPI_RC_OK;
    const char *message = "";
};

struct MethodClassRow {
    const char *name; // after ZT_Marovelton_
    size_t count;     // of its methods
    std::vector<MethodRow> methods = {};
    CMPIrc unknownCode = CMPI_RC_ERR_NOT_FOUND;
    uint8_t unknownValue = 1;
    uint8_t failureValue = 2;
    CMPIType returnType = CMPI_uint32;
    size_t target = 0;    // the enumerated object that the methods are called on
    size_t inherited = 0; // methods of the superclasses that the class does not offer
};

/** The classes with methods, and those that have a method provider without any. */
std::span<const MethodClassRow> methodTable();

/** The arguments with which a method succeeds in the state of scriptMonitor(). */
Entries completeArguments(const MethodRow &method);

} // namespace contract

#endif
