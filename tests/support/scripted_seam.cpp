// SPDX-License-Identifier: Apache-2.0
#include "scripted_seam.h"

#include "faults.h"
#include "trace_capture.h"
#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>

namespace test_support
{

Seam seam;

std::string hex(const std::array<uint8_t, 40> &bytes)
{
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    for (size_t i = 0; i < bytes.size(); ++i) {
        // The blocks of the message: type, command, source, batch header, entries of 7 bytes, the rest.
        const bool block = i == 4 || i == 6 || i == 8 || (i >= 11 && i <= 39 && (i - 11) % 7 == 0);
        text += i == 0 ? "" : block ? "  " : " ";
        text += {digits[bytes[i] >> 4], digits[bytes[i] & 15]};
    }
    return text;
}

namespace
{

const std::set<std::string> &functions()
{
    static const std::set<std::string> names = {
        "GetMoinitorInfo",
        "GetMonitorStatus",
        "SpearEngineMessageQueueCreate",
        "SendStatusMessagetoSource",
        "RecvMessageFromSource",
        "GetRegisterValue",
        "GetDisplayManagementInfo",
        "GetImageAdjustmentInfo",
        "GetPIPSettingsInfo",
        "GetOSDMenuAndMessagesInfo",
        "GetColorSpaceInfoById",
        "GetBezelButtonInfo",
        "GetFunctionButtonInfoById",
        "GetTestPatternInfo",
        "GetRemoteManagementServerInfo",
        "GetIPAddress",
        "ParseIPV4Address",
        "ValidateInputArgs",
        "IsAdminUser",
        "ValidateDisplayName",
        "UpdateDisplayName",
        "ValidateDeploymentDate",
        "UpdateDeploymentDate",
        "UpdateDeploymentLocation",
        "runcommand",
        "freeresultbuf",
    };
    return names;
}

void checkName(const std::string &call)
{
    EXPECT_TRUE(functions().contains(call.substr(0, call.find('('))))
        << "no such function of the seam: " << call;
}

} // namespace

void Seam::returns(const std::string &call, int result)
{
    checkName(call);
    always_[call] = result;
}

void Seam::returnsAt(const std::string &call, int nth, int result)
{
    checkName(call);
    onceOnly_[{call, nth}] = result;
}

void Seam::forgetCalls()
{
    calls.clear();
    sent.clear();
    received.clear();
    queueIdBefore.clear();
    errorTextBefore.clear();
    printedBefore.clear();
    registerTextBefore.clear();
    captured.clear();
    timesCalled_.clear();
}

int Seam::count(const std::string &function) const
{
    checkName(function);
    return static_cast<int>(std::count_if(calls.begin(), calls.end(), [&](const std::string &call) {
        return call.substr(0, call.find('(')) == function;
    }));
}

void Seam::reset()
{
    *this = {};

    setField(monitor.DisplayMode, "Standard");
    monitor.ActiveColorSpace = 1;
    monitor.ActiveVideoInput = 2;
    monitor.VideoPipelineDelay = 17;
    monitor.LastCalibration = 640;
    monitor.BacklightHours = 5210;
    monitor.Deployment_Date = 1400000000; // 2014-05-13 16:53:20 UTC
    setField(monitor.SerialNumber, "CN0123456789");
    setField(monitor.DisplayName, "Studio 7");
    setField(monitor.DeploymentLocation, "Grading room 2");
    monitor.AutoSwitchSource = 1;
    monitor.SoftPowerState = 1;
    monitor.RecalibrationAlarmDuration = 500;
    setField(monitor.PexalVersion, "1.07");
    status = FREE;

    management = {1, 0, 1, 0, 1, 0, 1, 0, 1, 0};
    imageAdjustment = {4, 1, 2, 1, 75, 1, 0, 1, 0, 1, 0, 1, 2, 640, 360, 1, 3, 3840, 2160};
    pip = {1, 4, 200, 220, 2, 1, 1, 0, 1, 0, 1, 0, 1};
    osd = {1, 0, 1, 0, 1, 320, 240, 15, 6250, 1, 4};
    bezel = {1, 14, 1};
    functionButtons[0] = {1, 3, "Colour space"};
    functionButtons[1] = {1, 9, "Video input"};
    functionButtons[2] = {0, 12, "Crop"};
    functionButtons[3] = {1, 17, "Test pattern"};
    testPattern = {3, 1, "512", "256", "128", 1};
    remote = {1, 0, "192.0.2.17", "255.255.255.0", "192.0.2.1", "00:1B:44:11:3A:", 1, 1};
    const char *const names[] = {"Adobe RGB", "sRGB D65", "sRGB D50", "BT.709",
                                 "BT.2020",   "DCI P3",   "User 1"};
    for (int i = 0; i < 7; ++i) {
        ColorSpaceInfo &preset = colorSpaces[i];
        preset = {};
        preset.ActiveColorSpace = i;
        preset.DisplayLuminance = 100 + 10 * i;
        setField(preset.ColorSpaceName, names[i]);
        setField(preset.RedPrimaryU, "0.451");
        setField(preset.GreenPrimaryU, "0.076");
        setField(preset.BluePrimaryU, "0.175");
        setField(preset.WhitePointU, "0.198");
        setField(preset.RedPrimaryV, "0.523");
        setField(preset.GreenPrimaryV, "0.576");
        setField(preset.BluePrimaryV, "0.158");
        setField(preset.WhitePointV, "0.468");
        setField(preset.RedPrimaryX, "0.640");
        setField(preset.GreenPrimaryX, "0.210");
        setField(preset.BluePrimaryX, "0.150");
        setField(preset.WhitePointX, "0.313");
        setField(preset.RedPrimaryY, "0.330");
        setField(preset.GreenPrimaryY, "0.710");
        setField(preset.BluePrimaryY, "0.060");
        setField(preset.WhitePointY, "0.329");
        setField(preset.Gamma, "2.20");
    }
    ipAddress = "192.0.2.17";
    registers = {{{ACTIVE_COLORSPACE, COLOR_SPACE_ID}, "1"}, {{VIDEO_INPUT, VIDEO_INPUT_ID}, "2"}};
    administrators = {"admin"};
    users = {"operator"};
    isAdministrator = 1;
    errorText = "The support library has failed.";
}

/** Records a call; true when its result is scripted. */
bool scripted(const std::string &function, const std::string &call, int *result)
{
    seam.calls.push_back(call);
    const int nthOfFunction = ++seam.timesCalled_[function];
    const int nthOfCall = ++seam.timesCalled_[call];
    for (const auto &[name, nth] : {std::pair(function, nthOfFunction), std::pair(call, nthOfCall)}) {
        if (const auto found = seam.onceOnly_.find({name, nth}); found != seam.onceOnly_.end()) {
            *result = found->second;
            return true;
        }
        if (const auto found = seam.always_.find(name); found != seam.always_.end()) {
            *result = found->second;
            return true;
        }
    }
    return false;
}

namespace
{

/** What the script says about a call: its result, and whether the function does its work. */
struct Step {
    bool works;
    int result;
};

/** A function whose result the library may not ignore; faults strike it. */
Step step(const std::string &function, const std::string &arguments, int failure = -1)
{
    Step decided = {true, 0};
    if (scripted(function, function + "(" + arguments + ")", &decided.result)) {
        decided.works = decided.result == 0;
    } else if (faults.strike(function) == Fault::fails) {
        decided = {false, failure};
    }
    return decided;
}

/** A function whose result does not matter. */
Step indifferentStep(const std::string &function, const std::string &arguments)
{
    Step decided = {true, 0};
    if (scripted(function, function + "(" + arguments + ")", &decided.result)) {
        decided.works = decided.result == 0;
    }
    return decided;
}

template <typename Record>
int fillRecord(const Step &decided, Record *record, const Record &content)
{
    if (decided.works) {
        *record = content;
    } else {
        memset(static_cast<void *>(record), 'Z', sizeof *record);
    }
    return decided.result;
}

void writeErrorText(char *buffer)
{
    const std::string &text = seam.errorText;
    if (text.empty()) {
        return;
    }
    memcpy(buffer, text.c_str(), std::min<size_t>(text.size() + 1, ERROR_TEXT_SIZE));
}

int storeText(const std::string &function, const char *text, char *errorText)
{
    seam.errorTextBefore.push_back(errorText);
    const Step decided = step(function, text);
    if (!decided.works) {
        writeErrorText(errorText);
    }
    return decided.result;
}

std::array<uint8_t, 40> bytesOf(const SpearMessage &message)
{
    std::array<uint8_t, 40> bytes;
    static_assert(sizeof message == 40);
    memcpy(bytes.data(), &message, sizeof message);
    return bytes;
}

char **lineList(const std::vector<std::string> &lines)
{
    auto **list = static_cast<char **>(calloc(lines.size() + 1, sizeof(char *)));
    for (size_t i = 0; i < lines.size(); ++i) {
        list[i] = strdup(lines[i].c_str());
    }
    ++seam.unfreedLines;
    return list;
}

std::string numbers(std::initializer_list<int> values)
{
    std::string text;
    for (const int value : values) {
        text += (text.empty() ? "" : ", ") + std::to_string(value);
    }
    return text;
}

} // namespace

} // namespace test_support

