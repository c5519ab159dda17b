// SPDX-License-Identifier: Apache-2.0
// WS-Management: each mistake of a client gets the fault that the standard names, with the CIM error behind
// it.
#include "wsman/wsman_client.h"

namespace
{

using test::envelope;
using test::FaultSeen;
using test::selectors;
using test::thingSelectors;

const std::string getAction = std::string(test::transfer) + "Get";
const std::string putAction = std::string(test::transfer) + "Put";
const std::string createAction = std::string(test::transfer) + "Create";
const std::string deleteAction = std::string(test::transfer) + "Delete";
const std::string enumerateAction = std::string(test::enumeration) + "Enumerate";
const std::string pullAction = std::string(test::enumeration) + "Pull";
const std::string releaseAction = std::string(test::enumeration) + "Release";
const std::string thing = test::thingUri;

class WsmanFaults : public testing::Test
{
  protected:
    test::HttpAnswer send(const std::string &body)
    {
        return server_.exchange(test::postWsman(body));
    }

    FaultSeen fault(const std::string &action, const std::string &uri, const std::string &headers,
                    const std::string &body = "")
    {
        return test::faultOf(send(envelope(action, uri, headers, body)));
    }

    FaultSeen enumerateFault(const std::string &inner, const std::string &uri = thing)
    {
        return fault(enumerateAction, uri, "", "<wsen:Enumerate>" + inner + "</wsen:Enumerate>");
    }

    FaultSeen callFault(const std::string &method, const std::string &arguments, int number = 3)
    {
        return fault(thing + "/" + method, thing, thingSelectors(number),
                     "<p:" + method + "_INPUT xmlns:p=\"" + thing + "\">" + arguments + "</p:" + method +
                         "_INPUT>");
    }

    FaultSeen putFault(const std::string &properties, const std::string &headers = "")
    {
        return fault(putAction, thing, thingSelectors(3) + headers,
                     "<p:Test_Thing xmlns:p=\"" + thing + "\">" + properties + "</p:Test_Thing>");
    }

