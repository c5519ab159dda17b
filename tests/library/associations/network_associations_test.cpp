// SPDX-License-Identifier: Apache-2.0
// The associations of the network objects: how candidates are matched, and the classes through their
// factories.

#include "library/associations/association_world.h"
#include "network/network_objects.h"

using namespace association_world;

ASSOCIATION_CLASS(ElementSettingData);
ASSOCIATION_CLASS(HostedAccessPoint);
ASSOCIATION_CLASS(ProvidesEndpoint);
ASSOCIATION_CLASS(SAPSAPDependency);
ASSOCIATION_CLASS(OrderedComponent);

namespace
{

const Association provides = {"ZT_Marovelton_ProvidesEndpoint", "ZT_Marovelton_IPProtocolEndpoint",
                              "ZT_Marovelton_RemoteManagementService", "Dependent", "Antecedent"};
const Association settings = {"ZT_Marovelton_ElementSettingData", "ZT_Marovelton_IPNetworkConnection",
                              "ZT_Marovelton_DHCPSettingData", "ManagedElement", "SettingData"};

} // namespace

// ---- match_instance ----

TEST(MatchInstance, TheManagementEndpointIsTheOneThatMatches)
{
    const struct {
        const char *key1;
        const char *key2;
        int direction;
        int match;
    } cases[] = {
        {"ZT_Marovelton_RemoteManagementService", "IPv4_eth0", 1, 1},
        {"ZT_Marovelton_RemoteManagementService", "IPv4_lo", 1, 0},
        {"IPv4_eth0", "IPv4_lo", 1, 0},
        {"IPv4_eth0", "ZT_Marovelton_RemoteManagementService", 2, 1},
        {"IPv4_lo", "ZT_Marovelton_RemoteManagementService", 2, 0},
        {"IPv4_lo", "IPv4_eth0", 2, 0},
        {"x", "ipv4_eth0", 1, 0},
        {"x", "IPv4_eth01", 1, 0},
        {"x", "IPv4_eth", 1, 0},
        {"x", "", 1, 0},
        {"IPv4_eth0", "IPv4_eth0", 0, 0},
        {"IPv4_eth0", "IPv4_eth0", 3, 0},
        {"IPv4_eth0", "IPv4_eth0", -1, 0},
        {nullptr, "IPv4_eth0", 1, 1},
        {"IPv4_eth0", nullptr, 1, 0},
        {nullptr, nullptr, 1, 0},
        {nullptr, nullptr, 2, 0},
    };
    for (const auto &it : cases) {
        int match = 0;
        forgetTrace();
        EXPECT_EQ(match_instance(it.key1, it.key2, &match, it.direction), 0);
        EXPECT_EQ(match, it.match) << (it.key1 ? it.key1 : "null") << ", " << (it.key2 ? it.key2 : "null")
                                   << ", " << it.direction;
        EXPECT_EQ(traceText(), std::string("--- match_instance called---\n--- match_instance key1-> ") +
                                   (it.key1 ? it.key1 : "(null)") + " key2 -> " +
                                   (it.key2 ? it.key2 : "(null)") + "---\n");
        // It is never cleared.
        match = 1;
        EXPECT_EQ(match_instance(it.key1, it.key2, &match, it.direction), 0);
        EXPECT_EQ(match, 1);
    }
}

// ---- match_instance_elementsetting ----

TEST(MatchElementSetting, TheSettingOfTheModeMatchesOnceTheOthersAlways)
{
    const char *dhcp = "ZT:Marovelton_DHCPSettingData";
    const char *staticData = "ZT:Marovelton_ExtendedStaticIPAssignmentSettingData";
    const char *assignment = "ZT:Marovelton_IPAssignmentSettingData";
    const struct {
        const char *key2;
        int direction;
        int count;
        int mode;
        int match;
        int countAfter;
    } cases[] = {
        // the expected setting
        {dhcp, 2, 0, 0, 1, 1},
        {dhcp, 2, 1, 0, 0, 1},
        {dhcp, 2, 2, 0, 0, 2},
        {staticData, 2, 0, 1, 1, 1},
        {staticData, 2, 1, 1, 0, 1},
        {"", 2, 0, 2, 1, 1}, // in other modes the empty text is expected
        {"", 2, 1, 2, 0, 1},
        {"", 2, 0, -1, 1, 1},
        // any other
        {staticData, 2, 0, 0, 1, 0},
        {staticData, 2, 1, 0, 1, 1},
        {assignment, 2, 0, 0, 1, 0},
        {assignment, 2, 1, 1, 1, 1},
        {dhcp, 2, 0, 1, 1, 0},
        {dhcp, 2, 1, 2, 1, 1},
        {"zt:marovelton_dhcpsettingdata", 2, 1, 0, 1, 1},
        {"", 2, 1, 0, 1, 1},
        {nullptr, 2, 1, 0, 1, 1},
        // the other direction
        {dhcp, 1, 0, 0, 1, 0},
        {dhcp, 1, 1, 0, 1, 1},
        {"anything", 1, 5, 7, 1, 5},
        // no direction
        {dhcp, 0, 0, 0, 0, 0},
        {assignment, 3, 0, 0, 0, 0},
    };
    for (const auto &it : cases) {
        SCOPED_TRACE(std::string(it.key2 ? it.key2 : "null") + ", direction " + std::to_string(it.direction) +
                     ", count " + std::to_string(it.count) + ", mode " + std::to_string(it.mode));
        int match = 0;
        int count = it.count;
        forgetTrace();
        EXPECT_EQ(match_instance_elementsetting("source", it.key2, &match, it.direction, &count, it.mode), 0);
        EXPECT_EQ(match, it.match);
        EXPECT_EQ(count, it.countAfter);
        const std::string key2 = it.key2 ? it.key2 : "(null)";
        std::string expected = "--- match_instance_elementsetting called---\n"
                               "--- match_instance_elementsetting key1-> source key2 -> " +
                               key2 + " IPConfig_Count -> " + std::to_string(it.count) + "--- IP Mode -> " +
                               std::to_string(it.mode) + "\nInstanceID is " +
                               (it.mode == 0   ? "ZT:Marovelton_DHCPSettingData"
                                : it.mode == 1 ? "ZT:Marovelton_ExtendedStaticIPAssignmentSettingData"
                                               : "") +
                               "\n";
        if (it.countAfter != it.count) {
            expected += "IPConfig_Count is 0 .Returning instance " + key2 + "**\n";
        }
        EXPECT_EQ(traceText(), expected);
        // It is never cleared.
        match = 1;
        count = it.count;
        EXPECT_EQ(match_instance_elementsetting("source", it.key2, &match, it.direction, &count, it.mode), 0);
        EXPECT_EQ(match, 1);
    }
}

// ---- get_instance_from_key ----

namespace
{

struct FromKey {
    int result = 12345;
    CMPIrc rc = CMPI_RC_OK;
    std::string message;
    int match = 0;
    int ipConfigCount = 0;
    int isCurrent = 0;
    std::string trace;
};

struct Target {
    std::optional<Instance> instance = {};
    std::optional<Path> path = {};
};

FromKey fromKey(const char *assocClass, const Path &source, const Target &target, int ipMode = 0,
                int ipConfigCount = 0)
{
    FromKey is;
    is.ipConfigCount = ipConfigCount;
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    char isCurrent = 77;
    forgetTrace();
    is.result = get_instance_from_key(broker.newPath(source),
                                      target.instance ? broker.newInstance(*target.instance) : nullptr,
                                      target.path ? broker.newPath(*target.path) : nullptr, &broker, &status,
                                      &is.match, assocClass, &is.ipConfigCount, ipMode, &isCurrent);
    is.rc = status.rc;
    is.message = test_support::textOf(status.msg, "");
    is.isCurrent = isCurrent;
    is.trace = traceText();
    return is;
}

void expectNoKey(const FromKey &is, CMPIrc rc, const std::string &message)
{
    EXPECT_EQ(is.result, -1);
    EXPECT_EQ(is.rc, rc);
    EXPECT_EQ(is.message, message);
    EXPECT_EQ(is.match, 0);
}

} // namespace

