// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_IPProtocolEndpoint: the network interfaces as the shell tools print them.

#include "network/ZT_Marovelton_IPProtocolEndpoint.h"
#include "network/modules.h"
#include "support/checks.h"

#include <cstdlib>

METHOD_CLASS(IPProtocolEndpoint);

namespace
{

const char *const heading1 = "Inter-|   Receive                                                |  Transmit\n";
const char *const heading2 =
    " face |bytes    packets errs drop fifo frame compressed multicast|bytes    packets\n";

void interfaces(std::vector<std::string> lines)
{
    lines.insert(lines.begin(), {heading1, heading2});
    seam.commands["cat /proc/net/dev"] = {.output = std::move(lines)};
}

/** What the classic ifconfig prints for an interface that is up. */
void interfaceIsUp(const std::string &name, const std::string &secondLine)
{
    const std::string first = name + "      Link encap:Ethernet  HWaddr 00:1B:44:11:3A:B7\n";
    seam.commands["/sbin/ifconfig " + name] = {
        .output = {first, secondLine, "          UP BROADCAST RUNNING\n"}};
    seam.commands["/sbin/ifconfig | grep " + name] = {.output = {first}};
}

/** A controller with a loopback interface and one that has an address. */
class Endpoints : public testing::Test
{
  protected:
    void SetUp() override
    {
        interfaces({"    lo: 1024       8    0    0    0     0          0         0\n",
                    "  eth0:123456789 100    0    0    0     0          0         0\n"});
        interfaceIsUp("lo", "          inet addr:127.0.0.1  Mask:255.0.0.0\n");
        interfaceIsUp("eth0", "          inet addr:192.168.1.20  Bcast:192.168.1.255  Mask:255.255.255.0\n");
    }
    void TearDown() override
    {
        EXPECT_EQ(seam.unfreedLines, 0);
    }
};

const Path enumeration = path("ZT_Marovelton_IPProtocolEndpoint");

Path endpoint(const char *name)
{
    return path("ZT_Marovelton_IPProtocolEndpoint", {{"Name", name}});
}

Entries properties(const char *name, const char *address, const char *mask, uint16_t state)
{
    return {{"SystemCreationClassName", chars("Linux_ComputerSystem")},
            {"SystemName", chars("Studio 7")},
            {"CreationClassName", chars("ZT_Marovelton_IPProtocolEndpoint")},
            {"Name", chars(name)},
            {"ProtocolIFType", uint16(4096)},
            {"NameFormat", chars("IP")},
            {"ProtocolType", uint16(2)},
            {"OtherTypeDescription", chars("NULL")},
            {"IPv4Address", chars(address)},
            {"SubnetMask", chars(mask)},
            {"IPv6Address", chars("NULL")},
            {"IPVersionSupport", uint16(1)},
            {"Caption", chars("Protocol Endpoint for IP (Internet Protocol) ")},
            {"Description",
             chars("A communication point to send and receive data. This class is dedicated to link "
                   "IP intefaces to Logical Networks.")},
            {"Status", chars("OK")},
            {"ElementName", chars(name)},
            {"EnabledState", uint16(state)},
            {"OtherEnabledState", chars("NULL")},
            {"RequestedState", uint16(state)},
            {"EnabledDefault", uint16(2)}};
}

Instance only(const char *name)
{
    const Answer answer = get(IPProtocolEndpoint, endpoint(name));
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    return answer.instance();
}

} // namespace

// ---- the skeleton ----

TEST_F(Endpoints, HaveTheSkeletonOfAProvider)
{
    checkSkeleton(IPProtocolEndpoint);
    checkPlaceholderMethod(IPProtocolEndpoint, endpoint("IPv4_eth0"), CMPI_RC_ERR_NOT_SUPPORTED, uint32(1));
}

// ---- enumeration ----

