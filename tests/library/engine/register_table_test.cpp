// SPDX-License-Identifier: Apache-2.0
// The range of every register that can be written through the channel, and the texts of refused values.

#include "checks.h"
#include "engine/exchange.h"
#include "engine/register_batch.h"
#include <climits>
#include <set>

namespace
{

constexpr const char *noText = " "; // the caller's buffer is left as it was

struct Row {
    int id;
    int min;
    int max;
    const char *text;
};

constexpr const char *trueOrFalse = "Invalid Value. Valid values are true or false.";
constexpr const char *notify = "Invalid NotifyWhenReCalibrationIsDue Value. Valid values are true or false.";
constexpr const char *buttonSetting = "Invalid Setting Value. Valid values are between 1 and 17.";

// BEZEL_BUTTON_BRIGHTNESS (121) has a test of its own below.
constexpr Row rows[] = {
    {0, 48, 250, "Invalid DisplayLuminance value. Valid values are between 48 and 250."},
    {1, 0, 6, noText},
    {25, 0, 2, noText},
    {26, 0, 1, noText},
    {30, 0, 4, "Invalid DisplayAspectRatio value. Valid values are between 0 and 4."},
    {31, 0, 2, "Invalid DCIImageRegion value. Valid values are between 0 and 2."},
    {32, 0, 2, noText},
    {33, 0, 1, noText},
    {35, 0, 1, noText},
    {36, 0, 1, noText},
    {37, 0, 1, noText},
    {38, 0, 1, noText},
    {39, 0, 1, noText},
    {40, 0, 1, noText},
    {50, 0, 2, "Invalid PIPMode. Valid values are between 0 and 2."},
    {51, 0, 4, noText},
    {54, 0, 2, "Invalid PIPSize Value. Valid values are 0 and 2."},
    {55, 160, 1080, noText},
    {57, 0, 2, "Invalid PIPInputSource Value. Valid values are 0 and 2."},
    {58, 0, 1, noText},
    {59, 0, 1, noText},
    {60, 0, 1, noText},
    {61, 0, 2, noText},
    {62, 0, 1, noText},
    {70, 0, 1, trueOrFalse},
    {71, 0, 1, trueOrFalse},
    {72, 0, 1, trueOrFalse},
    {73, 0, 1, trueOrFalse},
    {74, 0, 1, trueOrFalse},
    {76, 0, 3, noText},
    {77, 0, 1, "Invalid CalibrationEnabled Value. Valid values are true or false (or) 0 and 1."},
    {85, 0, 1, "Invalid EnabledState Value. Valid values are 0 and 1."},
    {86, 0, 1, noText},
    {87, 0, 4, noText},
    {88, 0, 4, noText},
    {89, 0, 4, noText},
    {90, 0, 6, noText},
    {91, 0, 1, "Invalid EnabledState Value. Valid values are between 0 and 1."},
    {92, 0, 1, noText},
    {93, 0, 1, noText},
    {94, 0, 1, noText},
    {100, 0, 1, notify},
    {101, 0, 1, notify},
    {102, 0, 1, notify},
    {103, 0, 1, notify},
    {104, 0, 1, notify},
    {105, 0, 2560, "Invalid Value of OSDPositionX. Valid values are between 0 and 2560."},
    {106, 0, 1440, "Invalid Value of OSDPositionY. Valid values are between 0 and 1440."},
    {107, 5, 30, "Invalid MenuAndMessageTimeOut Value. Valid values are between 5 and 30."},
    {108, 2500, 10000, "Invalid Opacity Value. Valid values are between 25 and 100."},
    {109, 0, 9, "Invalid Language Value. Valid values are between 0 and 9."},
    {115, 1, 17, buttonSetting},
    {116, 1, 17, buttonSetting},
    {117, 1, 17, buttonSetting},
    {118, 1, 17, buttonSetting},
    {119, 0, 1, "Invalid ButtonMode Value. Valid values are 0 and 1."},
    {120, 0, 2, "Invalid Button Color Value. valid values are between 0 and 2."},
    {122, 0, 1, "Invalid Button Autofade Value. Valid values are 0 and 1."},
};

constexpr int brightness = 121;
constexpr const char *brightnessRange = "Invalid Button Brightness Value. Valid values are between 0 and 20.";
constexpr const char *brightnessOdd =
    "Invalid Button Brightness Value. Valid values are between 0,2,4,6,8,10,12,14 upto 20.";

SetterAnswer validate(int id, int value)
{
    return call([&](char *errorText) { return ValidateRegisterValue(id, value, errorText); });
}

void expectAccepted(int id, int value)
{
    const SetterAnswer answer = validate(id, value);
    EXPECT_EQ(answer.result, 0) << "register " << id << ", value " << value;
    EXPECT_EQ(answer.errorText, " ") << "register " << id << ", value " << value;
}

void expectRefused(int id, int value, const char *text)
{
    const SetterAnswer answer = validate(id, value);
    EXPECT_EQ(answer.result, -1) << "register " << id << ", value " << value;
    EXPECT_EQ(answer.errorText, text) << "register " << id << ", value " << value;
}

} // namespace

TEST(RegisterTable, AcceptsBothEndsOfEveryRange)
{
    for (const Row &row : rows) {
        expectAccepted(row.id, row.min);
        expectAccepted(row.id, row.min + 1);
        expectAccepted(row.id, row.max - 1);
        expectAccepted(row.id, row.max);
    }
}

TEST(RegisterTable, RefusesBeyondEitherEndWithTheText)
{
    for (const Row &row : rows) {
        for (const int value : {row.min - 1, row.max + 1, -1, INT_MAX, INT_MIN, 65536 + row.min, 32767}) {
            expectRefused(row.id, value, row.text);
        }
    }
}

