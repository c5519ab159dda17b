// SPDX-License-Identifier: Apache-2.0
#include "core/computer_system.h"

#include "cmpi/call.h"
#include "cmpi/objects.h"

#include <cmpi/cmpimacs.h>

#include <string>
#include <unistd.h>

namespace host
{
namespace
{

/** The broker travels in the handle of the interface. */
const CMPIBroker *brokerOf(const CMPIInstanceMI *mi)
{
    return static_cast<const CMPIBroker *>(mi->hdl);
}

CMPIObjectPath *makePathOfSystem(const CMPIBroker *broker, const CMPIObjectPath *reference,
                                 CMPIStatus *status)
{
    const CMPIString *nameSpace = CMGetNameSpace(reference, status);
    CMPIObjectPath *path = CMNewObjectPath(broker, CMGetCharPtr(nameSpace), computerSystemClass, status);
    if (path == nullptr) {
        return nullptr;
    }
    *status = CMAddKey(path, "CreationClassName", reinterpret_cast<const CMPIValue *>(computerSystemClass),
                       CMPI_chars);
    if (status->rc == CMPI_RC_OK) {
        *status = CMAddKey(path, "Name", reinterpret_cast<const CMPIValue *>(localHostName()), CMPI_chars);
    }
    return status->rc == CMPI_RC_OK ? path : nullptr;
}

CMPIInstance *makeSystem(const CMPIBroker *broker, const CMPIObjectPath *reference, const char **properties,
                         CMPIStatus *status)
{
    const CMPIObjectPath *path = makePathOfSystem(broker, reference, status);
    CMPIInstance *instance = path != nullptr ? CMNewInstance(broker, path, status) : nullptr;
    if (instance == nullptr) {
        return nullptr;
    }
    *status = CMSetPropertyFilter(instance, properties, nullptr);
    const auto set = [&](const char *name, const void *value, CMPIType type) {
        const CMPIStatus result = CMSetProperty(instance, name, static_cast<const CMPIValue *>(value), type);
        // The superclasses, and with them the optional properties, are those of the MOF files in use.
        if (result.rc != CMPI_RC_OK && result.rc != CMPI_RC_ERR_NO_SUCH_PROPERTY) {
            *status = result;
        }
    };
    const CMPIUint16 enabled = 2;
    const CMPIUint16 okay = 5;
    set("ElementName", localHostName(), CMPI_chars);
    set("Caption", "Computer System", CMPI_chars);
    set("Description", "The computer system that the object manager runs on.", CMPI_chars);
    set("NameFormat", "Other", CMPI_chars);
    set("EnabledState", &enabled, CMPI_uint16);
    set("HealthState", &okay, CMPI_uint16);
    return status->rc == CMPI_RC_OK ? instance : nullptr;
}

CMPIStatus cleanup(CMPIInstanceMI *mi, const CMPIContext *, CMPIBoolean)
{
    delete mi;
    return makeStatus(CMPI_RC_OK);
}

CMPIStatus enumerateInstanceNames(CMPIInstanceMI *mi, const CMPIContext *, const CMPIResult *result,
                                  const CMPIObjectPath *reference)
{
    CMPIStatus status = {};
    const CMPIObjectPath *path = makePathOfSystem(brokerOf(mi), reference, &status);
    return path != nullptr ? CMReturnObjectPath(result, path) : status;
}

CMPIStatus enumerateInstances(CMPIInstanceMI *mi, const CMPIContext *, const CMPIResult *result,
                              const CMPIObjectPath *reference, const char **properties)
{
    CMPIStatus status = {};
    const CMPIInstance *instance = makeSystem(brokerOf(mi), reference, properties, &status);
    return instance != nullptr ? CMReturnInstance(result, instance) : status;
}

/** Keys that are given must be this system's; letter case does not count in them. */
bool isKey(const CMPIObjectPath *path, const char *key, const char *expected)
{
    CMPIStatus status = {};
    const CMPIData data = CMGetKey(path, key, &status);
    return status.rc == CMPI_RC_OK && cim::sameName(textOf(stringOf(data)), expected);
}

CMPIStatus notFound(const CMPIBroker *broker)
{
    CMPIStatus status = {};
    CMPIString *message = CMNewString(broker, "This host is another computer system.", &status);
    return makeStatus(CMPI_RC_ERR_NOT_FOUND, message);
}

CMPIStatus getInstance(CMPIInstanceMI *mi, const CMPIContext *context, const CMPIResult *result,
                       const CMPIObjectPath *reference, const char **properties)
{
    if (!isKey(reference, "CreationClassName", computerSystemClass) ||
        !isKey(reference, "Name", localHostName())) {
        return notFound(brokerOf(mi));
    }
    return enumerateInstances(mi, context, result, reference, properties);
}

CMPIStatus notSupported(const CMPIInstanceMI *mi)
{
    CMPIStatus status = {};
    CMPIString *message = CMNewString(brokerOf(mi), "The computer system cannot be changed.", &status);
    return makeStatus(CMPI_RC_ERR_NOT_SUPPORTED, message);
}

CMPIStatus createInstance(CMPIInstanceMI *mi, const CMPIContext *, const CMPIResult *, const CMPIObjectPath *,
                          const CMPIInstance *)
{
    return notSupported(mi);
}

CMPIStatus modifyInstance(CMPIInstanceMI *mi, const CMPIContext *, const CMPIResult *, const CMPIObjectPath *,
                          const CMPIInstance *, const char **)
{
    return notSupported(mi);
}

CMPIStatus deleteInstance(CMPIInstanceMI *mi, const CMPIContext *, const CMPIResult *, const CMPIObjectPath *)
{
    return notSupported(mi);
}

CMPIStatus execQuery(CMPIInstanceMI *mi, const CMPIContext *, const CMPIResult *, const CMPIObjectPath *,
                     const char *, const char *)
{
    CMPIStatus status = {};
    CMPIString *message = CMNewString(brokerOf(mi), "Queries are not supported.", &status);
    return makeStatus(CMPI_RC_ERR_NOT_SUPPORTED, message);
}

const CMPIInstanceMIFT table = {
    tableVersion,
    tableVersion,
    "instanceLinux_ComputerSystem",
    cleanup,
    enumerateInstanceNames,
    enumerateInstances,
    getInstance,
    createInstance,
    modifyInstance,
    deleteInstance,
    execQuery,
};

} // namespace

const char *localHostName()
{
    static const std::string name = [] {
        char text[256] = {};
        return std::string(gethostname(text, sizeof text - 1) == 0 && text[0] != '\0' ? text : "localhost");
    }();
    return name.c_str();
}

CMPIInstanceMI *createComputerSystemProvider(const CMPIBroker *broker, const CMPIContext *,
                                             CMPIStatus *status)
{
    setStatus(status, CMPI_RC_OK);
    return new CMPIInstanceMI{broker, &table}; // cleanup() gives it back
}

} // namespace host
