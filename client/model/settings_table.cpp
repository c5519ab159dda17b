// SPDX-License-Identifier: Apache-2.0
// The one table beside the class definitions: dotted names, how values are written, and what is special.
#include "model/settings.h"

namespace displayctl::model
{

namespace
{

// Traits that go together.
constexpr unsigned ofOneMonitor = administrator | identity;
constexpr unsigned service = administrator | late;
constexpr unsigned address = administrator | identity | late | network;

using Words = std::vector<std::string_view>;
const Words inputWords = {"dp1", "dp2", "hdmi"};
const Words pipModeWords = {"off", "pip", "pbp"};
const Words pipSizeWords = {"maximum", "minimum", "default"};

// The menu language is read as the display engine numbers it and set as SetLanguage does.
const std::vector<int> sentLanguages = {3, 0, 2, 4, 1, 5, 6, 7, 8, 9};

const SettingRow rows[] = {
    {.name = "monitor.name",
     .kind = Kind::text,
     .className = "Monitor",
     .properties = {"Name"},
     .traits = ofOneMonitor,
     .arguments = "Monitor.SetName.Name",
     .description = "The display name of the monitor; while it has none, its address."},
    {"monitor.location", Kind::text, "Monitor", {"DeploymentLocation"}, ofOneMonitor},
    {"monitor.deployed", Kind::date, "Monitor", {"DeploymentDate"}, ofOneMonitor},
    {"monitor.preset", Kind::preset, "ColorSpace", {}, none, "Monitor.SetActiveColorSpace.ColorSpace"},
    {.name = "monitor.input",
     .kind = Kind::choice,
     .className = "Monitor",
     .properties = {"InputSource"},
     .words = inputWords},
    {"monitor.auto-switch", Kind::onOff, "Monitor", {"AutoSwitchSource"}},
    {.name = "monitor.recalibration-alarm",
     .kind = Kind::number,
     .className = "Monitor",
     .properties = {},
     .traits = administrator | writeOnly,
     .arguments = "Monitor.SetRecalibrationAlarmDuration.RecalibrationAlarmDuration",
     .minimum = 1,
     .maximum = 1000},
    {"monitor.power", Kind::onOff, "Monitor", {"SoftPowerState"}, readOnly},
    {"monitor.delay", Kind::number, "Monitor", {"VideoPipelineDelay"}, readOnly},
    {"monitor.last-calibration", Kind::number, "Monitor", {"LastCalibration"}, readOnly},
    {"monitor.backlight-hours", Kind::number, "Monitor", {"BacklightHours"}, readOnly},
    {"monitor.mode", Kind::number, "Monitor", {"DisplayMode"}, readOnly},
    {"monitor.resolution", Kind::size, "Monitor", {"HorizontalResolution", "VerticalResolution"}, readOnly},

    {"preset.N.luminance", Kind::number, "ColorSpace", {"DisplayLuminance"}},
    {"preset.N.name", Kind::text, "ColorSpace", {"ColorSpaceName"}, readOnly},
    {"preset.N.active", Kind::onOff, "ColorSpace", {"Active"}, readOnly},
    {"preset.N.gamma", Kind::text, "ColorSpace", {"Gamma"}, readOnly},
    {"preset.N.red", Kind::chromaticity, "ColorSpace", {"RedPrimaryX", "RedPrimaryY"}, readOnly},
    {"preset.N.green", Kind::chromaticity, "ColorSpace", {"GreenPrimaryX", "GreenPrimaryY"}, readOnly},
    {"preset.N.blue", Kind::chromaticity, "ColorSpace", {"BluePrimaryX", "BluePrimaryY"}, readOnly},
    {"preset.N.white", Kind::chromaticity, "ColorSpace", {"WhitePointX", "WhitePointY"}, readOnly},
    {"preset.N.red-uv", Kind::chromaticity, "ColorSpace", {"RedPrimaryU", "RedPrimaryV"}, readOnly | onlyAll},
    {"preset.N.green-uv",
     Kind::chromaticity,
     "ColorSpace",
     {"GreenPrimaryU", "GreenPrimaryV"},
     readOnly | onlyAll},
    {"preset.N.blue-uv",
     Kind::chromaticity,
     "ColorSpace",
     {"BluePrimaryU", "BluePrimaryV"},
     readOnly | onlyAll},
    {"preset.N.white-uv",
     Kind::chromaticity,
     "ColorSpace",
     {"WhitePointU", "WhitePointV"},
     readOnly | onlyAll},

    {"input.N.name", Kind::text, "VideoInput", {"Name"}, readOnly},
    {"input.N.active", Kind::onOff, "VideoInput", {"Active"}, readOnly},
    {"input.N.selected", Kind::onOff, "VideoInput", {"Selected"}, readOnly},

    {"picture.aspect", Kind::code, "ImageAdjustment", {"DisplayAspectRatio"}},
    {"picture.dci-region", Kind::code, "ImageAdjustment", {"DCIImageRegion"}},
    {"picture.overscan", Kind::onOff, "ImageAdjustment", {"OverscanFrame"}},
    {"picture.blue-only", Kind::onOff, "ImageAdjustment", {"ShowBlueChannel"}},
    {"picture.video-levels", Kind::onOff, "ImageAdjustment", {"UseVideoLevels"}},
    {"picture.overdrive", Kind::onOff, "ImageAdjustment", {"OverdriveEnabled"}},
    {"picture.deinterlacer", Kind::onOff, "ImageAdjustment", {"DeinterlacerEnabled"}, administrator},
    {"picture.cadence", Kind::onOff, "ImageAdjustment", {"CadenceDetectionEnabled"}, administrator},
    {"picture.cropped-region", Kind::onOff, "ImageAdjustment", {"ShowCroppedRegion"}},
    {"picture.cropped-opacity", Kind::number, "ImageAdjustment", {"CroppedRegionOpacity"}},
    {"picture.scaling-4k", Kind::code, "ImageAdjustment", {"SourceScaling4K"}},
    {"picture.region-4k", Kind::position, "ImageAdjustment", {"Region4KPositionX", "Region4KPositionY"}},
    {"picture.mode-4k",
     Kind::anything,
     "ImageAdjustment",
     {},
     writeOnly | neverAccepted,
     "ImageAdjustment.Set4KDisplayMode.DisplayMode4K"},
    {"picture.overlay-4k",
     Kind::anything,
     "ImageAdjustment",
     {},
     writeOnly | neverAccepted,
     "ImageAdjustment.SetShow4KPositionOverlay"},

    {.name = "pip.mode",
     .kind = Kind::choice,
     .className = "PictureInPicture",
     .properties = {"PIPMode"},
     .words = pipModeWords},
    {.name = "pip.size",
     .kind = Kind::choice,
     .className = "PictureInPicture",
     .properties = {"PIPSize"},
     .words = pipSizeWords},
    {.name = "pip.input",
     .kind = Kind::choice,
     .className = "PictureInPicture",
     .properties = {"PIPInputSource"},
     .words = inputWords},
    {"pip.position", Kind::position, "PictureInPicture", {"PIPPositionX", "PIPPositionY"}},
    {"pip.overscan", Kind::onOff, "PictureInPicture", {"PIPOverscanEnabled"}},
    {"pip.video-levels", Kind::onOff, "PictureInPicture", {"UseVideoLevels"}},
    {"pip.dci", Kind::code, "PictureInPicture", {"DigitalCinemaOption"}},
    {"pip.dci-region", Kind::onOff, "PictureInPicture", {"ShowDCICroppedRegion"}, readOnly},

    {"osd.timeout", Kind::number, "OSDMenuAndMessages", {"MenuAndMessageTimeOut"}},
    {.name = "osd.language",
     .kind = Kind::code,
     .className = "OSDMenuAndMessages",
     .properties = {"Language"},
     .sent = sentLanguages},
    {"osd.position", Kind::position, "OSDMenuAndMessages", {"OSDPositionX", "OSDPositionY"}},
    {.name = "osd.opacity",
     .kind = Kind::decimal,
     .className = "OSDMenuAndMessages",
     .properties = {"Opacity"},
     .minimum = 25,
     .maximum = 100,
     .step = 6.25},
    {"osd.rotation", Kind::code, "OSDMenuAndMessages", {"DisplayRotation"}},
    {"osd.notify-recalibration", Kind::onOff, "OSDMenuAndMessages", {"NotifyWhenReCalibrationIsDue"}},
    {"osd.show-on-preset", Kind::onOff, "OSDMenuAndMessages", {"ShowInfoWhenColorSpaceChanges"}},
    {"osd.show-on-input", Kind::onOff, "OSDMenuAndMessages", {"ShowInfoWhenInputSourceChanges"}},
    {"osd.show-on-power", Kind::onOff, "OSDMenuAndMessages", {"ShowInfoWhenPoweredOn"}},

    {"buttons.brightness", Kind::number, "BezelButton", {"ButtonBrightness"}},
    {"buttons.color", Kind::code, "BezelButton", {"ButtonColor"}},
    {"buttons.fade", Kind::onOff, "BezelButton", {"ButtonAutoFadeMode"}},
    {"buttons.mode", Kind::code, "BezelButton", {"ButtonMode"}},

    {"function.N.action", Kind::code, "FunctionButton", {"Setting"}},
    {"function.N.name", Kind::text, "FunctionButton", {"Name"}, readOnly},

    {"pattern.enabled", Kind::onOff, "TestPatternGenerator", {"Enabled"}},
    {"pattern.number", Kind::code, "TestPatternGenerator", {"TestPattern"}},
    {.name = "pattern.color",
     .kind = Kind::colour,
     .className = "TestPatternGenerator",
     .properties = {"RValue", "GValue", "BValue"},
     .minimum = 0,
     .maximum = 255},

    {"management.edid-update", Kind::onOff, "DisplayManagement", {"AutoEDIDUpdateEnabled"}},
    {"management.calibration", Kind::onOff, "DisplayManagement", {"CalibrationEnabled"}, administrator},
    {"management.ddcci", Kind::onOff, "DisplayManagement", {"DDCCICommunicationsEnabled"}},
    {"management.hot-plug", Kind::onOff, "DisplayManagement", {"HotPlugInitiateEnabled"}},
    {"management.power-recall", Kind::onOff, "DisplayManagement", {"PowerOnRecallEnabled"}},
    {"management.power-saver", Kind::onOff, "DisplayManagement", {"PowerSaverEnabled"}},
    {"management.hot-plug-detection", Kind::onOff, "DisplayManagement", {"DisplayPortHotPlugDetection"}},
    {"management.dp-compatibility",
     Kind::onOff,
     "DisplayManagement",
     {},
     writeOnly,
     "DisplayManagement.SetDisplayPortComapatibility.DisplayPortComapatibility"},

    {"network.mode",
     Kind::networkMode,
     "ElementSettingData",
     {"IsCurrent"},
     address,
     "IPConfigurationService.ApplySettingToIPNetworkConnection.SettingData"},
    {"network.address", Kind::address, "ExtendedStaticIPAssignmentSettingData", {"IPAddresses"}, address},
    {"network.mask", Kind::address, "ExtendedStaticIPAssignmentSettingData", {"SubnetMasks"}, address | mask},
    {"network.gateway",
     Kind::address,
     "ExtendedStaticIPAssignmentSettingData",
     {"GatewayAddresses"},
     address},

    {"services.web", Kind::onOff, "RemoteManagementService", {"EnabledState"}, service},
    {"services.wsman", Kind::onOff, "WSManagementService", {"EnabledState"}, service},
    {"services.wsman-identify",
     Kind::onOff,
     "WSManagementService",
     {"WSIdentifySupportEnabled"},
     administrator},
    {"services.network",
     Kind::anything,
     "IPConfigurationService",
     {},
     writeOnly | neverAccepted,
     "IPConfigurationService.RequestStateChange.RequestedState"},
};

const ActionRow actions[] = {
    {"factory-reset", "", "Monitor.FactoryReset", true, "Brings all settings back to those of the factory."},
    {"power-off", "", "Monitor.SetSoftPowerState", true,
     "Switches the monitor off. Nothing that displayctl can do switches it on again."},
    {"swap-inputs", "", "PictureInPicture.SwapPrimaryPIPInputs", false,
     "Exchanges the inputs of the two pictures."},
    {"4k-corner", "", "ImageAdjustment.SetDisplayed4KCorner", false,
     "Shows the next corner of a 4K picture."},
    {"reset-calibration", "last", "ColorSpace.ResetToLastCalibration", false,
     "Brings the preset in use back to its last calibration."},
    {"reset-calibration", "factory", "ColorSpace.ResetToFactoryCalibration", false,
     "Brings the preset in use back to the calibration of the factory.",
     "Operation not allowed.Current store is same as factory store"},
};

// Shown by `show --all` under the names of the classes, and nowhere else.
constexpr std::string_view tellsWhatItIs = "identifies or describes the object";
constexpr std::string_view ofTheStandard =
    "declared by the standard schema; the monitor gives no value or a fixed one, the class a default";

const Exception exceptionRows[] = {
    {"*.InstanceID", tellsWhatItIs},
    {"*.Caption", tellsWhatItIs},
    {"*.Description", tellsWhatItIs},
    {"*.ElementName", tellsWhatItIs},
    {"*.Name", tellsWhatItIs},
    {"*.SystemCreationClassName", tellsWhatItIs},
    {"*.SystemName", tellsWhatItIs},
    {"*.CreationClassName", tellsWhatItIs},
    {"*.DeviceID", tellsWhatItIs},
    {"*.NameFormat", tellsWhatItIs},
    {"*.OtherTypeDescription", tellsWhatItIs},
    {"*.ConfigurationName", tellsWhatItIs},
    {"ColorSpace.ColorSpaceNumber", "the number in the setting's name"},
    {"*.OperationalStatus", ofTheStandard},
    {"*.Status", ofTheStandard},
    {"*.HealthState", ofTheStandard},
    {"*.EnabledState", ofTheStandard},
    {"*.OtherEnabledState", ofTheStandard},
    {"*.RequestedState", ofTheStandard},
    {"*.EnabledDefault", ofTheStandard},
    {"*.AvailableRequestedStates", ofTheStandard},
    {"*.IsLocked", ofTheStandard},
    {"*.ChangeableType", ofTheStandard},
    {"*.AddressOrigin", ofTheStandard},
    {"*.ProtocolIFType", ofTheStandard},
    {"*.ProtocolType", ofTheStandard},
    {"*.Generation", ofTheStandard},
    {"*.InstallDate", ofTheStandard},
    {"*.StatusDescriptions", ofTheStandard},
    {"*.CommunicationStatus", ofTheStandard},
    {"*.DetailedStatus", ofTheStandard},
    {"*.OperatingStatus", ofTheStandard},
    {"*.PrimaryStatus", ofTheStandard},
    {"*.TimeOfLastStateChange", ofTheStandard},
    {"*.TransitioningToState", ofTheStandard},
    {"*.AllocationState", ofTheStandard},
    {"*.PowerManagementSupported", ofTheStandard},
    {"*.PowerManagementCapabilities", ofTheStandard},
    {"*.Availability", ofTheStandard},
    {"*.StatusInfo", ofTheStandard},
    {"*.LastErrorCode", ofTheStandard},
    {"*.ErrorDescription", ofTheStandard},
    {"*.ErrorCleared", ofTheStandard},
    {"*.OtherIdentifyingInfo", ofTheStandard},
    {"*.IdentifyingDescriptions", ofTheStandard},
    {"*.PowerOnHours", ofTheStandard},
    {"*.TotalPowerOnHours", ofTheStandard},
    {"*.AdditionalAvailability", ofTheStandard},
    {"*.MaxQuiesceTime", ofTheStandard},
    {"*.LocationIndicator", ofTheStandard},
    {"*.PrimaryOwnerName", ofTheStandard},
    {"*.PrimaryOwnerContact", ofTheStandard},
    {"*.StartMode", ofTheStandard},
    {"*.Started", ofTheStandard},
    {"*.LoSID", ofTheStandard},
    {"*.LoSOrgID", ofTheStandard},
    {"*.BroadcastResetSupported", ofTheStandard},
    {"*.Address", ofTheStandard},
    {"*.PrefixLength", ofTheStandard},
    {"*.AddressType", ofTheStandard},
    {"*.IPv6AddressType", ofTheStandard},
    {"*.IPv6SubnetPrefixLength", ofTheStandard},
    {"*.IPv6SubnetPrefixLengths", ofTheStandard},
    {"*.ID", ofTheStandard},
    {"*.ComponentSetting", ofTheStandard},
    {"*.SoID", ofTheStandard},
    {"*.SoOrgID", ofTheStandard},
    {"*.RequestedIPv4Address", ofTheStandard},
    {"*.RequestedLeaseTime", ofTheStandard},
    {"*.ClientIdentifier", ofTheStandard},
    {"*.VendorClassIdentifier", ofTheStandard},
    {"*.RequestedOptions", ofTheStandard},
    {"*.RequiredOptions", ofTheStandard},
    {"IPProtocolEndpoint.IPv4Address", "of a network interface, which a monitor may have several of"},
    {"IPProtocolEndpoint.IPv6Address", "of a network interface, which a monitor may have several of"},
    {"IPProtocolEndpoint.SubnetMask", "of a network interface, which a monitor may have several of"},
    {"IPProtocolEndpoint.IPVersionSupport", "of a network interface, which a monitor may have several of"},
};

} // namespace

std::span<const SettingRow> settingRows()
{
    return rows;
}

std::span<const ActionRow> allActions()
{
    return actions;
}

std::span<const Exception> exceptions()
{
    return exceptionRows;
}

} // namespace displayctl::model
