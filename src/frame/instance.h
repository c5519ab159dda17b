// SPDX-License-Identifier: Apache-2.0
// An instance on its way to the object manager.
#ifndef FRAME_INSTANCE_H
#define FRAME_INSTANCE_H

#include "frame/system_keys.h"
#include <cstdint>
#include <cstring>

namespace frame
{

// The results of setting a property are not looked at: an object manager refuses one only where the client's
// property list leaves it out or its class definition lacks it, and the rest of the instance is right.

/** An instance on its way: each call sets one property, in the order of the class's table. Once a step has
 * failed the later ones do nothing and `finish` gives null. */
struct InstanceBuilder {
    /** Makes an empty instance on a path; a null path gives a builder that has failed already. */
    InstanceBuilder(const CMPIBroker *broker, const char *className, const CMPIObjectPath *path,
                    CMPIStatus *status);

    explicit operator bool() const
    {
        return instance != nullptr;
    }
    /** Ends the build with CMPI_RC_ERR_FAILED and `text` unless `ok`. Returns whether it goes on. */
    [[nodiscard]] bool require(bool ok, const char *text);
    /** Reads the monitor's system name, or ends the build with `failure`. */
    [[nodiscard]] bool readSystemName(const char *failure, SystemName *name);

    void boolean(const char *name, int value); // the low byte
    void uint16(const char *name, int value);  // the low 16 bits
    void real32(const char *name, float value);
    void text(const char *name, const char *value);
    /** One %s in `format`, at most 99 characters in all. */
    void formatted(const char *name, const char *format, const char *value);
    /** A point in time, in seconds since 1970-01-01 UTC. */
    void dateTime(const char *name, int64_t seconds);
    /** A text field of a record, which may be full to its width without a terminating zero. */
    template <size_t width>
    void field(const char *name, const char (&value)[width])
    {
        char terminated[width + 1] = {};
        memcpy(terminated, value, width);
        text(name, terminated);
    }
    void uint16Array(const char *name, std::initializer_list<int> values);
    template <size_t width>
    void fieldArray(const char *name, const char (&value)[width])
    {
        char terminated[width + 1] = {};
        memcpy(terminated, value, width);
        textArray(name, terminated);
    }

    /** Sets Caption, ElementName, InstanceID and Description, for a class that has them in this order. */
    void describe(const char *instanceID, const char *description);
    /** Sets the keys that the path has as properties, where the object manager has not done so. In their
     * values the system name stands for %s. */
    void ownKeys(std::span<const Key> keys, const SystemName &system);

    /** The finished instance, or null with the status set. */
    [[nodiscard]] CMPIInstance *finish();

    const CMPIBroker *broker;
    const char *className;
    CMPIStatus *status;
    CMPIInstance *instance;

  private:
    void set(const char *name, const CMPIValue *value, CMPIType type);
    [[nodiscard]] CMPIArray *newArray(CMPICount size, CMPIType type);
    void setElement(CMPIArray *array, CMPICount position, const CMPIValue &value, CMPIType type);
    void textArray(const char *name, const char *value);
};

} // namespace frame

#endif
