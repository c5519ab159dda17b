// SPDX-License-Identifier: Apache-2.0
// Requests that are not what they should be. Whatever comes in, there is an answer, and the next request
// works.
#include "test_host.h"

#include <functional>

#include <gmock/gmock.h>

namespace
{

using test::Client;
using test::HttpAnswer;

const std::string good = test::intrinsic("GetInstance", "<IPARAMVALUE NAME=\"InstanceName\">" +
                                                            test::thingName(3) + "</IPARAMVALUE>");

class Malformed : public testing::Test
{
  protected:
    HttpAnswer send(const std::string &body)
    {
        return server_.exchange(test::post(body));
    }

    void expectRefusal(const std::string &body, int status, const std::string &cimError)
    {
        const HttpAnswer answer = send(body);
        EXPECT_EQ(answer.status, status) << body;
        EXPECT_EQ(answer.header("CIMError"), cimError) << body;
        EXPECT_EQ(answer.body, "");
    }

    /** The document is beyond a limit, which the answer names. */
    void expectTooLarge(const std::string &body, const std::string &text)
    {
        const HttpAnswer answer = send(body);
        EXPECT_EQ(answer.status, 413);
        EXPECT_EQ(answer.header("Content-Type"), "text/plain; charset=utf-8");
        EXPECT_EQ(answer.header("CIMError"), "");
        EXPECT_EQ(answer.body, text);
    }

    void expectError(const std::string &body, int code, const std::string &text)
    {
        const HttpAnswer answer = send(body);
        EXPECT_EQ(answer.status, 200);
        EXPECT_EQ(test::errorCode(answer.body), code) << answer.body;
        EXPECT_EQ(test::errorText(answer.body), text);
    }

    static std::string replaced(std::string text, const std::string &what, const std::string &with)
    {
        const std::size_t place = text.find(what);
        EXPECT_NE(place, std::string::npos) << what;
        return text.replace(place, what.size(), with);
    }

    /** Tests open many connections one after the other; the server notices in its own time that they have
     * ended. */
    static host::HttpLimits manyConnections()
    {
        host::HttpLimits limits;
        limits.total = 1000;
        limits.perAddress = 1000;
        limits.anonymous = 1000;
        return limits;
    }

