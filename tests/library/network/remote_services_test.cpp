// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_RemoteManagementService and ZT_Marovelton_WSManagementService: the two services that can be
// switched.

#include "network/modules.h"
#include "support/checks.h"

METHOD_CLASS(RemoteManagementService);
METHOD_CLASS(WSManagementService);

namespace
{

/** What differs between the two services. */
struct Service {
    const TestedClass &tested;
    const char *name;       // of the instance, while the display name is "Studio 7"
    int32_t *enabled;       // the record's switch
    const char *missing;    // the text without RequestedState
    const char *switchedOn; // the message that enables it
    const char *switchedOff;
};

const Service services[] = {
    {RemoteManagementService, "Studio 7-RemoteManagementService", &seam.remote.RemoteManagementEnabled,
     "Required argument RequestedState missing.", "01 00 00 00 03 00 07 00 00 01 04 00 55 00 01 00 ...",
     "01 00 00 00 03 00 07 00 00 01 04 00 55 00 00 00 ..."},
    {WSManagementService, "Studio 7-WSManagementService", &seam.remote.WSManagementStatus,
     "Required argument RequestStateChange missing.", "01 00 00 00 03 00 07 00 00 01 04 00 5B 00 01 00 ...",
     "01 00 00 00 03 00 07 00 00 01 04 00 5B 00 00 00 ..."},
};

Path target(const Service &service)
{
    return path(service.tested.name, {{"SystemName", "Studio 7"},
                                      {"SystemCreationClassName", "Linux_ComputerSystem"},
                                      {"CreationClassName", service.tested.name},
                                      {"Name", service.name}});
}

const Service &webServer = services[0];
const Service &listener = services[1];

Answer requestState(const Service &service, const Value &state, const User &user = "admin")
{
    return invoke(service.tested, target(service), "RequestStateChange", {{"RequestedState", state}}, user);
}

} // namespace

// ---- the skeleton and the keys ----

TEST(RemoteServices, HaveTheSkeletonOfAProvider)
{
    for (const Service &service : services) {
        checkSkeleton(service.tested);
    }
}

TEST(RemoteServices, AreKeyedToTheSystem)
{
    for (const Service &service : services) {
        *service.enabled = 1;
        checkKeysOfGetInstance(service.tested, target(service), namedSystemKeys());
        checkKeysOfMethod(service.tested, target(service), "RequestStateChange", {{"RequestedState", "2"}},
                          "admin", namedSystemKeys());
    }
}

TEST(RemoteServices, EnumerateTheirOnePath)
{
    for (const Service &service : services) {
        checkPaths(service.tested, {target(service)}, {"GetMoinitorInfo()"});
    }
}

TEST(RemoteServices, UseTheAddressWithoutADisplayName)
{
    setField(seam.monitor.DisplayName, "");
    EXPECT_KEYS(enumerateNames(WSManagementService, path("ZT_Marovelton_WSManagementService")).path(),
                {{"SystemName", chars("192.0.2.17")},
                 {"SystemCreationClassName", chars("Linux_ComputerSystem")},
                 {"CreationClassName", chars("ZT_Marovelton_WSManagementService")},
                 {"Name", chars("192.0.2.17-WSManagementService")}});
}

TEST(RemoteServices, ADisplayNameMayFillItsWidth)
{
    const std::string name = fillField(seam.monitor.DisplayName, 'm');
    const Instance service =
        enumerate(RemoteManagementService, path("ZT_Marovelton_RemoteManagementService")).instance();
    EXPECT_EQ(*service.find("SystemName"), chars(name));
    EXPECT_EQ(*service.find("Name"), chars(name + "-RemoteManagementService"));
    const Path key = path("ZT_Marovelton_RemoteManagementService",
                          {{"SystemName", name},
                           {"SystemCreationClassName", "Linux_ComputerSystem"},
                           {"CreationClassName", "ZT_Marovelton_RemoteManagementService"},
                           {"Name", name + "-RemoteManagementService"}});
    EXPECT_STATUS(get(RemoteManagementService, key), CMPI_RC_OK, "");
}

TEST(RemoteServices, APathWithoutTheRecordGoesOutWithoutKeys)
{
    for (const Service &service : services) {
        seam.returns("GetMoinitorInfo", 1);
        const Answer answer = enumerateNames(service.tested, path(service.tested.name));
        EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, "Failed to get monitor information from database.");
        EXPECT_KEYS(answer.path(), {});
        EXPECT_EQ(answer.done, 1);
    }
}

