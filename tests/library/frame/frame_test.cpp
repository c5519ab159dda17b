// SPDX-License-Identifier: Apache-2.0
// The frame of every class: the key check of the objects keyed to the monitor's system name, the system name
// itself, and the reader of the inset's resolution.

#include "by_name.h"
#include "checks.h"
#include "display/modules.h"
#include <climits>

using namespace frame;

namespace
{

/** Runs the key check of a class on a path; the status is as it was before where the check passes. */
Answer checkKeysOf(const std::string &className, const Path &asked)
{
    return collect([&](const CMPIResult *) {
        CMPIStatus status = {CMPI_RC_OK, nullptr};
        Check_System_key_value_pairs(&broker, broker.newPath(asked), className.c_str(), &status);
        return status;
    });
}

Path systemPath(const std::string &className, const std::string &name)
{
    return path(className, {{"Name", name},
                            {"SystemName", "Studio 7"},
                            {"SystemCreationClassName", "Linux_ComputerSystem"},
                            {"CreationClassName", className}});
}

struct NamedClass {
    const char *className;
    const char *name;
};

// "Studio 7" is the monitor's display name. The last class has no name of its own: its expected name is
// empty.
constexpr NamedClass namedClasses[] = {
    {"ZT_Marovelton_IPNetworkConnection", "Studio 7-IPNetworkConnection"},
    {"ZT_Marovelton_RemoteManagementService", "Studio 7-RemoteManagementService"},
    {"ZT_Marovelton_WSManagementService", "Studio 7-WSManagementService"},
    {"ZT_Marovelton_IPConfigurationService", "Studio 7-IPConfigurationService"},
    {"ZT_Marovelton_Other", ""},
};

constexpr const char *missingName = "Invalid selectors(Could not get Name of instance.)";
constexpr const char *wrongName = "This instance does not exist (wrong Name.)";

/** Every key of `rules`, in order, missing and wrong, while all the later ones are wrong too. */
void checkEachKey(const std::string &className, const Path &good, const std::vector<KeyRule> &rules)
{
    SCOPED_TRACE(className);
    EXPECT_STATUS(checkKeysOf(className, good), CMPI_RC_OK, "");
    for (const KeyRule &rule : rules) {
        SCOPED_TRACE(rule.name);
        Path rest = good;
        for (const KeyRule *later = &rule + 1; later != rules.data() + rules.size(); ++later) {
            rest = rest.with(later->name, "wrong");
        }
        std::vector<NamedValue> missing = everyMissingString();
        missing.push_back({"a number", uint16(5)});
        missing.push_back({"a reference", reference(good)});
        for (const NamedValue &form : missing) {
            SCOPED_TRACE(form.name);
            EXPECT_STATUS(checkKeysOf(className, rest.with(rule.name, form.value)), CMPI_RC_ERR_NOT_FOUND,
                          rule.missing);
        }
        for (const char *wrong : {"wrong", " ", "Studio 7-", "Linux_ComputerSystem2", "Studio 77"}) {
            SCOPED_TRACE(wrong);
            EXPECT_STATUS(checkKeysOf(className, rest.with(rule.name, wrong)), CMPI_RC_ERR_NOT_FOUND,
                          rule.wrong);
            EXPECT_STATUS(checkKeysOf(className, rest.with(rule.name, chars(wrong))), CMPI_RC_ERR_NOT_FOUND,
                          rule.wrong);
        }
        const std::string text = findEntry(good.keys, rule.name)->value.text;
        EXPECT_STATUS(checkKeysOf(className, good.with(rule.name, chars(text))), CMPI_RC_OK, "");
    }
}

} // namespace

TEST(SystemKeys, EveryClassAndEveryKey)
{
    for (const NamedClass &named : namedClasses) {
        checkEachKey(named.className, systemPath(named.className, named.name), namedSystemKeys());
    }
    checkEachKey("ZT_Marovelton_Monitor", systemPath("ZT_Marovelton_Monitor", "").without("Name"),
                 systemKeys());
}

TEST(SystemKeys, TheLastClassesNameIsCompared)
{
    // A class outside the five has the empty name.
    const Path other = systemPath("ZT_Marovelton_Other", "");
    EXPECT_STATUS(checkKeysOf("ZT_Marovelton_Other", other), CMPI_RC_OK, "");
    for (const char *name : {"Studio 7", "Studio 7-Other", " "}) {
        EXPECT_STATUS(checkKeysOf("ZT_Marovelton_Other", other.with("Name", name)), CMPI_RC_ERR_NOT_FOUND,
                      wrongName);
    }
    EXPECT_STATUS(checkKeysOf("ZT_Marovelton_Other", other.without("Name")), CMPI_RC_ERR_NOT_FOUND,
                  missingName);
}