TEST(InstanceFromKey, EndpointsInBothDirections)
{
    const char *const providesEndpoint = "ZT_Marovelton_ProvidesEndpoint";
    const char *const dependency = "ZT_Marovelton_SAPSAPDependency";
    const std::string rightLeft = "--- get_instance_from_key Association is ASSOC_RIGHT_LEFT.---\n";
    const std::string leftRight = "--- get_instance_from_key Association is ASSOC_LEFT_RIGHT---\n";
    const struct {
        const char *assocClass;
        Path source;
        Path target;
        int direction;
        int match;
    } cases[] = {
        {providesEndpoint, remoteServicePath(), endpointPath("IPv4_eth0"), 1, 1},
        {providesEndpoint, remoteServicePath(), endpointPath("IPv4_lo"), 1, 0},
        {providesEndpoint, wsServicePath(), endpointPath("IPv4_eth0"), 1, 1},
        {providesEndpoint, wsServicePath(), endpointPath("IPv4_lo"), 1, 0},
        {providesEndpoint, endpointPath("IPv4_eth0"), remoteServicePath(), 2, 1},
        {providesEndpoint, endpointPath("IPv4_lo"), remoteServicePath(), 2, 0},
        {dependency, connectionPath(), endpointPath("IPv4_eth0"), 1, 1},
        {dependency, connectionPath(), endpointPath("IPv4_lo"), 1, 0},
        {dependency, wsServicePath(), endpointPath("IPv4_eth0"), 1, 1},
        {dependency, endpointPath("IPv4_eth0"), connectionPath(), 2, 1},
        {dependency, endpointPath("IPv4_lo"), connectionPath(), 2, 0},
        // The class of the source is compared exactly; everything else has direction 2.
        {providesEndpoint, remoteServicePath().ofClass("ZT_MAROVELTON_REMOTEMANAGEMENTSERVICE"),
         endpointPath("IPv4_eth0"), 2, 0},
        {providesEndpoint, connectionPath(), endpointPath("IPv4_eth0"), 2, 0},
        {dependency, remoteServicePath(), endpointPath("IPv4_eth0"), 2, 0},
    };
    for (const auto &it : cases) {
        SCOPED_TRACE(std::string(it.assocClass) + " from " + describe(it.source) + " to " +
                     describe(it.target));
        const char *sourceKey = it.direction == 1 ? "CreationClassName" : "Name";
        const char *targetKey = it.direction == 1 ? "Name" : "CreationClassName";
        const auto text = [](const Path &path, const char *key) {
            return findEntry(path.keys, key)->value.text;
        };
        const std::string matching = "--- match_instance called---\n--- match_instance key1-> " +
                                     text(it.source, sourceKey) + " key2 -> " + text(it.target, targetKey) +
                                     "---\n";
        const std::string begin =
            "--- get_instance_from_key called---\n" + (it.direction == 1 ? rightLeft : leftRight) +
            "get_instance_from_key : Source Key is " + text(it.source, sourceKey) + "\n";
        const std::string end = "target instance key is " + text(it.target, targetKey) + " \n" + matching;

        const FromKey byPath = fromKey(it.assocClass, it.source, {.path = it.target});
        EXPECT_EQ(byPath.result, 0);
        EXPECT_EQ(byPath.rc, CMPI_RC_OK);
        EXPECT_EQ(byPath.match, it.match);
        EXPECT_EQ(byPath.isCurrent, 77) << "endpoints are no settings";
        EXPECT_EQ(byPath.trace, begin + end);

        const FromKey byInstance = fromKey(it.assocClass, it.source, {.instance = objectAt(it.target)});
        EXPECT_EQ(byInstance.result, 0);
        EXPECT_EQ(byInstance.match, it.match);
        EXPECT_EQ(byInstance.trace, begin + "get_instance_from_key : 1111\n" + end);
    }
}

TEST(InstanceFromKey, ASourceWhoseClassCannotBeRead)
{
    for (const TextForm form : {TextForm::noString, TextForm::noCharacters, TextForm::noHandle}) {
        Path source = remoteServicePath();
        source.classNameForm = form;
        for (const char *assocClass :
             {"ZT_Marovelton_ProvidesEndpoint", "ZT_Marovelton_ElementSettingData", "Any"}) {
            const FromKey is = fromKey(assocClass, source, {.path = endpointPath("IPv4_eth0")});
            expectNoKey(is, CMPI_RC_ERR_FAILED, "Could not get classname of source object path.");
            EXPECT_EQ(is.trace,
                      "--- get_instance_from_key called---\n"
                      "--- get_instance_from_key Could not get classname of source object path.---\n");
        }
    }
}

TEST(InstanceFromKey, MissingKeys)
{
    const struct {
        const char *assocClass;
        Path source;
        const char *sourceKey;
        Path target;
        const char *targetKey;
    } cases[] = {
        {"ZT_Marovelton_ProvidesEndpoint", remoteServicePath(), "CreationClassName",
         endpointPath("IPv4_eth0"), "Name"},
        {"ZT_Marovelton_ProvidesEndpoint", endpointPath("IPv4_eth0"), "Name", remoteServicePath(),
         "CreationClassName"},
        {"ZT_Marovelton_SAPSAPDependency", connectionPath(), "CreationClassName", endpointPath("IPv4_eth0"),
         "Name"},
        {"ZT_Marovelton_SAPSAPDependency", endpointPath("IPv4_eth0"), "Name", connectionPath(),
         "CreationClassName"},
        {"ZT_Marovelton_ElementSettingData", connectionPath(), "CreationClassName", dhcpPath(), "InstanceID"},
        {"ZT_Marovelton_ElementSettingData", dhcpPath(), "InstanceID", connectionPath(), "CreationClassName"},
    };
    std::vector<NamedValue> missing = everyMissingString();
    missing.push_back({"a number", uint32(7)});
    missing.push_back({"a reference", reference(monitorPath())});
    for (const auto &it : cases) {
        for (const NamedValue &value : missing) {
            SCOPED_TRACE(describe(it.source) + ", " + value.name);
            expectNoKey(
                fromKey(it.assocClass, it.source.with(it.sourceKey, value.value), {.path = it.target}),
                CMPI_RC_ERR_NOT_FOUND, "Could not get key of source class.");
            expectNoKey(
                fromKey(it.assocClass, it.source, {.path = it.target.with(it.targetKey, value.value)}),
                CMPI_RC_ERR_FAILED, "Could not get key of instance.");
            expectNoKey(fromKey(it.assocClass, it.source,
                                {.instance = objectAt(it.target.with(it.targetKey, value.value))}),
                        CMPI_RC_ERR_FAILED, "Could not get key of instance.");
        }
        expectNoKey(fromKey(it.assocClass, it.source, {.instance = instance(path(it.assocClass))}),
                    CMPI_RC_ERR_FAILED, "Could not get key of instance.");
        expectNoKey(fromKey(it.assocClass, it.source, {}), CMPI_RC_ERR_FAILED,
                    "Could not get key of instance.");
        // Both missing: the source's is asked for first.
        expectNoKey(fromKey(it.assocClass, it.source.without(it.sourceKey), {}), CMPI_RC_ERR_NOT_FOUND,
                    "Could not get key of source class.");
        broker.freeObjects();
    }
}

TEST(InstanceFromKey, KeysHandedAsCharactersAreRead)
{
    EXPECT_EQ(fromKey("ZT_Marovelton_ProvidesEndpoint", remoteServicePath(),
                      {.path = endpointPath("IPv4_eth0").with("Name", chars("IPv4_eth0"))})
                  .match,
              1);
    EXPECT_EQ(fromKey("ZT_Marovelton_ProvidesEndpoint", endpointPath("x").with("Name", chars("IPv4_eth0")),
                      {.path = remoteServicePath()})
                  .match,
              1);
}