TEST(RemoteServices, WithoutTheRecordNoKeyCanBeChecked)
{
    const char *const text = "Could not get monitor information from database.";
    seam.returns("GetMoinitorInfo", 1);
    for (const Service &service : services) {
        Answer answer = get(service.tested, target(service));
        EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, text);
        EXPECT_EQ(answer.returned.size(), 0u);
        EXPECT_CALLS(answer, {"GetMoinitorInfo()"});
        answer = requestState(service, "3");
        EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_FAILED, text);
        EXPECT_CALLS(answer, {"GetMoinitorInfo()"});
    }
    const Answer answer = invoke(WSManagementService, target(listener), "SetWSIdentifyEnabledState",
                                 {{"WSIdentifySupportEnabled", "1"}}, "admin");
    EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_FAILED, text);
    EXPECT_CALLS(answer, {"GetMoinitorInfo()"});
}

// ---- the instances ----

TEST(RemoteServices, TheWebServerHasAllItsProperties)
{
    seam.remote.RemoteManagementEnabled = 1;
    const Answer answer = get(RemoteManagementService, target(webServer));
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_PROPERTIES(answer.instance(),
                      {{"EnabledState", uint16(2)},
                       {"SystemName", chars("Studio 7")},
                       {"SystemCreationClassName", chars("Linux_ComputerSystem")},
                       {"CreationClassName", chars("ZT_Marovelton_RemoteManagementService")},
                       {"Name", chars("Studio 7-RemoteManagementService")},
                       {"Caption", chars("ZT_Marovelton_RemoteManagementService")},
                       {"ElementName", chars("ZT_Marovelton_RemoteManagementService")},
                       {"InstanceID", chars("ZT:Marovelton_RemoteManagementService")},
                       {"Description",
                        chars("A class derived from CIM Service that represents the single node container of "
                              "the Display Management System.")},
                       {"AvailableRequestedStates", uint16Array({2, 3})}});
}

TEST(RemoteServices, TheListenerHasAllItsProperties)
{
    seam.remote.WSManagementStatus = 0;
    seam.remote.WSIdentifySupport = 1;
    const Answer answer = enumerate(WSManagementService, path("ZT_Marovelton_WSManagementService"));
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_PROPERTIES(answer.instance(),
                      {{"WSIdentifySupportEnabled", boolean(1)},
                       {"EnabledState", uint16(3)},
                       {"SystemName", chars("Studio 7")},
                       {"SystemCreationClassName", chars("Linux_ComputerSystem")},
                       {"CreationClassName", chars("ZT_Marovelton_WSManagementService")},
                       {"Name", chars("Studio 7-WSManagementService")},
                       {"Caption", chars("ZT_Marovelton_WSManagementService")},
                       {"ElementName", chars("ZT_Marovelton_WSManagementService")},
                       {"InstanceID", chars("ZT:Marovelton_WSManagementService")},
                       {"Description",
                        chars("A class derived from CIM Service that represents the single node container of "
                              "the Display Management System.")},
                       {"AvailableRequestedStates", uint16Array({2, 3})}});
}

TEST(RemoteServices, AnythingButOneIsDisabled)
{
    for (const Service &service : services) {
        for (const int state : {0, 2, -1, 257}) {
            *service.enabled = state;
            EXPECT_EQ(*get(service.tested, target(service)).instance().find("EnabledState"), uint16(3));
        }
        *service.enabled = 1;
        EXPECT_EQ(*get(service.tested, target(service)).instance().find("EnabledState"), uint16(2));
    }
}

TEST(RemoteServices, IdentifyIsTheLowByteOfTheRecord)
{
    for (const auto &[stored, shown] : {std::pair(256, 0), std::pair(257, 1), std::pair(2, 2)}) {
        seam.remote.WSIdentifySupport = stored;
        EXPECT_EQ(*get(WSManagementService, target(listener)).instance().find("WSIdentifySupportEnabled"),
                  boolean(shown));
    }
}

TEST(RemoteServices, ABuilderNamesTheRecordThatFailed)
{
    const std::vector<RecordRead> records = {
        {"GetRemoteManagementServerInfo()", "Failed to get remote management info."},
        {"GetMoinitorInfo()", "Failed to get monitor information from database."}};
    checkBuilders({.tested = &RemoteManagementService,
                   .reference = path("ZT_Marovelton_RemoteManagementService"),
                   .makePath = _makePath_ZT_Marovelton_RemoteManagementService,
                   .makeInst = _makeInst_ZT_Marovelton_RemoteManagementService,
                   .records = records,
                   .arrays = 1});
    checkBuilders({.tested = &WSManagementService,
                   .reference = path("ZT_Marovelton_WSManagementService"),
                   .makePath = _makePath_ZT_Marovelton_WSManagementService,
                   .makeInst = _makeInst_ZT_Marovelton_WSManagementService,
                   .records = records,
                   .arrays = 1});
}

