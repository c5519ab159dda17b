// SPDX-License-Identifier: Apache-2.0
// CIM-XML: recorded requests of two clients, replayed byte by byte, and the answers they need.
#include "test_host.h"

#include <gmock/gmock.h>

namespace
{

using test::Client;
using test::HttpAnswer;
using testing::HasSubstr;
using testing::Not;

/** The text with the name of this host replaced where it stands for the host or for the computer system, so
 * that answers are the same everywhere. */
std::string withoutHostName(std::string body, host::ObjectManager &manager)
{
    for (const char *before : {"<HOST>", "<KEYBINDING NAME=\"Name\">\n<KEYVALUE VALUETYPE=\"string\">"}) {
        const std::string name = before + manager.dispatcher().hostName() + "</";
        const std::string standIn = std::string(before) + "this-host</";
        for (std::size_t place = body.find(name); place != std::string::npos;
             place = body.find(name, place + 1)) {
            body.replace(place, name.size(), standIn);
        }
    }
    return body;
}

/** A recorded request and the file with its whole answer. */
struct Recording {
    const char *request;
    const char *answer;
};

void PrintTo(const Recording &recording, std::ostream *stream)
{
    *stream << recording.request;
}

class Replay : public testing::TestWithParam<Recording>
{
};

TEST_P(Replay, IsAnsweredToTheByte)
{
    test::TestServer server;
    const HttpAnswer answer = server.exchange(test::recorded(GetParam().request));
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(withoutHostName(answer.body, server.manager()),
              test::readData(std::string("answers/") + GetParam().answer + ".xml"));
}

std::string nameOf(const testing::TestParamInfo<Recording> &info)
{
    std::string name = info.param.request;
    for (char &c : name) {
        if (c == '-' || c == '/' || c == '.') {
            c = '_';
        }
    }
    return name;
}

constexpr Recording recordings[] = {
    {"command-line/associator-names", "associator-names"},
    {"command-line/associator-names-nofilter", "associator-names-nofilter"},
    {"command-line/associators", "associators"},
    {"command-line/delete-instance", "delete-instance"},
    {"command-line/enumerate-class-names", "enumerate-class-names"},
    {"command-line/enumerate-classes", "enumerate-classes-with-origin"},
    {"command-line/enumerate-instances", "enumerate-instances-with-origin"},
    {"command-line/enumerate-instances-cte", "enumerate-instances-with-origin"},
    {"command-line/enumerate-names", "enumerate-names"},
    {"command-line/enumerate-names-e100", "enumerate-names"},
    {"command-line/error-invalid-class", "error-invalid-class"},
    {"command-line/error-invalid-namespace", "error-invalid-namespace"},
    {"command-line/error-not-found", "error-not-found"},
    {"command-line/get-class", "get-class-with-all"},
    {"command-line/get-class-def", "get-class-def"},
    {"command-line/get-instance", "get-instance-with-origin"},
    {"command-line/get-instance-association", "get-instance-association"},
    {"command-line/get-instance-props", "get-instance-props"},
    {"command-line/get-property", "get-property"},
    {"command-line/invoke-array", "invoke-array"},
    {"command-line/invoke-error", "invoke-error"},
    {"command-line/invoke-noargs", "invoke-noargs"},
    {"command-line/invoke-reference", "invoke-reference-elsewhere"},
    {"command-line/invoke-reference-full", "invoke-reference-full"},
    {"command-line/invoke-reference-ok.1", "get-class-with-all"},
    {"command-line/invoke-reference-ok.2", "invoke-reference"},
    {"command-line/invoke-static-class", "invoke-static-class"},
    {"command-line/invoke-string-empty", "invoke-string-empty"},
    {"command-line/invoke-string-quoted", "invoke-string-quoted"},
    {"command-line/invoke-string-spaces", "invoke-string-spaces"},
    {"command-line/invoke-string-utf8", "invoke-string-utf8"},
    {"command-line/invoke-types", "invoke-types"},
    {"command-line/invoke-unknown-method", "invoke-unknown-method"},
    {"command-line/modify-instance.2", "modify-instance"},
    {"command-line/reference-names", "reference-names"},
    {"command-line/references", "references"},
    {"scripting/associator-names", "scripting-associator-names"},
    {"scripting/associators", "scripting-associators"},
    {"scripting/enumerate-class-names", "scripting-enumerate-class-names"},
    {"scripting/enumerate-classes", "scripting-enumerate-classes"},
    {"scripting/enumerate-instances", "scripting-enumerate-instances"},
    {"scripting/enumerate-instances-props", "scripting-enumerate-instances-props"},
    {"scripting/enumerate-names", "scripting-enumerate-names"},
    {"scripting/error-not-found", "scripting-error-not-found"},
    {"scripting/get-class", "scripting-get-class"},
    {"scripting/get-instance", "scripting-get-instance"},
    {"scripting/get-qualifier", "scripting-get-qualifier"},
    {"scripting/invoke-error", "scripting-invoke-error"},
    {"scripting/invoke-noargs", "scripting-invoke-noargs"},
    {"scripting/invoke-null", "scripting-invoke-null"},
    {"scripting/invoke-reference", "scripting-invoke-reference"},
    {"scripting/invoke-static-class", "scripting-invoke-static-class"},
    {"scripting/invoke-string", "scripting-invoke-string"},
    {"scripting/invoke-types", "scripting-invoke-types"},
    {"scripting/invoke-wrong-type", "scripting-invoke-wrong-type"},
    {"scripting/modify-instance", "scripting-modify-instance"},
    {"scripting/modify-instance-minimal", "scripting-modify-instance"},
    {"scripting/reference-names", "scripting-reference-names"},
    {"scripting/references", "scripting-references"},
};

INSTANTIATE_TEST_SUITE_P(Recorded, Replay, testing::ValuesIn(recordings), nameOf);

TEST(CimXml, ATextThatIsNoXmlIsRefused)
{
    // The command-line client puts the user's text into the request as it is.
    test::TestServer server;
    const HttpAnswer answer = server.exchange(test::recorded("command-line/invoke-string-escaped"));
    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.header("CIMError"), "request-not-well-formed");
}

