// SPDX-License-Identifier: Apache-2.0
// The message channel to the display engine: batches of register writes and requests for a group.

#include "checks.h"
#include "display/modules.h"
#include "engine/exchange.h"
#include "engine/register_batch.h"
#include <climits>
#include <memory>

using namespace engine;

namespace
{

struct Write {
    int id;
    int value;
};

/** A batch, its arrays exactly as long as it has rows. */
SetterAnswer writeBatch(const std::vector<Write> &rows, int group)
{
    const auto ids = std::make_unique<int[]>(rows.size());
    const auto values = std::make_unique<int[]>(rows.size());
    for (size_t i = 0; i < rows.size(); ++i) {
        ids[i] = rows[i].id;
        values[i] = rows[i].value;
    }
    return call([&](char *errorText) {
        return InvokeMethod_Spear(ids.get(), values.get(), group, static_cast<int>(rows.size()), errorText);
    });
}

SetterAnswer request(int group)
{
    return call([&](char *errorText) { return InvokeGetMethod_Spear(group, errorText); });
}

void expectRefused(const SetterAnswer &answer, const std::string &text)
{
    EXPECT_EQ(answer.result, -1);
    EXPECT_EQ(answer.errorText, text);
}

constexpr const char *opacityText =
    "Invalid Opacity Value. valid opacity values are 25, 31.25, 37.50, 43.75, 50, 56.25, "
    "62.50, 68.75, 81.25, 87.50, 93.75, 100";

const std::vector<std::string> sendCalls = {"SpearEngineMessageQueueCreate(0)",
                                            "SendStatusMessagetoSource(100)",
                                            "SpearEngineMessageQueueCreate(3)", "RecvMessageFromSource(103)"};

} // namespace

// ---- writing a batch ----

TEST(Channel, OneRegister)
{
    const SetterAnswer answer = writeBatch({{LUMINANCE, 120}}, COLOR_SPACE_ID);
    EXPECT_EQ(answer.result, 0);
    EXPECT_EQ(answer.errorText, " ");
    EXPECT_SENT(answer, {"01 00 00 00  03 00  07 00  00 01 00  00 00 00 78 00 00 00  00 00 00 00 00 00 00"
                         "  00 00 00 00 00 00 00  00 00 00 00 00 00 00  00"});
    EXPECT_CALLS(answer, {"GetMonitorStatus(0)", "ValidateInputArgs(120, 48, 250)",
                          "SpearEngineMessageQueueCreate(0)", "SendStatusMessagetoSource(100)",
                          "SpearEngineMessageQueueCreate(3)", "RecvMessageFromSource(103)"});
    EXPECT_EQ(seam.queueIdBefore.at(1), -1)
        << "the identifier is set back before the reply queue is asked for";
    ASSERT_EQ(seam.received.size(), 1u);
    EXPECT_EQ(seam.received[0].queueId, 103);
    EXPECT_EQ(hex(seam.received[0].bytes), hex({})) << "the reply's record is empty before the receive";
}

TEST(Channel, FourRegisters)
{
    const SetterAnswer answer =
        writeBatch({{OSD_POSITION_X, 2560}, {OSD_POSITION_Y, 1440}, {MENU_TIMEOUT, 30}, {MENU_LANGUAGE, 9}},
                   MENU_SETTINGS_ID);
    EXPECT_EQ(answer.result, 0);
    EXPECT_SENT(answer, {"01 00 00 00  03 00  07 00  00 04 06  00 69 00 00 0A 00 00  00 6A 00 A0 05 00 00"
                         "  00 6B 00 1E 00 00 00  00 6D 00 09 00 00 00  00"});
}

TEST(Channel, EmptyBatchIsStillSent)
{
    const SetterAnswer answer = writeBatch({}, GENERAL_COMMANDS_ID);
    EXPECT_EQ(answer.result, 0);
    EXPECT_SENT(answer, {"01 00 00 00  03 00  07 00  00 00 10  ..."});
    EXPECT_CALLS(answer,
                 {"GetMonitorStatus(0)", "SpearEngineMessageQueueCreate(0)", "SendStatusMessagetoSource(100)",
                  "SpearEngineMessageQueueCreate(3)", "RecvMessageFromSource(103)"});
}

