// SPDX-License-Identifier: Apache-2.0
// Object paths, and the numbered instance identifiers in them.
#ifndef FRAME_PATHS_H
#define FRAME_PATHS_H

#include "frame/values.h"

namespace frame
{

struct Key {
    const char *name;
    const char *value;
};

/** A new path of a class in the namespace of `reference`; null, with `status` set, on failure. The results of
 * adding a key are not looked at: an object manager refuses one only where its class definition lacks it. */
[[nodiscard]] CMPIObjectPath *newPath(const CMPIBroker *broker, const char *className,
                                      const CMPIObjectPath *reference, CMPIStatus *status,
                                      std::initializer_list<Key> keys = {});

void addKeys(const CMPIObjectPath *path, std::initializer_list<Key> keys);

/** The path of a class whose one key is `InstanceID`, the work of a `_makePath_`; null on failure. */
[[nodiscard]] CMPIObjectPath *makePathByInstanceID(const CMPIBroker *broker, const char *className,
                                                   const CMPIObjectPath *reference, const char *instanceID,
                                                   CMPIStatus *status);

/** The text of a numbered instance identifier such as "ZT:Marovelton_ColorSpace:%d", counted from 1. */
struct InstanceID {
    InstanceID(const char *format, int index);
    char text[48];
};

/** The index, from 0, of the identifier that equals `instanceID` exactly. Returns 0, or -1 with `errorText`
 * filled. */
[[nodiscard]] int matchInstanceID(const char *instanceID, const char *format, int count, char *errorText,
                                  int *index);

/** The key of an object path as text; null when it is missing, null or of another type. */
[[nodiscard]] const char *keyText(const CMPIObjectPath *path, const char *name);

/** Characters where the interface has a value: of the type CMPI_chars the pointer itself is the value. */
inline const CMPIValue *charsValue(const char *text)
{
    return static_cast<const CMPIValue *>(static_cast<const void *>(text));
}

/** Whether a path is of a class, without regard to case. */
[[nodiscard]] bool isOfClass(const CMPIObjectPath *path, const char *className);

} // namespace frame

#endif
