// SPDX-License-Identifier: Apache-2.0
// Everything that a client can ask the library for, as rows: the reads of every class, every method in its
// success and its refusals, the associations from both ends.
#ifndef TESTS_TORTURE_OPERATIONS_H
#define TESTS_TORTURE_OPERATIONS_H

#include "contract.h"
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace torture
{

struct Operation {
    std::string name;      // "GetInstance", "SetName", "Associators"
    std::string situation; // "" for the usual one; else what is wrong: "as operator", "without Name"
    bool method = false;
    std::function<Answer()> run = {};
    std::function<void()> prepare = [] {}; // changes the monitor from the usual state
    // The answer while no call fails, of the usual situations; the others are tests of their own.
    std::optional<std::pair<CMPIrc, std::string>> expected = {};
};

/** All operations of a class. The broker must serve the instances. */
std::vector<Operation> operationsOf(const TestedClass &tested);

} // namespace torture

#endif
