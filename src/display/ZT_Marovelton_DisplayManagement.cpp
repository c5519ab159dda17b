// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_DisplayManagement: the monitor's management switches, one object. Power saver, power-on
// recall, DDC/CI, EDID update, hot plug, calibration support and Display Port, with one method per switch.

#include "display/modules.h"

using namespace frame;

namespace
{

const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_DisplayManagement";
constexpr const char *_InstanceID = "ZT:Marovelton_DisplayManagement";

} // namespace

// ---- path and instance ----

CMPIObjectPath *_makePath_ZT_Marovelton_DisplayManagement(const CMPIObjectPath *reference, CMPIStatus *status)
{
    return makePathByInstanceID(_broker, _ClassName, reference, _InstanceID, status);
}

CMPIInstance *_makeInst_ZT_Marovelton_DisplayManagement(const CMPIObjectPath *reference, CMPIStatus *status)
{
    InstanceBuilder switches(_broker, _ClassName,
                             _makePath_ZT_Marovelton_DisplayManagement(reference, status), status);
    ManagementInfo info = {};
    SystemName system;
    if (!switches ||
        !switches.require(GetDisplayManagementInfo(&info) == 0,
                          "Failed to get display management information from database.") ||
        !switches.readSystemName("Could not get monitor information from database.", &system)) {
        return nullptr;
    }

    switches.boolean("AutoEDIDUpdateEnabled", info.EDIDUpdateEnabled);
    switches.boolean("CalibrationEnabled", info.CalibrationSupportEnabled);
    switches.boolean("DDCCICommunicationsEnabled", info.DDCCICommunicationEnabled);
    switches.boolean("HotPlugInitiateEnabled", info.HotPlugInitiateEnabled);
    switches.boolean("PowerOnRecallEnabled", info.PowerOnRecallEnabled);
    switches.boolean("PowerSaverEnabled", info.PowerSaverEnabled);
    switches.uint16("DisplayPortHotPlugDetection", info.DisplayPortHotPlugDetection);
    switches.describe(
        _InstanceID,
        "A class derived from Logical Element that represents the single node container of the Display Management System.");
    switches.formatted("Name", "%s-DisplayManagement", system.text);
    return switches.finish();
}

// ---- settings ----

int setAutoEDIDUpdateState(int value, char *errorText)
{
    return sendSetting(MANAGEMENT_ID, {{AUTO_EDID_STATUS, value}}, "Failed to set AutoEDIDUpdateState.",
                       errorText);
}

int setCalibrationState(int value, char *errorText)
{
    return sendSetting(MANAGEMENT_ID, {{CALIBRATION_STATUS, value}},
                       "Failed to set the value to CalibrationState.", errorText);
}

int setDDCCICommunicationsState(int value, char *errorText)
{
    return sendSetting(MANAGEMENT_ID, {{DDC_CI_COMM_STATUS, value}},
                       "Failed to set the value to DDCCICommunicationsState.", errorText);
}

int setHotPlugInitiateState(int value, char *errorText)
{
    return sendSetting(MANAGEMENT_ID, {{HOT_PLUG_INITIATE, value}},
                       "Failed to set the values to HotPlugInitiateState.", errorText);
}

int setPowerOnRecallState(int value, char *errorText)
{
    return sendSetting(MANAGEMENT_ID, {{POWER_ON_RECALL_STATUS, value}},
                       "Failed to set the value to PowerOnRecallState.", errorText);
}

int setPowerSaverState(int value, char *errorText)
{
    return sendSetting(MANAGEMENT_ID, {{AUTO_SLEEP_MODE, value}},
                       "Failed to set the value to PowerSaverState.", errorText);
}

int setDisplayPortHotPlugDetection(int value, char *errorText)
{
    return sendSetting(MANAGEMENT_ID, {{DP_HPD_STATUS, value}},
                       "Failed to set the value to DisplayPortHotPlugDetection.", errorText);
}

int setDisplayPortComapatibility(int value, char *errorText)
{
    return sendSetting(MANAGEMENT_ID, {{DP_COMPATABILITY_MODE, value}},
                       "Failed to set the value to DisplayPortComapatibility.", errorText);
}

// ---- methods ----

namespace
{

// The range texts differ in a comma or a word; clients know each as it stands. The two Display Port methods
// take numbers only.
constexpr Method methods[] = {
    {.name = "SetAutoEDIDUpdateEnabled",
     .argument = {ArgumentKind::toggle, "AutoEDIDUpdateEnabled",
                  "Required argument AutoEDIDUpdateEnabled missing."},
     .range = {0, 1, "Invalid input value range. Valid values are between 0 and 1."},
     .set = setAutoEDIDUpdateState},
    {.name = "SetCalibrationEnabled",
     .administrator = true,
     .argument = {ArgumentKind::toggle, "CalibrationEnabled",
                  "Required argument CalibrationEnabled missing."},
     .range = {0, 1, "Invalid input value range, Valid values are 0 and 1."},
     .set = setCalibrationState},
    {.name = "SetDDCCICommunicationsEnabled",
     .argument = {ArgumentKind::toggle, "DDCCICommunicationsEnabled",
                  "Required argument DDCCICommunicationsEnabled missing."},
     .range = {0, 1, "Invalid input value range. Valid values are 0 and 1."},
     .set = setDDCCICommunicationsState},
    {.name = "SetHotPlugInitiateEnabled",
     .argument = {ArgumentKind::toggle, "HotPlugInitiateEnabled",
                  "Required argument HotPlugInitiateEnabled missing."},
     .range = {0, 1, "Invalid input value range, Valid values are 0 and 1."},
     .set = setHotPlugInitiateState},
    {.name = "SetPowerOnRecallEnabled",
     .argument = {ArgumentKind::toggle, "PowerOnRecallEnabled",
                  "Required argument PowerOnRecallEnabled missing."},
     .range = {0, 1, "Invalid input value range, Valid values are 0 and 1."},
     .set = setPowerOnRecallState},
    {.name = "SetPowerSaverEnabled",
     .argument = {ArgumentKind::toggle, "PowerSaverEnabled", "Required argument PowerSaverEnabled missing."},
     .range = {0, 1, "Invalid input value range. Valid values are between 0 and 1."},
     .set = setPowerSaverState},
    {.name = "SetDisplayPortHotPlugDetection",
     .argument = {ArgumentKind::integer, "DisplayPortHotPlugDetection",
                  "Required argument DisplayPortHotPlugDetection missing."},
     .range = {0, 1, "Invalid input value range. Valid values are 0 and 1."},
     .set = setDisplayPortHotPlugDetection},
    {.name = "SetDisplayPortComapatibility",
     .argument = {ArgumentKind::integer, "DisplayPortComapatibility",
                  "Required argument DisplayPortComapatibility missing."},
     .range = {0, 1, "Invalid input value range. Valid values are 0 and 1."},
     .set = setDisplayPortComapatibility},
};

constexpr ProviderClass provider = {
    .name = _ClassName,
    .key = {.name = "InstanceID", .value = _InstanceID},
    .builders = {.path = _makePath_ZT_Marovelton_DisplayManagement,
                 .instance = _makeInst_ZT_Marovelton_DisplayManagement},
    .methods = methods,
};

} // namespace

STAMP_INSTANCE_AND_METHOD_PROVIDER(ZT_Marovelton_DisplayManagement, provider)
