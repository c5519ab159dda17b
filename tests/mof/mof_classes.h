// SPDX-License-Identifier: Apache-2.0
// The class definitions in mof/ for tests: loaded, and compared with what a provider sets or takes.
#ifndef TESTS_MOF_MOF_CLASSES_H
#define TESTS_MOF_MOF_CLASSES_H

#include "cim/schema.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace mof
{

/** The classes of mof/desk.mof, loaded once. Ends the program with the reader's messages when they have
 * errors. */
const cim::ClassRepository &deskClasses();

/** The whole text of a file in mof/; ends the program when it cannot be read. */
std::string fileText(const std::string &name);

/** The classes that the registration names, each once, in its order. */
std::vector<std::string> registeredClasses();

/** "" when the class has a property of that name that takes a value of the CMPI type, else what is wrong.
 *  CMPI_chars counts as string. */
std::string checkProperty(std::string_view className, std::string_view property, std::uint16_t cmpiType);

/** "" when the names are exactly the class's keys, in any order, else what is wrong. */
std::string checkKeys(std::string_view className, const std::vector<std::string> &names);

/** "" when the class declares the method with that CMPI return type and exactly these input parameters, in
 * any order, else what is wrong. */
std::string checkMethod(std::string_view className, std::string_view method, std::uint16_t cmpiReturnType,
                        const std::vector<std::string> &parameters);

/** A property as "uint16 DisplayMode", "string IPAddresses[]" or "CIM_System REF Antecedent". */
std::string describe(const cim::Element &element);

/** A method as "uint32 SetName(string Name)"; an output parameter is preceded by "out ". */
std::string describe(const cim::Method &method);

} // namespace mof

#endif
