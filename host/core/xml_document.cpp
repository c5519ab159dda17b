// SPDX-License-Identifier: Apache-2.0
#include "core/xml_document.h"

#include "core/xml_memory.h"

namespace host
{
XmlProblem readXml(std::string &text, const XmlLimits &limits, MemoryShare &memory,
                   pugi::xml_document &document)
{
    constexpr unsigned options = pugi::parse_cdata | pugi::parse_escapes | pugi::parse_wconv_attribute |
                                 pugi::parse_eol |
                                 pugi::parse_ws_pcdata_single; // a value may consist of blanks
    if (const XmlProblem problem = checkXml(text, limits); problem != XmlProblem::none) {
        return problem;
    }
    const XmlMemory paidByTheRequest(memory);
    const pugi::xml_parse_result result =
        document.load_buffer_inplace(text.data(), text.size(), options, pugi::encoding_utf8);
    if (result.status == pugi::status_out_of_memory) {
        throw MemoryExceeded();
    }
    return result ? XmlProblem::none : XmlProblem::notWellFormed;
}

} // namespace host