TEST(InstanceFromKey, LongKeysAreCutToTheBuffer)
{
    for (const size_t length : {98u, 99u, 100u, 101u, 500u, 100000u}) {
        const std::string kept(std::min<size_t>(length, 99), 'k');
        const FromKey source = fromKey("ZT_Marovelton_ProvidesEndpoint",
                                       endpointPath(std::string(length, 'k')), {.path = remoteServicePath()});
        EXPECT_EQ(source.result, 0);
        EXPECT_NE(source.trace.find("Source Key is " + kept + "\n"), std::string::npos);
        const FromKey target = fromKey("ZT_Marovelton_ProvidesEndpoint", remoteServicePath(),
                                       {.path = endpointPath(std::string(length, 'k'))});
        EXPECT_EQ(target.result, 0);
        EXPECT_NE(target.trace.find("target instance key is " + kept + " \n"), std::string::npos);
    }
}

TEST(InstanceFromKey, SettingsAndTheirIsCurrent)
{
    const char *const elementSetting = "ZT_Marovelton_ElementSettingData";
    const struct {
        Path source;
        Path target;
        int mode;
        int count;
        int match;
        int countAfter;
        int isCurrent;
    } cases[] = {
        // from the connection: direction 2
        {connectionPath(), dhcpPath(), 0, 0, 1, 1, 1},
        {connectionPath(), dhcpPath(), 0, 1, 0, 1, 2}, // no second match in a request
        {connectionPath(), staticPath(), 0, 0, 1, 0, 2},
        {connectionPath(), assignmentPath(), 0, 1, 1, 1, 2},
        {connectionPath(), staticPath(), 1, 0, 1, 1, 1},
        {connectionPath(), staticPath(), 1, 1, 0, 1, 2},
        {connectionPath(), dhcpPath(), 1, 0, 1, 0, 2},
        {connectionPath(), assignmentPath(), 1, 0, 1, 0, 2},
        {connectionPath(), dhcpPath(), 2, 0, 1, 0, 2},
        {connectionPath(), staticPath(), 2, 0, 1, 0, 2},
        // from a setting: direction 1
        {dhcpPath(), connectionPath(), 0, 0, 1, 0, 1},
        {dhcpPath(), connectionPath(), 0, 1, 1, 1, 1},
        {dhcpPath(), connectionPath(), 1, 0, 1, 0, 2},
        {staticPath(), connectionPath(), 1, 0, 1, 0, 1},
        {staticPath(), connectionPath(), 0, 0, 1, 0, 2},
        {assignmentPath(), connectionPath(), 0, 0, 1, 0, 2},
        {assignmentPath(), connectionPath(), 1, 0, 1, 0, 2},
        {dhcpPath(), connectionPath(), 2, 0, 1, 0, 2},
    };
    for (const auto &it : cases) {
        for (const bool byPath : {true, false}) {
            SCOPED_TRACE(describe(it.source) + " to " + describe(it.target) + ", mode " +
                         std::to_string(it.mode) + ", count " + std::to_string(it.count));
            const FromKey is =
                fromKey(elementSetting, it.source,
                        byPath ? Target{.path = it.target} : Target{.instance = objectAt(it.target)}, it.mode,
                        it.count);
            EXPECT_EQ(is.result, 0);
            EXPECT_EQ(is.rc, CMPI_RC_OK);
            EXPECT_EQ(is.match, it.match);
            EXPECT_EQ(is.ipConfigCount, it.countAfter);
            EXPECT_EQ(is.isCurrent, it.isCurrent);
            const bool fromConnection = it.source == connectionPath();
            EXPECT_TRUE(is.trace.starts_with(
                "--- get_instance_from_key called---\nget_instance_from_key: IPConfig_Count is " +
                std::to_string(it.count) + "\n" +
                (fromConnection ? "--- get_instance_from_key Association is ASSOC_LEFT_RIGHT---\n"
                                : "--- get_instance_from_key Association is ASSOC_RIGHT_LEFT.---\n")))
                << is.trace;
            std::string end;
            if (it.match) {
                const auto key = [](const Path &path) {
                    const Entry *id = findEntry(path.keys, "InstanceID");
                    return (id ? id : findEntry(path.keys, "CreationClassName"))->value.text;
                };
                end = "IP_Mode is " + std::to_string(it.mode) + ",key2 is " + key(it.target) + ", key1 is " +
                      key(it.source) + " \n" +
                      (it.isCurrent == 1 ? "***Setting IsCurrent as 1*****\n"
                                         : "***else case Setting IsCurrent as 2*****\n");
            }
            EXPECT_TRUE(is.trace.ends_with(end)) << is.trace;
            EXPECT_EQ(is.trace.find("IsCurrent as") != std::string::npos, it.match == 1);
        }
    }
}

TEST(InstanceFromKey, AnyOtherAssociationIsNoMatch)
{
    for (const char *assocClass :
         {"ZT_Marovelton_OrderedComponent", "ZT_MAROVELTON_PROVIDESENDPOINT",
          "zt_marovelton_elementsettingdata", "", static_cast<const char *>(nullptr)}) {
        const FromKey is = fromKey(assocClass, path("ZT_Marovelton_RemoteManagementService"), {});
        EXPECT_EQ(is.result, 0);
        EXPECT_EQ(is.rc, CMPI_RC_OK);
        EXPECT_EQ(is.match, 0);
        EXPECT_EQ(is.isCurrent, 77);
        EXPECT_EQ(is.trace, "--- get_instance_from_key called---\n");
    }
}

// ---- _assoc_create_refs_1toN_ProvideEndpoint ----

namespace
{

const std::string endpointCalled = "--- _assoc_create_refs_1toN_ProvideEndpoint() called \n---";
const std::string endpointLeft = "--- _assoc_create_refs_1toN_ProvideEndPoint() leave \n---";

std::string traceOfCandidate(const std::string &name, bool isInstance)
{
    return "--- get_instance_from_key called---\n"
           "--- get_instance_from_key Association is ASSOC_RIGHT_LEFT.---\n"
           "get_instance_from_key : Source Key is ZT_Marovelton_RemoteManagementService\n" +
           std::string(isInstance ? "get_instance_from_key : 1111\n" : "") + "target instance key is " +
           name +
           " \n"
           "--- match_instance called---\n"
           "--- match_instance key1-> ZT_Marovelton_RemoteManagementService key2 -> " +
           name + "---\n";
}

/** A broker whose new instances have a key of their own already, as those of some object managers do. */
class BrokerWithNamedInstances
{
  public:
    explicit BrokerWithNamedInstances(const Entries &theProperties) : usual_(broker.eft), table_(*broker.eft)
    {
        properties() = theProperties;
        table_.newInstance = [](const CMPIBroker *, const CMPIObjectPath *path, CMPIStatus *status) {
            *status = {CMPI_RC_OK, nullptr};
            return static_cast<CMPIInstance *>(
                broker.newInstance({static_cast<const PathObject *>(path)->path, properties()}));
        };
        broker.eft = &table_;
    }
    ~BrokerWithNamedInstances()
    {
        broker.eft = usual_;
    }
    BrokerWithNamedInstances(const BrokerWithNamedInstances &) = delete;
    BrokerWithNamedInstances &operator=(const BrokerWithNamedInstances &) = delete;

  private:
    static Entries &properties()
    {
        static Entries list;
        return list;
    }
    const CMPIBrokerEncFT *usual_;
    CMPIBrokerEncFT table_;
};

} // namespace

