// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_VideoInput: the monitor's three video inputs, one instance each. Which of them is shown is
// chosen with SetSelectedVideoInput of the monitor, so the class has no working method of its own.

#include "display/modules.h"

using namespace frame;

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_VideoInput";
constexpr const char *_InstanceID = "ZT:Marovelton_VideoInput:%d";

constexpr struct {
    const char *name;
    int32_t PexalPIPSettings::*active;
} inputs[] = {
    {"Display Port1", &PexalPIPSettings::DP1State},
    {"Display Port2", &PexalPIPSettings::DP2State},
    {"HDMI", &PexalPIPSettings::HDMIState},
};
constexpr int inputCount = std::size(inputs);

int ValidateVideoInputInstanceID(const char *instanceID, char *errorText, int *index)
{
    trace("--- %s ValidateVideoInputInstanceID() called\n", _ClassName);
    const int result = matchInstanceID(instanceID, _InstanceID, inputCount, errorText, index);
    trace("--- %sValidateVideoInputInstanceID() Leave\n", _ClassName);
    return result;
}

CMPIObjectPath *_makePath_ZT_Marovelton_VideoInput(const CMPIObjectPath *reference, int index,
                                                   CMPIStatus *status)
{
    CMPIObjectPath *path =
        makePathByInstanceID(_broker, _ClassName, reference, InstanceID(_InstanceID, index).text, status);
    trace("--- %s makePath leave\n", _ClassName);
    return path;
}

CMPIInstance *_makeInst_ZT_Marovelton_VideoInput(const CMPIObjectPath *reference, int index,
                                                 CMPIStatus *status)
{
    const InstanceID instanceID(_InstanceID, index);
    PexalPIPSettings settings = {};
    int selected = 0;
    InstanceBuilder input(_broker, _ClassName,
                          newPath(_broker, _ClassName, reference, status, {{"InstanceID", instanceID.text}}),
                          status);
    if (!input || !input.require(GetPIPSettingsInfo(&settings) == 0 &&
                                     readRegister(VIDEO_INPUT, VIDEO_INPUT_ID, &selected) == 0,
                                 "Failed to get videosource information from database.")) {
        return nullptr;
    }

    input.boolean("Selected", selected == index);
    input.text("Name", inputs[index].name);
    input.boolean("Active", settings.*inputs[index].active);
    input.describe(instanceID.text, logicalElement);
    return input.finish();
}

constexpr uint8_t refreshedGroups[] = {VIDEO_INPUT_ID};

STAMP_INSTANCE_AND_PLACEHOLDER_PROVIDER(ZT_Marovelton_VideoInput, CMPI_RC_ERR_NOT_FOUND,
                                        .key = {.name = "InstanceID",
                                                .validate = ValidateVideoInputInstanceID},
                                        .reads = {.count = inputCount, .refresh = refreshedGroups})
