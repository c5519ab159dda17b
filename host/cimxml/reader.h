// SPDX-License-Identifier: Apache-2.0
// The reader of CIM-XML messages (DSP0201): from the parsed XML to a request.
#ifndef HOST_CIMXML_READER_H
#define HOST_CIMXML_READER_H

#include "core/model.h"
#include "core/typing.h"

#include <pugixml.hpp>

#include <cstdint>
#include <optional>
#include <string_view>

namespace host
{

/** What the operations over HTTP (DSP0200) make of a message before they look at its operation. */
enum class MessageVerdict {
    good,
    notValid, // XML, but not a CIM-XML request
    unsupportedCimVersion,
    unsupportedDtdVersion,
    unsupportedProtocolVersion,
    multipleRequests,
    unsupportedMessage, // an export request
};

/** Where a request stands in an enumeration that is answered part by part. */
enum class PullStep { none, open, pull, close };

/** How the objects of such an enumeration are sent. */
enum class ObjectForm { instancesWithPath, paths, instances };

struct PullRequest {
    PullStep step = PullStep::none;
    ObjectForm form = ObjectForm::instancesWithPath;
    std::uint32_t maxObjectCount = 0;
    std::optional<std::uint32_t> timeout; // in seconds
    bool continueOnError = false;
    bool returnsQueryResultClass = false;
    std::string_view context;
};

/** A message with one request. */
struct CimXmlMessage {
    std::string_view id;
    std::string_view protocolVersion;
    std::string_view name; // of the operation or the method
    bool isMethodCall = false;
    std::optional<Operation> operation; // none: it is not known here
    Request request;                    // without principal
    PullRequest pull;

    /** An error that the reader has found already, or CMPI_RC_OK. */
    CMPIrc code = CMPI_RC_OK;
    const char *error = nullptr;
};

/** Reads the request. Texts of the message point into the document and into the arena. */
MessageVerdict readCimXml(const pugi::xml_document &document, Arena &arena, const cim::NameSpaces &nameSpaces,
                          CimXmlMessage &message);

} // namespace host

#endif