TEST(ProvideEndpointWalk, AssociatorsHandOverTheManagementEndpoint)
{
    serveWorld();
    const EngineAnswer answer =
        createRefs(_assoc_create_refs_1toN_ProvideEndpoint, provides, remoteServicePath(), 1, 1);
    expectResult(answer, 0, CMPI_RC_OK, "");
    EXPECT_EQ(answer.instance(), objectAt(endpointPath("IPv4_eth0")));
    EXPECT_EQ(answer.upCalls,
              (std::vector<std::string>{"getInstance(" + describe(remoteServicePath()) + ")",
                                        "enumerateInstances(root/cimv2:ZT_Marovelton_IPProtocolEndpoint)"}));
    EXPECT_EQ(answer.trace, endpointCalled + traceOfCandidate("IPv4_lo", true) +
                                traceOfCandidate("IPv4_eth0", true) + "Returning instance here!!!..\n" +
                                endpointLeft);
    EXPECT_CALLS(answer, {});
}

TEST(ProvideEndpointWalk, AssociatorNamesHandOverTheManagementEndpoint)
{
    serveWorld();
    const EngineAnswer answer =
        createRefs(_assoc_create_refs_1toN_ProvideEndpoint, provides, remoteServicePath(), 0, 1);
    expectResult(answer, 0, CMPI_RC_OK, "");
    EXPECT_EQ(answer.path(), endpointPath("IPv4_eth0"));
    EXPECT_EQ(answer.trace, endpointCalled + traceOfCandidate("IPv4_lo", false) +
                                traceOfCandidate("IPv4_eth0", false) +
                                "associatorNames(): Returning instance here!!!..\n" + endpointLeft);
}

TEST(ProvideEndpointWalk, ReferencesHandOverTheAssociationToTheManagementEndpoint)
{
    serveWorld();
    const EngineAnswer answer =
        createRefs(_assoc_create_refs_1toN_ProvideEndpoint, provides, remoteServicePath(), 1, 0);
    expectResult(answer, 0, CMPI_RC_OK, "");
    EXPECT_EQ(answer.instance(),
              associationInstance("ZT_Marovelton_ProvidesEndpoint", "Dependent", endpointPath("IPv4_eth0"),
                                  "Antecedent", remoteServicePath()));
    EXPECT_EQ(answer.trace, endpointCalled + "targetName is ZT_Marovelton_IPProtocolEndpoint\n" +
                                traceOfCandidate("IPv4_lo", false) +
                                "targetName is ZT_Marovelton_IPProtocolEndpoint\n" +
                                traceOfCandidate("IPv4_eth0", false) +
                                "References(): Returning instance here!!!..\n" + endpointLeft);
}

TEST(ProvideEndpointWalk, ReferenceNamesEndAtTheFirstCandidate)
{
    serveWorld();
    const EngineAnswer answer =
        createRefs(_assoc_create_refs_1toN_ProvideEndpoint, provides, remoteServicePath(), 0, 0);
    expectResult(answer, -1, CMPI_RC_ERR_FAILED, "Could not get key of instance.");
    EXPECT_EQ(answer.returned.size(), 0u);
    EXPECT_EQ(answer.trace, endpointCalled + "targetName is ZT_Marovelton_IPProtocolEndpoint\n"
                                             "--- get_instance_from_key called---\n"
                                             "--- get_instance_from_key Association is ASSOC_RIGHT_LEFT.---\n"
                                             "get_instance_from_key : Source Key is "
                                             "ZT_Marovelton_RemoteManagementService\n"
                                             "get_instance_from_key : 1111\n");
    // From the endpoint it is the same with the other key.
    expectResult(
        createRefs(_assoc_create_refs_1toN_ProvideEndpoint, provides, endpointPath("IPv4_eth0"), 0, 0), -1,
        CMPI_RC_ERR_FAILED, "Could not get key of instance.");
    // Without a candidate there is nothing to fail.
    broker.classes["ZT_Marovelton_IPProtocolEndpoint"].instances.clear();
    expectResult(createRefs(_assoc_create_refs_1toN_ProvideEndpoint, provides, remoteServicePath(), 0, 0), 0,
                 CMPI_RC_OK, "");
}

TEST(ProvideEndpointWalk, ReferenceNamesMatchTheAssociationItself)
{
    serveWorld();
    {
        // Where the object manager's instance has the key, every candidate goes by it.
        const BrokerWithNamedInstances named(Entries{{"Name", "IPv4_eth0"}});
        const EngineAnswer answer = createRefs(_assoc_create_refs_1toN_ProvideEndpoint, provides,
                                               remoteServicePath().inNameSpace("root/studio"), 0, 0);
        expectResult(answer, 0, CMPI_RC_OK, "");
        const auto expected = [](const char *name) {
            return associationPath("ZT_Marovelton_ProvidesEndpoint", "Dependent",
                                   endpointPath(name).inNameSpace("root/studio"), "Antecedent",
                                   remoteServicePath().inNameSpace("root/studio"))
                .inNameSpace("root/studio");
        };
        EXPECT_EQ(answer.paths(), (std::vector<Path>{expected("IPv4_lo"), expected("IPv4_eth0")}));
        EXPECT_NE(answer.trace.find("ReferencesNames(): Returning instance here!!!..\n"), std::string::npos);
        EXPECT_TRUE(answer.trace.ends_with(endpointLeft));

        faults.arm("getObjectPath", 1);
        expectResult(createRefs(_assoc_create_refs_1toN_ProvideEndpoint, provides, remoteServicePath(), 0, 0),
                     -1, CMPI_RC_ERR_FAILED, "CMGetObjectPath(ci,rc)");
        faults.disarm();
    }
    const BrokerWithNamedInstances other(Entries{{"Name", "IPv4_lo"}});
    const EngineAnswer answer =
        createRefs(_assoc_create_refs_1toN_ProvideEndpoint, provides, remoteServicePath(), 0, 0);
    expectResult(answer, 0, CMPI_RC_OK, "");
    EXPECT_EQ(answer.returned.size(), 0u);
}

TEST(ProvideEndpointWalk, EveryMatchingCandidateIsMatchedByItself)
{
    serveWorld();
    // What one candidate matched does not count for the next.
    serve({endpointPath("IPv4_eth0"), endpointPath("IPv4_lo"),
           endpointPath("IPv4_eth0").with("SystemName", "other"), endpointPath("IPv4_eth1")});
    const EngineAnswer answer =
        createRefs(_assoc_create_refs_1toN_ProvideEndpoint, provides, remoteServicePath(), 0, 1);
    EXPECT_EQ(answer.paths(), (std::vector<Path>{endpointPath("IPv4_eth0"),
                                                 endpointPath("IPv4_eth0").with("SystemName", "other")}));
    EXPECT_EQ(createRefs(_assoc_create_refs_1toN_ProvideEndpoint, provides, remoteServicePath(), 1, 1)
                  .instances()
                  .size(),
              2u);
    EXPECT_EQ(createRefs(_assoc_create_refs_1toN_ProvideEndpoint, provides, remoteServicePath(), 1, 0)
                  .instances()
                  .size(),
              2u);
}

TEST(ProvideEndpointWalk, ACandidateWithoutItsKeyEndsTheRequest)
{
    serveWorld();
    serve({endpointPath("IPv4_eth0"), endpointPath("IPv4_lo").without("Name")});
    for (const auto &[inst, associators] : {std::pair(1, 1), std::pair(0, 1), std::pair(1, 0)}) {
        const EngineAnswer answer = createRefs(_assoc_create_refs_1toN_ProvideEndpoint, provides,
                                               remoteServicePath(), inst, associators);
        expectResult(answer, -1, CMPI_RC_ERR_FAILED, "Could not get key of instance.");
        EXPECT_EQ(answer.returned.size(), 1u) << "what came before it is handed over";
    }
    const Path source = remoteServicePath().without("CreationClassName");
    serve({source});
    for (const auto &[inst, associators] :
         {std::pair(1, 1), std::pair(0, 1), std::pair(1, 0), std::pair(0, 0)}) {
        expectResult(createRefs(_assoc_create_refs_1toN_ProvideEndpoint, provides, source, inst, associators),
                     -1, CMPI_RC_ERR_NOT_FOUND, "Could not get key of source class.");
    }
}