TEST(RemoteServices, GetInstanceSaysThatTheInstanceCannotBeBuilt)
{
    for (const Service &service : services) {
        // The keys take the monitor's record once, the instance takes it again.
        for (const auto &[record, nth] :
             {std::pair("GetRemoteManagementServerInfo", 1), std::pair("GetMoinitorInfo", 2)}) {
            seam.reset();
            seam.returnsAt(record, nth, 1);
            const Answer answer = get(service.tested, target(service));
            EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, "Couldn't build instance");
            EXPECT_EQ(answer.returned.size(), 0u);
        }
    }
}

// ---- switching a service ----

TEST(RemoteServices, RequestStateChangeSwitchesOnAndOff)
{
    for (const Service &service : services) {
        *service.enabled = 0;
        Answer answer = requestState(service, "2");
        EXPECT_METHOD(answer, uint32(0), CMPI_RC_OK, "");
        EXPECT_SENT(answer, {service.switchedOn});
        *service.enabled = 1;
        answer = requestState(service, "3");
        EXPECT_METHOD(answer, uint32(0), CMPI_RC_OK, "");
        EXPECT_SENT(answer, {service.switchedOff});
    }
}

TEST(RemoteServices, NoReplyIsAwaited)
{
    for (const Service &service : services) {
        *service.enabled = 0;
        EXPECT_CALLS(requestState(service, "2"),
                     {"GetMoinitorInfo()", "IsAdminUser(admin)", "ValidateInputArgs(2, 2, 3)",
                      "GetRemoteManagementServerInfo()", "GetMonitorStatus(0)",
                      "SpearEngineMessageQueueCreate(0)", "SendStatusMessagetoSource(100)"});
    }
}

TEST(RemoteServices, AServiceThatIsEnabledIsNotEnabledAgain)
{
    for (const Service &service : services) {
        *service.enabled = 1;
        Answer answer = requestState(service, "2");
        EXPECT_METHOD(answer, uint32(0), CMPI_RC_OK, "");
        EXPECT_SENT(answer, {});
        *service.enabled = 0; // but disabled again it is
        answer = requestState(service, "3");
        EXPECT_METHOD(answer, uint32(0), CMPI_RC_OK, "");
        EXPECT_SENT(answer, {service.switchedOff});
    }
}

TEST(RemoteServices, AServiceWhoseSwitchIsNotOneIsEnabled)
{
    for (const Service &service : services) {
        for (const int state : {2, -1, 257}) {
            *service.enabled = state;
            const Answer answer = requestState(service, "2");
            EXPECT_METHOD(answer, uint32(0), CMPI_RC_OK, "");
            EXPECT_SENT(answer, {service.switchedOn});
        }
    }
}

TEST(RemoteServices, OnlyTheServicesOwnSwitchCounts)
{
    seam.remote.RemoteManagementEnabled = 1;
    seam.remote.WSManagementStatus = 0;
    EXPECT_SENT(requestState(listener, "2"), {listener.switchedOn});
    seam.remote.RemoteManagementEnabled = 0;
    seam.remote.WSManagementStatus = 1;
    EXPECT_SENT(requestState(webServer, "2"), {webServer.switchedOn});
}

TEST(RemoteServices, TheMethodSucceedsWhateverTheSenderSays)
{
    for (const Service &service : services) {
        *service.enabled = 0;
        seam.status = BUSY;
        Answer answer = requestState(service, "2");
        EXPECT_METHOD(answer, uint32(0), CMPI_RC_OK, "");
        EXPECT_SENT(answer, {});
        seam.status = FREE;
        for (const char *function : {"SpearEngineMessageQueueCreate", "SendStatusMessagetoSource"}) {
            seam.returns(function, -1);
            answer = requestState(service, "3");
            EXPECT_METHOD(answer, uint32(0), CMPI_RC_OK, "");
            seam.returns(function, 0);
        }
    }
}

TEST(RemoteServices, AnyStateOfTheEngineButBusyIsFree)
{
    for (const int status : {2, -1}) {
        seam.status = status;
        for (const Service &service : services) {
            EXPECT_SENT(requestState(service, "3"), {service.switchedOff});
        }
        EXPECT_SENT(invoke(WSManagementService, target(listener), "SetWSIdentifyEnabledState",
                           {{"WSIdentifySupportEnabled", "1"}}, "admin"),
                    {"01 00 00 00 03 00 07 00 00 01 04 00 5C 00 01 00 ..."});
    }
}