TEST(CimXml, ChangesAreSeenAfterwards)
{
    test::TestServer server;
    Client client(server.port());
    EXPECT_EQ(client.exchange(test::recorded("command-line/modify-instance.1")).status, 200);
    EXPECT_EQ(client.exchange(test::recorded("command-line/modify-instance.2")).status, 200);
    EXPECT_THAT(client.exchange(test::recorded("command-line/get-instance-props")).body,
                HasSubstr("<VALUE>newlabel</VALUE>"));
    EXPECT_EQ(client.exchange(test::recorded("scripting/modify-instance")).status, 200);
    EXPECT_THAT(client.exchange(test::recorded("scripting/get-instance")).body,
                HasSubstr("<VALUE>from a script</VALUE>"));
    EXPECT_EQ(client.exchange(test::recorded("scripting/modify-instance-minimal")).status, 200);
    EXPECT_THAT(client.exchange(test::recorded("command-line/get-property")).body,
                HasSubstr("<VALUE>minimal</VALUE>"));
}

/** Elements that the command-line client cannot read when they close themselves. */
TEST(CimXml, ValuesAndPropertiesNeverCloseThemselves)
{
    test::TestServer server;
    for (const Recording &recording : recordings) {
        const std::string body = server.exchange(test::recorded(recording.request)).body;
        for (std::size_t place = body.find("/>"); place != std::string::npos;
             place = body.find("/>", place + 1)) {
            const std::size_t start = body.rfind('<', place);
            const std::string element = body.substr(start, body.find_first_of(" />", start) - start);
            EXPECT_TRUE(element == "<NAMESPACE" || element == "<CLASSNAME" || element == "<ERROR")
                << recording.request << ": " << element;
        }
        EXPECT_THAT(body, Not(HasSubstr("&#")));
        EXPECT_THAT(body, Not(HasSubstr("CDATA")));
    }
}

class CimXmlServer : public testing::Test
{
  protected:
    std::string send(const std::string &body)
    {
        const HttpAnswer answer = server_.exchange(test::post(body));
        EXPECT_EQ(answer.status, 200);
        return answer.body;
    }

    test::TestServer server_;
};

TEST_F(CimXmlServer, TheMessageIdComesBack)
{
    std::string body = test::intrinsic("EnumerateClassNames", "");
    body.replace(body.find("ID=\"7\""), 6, "ID=\"&lt;a&amp;b&gt;\"");
    EXPECT_THAT(send(body), HasSubstr("<MESSAGE ID=\"&lt;a&amp;b&gt;\" PROTOCOLVERSION=\"1.0\">"));
}

