// SPDX-License-Identifier: Apache-2.0
// A method call on its way through its steps: arguments and checks. A step that fails sets the status, ends
// the call and returns false or null.
#ifndef FRAME_CALL_H
#define FRAME_CALL_H

#include "frame/paths.h"
#include <cstdint>

namespace frame
{

/** One extrinsic method call on its way through its steps. A step that fails sets the status and ends the
 * call. */
struct Call {
    const CMPIBroker *broker;
    const CMPIContext *context;
    const CMPIObjectPath *reference;
    const CMPIArgs *in;
    const char *methodName;
    CMPIStatus *status;
    char errorText[ERROR_TEXT_SIZE]; // what a failing setting or lookup fills; a single blank before
    int index;                       // which instance is addressed, from 0
    uint8_t returnValue;             // the answer if the call fails here
    const char *key = nullptr;       // the identifying key of the addressed instance
};

enum class ArgumentKind : uint8_t {
    none,
    toggle,         // "true", "false" without regard to case, "0", "1"
    integer,        // wholly a base-10 integer
    leadingInteger, // as atoi reads it
};
using enum ArgumentKind;

struct Argument {
    ArgumentKind kind = none;
    const char *name = nullptr;
    const char *missing = nullptr;              // the text when the argument is not given
    const char *invalid = "Invalid parameter."; // the text when it is not of its kind
};

struct Range {
    int min = 0;
    int max = 0;
    const char *text = nullptr; // null: no range check
};

/** Ends a call with a code and a text; returns false. */
bool fail(Call &call, CMPIrc code, const char *text);
/** The `run` of a method that no engine offers: not supported, with its name. Static: sanitizers let no
 * constant have the address of a function that stands elsewhere. */
static inline bool refuseMethod(Call &call)
{
    return fail(call, CMPI_RC_ERR_NOT_SUPPORTED, call.methodName);
}

/** Passes only administrators: reads the requesting user from the context and looks it up. */
[[nodiscard]] bool requireAdministrator(const CMPIBroker *broker, const CMPIContext *context,
                                        CMPIStatus *status, char *errorText, bool announce = true);

/** The text of a string argument, which may be empty; null, with the call ended, when it is missing or of
 * another type. */
[[nodiscard]] const char *requireText(Call &call, const char *name, const char *missing,
                                      const char *invalidType = "Invalid type of parameter.");
/** Refuses an empty argument text. */
[[nodiscard]] bool requireContent(Call &call, const char *text,
                                  const char *empty = "Invalid parameter. Value is missing.");
/** Converts an argument text of the given kind. */
[[nodiscard]] bool convert(Call &call, const char *text, ArgumentKind kind, const char *invalid, int *value);
/** All of the above for one argument. */
[[nodiscard]] bool readArgument(Call &call, const Argument &argument, int *value);

/** The texts that a reference argument is refused with. */
struct ReferenceTexts {
    const char *missing;
    const char *className; // its class name cannot be read
    const char *invalidType = "Invalid type of parameter.";
    const char *null = "Invalid parameter.";
};

/** The path in a reference argument, and its class name; null, with the call ended, when there is none. */
[[nodiscard]] const CMPIObjectPath *requireReference(Call &call, const char *name,
                                                     const ReferenceTexts &texts, const char **className);

/** Refuses a value outside the range; without a range text every value passes. */
[[nodiscard]] bool requireRange(Call &call, int value, const Range &range);
/** Refuses a position outside its ranges; both are tested first, and `both` is for neither fitting. */
[[nodiscard]] bool requirePosition(Call &call, int x, const Range &xRange, int y, const Range &yRange,
                                   const char *both);
/** The end of a call: the result of a setting, whose text becomes the message when it is not 0. */
[[nodiscard]] bool settled(Call &call, int result);

} // namespace frame

#endif