TEST(RemoteServices, TheRequestedStateIsTwoOrThreeAsAtoiReadsIt)
{
    for (const Service &service : services) {
        *service.enabled = 0;
        for (const char *state : {"2", " 2", "2x", "+2", "3", "3.7"}) {
            EXPECT_METHOD(requestState(service, state), uint32(0), CMPI_RC_OK, "");
        }
        for (const char *state : {"1", "4", "0", "-2", "abc", "x2", " ", "4294967298", "99999999999999999999",
                                  "-99999999999999999999"}) {
            const Answer answer = requestState(service, state);
            EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_INVALID_PARAMETER,
                          "Invalid input value range. Valid values are 2 and 3")
                << state;
            EXPECT_SENT(answer, {});
        }
    }
}

TEST(RemoteServices, TheRequestedStateIsAString)
{
    for (const Service &service : services) {
        checkStringArgument(service.tested, target(service), "RequestStateChange", "RequestedState",
                            service.missing, {}, "admin");
    }
}

TEST(RemoteServices, SwitchingNeedsAnAdministrator)
{
    for (const Service &service : services) {
        *service.enabled = 0;
        checkAdministratorOnly(service.tested, target(service), "RequestStateChange",
                               {{"RequestedState", "2"}});
    }
    checkAdministratorOnly(WSManagementService, target(listener), "SetWSIdentifyEnabledState",
                           {{"WSIdentifySupportEnabled", "true"}});
}

TEST(RemoteServices, TheUserIsCheckedBeforeTheArgument)
{
    const Answer answer =
        invoke(RemoteManagementService, target(webServer), "RequestStateChange", {}, "operator");
    EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_ACCESS_DENIED,
                  "Operation not allowed for non-admin user credentials");
    EXPECT_NE(answer.trace.find("AccountSetInstance: requesting user is operator\n"), std::string::npos);
}

TEST(RemoteServices, RequestStateChangeNeedsTheRecord)
{
    for (const Service &service : services) {
        seam.returns("GetRemoteManagementServerInfo", 7);
        const Answer answer = requestState(service, "3");
        EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_FAILED, "Failed to get remote management info.");
        EXPECT_SENT(answer, {});
    }
}

TEST(RemoteServices, MethodNamesHaveNoCase)
{
    for (const Service &service : services) {
        *service.enabled = 0;
        EXPECT_SENT(
            invoke(service.tested, target(service), "requeststatechange", {{"RequestedState", "2"}}, "admin"),
            {service.switchedOn});
    }
    EXPECT_SENT(invoke(WSManagementService, target(listener), "SETWSIDENTIFYENABLEDSTATE",
                       {{"WSIdentifySupportEnabled", "1"}}, "admin"),
                {"01 00 00 00 03 00 07 00 00 01 04 00 5C 00 01 00 ..."});
}

TEST(RemoteServices, UnknownMethods)
{
    for (const Service &service : services) {
        checkUnknownMethods(service.tested, target(service), {"Reboot", "StartService"},
                            CMPI_RC_ERR_NOT_FOUND, uint32(1));
    }
    EXPECT_METHOD(invoke(RemoteManagementService, target(webServer), "SetWSIdentifyEnabledState",
                         {{"WSIdentifySupportEnabled", "1"}}, "admin"),
                  uint32(1), CMPI_RC_ERR_NOT_FOUND, "SetWSIdentifyEnabledState");
}

TEST(RemoteServices, AnotherClassIsAnsweredWithoutAnError)
{
    for (const Service &service : services) {
        checkOtherClass(service.tested, target(service), "RequestStateChange", {{"RequestedState", "3"}},
                        "admin", CMPI_RC_OK, "", uint32(2));
    }
}

// ---- WS-Identify ----

TEST(RemoteServices, SetWSIdentifyEnabledState)
{
    checkSettingMethod({
        .tested = &WSManagementService,
        .target = target(listener),
        .method = "SetWSIdentifyEnabledState",
        .argument = "WSIdentifySupportEnabled",
        .kind = ArgumentIs::toggle,
        .min = 0,
        .max = 1,
        .missing = "Required argument WSIdentifySupportEnabled missing.",
        .range = "Invalid input value range. Valid values are 0 and 1.",
        .steps = {.reply = "Failed to set the value to WSIdentifySuportEnabledState.",
                  .busy = "Device is Busy. Please try after some Time.",
                  .onlyMinusOneFails = true},
        .sentAtMin = "01 00 00 00 03 00 07 00 00 01 04 00 5C 00 00 00 ...",
        .sentAtMax = "01 00 00 00 03 00 07 00 00 01 04 00 5C 00 01 00 ...",
        .administrator = true,
    });
}

