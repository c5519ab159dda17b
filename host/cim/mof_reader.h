// SPDX-License-Identifier: Apache-2.0
// Reader of the Managed Object Format (DSP0004, version 2): qualifier declarations and classes into a
// repository.
#ifndef HOST_CIM_MOF_READER_H
#define HOST_CIM_MOF_READER_H

#include "cim/schema.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace cim
{

/** One finding of the reader: where it is and what is wrong. */
struct MofMessage {
    bool isError = true; // false: a warning, what was read counts
    std::string file;
    unsigned line = 0; // from 1; 0: the whole file
    unsigned column = 0;
    std::string text;

    /** "file:line:column: error: text", the form that editors know. */
    std::string format() const;
};

/** What the reader takes from its input at most. A breach is an error like any other. */
struct MofLimits {
    std::size_t fileBytes = std::size_t{4} * 1024 * 1024;
    std::size_t totalBytes = std::size_t{64} * 1024 * 1024;
    unsigned includeDepth = 16;
    std::size_t files = 4096;
    std::size_t nameLength = 1024;
    std::size_t listLength = 4096;      // values of an array, qualifiers of an element, features of a class
    std::size_t inheritanceDepth = 100; // classes from the root
    std::size_t inheritedBytes = std::size_t{256} * 1024 * 1024; // what classes repeat of their superclasses
    std::size_t errors = 50;                                     // after so many the reader stops
};

struct MofResult {
    std::vector<MofMessage> messages; // in the order of the input; those of the final checks come last

    /** True when there is no error; warnings do not count. */
    bool ok() const;
};

/** Reads MOF files, in the given order, with all they include (#pragma include, relative to the including
 * file), into the repository. A declaration with an error is left out; what is right is taken. Afterwards
 * every class that a reference names must be known. */
MofResult readMofFiles(ClassRepository &repository, const std::vector<std::string> &files,
                       const MofLimits &limits = {});

/** The same from memory; name stands for the file in messages, and is what #pragma include is relative to. */
MofResult readMofText(ClassRepository &repository, std::string_view text, const std::string &name = "<text>",
                      const MofLimits &limits = {});

} // namespace cim

#endif
