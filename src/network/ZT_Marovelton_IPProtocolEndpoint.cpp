// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_IPProtocolEndpoint: one IPv4 endpoint for every network interface of the controller. The one
// class that reads no record of the monitor: it runs the shell tools and parses what they print.

#include "network/modules.h"

#include <cstdio>
#include <cstdlib>

using namespace frame;

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_IPProtocolEndpoint";
constexpr char namePrefix[] = "IPv4_";
constexpr size_t namePrefixLength = sizeof namePrefix - 1;
constexpr size_t interfaceNameSize = 64;
constexpr const char *safeInCommands = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-@";

namespace
{

/** The output of a command, freed at the end of its scope. */
struct CommandOutput {
    CommandOutput(const char *command, bool captureErrors)
    {
        result = runcommand(command, nullptr, &lines, captureErrors ? &errors : nullptr);
    }
    ~CommandOutput()
    {
        if (lines) {
            freeresultbuf(lines);
        }
        if (errors) {
            freeresultbuf(errors);
        }
    }
    CommandOutput(const CommandOutput &) = delete;
    CommandOutput &operator=(const CommandOutput &) = delete;
    /** Line `number`, from 0, of the first two; null when there are fewer. */
    const char *line(int number) const
    {
        return !lines || !lines[0] ? nullptr : lines[number];
    }

    char **lines = nullptr;
    char **errors = nullptr;
    int result;
};

} // namespace

/** Puts an interface name into a command, which reaches a shell: false for a name with anything but letters,
 * digits and . _ - @, or one that the command would take for an option; its commands are not run. */
static bool formatCommand(char *command, size_t size, const char *format, const char *ifName)
{
    const size_t length = strlen(ifName);
    if (length == 0 || length >= interfaceNameSize || *ifName == '-' ||
        strspn(ifName, safeInCommands) != length) {
        return false;
    }
    snprintf(command, size, format, ifName);
    return true;
}

/** A heap copy of the text up to, not including, the first of the given characters; null without memory. */
static char *copyUntil(const char *text, const char *ends)
{
    return strndup(text, strcspn(text, ends));
}

/** Takes address and mask from the second line that ifconfig prints in its classic layout:
 *  "          inet addr:192.168.1.20  Bcast:192.168.1.255  Mask:255.255.255.0". */
static void parseAddress(const char *line, cim_ipProtocolEndpoint *record)
{
    if (!strstr(line, "inet addr:")) {
        return;
    }
    const char *address = strchr(line, ':') + 1;
    record->address = copyUntil(address, " \n");
    if (const char *mask = strstr(address, "Mask:")) {
        record->subnetmask = copyUntil(mask + strlen("Mask:"), "\n");
    }
}

// ---- the endpoints ----

void free_ipProtocolEndpoint(cim_ipProtocolEndpoint *record)
{
    if (!record) {
        return;
    }
    free(record->name);
    free(record->address);
    free(record->subnetmask);
    free(record);
}

void free_ipPEndpointList(ipPEndpointList *list)
{
    while (list) {
        ipPEndpointList *next = list->next;
        free_ipProtocolEndpoint(list->sptr);
        free(list);
        list = next;
    }
}

char *_get_ipProtocolEndpoint_name(const char *ifName)
{
    const size_t size = namePrefixLength + strlen(ifName) + 1;
    char *name = static_cast<char *>(malloc(size));
    if (name) {
        snprintf(name, size, "%s%s", namePrefix, ifName);
    }
    return name;
}

uint16_t _get_port_status(const char *ifName)
{
    char command[sizeof "/sbin/ifconfig | grep " + interfaceNameSize];
    if (!formatCommand(command, sizeof command, "/sbin/ifconfig | grep %s", ifName)) {
        return 3;
    }
    const CommandOutput output(command, false);
    if (output.result != 0) {
        return 3;
    }
    return output.line(0) ? 2 : 0;
}