TEST(Channel, NegativeRowsArePassedOverAndKeepTheirPlace)
{
    const SetterAnswer answer = writeBatch({{-1, 5}, {AUTO_SWITCH_STATUS, 1}}, VIDEO_INPUT_ID);
    EXPECT_EQ(answer.result, 0);
    EXPECT_SENT(answer,
                {"01 00 00 00  03 00  07 00  00 01 01  00 00 00 00 00 00 00  00 1A 00 01 00 00 00  ..."});
    EXPECT_CALLS(answer, {"GetMonitorStatus(0)", "ValidateInputArgs(1, 0, 1)",
                          "SpearEngineMessageQueueCreate(0)", "SendStatusMessagetoSource(100)",
                          "SpearEngineMessageQueueCreate(3)", "RecvMessageFromSource(103)"});

    const SetterAnswer last =
        writeBatch({{INT_MIN, 0}, {-7, 7}, {-1, 1}, {AUTO_SWITCH_STATUS, 1}}, VIDEO_INPUT_ID);
    EXPECT_SENT(last, {"01 00 00 00  03 00  07 00  00 01 01  00 00 00 00 00 00 00  00 00 00 00 00 00 00"
                       "  00 00 00 00 00 00 00  00 1A 00 01 00 00 00  00"});

    const SetterAnswer none = writeBatch({{-1, 5}, {-1, 6}}, VIDEO_INPUT_ID);
    EXPECT_EQ(none.result, 0);
    EXPECT_SENT(none, {"01 00 00 00  03 00  07 00  00 00 01  ..."});
}

TEST(Channel, GroupTravelsInItsLowByte)
{
    EXPECT_SENT(writeBatch({}, 0x10A), {"01 00 00 00  03 00  07 00  00 00 0A  ..."});
    EXPECT_SENT(writeBatch({}, -1), {"01 00 00 00  03 00  07 00  00 00 FF  ..."});
    EXPECT_SENT(request(0x103), {"01 00 00 00  08 00  07 00  00 00 03  ..."});
}

TEST(Channel, TheRangeIsThatOfTheWholeValueAndTheLow16BitsTravel)
{
    // 65636 and -65436 have the low 16 bits of 100, which is a luminance.
    for (const int value : {65636, -65436, 0x7FFF0064}) {
        const SetterAnswer answer = writeBatch({{LUMINANCE, value}}, COLOR_SPACE_ID);
        expectRefused(answer, "Invalid DisplayLuminance value. Valid values are between 48 and 250.");
        EXPECT_SENT(answer, {});
    }
    const auto sends = [](int value, const char *golden) {
        SCOPED_TRACE(value);
        EXPECT_SENT(call([=](char *text) {
                        return sendSetting(COLOR_SPACE_ID, {{LUMINANCE, value}}, {"No reply."}, text);
                    }),
                    {golden});
    };
    sends(65636, "01 00 00 00  03 00  07 00  00 01 00  00 00 00 64 00 ...");
    sends(0x12345678, "01 00 00 00  03 00  07 00  00 01 00  00 00 00 78 56 ...");
    sends(-1, "01 00 00 00  03 00  07 00  00 01 00  00 00 00 FF FF ...");
}

TEST(Channel, OpacityGoesInStepsOf625)
{
    for (const int value : {2500, 3125, 3750, 4375, 5000, 5625, 6250, 6875, 7500, 8125, 8750, 9375, 10000}) {
        const SetterAnswer answer = writeBatch({{OPACITY_VALUE, value}}, MENU_SETTINGS_ID);
        EXPECT_EQ(answer.result, 0) << value;
        EXPECT_EQ(answer.sent.size(), 1u) << value;
    }
    EXPECT_SENT(writeBatch({{OPACITY_VALUE, 7500}}, MENU_SETTINGS_ID),
                {"01 00 00 00  03 00  07 00  00 01 06  00 6C 00 4C 1D 00 00  ..."});
    for (const int value : {2501, 3000, 4000, 7499, 9999}) {
        const SetterAnswer answer = writeBatch({{OPACITY_VALUE, value}}, MENU_SETTINGS_ID);
        expectRefused(answer, opacityText);
        EXPECT_SENT(answer, {});
    }
    for (const int value : {2499, 10001, 0, 625, 10625}) {
        expectRefused(writeBatch({{OPACITY_VALUE, value}}, MENU_SETTINGS_ID),
                      "Invalid Opacity Value. Valid values are between 25 and 100.");
    }
}

TEST(Channel, RefusedValueSendsNothing)
{
    const SetterAnswer answer = writeBatch({{LUMINANCE, 251}}, COLOR_SPACE_ID);
    expectRefused(answer, "Invalid DisplayLuminance value. Valid values are between 48 and 250.");
    EXPECT_CALLS(answer, {"GetMonitorStatus(0)", "ValidateInputArgs(251, 48, 250)"});

    // A register without a text of its own leaves a single blank.
    expectRefused(writeBatch({{ACTIVE_COLORSPACE, 7}}, COLOR_SPACE_ID), " ");
    expectRefused(writeBatch({{PIP_POSITION_X, 200}}, PIP_INFO_ID), " ");
    expectRefused(writeBatch({{SOFT_POWER_OFF, 1}}, GENERAL_COMMANDS_ID), " ");
    expectRefused(writeBatch({{256, 0}}, GENERAL_COMMANDS_ID), " ");
}

