// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_Monitor: the monitor itself, one object. Its identity, running figures, current input and
// resolution, and the methods that rename it, choose its colour space and input, and switch it.

#include "display/modules.h"

using namespace frame;

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_Monitor";
constexpr const char *_DeviceID = "ZT:Marovelton_Monitor";

// The system name stands for %s.
constexpr Key keys[] = {
    {"DeviceID", _DeviceID},
    {"CreationClassName", _ClassName},
    {"SystemName", "%s"},
    {"SystemCreationClassName", "Linux_ComputerSystem"},
};

static int updated(int result, char *errorText)
{
    if (result != 0) {
        copyText(errorText, ERROR_TEXT_SIZE, "Failed to update.");
    }
    return result == 0 ? 0 : -1;
}

int setDisplayName(const char *name, char *errorText)
{
    return updated(UpdateDisplayName(name, errorText), errorText);
}

int setDeploymentDate(const char *text, char *errorText)
{
    return updated(UpdateDeploymentDate(text, errorText), errorText);
}

int setDeploymentLocation(const char *text, char *errorText)
{
    return updated(UpdateDeploymentLocation(text, errorText), errorText);
}

SETTING(setAutoSwitchSource, VIDEO_INPUT_ID, AUTO_SWITCH_STATUS,
        "Failed to set the value to AutoSwitchSource.")
SETTING(SetActiveColorSpace, COLOR_SPACE_ID, ACTIVE_COLORSPACE,
        "Failed to set the value to ActiveColorSpace.")
SETTING(SetSelectedVideoInput, VIDEO_INPUT_ID, VIDEO_INPUT, "Failed to set the value to video input.")
SETTING(DoRecalibrationAlarmDuration, GENERAL_COMMANDS_ID, CALIBRATION_ALERT_LIMIT,
        "Failed to perform the RecalibrationAlarmDuration operation.")

int DoSoftPowerState(int, char *errorText)
{
    // The command to power off is 1, whatever state the client named.
    return sendSetting(GENERAL_COMMANDS_ID, {{SOFT_POWER_OFF, 1}},
                       {"Failed to perform the softpowerstate operation."}, errorText);
}

// Clients know the factory reset by this text about luminance.
COMMAND(FactoryReset, RESET_GROUP_ID, FACTORY_RESET_START, "Failed to set the value to DisplayLuminance.")

CMPIObjectPath *_makePath_ZT_Marovelton_Monitor(const CMPIObjectPath *reference, CMPIStatus *status)
{
    return makePathBySystemName(_broker, _ClassName, reference, keys,
                                "Failed to get monitor information from database.", status);
}

CMPIInstance *_makeInst_ZT_Marovelton_Monitor(const CMPIObjectPath *reference, CMPIStatus *status)
{
    CMPIObjectPath *path = newPath(_broker, _ClassName, reference, status);
    if (!path) {
        return nullptr;
    }
    MonitorInfo info = {};
    ImageAdjustment image = {};
    if (GetMoinitorInfo(&info) != 0 || GetImageAdjustmentInfo(&image) != 0) {
        fail(_broker, status, CMPI_RC_ERR_FAILED, "Failed to get monitor information from database.");
        return nullptr;
    }
    const SystemName system = systemName(info);
    addSystemKeys(path, keys, system);

    InstanceBuilder monitor(_broker, _ClassName, path, status);
    monitor.ownKeys(keys, system);
    monitor.boolean("SoftPowerState", info.SoftPowerState);
    monitor.uint16("VideoPipelineDelay", info.VideoPipelineDelay);
    monitor.uint16("LastCalibration", info.LastCalibration);
    monitor.uint16("BacklightHours", info.BacklightHours);
    monitor.uint16("InputSource", info.ActiveVideoInput);
    monitor.boolean("AutoSwitchSource", info.AutoSwitchSource);
    monitor.dateTime("DeploymentDate", info.Deployment_Date);
    monitor.field("DeploymentLocation", info.DeploymentLocation);
    monitor.uint16("DisplayMode", 8); // clients know this number, whatever the record's text says
    monitor.uint16("VerticalResolution", image.VerticalResolution);
    monitor.uint16("HorizontalResolution", image.HorizontalResolution);
    monitor.text("Caption", _ClassName);
    monitor.text("ElementName", _ClassName);
    monitor.text("InstanceID", _DeviceID);
    monitor.text("Name", system.text);
    monitor.text(
        "Description",
        "A class derived from FlatPanel that represents the single node container of the Display Management System.");
    return monitor.finish();
}

// ---- methods ----

/** SetName, SetDeploymentLocation and SetDeploymentDate: a text for the settings database. */
static bool storeText(Call &call, const char *argument, const char *missing, int (*validate)(const char *),
                      const char *refused, int (*store)(const char *, char *))
{
    const char *text = requireText(call, argument, missing);
    if (!text || !requireContent(call, text)) {
        return false;
    }
    return (!validate || validate(text) == 0 || fail(call, CMPI_RC_ERR_INVALID_PARAMETER, refused)) &&
           settled(call, store(text, call.errorText));
}

static bool runSetName(Call &call)
{
    return storeText(call, "Name", "Required argument Name missing.", ValidateDisplayName,
                     "Invalid String or String is outof range.", setDisplayName);
}

static bool runSetDeploymentLocation(Call &call)
{
    return storeText(call, "DeploymentLocation", "Required argument DeploymentLocation missing.", nullptr,
                     nullptr, setDeploymentLocation);
}

static bool runSetDeploymentDate(Call &call)
{
    return storeText(call, "DeploymentDate", "Required argument DeploymentDate missing",
                     ValidateDeploymentDate, "Invalid date. date format is DD/MM/YYYY", setDeploymentDate);
}

