// SPDX-License-Identifier: Apache-2.0
#include "engine/common.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <strings.h>

// ---- texts and values ----

void copyText(char *to, size_t size, const char *from)
{
    const size_t length = strnlen(from, size - 1);
    memcpy(to, from, length);
    to[length] = '\0';
}

const char *textOf(const CMPIString *string)
{
    return string && string->ft ? string->ft->getCharPtr(string, nullptr) : nullptr;
}

const char *textOf(const CMPIData &data, const CMPIStatus &status)
{
    if (status.rc != CMPI_RC_OK || (data.state & (CMPI_nullValue | CMPI_notFound | CMPI_badValue)))
        return nullptr;
    if (data.type == CMPI_string)
        return textOf(data.value.string);
    return data.type == CMPI_chars ? data.value.chars : nullptr;
}

bool isDecimal(const char *text)
{
    char *end = nullptr;
    static_cast<void>(strtol(text, &end, 10));
    return *end == '\0';
}

int decimalValue(const char *text)
{
    const long value = strtol(text, nullptr, 10);
    return value > INT_MAX ? INT_MAX : value < INT_MIN ? INT_MIN : static_cast<int>(value);
}

void setStatus(const CMPIBroker *broker, CMPIStatus *status, CMPIrc code, const char *text)
{
    status->rc = code;
    // Without memory for the message the code alone reaches the client.
    status->msg = CMNewString(broker, text, nullptr);
}

// ---- the monitor's system name ----

SystemName systemName(const MonitorInfo &info)
{
    SystemName name = {};
    if (info.DisplayName[0] != '\0') {
        memcpy(name.text, info.DisplayName, sizeof info.DisplayName);
    } else {
        char address[IP_ADDRESS_SIZE + 1] = {};
        GetIPAddress(address);
        address[IP_ADDRESS_SIZE] = '\0';
        copyText(name.text, sizeof name.text, address);
    }
    return name;
}

namespace
{

/** The expected `Name` of a class, "" for a class that has none. */
void expectedName(const char *className, const char *system, char *name, size_t size)
{
    static constexpr struct {
        const char *className;
        const char *format;
    } forms[] = {
        {"ZT_Marovelton_IPNetworkConnection", "%s-IPNetworkConnection"},
        {"ZT_Marovelton_RemoteManagementService", "%s-RemoteManagementService"},
        {"ZT_Marovelton_WSManagementService", "%s-WSManagementService"},
        {"ZT_Marovelton_IPConfigurationService", "%s-IPConfigurationService"},
        {"ZT_Marovelton_Monitor", "%s"},
    };
    name[0] = '\0';
    for (const auto &form : forms)
        if (strcmp(className, form.className) == 0)
            snprintf(name, size, form.format, system);
}

/** Compares one key with its expected value; false, with `status` set, when it is missing or another. */
bool keyMatches(const CMPIBroker *broker, const CMPIObjectPath *objectPath, const char *key,
                const char *expected, const char *missing, const char *wrong, CMPIStatus *status)
{
    CMPIStatus read = {CMPI_RC_OK, nullptr};
    const CMPIData data = CMGetKey(objectPath, key, &read);
    const char *value = textOf(data, read);
    if (!value)
        setStatus(broker, status, CMPI_RC_ERR_NOT_FOUND, missing);
    else if (strcasecmp(value, expected) != 0)
        setStatus(broker, status, CMPI_RC_ERR_NOT_FOUND, wrong);
    else
        return true;
    return false;
}

} // namespace

