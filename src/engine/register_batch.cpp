// SPDX-License-Identifier: Apache-2.0
#include "engine/register_batch.h"
#include "engine/exchange.h"
#include "engine/steps.h"

#include <cstdio>

using namespace engine;

constexpr const char *switchText = "Invalid Value. Valid values are true or false.";
constexpr const char *notifyText =
    "Invalid NotifyWhenReCalibrationIsDue Value. Valid values are true or false.";
constexpr const char *buttonText = "Invalid Setting Value. Valid values are between 1 and 17.";

// Identifiers that do not stand here are refused without a text. PIP_POSITION_X and PIP_POSITION_Y are among
// them on purpose: the position of the inset cannot be written through the channel. The texts that say "0 and
// 2" for three values, or "true or false" for 0 and 1, are what clients know.
constexpr struct {
    RegisterId id;
    int min, max;
    const char *text; // null: the caller's buffer is left as it is
} registerRanges[] = {
    {LUMINANCE, 48, 250, "Invalid DisplayLuminance value. Valid values are between 48 and 250."},
    {ACTIVE_COLORSPACE, 0, 6, nullptr},
    {VIDEO_INPUT, 0, 2, nullptr},
    {AUTO_SWITCH_STATUS, 0, 1, nullptr},
    {DISPLAY_FILL_STATUS, 0, 4, "Invalid DisplayAspectRatio value. Valid values are between 0 and 4."},
    {DCI_IMAGE_REGION, 0, 2, "Invalid DCIImageRegion value. Valid values are between 0 and 2."},
    {SOURCE_SCALING_4K, 0, 2, nullptr},
    {SHOW_CROPPED_REGION, 0, 1, nullptr},
    {VIDEO_LEVEL_STATUS, 0, 1, nullptr},
    {OVERSCAN_STATUS, 0, 1, nullptr},
    {BLUE_CHANNELS_STATUS, 0, 1, nullptr},
    {OVER_DRIVE, 0, 1, nullptr},
    {DEINTERLACING_STATUS, 0, 1, nullptr},
    {CADENCE_DETECTION_STATUS, 0, 1, nullptr},
    {PIP_STATE, 0, 2, "Invalid PIPMode. Valid values are between 0 and 2."},
    {PIP_POSITION, 0, 4, nullptr},
    {PIP_SIZE, 0, 2, "Invalid PIPSize Value. Valid values are 0 and 2."},
    {PIP_HEIGHT, 160, 1080, nullptr},
    {PIP_SOURCE, 0, 2, "Invalid PIPInputSource Value. Valid values are 0 and 2."},
    {SWAP_PIP_PRIMARY_INPUTS, 0, 1, nullptr},
    {PIP_VIDEO_LEVEL_STATUS, 0, 1, nullptr},
    {PIP_OVER_SCAN_STATUS, 0, 1, nullptr},
    {PIP_DCI_IMAGE_REGION, 0, 2, nullptr},
    {PIP_SHOW_CROPPED_REGION, 0, 1, nullptr},
    {AUTO_SLEEP_MODE, 0, 1, switchText},
    {POWER_ON_RECALL_STATUS, 0, 1, switchText},
    {DDC_CI_COMM_STATUS, 0, 1, switchText},
    {AUTO_EDID_STATUS, 0, 1, switchText},
    {HOT_PLUG_INITIATE, 0, 1, switchText},
    {FW_STATUS, 0, 3, nullptr},
    {CALIBRATION_STATUS, 0, 1,
     "Invalid CalibrationEnabled Value. Valid values are true or false (or) 0 and 1."},
    {WEBSERVER_STATUS, 0, 1, "Invalid EnabledState Value. Valid values are 0 and 1."},
    {IP_CONFIGURATION_MODE, 0, 1, nullptr},
    {IP_ADDRESS, 0, 4, nullptr},
    {SUBNET_MASK, 0, 4, nullptr},
    {GATEWAY, 0, 4, nullptr},
    {MAC_ADDRESS, 0, 6, nullptr},
    {WS_MANAGEMENT_STATUS, 0, 1, "Invalid EnabledState Value. Valid values are between 0 and 1."},
    {WS_IDENTIFY_STATUS, 0, 1, nullptr},
    {WS_MANAGEMENT_OVER_HTTP, 0, 1, nullptr},
    {WS_MANAGEMENT_OVER_HTTPS, 0, 1, nullptr},
    {SHOW_POWER_ON_INFO_STATUS, 0, 1, notifyText},
    {SHOW_SOURCE_INFO_STATUS, 0, 1, notifyText},
    {SHOW_COLORSPACE_INFO_STATUS, 0, 1, notifyText},
    {WARMUP_TIME_REMINDER, 0, 1, notifyText},
    {CALIBRATION_NOTIFICATION_STATUS, 0, 1, notifyText},
    {OSD_POSITION_X, 0, 2560, "Invalid Value of OSDPositionX. Valid values are between 0 and 2560."},
    {OSD_POSITION_Y, 0, 1440, "Invalid Value of OSDPositionY. Valid values are between 0 and 1440."},
    {MENU_TIMEOUT, 5, 30, "Invalid MenuAndMessageTimeOut Value. Valid values are between 5 and 30."},
    {OPACITY_VALUE, 2500, 10000, "Invalid Opacity Value. Valid values are between 25 and 100."},
    {MENU_LANGUAGE, 0, 9, "Invalid Language Value. Valid values are between 0 and 9."},
    {FUNCTION_BUTTON_F1, 1, 17, buttonText},
    {FUNCTION_BUTTON_F2, 1, 17, buttonText},
    {FUNCTION_BUTTON_F3, 1, 17, buttonText},
    {FUNCTION_BUTTON_F4, 1, 17, buttonText},
    {FUNCTION_BUTTON_MODE, 0, 1, "Invalid ButtonMode Value. Valid values are 0 and 1."},
    {BEZEL_BUTTON_COLOR, 0, 2, "Invalid Button Color Value. valid values are between 0 and 2."},
    {BEZEL_BUTTON_BRIGHTNESS, 0, 20, "Invalid Button Brightness Value. Valid values are between 0 and 20."},
    {BEZEL_BUTTON_AUTOFADE_STATUS, 0, 1, "Invalid Button Autofade Value. Valid values are 0 and 1."},
};

