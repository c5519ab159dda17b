// SPDX-License-Identifier: Apache-2.0
// The command of the desk monitor.
#include "desk_fixture.h"

#include <monitor_support.h>

namespace
{

class Command : public DeskTest
{
};

TEST_F(Command, ExplainsItself)
{
    EXPECT_EQ(command("--help"), 0);
    for (const char *word : {"show", "set", "fault", "user", "reset", "queues", "--store", "--queue-key"}) {
        EXPECT_NE(commandOutput.find(word), std::string::npos) << word;
    }
    EXPECT_EQ(command("fault --help"), 0);
    for (const char *word :
         {"busy", "silent", "slow [seconds]", "lose-reply [count]", "fail-read [functions]", "fail-update",
          "fail-user", "fail-queue [queue]", "fail-send", "fail-receive", "clear"}) {
        EXPECT_NE(commandOutput.find(word), std::string::npos) << word;
    }
    EXPECT_EQ(command("--version"), 0);
    EXPECT_EQ(commandOutput.substr(0, 13), "desk-monitor ");
    for (const char *wrong : {"", "dance", "show settings now", "set menu_timeout", "user", "--store"}) {
        EXPECT_EQ(command(wrong), 2) << wrong;
    }
}

TEST_F(Command, ShowsEverything)
{
    ASSERT_EQ(command("fault slow on 0.25"), 0);
    ASSERT_EQ(command("set menu_timeout 30"), 0);
    EXPECT_EQ(command("show"), 0);
    for (const char *part : {"store " /* its path */, "menu_timeout                          107     6 *30 ",
                             ">1 Native ", "slow          on 0.25 ", "busy          off ",
                             "operator                 user", "queue 3, key 0x"}) {
        EXPECT_NE(commandOutput.find(part), std::string::npos) << part << " in\n" << commandOutput;
    }
}

TEST_F(Command, ShowsParts)
{
    EXPECT_EQ(command("show presets"), 0);
    EXPECT_NE(commandOutput.find("DCI P3"), std::string::npos);
    EXPECT_EQ(commandOutput.find("operator"), std::string::npos);
    EXPECT_EQ(command("show users"), 0);
    EXPECT_EQ(commandOutput, "admin                    administrator\n"
                             "operator                 user\n"
                             "root                     administrator\n");
    EXPECT_EQ(command("show serial_number"), 0);
    EXPECT_EQ(commandOutput, "DSK2840017\n");
    EXPECT_EQ(command("show pip_"), 0);
    EXPECT_NE(commandOutput.find("pip_mode"), std::string::npos);
    EXPECT_EQ(commandOutput.find("menu_timeout"), std::string::npos);
    EXPECT_EQ(command("show nonsense"), 2);
    EXPECT_EQ(commandErrors,
              "desk-monitor: nothing is called nonsense; there are settings, presets, faults, users, "
              "queues and the names of settings, or parts of them\n");
}

/* Also those of the presets, which show settings leaves to show presets. */
TEST_F(Command, FindsSettingsByAPartOfTheirName)
{
    ASSERT_EQ(command("set preset3.luminance 101"), 0);
    EXPECT_EQ(command("show luminance"), 0);
    EXPECT_NE(commandOutput.find(
                  "\npreset3.luminance                       -     - *101                      48..250\n"),
              std::string::npos)
        << commandOutput;
    EXPECT_NE(commandOutput.find("\npreset7.calibrated_luminance            -     -  100 "),
              std::string::npos)
        << commandOutput;
    EXPECT_EQ(commandOutput.find("gamma"), std::string::npos);
    EXPECT_EQ(command("show preset6."), 0);
    EXPECT_NE(commandOutput.find("preset6.gamma                           -     -  2.60 "), std::string::npos)
        << commandOutput;
    EXPECT_EQ(commandOutput.find("preset5"), std::string::npos);
}

TEST_F(Command, SetsSettings)
{
    EXPECT_EQ(command("set input1.width 4095"), 0);
    EXPECT_EQ(registerText(42, 2), "4095");
    EXPECT_EQ(command("set display_name 'Suite 1'"), 0);
    MonitorInfo info;
    ASSERT_EQ(GetMoinitorInfo(&info), 0);
    EXPECT_STREQ(info.DisplayName, "Suite 1");
    EXPECT_EQ(command("set display_name ''"), 0);
    ASSERT_EQ(GetMoinitorInfo(&info), 0);
    EXPECT_STREQ(info.DisplayName, "");
    EXPECT_EQ(command("set deployment_date 02/01/1970"), 0);
    ASSERT_EQ(GetMoinitorInfo(&info), 0);
    EXPECT_EQ(+info.Deployment_Date, 86400);
    EXPECT_EQ(command("set deployment_date -86400"), 0) << commandErrors;
    ASSERT_EQ(GetMoinitorInfo(&info), 0);
    EXPECT_EQ(+info.Deployment_Date, -86400);
    EXPECT_EQ(command("set preset7.gamma 2.2"), 0);
    ColorSpaceInfo preset;
    ASSERT_EQ(GetColorSpaceInfoById(&preset, 6), 0);
    EXPECT_STREQ(preset.Gamma, "2.2");
    EXPECT_EQ(command("set ipv4_address 10.0.0.9"), 0);
    char address[IP_ADDRESS_SIZE];
    EXPECT_EQ(GetIPAddress(address), 0);
    EXPECT_STREQ(address, "10.0.0.9");
}

TEST_F(Command, RefusesWhatASettingDoesNotAccept)
{
    const struct {
        const char *arguments, *error;
    } wrong[] = {{"set brightness 1",
                  "desk-monitor: there is no setting brightness; see desk-monitor show settings\n"},
                 {"set menu_timeout 31", "desk-monitor: menu_timeout: 31 is outside 5..30\n"},
                 {"set menu_opacity 2501", "desk-monitor: menu_opacity: 2501 is not a multiple of 625\n"},
                 {"set menu_timeout 5x", "desk-monitor: menu_timeout: 5x is not a whole number\n"},
                 {"set preset1.luminance 47", "desk-monitor: preset1.luminance: 47 is outside 48..250\n"},
                 {"set ipv4_gateway 1.2.3", "desk-monitor: ipv4_gateway: 1.2.3 is not an IPv4 address\n"},
                 {"set serial_number 1234567890123456",
                  "desk-monitor: serial_number: 1234567890123456 is longer than 15 bytes\n"}};
    for (const auto &[arguments, error] : wrong) {
        EXPECT_EQ(command(arguments), 2) << arguments;
        EXPECT_EQ(commandErrors, error);
    }
}

TEST_F(Command, SwitchesFaults)
{
    EXPECT_EQ(command("fault busy on"), 0);
    EXPECT_EQ(command("fault lose-reply on 3"), 0);
    EXPECT_EQ(command("show faults"), 0);
    EXPECT_NE(commandOutput.find("lose-reply    on 3 "), std::string::npos) << commandOutput;
    EXPECT_EQ(command("fault busy off"), 0);
    EXPECT_EQ(GetMonitorStatus(SPEAR_STATE), FREE);
    EXPECT_EQ(command("fault busy on"), 0);
    EXPECT_EQ(command("fault clear"), 0);
    EXPECT_EQ(GetMonitorStatus(SPEAR_STATE), FREE);
    EXPECT_EQ(command("show faults"), 0);
    EXPECT_EQ(commandOutput.find(" on "), std::string::npos) << commandOutput;
}

TEST_F(Command, RefusesFaultsThatAreNone)
{
    for (const char *arguments :
         {"fault sleepy on", "fault busy", "fault busy maybe", "fault busy on now", "fault slow on soon",
          "fault slow on -1", "fault slow on 3601", "fault slow on 0,5", "fault slow on inf",
          "fault lose-reply on 0", "fault lose-reply on some", "fault fail-queue on 4",
          "fault fail-read on GetEverything", "fault fail-read on UpdateDisplayName",
          "fault fail-update on GetMoinitorInfo", "fault clear on"}) {
        EXPECT_EQ(command(arguments), 2) << arguments;
        EXPECT_NE(commandErrors, "") << arguments;
    }
    EXPECT_EQ(command("show faults"), 0);
    EXPECT_EQ(commandOutput.find(" on "), std::string::npos) << commandOutput;
}

TEST_F(Command, KeepsUsers)
{
    char administrator = 7, error[ERROR_TEXT_SIZE];
    EXPECT_EQ(command("user add mira"), 0);
    EXPECT_EQ(IsAdminUser("mira", &administrator, error), 0);
    EXPECT_EQ(administrator, 0);
    EXPECT_EQ(command("user add mira --administrator"), 0);
    EXPECT_EQ(IsAdminUser("mira", &administrator, error), 0);
    EXPECT_EQ(administrator, 1);
    EXPECT_EQ(command("user remove mira"), 0);
    EXPECT_NE(IsAdminUser("mira", &administrator, error), 0);
    EXPECT_EQ(command("user remove mira"), 2);
    EXPECT_EQ(command("user add ''"), 2);
}

TEST_F(Command, ResetsToTheFactory)
{
    ASSERT_EQ(command("set video_input 2"), 0);
    ASSERT_EQ(command("set preset3.luminance 99"), 0);
    ASSERT_EQ(command("user remove operator"), 0);
    ASSERT_EQ(command("fault busy on"), 0);
    EXPECT_EQ(command("reset"), 0);
    EXPECT_EQ(registerText(25, 1), "0");
    ColorSpaceInfo preset;
    ASSERT_EQ(GetColorSpaceInfoById(&preset, 2), 0);
    EXPECT_EQ(preset.DisplayLuminance, 100);
    EXPECT_EQ(GetMonitorStatus(SPEAR_STATE), BUSY);
    char administrator = 7, error[ERROR_TEXT_SIZE];
    EXPECT_NE(IsAdminUser("operator", &administrator, error), 0);
}

TEST_F(Command, RemovesQueues)
{
    int identifier = -1;
    ASSERT_EQ(SpearEngineMessageQueueCreate(0, &identifier), 0);
    ASSERT_EQ(SpearEngineMessageQueueCreate(3, &identifier), 0);
    EXPECT_EQ(command("queues remove"), 0);
    EXPECT_EQ(commandOutput, "queue 0 removed\nqueue 3 removed\n");
    EXPECT_EQ(command("queues remove"), 0);
    EXPECT_EQ(commandOutput, "");
    EXPECT_EQ(command("--queue-key none queues remove"), 2);
}

} // namespace