TEST(SystemKeys, ClassNameIsMatchedExactly)
{
    // In other letter case the class is not one of the five, so its expected name is empty; the key
    // CreationClassName is compared without regard to case.
    const Path lower = systemPath("ZT_Marovelton_WSManagementService", "Studio 7-WSManagementService");
    EXPECT_STATUS(checkKeysOf("zt_marovelton_wsmanagementservice", lower), CMPI_RC_ERR_NOT_FOUND, wrongName);
    EXPECT_STATUS(checkKeysOf("zt_marovelton_wsmanagementservice", lower.with("Name", "")), CMPI_RC_OK, "");
    // And the monitor's skip of the name is its own.
    EXPECT_STATUS(
        checkKeysOf("zt_marovelton_monitor", systemPath("ZT_Marovelton_Monitor", "x").without("Name")),
        CMPI_RC_ERR_NOT_FOUND, missingName);
}

TEST(SystemKeys, LetterCaseIsIgnored)
{
    EXPECT_STATUS(checkKeysOf("ZT_Marovelton_IPNetworkConnection",
                              path("ZT_Marovelton_IPNetworkConnection",
                                   {{"Name", "STUDIO 7-ipnetworkconnection"},
                                    {"SystemName", "sTUDIO 7"},
                                    {"SystemCreationClassName", "LINUX_computersystem"},
                                    {"CreationClassName", "zt_marovelton_ipnetworkconnection"}})),
                  CMPI_RC_OK, "");
}

TEST(SystemKeys, MonitorNeedsNoName)
{
    const Path monitor = systemPath("ZT_Marovelton_Monitor", "").without("Name");
    EXPECT_STATUS(checkKeysOf("ZT_Marovelton_Monitor", monitor), CMPI_RC_OK, "");
    EXPECT_STATUS(checkKeysOf("ZT_Marovelton_Monitor", monitor.with("Name", "anything")), CMPI_RC_OK, "");
}

TEST(SystemKeys, RecordThatCannotBeRead)
{
    for (const int result : {-1, 1, 80000001}) {
        seam.returns("GetMoinitorInfo", result);
        const Answer answer = checkKeysOf("ZT_Marovelton_Monitor", systemPath("ZT_Marovelton_Monitor", ""));
        EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, "Could not get monitor information from database.");
        EXPECT_CALLS(answer, {"GetMoinitorInfo()"});
    }
}

TEST(SystemKeys, SuccessLeavesTheStatusAlone)
{
    CMPIStatus status = {CMPI_RC_ERR_ALREADY_EXISTS, broker.newString("before")};
    const CMPIString *message = status.msg;
    Check_System_key_value_pairs(&broker, broker.newPath(systemPath("ZT_Marovelton_Monitor", "")),
                                 "ZT_Marovelton_Monitor", &status);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_ALREADY_EXISTS);
    EXPECT_EQ(status.msg, message);
}

TEST(SystemKeys, EmptyDisplayNameMakesTheAddressTheName)
{
    setField(seam.monitor.DisplayName, "");
    const Path asked = path("ZT_Marovelton_WSManagementService",
                            {{"Name", "192.0.2.17-wsmanagementservice"},
                             {"SystemName", "192.0.2.17"},
                             {"SystemCreationClassName", "Linux_ComputerSystem"},
                             {"CreationClassName", "ZT_Marovelton_WSManagementService"}});
    const Answer answer = checkKeysOf("ZT_Marovelton_WSManagementService", asked);
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_CALLS(answer, {"GetMoinitorInfo()", "GetIPAddress()"});
    EXPECT_STATUS(checkKeysOf("ZT_Marovelton_WSManagementService", asked.with("SystemName", "Studio 7")),
                  CMPI_RC_ERR_NOT_FOUND, "This instance does not exist (wrong SystemName).");
}

TEST(SystemKeys, AddressIsNotAskedForWithADisplayName)
{
    EXPECT_CALLS(checkKeysOf("ZT_Marovelton_Monitor", systemPath("ZT_Marovelton_Monitor", "")),
                 {"GetMoinitorInfo()"});
}

TEST(SystemKeys, DisplayNameWithoutTerminator)
{
    const std::string full = fillField(seam.monitor.DisplayName, 'N'); // 25 characters
    fillField(seam.monitor.DeploymentLocation, 'L');                   // follows it in the record
    const Path asked = systemPath("ZT_Marovelton_IPConfigurationService", full + "-IPConfigurationService")
                           .with("SystemName", full);
    EXPECT_STATUS(checkKeysOf("ZT_Marovelton_IPConfigurationService", asked), CMPI_RC_OK, "");
    EXPECT_STATUS(checkKeysOf("ZT_Marovelton_IPConfigurationService", asked.with("SystemName", full + "L")),
                  CMPI_RC_ERR_NOT_FOUND, "This instance does not exist (wrong SystemName).");
}