TEST(ProvideEndpointWalk, FailsAsTheEngineDoes)
{
    serveWorld();
    const auto walk = [](int inst, int associators) {
        return createRefs(_assoc_create_refs_1toN_ProvideEndpoint, provides, remoteServicePath(), inst,
                          associators);
    };
    const std::pair<int, int> operations[] = {{1, 1}, {0, 1}, {1, 0}, {0, 0}};
    for (const auto &[inst, associators] : operations) {
        ClassScript &source = broker.classes["ZT_Marovelton_RemoteManagementService"];
        source.getInstanceRc = CMPI_RC_ERR_NOT_FOUND;
        expectResult(walk(inst, associators), -1, CMPI_RC_ERR_NOT_FOUND, "Source object not found.");
        source.getInstanceRc = CMPI_RC_ERR_FAILED;
        expectResult(walk(inst, associators), -1, CMPI_RC_ERR_FAILED, "GetInstance of source object failed.");
        source.getInstanceRc = CMPI_RC_ERR_ACCESS_DENIED;
        source.getInstanceMessage = "not for you";
        expectResult(walk(inst, associators), -1, CMPI_RC_ERR_ACCESS_DENIED, "not for you");
        source.getInstanceRc = CMPI_RC_OK;
        source.getInstanceMessage = "";

        ClassScript &target = broker.classes["ZT_Marovelton_IPProtocolEndpoint"];
        target.enumerateRc = CMPI_RC_ERR_FAILED;
        expectResult(walk(inst, associators), -1, CMPI_RC_ERR_FAILED,
                     inst ? "CBEnumInstances( _broker, ctx, op, rc)"
                          : "CBEnumInstanceNames( _broker, ctx, op, rc)");
        target.enumerateRc = CMPI_RC_OK;
        target.emptyElement = 0;
        expectResult(walk(inst, associators), -1, CMPI_RC_ERR_FAILED, "CMGetNext( en, rc)");
        target.emptyElement.reset();

        for (const Fault flaw : everyFlaw) {
            SCOPED_TRACE(describe(flaw));
            faults.arm("newObjectPath", 1, flaw);
            expectResult(walk(inst, associators), 0, CMPI_RC_ERR_FAILED, "Create CMPIObjectPath failed.");
            faults.arm("newObjectPath", 2, flaw);
            expectResult(walk(inst, associators), -1, CMPI_RC_ERR_FAILED, "Create CMPIObjectPath failed.");
            if (!associators) {
                faults.arm("newInstance", 1, flaw);
                expectResult(walk(inst, associators), -1, CMPI_RC_ERR_FAILED, "Create CMPIInstance failed.");
            }
            faults.disarm();
        }
        expectResult(
            createRefs(_assoc_create_refs_1toN_ProvideEndpoint, provides, monitorPath(), inst, associators),
            0, CMPI_RC_ERR_FAILED, "referenced Class is not covered by this Association.");
    }
    // References look at the instances of the endpoints, and take the path of each.
    for (const Fault flaw : everyFlaw) {
        SCOPED_TRACE(describe(flaw));
        faults.arm("getObjectPath", 1, flaw);
        expectResult(walk(1, 0), -1, CMPI_RC_ERR_FAILED, "CMGetObjectPath(ci,rc)");
        faults.disarm();
    }
    EXPECT_EQ(walk(1, 0).upCalls.back(), "enumerateInstances(root/cimv2:ZT_Marovelton_IPProtocolEndpoint)");
    EXPECT_EQ(walk(0, 0).upCalls.back(),
              "enumerateInstanceNames(root/cimv2:ZT_Marovelton_IPProtocolEndpoint)");
    // An inst that is neither hands nothing over, and matches nothing.
    const EngineAnswer nothing = walk(2, 1);
    expectResult(nothing, 0, CMPI_RC_OK, "");
    EXPECT_EQ(nothing.trace, endpointCalled + endpointLeft);
}

// ---- _assoc_create_refs_1toN_ElementSetting ----

namespace
{

struct ElementSettingWalk : testing::Test {
    ElementSettingWalk()
    {
        serveWorld();
    }

    EngineAnswer walk(const Association &association, const Path &source, int inst, int associators) const
    {
        return createRefs(_assoc_create_refs_1toN_ElementSetting, association, source, inst, associators);
    }
    Association with(const char *rightClass) const
    {
        Association association = settings;
        association.rightClass = rightClass;
        return association;
    }
};

} // namespace

TEST_F(ElementSettingWalk, IsCurrentByTheMode)
{
    const struct {
        const char *rightClass;
        Path path;
        int currentMode;
    } ends[] = {
        {"ZT_Marovelton_DHCPSettingData", dhcpPath(), 0},
        {"ZT_Marovelton_ExtendedStaticIPAssignmentSettingData", staticPath(), 1},
        {"ZT_Marovelton_IPAssignmentSettingData", assignmentPath(), -1},
    };
    for (const auto &end : ends) {
        for (const int mode : {0, 1, 2}) {
            for (const bool fromLeft : {true, false}) {
                SCOPED_TRACE(std::string(end.rightClass) + ", mode " + std::to_string(mode));
                seam.remote.IPConfigurationMode = mode;
                const EngineAnswer answer =
                    walk(with(end.rightClass), fromLeft ? connectionPath() : end.path, 1, 0);
                expectResult(answer, 0, CMPI_RC_OK, "");
                const uint16_t isCurrent = mode == end.currentMode ? 1 : 2;
                EXPECT_PROPERTIES(answer.instance(), {{"ManagedElement", reference(connectionPath())},
                                                      {"SettingData", reference(end.path)},
                                                      {"IsNext", uint16(2)},
                                                      {"IsCurrent", uint16(isCurrent)}});
                EXPECT_CALLS(answer, {"GetRemoteManagementServerInfo()"});
                EXPECT_NE(answer.trace.find("IP mode is " + std::to_string(mode) + "\n"), std::string::npos);
            }
        }
    }
}

TEST_F(ElementSettingWalk, TheSettingOfTheModeIsHandedOverOnce)
{
    seam.remote.IPConfigurationMode = 0;
    serve({dhcpPath(), dhcpPath(), identified("ZT_Marovelton_DHCPSettingData", "another"), dhcpPath()});
    for (int times = 0; times < 2; ++times) { // each request counts anew
        const EngineAnswer names = walk(settings, connectionPath(), 0, 1);
        expectResult(names, 0, CMPI_RC_OK, "");
        EXPECT_EQ(names.paths(),
                  (std::vector<Path>{dhcpPath(), identified("ZT_Marovelton_DHCPSettingData", "another")}));
        EXPECT_EQ(walk(settings, connectionPath(), 1, 1).instances().size(), 2u);
        EXPECT_EQ(walk(settings, connectionPath(), 1, 0).instances().size(), 2u);
    }
    seam.remote.IPConfigurationMode = 1;
    EXPECT_EQ(walk(settings, connectionPath(), 0, 1).paths().size(), 4u);
}

TEST_F(ElementSettingWalk, ReferenceNamesMatchTheAssociationItself)
{
    expectResult(walk(settings, connectionPath(), 0, 0), -1, CMPI_RC_ERR_FAILED,
                 "Could not get key of instance.");
    const BrokerWithNamedInstances named(Entries{{"InstanceID", "anything"}});
    const EngineAnswer answer = walk(settings, connectionPath(), 0, 0);
    expectResult(answer, 0, CMPI_RC_OK, "");
    EXPECT_EQ(answer.path(), associationPath("ZT_Marovelton_ElementSettingData", "ManagedElement",
                                             connectionPath(), "SettingData", dhcpPath()));
}

TEST_F(ElementSettingWalk, WithoutTheModeThereIsNothing)
{
    seam.returns("GetRemoteManagementServerInfo", -1);
    for (const char *className : {"ZT_Marovelton_ElementSettingData", "ZT_Marovelton_OrderedComponent"}) {
        for (const auto &[inst, associators] :
             {std::pair(1, 1), std::pair(0, 1), std::pair(1, 0), std::pair(0, 0)}) {
            Association association = settings;
            association.className = className;
            const EngineAnswer answer = walk(association, connectionPath(), inst, associators);
            expectResult(answer, 0, CMPI_RC_ERR_FAILED, "Failed to get remote management info.");
            EXPECT_EQ(answer.returned.size(), 0u);
            EXPECT_EQ(answer.upCalls.size(), 0u);
        }
    }
}