namespace
{

/** Reads a reference argument to one of the numbered instances of a class. */
struct NumberedReference {
    const char *argument;
    ReferenceTexts texts;
    const char *className;
    const char *wrongClass;
    const char *instanceID;
    int count;
    Range range;
    const char *classTrace = nullptr; // null: no trace
    const char *keyTrace = nullptr;
};

} // namespace

static bool readNumberedReference(Call &call, const NumberedReference &expected, int *index)
{
    const char *className = nullptr;
    const CMPIObjectPath *path = requireReference(call, expected.argument, expected.texts, &className);
    if (!path) {
        return false;
    }
    trace(expected.classTrace, className);
    if (strcmp(className, expected.className) != 0) {
        return fail(call, CMPI_RC_ERR_INVALID_PARAMETER, expected.wrongClass);
    }

    const char *instanceID = keyText(path, "InstanceID");
    if (!instanceID) {
        return fail(call, CMPI_RC_ERR_INVALID_PARAMETER, "Could not get key of instance.");
    }
    trace(expected.keyTrace, instanceID);
    return (matchInstanceID(instanceID, expected.instanceID, expected.count, call.errorText, index) == 0 ||
            fail(call, CMPI_RC_ERR_INVALID_PARAMETER,
                 "This Input class does not exist (wrong InstanceID).")) &&
           requireRange(call, *index, expected.range);
}

static bool runSetActiveColorSpace(Call &call)
{
    static constexpr NumberedReference colorSpace = {
        .argument = "ColorSpace",
        .texts = {.missing = "Required argument ColorSpace missing.",
                  .className = "Could not get classname of ColorSpaceInput"},
        .className = "ZT_Marovelton_ColorSpace",
        .wrongClass = "Invalid classname for ColorSpaceInput",
        .instanceID = "ZT:Marovelton_ColorSpace:%d",
        .count = 7,
        .range = {0, 6, "Invalid input value range. Valid values are between 0 and 6."},
        .classTrace = "inputClass is %s\n",
        .keyTrace = "ColorSpaceInput is:%s\n",
    };
    int index = 0;
    return readNumberedReference(call, colorSpace, &index) &&
           settled(call, SetActiveColorSpace(index, call.errorText));
}

static bool runSetSelectedVideoInput(Call &call)
{
    static constexpr NumberedReference videoInput = {
        .argument = "VideoInput",
        .texts = {.missing = "Required argument VideoInput missing.",
                  .className = "Could not get classname of VideoInput"},
        .className = "ZT_Marovelton_VideoInput",
        .wrongClass = "Invalid classname for VideoInput",
        .instanceID = "ZT:Marovelton_VideoInput:%d",
        .count = 3,
        .range = {0, 2, "Invalid input value range. Valid values are between 0 and 2."},
    };
    int index = 0;
    return readNumberedReference(call, videoInput, &index) &&
           settled(call, SetSelectedVideoInput(index, call.errorText));
}

static bool runSetSoftPowerState(Call &call)
{
    int state = 0;
    if (!readArgument(call, {leadingInteger, "SoftPowerState", "Required argument SoftPowerState missing"},
                      &state) ||
        !requireRange(call, state, {0, 1, "Invalid input value range. Valid values are between 0 and 1."})) {
        return false;
    }
    // A monitor that is off cannot be reached, so only switching off is offered.
    if (state == 1) {
        return fail(call, CMPI_RC_ERR_NOT_SUPPORTED, "SetSoftPowerState");
    }
    return settled(call, DoSoftPowerState(state, call.errorText));
}

constexpr Method methods[] = {
    {.name = "SetAutoSwitchSource",
     .argument = {toggle, "AutoSwitchSource", "Required argument AutoSwitchSource missing."},
     .set = setAutoSwitchSource},
    {.name = "SetName", .administrator = true, .run = runSetName},
    {.name = "SetDeploymentLocation", .administrator = true, .run = runSetDeploymentLocation},
    {.name = "SetDeploymentDate", .administrator = true, .run = runSetDeploymentDate},
    {.name = "SetRecalibrationAlarmDuration",
     .administrator = true,
     .argument = {leadingInteger, "RecalibrationAlarmDuration",
                  "Required argument RecalibrationAlarmDuration missing"},
     .range = {1, 1000, "Invalid input value range. Valid values are between 1 and 1000."},
     .set = DoRecalibrationAlarmDuration},
    {.name = "SetActiveColorSpace", .run = runSetActiveColorSpace},
    {.name = "SetSelectedVideoInput", .run = runSetSelectedVideoInput},
    {.name = "SetSoftPowerState", .run = runSetSoftPowerState},
    {.name = "FactoryReset", .act = FactoryReset},
};

constexpr uint8_t refreshedGroups[] = {PEXAL_INFO_ID, IMAGE_ADJ_SETTINGS_ID};

constexpr ReadTraces traces = {
    .namesCalled = nullptr,
    .namesExited = "--- %s CMPI EnumInstanceNames() exited",
    .instancesCalled = nullptr,
    .instancesLeft = nullptr,
};

constexpr SystemKeyed systemKeyed = {_ClassName, nullptr};

STAMP_INSTANCE_AND_METHOD_PROVIDER(ZT_Marovelton_Monitor, .systemKeys = &systemKeyed,
                                   .key = {.name = "DeviceID",
                                           .value = _DeviceID,
                                           .missing = "Could not get DeviceID of instance.",
                                           .wrong = "This class name does not exist (wrong DeviceID)."},
                                   .reads = {.refresh = refreshedGroups, .traces = &traces},
                                   .methods = methods, .refusals = {.wrongClass = nullptr})
