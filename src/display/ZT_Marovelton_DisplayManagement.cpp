// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_DisplayManagement: the monitor's management switches, one object. Power saver, power-on
// recall, DDC/CI, EDID update, hot plug, calibration support and Display Port, with one method per switch.

#include "display/modules.h"

using namespace frame;

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_DisplayManagement";
constexpr const char *_InstanceID = "ZT:Marovelton_DisplayManagement";

SETTING(setAutoEDIDUpdateState, MANAGEMENT_ID, AUTO_EDID_STATUS, "Failed to set AutoEDIDUpdateState.")
SETTING(setCalibrationState, MANAGEMENT_ID, CALIBRATION_STATUS,
        "Failed to set the value to CalibrationState.")
SETTING(setDDCCICommunicationsState, MANAGEMENT_ID, DDC_CI_COMM_STATUS,
        "Failed to set the value to DDCCICommunicationsState.")
SETTING(setHotPlugInitiateState, MANAGEMENT_ID, HOT_PLUG_INITIATE,
        "Failed to set the values to HotPlugInitiateState.")
SETTING(setPowerOnRecallState, MANAGEMENT_ID, POWER_ON_RECALL_STATUS,
        "Failed to set the value to PowerOnRecallState.")
SETTING(setPowerSaverState, MANAGEMENT_ID, AUTO_SLEEP_MODE, "Failed to set the value to PowerSaverState.")
SETTING(setDisplayPortHotPlugDetection, MANAGEMENT_ID, DP_HPD_STATUS,
        "Failed to set the value to DisplayPortHotPlugDetection.")
SETTING(setDisplayPortComapatibility, MANAGEMENT_ID, DP_COMPATABILITY_MODE,
        "Failed to set the value to DisplayPortComapatibility.")

STAMP_PATH_BY_INSTANCE_ID(ZT_Marovelton_DisplayManagement)

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
    switches.describe(_InstanceID, logicalElement);
    switches.formatted("Name", "%s-DisplayManagement", system.text);
    return switches.finish();
}

// ---- methods ----

// The range texts differ in a comma or a word; clients know each as it stands. The two Display Port methods
// take numbers only.
constexpr Method methods[] = {
    {.name = "SetAutoEDIDUpdateEnabled",
     .argument = {toggle, "AutoEDIDUpdateEnabled", "Required argument AutoEDIDUpdateEnabled missing."},
     .range = {0, 1, "Invalid input value range. Valid values are between 0 and 1."},
     .set = setAutoEDIDUpdateState},
    {.name = "SetCalibrationEnabled",
     .administrator = true,
     .argument = {toggle, "CalibrationEnabled", "Required argument CalibrationEnabled missing."},
     .range = {0, 1, "Invalid input value range, Valid values are 0 and 1."},
     .set = setCalibrationState},
    {.name = "SetDDCCICommunicationsEnabled",
     .argument = {toggle, "DDCCICommunicationsEnabled",
                  "Required argument DDCCICommunicationsEnabled missing."},
     .range = {0, 1, "Invalid input value range. Valid values are 0 and 1."},
     .set = setDDCCICommunicationsState},
    {.name = "SetHotPlugInitiateEnabled",
     .argument = {toggle, "HotPlugInitiateEnabled", "Required argument HotPlugInitiateEnabled missing."},
     .range = {0, 1, "Invalid input value range, Valid values are 0 and 1."},
     .set = setHotPlugInitiateState},
    {.name = "SetPowerOnRecallEnabled",
     .argument = {toggle, "PowerOnRecallEnabled", "Required argument PowerOnRecallEnabled missing."},
     .range = {0, 1, "Invalid input value range, Valid values are 0 and 1."},
     .set = setPowerOnRecallState},
    {.name = "SetPowerSaverEnabled",
     .argument = {toggle, "PowerSaverEnabled", "Required argument PowerSaverEnabled missing."},
     .range = {0, 1, "Invalid input value range. Valid values are between 0 and 1."},
     .set = setPowerSaverState},
    {.name = "SetDisplayPortHotPlugDetection",
     .argument = {integer, "DisplayPortHotPlugDetection",
                  "Required argument DisplayPortHotPlugDetection missing."},
     .range = {0, 1, "Invalid input value range. Valid values are 0 and 1."},
     .set = setDisplayPortHotPlugDetection},
    {.name = "SetDisplayPortComapatibility",
     .argument = {integer, "DisplayPortComapatibility",
                  "Required argument DisplayPortComapatibility missing."},
     .range = {0, 1, "Invalid input value range. Valid values are 0 and 1."},
     .set = setDisplayPortComapatibility},
};

STAMP_INSTANCE_AND_METHOD_PROVIDER(ZT_Marovelton_DisplayManagement,
                                   .key = {.name = "InstanceID", .value = _InstanceID}, .methods = methods)
