// SPDX-License-Identifier: Apache-2.0
// Data from the object manager, none of which can be relied on, and the status of an operation.
#ifndef FRAME_VALUES_H
#define FRAME_VALUES_H

#include "engine/exchange.h"
#include "frame/cmpi.h"

namespace frame
{

using namespace engine;

/** Whether a broker's object is missing or unusable. */
template <typename Object>
[[nodiscard]] bool isNullObject(const Object *object)
{
    return !object || !object->hdl || !object->ft;
}

/** The characters of a broker's string; null when there is no string or it holds none. */
[[nodiscard]] const char *textOf(const CMPIString *string);

/** The text that a broker's data holds, a CMPIString's or the characters themselves (brokers hand both for
 * keys and for the principal); null when it is missing or of another type. */
[[nodiscard]] const char *textOf(const CMPIData &data, const CMPIStatus &status);

/** Whether data from a broker holds no value. */
[[nodiscard]] bool isMissing(const CMPIData &data, const CMPIStatus &status);

/** Ends an operation: sets the code and, made by the broker, the message of its status; returns false. */
bool fail(const CMPIBroker *broker, CMPIStatus *status, CMPIrc code, const char *text);

/** Prints a trace line with the class name; null prints nothing. */
void trace(const char *format, const char *className);

} // namespace frame

#endif