    test::TestServer server_;
};

TEST_F(WsmanFaults, SelectorsThatDoNotFit)
{
    const auto keys = [](const std::string &system, const std::vector<std::string> &more) {
        std::vector<std::string> all = {
            "SystemName",          system, "CreationClassName", "Test_Thing", "SystemCreationClassName",
            "Linux_ComputerSystem"};
        all.insert(all.end(), more.begin(), more.end());
        return selectors(all);
    };
    EXPECT_EQ(fault(getAction, thing, keys("desk", {})),
              (FaultSeen{400, "wsman:InvalidSelectors", "InsufficientSelectors",
                         "The selector DeviceID, a key of the class Test_Thing, is missing.", ""}));
    EXPECT_EQ(
        fault(getAction, thing, ""),
        (FaultSeen{400, "wsman:InvalidSelectors", "InsufficientSelectors",
                   "The selector SystemCreationClassName, a key of the class Test_Thing, is missing.", ""}));
    EXPECT_EQ(fault(getAction, thing, keys("desk", {"DeviceID", "thing3", "Colour", "red"})),
              (FaultSeen{400, "wsman:InvalidSelectors", "UnexpectedSelectors",
                         "The class Test_Thing has no key Colour.", ""}));
    EXPECT_EQ(fault(getAction, thing, keys("desk", {"DeviceID", "thing3", "deviceid", "thing4"})),
              (FaultSeen{400, "wsman:InvalidSelectors", "DuplicateSelectors",
                         "The selector deviceid is given twice.", ""}));
    EXPECT_EQ(fault(getAction, test::classUri("Test_Simple"), selectors({"Id", "many"})),
              (FaultSeen{400, "wsman:InvalidSelectors", "TypeMismatch",
                         "The value \"many\" of Id is not a uint16.", "4"}));
    EXPECT_EQ(fault(getAction, thing, selectors({"", "x"})),
              (FaultSeen{400, "wsman:SchemaValidationError", "", "A Selector has no Name.", ""}));
    EXPECT_EQ(fault(getAction, thing, keys("desk", {"DeviceID", "thing9"})),
              (FaultSeen{400, "wsa:DestinationUnreachable", "", "no such thing", "6"}));
}

TEST_F(WsmanFaults, ResourcesThatAreNone)
{
    const char *form =
        " names no class. It is http://schemas.dmtf.org/wbem/wscim/1/cim-schema/2/CLASS of CIM's own classes, "
        "and http://VENDOR/wbem/wscim/1/cim-schema/2/CLASS of others.";
    for (const char *uri :
         {"http://schemas.dmtf.org/wbem/wscim/1/cim-schema/2/Test_Thing",
          "http://schemas.example.org/wbem/wscim/1/cim-schema/2/", "http://schemas.example.org/Test_Thing",
          "Test_Thing", "/wbem/wscim/1/cim-schema/2/Test_Thing",
          "http://schemas.example.org/wbem/wscim/1/cim-schema/2/CIM_Thing"}) {
        EXPECT_EQ(fault(getAction, uri, thingSelectors(3)),
                  (FaultSeen{400, "wsa:DestinationUnreachable", "InvalidResourceURI",
                             "The resource URI " + std::string(uri) + form, ""}));
    }
    EXPECT_EQ(fault(getAction, test::classUri("Test_Nope"), ""),
              (FaultSeen{400, "wsa:DestinationUnreachable", "InvalidResourceURI",
                         "The class Test_Nope does not exist.", "5"}));
    EXPECT_EQ(fault(getAction, thing, selectors({"__cimnamespace", "root/nowhere"})),
              (FaultSeen{400, "wsa:DestinationUnreachable", "InvalidResourceURI",
                         "There is no namespace root/nowhere.", "3"}));
    EXPECT_EQ(
        fault(enumerateAction, thing, selectors({"__cimnamespace", "root/nowhere"}), "<wsen:Enumerate/>"),
        (FaultSeen{400, "wsa:DestinationUnreachable", "InvalidResourceURI",
                   "There is no namespace root/nowhere.", "3"}));
}

TEST_F(WsmanFaults, ActionsThatAreNone)
{
    EXPECT_EQ(
        fault(std::string(test::transfer) + "Got", thing, thingSelectors(3)),
        (FaultSeen{400, "wsa:ActionNotSupported", "",
                   "The action is none of WS-Management's; a method is called by the resource URI of its "
                   "class, a slash, and its name.",
                   ""}));
    EXPECT_EQ(callFault("Nope", ""), (FaultSeen{400, "wsa:ActionNotSupported", "",
                                                "The class Test_Thing has no method Nope.", "17"}));
    EXPECT_EQ(fault(test::classUri("Test_Simple") + "/Echo", thing, thingSelectors(3)).subcode,
              "wsa:ActionNotSupported");
    const test::HttpAnswer answer =
        send(envelope(std::string(test::transfer) + "Got", thing, thingSelectors(3), ""));
    EXPECT_EQ(test::textOf(test::textOf(answer.body, "s:Detail"), "wsa:Action"),
              "http://schemas.xmlsoap.org/ws/2004/09/transfer/Got");
}

TEST_F(WsmanFaults, WhatCimRefusesIsRefused)
{
    EXPECT_EQ(fault(deleteAction, thing, thingSelectors(3)),
              (FaultSeen{400, "wsa:ActionNotSupported", "", "no delete", "7"}));
    EXPECT_EQ(fault(createAction, thing, "",
                    "<p:Test_Thing xmlns:p=\"" + thing + "\"><p:DeviceID>thing3</p:DeviceID></p:Test_Thing>"),
              (FaultSeen{400, "wsman:AlreadyExists", "", "the thing is there already", "11"}));
    EXPECT_EQ(fault(deleteAction, test::classUri("Test_Unserved"), selectors({"Name", "x"})).cimCode, "7");
    EXPECT_EQ(callFault("Fail", "<p:code>2</p:code><p:message>not for you</p:message>"),
              (FaultSeen{400, "wsman:AccessDenied", "", "not for you", "2"}));
    EXPECT_EQ(callFault("Fail", "<p:code>1</p:code><p:message>it broke</p:message>"),
              (FaultSeen{500, "wsman:InternalError", "", "it broke", "1"}));
    EXPECT_EQ(callFault("Fail", "<p:code>16</p:code><p:message>not now</p:message>"),
              (FaultSeen{400, "wsa:ActionNotSupported", "", "not now", "16"}));
    EXPECT_EQ(callFault("Fail", "<p:code>4</p:code><p:message>wrong &amp; bad</p:message>"),
              (FaultSeen{400, "wsman:InvalidParameter", "", "wrong & bad", "4"}));
}

TEST_F(WsmanFaults, ValuesThatAreNone)
{
    EXPECT_EQ(putFault("<p:Nope>1</p:Nope>"),
              (FaultSeen{400, "wxf:InvalidRepresentation", "InvalidValues",
                         "The class Test_Thing has no property Nope.", "12"}));
    EXPECT_EQ(putFault("<p:Level>high</p:Level>"),
              (FaultSeen{400, "wxf:InvalidRepresentation", "InvalidValues",
                         "The value \"high\" of Level is not a uint16.", "4"}));
    EXPECT_EQ(putFault("<p:Level>1</p:Level><p:Level>2</p:Level>"),
              (FaultSeen{400, "wxf:InvalidRepresentation", "InvalidValues",
                         "The element Level is given twice, and is no array.", ""}));
    EXPECT_EQ(putFault("<p:Label><p:Deep/></p:Label>"),
              (FaultSeen{400, "wxf:InvalidRepresentation", "InvalidValues",
                         "The element Label holds no value but the element Deep.", ""}));
    EXPECT_EQ(putFault("<p:DeviceID>thing4</p:DeviceID>"),
              (FaultSeen{400, "wxf:InvalidRepresentation", "InvalidValues",
                         "The keys of an object cannot be changed.", ""}));
    EXPECT_EQ(fault(putAction, thing, thingSelectors(3), "<p:Other xmlns:p=\"" + thing + "\"/>"),
              (FaultSeen{400, "wxf:InvalidRepresentation", "InvalidNamespace",
                         "The body holds no object of the class Test_Thing.", ""}));
    EXPECT_EQ(callFault("Types", "<p:a>256</p:a>"),
              (FaultSeen{400, "wsman:InvalidParameter", "", "The value \"256\" of a is not a uint8.", "4"}));
    EXPECT_EQ(callFault("Types", "<p:a>1</p:a><p:a>2</p:a>"),
              (FaultSeen{400, "wsman:InvalidParameter", "InvalidValues",
                         "The element a is given twice, and is no array.", ""}));
    EXPECT_EQ(fault(thing + "/Echo", thing, thingSelectors(3), "<p:Other_INPUT xmlns:p=\"x\"/>"),
              (FaultSeen{400, "wsman:SchemaValidationError", "",
                         "The body holds something else than Echo_INPUT.", ""}));
}

TEST_F(WsmanFaults, FragmentsThatAreNone)
{
    const auto header = [](const std::string &expression, const std::string &attributes = "") {
        return "<wsman:FragmentTransfer s:mustUnderstand=\"true\"" + attributes + ">" + expression +
               "</wsman:FragmentTransfer>";
    };
    EXPECT_EQ(fault(getAction, thing, thingSelectors(3) + header("Nope")),
              (FaultSeen{400, "wxf:InvalidRepresentation", "InvalidFragment",
                         "The fragment Nope names no property of the class Test_Thing.", ""}));
    EXPECT_EQ(fault(getAction, thing, thingSelectors(3) + header("Codes[x]")).detail, "InvalidFragment");
    EXPECT_EQ(fault(getAction, thing, thingSelectors(3) + header("Codes[0]")).detail, "InvalidFragment");
    EXPECT_EQ(fault(getAction, thing, thingSelectors(3) + header("Label", " Dialect=\"urn:own\"")),
              (FaultSeen{400, "wsman:UnsupportedFeature", "FragmentLevelAccess",
                         "Fragments are named by XPath only.", ""}));
    EXPECT_EQ(fault(deleteAction, thing, thingSelectors(3) + header("Label")),
              (FaultSeen{400, "wsman:UnsupportedFeature", "FragmentLevelAccess",
                         "Get and Put have fragments, other actions have not.", ""}));
    EXPECT_EQ(
        fault(putAction, thing, thingSelectors(3) + header("Label"), "<p:Label xmlns:p=\"x\">x</p:Label>"),
        (FaultSeen{400, "wxf:InvalidRepresentation", "MissingValues", "The body holds no wsman:XmlFragment.",
                   ""}));
    EXPECT_EQ(fault(putAction, thing, thingSelectors(3) + header("Label"),
                    "<wsman:XmlFragment><Level>1</Level></wsman:XmlFragment>"),
              (FaultSeen{400, "wxf:InvalidRepresentation", "InvalidFragment",
                         "The body holds something else than the property Label.", ""}));
    EXPECT_EQ(
        fault(putAction, thing, thingSelectors(3) + header("Codes[1]"),
              "<wsman:XmlFragment><Codes>1</Codes></wsman:XmlFragment>"),
        (FaultSeen{400, "wsa:ActionNotSupported", "", "only the label and the tags can be changed", "7"}));
    const auto putTag = [&](const std::string &expression, const std::string &content) {
        return fault(putAction, thing, thingSelectors(3) + header(expression),
                     "<wsman:XmlFragment>" + content + "</wsman:XmlFragment>");
    };
    EXPECT_EQ(putTag("Tags[3]", "<Tags>x</Tags>"),
              (FaultSeen{400, "wxf:InvalidRepresentation", "InvalidFragment",
                         "The array Tags has no element 3.", ""}));
    const FaultSeen notOneElement = {400, "wxf:InvalidRepresentation", "InvalidFragment",
                                     "The body holds something else than one element of the array Tags.", ""};
    EXPECT_EQ(putTag("Tags[1]", "<Label>x</Label>"), notOneElement);
    EXPECT_EQ(putTag("Tags[1]", "<Tags>x</Tags><Tags>y</Tags>"), notOneElement);
    EXPECT_EQ(putTag("Label[1]", "<Label>x</Label>").detail, "InvalidFragment");
    EXPECT_EQ(putTag("Codes[1]", "<Codes>70000</Codes>"),
              (FaultSeen{400, "wxf:InvalidRepresentation", "InvalidValues",
                         "The value \"70000\" of Codes is not a uint16.", "4"}));
    EXPECT_EQ(
        fault(putAction, thing, thingSelectors(3) + header("Level"),
              "<wsman:XmlFragment><Level>1</Level></wsman:XmlFragment>"),
        (FaultSeen{400, "wsa:ActionNotSupported", "", "only the label and the tags can be changed", "7"}));
}

TEST_F(WsmanFaults, EnumerationsThatAreNone)
{
    EXPECT_EQ(enumerateFault("<wsman:EnumerationMode>Everything</wsman:EnumerationMode>"),
              (FaultSeen{400, "wsman:UnsupportedFeature", "EnumerationMode",
                         "There is no enumeration mode Everything; there are EnumerateEPR and "
                         "EnumerateObjectAndEPR.",
                         ""}));
    EXPECT_EQ(enumerateFault("<wsman:MaxElements>0</wsman:MaxElements>").text,
              "MaxElements is no number greater than 0.");
    EXPECT_EQ(enumerateFault("<wsmb:PolymorphismMode>All</wsmb:PolymorphismMode>").subcode,
              "wsman:UnsupportedFeature");
    EXPECT_EQ(enumerateFault("<wsen:Expires>soon</wsen:Expires>"),
              (FaultSeen{400, "wsen:InvalidExpirationTime", "",
                         "Expires is no duration greater than 0, such as PT60S.", ""}));
    EXPECT_EQ(enumerateFault("<wsen:Expires>PT0S</wsen:Expires>").subcode, "wsen:InvalidExpirationTime");
    EXPECT_EQ(enumerateFault("<wsen:Expires>2030-01-01T00:00:00Z</wsen:Expires>").subcode,
              "wsen:UnsupportedExpirationType");
    EXPECT_EQ(enumerateFault("", test::allUri),
              (FaultSeen{400, "wsen:CannotProcessFilter", "", "An enumeration of all classes needs a filter.",
                         ""}));
    EXPECT_EQ(enumerateFault("<wsman:Filter Dialect=\"urn:own\">x</wsman:Filter>"),
              (FaultSeen{400, "wsen:FilterDialectRequestedUnavailable", "",
                         "There is no filter dialect urn:own.", ""}));
    EXPECT_EQ(enumerateFault("<wsman:Filter Dialect=\"http://schemas.dmtf.org/wbem/wsman/1/wsman/"
                             "SelectorFilter\">" +
                             selectors({"Colour", "red"}) + "</wsman:Filter>"),
              (FaultSeen{400, "wsen:CannotProcessFilter", "",
                         "The selector filter cannot tell objects of the class Test_Thing by Colour.", ""}));
    EXPECT_EQ(enumerateFault("<wsman:Filter Dialect=\"http://schemas.dmtf.org/wbem/wsman/1/wsman/"
                             "SelectorFilter\">" +
                             selectors({"Level", "high"}) + "</wsman:Filter>"),
              (FaultSeen{400, "wsen:CannotProcessFilter", "", "The value \"high\" of Level is not a uint16.",
                         "4"}));
    EXPECT_EQ(enumerateFault("<wsman:Filter Dialect=\"http://schemas.dmtf.org/wbem/wsman/1/cimbinding/"
                             "associationFilter\"><wsmb:AssociatedInstances/></wsman:Filter>",
                             test::allUri)
                  .text,
              "An association filter has one AssociatedInstances or AssociationInstances, with an Object.");
    EXPECT_EQ(fault(enumerateAction, thing, ""),
              (FaultSeen{400, "wsman:SchemaValidationError", "", "The body holds no wsen:Enumerate.", ""}));
    EXPECT_EQ(fault(pullAction, thing, ""),
              (FaultSeen{400, "wsman:SchemaValidationError", "", "The body holds no wsen:Pull.", ""}));
    const FaultSeen unknown = {500, "wsen:InvalidEnumerationContext", "",
                               "The supplied enumeration context is invalid.", ""};
    EXPECT_EQ(fault(pullAction, thing, "", "<wsen:Pull/>"), unknown);
    EXPECT_EQ(fault(releaseAction, thing, "",
                    "<wsen:Release><wsen:EnumerationContext>x</wsen:EnumerationContext></wsen:Release>"),
              unknown);
}

TEST_F(WsmanFaults, HeadersThatDoNotFit)
{
    const auto header = [this](const std::string &more) {
        return fault(getAction, thing, thingSelectors(3) + more);
    };
    EXPECT_EQ(header("<o:Own xmlns:o=\"urn:own\" s:mustUnderstand=\"true\"/>"),
              (FaultSeen{500, "s:MustUnderstand", "",
                         "A header that must be understood is not supported by the service.", ""}));
    EXPECT_EQ(header("<o:Own xmlns:o=\"urn:own\"/>").status, 200) << "what need not be understood";
    EXPECT_EQ(header("<wsman:OperationTimeout>soon</wsman:OperationTimeout>"),
              (FaultSeen{400, "wsa:InvalidMessageInformationHeader", "",
                         "The OperationTimeout is no duration, such as PT30S.", ""}));
    EXPECT_EQ(header("<wsman:MaxEnvelopeSize>8191</wsman:MaxEnvelopeSize>"),
              (FaultSeen{400, "wsman:EncodingLimit", "MinimumEnvelopeLimit",
                         "A MaxEnvelopeSize below 8192 octets is not supported.", ""}));
    EXPECT_EQ(header("<wsman:MaxEnvelopeSize>much</wsman:MaxEnvelopeSize>").subcode,
              "wsa:InvalidMessageInformationHeader");
    EXPECT_EQ(header("<wsman:MaxEnvelopeSize>99999999999999999999</wsman:MaxEnvelopeSize>").status, 200);
    EXPECT_EQ(header("<wsman:Locale s:mustUnderstand=\"true\" xml:lang=\"de\"/>"),
              (FaultSeen{400, "wsman:UnsupportedFeature", "Locale", "The service speaks English only.", ""}));
    EXPECT_EQ(header("<wsman:Locale xml:lang=\"de\"/>").status, 200);
    EXPECT_EQ(header("<wsman:OptionSet><wsman:Option Name=\"x\" MustComply=\"true\"/></wsman:OptionSet>"),
              (FaultSeen{400, "wsman:InvalidOptions", "NotSupported",
                         "The service has no options that a client could insist on.", ""}));
    EXPECT_EQ(header("<wsa:FaultTo><wsa:Address>http://elsewhere/</wsa:Address></wsa:FaultTo>"),
              (FaultSeen{400, "wsman:UnsupportedFeature", "AddressingMode",
                         "Answers go back on the connection of the request only.", ""}));
    EXPECT_EQ(header("<wsa:MessageID>2</wsa:MessageID>"),
              (FaultSeen{400, "wsa:InvalidMessageInformationHeader", "", "A header is given twice.", ""}));
}

TEST_F(WsmanFaults, MessagesThatAreNone)
{
    const std::string good = envelope(getAction, thing, thingSelectors(3), "");
    const auto without = [&](const std::string &from, const std::string &to) {
        std::string text = good;
        const std::size_t start = text.find(from);
        const std::size_t end = text.find(to, start) + to.size();
        return test::faultOf(send(text.erase(start, end - start)));
    };
    EXPECT_EQ(without("<wsa:Action", "</wsa:Action>"),
              (FaultSeen{400, "wsa:MessageInformationHeaderRequired", "", "The header wsa:Action is missing.",
                         ""}));
    EXPECT_EQ(without("<wsa:MessageID", "</wsa:MessageID>"),
              (FaultSeen{400, "wsa:MessageInformationHeaderRequired", "",
                         "The header wsa:MessageID is missing.", ""}));
    EXPECT_EQ(without("<wsman:ResourceURI", "</wsman:ResourceURI>"),
              (FaultSeen{400, "wsa:DestinationUnreachable", "InvalidResourceURI",
                         "The header wsman:ResourceURI is missing.", ""}));
    EXPECT_EQ(without("<s:Header>", "</s:Header>").subcode, "wsa:MessageInformationHeaderRequired");
    EXPECT_EQ(without("<s:Body>", "</s:Body>"),
              (FaultSeen{400, "wsman:SchemaValidationError", "", "The envelope has no Body.", ""}));
    EXPECT_EQ(test::faultOf(send("<a/>")),
              (FaultSeen{400, "wsman:SchemaValidationError", "", "The document is no SOAP envelope.", ""}));
    EXPECT_EQ(test::faultOf(send("")),
              (FaultSeen{400, "wsman:SchemaValidationError", "", "The document is no well-formed XML.", ""}));
    EXPECT_EQ(test::faultOf(send("<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\"/>")),
              (FaultSeen{500, "s:VersionMismatch", "", "The message is not a SOAP 1.2 envelope.", ""}));
}

TEST_F(WsmanFaults, EveryFaultRelatesToItsRequest)
{
    const test::HttpAnswer answer = send(envelope(getAction, thing, "", ""));
    EXPECT_EQ(test::textOf(answer.body, "wsa:RelatesTo"), "uuid:1");
    EXPECT_EQ(test::textOf(answer.body, "wsa:Action"), "http://schemas.dmtf.org/wbem/wsman/1/wsman/fault");
    EXPECT_EQ(answer.header("Content-Type"), "application/soap+xml;charset=UTF-8");
}

} // namespace
