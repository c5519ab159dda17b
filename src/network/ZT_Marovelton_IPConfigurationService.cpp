// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_IPConfigurationService: switches the management interface between DHCP and the static IPv4
// configuration, one object.

#include "network/modules.h"
#include "network/network_objects.h"

using namespace frame;

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_IPConfigurationService";

constexpr NetworkObject service = {
    .keyed = {_ClassName, "%s-IPConfigurationService"},
    .instanceID = "ZT:Marovelton_IPConfigurationService",
    .description =
        "A class derived from CIM IPConfigurationService that represents the single node container of the Display management.",
};

int mode_to_iscurrent_isnext(int mode, int *isCurrent, int *isNext)
{
    static constexpr struct {
        int mode;
        SettingsState isCurrent, isNext;
    } modes[] = {
        {0, YES, YES}, {1, YES, YES},        {2, DONT_CHANGE, YES},     {3, NO, NO},
        {4, NO, NO},   {5, DONT_CHANGE, NO}, {32768, YES, DONT_CHANGE}, {32769, NO, DONT_CHANGE},
    };
    for (const auto &known : modes) {
        if (known.mode == mode) {
            *isCurrent = known.isCurrent;
            *isNext = known.isNext;
            return 1;
        }
    }
    return 0;
}

CMPIObjectPath *_makePath_ZT_Marovelton_IPConfigurationService(const CMPIObjectPath *reference,
                                                               CMPIStatus *status)
{
    return makeNetworkObjectPath(_broker, service, reference, status);
}

CMPIInstance *_makeInst_ZT_Marovelton_IPConfigurationService(const CMPIObjectPath *reference,
                                                             CMPIStatus *status)
{
    InstanceBuilder instance = makeNetworkObjectInst(_broker, service, reference, status);
    instance.uint16Array("AvailableRequestedStates", {2});
    return instance.finish();
}

// ---- methods ----

/** The setting data that can be applied, and the value of IP_CONFIGURATION_MODE that applies it. */
constexpr struct {
    const char *className;
    const char *keyMissing;
    int mode;
} appliedSettings[] = {
    {"ZT_Marovelton_ExtendedStaticIPAssignmentSettingData",
     "Could not get key of instance(ZT_Marovelton_ExtendedStaticIPAssignmentSettingData).", 1},
    {"ZT_Marovelton_DHCPSettingData", "Could not get key of instance(ZT_Marovelton_DHCPSettingData).", 0},
};

/** Reads the reference to the setting data that shall be applied, and gives its mode. */
static bool requireSettingData(Call &call, int *mode)
{
    static constexpr ReferenceTexts texts = {
        .missing = "Required argument SettingData missing.",
        .className = "Could not get classname of SettingData",
        .invalidType = "Invalid type of parameter(SettingData).",
        .null = "Invalid parameter(SettingData).",
    };
    const char *className = nullptr;
    const CMPIObjectPath *path = requireReference(call, "SettingData", texts, &className);
    if (!path) {
        return false;
    }
    for (const auto &setting : appliedSettings) {
        if (same(setting.className, className)) {
            const char *instanceID = keyText(path, "InstanceID");
            *mode = setting.mode;
            return same(instanceID, appliedSettingID(*mode)) ||
                   fail(call, CMPI_RC_ERR_INVALID_PARAMETER,
                        instanceID ? "This Input class does not exist (wrong InstanceID)."
                                   : setting.keyMissing);
        }
    }
    return fail(call, CMPI_RC_ERR_INVALID_PARAMETER, "Invalid classname for SettingData");
}

static bool runApplySetting(Call &call)
{
    static constexpr ReferenceTexts connection = {
        .missing = "Required argument IPNetworkConnection missing.",
        .className = "Could not get classname of IPNetworkConnection",
        .invalidType = "Invalid type of parameter(IPNetworkConnection).",
        .null = "Invalid parameter(IPNetworkConnection).",
    };
    const char *className = nullptr; // there is one connection: any class name is taken
    if (!requireReference(call, "IPNetworkConnection", connection, &className)) {
        return false;
    }
    // Clients have to name a mode, which one does not matter: the setting data decides.
    const char *text =
        requireText(call, "Mode", "Required argument Mode  missing.", "Invalid type of parameter(Mode).");
    int mode = 0;
    if (!text || !requireContent(call, text, "Invalid parameter. Mode Value is empty.") ||
        !requireSettingData(call, &mode)) {
        return false;
    }

    RemoteManagementServer server = {};
    if (GetRemoteManagementServerInfo(&server) != 0) {
        return fail(call, CMPI_RC_ERR_FAILED, "Failed to get remote management info.");
    }
    if (!server.RemoteManagementEnabled) {
        return fail(call, CMPI_RC_ERR_FAILED, "Remote management status is disabled.");
    }
    // The engine is not waited for.
    return settled(call, sendSetting(REMOTE_MGMENT_ID, {{IP_CONFIGURATION_MODE, mode}},
                                     {.reply = nullptr, .onlyMinusOneFails = true}, call.errorText));
}

constexpr Method methods[] = {
    {.name = "ApplySettingToIPNetworkConnection", .administrator = true, .run = runApplySetting},
    {.name = "RequestStateChange", .run = refuseMethod},
};

STAMP_INSTANCE_AND_METHOD_PROVIDER(ZT_Marovelton_IPConfigurationService, .systemKeys = &service.keyed,
                                   .methods = methods, .refusals = {.failureValue = 1})
