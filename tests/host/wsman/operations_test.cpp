// SPDX-License-Identifier: Apache-2.0
// WS-Management: what the recorded requests do not show.
#include "wsman/duration.h"
#include "wsman/wsman_client.h"

#include <gmock/gmock.h>

namespace
{

using std::chrono::milliseconds;
using test::envelope;
using test::FaultSeen;
using test::HttpAnswer;
using test::textOf;
using test::thingSelectors;
using testing::HasSubstr;
using testing::Not;

const std::string getAction = std::string(test::transfer) + "Get";
const std::string putAction = std::string(test::transfer) + "Put";
const std::string enumerateAction = std::string(test::enumeration) + "Enumerate";
const std::string pullAction = std::string(test::enumeration) + "Pull";
const std::string releaseAction = std::string(test::enumeration) + "Release";
const std::string thing = test::thingUri;

class Wsman : public testing::Test
{
  protected:
    HttpAnswer send(const std::string &action, const std::string &uri, const std::string &headers,
                    const std::string &body)
    {
        HttpAnswer answer = server_.exchange(test::postWsman(envelope(action, uri, headers, body)));
        answer.body = test::withOnePrefix(answer.body);
        return answer;
    }

    HttpAnswer enumerate(const std::string &inner, const std::string &headers = "",
                         const std::string &uri = thing)
    {
        return send(enumerateAction, uri, headers, "<wsen:Enumerate>" + inner + "</wsen:Enumerate>");
    }

    HttpAnswer pull(const std::string &context, const std::string &inner = "",
                    const std::string &headers = "")
    {
        return send(pullAction, thing, headers,
                    "<wsen:Pull><wsen:EnumerationContext>" + context + "</wsen:EnumerationContext>" + inner +
                        "</wsen:Pull>");
    }

    HttpAnswer call(const std::string &method, const std::string &arguments)
    {
        return send(thing + "/" + method, thing, thingSelectors(3),
                    "<p:" + method + "_INPUT xmlns:p=\"" + thing + "\">" + arguments + "</p:" + method +
                        "_INPUT>");
    }

    static std::string contextOf(const HttpAnswer &answer)
    {
        return textOf(answer.body, "wsen:EnumerationContext");
    }

    static std::string maxElements(int number)
    {
        return "<wsman:OptimizeEnumeration/><wsman:MaxElements>" + std::to_string(number) +
               "</wsman:MaxElements>";
    }

    static std::string fragment(const std::string &expression)
    {
        return "<wsman:FragmentTransfer s:mustUnderstand=\"true\">" + expression +
               "</wsman:FragmentTransfer>";
    }