TEST(SystemKeys, FailingBrokerIsNoMatch)
{
    checkTorture([] {
        return checkKeysOf("ZT_Marovelton_WSManagementService",
                           systemPath("ZT_Marovelton_WSManagementService", "Studio 7-WSManagementService"));
    });
    checkTorture([] { return checkKeysOf("ZT_Marovelton_Monitor", path("ZT_Marovelton_Monitor")); });
}

// ---- the system name ----

TEST(SystemNameRule, DisplayNameElseAddress)
{
    EXPECT_STREQ(systemName(seam.monitor).text, "Studio 7");
    setField(seam.monitor.DisplayName, " ");
    EXPECT_STREQ(systemName(seam.monitor).text, " ") << "a blank is a name";
    seam.monitor.DisplayName[0] = '\0';
    EXPECT_STREQ(systemName(seam.monitor).text, "192.0.2.17");
}

TEST(SystemNameRule, OnlyTheFirstCharacterDecides)
{
    setField(seam.monitor.DisplayName, "Studio");
    seam.monitor.DisplayName[0] = '\0';
    EXPECT_STREQ(systemName(seam.monitor).text, "192.0.2.17");
}

TEST(SystemNameRule, AllWidths)
{
    for (size_t length = 1; length <= 25; ++length) {
        const std::string name(length, 'n');
        setField(seam.monitor.DisplayName, name);
        fillField(seam.monitor.DeploymentLocation, 'L');
        EXPECT_EQ(systemName(seam.monitor).text, name);
    }
    setField(seam.monitor.DisplayName, "");
    for (const std::string address : {"255.255.255.255", "1.2.3.4", "", "01234567890123456789"}) {
        seam.ipAddress = address;
        EXPECT_EQ(systemName(seam.monitor).text, address);
    }
}

TEST(SystemNameRule, AddressThatIsNotWritten)
{
    setField(seam.monitor.DisplayName, "");
    seam.returns("GetIPAddress", -1);
    EXPECT_STREQ(systemName(seam.monitor).text, "");
}

// ---- the resolution of the inset ----

namespace
{

struct Resolution {
    int result;
    int horizontal;
    int vertical;
    bool operator==(const Resolution &) const = default;
};

void PrintTo(const Resolution &resolution, std::ostream *out)
{
    *out << resolution.result << ": " << resolution.horizontal << " x " << resolution.vertical;
}

Resolution readResolution()
{
    seam.forgetCalls();
    Resolution read = {0, -77, -77};
    read.result = GetResolution(&read.horizontal, &read.vertical);
    return read;
}

} // namespace

TEST(InsetResolution, ReadsTwoRegisters)
{
    seam.registers[{65, 3}] = "4096";
    seam.registers[{64, 3}] = "2160";
    EXPECT_EQ(readResolution(), (Resolution{0, 4096, 2160}));
    EXPECT_EQ(seam.calls, (std::vector<std::string>{"GetRegisterValue(65, 3)", "GetRegisterValue(64, 3)"}));
    EXPECT_EQ(seam.registerTextBefore, (std::vector<std::string>{" ", " "}));
}

TEST(InsetResolution, FailedReads)
{
    seam.registers[{64, 3}] = "2160"; // no width
    EXPECT_EQ(readResolution().result, -1);
    EXPECT_EQ(seam.calls, (std::vector<std::string>{"GetRegisterValue(65, 3)"}));

    seam.registers.clear();
    seam.registers[{65, 3}] = "4096"; // no height
    EXPECT_EQ(readResolution().result, -1);
    EXPECT_EQ(seam.calls, (std::vector<std::string>{"GetRegisterValue(65, 3)", "GetRegisterValue(64, 3)"}));
}

TEST(InsetResolution, OnlyMinusOneIsAFailure)
{
    seam.registers[{65, 3}] = "4096";
    seam.registers[{64, 3}] = "2160";
    seam.returns("GetRegisterValue(64, 3)", 1); // and writes nothing
    EXPECT_EQ(readResolution(), (Resolution{0, 4096, 0}));
    seam.returns("GetRegisterValue(65, 3)", 80000001);
    EXPECT_EQ(readResolution(), (Resolution{0, 0, 0}));
}

TEST(InsetResolution, TextsAreReadAsFarAsTheyAreNumbers)
{
    struct {
        const char *text;
        int value;
    } const readings[] = {{"1920x", 1920},
                          {" 12", 12},
                          {"-5", -5},
                          {"", 0},
                          {"none", 0},
                          {"2147483648", INT_MAX},
                          {"-99999999999", INT_MIN},
                          // 32 characters fill the buffer without a terminator.
                          {"00000000000000000000000000004095", 4095}};
    seam.registers[{64, 3}] = "7";
    for (const auto &reading : readings) {
        SCOPED_TRACE(reading.text);
        seam.registers[{65, 3}] = reading.text;
        EXPECT_EQ(readResolution(), (Resolution{0, reading.value, 7}));
    }
}