void Check_System_key_value_pairs(const CMPIBroker *broker, const CMPIObjectPath *objectPath,
                                  const char *className, CMPIStatus *status)
{
    MonitorInfo info = {};
    if (GetMoinitorInfo(&info) != 0) {
        setStatus(broker, status, CMPI_RC_ERR_FAILED, "Could not get monitor information from database.");
        return;
    }
    const SystemName system = systemName(info);
    char name[100];
    expectedName(className, system.text, name, sizeof name);

    // The monitor has no Name key.
    if (strcmp(className, "ZT_Marovelton_Monitor") != 0 &&
        !keyMatches(broker, objectPath, "Name", name, "Invalid selectors(Could not get Name of instance.)",
                    "This instance does not exist (wrong Name.)", status))
        return;
    if (!keyMatches(broker, objectPath, "SystemName", system.text,
                    "Invalid selectors(Could not get systemName of instance.)",
                    "This instance does not exist (wrong SystemName).", status))
        return;
    if (!keyMatches(broker, objectPath, "SystemCreationClassName", "Linux_ComputerSystem",
                    "Invalid selectors(Could not get SystemCreationClassName of instance.)",
                    "This class name does not exist (wrong SystemCreationClassName).", status))
        return;
    keyMatches(broker, objectPath, "CreationClassName", className,
               "Invalid selectors(Could not get CreationClassName of instance.)",
               "This class name does not exist (wrong CreationClassName).", status);
}

// ---- registers ----

namespace
{

struct RegisterRange {
    RegisterId id;
    int min, max;
    const char *text; // null: the caller's buffer is left as it is
};

// Identifiers that do not stand here are refused without a text. PIP_POSITION_X and PIP_POSITION_Y are among
// them on purpose: the position of the inset cannot be written through the channel. The texts that say "0 and
// 2" for three values, or "true or false" for 0 and 1, are what clients know.
constexpr RegisterRange registerRanges[] = {
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
    {AUTO_SLEEP_MODE, 0, 1, "Invalid Value. Valid values are true or false."},
    {POWER_ON_RECALL_STATUS, 0, 1, "Invalid Value. Valid values are true or false."},
    {DDC_CI_COMM_STATUS, 0, 1, "Invalid Value. Valid values are true or false."},
    {AUTO_EDID_STATUS, 0, 1, "Invalid Value. Valid values are true or false."},
    {HOT_PLUG_INITIATE, 0, 1, "Invalid Value. Valid values are true or false."},
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
    {SHOW_POWER_ON_INFO_STATUS, 0, 1,
     "Invalid NotifyWhenReCalibrationIsDue Value. Valid values are true or false."},
    {SHOW_SOURCE_INFO_STATUS, 0, 1,
     "Invalid NotifyWhenReCalibrationIsDue Value. Valid values are true or false."},
    {SHOW_COLORSPACE_INFO_STATUS, 0, 1,
     "Invalid NotifyWhenReCalibrationIsDue Value. Valid values are true or false."},
    {WARMUP_TIME_REMINDER, 0, 1,
     "Invalid NotifyWhenReCalibrationIsDue Value. Valid values are true or false."},
    {CALIBRATION_NOTIFICATION_STATUS, 0, 1,
     "Invalid NotifyWhenReCalibrationIsDue Value. Valid values are true or false."},
    {OSD_POSITION_X, 0, 2560, "Invalid Value of OSDPositionX. Valid values are between 0 and 2560."},
    {OSD_POSITION_Y, 0, 1440, "Invalid Value of OSDPositionY. Valid values are between 0 and 1440."},
    {MENU_TIMEOUT, 5, 30, "Invalid MenuAndMessageTimeOut Value. Valid values are between 5 and 30."},
    {OPACITY_VALUE, 2500, 10000, "Invalid Opacity Value. Valid values are between 25 and 100."},
    {MENU_LANGUAGE, 0, 9, "Invalid Language Value. Valid values are between 0 and 9."},
    {FUNCTION_BUTTON_F1, 1, 17, "Invalid Setting Value. Valid values are between 1 and 17."},
    {FUNCTION_BUTTON_F2, 1, 17, "Invalid Setting Value. Valid values are between 1 and 17."},
    {FUNCTION_BUTTON_F3, 1, 17, "Invalid Setting Value. Valid values are between 1 and 17."},
    {FUNCTION_BUTTON_F4, 1, 17, "Invalid Setting Value. Valid values are between 1 and 17."},
    {FUNCTION_BUTTON_MODE, 0, 1, "Invalid ButtonMode Value. Valid values are 0 and 1."},
    {BEZEL_BUTTON_COLOR, 0, 2, "Invalid Button Color Value. valid values are between 0 and 2."},
    {BEZEL_BUTTON_BRIGHTNESS, 0, 20, "Invalid Button Brightness Value. Valid values are between 0 and 20."},
    {BEZEL_BUTTON_AUTOFADE_STATUS, 0, 1, "Invalid Button Autofade Value. Valid values are 0 and 1."},
};

constexpr bool rangesAreInOrder()
{
    int before = -1;
    for (const RegisterRange &range : registerRanges) {
        if (range.id <= before || range.id > BEZEL_BUTTON_AUTOFADE_STATUS || range.min > range.max ||
            (range.text && *range.text == '\0'))
            return false;
        before = range.id;
    }
    return true;
}
static_assert(rangesAreInOrder(), "each register once, in rising order, with an ordered range");

} // namespace