    test::TestServer server_;
};

// ------------------------------------------------------------------------------------------------ selectors

TEST_F(Wsman, NamesOfSelectorsAndBlanksAroundTheNamespaceDoNotMatter)
{
    const std::string keys = test::selectors({"__CIMNamespace", " /root/cimv2 ", "systemname", "desk",
                                              "DEVICEID", "thing2", "CreationClassName", "Test_Thing",
                                              "SystemCreationClassName", "Linux_ComputerSystem"});
    const HttpAnswer answer = send(getAction, thing, keys, "");
    EXPECT_EQ(answer.status, 200) << answer.body;
    EXPECT_EQ(textOf(answer.body, "p:Label"), "label-2");
}

TEST_F(Wsman, AnswersUseTheVendorOfTheClient)
{
    const std::string uri = "http://schemas.vendor.example/wbem/wscim/1/cim-schema/2/Test_Thing";
    const HttpAnswer answer =
        enumerate("<wsman:EnumerationMode>EnumerateEPR</wsman:EnumerationMode>", "", uri);
    const HttpAnswer pulled = pull(contextOf(answer));
    EXPECT_EQ(textOf(pulled.body, "wsman:ResourceURI"), uri);
    EXPECT_THAT(send(getAction, uri, thingSelectors(1), "").body, HasSubstr(" xmlns:p=\"" + uri + "\""));
}

// ------------------------------------------------------------------------------------------------ fragments

TEST_F(Wsman, AFragmentIsAPropertyAnElementOrAText)
{
    const auto get = [this](const std::string &expression) {
        const std::string body = send(getAction, thing, thingSelectors(3) + fragment(expression), "").body;
        const std::size_t start = body.find("<wsman:XmlFragment");
        return body.substr(start, body.find("</s:Body>") - start);
    };
    const std::string open = "<wsman:XmlFragment>";
    const std::string close = "</wsman:XmlFragment>";
    EXPECT_EQ(get("Level"), open + "<p:Level>30</p:Level>" + close);
    EXPECT_EQ(get("/n1:Test_Thing/n1:Level"), open + "<p:Level>30</p:Level>" + close);
    EXPECT_EQ(get("level/text()"), open + "30" + close);
    EXPECT_EQ(get("Codes"), open + "<p:Codes>30</p:Codes><p:Codes>31</p:Codes><p:Codes>32</p:Codes>" + close);
    EXPECT_EQ(get("Codes[2]"), open + "<p:Codes>31</p:Codes>" + close);
    EXPECT_EQ(get("Codes[2]/text()"), open + "31" + close);
    EXPECT_EQ(get("Codes[4]"), "<wsman:XmlFragment xsi:nil=\"true\"/>");
    EXPECT_EQ(get("Caption"), "<wsman:XmlFragment xsi:nil=\"true\"/>");
}

TEST_F(Wsman, AFragmentIsPut)
{
    const auto put = [this](const std::string &expression, const std::string &content) {
        return send(putAction, thing, thingSelectors(5) + fragment(expression),
                    "<wsman:XmlFragment>" + content + "</wsman:XmlFragment>");
    };
    EXPECT_EQ(textOf(put("Label", "<Label>one</Label>").body, "p:Label"), "one");
    EXPECT_EQ(textOf(put("Label", "<p:label xmlns:p=\"x\">two</p:label>").body, "p:Label"), "two");
    EXPECT_THAT(put("Label/text()", "three &lt;3&gt;").body,
                HasSubstr(">three &lt;3&gt;</wsman:XmlFragment>"));
    EXPECT_EQ(textOf(send(getAction, thing, thingSelectors(5), "").body, "p:Label"), "three &lt;3&gt;");
    EXPECT_EQ(textOf(put("Label", "<Label xsi:nil=\"true\"/>").body, "p:Label"), "(null)")
        << "the provider writes so what it got as null";
    EXPECT_THAT(put("Tags[2]", "<Tags>blue</Tags>").body,
                HasSubstr("<wsman:XmlFragment><p:Tags>blue</p:Tags></wsman:XmlFragment>"));
    EXPECT_THAT(put("Tags[1]/text()", "green").body,
                HasSubstr("<wsman:XmlFragment>green</wsman:XmlFragment>"));
    EXPECT_THAT(send(getAction, thing, thingSelectors(5) + fragment("Tags"), "").body,
                HasSubstr("<p:Tags>green</p:Tags><p:Tags>blue</p:Tags>"));
}

TEST_F(Wsman, APutTellsWhereTheObjectIsWhenAsked)
{
    const std::string body = "<wsman:XmlFragment><Label>told</Label></wsman:XmlFragment>";
    const std::string headers = thingSelectors(4) + fragment("Label");
    const HttpAnswer asked =
        send(putAction, thing, headers + "<wsman:RequestEPR s:mustUnderstand=\"true\"/>", body);
    EXPECT_EQ(asked.status, 200) << asked.body;
    const std::string endpoint = textOf(asked.body, "wsman:RequestedEPR");
    EXPECT_EQ(textOf(endpoint, "wsman:ResourceURI"), thing);
    EXPECT_THAT(endpoint, HasSubstr("<wsman:Selector Name=\"DeviceID\">thing4</wsman:Selector>"));
    EXPECT_THAT(send(putAction, thing, headers, body).body, Not(HasSubstr("RequestedEPR")));
    EXPECT_THAT(send(getAction, thing, thingSelectors(4) + "<wsman:RequestEPR/>", "").body,
                Not(HasSubstr("RequestedEPR")))
        << "of a Get it is known";
}

TEST_F(Wsman, AnObjectIsFoundThroughTheUriOfASuperclass)
{
    const HttpAnswer answer = send(getAction, test::classUri("Test_Device"), thingSelectors(3), "");
    EXPECT_EQ(answer.status, 200) << answer.body;
    EXPECT_THAT(answer.body, HasSubstr("<s:Body><p:Test_Thing"));
    EXPECT_EQ(textOf(answer.body, "p:DeviceID"), "thing3");
    EXPECT_EQ(textOf(answer.body, "p:Label"), "label-3");
}

TEST_F(Wsman, DiscoveryFindsBrandVersionNamespacesAndProfiles)
{
    const std::string cim = "http://schemas.dmtf.org/wbem/wscim/1/cim-schema/2/";
    const std::string interop = test::selectors({"__cimnamespace", "interop"});
    const auto objects = [&](const std::string &name) {
        const HttpAnswer opened = enumerate(maxElements(9), interop, cim + name);
        EXPECT_EQ(opened.status, 200) << opened.body;
        return opened.body;
    };
    const std::string manager = objects("CIM_ObjectManager");
    EXPECT_EQ(textOf(manager, "p:ElementName"), "display-host");
    EXPECT_EQ(textOf(manager, "p:Version"), "1.2.3");
    EXPECT_EQ(test::count(objects("CIM_Namespace"), "<p:CIM_Namespace"), 3u);
    const std::string profiles = objects("CIM_RegisteredProfile");
    EXPECT_EQ(test::count(profiles, "<p:RegisteredName>"), 2u);
    EXPECT_EQ(textOf(profiles, "p:InstanceID"), "test:profile1");
    const std::string profile = cim + "CIM_RegisteredProfile";
    const HttpAnswer called =
        send(profile + "/GetCentralInstances", profile,
             test::selectors({"__cimnamespace", "interop", "InstanceID", "test:profile1"}),
             "<p:GetCentralInstances_INPUT xmlns:p=\"" + profile + "\"/>");
    EXPECT_EQ(called.status, 200) << called.body;
    EXPECT_EQ(textOf(called.body, "wsman:ResourceURI"), test::classUri("Test_SpecialThing"));
    EXPECT_THAT(called.body,
                HasSubstr("<wsman:Selector Name=\"__cimnamespace\">root/cimv2</wsman:Selector>"));
    EXPECT_EQ(textOf(called.body, "p:ReturnValue"), "0");
    const HttpAnswer wrong =
        enumerate("", test::selectors({"__cimnamespace", "root/PG_InterOp"}), cim + "CIM_Namespace");
    EXPECT_EQ(wrong.status, 400);
    EXPECT_THAT(wrong.body, HasSubstr("There is no namespace root/PG_InterOp."));
}

// ------------------------------------------------------------------------------------------------ arguments

TEST_F(Wsman, ArgumentsAreOfTheTypesOfTheClass)
{
    const auto described = [this](const std::string &arguments) {
        return textOf(call("Types", arguments).body, "p:described");
    };
    EXPECT_EQ(described("<p:nums>7</p:nums>"), "nums:0x2090/array[1] elt 0x90 0x90/7; ");
    EXPECT_EQ(described("<p:nums>7</p:nums><p:a>1</p:a><p:nums>8</p:nums>"),
              "nums:0x2090/array[2] elt 0x90 0x90/7 0x90/8; a:0x80/1; ");
    EXPECT_EQ(described("<p:nums xsi:nil=\"true\"/>"), "nums:0x2090/null; ");
    EXPECT_EQ(described("<p:list xsi:nil=\"true\"/><p:list>x</p:list>"),
              "list:0x3600/array[2] elt 0x1600 0x1600/null 0x1600/&quot;x&quot;; ");
    EXPECT_EQ(described("<p:b> 12 </p:b><p:f>FALSE</p:f><p:h>1e3</p:h>"),
              "b:0x90/12; f:0x2/false; h:0xc/1000.000000; ");
    EXPECT_EQ(described("<p:own>x</p:own>"), "own:0x1600/&quot;x&quot;; ")
        << "what the class does not declare";
    EXPECT_EQ(described("<p:list><![CDATA[a<b]]></p:list>"),
              "list:0x3600/array[1] elt 0x1600 0x1600/&quot;a&lt;b&quot;; ");
    EXPECT_EQ(described("<p:a xsi:nil=\"true\"/>"), "a:0x80/null; ");
    EXPECT_EQ(textOf(call("Echo", "<p:text>  two  blanks </p:text>").body, "p:reply"), "  two  blanks ");
}

TEST_F(Wsman, ATimeIsTakenInItsThreeForms)
{
    const std::string cim = "xmlns:cim=\"http://schemas.dmtf.org/wbem/wscim/1/common\"";
    for (const std::string &value :
         {std::string("20240102030405.000000+060"), std::string("2024-01-02T03:04:05+01:00"),
          "<cim:Datetime " + cim + ">2024-01-02T03:04:05+01:00</cim:Datetime>",
          "<cim:CIM_DateTime " + cim + ">20240102030405.000000+060</cim:CIM_DateTime>"}) {
        EXPECT_EQ(textOf(call("Types", "<p:g>" + value + "</p:g>").body, "p:described"),
                  "g:0x1800/20240102030405.000000+060; ");
    }
    EXPECT_EQ(textOf(call("Types", "<p:g><cim:Interval " + cim + ">P1DT2H</cim:Interval></p:g>").body,
                     "p:described"),
              "g:0x1800/00000001020000.000000:000; ");
    EXPECT_EQ(
        test::faultOf(call("Types", "<p:g>today</p:g>")),
        (FaultSeen{400, "wsman:InvalidParameter", "", "The value \"today\" of g is not a datetime.", "4"}));
}

TEST(WsmanTimes, AreConverted)
{
    using host::wsman::cimDateTime;
    using host::wsman::readDuration;
    using host::wsman::schemaTime;
    EXPECT_EQ(readDuration("PT30S"), milliseconds(30000));
    EXPECT_EQ(readDuration("PT1.5S"), milliseconds(1500));
    EXPECT_EQ(readDuration("P1DT2H3M4S"), milliseconds(93784000));
    EXPECT_EQ(readDuration("P1Y2M"), milliseconds(std::int64_t{425} * 86400 * 1000));
    EXPECT_EQ(readDuration("PT0S"), milliseconds(0));
    for (const char *none : {"", "P", "PT", "30", "PT30", "P30S", "PT1S1S", "PT1S1M", "P1DT", "-PT1S",
                             "PT1.S", "P1.5D", "PTS", "PT 1S"}) {
        EXPECT_EQ(readDuration(none), std::nullopt) << none;
    }
    EXPECT_EQ(readDuration("PT99999999999999999999999S"), milliseconds(4'000'000'000'000));
    EXPECT_EQ(cimDateTime("2026-11-22T05:06:07.125-02:30"), "20261122050607.125000-150");
    EXPECT_EQ(cimDateTime("2026-11-22T05:06:07Z"), "20261122050607.000000+000");
    EXPECT_EQ(cimDateTime("2026-11-22"), "20261122000000.000000+000");
    EXPECT_EQ(cimDateTime("P12DT3H4M5.5S"), "00000012030405.500000:000");
    EXPECT_EQ(cimDateTime("P4000000000Y"), "");
    for (const char *none : {"", "now", "2026-11-22T05:06", "2026-11-22T05:06:07+1", "2026-11-22T05:06:07.Z",
                             "20261122050607.125000-150"}) {
        EXPECT_EQ(cimDateTime(none), "") << none;
    }
    EXPECT_EQ(schemaTime("20261122050607.125000-150").text, "2026-11-22T05:06:07.125000-02:30");
    EXPECT_EQ(schemaTime("20261122050607.000000+000").text, "2026-11-22T05:06:07.000000Z");
    EXPECT_EQ(schemaTime("00000012030405.500000:000").element, "Interval");
    EXPECT_EQ(schemaTime("00000012030405.500000:000").text, "P00000012DT03H04M05.500000S");
    EXPECT_EQ(cimDateTime("P00000012DT03H04M05.500000S"), "00000012030405.500000:000");
    EXPECT_EQ(schemaTime("202611**************+000").element, "CIM_DateTime");
    EXPECT_EQ(schemaTime("20261122050607.12****-150").text, "20261122050607.12****-150");
}

// --------------------------------------------------------------------------------------------- enumerations

TEST_F(Wsman, MaxElementsSaysHowManyComeAtOnce)
{
    HttpAnswer answer = enumerate(maxElements(3));
    EXPECT_EQ(test::count(answer.body, "<p:Label>"), 3u);
    EXPECT_THAT(answer.body, Not(HasSubstr("EndOfSequence")));
    const std::string context = contextOf(answer);
    ASSERT_EQ(context.size(), 32u);
    answer = pull(context, "<wsen:MaxElements>4</wsen:MaxElements>");
    EXPECT_EQ(test::count(answer.body, "<p:Label>"), 4u);
    EXPECT_EQ(contextOf(answer), context);
    answer = pull(context, "<wsen:MaxElements>4</wsen:MaxElements>");
    EXPECT_EQ(test::count(answer.body, "<p:Label>"), 1u);
    EXPECT_EQ(contextOf(answer), "");
    EXPECT_THAT(answer.body, HasSubstr("<wsen:EndOfSequence/>"));
    EXPECT_EQ(test::faultOf(pull(context)).subcode, "wsen:InvalidEnumerationContext")
        << "the last one ends it";
}

TEST_F(Wsman, AnEmptyEnumerationEndsAtOnce)
{
    const std::string filter =
        "<wsman:Filter Dialect=\"http://schemas.dmtf.org/wbem/wsman/1/wsman/SelectorFilter\">" +
        test::selectors({"Level", "77"}) + "</wsman:Filter>";
    HttpAnswer answer = enumerate(maxElements(3) + filter);
    EXPECT_THAT(answer.body, HasSubstr("<wsen:EnumerationContext></wsen:EnumerationContext><wsman:Items>"
                                       "</wsman:Items><wsman:EndOfSequence/>"));
    answer = pull(contextOf(enumerate(filter)));
    EXPECT_THAT(answer.body, HasSubstr("<wsen:PullResponse><wsen:Items></wsen:Items><wsen:EndOfSequence/>"));
}

/** How often an object is the one end of an association, or the other, or any. */
TEST_F(Wsman, AssociationInstancesAreFoundByClassAndRole)
{
    const auto found = [this](const std::string &role) {
        const HttpAnswer answer = enumerate(
            "<wsman:OptimizeEnumeration/><wsman:MaxElements>20</wsman:MaxElements>"
            "<wsman:Filter Dialect=\"http://schemas.dmtf.org/wbem/wsman/1/cimbinding/associationFilter\">"
            "<wsmb:AssociationInstances><wsmb:Object>"
            "<wsa:Address>http://schemas.xmlsoap.org/ws/2004/08/addressing/role/anonymous</wsa:Address>"
            "<wsa:ReferenceParameters><wsman:ResourceURI>" +
                thing + "</wsman:ResourceURI>" + thingSelectors(3) +
                "</wsa:ReferenceParameters></wsmb:Object>"
                "<wsmb:ResultClassName>Test_ThingPair</wsmb:ResultClassName>" +
                role + "</wsmb:AssociationInstances></wsman:Filter>",
            "", "http://schemas.dmtf.org/wbem/wscim/1/*");
        EXPECT_EQ(answer.status, 200) << answer.body;
        return test::count(answer.body, "</p:Test_ThingPair>");
    };
    EXPECT_EQ(found(""), 2u);
    EXPECT_EQ(found("<wsmb:Role>Antecedent</wsmb:Role>"), 1u);
    EXPECT_EQ(found("<wsmb:Role>Dependent</wsmb:Role>"), 1u);
    EXPECT_EQ(found("<wsmb:Role>Other</wsmb:Role>"), 0u);
}

TEST_F(Wsman, ASelectorFilterComparesValuesOfAnyType)
{
    const auto labels = [this](const std::vector<std::string> &wanted) {
        return textOf(enumerate(maxElements(9) +
                                "<wsman:Filter "
                                "Dialect=\"http://schemas.dmtf.org/wbem/wsman/1/wsman/SelectorFilter\">" +
                                test::selectors(wanted) + "</wsman:Filter>")
                          .body,
                      "p:Label");
    };
    EXPECT_EQ(labels({"Level", "0x1e"}), "label-3");
    EXPECT_EQ(labels({"Hot", "TRUE", "level", "50"}), "label-5");
    EXPECT_EQ(labels({"Hot", "false", "Level", "50"}), "");
    EXPECT_EQ(labels({"DeviceID", "thing6"}), "label-6");
}

TEST_F(Wsman, NoneIsTheClassItselfWithoutSubclasses)
{
    const std::string body =
        enumerate(maxElements(20) + "<wsmb:PolymorphismMode>None</wsmb:PolymorphismMode>").body;
    EXPECT_EQ(test::count(body, "<p:Test_Thing>"), 7u);
    EXPECT_EQ(test::count(body, "<p:Test_SpecialThing>"), 0u);
    EXPECT_EQ(test::count(enumerate(maxElements(20)).body, "<p:Test_SpecialThing>"), 1u);
}

TEST_F(Wsman, AReleasedEnumerationIsGone)
{
    const std::string context = contextOf(enumerate(""));
    EXPECT_EQ(send(releaseAction, thing, "",
                   "<wsen:Release><wsen:EnumerationContext>" + context +
                       "</wsen:EnumerationContext></wsen:Release>")
                  .status,
              200);
    EXPECT_EQ(test::faultOf(pull(context)).subcode, "wsen:InvalidEnumerationContext");
}

TEST_F(Wsman, AUserHasAsManyOpenEnumerationsAsHeMay)
{
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(contextOf(enumerate("")).size(), 32u);
    }
    EXPECT_EQ(
        test::faultOf(enumerate("")),
        (FaultSeen{400, "wsman:QuotaLimit", "",
                   "There are too many open enumerations; pull them to their end, release them, or ask for "
                   "everything at once with OptimizeEnumeration and MaxElements.",
                   ""}));
    EXPECT_EQ(enumerate(maxElements(20)).status, 200) << "which stays open for nothing";
}