constexpr bool rangesAreSound()
{
    for (const auto &range : registerRanges) {
        if (range.min > range.max || (range.text && *range.text == '\0')) {
            return false;
        }
        for (const auto *before = registerRanges; before != &range; ++before) {
            if (before->id == range.id) {
                return false;
            }
        }
    }
    return true;
}
static_assert(rangesAreSound(), "each register once, with an ordered range");

int ValidateRegisterValue(int registerId, int value, char *errorText)
{
    puts("------------- Enter ValidateRegisterValue()");
    int result = -1;
    for (const auto &range : registerRanges) {
        if (range.id == registerId) {
            result = ValidateInputArgs(value, range.min, range.max) == 0 ? 0 : -1;
            if (result != 0 && range.text) {
                copyText(errorText, ERROR_TEXT_SIZE, range.text);
            }
        }
    }
    // The steps of the opacity are looked at when the entry is made.
    if (registerId == BEZEL_BUTTON_BRIGHTNESS && checkStep(registerId, value, errorText) != 0) {
        result = -1;
    }
    puts("------------- Leave ValidateRegisterValue()");
    return result;
}

/** Puts one row of a batch into entry `row` of the message. Returns 0, or -1 where the row is refused. */
static int addEntry(WebCmd &command, int row, int registerId, int value, char *errorText)
{
    // A message has no room for more.
    if (row >= REGISTERS_PER_MESSAGE || ValidateRegisterValue(registerId, value, errorText) != 0) {
        return -1;
    }
    RegisterDetails &entry = command.sRegdetails[row];
    entry.Register = static_cast<uint8_t>(registerId);
    entry.RegisterValue.Value = static_cast<int16_t>(value);
    if (registerId == OPACITY_VALUE) {
        printf("------  registerValues =%d\n", value);
        if (checkStep(registerId, entry.RegisterValue.Value, errorText) != 0) {
            return -1;
        }
    }
    ++command.Count;
    return 0;
}

int InvokeMethod_Spear(const int *registerIds, const int *registerValues, int groupId, int count,
                       char *errorText)
{
    static constexpr ChannelTexts texts = {.reply = "Failed to receive message."};
    puts("------------- Enter InvokeMethod_Spear()");
    printf("------------- count :%d \n", count);
    char rowText[ERROR_TEXT_SIZE] = " ";
    if (engineIsBusy(texts.busy, errorText)) {
        return -1;
    }

    SpearMessage message = engineRequest(PROCESS_SET_REQUEST, groupId);
    WebCmd &command = message.Data.Arg.sWebCmd;
    int result = 0;
    for (int row = 0; row < count && result == 0; ++row) {
        // A row that is passed over leaves its own entry empty; the others stay where they are.
        if (registerIds[row] < 0) {
            continue;
        }
        printf("------------- registerIds[rowIndx] :%d ---- registerValues[rowIndx]:%d \n", registerIds[row],
               registerValues[row]);
        result = addEntry(command, row, registerIds[row], registerValues[row], rowText);
    }
    printf("-------------regCount:%d \n", command.Count);
    if (result != 0) {
        copyText(errorText, ERROR_TEXT_SIZE, rowText);
        return -1;
    }
    if (exchange(message, texts, errorText) != 0) {
        return -1;
    }
    puts("------------- Leave InvokeMethod_Spear()");
    return 0;
}
