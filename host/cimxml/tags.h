// SPDX-License-Identifier: Apache-2.0
// The elements that properties have, in instances and in classes.
#ifndef HOST_CIMXML_TAGS_H
#define HOST_CIMXML_TAGS_H

#include "cim/schema.h"

#include <string>
#include <string_view>

namespace host
{

/** The attribute that says that a string holds an object (DSP0201 2.3), or nothing. */
inline std::string embeddedObject(const cim::Qualifiers &qualifiers)
{
    if (cim::findQualifier(qualifiers, "EmbeddedInstance") != nullptr) {
        return " EmbeddedObject=\"instance\"";
    }
    return cim::hasQualifier(qualifiers, "EmbeddedObject") ? " EmbeddedObject=\"object\"" : "";
}

struct Tags {
    std::string_view open;
    std::string_view close;
};

inline Tags propertyTags(const cim::Property &property)
{
    if (property.type == cim::Type::reference) {
        return {"<PROPERTY.REFERENCE", "</PROPERTY.REFERENCE>\n"};
    }
    if (property.isArray) {
        return {"<PROPERTY.ARRAY", "</PROPERTY.ARRAY>\n"};
    }
    return {"<PROPERTY", "</PROPERTY>\n"};
}

} // namespace host

#endif