TEST_F(Endpoints, HaveAPathForEveryInterfaceInTheKernelsOrder)
{
    const Answer answer = enumerateNames(IPProtocolEndpoint, enumeration.inNameSpace("root/other"));
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_EQ(answer.done, 1);
    ASSERT_EQ(answer.paths().size(), 2U);
    const char *names[] = {"IPv4_lo", "IPv4_eth0"};
    for (size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(answer.paths()[i].nameSpace, "root/other");
        EXPECT_EQ(answer.paths()[i].className, "ZT_Marovelton_IPProtocolEndpoint");
        EXPECT_KEYS(answer.paths()[i], {{"SystemCreationClassName", chars("Linux_ComputerSystem")},
                                        {"SystemName", chars("Studio 7")},
                                        {"CreationClassName", chars("ZT_Marovelton_IPProtocolEndpoint")},
                                        {"Name", chars(names[i])}});
    }
}

TEST_F(Endpoints, HaveAllTheirProperties)
{
    const Answer answer = enumerate(IPProtocolEndpoint, enumeration);
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_EQ(answer.done, 1);
    ASSERT_EQ(answer.instances().size(), 2U);
    EXPECT_EQ(answer.instances()[0].properties, properties("IPv4_lo", "127.0.0.1", "255.0.0.0", 2));
    EXPECT_EQ(answer.instances()[1].properties, properties("IPv4_eth0", "192.168.1.20", "255.255.255.0", 2));
}

TEST_F(Endpoints, TakeTheNameOfTheSystem)
{
    const auto expectSystem = [](const std::string &name) {
        const Path key = enumerateNames(IPProtocolEndpoint, enumeration).paths().at(1);
        EXPECT_EQ(findEntry(key.keys, "SystemName")->value, chars(name));
        EXPECT_EQ(*only("IPv4_eth0").find("SystemName"), chars(name));
    };
    setField(seam.monitor.DisplayName, "");
    expectSystem("192.0.2.17");
    fillField(seam.monitor.DisplayName, 'd');
    expectSystem("ddddddddddddddddddddddddd");
}

TEST_F(Endpoints, RunTheseCommands)
{
    ipPEndpointList *list = nullptr;
    seam.forgetCalls();
    EXPECT_EQ(enum_all_ipProtocolEndpoints(&list), 0);
    free_ipPEndpointList(list);
    std::vector<std::string> commands;
    for (const std::string &call : seam.calls) {
        if (call.starts_with("runcommand")) {
            commands.push_back(call);
        }
    }
    EXPECT_EQ(commands, (std::vector<std::string>{
                            "runcommand(cat /proc/net/dev)", "runcommand(/sbin/ifconfig | grep lo)",
                            "runcommand(/sbin/ifconfig lo)", "runcommand(/sbin/ifconfig | grep eth0)",
                            "runcommand(/sbin/ifconfig eth0)"}));
    // Only the interface's own command has its errors captured.
    EXPECT_EQ(seam.captured, (std::vector<std::pair<bool, bool>>{
                                 {true, false}, {true, false}, {true, true}, {true, false}, {true, true}}));
}

TEST_F(Endpoints, ThereAreNoneWithoutInterfaces)
{
    interfaces({});
    for (const Answer &answer :
         {enumerateNames(IPProtocolEndpoint, enumeration), enumerate(IPProtocolEndpoint, enumeration)}) {
        EXPECT_STATUS(answer, CMPI_RC_OK, "");
        EXPECT_TRUE(answer.returned.empty());
        EXPECT_EQ(answer.done, 1);
    }
    EXPECT_STATUS(get(IPProtocolEndpoint, endpoint("IPv4_eth0")), CMPI_RC_ERR_NOT_FOUND,
                  "IPProtocolEndpoint does not exist.");
}