TEST(Channel, FirstRefusedRowEndsTheBatch)
{
    const SetterAnswer answer =
        writeBatch({{MENU_TIMEOUT, 30}, {MENU_LANGUAGE, 10}, {OSD_POSITION_X, 9999}}, MENU_SETTINGS_ID);
    expectRefused(answer, "Invalid Language Value. Valid values are between 0 and 9.");
    EXPECT_CALLS(answer,
                 {"GetMonitorStatus(0)", "ValidateInputArgs(30, 5, 30)", "ValidateInputArgs(10, 0, 9)"});
    EXPECT_SENT(answer, {});
}

TEST(Channel, RefusedTextReplacesWhatTheBufferHeld)
{
    std::vector<char> buffer(ERROR_TEXT_SIZE, 'x');
    buffer.back() = '\0';
    const int ids[] = {ACTIVE_COLORSPACE};
    const int values[] = {7};
    EXPECT_EQ(InvokeMethod_Spear(ids, values, COLOR_SPACE_ID, 1, buffer.data()), -1);
    EXPECT_STREQ(buffer.data(), " ");
}

TEST(Channel, MoreRowsThanAMessageHolds)
{
    // Nothing is written beside the message, and nothing is sent that leaves a row out.
    const SetterAnswer answer = writeBatch({{DP1_STATE - 40, 0},
                                            {AUTO_SWITCH_STATUS, 1},
                                            {AUTO_SWITCH_STATUS, 1},
                                            {AUTO_SWITCH_STATUS, 1},
                                            {AUTO_SWITCH_STATUS, 1}},
                                           VIDEO_INPUT_ID);
    EXPECT_EQ(answer.result, -1);
    EXPECT_SENT(answer, {});
}

TEST(Channel, BusyEngineIsNotWrittenTo)
{
    seam.status = BUSY;
    const SetterAnswer answer = writeBatch({{LUMINANCE, 9999}}, COLOR_SPACE_ID);
    expectRefused(answer, "Device is Busy. Please try after some time.");
    EXPECT_CALLS(answer, {"GetMonitorStatus(0)"});
}

TEST(Channel, AnyStatusButBusyIsFree)
{
    for (const int status : {0, 2, -1, 256 + 1, 80000000}) {
        seam.status = status;
        EXPECT_EQ(writeBatch({{LUMINANCE, 120}}, COLOR_SPACE_ID).result, 0) << status;
        EXPECT_EQ(request(COLOR_SPACE_ID).result, 0) << status;
    }
}

TEST(Channel, EveryStepOfAWriteCanFail)
{
    checkSender(
        [](char *errorText) { return InvokeMethod_Spear(nullptr, nullptr, MENU_SETTINGS_ID, 0, errorText); },
        "01 00 00 00  03 00  07 00  00 00 06  ...", {.reply = "Failed to receive message."});
}

TEST(Channel, TracesOfAWrite)
{
    EXPECT_EQ(writeBatch({{-1, 5}, {OPACITY_VALUE, 2500}}, MENU_SETTINGS_ID).trace,
              "------------- Enter InvokeMethod_Spear()\n"
              "------------- count :2 \n"
              "------------- registerIds[rowIndx] :108 ---- registerValues[rowIndx]:2500 \n"
              "------------- Enter ValidateRegisterValue()\n"
              "------------- Leave ValidateRegisterValue()\n"
              "------  registerValues =2500\n"
              "-------------regCount:1 \n"
              "------------- Leave InvokeMethod_Spear()\n");
    EXPECT_EQ(writeBatch({{OPACITY_VALUE, 3000}}, MENU_SETTINGS_ID).trace,
              "------------- Enter InvokeMethod_Spear()\n"
              "------------- count :1 \n"
              "------------- registerIds[rowIndx] :108 ---- registerValues[rowIndx]:3000 \n"
              "------------- Enter ValidateRegisterValue()\n"
              "------------- Leave ValidateRegisterValue()\n"
              "------  registerValues =3000\n"
              "-------------regCount:0 \n");
    seam.status = BUSY;
    EXPECT_EQ(writeBatch({{LUMINANCE, 120}}, COLOR_SPACE_ID).trace,
              "------------- Enter InvokeMethod_Spear()\n"
              "------------- count :1 \n");
}

