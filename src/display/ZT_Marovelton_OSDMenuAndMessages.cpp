// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_OSDMenuAndMessages: the on-screen display, one object. Its menu's look, language and place,
// when it shows information, and the methods that change these.

#include "display/modules.h"
#include "engine/steps.h"

#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>

using namespace frame;

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_OSDMenuAndMessages";
constexpr const char *_InstanceID = "ZT:Marovelton_OSDMenuAndMessages";

/** Cut off toward zero; a number beyond int becomes the nearest int, what is no number becomes 0. */
static int truncated(double value)
{
    if (std::isnan(value)) {
        return 0;
    }
    return value >= INT_MAX ? INT_MAX : value <= INT_MIN ? INT_MIN : static_cast<int>(value);
}

int GetLanguageValue(int language)
{
    static constexpr int engineCodes[] = {1, 4, 2, 0, 3, 5, 6, 7, 8, 9};
    if (language >= 0 && language < static_cast<int>(std::size(engineCodes))) {
        return engineCodes[language];
    }
    puts("Invalid one");
    return -1;
}

SETTING(SetMenuAndMessageTimeOut, MENU_SETTINGS_ID, MENU_TIMEOUT,
        "Failed to set the value to MenuAndMessageTimeOut.")

int SetLanguage(int language, char *errorText)
{
    static constexpr ChannelTexts texts = {.reply = "Failed to set the value to Language."};
    if (engineIsBusy(texts.busy, errorText)) {
        return -1;
    }
    printf("---------langval:%d\n", language);
    const int code = GetLanguageValue(language);
    printf("--------- after langval:%d\n", code);
    return exchange(setRequest(MENU_SETTINGS_ID, {{MENU_LANGUAGE, code}}), texts, errorText);
}

SETTING(SetNotifyWhenRecalibrationIsDueState, MENU_SETTINGS_ID, CALIBRATION_NOTIFICATION_STATUS,
        "Failed to set the value to RecalibrationIsDueState.")

int SetOSDPosition(int x, int y, char *errorText)
{
    return sendSetting(MENU_SETTINGS_ID, {{OSD_POSITION_X, x}, {OSD_POSITION_Y, y}},
                       {"Failed to set the value to OSDPositions."}, errorText);
}

int SetOpacity(float opacity, char *errorText)
{
    static constexpr ChannelTexts texts = {.reply = "Failed to set the value to Opacity."};
    if (engineIsBusy(texts.busy, errorText)) {
        return -1;
    }
    const int16_t hundredths = static_cast<int16_t>(truncated(static_cast<double>(opacity) * 100.0));
    if (checkStep(OPACITY_VALUE, hundredths, errorText) != 0) {
        return -1;
    }
    return exchange(setRequest(MENU_SETTINGS_ID, {{OPACITY_VALUE, hundredths}}), texts, errorText);
}

SETTING(SetShowInfoWhenColorSpaceChangeState, MENU_SETTINGS_ID, SHOW_COLORSPACE_INFO_STATUS,
        "Failed to to set the value to ShowInfoWhenColorSpaceChangeState.")
SETTING(SetShowInfoWhenInputSourceChangeState, MENU_SETTINGS_ID, SHOW_SOURCE_INFO_STATUS,
        "Failed to set the value to ShowInfoWhenInputSourceChangeState.")
SETTING(SetShowInfoWhenPoweredOnState, MENU_SETTINGS_ID, SHOW_POWER_ON_INFO_STATUS,
        .reply = "Failed to set the value to ShowInfoWhenPoweredOnState.",
        .busy = "Device is Busy. Please try aftrer some time.")
SETTING(setDisplayRotation, MENU_SETTINGS_ID, DISPLAY_ROTATION_STATUS,
        "Failed to set value to display rotation.")

STAMP_PATH_BY_INSTANCE_ID(ZT_Marovelton_OSDMenuAndMessages)

CMPIInstance *_makeInst_ZT_Marovelton_OSDMenuAndMessages(const CMPIObjectPath *reference, CMPIStatus *status)
{
    OSDMenuAndMessageInfo info = {};
    SystemName system;
    InstanceBuilder osd(_broker, _ClassName,
                        newPath(_broker, _ClassName, reference, status, {{"InstanceID", _InstanceID}}),
                        status);
    if (!osd ||
        !osd.require(GetOSDMenuAndMessagesInfo(&info) == 0,
                     "Failed to get OSDmenu and messages information from database.") ||
        !osd.readSystemName("Could not get monitor information from database.", &system)) {
        return nullptr;
    }

    osd.uint16("MenuAndMessageTimeOut", info.MenuMessageTimeOut);
    osd.boolean("NotifyWhenReCalibrationIsDue", info.MenuCalibration);
    osd.uint16("OSDPositionX", info.OSDPositionX);
    osd.uint16("OSDPositionY", info.OSDPositionY);
    osd.real32("Opacity", static_cast<float>(info.Opacity) / 100.0F);
    osd.boolean("ShowInfoWhenColorSpaceChanges", info.MenuColorspaces);
    osd.boolean("ShowInfoWhenInputSourceChanges", info.InputSourceStatus);
    osd.boolean("ShowInfoWhenPoweredOn", info.PowerStatus);
    // The engine's code, although SetLanguage takes the numbering of the class definition.
    osd.uint16Array("Language", {info.Language});
    osd.uint16Array("DisplayRotation", {info.DisplayRotation});
    osd.describe(_InstanceID, logicalElement);
    osd.formatted("Name", "%s-OSDMenuAndMessages", system.text);
    return osd.finish();
}