int ValidateRegisterValue(int registerId, int value, char *errorText)
{
    puts("------------- Enter ValidateRegisterValue()");
    int result = -1;
    for (const RegisterRange &range : registerRanges) {
        if (range.id != registerId)
            continue;
        result = ValidateInputArgs(value, range.min, range.max);
        if (result != 0) {
            result = -1;
            if (range.text)
                copyText(errorText, ERROR_TEXT_SIZE, range.text);
        }
    }
    if (registerId == BEZEL_BUTTON_BRIGHTNESS && (value & 1)) {
        copyText(errorText, ERROR_TEXT_SIZE,
                 "Invalid Button Brightness Value. Valid values are between 0,2,4,6,8,10,12,14 upto 20.");
        result = -1;
    }
    puts("------------- Leave ValidateRegisterValue()");
    return result;
}

int readRegister(int registerId, int groupId, int *value)
{
    char text[REGISTER_TEXT_SIZE + 1] = " ";
    const int result = GetRegisterValue(registerId, groupId, text);
    text[REGISTER_TEXT_SIZE] = '\0';
    *value = decimalValue(text);
    return result;
}

int GetResolution(int *horizontal, int *vertical)
{
    int width = 0;
    int height = 0;
    if (readRegister(PIP_HORIZONTAL_ACTIVE, PIP_INFO_ID, &width) == -1 ||
        readRegister(PIP_VERTICAL_ACTIVE, PIP_INFO_ID, &height) == -1)
        return -1;
    *horizontal = width;
    *vertical = height;
    return 0;
}

// ---- the message channel to the display engine ----

SpearMessage engineRequest(int command, int groupId)
{
    SpearMessage message = {};
    message.Type = 1;
    message.Data.Cmd = static_cast<int16_t>(command);
    message.Data.Source = WSMAN;
    message.Data.Arg.sWebCmd.GroupId = static_cast<uint8_t>(groupId);
    return message;
}

SpearMessage setRequest(int groupId, std::initializer_list<RegisterWrite> writes)
{
    SpearMessage message = engineRequest(PROCESS_SET_REQUEST, groupId);
    WebCmd &command = message.Data.Arg.sWebCmd;
    for (const RegisterWrite &write : writes) {
        if (command.Count == REGISTERS_PER_MESSAGE)
            break;
        RegisterDetails &entry = command.sRegdetails[command.Count++];
        entry.Register = static_cast<uint8_t>(write.registerId);
        entry.RegisterValue.Value = static_cast<int16_t>(write.value);
    }
    return message;
}

bool engineIsBusy(const char *busyText, char *errorText)
{
    if (GetMonitorStatus(SPEAR_STATE) != BUSY)
        return false;
    copyText(errorText, ERROR_TEXT_SIZE, busyText);
    return true;
}