int _ipProtocolEndpoint_data(const char *endpointName, ipPEndpointList *node)
{
    const char *ifName = strlen(endpointName) > namePrefixLength ? endpointName + namePrefixLength : "";
    cim_ipProtocolEndpoint *record =
        static_cast<cim_ipProtocolEndpoint *>(calloc(1, sizeof(cim_ipProtocolEndpoint)));
    node->sptr = record;
    if (!record) {
        return 0;
    }
    record->name = strdup(endpointName);
    record->type = 2;
    record->version = 1;
    record->enabled = _get_port_status(ifName);

    char command[sizeof "/sbin/ifconfig " + interfaceNameSize];
    if (!formatCommand(command, sizeof command, "/sbin/ifconfig %s", ifName)) {
        return 0;
    }
    const CommandOutput output(command, true);
    if (const char *line = output.line(1)) {
        parseAddress(line, record);
    }
    return 0;
}

int enum_all_ipProtocolEndpoints(ipPEndpointList **list)
{
    *list = nullptr;
    const CommandOutput output("cat /proc/net/dev", false);
    if (!output.line(0)) {
        return output.result;
    }
    if (!output.line(1)) {
        return 0;
    }

    ipPEndpointList **end = list;
    for (char **line = output.lines + 2; *line; ++line) { // below the two lines of the heading
        char ifName[interfaceNameSize] = "";
        sscanf(*line, " %63[^:]:", ifName);
        char *name = _get_ipProtocolEndpoint_name(ifName);
        ipPEndpointList *node = static_cast<ipPEndpointList *>(calloc(1, sizeof(ipPEndpointList)));
        if (name && node) {
            _ipProtocolEndpoint_data(name, node);
            *end = node;
            end = &node->next;
        } else {
            free(node);
        }
        free(name);
    }
    return 0;
}

int get_ipProtocolEndpoint_data(const char *endpointName, cim_ipProtocolEndpoint **record)
{
    *record = nullptr;
    ipPEndpointList *list = nullptr;
    if (enum_all_ipProtocolEndpoints(&list) != 0 || !list) {
        free_ipPEndpointList(list);
        return -1;
    }
    for (ipPEndpointList *node = list; node && !*record; node = node->next) {
        if (node->sptr && node->sptr->name && strcmp(node->sptr->name, endpointName) == 0) {
            *record = node->sptr;
            node->sptr = nullptr; // the caller's now
        }
    }
    free_ipPEndpointList(list);
    return 0;
}

CMPIObjectPath *_makePath_ZT_Marovelton_IPProtocolEndpoint(const CMPIObjectPath *reference,
                                                           const cim_ipProtocolEndpoint *record,
                                                           CMPIStatus *status)
{
    trace("--- %s makePath called\n", _ClassName);
    CMPIObjectPath *path = newPath(_broker, _ClassName, reference, status);
    SystemName system;
    if (!path || !record || !record->name ||
        !readSystemName(_broker, status, "Could not get monitor information from database.", &system)) {
        return nullptr;
    }
    addKeys(path, {{"SystemCreationClassName", "Linux_ComputerSystem"},
                   {"SystemName", system.text},
                   {"CreationClassName", _ClassName},
                   {"Name", record->name}});
    return path;
}

CMPIInstance *_makeInst_ZT_Marovelton_IPProtocolEndpoint(const CMPIObjectPath *reference,
                                                         const cim_ipProtocolEndpoint *record,
                                                         CMPIStatus *status)
{
    // Clients compare against the text "NULL" where a value is missing.
    constexpr const char *missing = "NULL";
    InstanceBuilder instance(_broker, _ClassName, newPath(_broker, _ClassName, reference, status), status);
    SystemName system;
    if (!instance || !record || !record->name ||
        !instance.readSystemName("Could not get monitor information from database.", &system)) {
        return nullptr;
    }
    instance.text("SystemCreationClassName", "Linux_ComputerSystem");
    instance.text("SystemName", system.text);
    instance.text("CreationClassName", _ClassName);
    instance.text("Name", record->name);
    instance.uint16("ProtocolIFType", 4096); // IPv4
    instance.text("NameFormat", "IP");
    instance.uint16("ProtocolType", record->type);
    instance.text("OtherTypeDescription", missing);
    instance.text("IPv4Address", record->address ? record->address : missing);
    instance.text("SubnetMask", record->subnetmask ? record->subnetmask : missing);
    instance.text("IPv6Address", missing);
    instance.uint16("IPVersionSupport", record->version);
    instance.text("Caption", "Protocol Endpoint for IP (Internet Protocol) ");
    instance.text(
        "Description",
        "A communication point to send and receive data. This class is dedicated to link IP intefaces to Logical Networks.");
    instance.text("Status", "OK");
    instance.text("ElementName", record->name);
    instance.uint16("EnabledState", record->enabled);
    instance.text("OtherEnabledState", missing);
    instance.uint16("RequestedState", record->enabled);
    instance.uint16("EnabledDefault", 2);
    return instance.finish();
}