    test::TestServer server_{manyConnections()};
};

TEST_F(Malformed, ARequestCutOffAnywhereIsNotWellFormed)
{
    Client client(server_.port());
    for (std::size_t length = 0; length < good.size(); ++length) {
        const HttpAnswer answer = client.exchange(test::post(good.substr(0, length)));
        ASSERT_EQ(answer.status, 400) << length;
        ASSERT_EQ(answer.header("CIMError"), "request-not-well-formed") << length;
    }
    EXPECT_EQ(client.exchange(test::post(good)).status, 200);
}

TEST_F(Malformed, ARequestWithOneByteChangedNeverHarms)
{
    Client client(server_.port());
    for (const char byte : {'<', '\0', '"', '\xff', '&'}) {
        for (std::size_t place = 0; place < good.size(); place += 3) {
            std::string body = good;
            body[place] = byte;
            const int status = client.exchange(test::post(body)).status;
            ASSERT_TRUE(status == 200 || status == 400 || status == 501) << status << " at " << place;
        }
    }
    EXPECT_EQ(client.exchange(test::post(good)).status, 200);
}

TEST_F(Malformed, AConnectionCutOffAnywhereIsForgotten)
{
    const std::string request = test::post(good);
    for (std::size_t length = 0; length < request.size(); length += 7) {
        Client client(server_.port());
        client.send(request.substr(0, length));
    }
    EXPECT_EQ(send(good).status, 200);
}

TEST_F(Malformed, XmlThatIsNoMessageIsNotValid)
{
    for (const char *body :
         {"<a/>", "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"/>",
          "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE PROTOCOLVERSION=\"1.0\"/></CIM>",
          "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\"/></CIM>",
          "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ/>"
          "</MESSAGE></CIM>",
          "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\"><SIMPLERSP/>"
          "</MESSAGE></CIM>",
          "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>"
          "<IMETHODCALL/></SIMPLEREQ></MESSAGE></CIM>",
          "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>"
          "<IMETHODCALL NAME=\"GetClass\"/></SIMPLEREQ></MESSAGE></CIM>",
          "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>"
          "<METHODCALL NAME=\"Echo\"/></SIMPLEREQ></MESSAGE></CIM>",
          "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>"
          "<OTHERCALL NAME=\"Echo\"/></SIMPLEREQ></MESSAGE></CIM>"}) {
        expectRefusal(body, 400, "request-not-valid");
    }
}

TEST_F(Malformed, OtherVersionsAreRefused)
{
    expectRefusal(replaced(good, "CIMVERSION=\"2.0\"", "CIMVERSION=\"3.0\""), 501, "unsupported-cim-version");
    expectRefusal(replaced(good, "CIMVERSION=\"2.0\"", ""), 501, "unsupported-cim-version");
    expectRefusal(replaced(good, "DTDVERSION=\"2.0\"", "DTDVERSION=\"1.0\""), 501, "unsupported-dtd-version");
    expectRefusal(replaced(good, "PROTOCOLVERSION=\"1.0\"", "PROTOCOLVERSION=\"2.0\""), 501,
                  "unsupported-protocol-version");
    EXPECT_EQ(send(replaced(good, "DTDVERSION=\"2.0\"", "DTDVERSION=\"2.4\"")).status, 200);
    EXPECT_EQ(send(replaced(good, "PROTOCOLVERSION=\"1.0\"", "PROTOCOLVERSION=\"1.4\"")).status, 200);
}

TEST_F(Malformed, SeveralRequestsInOneAreNotImplemented)
{
    const std::string start =
        "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\">";
    expectRefusal(start + "<MULTIREQ/></MESSAGE></CIM>", 501, "multiple-requests-unsupported");
    expectRefusal(start + "<SIMPLEEXPREQ/></MESSAGE></CIM>", 501, "unsupported-operation");
}

TEST_F(Malformed, DeepAndWideDocumentsAreRefused)
{
    std::string deep;
    for (int i = 0; i < 100000; ++i) {
        deep += "<a>";
    }
    expectTooLarge(deep, "The document has elements that are nested more than 64 deep.");
    std::string wide = "<a>";
    for (int i = 0; i < 100000; ++i) {
        wide += "<b/>";
    }
    expectTooLarge(wide + "</a>", "The document has more than 20000 elements.");
    std::string attributes = "<a";
    for (int i = 0; i < 17; ++i) {
        attributes += " b" + std::to_string(i) + "=\"\"";
    }
    expectTooLarge(attributes + "/>", "The document has an element with more than 16 attributes.");
    expectRefusal(
        replaced(good, "NAME=\"root\"", "NAME=\"root\" A=\"" + std::string(900000, 'x') + "\" A=\"\""), 400,
        "request-not-well-formed");
    const HttpAnswer large = send(replaced(good, "thing3", std::string(900000, 'x')));
    EXPECT_EQ(test::errorCode(large.body), 6) << "a huge key is a key like others";
}

TEST_F(Malformed, EntitiesAreNotExpanded)
{
    expectRefusal("<!DOCTYPE CIM [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;\">]>" +
                      good.substr(good.find("<CIM")),
                  400, "request-not-well-formed");
    expectRefusal(replaced(good, "thing3", "&external;"), 400, "request-not-well-formed");
}

TEST_F(Malformed, DeepReferencesAreRefused)
{
    std::string reference = test::thingName(1);
    for (int i = 0; i < 30; ++i) {
        reference =
            "<INSTANCENAME CLASSNAME=\"Test_ThingPair\"><KEYBINDING NAME=\"Antecedent\"><VALUE.REFERENCE>" +
            reference + "</VALUE.REFERENCE></KEYBINDING></INSTANCENAME>";
    }
    expectTooLarge(
        test::intrinsic("GetInstance", "<IPARAMVALUE NAME=\"InstanceName\">" + reference + "</IPARAMVALUE>"),
        "The document has elements that are nested more than 64 deep.");
}

TEST_F(Malformed, LengthsThatAreWrongAreTold)
{
    Client negative(server_.port());
    negative.send("POST /cimom HTTP/1.1\r\nHost: localhost\r\nContent-Length: -5\r\n\r\n");
    EXPECT_NE(negative.receive().status, 200);
    Client text(server_.port());
    text.send("POST /cimom HTTP/1.1\r\nHost: localhost\r\nContent-Length: many\r\n\r\n");
    EXPECT_NE(text.receive().status, 200);
    Client longer(server_.port()); // the rest is no request
    longer.send(test::post(good) + "rubbish\r\n\r\n");
    EXPECT_EQ(longer.receive().status, 200);
    EXPECT_NE(longer.receive().status, 200);
    Client noHttp(server_.port());
    noHttp.send("what is this\r\n\r\n");
    EXPECT_NE(noHttp.receive().status, 200);
    Client chunk(server_.port());
    chunk.send("POST /cimom HTTP/1.1\r\nHost: localhost\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n");
    EXPECT_NE(chunk.receive().status, 200);
    EXPECT_EQ(send(good).status, 200);
}

// ------------------------------------------------------------------------------------------- parameters of
// operations

TEST_F(Malformed, ParametersAreChecked)
{
    const std::string className =
        "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"Test_Thing\"/></IPARAMVALUE>";
    expectError(test::intrinsic("EnumerateInstances", ""), 4, "The parameter ClassName is missing.");
    expectError(test::intrinsic("EnumerateInstances", "<IPARAMVALUE NAME=\"ClassName\"/>"), 4,
                "The parameter ClassName is missing.");
    expectError(test::intrinsic("EnumerateInstances", className + "<IPARAMVALUE NAME=\"Extra\"/>"), 4,
                "The operation has no parameter Extra.");
    expectError(test::intrinsic("EnumerateInstances", className + className), 4,
                "The parameter ClassName is given twice.");
    expectError(
        test::intrinsic("EnumerateInstances",
                        className + "<IPARAMVALUE NAME=\"LocalOnly\"><VALUE>maybe</VALUE></IPARAMVALUE>"),
        4, "The parameter LocalOnly is not a boolean.");
    expectError(
        test::intrinsic("EnumerateInstances",
                        className + "<IPARAMVALUE NAME=\"PropertyList\"><VALUE>Label</VALUE></IPARAMVALUE>"),
        4, "The parameter PropertyList is not an array.");
    expectError(test::intrinsic("EnumerateInstances",
                                "<IPARAMVALUE NAME=\"ClassName\">" + test::thingName(1) + "</IPARAMVALUE>"),
                4, "The parameter ClassName is of another form.");
    expectError(test::intrinsic("GetInstance", ""), 4, "The parameter InstanceName is missing.");
    expectError(
        test::intrinsic("GetInstance", "<IPARAMVALUE NAME=\"InstanceName\"><VALUE>x</VALUE></IPARAMVALUE>"),
        4, "The element VALUE is not a path.");
    expectRefusal(
        test::intrinsic("GetInstance", "<IPARAMVALUE NAME=\"InstanceName\"><INSTANCENAME/></IPARAMVALUE>"),
        400, "request-not-valid");
    expectError(
        test::intrinsic("GetInstance",
                        "<IPARAMVALUE NAME=\"InstanceName\"><INSTANCENAME CLASSNAME=\"\"/></IPARAMVALUE>"),
        4, "A path has no class name.");
    expectError(test::intrinsic("ModifyInstance", ""), 4, "The parameter ModifiedInstance is missing.");
    expectError(test::intrinsic("CreateInstance", ""), 4, "The parameter NewInstance is missing.");
    expectError(test::intrinsic("GetQualifier", ""), 4, "The parameter QualifierName is missing.");
    expectError(test::intrinsic("ExecQuery", ""), 4, "The parameter QueryLanguage is missing.");
}

TEST_F(Malformed, KeysAndValuesAreChecked)
{
    const auto get = [](const std::string &name) {
        return test::intrinsic("GetInstance",
                               "<IPARAMVALUE NAME=\"InstanceName\">" + name + "</IPARAMVALUE>");
    };
    expectError(get("<INSTANCENAME CLASSNAME=\"Test_Simple\"><KEYBINDING NAME=\"Id\">"
                    "<KEYVALUE>x</KEYVALUE></KEYBINDING>"
                    "</INSTANCENAME>"),
                4, "The value &quot;x&quot; of Id is not a uint16.");
    expectRefusal(
        get("<INSTANCENAME CLASSNAME=\"Test_Simple\"><KEYBINDING><KEYVALUE>1</KEYVALUE></KEYBINDING>"
            "</INSTANCENAME>"),
        400, "request-not-valid");
    expectRefusal(
        get("<INSTANCENAME CLASSNAME=\"Test_Simple\"><KEYBINDING NAME=\"Id\"><VALUE>1</VALUE></KEYBINDING>"
            "</INSTANCENAME>"),
        400, "request-not-valid");
    expectError(get("<INSTANCENAME CLASSNAME=\"Test_Simple\"><KEYBINDING NAME=\"Id\">"
                    "<KEYVALUE TYPE=\"uint7\">1</KEYVALUE>"
                    "</KEYBINDING></INSTANCENAME>"),
                4, "There is no type uint7.");
    const auto modify = [](const std::string &property, const std::string &className = "Test_Thing") {
        return test::intrinsic("ModifyInstance",
                               "<IPARAMVALUE NAME=\"ModifiedInstance\"><VALUE.NAMEDINSTANCE>" +
                                   test::thingName(3) + "<INSTANCE CLASSNAME=\"" + className + "\">" +
                                   property + "</INSTANCE></VALUE.NAMEDINSTANCE></IPARAMVALUE>");
    };
    expectError(modify("<PROPERTY NAME=\"Nope\" TYPE=\"string\"><VALUE>x</VALUE></PROPERTY>"), 12,
                "The class Test_Thing has no property Nope.");
    expectError(modify("<PROPERTY NAME=\"Level\" TYPE=\"uint16\"><VALUE>x</VALUE></PROPERTY>"), 4,
                "The value &quot;x&quot; of Level is not a uint16.");
    expectError(modify("<PROPERTY.ARRAY NAME=\"Level\" TYPE=\"uint16\"><VALUE.ARRAY/></PROPERTY.ARRAY>"), 13,
                "The property Level of Test_Thing has the type uint16.");
    expectRefusal(modify("<OTHER/>"), 400, "request-not-valid");
    expectError(modify("", "Test_Simple"), 4, "The class of the instance is not the class of its path.");
    expectError(test::methodCall(3, "Types", "<PARAMVALUE NAME=\"a\"><VALUE>256</VALUE></PARAMVALUE>"), 4,
                "The value &quot;256&quot; of a is not a uint8.");
    expectError(test::methodCall(3, "Types",
                                 "<PARAMVALUE NAME=\"a\" PARAMTYPE=\"byte\"><VALUE>1</VALUE></PARAMVALUE>"),
                4, "There is no type byte.");
    expectError(test::methodCall(3, "Echo",
                                 "<PARAMVALUE NAME=\"text\"><VALUE>1</VALUE></PARAMVALUE>"
                                 "<PARAMVALUE NAME=\"TEXT\"><VALUE>2</VALUE></PARAMVALUE>"),
                4, "The argument TEXT is given twice.");
    expectError(test::methodCall(3, "Echo", "<PARAMVALUE NAME=\"text\"><CLASS/></PARAMVALUE>"), 4,
                "The element CLASS cannot be a value here.");
}

TEST_F(Malformed, AnArgumentGivenTwiceIsNeverReadThroughItsNumber)
{
    // The number in the place of an array's address: declared by the class, or by the client alone.
    const auto twice = [](const std::string &name, const std::string &type, const std::string &value) {
        const std::string argument = "<PARAMVALUE NAME=\"" + name + "\" PARAMTYPE=\"" + type + "\"><VALUE>" +
                                     value + "</VALUE></PARAMVALUE>";
        return test::methodCall(3, "Types", argument + argument);
    };
    for (const char *type : {"uint8", "uint16", "uint32", "uint64", "sint8", "sint16", "sint32", "sint64",
                             "real32", "real64", "char16"}) {
        expectError(twice("undeclared", type, "7"), 4, "The argument undeclared is given twice.");
    }
    expectError(twice("undeclared", "uint64", "81985529216486895"), 4,
                "The argument undeclared is given twice.");
    expectError(twice("undeclared", "boolean", "TRUE"), 4, "The argument undeclared is given twice.");
    expectError(twice("undeclared", "string", "x"), 4, "The argument undeclared is given twice.");
    expectError(twice("undeclared", "datetime", "20260101000000.000000+000"), 4,
                "The argument undeclared is given twice.");
    expectError(twice("d", "uint64", "81985529216486895"), 4, "The argument d is given twice.");
    expectError(twice("f", "boolean", "TRUE"), 4, "The argument f is given twice.");
    EXPECT_EQ(send(good).status, 200);
}

TEST_F(Malformed, UnknownOperationsAreNotSupported)
{
    expectError(test::intrinsic("EnumerationCount", ""), 7, "The requested operation is not supported.");
    expectError(test::intrinsic("Nonsense", "<IPARAMVALUE NAME=\"X\"/>"), 7,
                "The requested operation is not supported.");
    expectError(test::intrinsic("InvokeMethod", ""), 7, "The requested operation is not supported.");
}

/** A request with so many of these in it. */
std::string many(int count, const std::string &before, const std::function<std::string(int)> &each,
                 const std::string &after)
{
    std::string text = before;
    for (int i = 0; i < count; ++i) {
        text += each(i);
    }
    return text + after;
}

TEST_F(Malformed, TooManyPartsAreRefusedByTheirName)
{
    const auto number = [](int i) { return std::to_string(i); };
    const auto key = [&](int i) {
        return "<KEYBINDING NAME=\"k" + number(i) + "\"><KEYVALUE>1</KEYVALUE></KEYBINDING>";
    };
    const std::string name = "<IPARAMVALUE NAME=\"InstanceName\"><INSTANCENAME CLASSNAME=\"Test_Thing\">";
    expectError(test::intrinsic("GetInstance", many(64, name, key, "</INSTANCENAME></IPARAMVALUE>")), 6,
                "no such thing");
    expectError(test::intrinsic("GetInstance", many(65, name, key, "</INSTANCENAME></IPARAMVALUE>")), 27,
                "A path has more than 64 keys.");
    const auto argument = [&](int i) {
        return "<PARAMVALUE NAME=\"a" + number(i) + "\"><VALUE>1</VALUE></PARAMVALUE>";
    };
    EXPECT_EQ(test::errorCode(send(test::methodCall(3, "Echo", many(256, "", argument, ""))).body), 0);
    expectError(test::methodCall(3, "Echo", many(257, "", argument, "")), 27,
                "A method call has more than 256 arguments.");
    const auto parameter = [&](int) { return std::string("<IPARAMVALUE NAME=\"ClassName\"/>"); };
    expectError(test::intrinsic("EnumerateQualifiers", many(1, "", parameter, "")), 4,
                "The operation has no parameter ClassName.");
}

TEST_F(Malformed, ASecondCallOrMessageIsRefused)
{
    const std::string call =
        good.substr(good.find("<IMETHODCALL"), good.find("</SIMPLEREQ>") - good.find("<IMETHODCALL"));
    expectRefusal(replaced(good, "</SIMPLEREQ>", call + "</SIMPLEREQ>"), 400, "request-not-valid");
    const std::string message =
        good.substr(good.find("<MESSAGE"), good.find("</CIM>") - good.find("<MESSAGE"));
    expectRefusal(replaced(good, "</CIM>", message + "</CIM>"), 400, "request-not-valid");
}

TEST_F(Malformed, ElementsStandWhereTheDocumentTypeHasThem)
{
    expectRefusal(replaced(good, "<IMETHODCALL NAME", "<IMETHODCALL Extra=\"1\" NAME"), 400,
                  "request-not-valid");
    expectRefusal(replaced(good, "<SIMPLEREQ>", "<SIMPLEREQ>text"), 400, "request-not-valid");
    expectRefusal(replaced(good, "</LOCALNAMESPACEPATH>", "<HOST>h</HOST></LOCALNAMESPACEPATH>"), 400,
                  "request-not-valid");
    expectRefusal(replaced(good, "<LOCALNAMESPACEPATH>", "<LOCALNAMESPACEPATH/><LOCALNAMESPACEPATH>"), 400,
                  "request-not-valid");
}

} // namespace