// ---- methods ----

static bool runSetOSDPosition(Call &call)
{
    int x = 0;
    int y = 0;
    return readArgument(call, {integer, "OSDPositionX", "Required argument OSDPositionX missing."}, &x) &&
           readArgument(call, {integer, "OSDPositionY", "Required argument OSDPositionY missing."}, &y) &&
           requirePosition(
               call, x,
               {0, 2560, "Invalid input value range, Valid values of OSDpositionX between 0 and 2560."}, y,
               {0, 1440, "Invalid input value range. Valid values of OSDpositionY between  0 and 1440."},
               "Invalid input value range. Valid Values of OSDpositionX are between 0 and 2560 , Valid values of OSDpositionY are between 0 and 1440.") &&
           settled(call, SetOSDPosition(x, y, call.errorText));
}

static bool runSetOpacity(Call &call)
{
    const char *text = requireText(call, "Opacity", "Required argument Opacity missing.");
    if (!text || !requireContent(call, text)) {
        return false;
    }
    char *end = nullptr;
    const float opacity = strtof(text, &end);
    if (*end != '\0') {
        return fail(call, CMPI_RC_ERR_INVALID_PARAMETER, "Invalid parameter.");
    }
    // Clients rely on whole percents in 16 bits being tested: 100.9 passes here and fails as a step.
    return requireRange(call, static_cast<int16_t>(truncated(atof(text))),
                        {25, 100, "Invalid input value range. Valid values are between 25 and 100."}) &&
           settled(call, SetOpacity(opacity, call.errorText));
}

constexpr Method methods[] = {
    {.name = "SetMenuAndMessageTimeOut",
     .argument = {integer, "MenuAndMessageTimeOut", "Required argument MenuAndMessageTimeOut missing."},
     .range = {5, 30, "Invalid input value range. Valid values are between 5 and 30."},
     .set = SetMenuAndMessageTimeOut},
    {.name = "SetLanguage",
     .argument = {integer, "Language", "Required argument Language missing."},
     .range = {0, 9, "Invalid input value range.Valid values are between 0 and 9."},
     .set = SetLanguage},
    {.name = "SetNotifyWhenRecalibrationIsDue",
     .argument = {toggle, "NotifyWhenReCalibrationIsDue",
                  "Required argument NotifyWhenReCalibrationIsDue missing."},
     .range = {0, 1, "Invalid input value range. Valid values are 0 or 1."},
     .set = SetNotifyWhenRecalibrationIsDueState},
    {.name = "SetOSDPosition", .run = runSetOSDPosition},
    {.name = "SetOpacity", .run = runSetOpacity},
    {.name = "SetShowInfoWhenColorSpaceChanges",
     .argument = {toggle, "ShowInfoWhenColorSpaceChanges",
                  "Required argument ShowInfoWhenColorSpaceChanges missing."},
     .range = {0, 1, "Invalid input value range.Valid values are 0 or 1."},
     .set = SetShowInfoWhenColorSpaceChangeState},
    {.name = "SetShowInfoWhenInputSourceChanges",
     .argument = {toggle, "ShowInfoWhenInputSourceChanges",
                  "Required argument ShowInfoWhenInputSourceChanges missing."},
     .range = {0, 1, "Invalid input value range, Valid values are 0 or 1."},
     .set = SetShowInfoWhenInputSourceChangeState},
    {.name = "SetShowInfoWhenPoweredOn",
     .argument = {toggle, "ShowInfoWhenPoweredOn", "Required argument ShowInfoWhenPoweredOn missing."},
     .range = {0, 1, "Invalid input value range. Valid values are 0 or 1."},
     .set = SetShowInfoWhenPoweredOnState},
    {.name = "SetDisplayRotation",
     .argument = {integer, "DisplayRotation", "Required argument DisplayRotation missing."},
     .range = {0, 1, "Invalid input value range. Valid values are 0 or 1."},
     .set = setDisplayRotation},
};

STAMP_INSTANCE_AND_METHOD_PROVIDER(ZT_Marovelton_OSDMenuAndMessages,
                                   .key = {.name = "InstanceID", .value = _InstanceID}, .methods = methods,
                                   .returnType = CMPI_uint8, .refusals = {.wrongClass = nullptr})