// ---- the intrinsic reads ----

// The results of handing over are not looked at: an object manager that cannot take it has given up the
// request.

static bool handOver(const CMPIResult *result, const CMPIObjectPath *path)
{
    if (path) {
        cmpi::returnObjectPath(result, path);
    }
    return path != nullptr;
}

static bool handOver(const CMPIResult *result, const CMPIInstance *instance)
{
    if (instance) {
        cmpi::returnInstance(result, instance);
    }
    return instance != nullptr;
}

/** Hands over what `make` builds of each endpoint; the first that cannot be built ends the walk. */
template <typename Object>
static CMPIStatus returnAll(const CMPIResult *result, const CMPIObjectPath *reference, const char *failure,
                            Object *(*make)(const CMPIObjectPath *, const cim_ipProtocolEndpoint *,
                                            CMPIStatus *))
{
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    ipPEndpointList *list = nullptr;
    if (enum_all_ipProtocolEndpoints(&list) != 0) {
        fail(_broker, &status, CMPI_RC_ERR_FAILED, "Could not list IP protocol endpoints.");
    } else {
        const ipPEndpointList *node = list;
        while (node && handOver(result, make(reference, node->sptr, &status))) {
            node = node->next;
        }
        if (node) {
            fail(_broker, &status, CMPI_RC_ERR_FAILED, failure);
        } else {
            cmpi::returnDone(result);
        }
    }
    free_ipPEndpointList(list);
    return status;
}

INSTANCE_OPERATION(ZT_Marovelton_IPProtocolEndpoint, EnumInstanceNames)
{
    trace(usualReadTraces.namesCalled, _ClassName);
    const CMPIStatus status =
        returnAll(result, reference, "Transformation from internal structure to CIM ObjectPath failed.",
                  _makePath_ZT_Marovelton_IPProtocolEndpoint);
    trace(usualReadTraces.namesExited, _ClassName);
    return status;
}

INSTANCE_OPERATION(ZT_Marovelton_IPProtocolEndpoint, EnumInstances, const char **)
{
    trace(usualReadTraces.instancesCalled, _ClassName);
    const CMPIStatus status =
        returnAll(result, reference, "Transformation from internal structure to CIM Instance failed.",
                  _makeInst_ZT_Marovelton_IPProtocolEndpoint);
    trace(usualReadTraces.instancesLeft, _ClassName);
    return status;
}

INSTANCE_OPERATION(ZT_Marovelton_IPProtocolEndpoint, GetInstance, const char **)
{
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    trace("--- %s CMPI GetInstance() called\n", _ClassName);
    const char *name = keyText(reference, "Name");
    if (!name) {
        fail(_broker, &status, CMPI_RC_ERR_NOT_FOUND, "Could not get IPProtocolEndpointID.");
        return status;
    }
    cim_ipProtocolEndpoint *record = nullptr;
    if (get_ipProtocolEndpoint_data(name, &record) != 0 || !record) {
        fail(_broker, &status, CMPI_RC_ERR_NOT_FOUND, "IPProtocolEndpoint does not exist.");
        return status;
    }
    const bool made =
        handOver(result, _makeInst_ZT_Marovelton_IPProtocolEndpoint(reference, record, &status));
    free_ipProtocolEndpoint(record);
    if (!made) {
        fail(_broker, &status, CMPI_RC_ERR_FAILED, "Could not create IPProtocolEndpointID instance.");
        return status;
    }
    cmpi::returnDone(result);
    trace("--- %s CMPI GetInstance() exited\n", _ClassName);
    return status;
}

STAMP_MODIFY_NOT_SUPPORTED(ZT_Marovelton_IPProtocolEndpoint, ModifyInstance)
STAMP_NOT_SUPPORTED(ZT_Marovelton_IPProtocolEndpoint)
STAMP_PLACEHOLDER_METHOD(ZT_Marovelton_IPProtocolEndpoint, CMPI_RC_ERR_NOT_SUPPORTED)
STAMP_INSTANCE_FACTORY(ZT_Marovelton_IPProtocolEndpoint)