TEST(Channel, AWriteThatFailsDoesNotLeave)
{
    const std::pair<const char *, int> steps[] = {{"SpearEngineMessageQueueCreate", 1},
                                                  {"SendStatusMessagetoSource", 1},
                                                  {"SpearEngineMessageQueueCreate", 2},
                                                  {"RecvMessageFromSource", 1}};
    for (const auto &[function, nth] : steps) {
        SCOPED_TRACE(std::string(function) + " call " + std::to_string(nth));
        seam.reset();
        seam.returnsAt(function, nth, -1);
        const SetterAnswer answer = writeBatch({{LUMINANCE, 120}}, COLOR_SPACE_ID);
        EXPECT_EQ(answer.result, -1);
        EXPECT_EQ(answer.trace, "------------- Enter InvokeMethod_Spear()\n"
                                "------------- count :1 \n"
                                "------------- registerIds[rowIndx] :0 ---- registerValues[rowIndx]:120 \n"
                                "------------- Enter ValidateRegisterValue()\n"
                                "------------- Leave ValidateRegisterValue()\n"
                                "-------------regCount:1 \n");
    }
}

// ---- asking for a group ----

TEST(Channel, GroupRequest)
{
    const SetterAnswer answer = request(IMAGE_ADJ_SETTINGS_ID);
    EXPECT_EQ(answer.result, 0);
    EXPECT_EQ(answer.errorText, " ");
    EXPECT_SENT(answer, {"01 00 00 00  08 00  07 00  00 00 02  00 00 00 00 00 00 00  00 00 00 00 00 00 00"
                         "  00 00 00 00 00 00 00  00 00 00 00 00 00 00  00"});
    std::vector<std::string> calls = {"GetMonitorStatus(0)"};
    calls.insert(calls.end(), sendCalls.begin(), sendCalls.end());
    EXPECT_EQ(answer.calls, calls);
    EXPECT_EQ(answer.trace, "");
}

TEST(Channel, RequestOfEveryGroup)
{
    for (int group = COLOR_SPACE_ID; group <= GENERAL_COMMANDS_ID; ++group) {
        char golden[80];
        snprintf(golden, sizeof golden, "01 00 00 00  08 00  07 00  00 00 %02X  ...",
                 static_cast<unsigned>(group));
        EXPECT_SENT(request(group), {golden});
    }
}

TEST(Channel, EveryStepOfARequestCanFail)
{
    checkSender([](char *errorText) { return InvokeGetMethod_Spear(PEXAL_INFO_ID, errorText); },
                "01 00 00 00  08 00  07 00  00 00 09  ...",
                {.reply = "Failed to read the value from spear.",
                 .busy = "Device is Busy. Please try after some time.."});
}

TEST(Channel, BusyTextsOfWriteAndRequestDiffer)
{
    seam.status = BUSY;
    expectRefused(writeBatch({}, PEXAL_INFO_ID), "Device is Busy. Please try after some time.");
    const SetterAnswer answer = request(PEXAL_INFO_ID);
    expectRefused(answer, "Device is Busy. Please try after some time..");
    EXPECT_CALLS(answer, {"GetMonitorStatus(0)"});
    EXPECT_EQ(answer.trace, "");
}

// ---- numbers and texts ----

TEST(Channel, NumbersSaturate)
{
    EXPECT_EQ(decimalValue("0"), 0);
    EXPECT_EQ(decimalValue("-7x"), -7);
    EXPECT_EQ(decimalValue("x"), 0);
    EXPECT_EQ(decimalValue(""), 0);
    EXPECT_EQ(decimalValue(" 12 "), 12);
    EXPECT_EQ(decimalValue("2147483647"), INT_MAX);
    EXPECT_EQ(decimalValue("2147483648"), INT_MAX);
    EXPECT_EQ(decimalValue("4294967296"), INT_MAX);
    EXPECT_EQ(decimalValue("99999999999999999999999"), INT_MAX);
    EXPECT_EQ(decimalValue("-2147483648"), INT_MIN);
    EXPECT_EQ(decimalValue("-2147483649"), INT_MIN);
    EXPECT_EQ(decimalValue("-99999999999999999999999"), INT_MIN);
}

TEST(Channel, WhollyDecimalTexts)
{
    for (const char *text : {"0", "9", "-1", "+1", " 12", "007", "4294967296", "99999999999999999999999"}) {
        EXPECT_TRUE(isDecimal(text)) << text;
    }
    for (const char *text : {" ", "1 ", "1x", "x", "0x1F", "1f", "1.0", "-", "--1", "1\n"}) {
        EXPECT_FALSE(isDecimal(text)) << text;
    }
}

TEST(Channel, CopiedTextsFitTheirBuffer)
{
    std::vector<char> buffer(5, 'x');
    copyText(buffer.data(), 5, "abcdefgh");
    EXPECT_STREQ(buffer.data(), "abcd");
    copyText(buffer.data(), 5, "ab");
    EXPECT_STREQ(buffer.data(), "ab");
    copyText(buffer.data(), 1, "ab");
    EXPECT_STREQ(buffer.data(), "");
    copyText(buffer.data(), 5, "abcd");
    EXPECT_STREQ(buffer.data(), "abcd");
}
