// SPDX-License-Identifier: Apache-2.0
// A class: what the frame needs to know of it, its intrinsic reads and its methods.
#ifndef FRAME_PROVIDER_H
#define FRAME_PROVIDER_H

#include "frame/instance.h"
#include "frame/method.h"

namespace frame
{

/** The key by which GetInstance and the methods know an instance, and the texts of GetInstance. */
struct IdentifyingKey {
    const char *name = nullptr; // null: none beside the system keys
    const char *value = nullptr;
    /** For numbered instances instead of `value`: finds the index. */
    int (*validate)(const char *text, char *errorText, int *index) = nullptr;
    const char *missing = "Could not get InstanceID of instance.";
    const char *wrong = "This class name does not exist (wrong InstanceID).";
};

/** The trace lines of the intrinsic reads, each with the class name for %s; null prints none. */
struct ReadTraces {
    const char *namesCalled = "--- %s CMPI EnumInstanceNames() called\n";
    const char *namesExited = "--- %s CMPI EnumInstanceNames() exited\n";
    const char *instancesCalled = "--- %s CMPI EnumInstances() called\n";
    const char *instancesLeft = "--- %s CMPI EnumInstances() leave \n";
};
inline constexpr ReadTraces usualReadTraces = {};

/** Asks for the object at `index`, or for the only one. */
template <typename Made>
using BuilderAt = Made *(*)(const CMPIObjectPath *reference, int index, CMPIStatus *status);
template <typename Made>
using Builder = Made *(*)(const CMPIObjectPath *reference, CMPIStatus *status);

/** What makes the objects of a class: the only one, or each of several by its index. */
struct Builders {
    Builder<CMPIObjectPath> path = nullptr;
    Builder<CMPIInstance> instance = nullptr;
    BuilderAt<CMPIObjectPath> pathAt = nullptr;
    BuilderAt<CMPIInstance> instanceAt = nullptr;

    constexpr Builders(Builder<CMPIObjectPath> thePath, Builder<CMPIInstance> theInstance)
        : path(thePath), instance(theInstance)
    {
    }
    constexpr Builders(BuilderAt<CMPIObjectPath> thePath, BuilderAt<CMPIInstance> theInstance)
        : pathAt(thePath), instanceAt(theInstance)
    {
    }
};

/** What the intrinsic reads of a class bring. */
struct Reads {
    int count = 1;
    std::span<const uint8_t> refresh = {}; // information groups to refresh before a read, in order
    const ReadTraces *traces = &usualReadTraces;
};

/** How a method call is refused before its row is reached, and what it answers then. */
struct Refusals {
    const char *wrongClass = "Invalid class name"; // null: OK and `failureValue`
    bool checkKeyValue = true;                     // whether the key's value is checked before the method
    CMPIrc wrongKey = CMPI_RC_ERR_NOT_FOUND;
    CMPIrc unknownMethod = CMPI_RC_ERR_NOT_FOUND;
    uint8_t unknownMethodValue = 1;
    uint8_t missingKeyValue = 2;
    uint8_t failureValue = 2;
};

/** What the frame needs to know of a class: what builds its objects, what identifies them, what its methods
 * are and how they are refused. */
struct ProviderClass {
    const char *name;
    Builders builders;
    const SystemKeyed *systemKeys = nullptr; // where its objects are keyed to the monitor's system name
    IdentifyingKey key = {};
    Reads reads = {};
    std::span<const Method> methods = {};
    int (*compareMethodNames)(const char *, const char *) = strcmp;
    CMPIType returnType = CMPI_uint32;
    Refusals refusals = {};
};

CMPIStatus enumInstanceNames(const ProviderClass &provider, const CMPIBroker *broker,
                             const CMPIResult *result, const CMPIObjectPath *reference);
CMPIStatus enumInstances(const ProviderClass &provider, const CMPIBroker *broker, const CMPIResult *result,
                         const CMPIObjectPath *reference);
CMPIStatus getInstance(const ProviderClass &provider, const CMPIBroker *broker, const CMPIResult *result,
                       const CMPIObjectPath *reference);
CMPIStatus invokeMethod(const ProviderClass &provider, const CMPIBroker *broker, const CMPIContext *context,
                        const CMPIResult *result, const CMPIObjectPath *reference, const char *methodName,
                        const CMPIArgs *in);

/** The answer of the operations that a class does not offer. */
CMPIStatus notSupported(const CMPIBroker *broker);

/** The answer of classes that have no method but the placeholder "insert_method_name": always return value 1;
 * an unknown name, or another class, is answered with `unknownCode` and the method name. */
CMPIStatus invokePlaceholder(const CMPIBroker *broker, const char *className, CMPIrc unknownCode,
                             const CMPIResult *result, const CMPIObjectPath *reference,
                             const char *methodName);

} // namespace frame

#endif
