// SPDX-License-Identifier: Apache-2.0
// The classes as the library answers for them, beside the classes as mof/ declares them.
#ifndef TESTS_CONTRACT_CONTRACT_H
#define TESTS_CONTRACT_CONTRACT_H

#include "mof_classes.h"
#include "support/provider_fixture.h"
#include <set>
#include <span>
#include <string>
#include <vector>

namespace contract
{

/** All classes of the library with the factories that it has of them; the others are null. */
std::span<const TestedClass> libraryClasses();

/** The class of that name after ZT_Marovelton_; ends the program where there is none. */
const TestedClass &libraryClass(const std::string &name);

/** Expects a table to have one row for each class that is an association, or for each other one. */
template <typename Rows>
void expectOneRowEach(const Rows &rows, bool associations);

/** The declaration of a class by its whole name; ends the program where there is none. */
const cim::Class &declaredClass(const std::string &name);

/** The properties that the class's own definition writes: those that it introduces or overrides. */
std::set<std::string> ownProperties(const cim::Class &declared);

/** The monitor in a state in which every instance can be read and every method succeeds, for "admin". */
void scriptMonitor();

/** The paths and the instances that the class's provider enumerates; expects it to succeed. */
std::vector<Path> pathsOf(const TestedClass &tested);
std::vector<Instance> instancesOf(const TestedClass &tested);

/** Makes the instances of all classes that are no associations known to the broker, as their own providers
 *  give them, the computer system, and the hierarchy of mof/. */
void serveInstances();

/** Expects a path to be one of the declared class: exactly its keys, exactly so spelled, of their types. */
void expectPathOf(const std::string &className, const Path &path);

/** Expects all properties to be declared by the class, exactly so spelled, with their type, and to hold
 *  values; references to lead to objects of the declared class. */
void expectDeclared(const std::string &className, const Entries &properties);

std::set<std::string> namesOf(const Entries &entries);

template <typename Rows>
void expectOneRowEach(const Rows &rows, bool associations)
{
    std::multiset<std::string> expected;
    for (const TestedClass &tested : libraryClasses()) {
        if (declaredClass(tested.name).isAssociation == associations) {
            expected.insert(tested.name);
        }
    }
    std::multiset<std::string> named;
    for (const auto &row : rows) {
        named.insert(std::string("ZT_Marovelton_") + row.name);
    }
    EXPECT_EQ(named, expected);
}

} // namespace contract

#endif