TEST_F(Endpoints, ThereAreNoneWithOneLineOrNoneOfOutput)
{
    for (const CommandScript &script : {CommandScript{.output = {heading1}}, CommandScript{.output = {}},
                                        CommandScript{.noOutput = true}}) {
        seam.commands["cat /proc/net/dev"] = script;
        const Answer answer = enumerate(IPProtocolEndpoint, enumeration);
        EXPECT_STATUS(answer, CMPI_RC_OK, "");
        EXPECT_TRUE(answer.returned.empty());
    }
}

TEST_F(Endpoints, CannotBeListedWhenTheKernelsTableCannotBeRead)
{
    for (const CommandScript &script :
         {CommandScript{.status = 1, .noOutput = true}, CommandScript{.status = 1, .output = {}}}) {
        seam.commands["cat /proc/net/dev"] = script;
        for (const Answer &answer :
             {enumerateNames(IPProtocolEndpoint, enumeration), enumerate(IPProtocolEndpoint, enumeration)}) {
            EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, "Could not list IP protocol endpoints.");
            EXPECT_TRUE(answer.returned.empty());
        }
        EXPECT_STATUS(get(IPProtocolEndpoint, endpoint("IPv4_eth0")), CMPI_RC_ERR_NOT_FOUND,
                      "IPProtocolEndpoint does not exist.");
    }
}

TEST_F(Endpoints, AreListedFromWhatACommandPrintedBeforeItFailed)
{
    seam.commands["cat /proc/net/dev"].status = 1;
    EXPECT_STATUS(enumerateNames(IPProtocolEndpoint, enumeration), CMPI_RC_OK, "");
    const Answer answer = enumerate(IPProtocolEndpoint, enumeration);
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_EQ(answer.instances().size(), 2U);
    EXPECT_EQ(only("IPv4_eth0").properties, properties("IPv4_eth0", "192.168.1.20", "255.255.255.0", 2));
}

TEST_F(Endpoints, AWalkStopsAtTheFirstThatCannotBeBuilt)
{
    seam.returnsAt("GetMoinitorInfo", 2, 1);
    Answer answer = enumerateNames(IPProtocolEndpoint, enumeration);
    EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED,
                  "Transformation from internal structure to CIM ObjectPath failed.");
    EXPECT_EQ(answer.paths().size(), 1U);

    seam.returns("GetMoinitorInfo", 1);
    answer = enumerate(IPProtocolEndpoint, enumeration);
    EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED,
                  "Transformation from internal structure to CIM Instance failed.");
    EXPECT_TRUE(answer.returned.empty());
}

