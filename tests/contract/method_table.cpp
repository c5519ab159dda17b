// SPDX-License-Identifier: Apache-2.0
#include "method_table.h"

namespace contract
{

namespace
{

Value toObject(const char *className, const char *instanceID)
{
    return reference(path(className, {{"InstanceID", instanceID}}));
}

const MethodClassRow rows[] = {
    {.name = "Monitor",
     .count = 9,
     .methods =
         {{"SetAutoSwitchSource",
           {{"AutoSwitchSource", "true", "Required argument AutoSwitchSource missing."}}},
          {"SetName", {{"Name", "Studio 8", "Required argument Name missing."}}},
          {"SetDeploymentLocation",
           {{"DeploymentLocation", "Grading room 3", "Required argument DeploymentLocation missing."}}},
          {"SetDeploymentDate",
           {{"DeploymentDate", "31/01/2025", "Required argument DeploymentDate missing"}}},
          {"SetRecalibrationAlarmDuration",
           {{"RecalibrationAlarmDuration", "500", "Required argument RecalibrationAlarmDuration missing"}}},
          {"SetActiveColorSpace",
           {{"ColorSpace", toObject("ZT_Marovelton_ColorSpace", "ZT:Marovelton_ColorSpace:3"),
             "Required argument ColorSpace missing."}}},
          {"SetSelectedVideoInput",
           {{"VideoInput", toObject("ZT_Marovelton_VideoInput", "ZT:Marovelton_VideoInput:3"),
             "Required argument VideoInput missing."}}},
          {"SetSoftPowerState", {{"SoftPowerState", "0", "Required argument SoftPowerState missing"}}},
          {"FactoryReset"}},
     .inherited = 1},

    {.name = "DisplayManagement",
     .count = 8,
     .methods =
         {{"SetAutoEDIDUpdateEnabled",
           {{"AutoEDIDUpdateEnabled", "true", "Required argument AutoEDIDUpdateEnabled missing."}}},
          {"SetCalibrationEnabled",
           {{"CalibrationEnabled", "false", "Required argument CalibrationEnabled missing."}}},
          {"SetDDCCICommunicationsEnabled",
           {{"DDCCICommunicationsEnabled", "1", "Required argument DDCCICommunicationsEnabled missing."}}},
          {"SetHotPlugInitiateEnabled",
           {{"HotPlugInitiateEnabled", "0", "Required argument HotPlugInitiateEnabled missing."}}},
          {"SetPowerOnRecallEnabled",
           {{"PowerOnRecallEnabled", "true", "Required argument PowerOnRecallEnabled missing."}}},
          {"SetPowerSaverEnabled",
           {{"PowerSaverEnabled", "true", "Required argument PowerSaverEnabled missing."}}},
          {"SetDisplayPortHotPlugDetection",
           {{"DisplayPortHotPlugDetection", "1", "Required argument DisplayPortHotPlugDetection missing."}}},
          {"SetDisplayPortComapatibility",
           {{"DisplayPortComapatibility", "1", "Required argument DisplayPortComapatibility missing."}}}}},

    {.name = "VideoInput", .count = 0},

    {.name = "ImageAdjustment",
     .count = 15,
     .methods =
         {{"SetCroppedRegionOpacity",
           {{"CroppedRegionOpacity", "50", "Required argument CroppedRegionOpacity missing."}}},
          {"SetDCIImageRegion", {{"DCIImageRegion", "2", "Required argument DCIImageRegion missing."}}},
          {"SetDisplayAspectRatio",
           {{"DisplayAspectRatio", "4", "Required argument DisplayAspectRatio missing."}}},
          // Offered by no engine: fetched, not looked at, and refused with a blank.
          {"Set4KDisplayMode", {{"DisplayMode4K", "1", nullptr}}, CMPI_RC_ERR_NOT_SUPPORTED, " "},
          {"SetDisplayed4KCorner"},
          {"SetOverscanFrame", {{"OverscanFrame", "true", "Required argument OverscanFrame missing."}}},
          {"Set4KRegionPosition",
           {{"Position4KRegionX", "640", "Required argument Position4KRegionX missing."},
            {"Position4KRegionY", "360", "Required argument Position4KRegionY missing."}}},
          {"SetShow4KPositionOverlay", {}, CMPI_RC_ERR_NOT_SUPPORTED, "SetShow4KPositionOverlay"},
          {"SetShowBlueChannel",
           {{"ShowBlueChannel", "false", "Required argument ShowBlueChannel missing."}}},
          {"SetShowCroppedRegion",
           {{"ShowCroppedRegion", "true", "Required argument ShowCroppedRegion missing."}}},
          {"SetUseVideoLevels", {{"UseVideoLevels", "true", "Required argument UseVideoLevels missing."}}},
          {"SetOverdriveEnabled",
           {{"OverdriveEnabled", "true", "Required argument OverdriveEnabled missing."}}},
          {"SetDeinterlacerEnabled",
           {{"DeinterlacerEnabled", "true", "Required argument DeinterlacerEnabled missing."}}},
          {"SetCadenceDetectionEnabled",
           {{"CadenceDetectionEnabled", "true", "Required argument CadenceDetectionEnabled missing."}}},
          {"Set4KSourceScaling", {{"SourceScaling4K", "3", "Required argument SourceScaling4K missing."}}}}},

    {.name = "PictureInPicture",
     .count = 8,
     .methods = {{"SetPIPInputSource",
                  {{"PIPInputSource", "2", "Required argument PIPInputSource missing."}}},
                 {"SwapPrimaryPIPInputs"},
                 {"SetPIPPosition",
                  {{"PIPPositionX", "160", "Required argument PIPPositionX missing."},
                   {"PIPPositionY", "880", "Required argument PIPPositionY missing."}}},
                 {"SetPIPSize", {{"PIPSize", "1", "Required argument PIPSize missing."}}},
                 {"SetPIPMode", {{"PIPMode", "2", "Required argument PIPMode missing."}}},
                 {"SetPIPOverscanEnabled",
                  {{"PIPOverscanEnabled", "true", "Required argument PIPOverscanEnabled missing."}}},
                 {"SetUseVideoLevels",
                  {{"UseVideoLevels", "true", "Required argument UseVideoLevels missing."}}},
                 {"SetDigitalCinemaOption",
                  {{"DigitalCinemaOption", "1", "Required argument DigitalCinemaOption missing."}}}}},

    {.name = "OSDMenuAndMessages",
     .count = 9,
     .methods = {{"SetMenuAndMessageTimeOut",
                  {{"MenuAndMessageTimeOut", "30", "Required argument MenuAndMessageTimeOut missing."}}},
                 {"SetLanguage", {{"Language", "3", "Required argument Language missing."}}},
                 {"SetNotifyWhenRecalibrationIsDue",
                  {{"NotifyWhenReCalibrationIsDue", "true",
                    "Required argument NotifyWhenReCalibrationIsDue missing."}}},
                 {"SetOSDPosition",
                  {{"OSDPositionX", "2560", "Required argument OSDPositionX missing."},
                   {"OSDPositionY", "1440", "Required argument OSDPositionY missing."}}},
                 {"SetOpacity", {{"Opacity", "37.50", "Required argument Opacity missing."}}},
                 {"SetShowInfoWhenColorSpaceChanges",
                  {{"ShowInfoWhenColorSpaceChanges", "true",
                    "Required argument ShowInfoWhenColorSpaceChanges missing."}}},
                 {"SetShowInfoWhenInputSourceChanges",
                  {{"ShowInfoWhenInputSourceChanges", "true",
                    "Required argument ShowInfoWhenInputSourceChanges missing."}}},
                 {"SetShowInfoWhenPoweredOn",
                  {{"ShowInfoWhenPoweredOn", "true", "Required argument ShowInfoWhenPoweredOn missing."}}},
                 {"SetDisplayRotation",
                  {{"DisplayRotation", "1", "Required argument DisplayRotation missing."}}}},
     .returnType = CMPI_uint8},

    // The methods are called on the preset that is in use.
    {.name = "ColorSpace",
     .count = 3,
     .methods = {{"SetDisplayLuminance", {{"Luminance", "120", "Required argument Luminance missing."}}},
                 {"ResetToLastCalibration"},
                 {"ResetToFactoryCalibration"}},
     .target = 1},

    {.name = "BezelButton",
     .count = 4,
     .methods = {{"SetButtonAutoFadeMode",
                  {{"ButtonAutoFadeMode", "1", "Required argument ButtonAutoFadeMode missing."}}},
                 {"SetButtonBrightness",
                  {{"ButtonBrightness", "20", "Required argument ButtonBrightness missing."}}},
                 {"SetButtonColor", {{"ButtonColor", "2", "Required argument ButtonColor missing."}}},
                 {"SetButtonMode", {{"ButtonMode", "1", "Required argument ButtonMode missing."}}}}},

    {.name = "FunctionButton",
     .count = 1,
     .methods = {{"SetSetting", {{"Setting", "17", "Invalid parameter."}}}},
     .unknownValue = 0},

    {.name = "TestPatternGenerator",
     .count = 3,
     .methods = {{"SetEnabled", {{"Enabled", "true", "Required argument Enabled missing."}}},
                 {"SetTestPattern", {{"TestPattern", "8", "Required argument TestPattern missing."}}},
                 {"SetRGBValue",
                  {{"RValue", "255", "Required argument RValue missing."},
                   {"GValue", "0", "Required argument GValue missing."},
                   {"BValue", "128", "Required argument BValue missing."}}}},
     .unknownCode = CMPI_RC_ERR_NOT_SUPPORTED,
     .unknownValue = 0},

    {.name = "RemoteManagementService",
     .count = 1,
     .methods = {{"RequestStateChange",
                  {{"RequestedState", "3", "Required argument RequestedState missing."}}}}},

    {.name = "WSManagementService",
     .count = 2,
     .methods =
         {{"RequestStateChange", {{"RequestedState", "3", "Required argument RequestStateChange missing."}}},
          {"SetWSIdentifyEnabledState",
           {{"WSIdentifySupportEnabled", "true", "Required argument WSIdentifySupportEnabled missing."}}}}},

    {.name = "IPProtocolEndpoint", .count = 0, .unknownCode = CMPI_RC_ERR_NOT_SUPPORTED, .inherited = 1},
    {.name = "IPNetworkConnection", .count = 0, .unknownCode = CMPI_RC_ERR_NOT_SUPPORTED, .inherited = 1},

    {.name = "IPConfigurationService",
     .count = 2,
     .methods = {{"ApplySettingToIPNetworkConnection",
                  {{"IPNetworkConnection",
                    reference(path("ZT_Marovelton_IPNetworkConnection",
                                   {{"Name", "Studio 7-IPNetworkConnection"}})),
                    "Required argument IPNetworkConnection missing.",
                    "Invalid type of parameter(IPNetworkConnection)."},
                   {"Mode", "1", "Required argument Mode  missing.", "Invalid type of parameter(Mode)."},
                   {"SettingData", toObject("ZT_Marovelton_DHCPSettingData", "ZT:Marovelton_DHCPSettingData"),
                    "Required argument SettingData missing.", "Invalid type of parameter(SettingData)."}}},
                 // Always refused, before its argument, which the standard declares, is asked for.
                 {"RequestStateChange",
                  {{"RequestedState", "2", nullptr, nullptr, false}},
                  CMPI_RC_ERR_NOT_SUPPORTED,
                  "RequestStateChange"}},
     .failureValue = 1},

    {.name = "ExtendedStaticIPAssignmentSettingData", .count = 0, .unknownCode = CMPI_RC_ERR_NOT_SUPPORTED},
    {.name = "DHCPSettingData", .count = 0, .unknownCode = CMPI_RC_ERR_NOT_SUPPORTED},
    {.name = "IPVersionSettingData", .count = 0, .unknownCode = CMPI_RC_ERR_NOT_SUPPORTED},
    {.name = "IPAssignmentSettingData", .count = 0, .unknownCode = CMPI_RC_ERR_NOT_SUPPORTED},
};

} // namespace

std::span<const MethodClassRow> methodTable()
{
    return rows;
}

Entries completeArguments(const MethodRow &method)
{
    Entries arguments;
    for (const Parameter &parameter : method.parameters) {
        arguments.push_back({parameter.name, parameter.given});
    }
    return arguments;
}

} // namespace contract
