// SPDX-License-Identifier: Apache-2.0
// XML as text: a look at what comes in before it is parsed, and the escaping of what goes out.
#ifndef HOST_CORE_XML_TEXT_H
#define HOST_CORE_XML_TEXT_H

#include "core/text_buffer.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace host
{

struct XmlLimits {
    std::size_t depth = 64;
    std::size_t elements = 20000;
    std::size_t attributes = 16; // of one element
};

/** What is wrong with a document. */
enum class XmlProblem { none, notWellFormed, tooManyElements, tooDeep, tooManyAttributes };

/** none when the document is UTF-8, has the characters and the entity references that XML 1.0 allows, one
 * root element, attributes that are quoted and not repeated, and keeps to the limits. Entities other than the
 * five of XML are refused, and so is a document type with a part of its own. That start and end tags match is
 * left to the parser. */
[[nodiscard]] XmlProblem checkXml(std::string_view document, const XmlLimits &limits);

/** A sentence about the limit that the document is beyond; "" when it is not well-formed, or good. */
std::string limitText(XmlProblem problem, const XmlLimits &limits);

/** Appends text so that it can stand in an element or in a quoted attribute. Only the five named entities are
 * used, because there are clients that know nothing else. What XML cannot hold (control characters, bytes
 * that are not UTF-8) becomes U+FFFD. */
void appendEscaped(TextBuffer &buffer, std::string_view text);

/** The same of one character of 16 bits. */
void appendEscaped(TextBuffer &buffer, std::uint16_t character);

} // namespace host

#endif