TEST_F(Endpoints, BuildersNameTheMonitorsRecord)
{
    char name[] = "IPv4_x";
    const cim_ipProtocolEndpoint record = {name, nullptr, nullptr, 2, 2, 1};
    seam.returns("GetMoinitorInfo", 1);
    Built built =
        build(IPProtocolEndpoint, enumeration, [&](const CMPIObjectPath *reference, CMPIStatus *status) {
            return _makePath_ZT_Marovelton_IPProtocolEndpoint(reference, &record, status);
        });
    EXPECT_FALSE(built.path);
    EXPECT_EQ(built.rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(built.message, "Could not get monitor information from database.");
    built = build(IPProtocolEndpoint, enumeration, [&](const CMPIObjectPath *reference, CMPIStatus *status) {
        return _makeInst_ZT_Marovelton_IPProtocolEndpoint(reference, &record, status);
    });
    EXPECT_FALSE(built.instance);
    EXPECT_EQ(built.message, "Could not get monitor information from database.");
}

// ---- the link state and the addresses ----

TEST_F(Endpoints, AnInterfaceThatIsDown)
{
    seam.commands["/sbin/ifconfig eth0"] = {.output = {}};
    seam.commands["/sbin/ifconfig | grep eth0"] = {.status = 1, .output = {}};
    EXPECT_EQ(only("IPv4_eth0").properties, properties("IPv4_eth0", "NULL", "NULL", 3));
}

TEST_F(Endpoints, AnInterfaceWithoutAnAddress)
{
    interfaceIsUp("eth0", "          UP BROADCAST MULTICAST  MTU:1500  Metric:1\n");
    EXPECT_EQ(only("IPv4_eth0").properties, properties("IPv4_eth0", "NULL", "NULL", 2));
}

TEST_F(Endpoints, TheNewerLayoutHasNoAddress)
{
    interfaceIsUp("eth0", "        inet 192.168.1.20  netmask 255.255.255.0  broadcast 192.168.1.255\n");
    EXPECT_EQ(only("IPv4_eth0").properties, properties("IPv4_eth0", "NULL", "NULL", 2));
}

TEST_F(Endpoints, TheLinkStateIsUnknownWithoutOutput)
{
    seam.commands["/sbin/ifconfig | grep eth0"] = {.status = 0, .output = {}};
    EXPECT_EQ(_get_port_status("eth0"), 0);
    seam.commands["/sbin/ifconfig | grep eth0"] = {.status = 0, .noOutput = true};
    EXPECT_EQ(_get_port_status("eth0"), 0);
    seam.commands["/sbin/ifconfig | grep eth0"] = {.status = 2, .output = {"a line\n"}};
    EXPECT_EQ(_get_port_status("eth0"), 3);
    EXPECT_EQ(_get_port_status("eth9"), 3); // the command cannot run
}

TEST_F(Endpoints, OddOutputIsTakenForWhatItIs)
{
    struct {
        const char *line, *address, *mask;
    } const lines[] = {
        {"inet addr:10.0.0.1 Mask:255.0.0.0\n", "10.0.0.1", "255.0.0.0"},
        {"  inet addr:10.0.0.1", "10.0.0.1", "NULL"},
        {"  inet addr:10.0.0.1\n", "10.0.0.1", "NULL"},
        {"  inet addr:  Mask:255.0.0.0\n", "", "255.0.0.0"},
        {"  inet addr:10.0.0.1  Mask:", "10.0.0.1", ""},
        {"  inet addr:10.0.0.1  Mask:255.0.0.0", "10.0.0.1", "255.0.0.0"},
        {"\n", "NULL", "NULL"},
        {"", "NULL", "NULL"},
        {"inet addr", "NULL", "NULL"},
        // The address is what follows the first colon of the line.
        {"  alias:eth0:1 inet addr:10.0.0.1  Mask:255.0.0.0\n", "eth0:1", "255.0.0.0"},
        {"  alias: inet addr:10.0.0.1\n", "", "NULL"},
    };
    for (const auto &row : lines) {
        interfaceIsUp("eth0", row.line);
        EXPECT_EQ(only("IPv4_eth0").properties, properties("IPv4_eth0", row.address, row.mask, 2))
            << row.line;
    }
}

TEST_F(Endpoints, ALongLineIsTakenWhole)
{
    const std::string address(4000, '1');
    interfaceIsUp("eth0", "  inet addr:" + address + "  Mask:" + address + "\n");
    EXPECT_EQ(only("IPv4_eth0").properties, properties("IPv4_eth0", address.c_str(), address.c_str(), 2));
}

TEST_F(Endpoints, AnInterfaceWhoseCommandsCannotRun)
{
    seam.commands.erase("/sbin/ifconfig eth0");
    seam.commands.erase("/sbin/ifconfig | grep eth0");
    EXPECT_EQ(only("IPv4_eth0").properties, properties("IPv4_eth0", "NULL", "NULL", 3));
}

// ---- names ----

TEST_F(Endpoints, NamesThatAShellWouldReadAreNeverPutIntoACommand)
{
    for (const char *name : {"a;reboot", "$(id)", "`id`", "a|b", "a&b",    "a b", "a>b", "a'b",
                             "a\"b",     "a\\b",  "a*b",  "-a",  "--help", "-",   "a?b", "a(b",
                             "a#b",      "a!b",   "a~b",  "a%b", "a=b",    "a,b", "a+b", "\xC3\xA9th"}) {
        SCOPED_TRACE(name);
        interfaces({std::string(name) + ": 1 2 3\n"});
        const Answer answer = enumerate(IPProtocolEndpoint, enumeration);
        EXPECT_STATUS(answer, CMPI_RC_OK, "");
        EXPECT_EQ(answer.instance().properties,
                  properties(("IPv4_" + std::string(name)).c_str(), "NULL", "NULL", 3));
        EXPECT_EQ(seam.count("runcommand"), 1);
        seam.forgetCalls();
    }
}

TEST_F(Endpoints, NamesMayHaveLettersDigitsAndFourSigns)
{
    interfaces({"  br-lan.10_x@eth0: 1 2 3\n"});
    interfaceIsUp("br-lan.10_x@eth0", "  inet addr:10.9.8.7  Mask:255.255.0.0\n");
    EXPECT_EQ(only("IPv4_br-lan.10_x@eth0").properties,
              properties("IPv4_br-lan.10_x@eth0", "10.9.8.7", "255.255.0.0", 2));
}

TEST_F(Endpoints, LongAndEmptyNamesOverrunNothing)
{
    const std::string longName(500, 'n');
    const std::string cut(63, 'n');
    interfaces({longName + ": 1\n", ":\n", "\n", "no colon\n"});
    const Answer answer = enumerate(IPProtocolEndpoint, enumeration);
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    ASSERT_EQ(answer.instances().size(), 4U);
    EXPECT_EQ(answer.instances()[0].properties, properties(("IPv4_" + cut).c_str(), "NULL", "NULL", 3));
    EXPECT_EQ(answer.instances()[1].properties, properties("IPv4_", "NULL", "NULL", 3));
    EXPECT_EQ(answer.instances()[2].properties, properties("IPv4_", "NULL", "NULL", 3));
    EXPECT_EQ(answer.instances()[3].properties, properties("IPv4_no colon\n", "NULL", "NULL", 3));
}

TEST_F(Endpoints, TheEndpointNameIsAHeapText)
{
    char *name = _get_ipProtocolEndpoint_name("eth0");
    EXPECT_STREQ(name, "IPv4_eth0");
    free(name);
}

// ---- GetInstance ----

TEST_F(Endpoints, GetInstanceLooksAtTheNameAlone)
{
    const Answer answer = get(IPProtocolEndpoint, endpoint("IPv4_eth0"));
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_EQ(answer.done, 1);
    EXPECT_EQ(answer.instance().properties, properties("IPv4_eth0", "192.168.1.20", "255.255.255.0", 2));
    EXPECT_STATUS(get(IPProtocolEndpoint, endpoint("IPv4_eth0").with("SystemName", "elsewhere")), CMPI_RC_OK,
                  "");
}

TEST_F(Endpoints, GetInstanceNeedsTheName)
{
    for (const NamedValue &missing : everyMissingString()) {
        EXPECT_STATUS(get(IPProtocolEndpoint, enumeration.with("Name", missing.value)), CMPI_RC_ERR_NOT_FOUND,
                      "Could not get IPProtocolEndpointID.")
            << missing.name;
    }
    EXPECT_STATUS(get(IPProtocolEndpoint, enumeration.with("Name", uint16(3))), CMPI_RC_ERR_NOT_FOUND,
                  "Could not get IPProtocolEndpointID.");
}

TEST_F(Endpoints, NamesHaveTheirCase)
{
    for (const char *name : {"ipv4_eth0", "IPv4_ETH0", "eth0", "IPv4_eth", "IPv4_eth00", ""}) {
        EXPECT_STATUS(get(IPProtocolEndpoint, endpoint(name)), CMPI_RC_ERR_NOT_FOUND,
                      "IPProtocolEndpoint does not exist.")
            << name;
    }
}

TEST_F(Endpoints, GetInstanceSaysWhenTheInstanceCannotBeBuilt)
{
    seam.returns("GetMoinitorInfo", 1);
    const Answer answer = get(IPProtocolEndpoint, endpoint("IPv4_eth0"));
    EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, "Could not create IPProtocolEndpointID instance.");
    EXPECT_TRUE(answer.returned.empty());
}