TEST_F(Wsman, ExpiresIsToldAndKept)
{
    HttpAnswer answer = enumerate("<wsen:Expires>PT0.02S</wsen:Expires>");
    EXPECT_EQ(textOf(answer.body, "wsen:Expires"), "PT0.020S");
    std::this_thread::sleep_for(milliseconds(40));
    EXPECT_EQ(test::faultOf(pull(contextOf(answer))).subcode, "wsen:InvalidEnumerationContext");
    answer = enumerate("<wsen:Expires>P1D</wsen:Expires>");
    EXPECT_EQ(textOf(answer.body, "wsen:Expires"), "PT300.000S") << "at most";
    EXPECT_EQ(pull(contextOf(answer)).status, 200);
}

// --------------------------------------------------------------------------------------------------- limits

TEST_F(Wsman, MaxEnvelopeSizeIsKept)
{
    const std::string limit = "<wsman:MaxEnvelopeSize>8192</wsman:MaxEnvelopeSize>";
    HttpAnswer answer = enumerate(
        "<wsman:EnumerationMode>EnumerateObjectAndEPR</wsman:EnumerationMode>" + maxElements(20), limit);
    EXPECT_EQ(answer.status, 200);
    EXPECT_LE(answer.body.size(), 8192u);
    const std::size_t first = test::count(answer.body, "<p:Label>");
    EXPECT_GT(first, 1u);
    EXPECT_LT(first, 8u);
    answer = pull(contextOf(answer), "<wsen:MaxElements>20</wsen:MaxElements>");
    EXPECT_EQ(first + test::count(answer.body, "<p:Label>"), 8u);

    const std::string longText(9000, 'x');
    EXPECT_EQ(test::faultOf(send(thing + "/Echo", thing, thingSelectors(3) + limit,
                                 "<p:Echo_INPUT xmlns:p=\"" + thing + "\"><p:text>" + longText +
                                     "</p:text></p:Echo_INPUT>")),
              (FaultSeen{400, "wsman:EncodingLimit", "UnreportableSuccess",
                         "The answer is longer than the MaxEnvelopeSize of the request allows.", ""}));
    EXPECT_EQ(send(putAction, thing, thingSelectors(3) + fragment("Label"),
                   "<wsman:XmlFragment><Label>" + longText + "</Label></wsman:XmlFragment>")
                  .status,
              200);
    EXPECT_EQ(test::faultOf(send(getAction, thing, thingSelectors(3) + limit, "")).detail, "MaxEnvelopeSize");
    const FaultSeen tooLong = {400, "wsman:EncodingLimit", "MaxEnvelopeSize",
                               "An object is longer than the MaxEnvelopeSize of the request allows.", ""};
    const std::string filter =
        "<wsman:Filter Dialect=\"http://schemas.dmtf.org/wbem/wsman/1/wsman/SelectorFilter\">" +
        test::selectors({"DeviceID", "thing3"}) + "</wsman:Filter>";
    EXPECT_EQ(test::faultOf(enumerate(maxElements(1) + filter, limit)), tooLong);
    const std::string context = contextOf(enumerate(filter));
    EXPECT_EQ(test::faultOf(pull(context, "", limit)), tooLong);
    EXPECT_EQ(pull(context).status, 200) << "which is not lost by that";
}

