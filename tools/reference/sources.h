// SPDX-License-Identifier: Apache-2.0
// What the sources themselves say: the texts that the library's code holds, and the names of numbers.
#ifndef REFERENCE_SOURCES_H
#define REFERENCE_SOURCES_H

#include <map>
#include <string>
#include <vector>

namespace reference
{

/** A text of the library that may become an answer: one with blanks, or one that ends a call. What is only
 *  printed, and commands to the shell, are left out. */
struct SourceText {
    std::string text;     // as compiled; a format keeps its conversions
    std::string file;     // without directory
    std::string function; // or the table that holds it
};

/** The texts of src/, file by file in the order of their names. Ends the program when it cannot be read. */
std::vector<SourceText> sourceTexts(const std::string &directory);
/** The texts of one file. */
std::vector<SourceText> textsOf(const std::string &content, const std::string &file);

/** Whether a text is what the format makes; %d stands for a number, %s for anything. */
bool isMadeBy(const std::string &text, const std::string &format);

/** The enumerators of a header's enumeration, by number. */
std::map<int, std::string> enumerators(const std::string &file, const std::string &enumeration);

/** The whole of a file; ends the program when it cannot be read. */
std::string contentOf(const std::string &file);

} // namespace reference

#endif