TEST_F(Endpoints, TheLookupHandsTheRecordOver)
{
    cim_ipProtocolEndpoint *record = nullptr;
    EXPECT_EQ(get_ipProtocolEndpoint_data("IPv4_lo", &record), 0);
    ASSERT_NE(record, nullptr);
    EXPECT_STREQ(record->name, "IPv4_lo");
    EXPECT_STREQ(record->address, "127.0.0.1");
    EXPECT_STREQ(record->subnetmask, "255.0.0.0");
    EXPECT_EQ(record->enabled, 2);
    EXPECT_EQ(record->type, 2);
    EXPECT_EQ(record->version, 1);
    free_ipProtocolEndpoint(record);

    EXPECT_EQ(get_ipProtocolEndpoint_data("IPv4_none", &record), 0);
    EXPECT_EQ(record, nullptr);
    interfaces({});
    EXPECT_EQ(get_ipProtocolEndpoint_data("IPv4_lo", &record), -1);
    EXPECT_EQ(record, nullptr);
    seam.commands["cat /proc/net/dev"] = {.status = 1, .noOutput = true};
    EXPECT_EQ(get_ipProtocolEndpoint_data("IPv4_lo", &record), -1);
    free_ipProtocolEndpoint(nullptr);
    free_ipPEndpointList(nullptr);
}

