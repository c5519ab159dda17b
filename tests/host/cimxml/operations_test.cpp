// SPDX-License-Identifier: Apache-2.0
// CIM-XML: each operation of DSP0200 is answered, or refused by its name.
#include "test_host.h"

#include <gmock/gmock.h>

namespace
{

using testing::HasSubstr;
using testing::Not;

class Operations : public testing::Test
{
  protected:
    std::string ask(const std::string &operation, const std::string &parameters,
                    std::string_view nameSpace = "root/cimv2")
    {
        const test::HttpAnswer answer =
            server_.exchange(test::post(test::intrinsic(operation, parameters, nameSpace)));
        EXPECT_EQ(answer.status, 200) << operation;
        return answer.body;
    }

    static std::string text(const std::string &name, const std::string &value)
    {
        return "<IPARAMVALUE NAME=\"" + name + "\"><VALUE>" + value + "</VALUE></IPARAMVALUE>";
    }

    static std::string ofClass(const std::string &name)
    {
        return "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"" + name + "\"/></IPARAMVALUE>";
    }

    static std::string instanceName(const std::string &parameter = "InstanceName")
    {
        return "<IPARAMVALUE NAME=\"" + parameter + "\">" + test::thingName(3) + "</IPARAMVALUE>";
    }

    test::TestServer server_;
};

constexpr const char *unitsOfLevel =
    "<PROPERTY NAME=\"Level\" TYPE=\"uint16\">\n"
    "<QUALIFIER NAME=\"Units\" TYPE=\"string\" TRANSLATABLE=\"true\">\n<VALUE>Percent</VALUE>\n</QUALIFIER>\n"
    "<VALUE>30</VALUE>\n</PROPERTY>\n";
constexpr const char *descriptionOfThing =
    "<INSTANCE CLASSNAME=\"Test_Thing\">\n"
    "<QUALIFIER NAME=\"Description\" TYPE=\"string\" TRANSLATABLE=\"true\">\n<VALUE>A thing.</VALUE>\n"
    "</QUALIFIER>\n<PROPERTY NAME=\"Caption\" TYPE=\"string\">\n</PROPERTY>\n";

TEST_F(Operations, InstancesHaveTheQualifiersOfTheirClassWhereAskedFor)
{
    const std::string qualifiers = text("IncludeQualifiers", "TRUE");
    for (const std::string &body : {ask("GetInstance", instanceName() + qualifiers),
                                    ask("EnumerateInstances", ofClass("Test_Thing") + qualifiers)}) {
        EXPECT_THAT(body, HasSubstr(unitsOfLevel));
        EXPECT_THAT(body, HasSubstr(descriptionOfThing));
        EXPECT_THAT(body, HasSubstr("<QUALIFIER NAME=\"Key\" TYPE=\"boolean\" PROPAGATED=\"true\" "
                                    "OVERRIDABLE=\"false\">\n<VALUE>true</VALUE>\n</QUALIFIER>\n"
                                    "<VALUE>thing3</VALUE>"));
    }
    EXPECT_THAT(ask("Associators", instanceName("ObjectName") + qualifiers +
                                       "<IPARAMVALUE NAME=\"AssocClass\"><CLASSNAME NAME=\"Test_ThingPair\"/>"
                                       "</IPARAMVALUE>"),
                HasSubstr("<QUALIFIER NAME=\"Units\""));
    EXPECT_THAT(ask("References", instanceName("ObjectName") + qualifiers +
                                      "<IPARAMVALUE NAME=\"ResultClass\"><CLASSNAME NAME=\"Test_ThingPair\"/>"
                                      "</IPARAMVALUE>"),
                HasSubstr("<INSTANCE CLASSNAME=\"Test_ThingPair\">\n<QUALIFIER NAME=\"Association\""));
    EXPECT_THAT(ask("GetInstance", instanceName()), Not(HasSubstr("<QUALIFIER")));
    EXPECT_EQ(test::errorText(ask("OpenEnumerateInstances", ofClass("Test_Thing") + qualifiers)),
              "The operation has no parameter IncludeQualifiers.");
}

TEST_F(Operations, BlanksAroundABooleanOrANumberDoNotMatter)
{
    const std::string plain = ask("GetInstance", instanceName() + text("IncludeQualifiers", "TRUE") +
                                                     text("IncludeClassOrigin", "false"));
    EXPECT_EQ(ask("GetInstance", instanceName() + text("IncludeQualifiers", "\n\t TRUE \r\n") +
                                     text("IncludeClassOrigin", " false")),
              plain);
    EXPECT_THAT(plain, HasSubstr("<QUALIFIER"));
    EXPECT_EQ(
        test::count(ask("OpenEnumerateInstances", ofClass("Test_Thing") + text("MaxObjectCount", "\n 3 ")),
                    "<VALUE.INSTANCEWITHPATH>"),
        3u);
    const auto described = [this](const std::string &number, const std::string &truth) {
        return server_
            .exchange(test::post(test::methodCall(3, "Types",
                                                  "<PARAMVALUE NAME=\"a\"><VALUE>" + number +
                                                      "</VALUE></PARAMVALUE><PARAMVALUE NAME=\"f\"><VALUE>" +
                                                      truth + "</VALUE></PARAMVALUE>")))
            .body;
    };
    EXPECT_THAT(described("7", "TRUE"), HasSubstr("<RETURNVALUE"));
    EXPECT_EQ(described("\n  7\t", " true\n"), described("7", "TRUE"));
    const auto simple = [this](const std::string &id) {
        return ask("GetInstance",
                   "<IPARAMVALUE NAME=\"InstanceName\"><INSTANCENAME CLASSNAME=\"Test_Simple\">"
                   "<KEYBINDING NAME=\"Id\"><KEYVALUE VALUETYPE=\"numeric\">" +
                       id + "</KEYVALUE></KEYBINDING></INSTANCENAME></IPARAMVALUE>");
    };
    EXPECT_EQ(simple(" 1\n"), simple("1"));
    EXPECT_THAT(simple("1"), HasSubstr("<INSTANCE CLASSNAME=\"Test_Simple\">"));
    // Of a text they are a part.
    EXPECT_NE(ask("GetProperty", instanceName() + text("PropertyName", " Label ")),
              ask("GetProperty", instanceName() + text("PropertyName", "Label")));
}

TEST_F(Operations, LocalOnlyAndClassOriginAreKept)
{
    const std::string local = ask("GetInstance", instanceName() + text("LocalOnly", "TRUE"));
    EXPECT_THAT(local, HasSubstr("<PROPERTY NAME=\"Label\""));
    EXPECT_THAT(local, Not(HasSubstr("<PROPERTY NAME=\"DeviceID\"")));
    const std::string origin = ask("GetInstance", instanceName() + text("IncludeClassOrigin", "TRUE"));
    EXPECT_THAT(origin,
                HasSubstr("<PROPERTY NAME=\"DeviceID\" CLASSORIGIN=\"Test_Device\" TYPE=\"string\">"));
    EXPECT_THAT(origin, HasSubstr("<PROPERTY NAME=\"Label\" CLASSORIGIN=\"Test_Thing\" TYPE=\"string\">"));
    const std::string both =
        ask("EnumerateInstances", ofClass("Test_Thing") + text("LocalOnly", "TRUE") +
                                      text("IncludeClassOrigin", "TRUE") + text("IncludeQualifiers", "TRUE"));
    EXPECT_THAT(both,
                HasSubstr("<PROPERTY NAME=\"Level\" CLASSORIGIN=\"Test_Thing\" TYPE=\"uint16\">\n<QUALIFIER "
                          "NAME=\"Units\""));
    EXPECT_THAT(both, Not(HasSubstr("<PROPERTY NAME=\"DeviceID\"")));
}

TEST_F(Operations, ClassesHaveThePropertiesOfTheList)
{
    const auto get = [this](const std::string &list) {
        return ask("GetClass", ofClass("Test_Thing") + text("LocalOnly", "FALSE") +
                                   "<IPARAMVALUE NAME=\"PropertyList\"><VALUE.ARRAY>" + list +
                                   "</VALUE.ARRAY></IPARAMVALUE>");
    };
    const std::string two = get("<VALUE>label</VALUE><VALUE>DeviceID</VALUE><VALUE>Nope</VALUE>");
    EXPECT_EQ(test::count(two, "<PROPERTY"), 2u);
    EXPECT_THAT(two, HasSubstr("<PROPERTY NAME=\"DeviceID\""));
    EXPECT_THAT(two, HasSubstr("<PROPERTY NAME=\"Label\""));
    EXPECT_EQ(test::count(get(""), "<PROPERTY"), 0u);
}

TEST_F(Operations, PropertiesAreReadOneByOne)
{
    EXPECT_THAT(ask("GetProperty", instanceName() + text("PropertyName", "Level")),
                HasSubstr("<IRETURNVALUE>\n<VALUE>30</VALUE>\n</IRETURNVALUE>"));
    EXPECT_EQ(test::errorCode(ask("GetProperty", instanceName() + text("PropertyName", "Nope"))), 12);
    EXPECT_EQ(test::errorCode(
                  ask("SetProperty", instanceName() + text("PropertyName", "Nope") + text("NewValue", "1"))),
              12);
    EXPECT_EQ(test::errorText(
                  ask("SetProperty", instanceName() + text("PropertyName", "Level") + text("NewValue", "1"))),
              "only the label and the tags can be changed");
}

TEST_F(Operations, QualifierDeclarationsAreRead)
{
    EXPECT_THAT(ask("GetQualifier", text("QualifierName", "key")),
                HasSubstr("<QUALIFIER.DECLARATION NAME=\"Key\" TYPE=\"boolean\" ISARRAY=\"false\""));
    EXPECT_EQ(test::errorCode(ask("GetQualifier", text("QualifierName", "Nope"))), 6);
    EXPECT_EQ(test::count(ask("EnumerateQualifiers", ""), "<QUALIFIER.DECLARATION "), 10u);
    EXPECT_THAT(ask("EnumerateQualifiers", "", "interop"), HasSubstr("NAME=\"Required\""));
}

TEST_F(Operations, WhatThisServerHasNotIsNotSupported)
{
    for (const char *operation :
         {"CreateClass", "ModifyClass", "DeleteClass", "SetQualifier", "DeleteQualifier", "EnumerationCount",
          "ExportIndication", "CreateSubscription", "OpenNothing"}) {
        const std::string body = ask(operation, "");
        EXPECT_EQ(test::errorCode(body), 7) << operation;
        EXPECT_EQ(test::errorText(body), "The requested operation is not supported.") << operation;
        EXPECT_THAT(body, HasSubstr(std::string("<IMETHODRESPONSE NAME=\"") + operation + "\">"));
    }
    EXPECT_EQ(test::errorCode(ask("DeleteInstance", instanceName())), 7) << "by its provider";
}

TEST_F(Operations, IndicationsAreRefused)
{
    // What a client does to subscribe: instances of classes that are not there.
    for (const char *name :
         {"CIM_IndicationFilter", "CIM_ListenerDestinationCIMXML", "CIM_IndicationSubscription"}) {
        EXPECT_EQ(test::errorCode(ask("CreateInstance",
                                      "<IPARAMVALUE NAME=\"NewInstance\"><INSTANCE CLASSNAME=\"" +
                                          std::string(name) + "\"/></IPARAMVALUE>",
                                      "interop")),
                  5)
            << name;
    }
    const test::HttpAnswer exported = server_.exchange(test::post(
        "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\">"
        "<SIMPLEEXPREQ><EXPMETHODCALL NAME=\"ExportIndication\"/></SIMPLEEXPREQ></MESSAGE></CIM>"));
    EXPECT_EQ(exported.status, 501);
    EXPECT_EQ(exported.header("CIMError"), "unsupported-operation");
}

TEST_F(Operations, ANamespaceThatDoesNotExistIsAnErrorOfItsOwn)
{
    for (const char *operation : {"GetInstance",
                                  "EnumerateInstances",
                                  "EnumerateInstanceNames",
                                  "CreateInstance",
                                  "ModifyInstance",
                                  "DeleteInstance",
                                  "GetProperty",
                                  "SetProperty",
                                  "ExecQuery",
                                  "Associators",
                                  "AssociatorNames",
                                  "References",
                                  "ReferenceNames",
                                  "GetClass",
                                  "EnumerateClasses",
                                  "EnumerateClassNames",
                                  "GetQualifier",
                                  "EnumerateQualifiers",
                                  "OpenEnumerateInstances",
                                  "OpenEnumerateInstancePaths",
                                  "OpenReferenceInstances",
                                  "OpenReferenceInstancePaths",
                                  "OpenAssociatorInstances",
                                  "OpenAssociatorInstancePaths",
                                  "OpenQueryInstances",
                                  "PullInstancesWithPath",
                                  "PullInstancePaths",
                                  "PullInstances",
                                  "CloseEnumeration"}) {
        const std::string body = ask(operation, "", "root/nowhere");
        EXPECT_EQ(test::errorCode(body), 3) << operation;
        EXPECT_EQ(test::errorText(body), "The namespace root/nowhere does not exist.") << operation;
    }
}

TEST_F(Operations, AnEnumerationThatWouldNeverCloseIsRefusedUnlessItIsReadAtOnce)
{
    const std::string without = ofClass("Test_Thing") + text("OperationTimeout", "0");
    EXPECT_EQ(test::errorCode(ask("OpenEnumerateInstances", without + text("MaxObjectCount", "7"))), 22);
    EXPECT_EQ(test::errorCode(ask("OpenEnumerateInstances", without + text("MaxObjectCount", "8"))), 0);
}

} // namespace