TEST_F(ElementSettingWalk, FailsAsTheEngineDoes)
{
    broker.classes["ZT_Marovelton_DHCPSettingData"].enumerateRc = CMPI_RC_ERR_FAILED;
    expectResult(walk(settings, connectionPath(), 1, 1), -1, CMPI_RC_ERR_FAILED,
                 "CBEnumInstances( _broker, ctx, op, rc)");
    expectResult(walk(settings, connectionPath(), 0, 1), -1, CMPI_RC_ERR_FAILED,
                 "CBEnumInstanceNames( _broker, ctx, op, rc)");
    broker.classes["ZT_Marovelton_IPNetworkConnection"].getInstanceRc = CMPI_RC_ERR_NOT_FOUND;
    expectResult(walk(settings, connectionPath(), 1, 1), -1, CMPI_RC_ERR_NOT_FOUND,
                 "Source object not found.");
}

// ---- the classes ----

namespace
{

/** One network association: its constants. */
struct NetworkAssociation {
    const TestedClass *tested;
    const char *refLeft;
    std::vector<Path> left;
    const char *refRight;
    std::vector<Path> right; // by right class, in order
    Entries properties = {}; // beside the references, with a mode of 0
};

const NetworkAssociation associations[] = {
    {&HostedAccessPoint, "Antecedent", {computerPath()}, "Dependent", {connectionPath()}},
    {&ProvidesEndpoint,
     "Dependent",
     {endpointPath("IPv4_lo"), endpointPath("IPv4_eth0")},
     "Antecedent",
     {remoteServicePath(), wsServicePath()}},
    {&SAPSAPDependency,
     "Antecedent",
     {connectionPath()},
     "Dependent",
     {endpointPath("IPv4_lo"), endpointPath("IPv4_eth0")}},
    {&OrderedComponent,
     "GroupComponent",
     {assignmentPath()},
     "PartComponent",
     {dhcpPath(), staticPath()},
     {{"AssignedSequence", uint64(0)}}},
};

void PrintTo(const NetworkAssociation &association, std::ostream *stream)
{
    *stream << association.tested->name;
}

std::string nameOf(const testing::TestParamInfo<NetworkAssociation> &parameter)
{
    return parameter.param.tested->name;
}

struct NetworkAssociations : testing::TestWithParam<NetworkAssociation> {
    NetworkAssociations()
    {
        serveWorld();
        seam.remote.IPConfigurationMode = 0;
        broker.superclasses = {{it.tested->name, "CIM_Association"}};
    }
    /** The pairs in the order of an enumeration: by right class, by left object, by right object. */
    std::vector<std::pair<Path, Path>> pairs() const
    {
        std::vector<std::string> rightClasses;
        for (const Path &right : it.right) {
            if (rightClasses.empty() || rightClasses.back() != right.className) {
                rightClasses.push_back(right.className);
            }
        }
        std::vector<std::pair<Path, Path>> all;
        for (const std::string &rightClass : rightClasses) {
            for (const Path &left : it.left) {
                for (const Path &right : it.right) {
                    if (right.className == rightClass) {
                        all.emplace_back(left, right);
                    }
                }
            }
        }
        return all;
    }
    const NetworkAssociation &it = GetParam();
};

} // namespace

INSTANTIATE_TEST_SUITE_P(All, NetworkAssociations, testing::ValuesIn(associations), nameOf);

TEST_P(NetworkAssociations, SkeletonAndFunctionTables)
{
    checkSkeleton(*it.tested);
    CMPIAssociationMI *mi = it.tested->createAssociationMI(&broker, nullptr, nullptr);
    ASSERT_NE(mi, nullptr);
    EXPECT_EQ(mi->ft->miName, "association" + std::string(it.tested->name));
    const CMPIStatus cleaned = mi->ft->cleanup(mi, nullptr, 1);
    EXPECT_EQ(cleaned.rc, CMPI_RC_OK);
    EXPECT_EQ(cleaned.msg, nullptr);
}

TEST_P(NetworkAssociations, EnumerationsListEveryPairUnfiltered)
{
    std::vector<Path> names;
    std::vector<Instance> instances;
    for (const auto &[left, right] : pairs()) {
        names.push_back(associationPath(it.tested->name, it.refLeft, left, it.refRight, right));
        instances.push_back(
            associationInstance(it.tested->name, it.refLeft, left, it.refRight, right, it.properties));
    }
    const Answer listed = enumerateNames(*it.tested, path(it.tested->name));
    expectSuccess(listed, names.size());
    EXPECT_EQ(listed.paths(), names);
    const Answer all = enumerate(*it.tested, path(it.tested->name));
    expectSuccess(all, instances.size());
    EXPECT_EQ(all.instances(), instances);
    EXPECT_EQ(all.trace.find("get_instance_from_key"), std::string::npos);
}

TEST_P(NetworkAssociations, GetInstanceOfEveryPair)
{
    for (const auto &[left, right] : pairs()) {
        const Path target = associationPath(it.tested->name, it.refLeft, left, it.refRight, right);
        const Answer answer = get(*it.tested, target);
        expectSuccess(answer, 1);
        // The references alone: the properties of the pair belong to enumerations and references.
        EXPECT_EQ(answer.instance(),
                  associationInstance(it.tested->name, it.refLeft, left, it.refRight, right));
        const Answer noRight = get(*it.tested, target.without(it.refRight));
        EXPECT_STATUS(noRight, CMPI_RC_ERR_FAILED, "CMGetKey( cop, _RefRight, rc)");
        EXPECT_EQ(noRight.instance(), objectAt(left));
        const Answer noLeft = get(*it.tested, target.without(it.refLeft));
        EXPECT_STATUS(noLeft, CMPI_RC_ERR_FAILED, "Failed to create Instance.");
        EXPECT_EQ(noLeft.returned.size(), 0u);
        EXPECT_EQ(noLeft.done, 1);
    }
}

TEST_P(NetworkAssociations, Filters)
{
    // From an endpoint of the management interface, or an end that has none, both directions give something.
    const Path left = it.left.back();
    const Path right = it.right.back();
    for (const auto operation : {associators, associatorNames, references}) {
        for (const char *filter : {it.tested->name, "CIM_Association"}) {
            EXPECT_GT(operation(*it.tested, left, {.associationClass = filter}).returned.size(), 0u);
        }
        expectEmptySuccess(operation(*it.tested, left, {.associationClass = "CIM_Component"}));
        EXPECT_GT(operation(*it.tested, left, {.role = it.refLeft}).returned.size(), 0u);
        EXPECT_GT(operation(*it.tested, right, {.role = it.refRight}).returned.size(), 0u);
        expectEmptySuccess(operation(*it.tested, left, {.role = it.refRight}));
        expectEmptySuccess(operation(*it.tested, right, {.role = it.refLeft}));
        expectEmptySuccess(operation(*it.tested, monitorPath(), {}));
    }
    for (const auto operation : {associators, associatorNames}) {
        EXPECT_GT(operation(*it.tested, left, {.resultClass = right.className.c_str()}).returned.size(), 0u);
        expectEmptySuccess(operation(*it.tested, left, {.resultClass = left.className.c_str()}));
        EXPECT_GT(operation(*it.tested, right, {.resultRole = it.refLeft}).returned.size(), 0u);
        expectEmptySuccess(operation(*it.tested, right, {.resultRole = it.refRight}));
    }
}