TEST_F(Wsman, OperationTimeoutEndsTheWaitForAnotherRequest)
{
    test::Client napper(server_.port());
    const std::string nap = envelope(thing + "/Nap", thing, thingSelectors(3),
                                     "<p:Nap_INPUT xmlns:p=\"" + thing + "\"><p:ms>300</p:ms></p:Nap_INPUT>");
    const std::string body = envelope(
        getAction, thing, thingSelectors(3) + "<wsman:OperationTimeout>PT0.01S</wsman:OperationTimeout>", "");
    HttpAnswer answer;
    do { // until this request comes while the other one is at its provider
        napper.send(test::postWsman(nap));
        for (int i = 0; i < 20 && answer.status != 500; ++i) {
            answer = server_.exchange(test::postWsman(body));
        }
        EXPECT_EQ(napper.receive().status, 200);
    } while (answer.status == 200);
    EXPECT_EQ(test::faultOf(answer),
              (FaultSeen{500, "wsman:TimedOut", "",
                         "Another request has been keeping the providers busy for too long.", "1"}));
    EXPECT_EQ(server_.exchange(test::postWsman(body)).status, 200);
}

// ----------------------------------------------------------------------------------------------- malformed

TEST_F(Wsman, ARequestCutOffAnywhereGetsAFault)
{
    const std::string good = envelope(getAction, thing, thingSelectors(3), "");
    test::Client client(server_.port());
    for (std::size_t length = 0; length < good.size(); length += 3) {
        const HttpAnswer answer = client.exchange(test::postWsman(good.substr(0, length)));
        ASSERT_EQ(test::faultOf(answer).subcode, "wsman:SchemaValidationError") << length;
    }
    EXPECT_EQ(client.exchange(test::postWsman(good)).status, 200);
}

