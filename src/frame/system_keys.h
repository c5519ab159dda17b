// SPDX-License-Identifier: Apache-2.0
// The system name of the monitor, and the objects that are keyed to it.
#ifndef FRAME_SYSTEM_KEYS_H
#define FRAME_SYSTEM_KEYS_H

#include "frame/paths.h"
#include <span>

namespace frame
{

struct SystemName {
    char text[sizeof(MonitorInfo::DisplayName) + 1];
};

/** The `SystemName` key and the base of every `Name`: the display name, or the IPv4 address where none is
 * set. */
SystemName systemName(const MonitorInfo &info);

/** Reads the monitor's system name; false, with CMPI_RC_ERR_FAILED and `failure` in the status, when the
 * monitor's record cannot be read. */
[[nodiscard]] bool readSystemName(const CMPIBroker *broker, CMPIStatus *status, const char *failure,
                                  SystemName *name);

/** A singleton that is keyed to the monitor's system name. */
struct SystemKeyed {
    const char *className;
    const char *nameFormat; // of its key `Name`, with the system name for %s; null: it has no such key
};

/** The value of `Name`. */
struct ObjectName {
    ObjectName(const char *format, const SystemName &system);
    char text[100];
};

// In the values of these keys the system name stands for %s.

void addSystemKeys(const CMPIObjectPath *path, std::span<const Key> keys, const SystemName &system);

/** The path of such an object, the work of a `_makePath_` function; null on failure. compat: without the
 * monitor's record the path has no keys, and the status, with `failure`, ends the request. */
[[nodiscard]] CMPIObjectPath *makePathBySystemName(const CMPIBroker *broker, const char *className,
                                                   const CMPIObjectPath *reference, std::span<const Key> keys,
                                                   const char *failure, CMPIStatus *status);

/** Checks `Name`, `SystemName`, `SystemCreationClassName`, `CreationClassName` without regard to case. False,
 * with CMPI_RC_ERR_NOT_FOUND in the status, at the first key that is missing or wrong. */
[[nodiscard]] bool checkSystemKeys(const CMPIBroker *broker, const CMPIObjectPath *path,
                                   const SystemKeyed &object, CMPIStatus *status);

} // namespace frame

#endif