TEST(RemoteServices, WSIdentifyTakesTheWordsInAnyLetterCase)
{
    for (const char *word : {"true", "TRUE", "tRuE", "1"}) {
        EXPECT_SENT(invoke(WSManagementService, target(listener), "SetWSIdentifyEnabledState",
                           {{"WSIdentifySupportEnabled", word}}, "admin"),
                    {"01 00 00 00 03 00 07 00 00 01 04 00 5C 00 01 00 ..."});
    }
    const Answer answer = invoke(WSManagementService, target(listener), "SetWSIdentifyEnabledState",
                                 {{"WSIdentifySupportEnabled", "2"}}, "admin");
    EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_INVALID_PARAMETER, "Invalid parameter.");
}

// ---- the senders by themselves ----

TEST(RemoteServices, TheStateSendersFailOnlyBeforeTheSend)
{
    struct {
        int (*set)(int, char *);
        const Service &service;
    } const senders[] = {{SetRemoteManagementEnabledState, webServer},
                         {SetWSManagementEnabledState, listener}};
    for (const auto &sender : senders) {
        const auto setTo = [&](int state) {
            return call([&](char *text) { return sender.set(state, text); });
        };
        SetterAnswer answer = setTo(2);
        EXPECT_EQ(answer.result, 0);
        EXPECT_EQ(answer.errorText, " ");
        EXPECT_SENT(answer, {sender.service.switchedOn});
        EXPECT_SENT(setTo(3), {sender.service.switchedOff});

        seam.status = BUSY;
        answer = setTo(2);
        EXPECT_EQ(answer.result, -1);
        EXPECT_EQ(answer.errorText, "Device is Busy. Please try after some time.");
        EXPECT_SENT(answer, {});
        seam.status = FREE;

        seam.returns("SpearEngineMessageQueueCreate", -1);
        answer = setTo(2);
        EXPECT_EQ(answer.result, -1);
        EXPECT_EQ(answer.errorText, "Unable to create a message queue for sending message.");
        EXPECT_SENT(answer, {});
        seam.returns("SpearEngineMessageQueueCreate", 5); // any other result counts as success
        EXPECT_EQ(setTo(2).result, 0);
        seam.returns("SpearEngineMessageQueueCreate", 0);

        for (const int result : {-1, 5}) { // the result of the send is not looked at
            seam.returns("SendStatusMessagetoSource", result);
            answer = setTo(3);
            EXPECT_EQ(answer.result, 0);
            EXPECT_EQ(answer.errorText, " ");
        }
        seam.returns("SendStatusMessagetoSource", 0);
    }
}

TEST(RemoteServices, TheIdentifySenderTakesOnlyMinusOneForAFailureOfQueuesAndSend)
{
    const auto set = [] { return call([](char *text) { return SetWSIdentifyEnabledState(1, text); }); };
    struct {
        const char *call;
        const char *text;
    } const steps[] = {
        {"SpearEngineMessageQueueCreate(0)", "Unable to create a message queue for sending message."},
        {"SendStatusMessagetoSource(100)", "Unable to send value to SPEAr."},
        {"SpearEngineMessageQueueCreate(3)", "Unable to create a message queue for receiving message."},
    };
    for (const auto &step : steps) {
        seam.returns(step.call, -1);
        const SetterAnswer answer = set();
        EXPECT_EQ(answer.result, -1) << step.call;
        EXPECT_EQ(answer.errorText, step.text);
        seam.returns(step.call, 5);
        EXPECT_EQ(set().result, 0) << step.call;
        seam.returns(step.call, 0);
    }
    for (const int result : {-1, 5}) {
        seam.returns("RecvMessageFromSource", result);
        const SetterAnswer answer = set();
        EXPECT_EQ(answer.result, -1);
        EXPECT_EQ(answer.errorText, "Failed to set the value to WSIdentifySuportEnabledState.");
    }
}

// ---- torture ----

TEST(RemoteServices, EveryCallMayFail)
{
    for (const Service &service : services) {
        const auto enabled = [&] { *service.enabled = 0; };
        checkTortureOfReads(service.tested, target(service));
        // The sender's own steps are not looked at.
        checkTorture(
            [&] { return requestState(service, "2"); },
            {.prepare = enabled,
             .harmless = {"GetMonitorStatus", "SpearEngineMessageQueueCreate", "SendStatusMessagetoSource"}});
    }
    checkTorture([] {
        return invoke(WSManagementService, target(listener), "SetWSIdentifyEnabledState",
                      {{"WSIdentifySupportEnabled", "1"}}, "admin");
    });
}
