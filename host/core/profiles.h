// SPDX-License-Identifier: Apache-2.0
// The management profiles that the classes of the providers conform to, for the namespace "interop".
//
//     [Some:Profile:1.0.0]
//        organization: DMTF
//        name: Some Profile
//        version: 1.0.0
//        central-class: Some_Class
//        references: Some:OtherProfile:1.0.0
#ifndef HOST_CORE_PROFILES_H
#define HOST_CORE_PROFILES_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace host
{

struct Profile {
    std::string instanceId;
    std::uint16_t organization = 0; // as RegisteredOrganization has it
    std::string otherOrganization;  // of one that the standard does not list
    std::string name;
    std::string version;
    std::vector<std::string> centralClasses; // their instances are the central instances
    std::vector<std::string> references;     // the profiles that this one makes use of
    std::string where;                       // "file:line", for messages
};

/** Reads stanzas; problems as readRegistration() tells. "organization" may be any; DMTF and SNIA are known to
 * the standard. "central-class" and "references" are lists of words, and may be missing. */
std::vector<Profile> readProfiles(std::string_view text, const std::string &file,
                                  std::vector<std::string> &problems);

/** The same from a file. */
std::vector<Profile> readProfileFile(const std::string &file, std::vector<std::string> &problems);

} // namespace host

#endif