TEST_P(NetworkAssociations, Torture)
{
    Torture torture = {.prepare = {}, .harmless = {"hasNext", "getNameSpace", "getCharPtr"}};
    broker.classes[it.left[0].className].instances.erase(
        broker.classes[it.left[0].className].instances.begin(),
        broker.classes[it.left[0].className].instances.end() - 1);
    checkTorture([&] { return enumerateNames(*it.tested, path(it.tested->name)); }, torture);
    checkTorture([&] { return enumerate(*it.tested, path(it.tested->name)); }, torture);
    const Path target =
        associationPath(it.tested->name, it.refLeft, it.left.back(), it.refRight, it.right.back());
    checkTorture([&] { return get(*it.tested, target); }, torture);
    for (const char *function : {"classPathIsA", "newObjectPath", "getClassName"}) {
        torture.harmless.push_back(function);
    }
    for (const auto operation : {associators, associatorNames, references, referenceNames}) {
        for (const Path &source : {it.left.back(), it.right.back()}) {
            checkTorture(
                [&] { return operation(*it.tested, source, {.associationClass = "CIM_Association"}); },
                torture);
        }
    }
}

// ---- ProvidesEndpoint ----

TEST(ProvidesEndpointAssociation, AServiceFindsTheManagementEndpointOnly)
{
    serveWorld();
    for (const Path &service : {remoteServicePath(), wsServicePath()}) {
        const Answer found = associators(ProvidesEndpoint, service);
        expectSuccess(found, 1);
        EXPECT_EQ(found.instance(), objectAt(endpointPath("IPv4_eth0")));
        EXPECT_EQ(associatorNames(ProvidesEndpoint, service).path(), endpointPath("IPv4_eth0"));
        const Answer tied = references(ProvidesEndpoint, service);
        expectSuccess(tied, 1);
        EXPECT_EQ(tied.instance(), associationInstance("ZT_Marovelton_ProvidesEndpoint", "Dependent",
                                                       endpointPath("IPv4_eth0"), "Antecedent", service));
    }
}

TEST(ProvidesEndpointAssociation, AnEndpointFindsItsServices)
{
    serveWorld();
    const Answer found = associators(ProvidesEndpoint, endpointPath("IPv4_eth0"));
    expectSuccess(found, 2);
    EXPECT_EQ(found.instances(),
              (std::vector<Instance>{objectAt(remoteServicePath()), objectAt(wsServicePath())}));
    EXPECT_EQ(associatorNames(ProvidesEndpoint, endpointPath("IPv4_eth0")).paths(),
              (std::vector<Path>{remoteServicePath(), wsServicePath()}));
    EXPECT_EQ(references(ProvidesEndpoint, endpointPath("IPv4_eth0")).instances().size(), 2u);
    for (const auto operation : {associators, associatorNames, references}) {
        expectEmptySuccess(operation(ProvidesEndpoint, endpointPath("IPv4_lo"), {}));
    }
}

TEST(ProvidesEndpointAssociation, ReferenceNamesFailAtTheFirstCandidate)
{
    serveWorld();
    for (const Path &source :
         {remoteServicePath(), wsServicePath(), endpointPath("IPv4_eth0"), endpointPath("IPv4_lo")}) {
        const Answer answer = referenceNames(ProvidesEndpoint, source);
        expectFailure(answer, CMPI_RC_ERR_FAILED, "Could not get key of instance.");
        EXPECT_EQ(answer.returned.size(), 0u);
        EXPECT_EQ(answer.upCalls.size(), 2u) << "no second right end";
    }
    broker.classes["ZT_Marovelton_IPProtocolEndpoint"].instances.clear();
    expectEmptySuccess(referenceNames(ProvidesEndpoint, remoteServicePath()));
}

// ---- SAPSAPDependency ----

TEST(SAPSAPDependencyAssociation, TheManagementEndpointOnly)
{
    serveWorld();
    EXPECT_EQ(associators(SAPSAPDependency, connectionPath()).instance(),
              objectAt(endpointPath("IPv4_eth0")));
    EXPECT_EQ(associatorNames(SAPSAPDependency, connectionPath()).path(), endpointPath("IPv4_eth0"));
    const Instance expected = associationInstance("ZT_Marovelton_SAPSAPDependency", "Antecedent",
                                                  connectionPath(), "Dependent", endpointPath("IPv4_eth0"));
    EXPECT_EQ(references(SAPSAPDependency, connectionPath()).instance(), expected);
    EXPECT_EQ(references(SAPSAPDependency, endpointPath("IPv4_eth0")).instance(), expected);
    EXPECT_EQ(associatorNames(SAPSAPDependency, endpointPath("IPv4_eth0")).path(), connectionPath());
    for (const auto operation : {associators, associatorNames, references}) {
        expectEmptySuccess(operation(SAPSAPDependency, endpointPath("IPv4_lo"), {}));
    }
    expectFailure(referenceNames(SAPSAPDependency, connectionPath()), CMPI_RC_ERR_FAILED,
                  "Could not get key of instance.");
}

TEST(SAPSAPDependencyAssociation, ReferenceNamesOfAnEndpoint)
{
    serveWorld();
    for (const char *name : {"IPv4_eth0", "IPv4_lo"}) {
        const Answer answer = referenceNames(SAPSAPDependency, endpointPath(name));
        expectFailure(answer, CMPI_RC_ERR_FAILED, "Could not get key of instance.");
        EXPECT_EQ(answer.returned.size(), 0u);
        EXPECT_EQ(answer.trace, endpointCalled +
                                    "targetName is ZT_Marovelton_IPNetworkConnection\n"
                                    "--- get_instance_from_key called---\n"
                                    "--- get_instance_from_key Association is ASSOC_LEFT_RIGHT---\n"
                                    "get_instance_from_key : Source Key is " +
                                    name + "\nget_instance_from_key : 1111\n");
    }
    const BrokerWithNamedInstances named(Entries{{"CreationClassName", "anything"}});
    const Answer answer = referenceNames(SAPSAPDependency, endpointPath("IPv4_eth0"));
    expectSuccess(answer, 1);
    EXPECT_EQ(answer.path(), associationPath("ZT_Marovelton_SAPSAPDependency", "Antecedent", connectionPath(),
                                             "Dependent", endpointPath("IPv4_eth0")));
    expectEmptySuccess(referenceNames(SAPSAPDependency, endpointPath("IPv4_lo")));
}

// ---- HostedAccessPoint and OrderedComponent ----

TEST(HostedAccessPointAssociation, ReferenceNames)
{
    serveWorld();
    const Path expected = associationPath("ZT_Marovelton_HostedAccessPoint", "Antecedent", computerPath(),
                                          "Dependent", connectionPath());
    EXPECT_EQ(referenceNames(HostedAccessPoint, computerPath()).path(), expected);
    EXPECT_EQ(referenceNames(HostedAccessPoint, connectionPath()).path(), expected);
    EXPECT_EQ(associators(HostedAccessPoint, connectionPath()).instance(), objectAt(computerPath()));
}

TEST(OrderedComponentAssociation, AssignedSequenceIsAlwaysZero)
{
    serveWorld();
    for (const int mode : {0, 1, 2}) {
        seam.remote.IPConfigurationMode = mode;
        const Answer answer = references(OrderedComponent, assignmentPath());
        expectSuccess(answer, 2);
        EXPECT_EQ(
            answer.instances(),
            (std::vector<Instance>{
                associationInstance("ZT_Marovelton_OrderedComponent", "GroupComponent", assignmentPath(),
                                    "PartComponent", dhcpPath(), {{"AssignedSequence", uint64(0)}}),
                associationInstance("ZT_Marovelton_OrderedComponent", "GroupComponent", assignmentPath(),
                                    "PartComponent", staticPath(), {{"AssignedSequence", uint64(0)}})}));
        EXPECT_CALLS(answer, {});
    }
    EXPECT_EQ(associatorNames(OrderedComponent, assignmentPath()).paths(),
              (std::vector<Path>{dhcpPath(), staticPath()}));
    EXPECT_EQ(associatorNames(OrderedComponent, staticPath()).path(), assignmentPath());
    EXPECT_EQ(referenceNames(OrderedComponent, dhcpPath()).path(),
              associationPath("ZT_Marovelton_OrderedComponent", "GroupComponent", assignmentPath(),
                              "PartComponent", dhcpPath()));
}

