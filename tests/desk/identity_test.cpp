// SPDX-License-Identifier: Apache-2.0
// Users, names, dates and the checks of arguments.
#include "desk_fixture.h"

#include <monitor_support.h>

#include <climits>
#include <cstring>

namespace
{

class Identity : public DeskTest
{
  public:
    char error[ERROR_TEXT_SIZE] = " ";
};

TEST_F(Identity, OfUsersIsInTheStore)
{
    char administrator = 7;
    EXPECT_EQ(IsAdminUser("admin", &administrator, error), 0);
    EXPECT_EQ(administrator, 1);
    EXPECT_EQ(IsAdminUser("root", &administrator, error), 0);
    EXPECT_EQ(administrator, 1);
    EXPECT_EQ(IsAdminUser("operator", &administrator, error), 0);
    EXPECT_EQ(administrator, 0);
    EXPECT_STREQ(error, " ");
}

TEST_F(Identity, OfUnknownUsersFails)
{
    char administrator = 7;
    for (const char *name : {"nobody", "Admin", "admin ", "", "' OR '1'='1"}) {
        strcpy(error, " ");
        administrator = 7;
        EXPECT_NE(IsAdminUser(name, &administrator, error), 0) << name;
        EXPECT_EQ(administrator, 0) << name;
        EXPECT_STREQ(error,
                     *name == '\0' ? "No user name was given." : "The user is not known to the monitor.");
    }
    EXPECT_NE(IsAdminUser(nullptr, &administrator, error), 0);
    EXPECT_NE(IsAdminUser("admin", nullptr, error), 0);
    EXPECT_NE(IsAdminUser("nobody", &administrator, nullptr), 0);
}

TEST_F(Identity, OfUsersFailsWhenToldToAndWithoutStore)
{
    char administrator = 7;
    ASSERT_EQ(command("fault fail-user on"), 0);
    EXPECT_NE(IsAdminUser("admin", &administrator, error), 0);
    EXPECT_EQ(administrator, 0);
    EXPECT_STREQ(error, "The user could not be looked up.");
    ASSERT_EQ(command("fault clear"), 0);
    EXPECT_EQ(IsAdminUser("admin", &administrator, error), 0);
    setenv("DESK_MONITOR_STORE", (directory + "/none/store.db").c_str(), 1);
    strcpy(error, " ");
    EXPECT_NE(IsAdminUser("admin", &administrator, error), 0);
    EXPECT_STREQ(error, "The user could not be looked up.");
}

TEST_F(Identity, NamesHaveOneTo24PrintableCharacters)
{
    for (const char *name :
         {"A", "Grading Suite 2", "123456789012345678901234", "Grün", "\xe2\x82\xac 1", "a'b\"<&>"}) {
        EXPECT_EQ(ValidateDisplayName(name), 0) << name;
    }
    for (const char *name :
         {"", " ", "    ", "1234567890123456789012345", "a\nb", "a\tb", "\x01", "a\x7f", "\xff", "\xc3",
          "\xc0\xaf", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xe2\x82", "\xc2\x85", "a\x80"}) {
        EXPECT_NE(ValidateDisplayName(name), 0) << name;
    }
    EXPECT_NE(ValidateDisplayName(nullptr), 0);
}

TEST_F(Identity, NameIsStored)
{
    EXPECT_EQ(UpdateDisplayName("123456789012345678901234", error), 0);
    MonitorInfo info;
    ASSERT_EQ(GetMoinitorInfo(&info), 0);
    EXPECT_STREQ(info.DisplayName, "123456789012345678901234");
    EXPECT_EQ(UpdateDisplayName("Robert'); DROP TABLE", error), 0);
    ASSERT_EQ(GetMoinitorInfo(&info), 0);
    EXPECT_STREQ(info.DisplayName, "Robert'); DROP TABLE");
    EXPECT_STREQ(error, " ");

    EXPECT_NE(UpdateDisplayName("1234567890123456789012345", error), 0);
    EXPECT_STREQ(error, "A display name has 1 to 24 printable characters.");
    EXPECT_NE(UpdateDisplayName(nullptr, nullptr), 0);
    ASSERT_EQ(GetMoinitorInfo(&info), 0);
    EXPECT_STREQ(info.DisplayName, "Robert'); DROP TABLE");
}

TEST_F(Identity, DatesAreOfTheCalendar)
{
    for (const char *date :
         {"01/01/1970", "31/12/1969", "29/02/2024", "29/02/2000", "30/04/2025", "19/01/2038", "14/12/1901"}) {
        EXPECT_EQ(ValidateDeploymentDate(date), 0) << date;
    }
    for (const char *date : {"",           "1/1/2024",   "01-01-2024",  "01/01/24",    "2024/01/01",
                             "32/01/2024", "00/01/2024", "01/00/2024",  "01/13/2024",  "29/02/2023",
                             "29/02/1900", "31/04/2025", "01/01/2024 ", " 01/01/2024", "01/01/20245",
                             "+1/01/2024", "01/ 1/2024", "aa/bb/cccc",  "20/01/2038",  "13/12/1901",
                             "01/01/9999", "01/01/0000"}) {
        EXPECT_NE(ValidateDeploymentDate(date), 0) << date;
    }
    EXPECT_NE(ValidateDeploymentDate(nullptr), 0);
}

TEST_F(Identity, DateIsStoredInSeconds)
{
    const struct {
        const char *date;
        std::int32_t seconds;
    } dates[] = {
        {"01/01/1970", 0}, {"02/01/1970", 86400}, {"31/12/1969", -86400}, {"29/02/2024", 1709164800}};
    for (const auto &[date, seconds] : dates) {
        EXPECT_EQ(UpdateDeploymentDate(date, error), 0);
        MonitorInfo info;
        ASSERT_EQ(GetMoinitorInfo(&info), 0);
        EXPECT_EQ(+info.Deployment_Date, seconds);
    }
    EXPECT_STREQ(error, " ");
    EXPECT_NE(UpdateDeploymentDate("30/02/2024", error), 0);
    EXPECT_STREQ(error, "A deployment date is a calendar date, DD/MM/YYYY.");
    MonitorInfo info;
    ASSERT_EQ(GetMoinitorInfo(&info), 0);
    EXPECT_EQ(+info.Deployment_Date, 1709164800);
}

TEST_F(Identity, LocationIsStored)
{
    EXPECT_EQ(UpdateDeploymentLocation("Studio 3, Room 12", error), 0);
    MonitorInfo info;
    ASSERT_EQ(GetMoinitorInfo(&info), 0);
    EXPECT_STREQ(info.DeploymentLocation, "Studio 3, Room 12");
    EXPECT_STREQ(error, " ");
    for (const char *location : {"1234567890123456789012345", "a\rb"}) {
        strcpy(error, " ");
        EXPECT_NE(UpdateDeploymentLocation(location, error), 0);
        EXPECT_STREQ(error, "A deployment location has at most 24 printable characters.");
    }
    EXPECT_NE(UpdateDeploymentLocation(nullptr, error), 0);
    ASSERT_EQ(GetMoinitorInfo(&info), 0);
    EXPECT_STREQ(info.DeploymentLocation, "Studio 3, Room 12");
    EXPECT_EQ(UpdateDeploymentLocation("", error), 0);
    ASSERT_EQ(GetMoinitorInfo(&info), 0);
    EXPECT_STREQ(info.DeploymentLocation, "");
}

TEST_F(Identity, UpdatesFailWhenToldTo)
{
    ASSERT_EQ(command("fault fail-update on UpdateDisplayName"), 0);
    EXPECT_NE(UpdateDisplayName("Suite", error), 0);
    EXPECT_STREQ(error, "The settings database refused the update.");
    EXPECT_EQ(UpdateDeploymentDate("01/02/2024", error), 0);
    ASSERT_EQ(command("fault fail-update on"), 0);
    EXPECT_NE(UpdateDisplayName("Suite", error), 0);
    EXPECT_NE(UpdateDeploymentDate("01/03/2024", error), 0);
    EXPECT_NE(UpdateDeploymentLocation("Studio", error), 0);
    MonitorInfo info;
    ASSERT_EQ(GetMoinitorInfo(&info), 0);
    EXPECT_STREQ(info.DisplayName, "");
    EXPECT_STREQ(info.DeploymentLocation, "");
    EXPECT_EQ(+info.Deployment_Date, 1706745600);
}

TEST_F(Identity, UpdatesFailWithoutStore)
{
    setenv("DESK_MONITOR_STORE", (directory + "/none/store.db").c_str(), 1);
    EXPECT_NE(UpdateDisplayName("Suite", error), 0);
    EXPECT_STREQ(error, "The settings database could not be written.");
}

TEST_F(Identity, AddressesAreFourDecimalOctets)
{
    const struct {
        const char *text;
        unsigned char octets[4];
    } good[] = {{"192.168.1.50", {192, 168, 1, 50}},
                {"0.0.0.0", {0, 0, 0, 0}},
                {"255.255.255.255", {255, 255, 255, 255}}};
    for (const auto &[text, octets] : good) {
        unsigned char parsed[4] = {9, 9, 9, 9};
        EXPECT_EQ(ParseIPV4Address(text, parsed), 0) << text;
        EXPECT_EQ(memcmp(parsed, octets, 4), 0) << text;
    }
    for (const char *text :
         {"", "1", "1.2.3", "1.2.3.4.5", "1.2.3.256", "1.2.3.4 ", " 1.2.3.4", "1.2.3.-4", "1..3.4", "1.2.3.",
          ".1.2.3", "01.2.3.4", "1.2.3.0x4", "1.2.3.1000", "a.b.c.d", "1,2,3,4"}) {
        unsigned char parsed[4] = {9, 9, 9, 9};
        const unsigned char zeros[4] = {};
        EXPECT_NE(ParseIPV4Address(text, parsed), 0) << text;
        EXPECT_EQ(memcmp(parsed, zeros, 4), 0) << text;
    }
    unsigned char parsed[4] = {9, 9, 9, 9};
    EXPECT_NE(ParseIPV4Address(nullptr, parsed), 0);
    EXPECT_EQ(parsed[3], 0);
    EXPECT_NE(ParseIPV4Address("1.2.3.4", nullptr), 0);
}

TEST_F(Identity, RangesIncludeBothEnds)
{
    EXPECT_EQ(ValidateInputArgs(48, 48, 250), 0);
    EXPECT_EQ(ValidateInputArgs(250, 48, 250), 0);
    EXPECT_NE(ValidateInputArgs(47, 48, 250), 0);
    EXPECT_NE(ValidateInputArgs(251, 48, 250), 0);
    EXPECT_EQ(ValidateInputArgs(INT_MIN, INT_MIN, INT_MAX), 0);
    EXPECT_NE(ValidateInputArgs(INT_MIN, 0, INT_MAX), 0);
}

} // namespace
