// SPDX-License-Identifier: Apache-2.0
// Faults: what is wrong, in the terms of DSP0226, and the CIM error behind it.
#ifndef HOST_WSMAN_FAULT_H
#define HOST_WSMAN_FAULT_H

#include <cmpi/cmpidt.h>

#include <string_view>

namespace host::wsman
{

/** The faults of DSP0226 clause 14 that this service uses, and SOAP's own. */
enum class FaultKind {
    none,
    accessDenied,
    actionNotSupported,
    alreadyExists,
    cannotProcessFilter,
    destinationUnreachable,
    encodingLimit,
    filterDialectRequestedUnavailable,
    internalError,
    invalidEnumerationContext,
    invalidExpirationTime,
    invalidMessageInformationHeader,
    invalidOptions,
    invalidParameter,
    invalidRepresentation,
    invalidSelectors,
    messageInformationHeaderRequired,
    mustUnderstand,
    quotaLimit,
    schemaValidationError,
    timedOut,
    unsupportedExpirationType,
    unsupportedFeature,
    versionMismatch,
};

struct Fault {
    FaultKind kind = FaultKind::none;
    /** The last part of the fault detail's URI ("InvalidResourceURI"); "": there is none. */
    std::string_view detail;
    /** What is wrong, for people; "": the standard's sentence. */
    std::string_view text;
    /** The CIM error behind it, or CMPI_RC_OK. */
    CMPIrc code = CMPI_RC_OK;
    /** What the fault is about: the action, or the local name of the header that is not understood. */
    std::string_view subject;
    /** The XML namespace of the header that is not understood. */
    std::string_view subjectNameSpace;
};

/** The fixed part of a fault. */
struct FaultForm {
    FaultKind kind;
    std::string_view code;    // of SOAP, with its prefix
    std::string_view subcode; // with its prefix; "": there is none
    std::string_view action;
    std::string_view reason;
};

const FaultForm &formOf(FaultKind kind);

/** 400 when the client is to blame, 500 otherwise. */
unsigned httpStatus(FaultKind kind);

/** The fault that DSP0227 has for a CIM error; text: what the provider or the host said of it. */
Fault faultOfCimError(CMPIrc code, std::string_view text);

} // namespace host::wsman

#endif
