// SPDX-License-Identifier: Apache-2.0
// The registration of providers: which library serves which class, and in which roles.
//
//     [Some_Class]
//        provider: Some_Class
//        location: someLibrary
//        type: instance method
//        namespace: root/cimv2
//        unload: never
#ifndef HOST_CORE_REGISTRATION_H
#define HOST_CORE_REGISTRATION_H

#include <string>
#include <string_view>
#include <vector>

namespace host
{

struct Registration {
    std::string className;
    std::string provider; // the first part of the factories' names
    std::string location; // lib<location>.so
    std::vector<std::string> nameSpaces;
    bool isInstance = false;
    bool isMethod = false;
    bool isAssociation = false;
    std::string where; // "file:line", for messages
};

/** Reads stanzas. Blanks around words, carriage returns and a missing last line feed do no harm; lines that
 * begin with # do not count. Every problem becomes a text "file:line: what" in problems, and its stanza is
 * left out. */
std::vector<Registration> readRegistration(std::string_view text, const std::string &file,
                                           std::vector<std::string> &problems);

/** The same from a file. */
std::vector<Registration> readRegistrationFile(const std::string &file, std::vector<std::string> &problems);

} // namespace host

#endif