TEST_F(CimXmlServer, ValuesOfAllTypesAreWritten)
{
    const std::string body = send(test::intrinsic(
        "GetInstance", "<IPARAMVALUE NAME=\"InstanceName\"><INSTANCENAME CLASSNAME=\"Test_Simple\">"
                       "<KEYBINDING NAME=\"Id\"><KEYVALUE VALUETYPE=\"numeric\">5</KEYVALUE></KEYBINDING>"
                       "</INSTANCENAME></IPARAMVALUE>"));
    EXPECT_THAT(body, HasSubstr("<PROPERTY NAME=\"Id\" TYPE=\"uint16\">\n<VALUE>5</VALUE>\n</PROPERTY>\n"));
    EXPECT_THAT(body, HasSubstr("<PROPERTY NAME=\"Number\" TYPE=\"uint32\">\n</PROPERTY>\n"));
    EXPECT_THAT(body,
                HasSubstr("<PROPERTY NAME=\"Signed\" TYPE=\"sint64\">\n<VALUE>-9223372036854775808</VALUE>"));
    EXPECT_THAT(body,
                HasSubstr("<PROPERTY NAME=\"Real\" TYPE=\"real64\">\n<VALUE>1.0000000000000001e-01</VALUE>"));
    EXPECT_THAT(body, HasSubstr("<PROPERTY NAME=\"Letter\" TYPE=\"char16\">\n<VALUE>\xe2\x82\xac</VALUE>"));
    EXPECT_THAT(body, HasSubstr("<PROPERTY.ARRAY NAME=\"Bytes\" TYPE=\"uint8\">\n</PROPERTY.ARRAY>\n"));
    EXPECT_THAT(body, HasSubstr("<VALUE>a\xef\xbf\xbd"
                                "b\xef\xbf\xbd"
                                "c\td</VALUE>"))
        << "what XML cannot hold is replaced";
}

TEST_F(CimXmlServer, NumericKeysAreWrittenAsNumbers)
{
    const std::string body =
        send(test::methodCall(3, "Touch",
                              "<PARAMVALUE NAME=\"target\"><VALUE.REFERENCE>"
                              "<INSTANCENAME CLASSNAME=\"Test_Simple\"><KEYVALUE>5</KEYVALUE>"
                              "</INSTANCENAME></VALUE.REFERENCE></PARAMVALUE>"));
    EXPECT_THAT(
        body,
        HasSubstr("<KEYBINDING NAME=\"Id\">\n<KEYVALUE VALUETYPE=\"numeric\">5</KEYVALUE>\n</KEYBINDING>"));
}

TEST_F(CimXmlServer, TextsComeInPieces)
{
    const std::string echoed = send(test::methodCall(
        3, "Echo",
        "<PARAMVALUE NAME=\"text\">"
        "<VALUE>one <!-- no -->&lt;two&gt;<![CDATA[ <three> & ]]>&#52;</VALUE></PARAMVALUE>"));
    EXPECT_THAT(echoed, HasSubstr("<VALUE>one &lt;two&gt; &lt;three&gt; &amp; 4</VALUE>"));
    EXPECT_THAT(send(test::methodCall(3, "Echo", "<PARAMVALUE NAME=\"text\"><VALUE>  </VALUE></PARAMVALUE>")),
                HasSubstr("<VALUE>  </VALUE>"))
        << "a text of blanks stays one";
}

TEST_F(CimXmlServer, ErrorsOfProvidersArriveUnchanged)
{
    const std::string body = send(
        test::intrinsic("EnumerateInstanceNames",
                        "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"Test_Faulty\"/></IPARAMVALUE>"));
    EXPECT_THAT(
        body, HasSubstr("<IMETHODRESPONSE NAME=\"EnumerateInstanceNames\">\n<ERROR CODE=\"1\" DESCRIPTION=\""
                        "failed  after &lt;one&gt; &amp; &quot;more&quot;\"/>\n</IMETHODRESPONSE>"));
    EXPECT_THAT(body, Not(HasSubstr("IRETURNVALUE")));
    const std::string method =
        send(test::methodCall(3, "Fail", "<PARAMVALUE NAME=\"code\"><VALUE>2</VALUE></PARAMVALUE>"));
    EXPECT_THAT(method,
                HasSubstr("<METHODRESPONSE NAME=\"Fail\">\n<ERROR CODE=\"2\" DESCRIPTION=\"Access to a CIM "
                          "resource was not available to the client.\"/>\n</METHODRESPONSE>"))
        << "without a text of the provider's the standard's is used";
    EXPECT_THAT(method, Not(HasSubstr("must not be seen")));
    EXPECT_THAT(send(test::methodCall(3, "Fail", "<PARAMVALUE NAME=\"code\"><VALUE>29</VALUE></PARAMVALUE>")),
                HasSubstr("<ERROR CODE=\"29\""));
    EXPECT_THAT(
        send(test::methodCall(3, "Fail", "<PARAMVALUE NAME=\"code\"><VALUE>100</VALUE></PARAMVALUE>")),
        HasSubstr("<ERROR CODE=\"1\""))
        << "a code of CMPI alone is a failure";
}

TEST_F(CimXmlServer, ArgumentsNotGivenAreAbsentAndNullOnesAreNull)
{
    EXPECT_THAT(send(test::methodCall(3, "Echo", "")), HasSubstr("<VALUE>(absent)</VALUE>"));
    EXPECT_THAT(send(test::methodCall(3, "Echo", "<PARAMVALUE NAME=\"text\"/>")),
                HasSubstr("<VALUE>(null)</VALUE>"));
    EXPECT_THAT(send(test::methodCall(3, "Echo", "<PARAMVALUE NAME=\"text\"><VALUE.NULL/></PARAMVALUE>")),
                HasSubstr("<VALUE>(null)</VALUE>"));
    EXPECT_THAT(send(test::methodCall(3, "Echo", "<PARAMVALUE NAME=\"text\"><VALUE/></PARAMVALUE>")),
                HasSubstr("<VALUE></VALUE>"));
}