int exchange(const SpearMessage &message, const ChannelTexts &texts, char *errorText)
{
    const auto failed = [&texts](int result) { return texts.onlyMinusOneFails ? result == -1 : result != 0; };
    const auto fail = [errorText](const char *text) {
        copyText(errorText, ERROR_TEXT_SIZE, text);
        return -1;
    };

    int queueId = -1;
    if (failed(SpearEngineMessageQueueCreate(MSG_QUEUE_SPEAR_APP, &queueId)))
        return fail(texts.sendQueue);
    const int sent = SendStatusMessagetoSource(message, queueId);
    if (texts.send && failed(sent))
        return fail(texts.send);
    if (!texts.reply)
        return 0;

    queueId = -1;
    if (failed(SpearEngineMessageQueueCreate(MSG_QUEUE_WSMAN, &queueId)))
        return fail(texts.receiveQueue);
    const SpearMessage reply = {};
    return RecvMessageFromSource(reply, queueId) == 0 ? 0 : fail(texts.reply);
}

int sendSetting(int groupId, std::initializer_list<RegisterWrite> writes, const ChannelTexts &texts,
                char *errorText)
{
    return engineIsBusy(texts.busy, errorText) ? -1 : exchange(setRequest(groupId, writes), texts, errorText);
}

int sendSetting(int groupId, std::initializer_list<RegisterWrite> writes, const char *replyText,
                char *errorText)
{
    return sendSetting(groupId, writes, ChannelTexts{.reply = replyText}, errorText);
}

namespace
{

/** Puts one row of a batch into entry `row` of the message. Returns 0, or -1 where the row is refused. */
int addEntry(WebCmd &command, int row, int registerId, int value, char *errorText)
{
    if (row >= REGISTERS_PER_MESSAGE) // a message has no room for it
        return -1;
    if (ValidateRegisterValue(registerId, value, errorText) != 0)
        return -1;
    RegisterDetails &entry = command.sRegdetails[row];
    entry.Register = static_cast<uint8_t>(registerId);
    entry.RegisterValue.Value = static_cast<int16_t>(value);
    if (registerId == OPACITY_VALUE) {
        printf("------  registerValues =%d\n", value);
        // Hundredths of a percent in steps of 6.25 %. The list of the text leaves out 75, which is accepted.
        if (entry.RegisterValue.Value % 625 != 0) {
            copyText(
                errorText, ERROR_TEXT_SIZE,
                "Invalid Opacity Value. valid opacity values are 25, 31.25, 37.50, 43.75, 50, 56.25, 62.50, 68.75, 81.25, 87.50, 93.75, 100");
            return -1;
        }
    }
    entry.Type = 0;
    ++command.Count;
    return 0;
}

} // namespace

int InvokeMethod_Spear(const int *registerIds, const int *registerValues, int groupId, int count,
                       char *errorText)
{
    static constexpr ChannelTexts texts = {.reply = "Failed to receive message."};
    puts("------------- Enter InvokeMethod_Spear()");
    printf("------------- count :%d \n", count);
    char rowText[ERROR_TEXT_SIZE] = " ";
    if (engineIsBusy(texts.busy, errorText))
        return -1;

    SpearMessage message = engineRequest(PROCESS_SET_REQUEST, groupId);
    WebCmd &command = message.Data.Arg.sWebCmd;
    int result = 0;
    for (int row = 0; row < count && result == 0; ++row) {
        // A row that is passed over leaves its own entry empty; the others stay where they are.
        if (registerIds[row] < 0)
            continue;
        printf("------------- registerIds[rowIndx] :%d ---- registerValues[rowIndx]:%d \n", registerIds[row],
               registerValues[row]);
        result = addEntry(command, row, registerIds[row], registerValues[row], rowText);
    }
    printf("-------------regCount:%d \n", command.Count);
    if (result != 0) {
        copyText(errorText, ERROR_TEXT_SIZE, rowText);
        return -1;
    }
    if (exchange(message, texts, errorText) != 0)
        return -1;
    puts("------------- Leave InvokeMethod_Spear()");
    return 0;
}

int InvokeGetMethod_Spear(int groupId, char *errorText)
{
    static constexpr ChannelTexts texts = {
        .reply = "Failed to read the value from spear.",
        .busy = "Device is Busy. Please try after some time..", // two full stops, unlike a write
    };
    if (engineIsBusy(texts.busy, errorText))
        return -1;
    return exchange(engineRequest(PROCESS_GET_REQUEST, groupId), texts, errorText);
}