TEST(RegisterTable, AsksTheSupportLibraryWithTheBounds)
{
    for (const Row &row : rows) {
        const SetterAnswer answer = validate(row.id, row.min);
        EXPECT_CALLS(answer, {"ValidateInputArgs(" + std::to_string(row.min) + ", " +
                              std::to_string(row.min) + ", " + std::to_string(row.max) + ")"});
    }
    EXPECT_CALLS(validate(brightness, 4), {"ValidateInputArgs(4, 0, 20)"});
}

TEST(RegisterTable, RefusesWhateverTheRangeCheckRefuses)
{
    for (const int result : {-1, 1, 80000011}) {
        seam.returns("ValidateInputArgs", result);
        for (const Row &row : rows) {
            expectRefused(row.id, row.min, row.text);
        }
        expectRefused(brightness, 4, brightnessRange);
        expectRefused(brightness, 5, brightnessOdd);
    }
}

TEST(RegisterTable, RefusesEveryOtherIdentifierWithoutAText)
{
    std::set<int> listed = {brightness};
    for (const Row &row : rows) {
        listed.insert(row.id);
    }
    std::vector<int> others = {-1,  -2,    -128,       -256,    256,     256 + 26,
                               257, 65536, 65536 + 26, INT_MAX, INT_MIN, INT_MIN + 26};
    for (int id = 0; id <= 255; ++id) {
        if (!listed.contains(id)) {
            others.push_back(id);
        }
    }
    for (const int id : others) {
        for (const int value : {0, 1, 2, 50, 200, 2500, -1, INT_MAX, INT_MIN}) {
            const SetterAnswer answer = validate(id, value);
            EXPECT_EQ(answer.result, -1) << "register " << id << ", value " << value;
            EXPECT_EQ(answer.errorText, " ") << "register " << id << ", value " << value;
            EXPECT_CALLS(answer, {});
        }
    }
}

TEST(RegisterTable, PositionOfTheInsetCannotBeWritten)
{
    for (const int value : {0, 1, 160, 480, -1, INT_MAX, INT_MIN}) {
        expectRefused(PIP_POSITION_X, value, noText);
        expectRefused(PIP_POSITION_Y, value, noText);
    }
}

TEST(RegisterTable, IdentifiersFrom123OnAreRefused)
{
    for (int id = 123; id <= 400; ++id) {
        expectRefused(id, 0, noText);
        expectRefused(id, 1, noText);
    }
    expectRefused(SOFT_POWER_OFF, 1, noText);
    expectRefused(CALIBRATION_ALERT_LIMIT, 500, noText);
    expectRefused(INFO_DISPLAY_MODE, 0, noText);
}

TEST(RegisterTable, BezelBrightnessIsEven)
{
    for (int value = 0; value <= 20; value += 2) {
        expectAccepted(brightness, value);
    }
    for (int value = 1; value <= 19; value += 2) {
        expectRefused(brightness, value, brightnessOdd);
    }
    // Out of range and odd: the text about odd values replaces the other.
    for (const int value : {21, -1, 23, -3, INT_MAX, INT_MIN + 1}) {
        expectRefused(brightness, value, brightnessOdd);
    }
    for (const int value : {22, -2, 24, 1000, INT_MIN, INT_MAX - 1}) {
        expectRefused(brightness, value, brightnessRange);
    }
}

TEST(RegisterTable, LuminanceAndMenuTimeOut)
{
    expectRefused(LUMINANCE, 47, "Invalid DisplayLuminance value. Valid values are between 48 and 250.");
    expectAccepted(LUMINANCE, 48);
    expectAccepted(LUMINANCE, 250);
    expectRefused(LUMINANCE, 251, "Invalid DisplayLuminance value. Valid values are between 48 and 250.");
    expectRefused(MENU_TIMEOUT, 4, "Invalid MenuAndMessageTimeOut Value. Valid values are between 5 and 30.");
    expectAccepted(MENU_TIMEOUT, 5);
}

TEST(RegisterTable, OpacityIsOnlyRangedHere)
{
    // The rule of 6.25 % steps is the channel's.
    expectAccepted(OPACITY_VALUE, 3000);
    expectAccepted(OPACITY_VALUE, 2501);
}

TEST(RegisterTable, WritesAtMostItsTextIntoTheBuffer)
{
    std::vector<char> buffer(ERROR_TEXT_SIZE, 'x');
    EXPECT_EQ(ValidateRegisterValue(LUMINANCE, 0, buffer.data()), -1);
    EXPECT_STREQ(buffer.data(), "Invalid DisplayLuminance value. Valid values are between 48 and 250.");

    buffer.assign(ERROR_TEXT_SIZE, 'x');
    EXPECT_EQ(ValidateRegisterValue(ACTIVE_COLORSPACE, 7, buffer.data()), -1);
    EXPECT_EQ(ValidateRegisterValue(SOFT_POWER_OFF, 0, buffer.data()), -1);
    EXPECT_EQ(ValidateRegisterValue(LUMINANCE, 100, buffer.data()), 0);
    EXPECT_EQ(std::string(buffer.begin(), buffer.end()), std::string(ERROR_TEXT_SIZE, 'x'));
}

TEST(RegisterTable, Traces)
{
    const std::string lines = "------------- Enter ValidateRegisterValue()\n"
                              "------------- Leave ValidateRegisterValue()\n";
    EXPECT_EQ(validate(LUMINANCE, 100).trace, lines);
    EXPECT_EQ(validate(LUMINANCE, 0).trace, lines);
    EXPECT_EQ(validate(PIP_POSITION_X, 0).trace, lines);
    EXPECT_EQ(validate(SOFT_POWER_OFF, 0).trace, lines);
    EXPECT_EQ(validate(-1, 0).trace, lines);
}