// ---- ElementSettingData ----

namespace
{

struct ElementSettingDataAssociation : testing::Test {
    ElementSettingDataAssociation()
    {
        serveWorld();
        broker.superclasses = {{"ZT_Marovelton_ElementSettingData", "CIM_ElementSettingData"}};
    }
    Instance made(const Path &setting, uint16_t isCurrent) const
    {
        return associationInstance("ZT_Marovelton_ElementSettingData", "ManagedElement", connectionPath(),
                                   "SettingData", setting,
                                   {{"IsNext", uint16(2)}, {"IsCurrent", uint16(isCurrent)}});
    }
    /** What is current of the accumulated, the DHCP and the static setting data. */
    std::vector<Instance> all(uint16_t assignment, uint16_t dhcp, uint16_t staticData) const
    {
        return {made(assignmentPath(), assignment), made(dhcpPath(), dhcp), made(staticPath(), staticData)};
    }
};

} // namespace

TEST_F(ElementSettingDataAssociation, Skeleton)
{
    checkSkeleton(ElementSettingData);
}

TEST_F(ElementSettingDataAssociation, WithDHCPTheDHCPSettingDataIsCurrent)
{
    seam.remote.IPConfigurationMode = 0;
    for (const Answer &answer : {references(ElementSettingData, connectionPath()),
                                 enumerate(ElementSettingData, path("ZT_Marovelton_ElementSettingData"))}) {
        expectSuccess(answer, 3);
        EXPECT_EQ(answer.instances(), all(2, 1, 2));
        EXPECT_CALLS(answer, {"GetRemoteManagementServerInfo()", "GetRemoteManagementServerInfo()",
                              "GetRemoteManagementServerInfo()"});
    }
    EXPECT_EQ(references(ElementSettingData, dhcpPath()).instance(), made(dhcpPath(), 1));
    EXPECT_EQ(references(ElementSettingData, staticPath()).instance(), made(staticPath(), 2));
}

TEST_F(ElementSettingDataAssociation, WithAStaticAddressTheAccumulatedSettingDataIsCurrent)
{
    seam.remote.IPConfigurationMode = 1;
    EXPECT_EQ(references(ElementSettingData, connectionPath()).instances(), all(1, 2, 2));
    EXPECT_EQ(enumerate(ElementSettingData, path("ZT_Marovelton_ElementSettingData")).instances(),
              all(1, 2, 2));
    EXPECT_EQ(references(ElementSettingData, assignmentPath()).instance(), made(assignmentPath(), 1));
    EXPECT_EQ(references(ElementSettingData, staticPath()).instance(), made(staticPath(), 2));
}

TEST_F(ElementSettingDataAssociation, InOtherModesNothingIsCurrent)
{
    for (const int mode : {-1, 2, 3, 32768}) {
        seam.remote.IPConfigurationMode = mode;
        EXPECT_EQ(references(ElementSettingData, connectionPath()).instances(), all(2, 2, 2));
        EXPECT_EQ(enumerate(ElementSettingData, path("ZT_Marovelton_ElementSettingData")).instances(),
                  all(2, 2, 2));
    }
}

TEST_F(ElementSettingDataAssociation, EverySettingInOrder)
{
    const std::vector<Path> settingPaths = {assignmentPath(), dhcpPath(), staticPath()};
    EXPECT_EQ(associatorNames(ElementSettingData, connectionPath()).paths(), settingPaths);
    EXPECT_EQ(
        associators(ElementSettingData, connectionPath()).instances(),
        (std::vector<Instance>{objectAt(assignmentPath()), objectAt(dhcpPath()), objectAt(staticPath())}));
    std::vector<Path> names;
    for (const Path &setting : settingPaths) {
        names.push_back(associationPath("ZT_Marovelton_ElementSettingData", "ManagedElement",
                                        connectionPath(), "SettingData", setting));
    }
    EXPECT_EQ(referenceNames(ElementSettingData, connectionPath()).paths(), names);
    EXPECT_EQ(enumerateNames(ElementSettingData, path("ZT_Marovelton_ElementSettingData")).paths(), names);
    for (const Path &setting : settingPaths) {
        EXPECT_EQ(associatorNames(ElementSettingData, setting).path(), connectionPath());
    }
    const Answer one = associatorNames(ElementSettingData, connectionPath(),
                                       {.resultClass = "ZT_Marovelton_DHCPSettingData",
                                        .role = "managedelement",
                                        .resultRole = "SETTINGDATA"});
    expectSuccess(one, 1);
    EXPECT_EQ(one.path(), dhcpPath());
}

TEST_F(ElementSettingDataAssociation, WithoutTheMode)
{
    seam.returns("GetRemoteManagementServerInfo", -1);
    for (const auto operation : {associators, associatorNames, references, referenceNames}) {
        expectEmptySuccess(operation(ElementSettingData, connectionPath(), {}));
    }
    for (const auto operation : {enumerate, enumerateNames}) {
        const Answer answer = operation(ElementSettingData, path("ZT_Marovelton_ElementSettingData"));
        EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, "Failed to get remote management info.");
        EXPECT_EQ(answer.returned.size(), 0u);
        EXPECT_EQ(answer.done, 1);
    }
}

TEST_F(ElementSettingDataAssociation, AModeThatIsLostInOneRunFailsTheEnumeration)
{
    for (const int run : {1, 2, 3}) {
        seam.reset();
        seam.returnsAt("GetRemoteManagementServerInfo", run, -1);
        const Answer answer = enumerate(ElementSettingData, path("ZT_Marovelton_ElementSettingData"));
        EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, "Failed to get remote management info.");
        EXPECT_EQ(answer.instances().size(), 2u);
    }
}

TEST_F(ElementSettingDataAssociation, GetInstanceNeedsNoMode)
{
    seam.returns("GetRemoteManagementServerInfo", -1);
    const Answer answer =
        get(ElementSettingData, associationPath("ZT_Marovelton_ElementSettingData", "ManagedElement",
                                                connectionPath(), "SettingData", dhcpPath()));
    expectSuccess(answer, 1);
    EXPECT_EQ(answer.instance(), associationInstance("ZT_Marovelton_ElementSettingData", "ManagedElement",
                                                     connectionPath(), "SettingData", dhcpPath()));
    EXPECT_CALLS(answer, {});
}

TEST_F(ElementSettingDataAssociation, AFailingRunEndsTheRequest)
{
    broker.classes["ZT_Marovelton_DHCPSettingData"].enumerateRc = CMPI_RC_ERR_FAILED;
    for (const auto operation : {associatorNames, references, referenceNames}) {
        const Answer answer = operation(ElementSettingData, connectionPath(), {});
        expectFailure(answer, CMPI_RC_ERR_FAILED, "CBEnumInstanceNames( _broker, ctx, op, rc)");
        EXPECT_EQ(answer.returned.size(), 1u);
        EXPECT_EQ(answer.upCalls.size(), 4u) << "the third right end is not reached";
    }
}

TEST_F(ElementSettingDataAssociation, Torture)
{
    Torture torture = {.prepare = {}, .harmless = {"hasNext", "getNameSpace", "getCharPtr"}};
    checkTorture([&] { return enumerate(ElementSettingData, path("ZT_Marovelton_ElementSettingData")); },
                 torture);
    checkTorture([&] { return enumerateNames(ElementSettingData, path("ZT_Marovelton_ElementSettingData")); },
                 torture);
    for (const char *function :
         {"classPathIsA", "newObjectPath", "getClassName", "GetRemoteManagementServerInfo"}) {
        torture.harmless.push_back(function);
    }
    for (const auto operation : {associators, associatorNames, references, referenceNames}) {
        checkTorture([&] { return operation(ElementSettingData, connectionPath(), {}); }, torture);
    }
}
