// SPDX-License-Identifier: Apache-2.0
// What the reference is worded with: texts as it shows them, links to its places.
#ifndef REFERENCE_WORDS_H
#define REFERENCE_WORDS_H

#include "document.h"
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace reference
{

/** The name of a class without what all of the library have in front. */
std::string shortName(const std::string &className);

Line words(const std::string &text);

/** "NOT_FOUND (6)". */
Line statusName(int code);

/** A text as a client gets it. */
Line textLine(const std::string &text, const std::string &methodName = "");

/** A returned value; nothing when there is none. */
Line value(const std::optional<unsigned> &returned);

/** What has led to one answer, one after the other. */
Line causes(const std::vector<std::string> &all);

/** "A, B, then C". */
Line sentence(std::vector<std::string> parts);

/** The anchor of a class, and of what belongs to it. */
std::string idOf(const std::string &className);

std::string idOf(const std::string &className, const std::string &member);

Line classLink(const std::string &className);

/** A link to a class that the page has, another as it is. */
Line linkOrCode(const std::string &className);

Line classLinks(const std::set<std::string> &classNames);

} // namespace reference

#endif
