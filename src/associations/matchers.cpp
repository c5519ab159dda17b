// SPDX-License-Identifier: Apache-2.0
#include "associations/matchers.h"
#include "network/network_objects.h"

#include <cstdio>

namespace associations
{

using namespace frame;

/** A text as a trace line shows it. */
static const char *shown(const char *text)
{
    return text ? text : "(null)";
}

// ---- endpoints ----

void matchEndpoint(const char *key1, const char *key2, int direction, int *match)
{
    printf("--- match_instance called---\n");
    printf("--- match_instance key1-> %s key2 -> %s---\n", shown(key1), shown(key2));
    if ((direction == ASSOC_RIGHT_LEFT && same(key2, "IPv4_eth0")) ||
        (direction == ASSOC_LEFT_RIGHT && same(key1, "IPv4_eth0"))) {
        *match = 1;
    }
}

static void endpointMatches(const char *sourceKey, const char *targetKey, int direction, Notes &notes)
{
    matchEndpoint(sourceKey, targetKey, direction, &notes.match);
}

constexpr KeyPair keysOfServices[] = {
    {"ZT_Marovelton_RemoteManagementService", ASSOC_RIGHT_LEFT, "CreationClassName", "Name"},
    {"ZT_Marovelton_WSManagementService", ASSOC_RIGHT_LEFT, "CreationClassName", "Name"},
    {nullptr, ASSOC_LEFT_RIGHT, "Name", "CreationClassName"},
};

constexpr KeyPair keysOfConnection[] = {
    {"ZT_Marovelton_IPNetworkConnection", ASSOC_RIGHT_LEFT, "CreationClassName", "Name"},
    {"ZT_Marovelton_WSManagementService", ASSOC_RIGHT_LEFT, "CreationClassName", "Name"},
    {nullptr, ASSOC_LEFT_RIGHT, "Name", "CreationClassName"},
};

constexpr Matcher endpointOfServices = {.keys = keysOfServices, .match = endpointMatches};
constexpr Matcher endpointOfConnection = {.keys = keysOfConnection, .match = endpointMatches};

// ---- settings ----

void matchSetting(const char *key1, const char *key2, int direction, int mode, int *match, int *count)
{
    static constexpr const char *function = "match_instance_elementsetting";
    const char *expected = appliedSettingID(mode);
    printf("--- %s called---\n", function);
    printf("--- %s key1-> %s key2 -> %s IPConfig_Count -> %d--- IP Mode -> %d\n", function, shown(key1),
           shown(key2), *count, mode);
    printf("InstanceID is %s\n", expected ? expected : "");
    if (direction == ASSOC_RIGHT_LEFT ||
        (direction == ASSOC_LEFT_RIGHT && !same(key2, expected ? expected : ""))) {
        *match = 1;
    } else if (direction == ASSOC_LEFT_RIGHT && *count == 0) {
        // The setting of the mode matches once in a request, all others every time.
        printf("IPConfig_Count is 0 .Returning instance %s**\n", shown(key2));
        *match = 1;
        *count = 1;
    }
}

/** The IsCurrent of a setting that matched. */
static SettingsState stateByKeys(const char *sourceKey, const char *targetKey, int mode)
{
    printf("IP_Mode is %d,key2 is %s, key1 is %s \n", mode, targetKey, sourceKey);
    const char *current = appliedSettingID(mode);
    if (same(sourceKey, current) || same(targetKey, current)) {
        puts("***Setting IsCurrent as 1*****");
        return YES;
    }
    puts("***else case Setting IsCurrent as 2*****");
    return NO;
}

static void settingMatches(const char *sourceKey, const char *targetKey, int direction, Notes &notes)
{
    matchSetting(sourceKey, targetKey, direction, notes.mode, &notes.match, &notes.count);
    const SettingsState state = notes.match == 1 ? stateByKeys(sourceKey, targetKey, notes.mode) : NO;
    notes.current = static_cast<char>(state);
}

constexpr KeyPair keysOfSettings[] = {
    {"ZT_Marovelton_IPNetworkConnection", ASSOC_LEFT_RIGHT, "CreationClassName", "InstanceID"},
    {nullptr, ASSOC_RIGHT_LEFT, "InstanceID", "CreationClassName"},
};

/** Whether the association is between the connection and its current setting. compat: with a static address
 * clients look for the accumulated setting data; the static setting data is never the current one. */
static SettingsState stateByEnds(const Ends &ends, int mode)
{
    constexpr const char *connection = "ZT_Marovelton_IPNetworkConnection";
    const char *current = mode == 0   ? "ZT_Marovelton_DHCPSettingData"
                          : mode == 1 ? "ZT_Marovelton_IPAssignmentSettingData"
                                      : nullptr;
    const bool tied = (same(ends.leftClass, connection) && same(ends.rightClass, current)) ||
                      (same(ends.leftClass, current) && same(ends.rightClass, connection));
    return tied ? YES : NO;
}

static bool readMode(const CMPIBroker *broker, CMPIStatus *status, Notes &notes)
{
    RemoteManagementServer info = {};
    if (GetRemoteManagementServerInfo(&info) != 0) {
        return fail(broker, status, CMPI_RC_ERR_FAILED, "Failed to get remote management info.");
    }
    notes.mode = info.IPConfigurationMode;
    printf("IP mode is %d\n", notes.mode);
    return true;
}

// As with every property that is not a reference, a refusal leaves the rest of the instance right.

static void setStates(const CMPIInstance *association, int isCurrent)
{
    CMPIValue value = {};
    value.uint16 = NO;
    cmpi::setProperty(association, "IsNext", &value, CMPI_uint16);
    value.uint16 = static_cast<CMPIUint16>(isCurrent);
    cmpi::setProperty(association, "IsCurrent", &value, CMPI_uint16);
}

static void setByEnds(const CMPIInstance *association, const Ends &ends, const Notes &notes)
{
    setStates(association, stateByEnds(ends, notes.mode));
}

static void setByKeys(const CMPIInstance *association, const Ends &, const Notes &notes)
{
    setStates(association, notes.current);
}

static void setSequence(const CMPIInstance *association, const Ends &, const Notes &)
{
    const CMPIValue first = {};
    cmpi::setProperty(association, "AssignedSequence", &first, CMPI_uint64);
}

constexpr Matcher settingsOfConnection = {
    .keys = keysOfSettings, .match = settingMatches, .countTrace = "%s: IPConfig_Count is %d\n"};
constexpr OwnProperties currentByEnds = {readMode, setByEnds};
constexpr OwnProperties currentByKeys = {readMode, setByKeys};
constexpr OwnProperties sequence = {nullptr, setSequence};

} // namespace associations