TEST_F(CimXmlServer, InstancesAreCreated)
{
    const std::string body = send(test::intrinsic(
        "CreateInstance", "<IPARAMVALUE NAME=\"NewInstance\"><INSTANCE CLASSNAME=\"Test_Thing\">"
                          "<PROPERTY NAME=\"DeviceID\" TYPE=\"string\">"
                          "<QUALIFIER NAME=\"Key\" TYPE=\"boolean\"><VALUE>TRUE</VALUE></QUALIFIER>"
                          "<VALUE>thing12</VALUE></PROPERTY>"
                          "</INSTANCE></IPARAMVALUE>"));
    EXPECT_THAT(
        body,
        HasSubstr("<IRETURNVALUE>\n<INSTANCENAME CLASSNAME=\"Test_Thing\">\n<KEYBINDING NAME=\"DeviceID\">\n"
                  "<KEYVALUE VALUETYPE=\"string\">thing12</KEYVALUE>\n</KEYBINDING>\n</INSTANCENAME>\n"
                  "</IRETURNVALUE>"));
    EXPECT_EQ(test::errorCode(send(test::intrinsic(
                  "CreateInstance",
                  "<IPARAMVALUE NAME=\"NewInstance\"><INSTANCE CLASSNAME=\"Test_Nope\"/></IPARAMVALUE>"))),
              5);
}

TEST_F(CimXmlServer, OperationsWithoutResultHaveNoReturnValue)
{
    const std::string body = send(test::intrinsic(
        "SetProperty",
        "<IPARAMVALUE NAME=\"InstanceName\">" + test::thingName(5) +
            "</IPARAMVALUE><IPARAMVALUE NAME=\"PropertyName\"><VALUE>Label</VALUE></IPARAMVALUE>"
            "<IPARAMVALUE NAME=\"NewValue\"><VALUE>set</VALUE></IPARAMVALUE>"));
    EXPECT_THAT(body, HasSubstr("<IMETHODRESPONSE NAME=\"SetProperty\">\n</IMETHODRESPONSE>"));
    const std::string null = send(test::intrinsic(
        "SetProperty",
        "<IPARAMVALUE NAME=\"InstanceName\">" + test::thingName(5) +
            "</IPARAMVALUE><IPARAMVALUE NAME=\"PropertyName\"><VALUE>Label</VALUE></IPARAMVALUE>"));
    EXPECT_EQ(test::errorCode(null), 0);
    EXPECT_THAT(send(test::intrinsic("GetInstance", "<IPARAMVALUE NAME=\"InstanceName\">" +
                                                        test::thingName(5) + "</IPARAMVALUE>")),
                HasSubstr("<VALUE>(null)</VALUE>"));
}

TEST_F(CimXmlServer, QueriesAreAnsweredWithObjects)
{
    const std::string body = send(test::intrinsic(
        "ExecQuery", "<IPARAMVALUE NAME=\"QueryLanguage\"><VALUE>DMTF:CQL</VALUE></IPARAMVALUE>"
                     "<IPARAMVALUE NAME=\"Query\"><VALUE>SELECT * FROM Test_Thing WHERE "
                     "ElementName = 'thing2'</VALUE></IPARAMVALUE>"));
    EXPECT_EQ(test::count(body, "<VALUE.OBJECTWITHPATH>"), 1u);
    EXPECT_THAT(body, HasSubstr("<VALUE>thing2</VALUE>"));
}

TEST_F(CimXmlServer, AllQualifiersAreListed)
{
    const std::string body = send(test::intrinsic("EnumerateQualifiers", ""));
    EXPECT_EQ(test::count(body, "<QUALIFIER.DECLARATION "), 10u);
    EXPECT_THAT(body,
                HasSubstr("<QUALIFIER.DECLARATION NAME=\"ValueMap\" TYPE=\"string\" ISARRAY=\"true\" "));
}

TEST_F(CimXmlServer, ClassesAreFoundInAnyLetterCase)
{
    const std::string body = send(test::intrinsic(
        "GetClass", "<IPARAMVALUE NAME=\"classname\"><CLASSNAME NAME=\"TEST_simple\"/></IPARAMVALUE>"));
    EXPECT_THAT(body, HasSubstr("<CLASS NAME=\"Test_Simple\">"));
    const std::string unknown = send(test::intrinsic(
        "GetClass", "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"Test_Nope\"/></IPARAMVALUE>"));
    EXPECT_EQ(test::errorCode(unknown), 6);
}

} // namespace