TEST_F(Wsman, ARequestWithOneByteChangedNeverHarms)
{
    const std::string good =
        envelope(enumerateAction, thing, "<wsman:OperationTimeout>PT30S</wsman:OperationTimeout>",
                 "<wsen:Enumerate>" + maxElements(2) + "<wsen:Expires>PT1S</wsen:Expires></wsen:Enumerate>");
    test::Client client(server_.port());
    for (const char byte : {'<', '\0', '"', '\xff', '&', ':', '9'}) {
        for (std::size_t place = 0; place < good.size(); place += 3) {
            std::string body = good;
            body[place] = byte;
            const int status = client.exchange(test::postWsman(body)).status;
            ASSERT_TRUE(status == 200 || status == 400 || status == 500) << status << " at " << place;
        }
    }
    EXPECT_EQ(client.exchange(test::postWsman(envelope(getAction, thing, thingSelectors(3), ""))).status,
              200);
}

TEST_F(Wsman, WhatIsTooDeepTooWideOrHasEntitiesIsRefused)
{
    const auto fault = [this](const std::string &headers, const std::string &body) {
        return test::faultOf(send(thing + "/Echo", thing, thingSelectors(3) + headers, body));
    };
    const auto repeat = [](const std::string &text, int times) {
        std::string all;
        for (int i = 0; i < times; ++i) {
            all += text;
        }
        return all;
    };
    const FaultSeen notWellFormed = {400, "wsman:SchemaValidationError", "",
                                     "The document is no well-formed XML.", ""};
    EXPECT_EQ(fault("", repeat("<a>", 100) + repeat("</a>", 100)),
              (FaultSeen{400, "wsman:EncodingLimit", "",
                         "The document has elements that are nested more than 64 deep.", ""}));
    EXPECT_EQ(fault("", "<a>" + repeat("<b/>", 20000) + "</a>"),
              (FaultSeen{400, "wsman:EncodingLimit", "", "The document has more than 20000 elements.", ""}));
    EXPECT_EQ(
        test::faultOf(server_.exchange(test::postWsman("<!DOCTYPE a [<!ENTITY b \"bbbb\">]><a>&b;</a>"))),
        notWellFormed);
    EXPECT_EQ(fault("", "<a>&other;</a>"), notWellFormed);
    EXPECT_EQ(fault(repeat("<o:Own xmlns:o=\"urn:own\"/>", 40), "").text, "There are more than 32 headers.");
    std::string input = "<p:Echo_INPUT xmlns:p=\"" + thing + "\">";
    for (int i = 0; i < 1100; ++i) {
        input += "<p:a" + std::to_string(i) + ">1</p:a" + std::to_string(i) + ">";
    }
    EXPECT_EQ(fault("", input + "</p:Echo_INPUT>").text, "There are more than 1024 values.");
    std::vector<std::string> many;
    for (int i = 0; i < 65; ++i) {
        many.push_back("k" + std::to_string(i));
        many.push_back("v");
    }
    EXPECT_EQ(test::faultOf(send(getAction, thing, test::selectors(many), "")).text,
              "There are more than 64 selectors.");
    const std::string open = "<wsman:Selector Name=\"a\"><wsa:ReferenceParameters><wsman:ResourceURI>" +
                             thing + "</wsman:ResourceURI><wsman:SelectorSet>";
    const std::string close = "</wsman:SelectorSet></wsa:ReferenceParameters></wsman:Selector>";
    EXPECT_EQ(
        test::faultOf(
            send(getAction, thing,
                 "<wsman:SelectorSet>" + repeat(open, 12) + repeat(close, 12) + "</wsman:SelectorSet>", ""))
            .text,
        "Endpoint references are nested more than 8 deep.");
}

} // namespace
