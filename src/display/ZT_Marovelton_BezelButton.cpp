// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_BezelButton: the buttons of the front bezel, one object. Their illumination and the mode of
// the function buttons, and the methods that change these.

#include "display/modules.h"
#include "engine/steps.h"

using namespace frame;

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_BezelButton";
constexpr const char *_InstanceID = "ZT:Marovelton_BezelButton";

// The texts of the steps differ from one setting to the next; clients know each as it is.

SETTING(setButtonAutoFadeMode, BEZEL_BTN_ID, BEZEL_BUTTON_AUTOFADE_STATUS,
        .reply = "Failed to set the value to Button AutoFadeMode.",
        .sendQueue = "Failed to process. Unable to create a message queue for sending message.",
        .send = "Failed to process. Unable to send value to SPEAr.",
        .receiveQueue = "Failed to process. Unable to create a message queue for receiving message.")
SETTING(setButtonBrightness, BEZEL_BTN_ID, BEZEL_BUTTON_BRIGHTNESS,
        "Failed to set the value to ButtonBrightness.")
SETTING(setButtonColor, BEZEL_BTN_ID, BEZEL_BUTTON_COLOR, .reply = "Failed to set the Button color.",
        .receiveQueue = "Unable to create a message queue for receving message.")
SETTING(SetButtonMode, FUNCTION_BTN_ID, FUNCTION_BUTTON_MODE, "Failed to set the value to ButtonMode.")

STAMP_PATH_BY_INSTANCE_ID(ZT_Marovelton_BezelButton)

CMPIInstance *_makeInst_ZT_Marovelton_BezelButton(const CMPIObjectPath *reference, CMPIStatus *status)
{
    BezelButtonInfo info = {};
    MonitorInfo monitor = {};
    int buttonMode = 0;
    InstanceBuilder buttons(_broker, _ClassName,
                            newPath(_broker, _ClassName, reference, status, {{"InstanceID", _InstanceID}}),
                            status);
    if (!buttons ||
        !buttons.require(GetBezelButtonInfo(&info) == 0,
                         "Faied to get BezelButton information from database.") ||
        !buttons.require(GetMoinitorInfo(&monitor) == 0,
                         "Could not get monitor information from database.")) {
        return nullptr;
    }

    // Clients know the brightness as a single number beside three arrays of one element.
    buttons.uint16("ButtonBrightness", info.ButtonBrightness);
    buttons.uint16Array("ButtonColor", {info.ButtonColor});
    buttons.uint16Array("ButtonAutoFadeMode", {info.ButtonAutoFade});
    if (!buttons || !buttons.require(readRegister(FUNCTION_BUTTON_MODE, FUNCTION_BTN_ID, &buttonMode) == 0,
                                     "Failed to get Function Button information from database.")) {
        return nullptr;
    }
    buttons.uint16Array("ButtonMode", {buttonMode});
    buttons.describe(
        _InstanceID,
        "A class derived from Logical Element that represents the single node container of the Display Managemet System.");
    buttons.formatted("Name", "%s-BezelButton", systemName(monitor).text);
    return buttons.finish();
}

// ---- methods ----

static bool runSetButtonBrightness(Call &call)
{
    int brightness = 0;
    if (!readArgument(call, {integer, "ButtonBrightness", "Required argument ButtonBrightness missing."},
                      &brightness) ||
        !requireRange(call, brightness,
                      {0, 20, "Invalid input value range. Valid values are between 0 and 20."})) {
        return false;
    }
    if (checkStep(BEZEL_BUTTON_BRIGHTNESS, brightness, call.errorText) != 0) {
        return fail(call, CMPI_RC_ERR_INVALID_PARAMETER, call.errorText);
    }
    return settled(call, setButtonBrightness(brightness, call.errorText));
}

constexpr Method methods[] = {
    {.name = "SetButtonAutoFadeMode",
     .argument = {integer, "ButtonAutoFadeMode", "Required argument ButtonAutoFadeMode missing."},
     .range = {0, 1, "Invalid input value range. Valid values are 0 and 1."},
     .set = setButtonAutoFadeMode},
    {.name = "SetButtonBrightness", .run = runSetButtonBrightness},
    {.name = "SetButtonColor",
     .argument = {integer, "ButtonColor", "Required argument ButtonColor missing."},
     .range = {0, 2, "Invalid Input Value Range. valid values are between 0 and 2."},
     .set = setButtonColor},
    {.name = "SetButtonMode",
     .argument = {integer, "ButtonMode", "Required argument ButtonMode missing."},
     .range = {0, 1, "Invalid input value range. Valid values are 0 and 1."},
     .set = SetButtonMode},
};

STAMP_INSTANCE_AND_METHOD_PROVIDER(ZT_Marovelton_BezelButton,
                                   .key = {.name = "InstanceID", .value = _InstanceID}, .methods = methods,
                                   .refusals = {.missingKeyValue = 1})
