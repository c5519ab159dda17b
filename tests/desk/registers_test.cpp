// SPDX-License-Identifier: Apache-2.0
// GetRegisterValue: every register in its group.
#include "desk_fixture.h"

#include <monitor_support.h>

#include <cstring>

namespace
{

struct FactoryValue {
    int registerId;
    int group;
    const char *text;
};

/* All 131 registers with what a new monitor stores in them. */
constexpr FactoryValue factoryValues[] = {
    {0, 0, "250"},
    {1, 0, "0"},
    {2, 0, "0.6900"},
    {3, 0, "0.3000"},
    {4, 0, "0.5287"},
    {5, 0, "0.5172"},
    {6, 0, "0.2050"},
    {7, 0, "0.7150"},
    {8, 0, "0.0734"},
    {9, 0, "0.5761"},
    {10, 0, "0.1490"},
    {11, 0, "0.0450"},
    {12, 0, "0.1838"},
    {13, 0, "0.1249"},
    {14, 0, "0.3127"},
    {15, 0, "0.3290"},
    {16, 0, "0.1978"},
    {17, 0, "0.4683"},
    {18, 0, "2.20"},
    {19, 0, "0"},
    {20, 0, "1"},
    {25, 1, "0"},
    {26, 1, "0"},
    {30, 2, "0"},
    {31, 2, "0"},
    {32, 2, "0"},
    {33, 2, "0"},
    {34, 2, "50"},
    {35, 2, "0"},
    {36, 2, "0"},
    {37, 2, "0"},
    {38, 2, "0"},
    {39, 2, "1"},
    {40, 2, "1"},
    {41, 2, "2160"},
    {42, 2, "3840"},
    {43, 2, "0"},
    {44, 2, "0"},
    {45, 2, "0"},
    {50, 3, "0"},
    {51, 3, "2"},
    {52, 3, "1688"},
    {53, 3, "880"},
    {54, 3, "2"},
    {55, 3, "400"},
    {56, 3, "712"},
    {57, 3, "1"},
    {58, 3, "0"},
    {59, 3, "0"},
    {60, 3, "0"},
    {61, 3, "0"},
    {62, 3, "0"},
    {63, 3, "0"},
    {64, 3, "2160"},
    {65, 3, "4096"},
    {66, 3, "1"},
    {67, 3, "1"},
    {68, 3, "0"},
    {70, 5, "1"},
    {71, 5, "1"},
    {72, 5, "1"},
    {73, 5, "1"},
    {74, 5, "0"},
    {75, 5, "1"},
    {76, 5, "1"},
    {77, 5, "1"},
    {78, 5, "1"},
    {79, 5, "0"},
    {85, 4, "1"},
    {86, 4, "1"},
    {87, 4, "192.168.10.20"},
    {88, 4, "255.255.255.0"},
    {89, 4, "192.168.10.1"},
    {90, 4, "02005E10A64C"},
    {91, 4, "1"},
    {92, 4, "1"},
    {93, 4, "1"},
    {94, 4, "0"},
    {100, 6, "1"},
    {101, 6, "1"},
    {102, 6, "1"},
    {103, 6, "1"},
    {104, 6, "1"},
    {105, 6, "1920"},
    {106, 6, "120"},
    {107, 6, "15"},
    {108, 6, "10000"},
    {109, 6, "1"},
    {110, 6, "0"},
    {115, 7, "1"},
    {116, 7, "2"},
    {117, 7, "3"},
    {118, 7, "4"},
    {119, 7, "0"},
    {120, 8, "0"},
    {121, 8, "10"},
    {122, 8, "1"},
    {130, 9, "Single"},
    {131, 9, "0"},
    {132, 9, "24"},
    {133, 9, "DSK2840017"},
    {134, 9, "312"},
    {135, 9, "1460"},
    {136, 9, "1.4.2"},
    {140, 11, "0"},
    {141, 11, "0"},
    {142, 11, "0"},
    {143, 11, "0"},
    {144, 11, "0"},
    {150, 13, "0"},
    {151, 13, "0"},
    {152, 13, "0"},
    {153, 13, "0"},
    {154, 13, "0"},
    {155, 13, "0"},
    {156, 13, "0"},
    {157, 13, "0"},
    {158, 13, "0"},
    {159, 13, "2"},
    {165, 16, "0"},
    {166, 16, "0"},
    {170, 15, "0"},
    {171, 15, "0"},
    {172, 15, "255"},
    {173, 15, "255"},
    {174, 15, "255"},
    {175, 15, "0"},
    {180, 16, "0"},
    {181, 16, "1"},
    {182, 16, "0"},
    {183, 16, "1000"},
};

class Registers : public DeskTest
{
};

TEST_F(Registers, ReadTheirFactoryValues)
{
    EXPECT_EQ(std::size(factoryValues), 131u);
    for (const FactoryValue &value : factoryValues) {
        EXPECT_EQ(registerText(value.registerId, value.group), value.text) << "register " << value.registerId;
    }
}

TEST_F(Registers, FailInEveryGroupButTheirOwn)
{
    for (const FactoryValue &value : factoryValues) {
        for (int group = -1; group <= 17; ++group) {
            const int registerId = value.registerId;
            const bool colorParameter =
                registerId >= 2 && registerId <= 18 && group == COLORSPACE_PARAMETER_ID;
            const bool reset = (registerId == 19 || registerId == 20) && group == RESET_GROUP_ID;
            const bool version = registerId == 136 && group == VERSION_INFO_ID;
            if (group == value.group || colorParameter || reset || version) {
                EXPECT_EQ(registerText(registerId, group), value.text) << registerId << " in " << group;
            } else {
                EXPECT_EQ(registerText(registerId, group), "failure") << registerId << " in " << group;
            }
        }
    }
}

TEST_F(Registers, ThatDoNotExistFail)
{
    for (int registerId :
         {-1, 21, 24, 27, 46, 69, 80, 95, 111, 123, 137, 145, 160, 167, 176, 184, 255, 256}) {
        for (int group = 0; group <= 16; ++group) {
            EXPECT_EQ(registerText(registerId, group), "failure") << registerId << " in " << group;
        }
    }
}

TEST_F(Registers, LeaveTheBufferAloneOnFailure)
{
    char text[REGISTER_TEXT_SIZE] = "untouched";
    EXPECT_NE(GetRegisterValue(25, 0, text), 0);
    EXPECT_STREQ(text, "untouched");
    EXPECT_NE(GetRegisterValue(25, 1, nullptr), 0);
}

TEST_F(Registers, WriteNoMoreThanTheValueNeeds)
{
    char text[16];
    memset(text, 'x', sizeof text);
    ASSERT_EQ(GetRegisterValue(25, 1, text), 0);
    EXPECT_EQ(text[0], '0');
    EXPECT_EQ(text[1], '\0');
    EXPECT_EQ(text[2], 'x');
}

TEST_F(Registers, FailWhenToldTo)
{
    ASSERT_EQ(command("fault fail-read on GetBezelButtonInfo,GetRegisterValue"), 0);
    EXPECT_EQ(registerText(25, 1), "failure");
    ASSERT_EQ(command("fault fail-read off"), 0);
    EXPECT_EQ(registerText(25, 1), "0");
}

TEST_F(Registers, ShowTheActivePresetsCoordinates)
{
    ASSERT_EQ(command("set active_color_space 3"), 0); /* sRGB D65 */
    EXPECT_EQ(registerText(0, 0), "80");
    EXPECT_EQ(registerText(2, 12), "0.6400");
    EXPECT_EQ(registerText(4, 12),
              "0.4507"); /* u' and v' of the sRGB primaries, as the literature has them */
    EXPECT_EQ(registerText(5, 12), "0.5229");
    EXPECT_EQ(registerText(8, 12), "0.1250");
    EXPECT_EQ(registerText(9, 12), "0.5625");
    EXPECT_EQ(registerText(12, 12), "0.1754");
    EXPECT_EQ(registerText(13, 12), "0.1579");
    EXPECT_EQ(registerText(131, 9), "3");
}

TEST_F(Registers, OfCalibrationResetsTellWhetherTheResetIsAllowed)
{
    ASSERT_EQ(command("set preset1.luminance 249"), 0);
    EXPECT_EQ(registerText(19, 0), "1");
    EXPECT_EQ(registerText(20, 0), "0");
    /* another calibration than the factory's, not adjusted by the user */
    ASSERT_EQ(command("set preset1.calibrated_luminance 249"), 0);
    EXPECT_EQ(registerText(19, 0), "1");
    EXPECT_EQ(registerText(20, 0), "1");
    /* they speak of the active preset */
    ASSERT_EQ(command("set active_color_space 1"), 0);
    EXPECT_EQ(registerText(19, 0), "0");
    EXPECT_EQ(registerText(20, 0), "1");
}

TEST_F(Registers, OfResolutionsFollowTheInputs)
{
    ASSERT_EQ(command("set video_input 2"), 0);
    ASSERT_EQ(command("set pip_source 0"), 0);
    ASSERT_EQ(command("set input1.width 4095"), 0);
    EXPECT_EQ(registerText(42, 2), "1920");
    EXPECT_EQ(registerText(41, 2), "1080");
    EXPECT_EQ(registerText(65, 3), "4095");
    EXPECT_EQ(registerText(64, 3), "2160");
    EXPECT_EQ(registerText(63, 3), "2");
}

} // namespace