TEST_F(Endpoints, TheFirstOfTwoOfOneNameIsFound)
{
    interfaces({"  eth0: 1\n", "  eth0: 2\n"});
    seam.returnsAt("runcommand(/sbin/ifconfig | grep eth0)", 2, 1); // the second is down
    const Answer answer = enumerate(IPProtocolEndpoint, enumeration);
    ASSERT_EQ(answer.instances().size(), 2U);
    EXPECT_EQ(answer.instances()[1].properties, properties("IPv4_eth0", "192.168.1.20", "255.255.255.0", 3));
    EXPECT_EQ(only("IPv4_eth0").properties, properties("IPv4_eth0", "192.168.1.20", "255.255.255.0", 2));
}

TEST_F(Endpoints, ARecordIsFilledForTheNameOfItsEndpoint)
{
    auto *node = static_cast<ipPEndpointList *>(calloc(1, sizeof(ipPEndpointList)));
    EXPECT_EQ(_ipProtocolEndpoint_data("IPv4_eth0", node), 0);
    EXPECT_EQ(node->next, nullptr);
    ASSERT_NE(node->sptr, nullptr);
    EXPECT_STREQ(node->sptr->name, "IPv4_eth0");
    EXPECT_STREQ(node->sptr->address, "192.168.1.20");
    EXPECT_STREQ(node->sptr->subnetmask, "255.255.255.0");
    EXPECT_EQ(node->sptr->enabled, 2);
    EXPECT_EQ(node->sptr->type, 2);
    EXPECT_EQ(node->sptr->version, 1);
    EXPECT_EQ(seam.calls,
              (std::vector<std::string>{"runcommand(/sbin/ifconfig | grep eth0)", "freeresultbuf()",
                                        "runcommand(/sbin/ifconfig eth0)", "freeresultbuf()"}));
    free_ipPEndpointList(node);
}

// ---- torture ----

TEST_F(Endpoints, EveryCallMayFail)
{
    // A command that cannot run leaves values out; that is no error to the client.
    const Torture torture = {.prepare = [this] { SetUp(); }, .harmless = {"runcommand"}};
    checkTorture([] { return enumerateNames(IPProtocolEndpoint, enumeration); }, torture);
    checkTorture([] { return enumerate(IPProtocolEndpoint, enumeration); }, torture);
    checkTorture([] { return get(IPProtocolEndpoint, endpoint("IPv4_eth0")); }, torture);
}