using namespace test_support;

extern "C" {

int GetMoinitorInfo(MonitorInfo *info)
{
    return fillRecord(step("GetMoinitorInfo", ""), info, seam.monitor);
}

int GetMonitorStatus(int selector)
{
    const Step decided = step("GetMonitorStatus", numbers({selector}), BUSY);
    return decided.works ? seam.status : decided.result;
}

int SpearEngineMessageQueueCreate(int queue, int *queueId)
{
    seam.queueIdBefore.push_back(*queueId);
    const Step decided = step("SpearEngineMessageQueueCreate", numbers({queue}));
    if (decided.works) {
        *queueId = 100 + queue;
    }
    return decided.result;
}

int SendStatusMessagetoSource(SpearMessage message, int queueId)
{
    const Step decided = step("SendStatusMessagetoSource", numbers({queueId}));
    if (decided.works) {
        seam.sent.push_back({queueId, bytesOf(message)});
    }
    return decided.result;
}

int RecvMessageFromSource(SpearMessage message, int queueId)
{
    seam.received.push_back({queueId, bytesOf(message)});
    return step("RecvMessageFromSource", numbers({queueId})).result;
}

int GetRegisterValue(int registerId, int groupId, char *text)
{
    seam.registerTextBefore.push_back(text);
    Step decided = step("GetRegisterValue", numbers({registerId, groupId}));
    const auto stored = seam.registers.find({registerId, groupId});
    if (decided.works && stored == seam.registers.end()) {
        decided = {false, -1};
    }
    if (decided.works) {
        memcpy(text, stored->second.c_str(), std::min<size_t>(stored->second.size() + 1, REGISTER_TEXT_SIZE));
    }
    return decided.result;
}

int GetDisplayManagementInfo(ManagementInfo *info)
{
    return fillRecord(step("GetDisplayManagementInfo", ""), info, seam.management);
}

int GetImageAdjustmentInfo(ImageAdjustment *info)
{
    return fillRecord(step("GetImageAdjustmentInfo", ""), info, seam.imageAdjustment);
}

int GetPIPSettingsInfo(PexalPIPSettings *info)
{
    return fillRecord(step("GetPIPSettingsInfo", ""), info, seam.pip);
}

int GetOSDMenuAndMessagesInfo(OSDMenuAndMessageInfo *info)
{
    return fillRecord(step("GetOSDMenuAndMessagesInfo", ""), info, seam.osd);
}

int GetColorSpaceInfoById(ColorSpaceInfo *info, int index)
{
    Step decided = step("GetColorSpaceInfoById", numbers({index}));
    const bool known = index >= 0 && index < 7;
    EXPECT_TRUE(known) << "there is no colour space " << index;
    if (!known) {
        decided = {false, -1};
    }
    return fillRecord(decided, info, seam.colorSpaces[known ? index : 0]);
}

int GetBezelButtonInfo(BezelButtonInfo *info)
{
    return fillRecord(step("GetBezelButtonInfo", ""), info, seam.bezel);
}

int GetFunctionButtonInfoById(FunctionButtonInfo *info, int index)
{
    Step decided = step("GetFunctionButtonInfoById", numbers({index}));
    const bool known = index >= 0 && index < 4;
    EXPECT_TRUE(known) << "there is no function button " << index;
    if (!known) {
        decided = {false, -1};
    }
    return fillRecord(decided, info, seam.functionButtons[known ? index : 0]);
}

int GetTestPatternInfo(TestPatternInfo *info)
{
    return fillRecord(step("GetTestPatternInfo", ""), info, seam.testPattern);
}

int GetRemoteManagementServerInfo(RemoteManagementServer *info)
{
    return fillRecord(step("GetRemoteManagementServerInfo", ""), info, seam.remote);
}

int GetIPAddress(char *address)
{
    const Step decided = indifferentStep("GetIPAddress", "");
    if (decided.works) {
        memcpy(address, seam.ipAddress.c_str(), std::min<size_t>(seam.ipAddress.size() + 1, IP_ADDRESS_SIZE));
    }
    return decided.result;
}

int ParseIPV4Address(const char *text, unsigned char octets[4])
{
    const Step decided = indifferentStep("ParseIPV4Address", text);
    unsigned parsed[4] = {};
    char end;
    if (decided.works &&
        sscanf(text, "%u.%u.%u.%u%c", &parsed[0], &parsed[1], &parsed[2], &parsed[3], &end) != 4) {
        return -1;
    }
    for (std::size_t i = 0; i < 4; ++i) {
        octets[i] = decided.works ? static_cast<unsigned char>(parsed[i]) : seam.octetsOfRefused[i];
    }
    return decided.result;
}

int ValidateInputArgs(int value, int min, int max)
{
    const Step decided = step("ValidateInputArgs", numbers({value, min, max}));
    if (!decided.works) {
        return decided.result;
    }
    return min <= value && value <= max ? 0 : -1;
}

int IsAdminUser(const char *userName, char *isAdmin, char *errorText)
{
    seam.errorTextBefore.push_back(errorText);
    seam.printedBefore.push_back(traceText());
    Step decided = step("IsAdminUser", userName);
    const bool administrator = seam.administrators.contains(userName);
    if (!administrator && !seam.users.contains(userName)) {
        decided = {false, decided.result ? decided.result : -1};
    }
    if (decided.works) {
        *isAdmin = administrator ? seam.isAdministrator : '\0';
    } else {
        writeErrorText(errorText);
    }
    return decided.result;
}

int ValidateDisplayName(const char *text)
{
    return step("ValidateDisplayName", text).result;
}

int UpdateDisplayName(const char *text, char *errorText)
{
    return storeText("UpdateDisplayName", text, errorText);
}

int ValidateDeploymentDate(const char *text)
{
    return step("ValidateDeploymentDate", text).result;
}

int UpdateDeploymentDate(const char *text, char *errorText)
{
    return storeText("UpdateDeploymentDate", text, errorText);
}

int UpdateDeploymentLocation(const char *text, char *errorText)
{
    return storeText("UpdateDeploymentLocation", text, errorText);
}

int runcommand(const char *command, char **input, char ***out, char ***err);
void freeresultbuf(char **lines);

int runcommand(const char *command, char **input, char ***out, char ***err)
{
    EXPECT_EQ(input, nullptr) << "no command of the library reads an input";
    seam.captured.push_back({out != nullptr, err != nullptr});
    const Step decided = step("runcommand", command, 127);
    if (out) {
        *out = nullptr;
    }
    if (err) {
        *err = nullptr;
    }
    const auto known = seam.commands.find(command);
    if (!decided.works || known == seam.commands.end()) {
        return decided.result ? decided.result : 127;
    }
    const CommandScript &script = known->second;
    if (out && !script.noOutput) {
        *out = lineList(script.output);
    }
    if (err && !script.errors.empty()) {
        *err = lineList(script.errors);
    }
    return script.status;
}

void freeresultbuf(char **lines)
{
    indifferentStep("freeresultbuf", "");
    if (!lines) {
        return;
    }
    for (char **line = lines; *line; ++line) {
        free(*line);
    }
    free(lines);
    --seam.unfreedLines;
}

} // extern "C"
