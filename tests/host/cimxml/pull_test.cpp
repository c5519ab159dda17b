// SPDX-License-Identifier: Apache-2.0
// Enumerations that are answered part by part, and the header fields of DSP0200, as clients see them.
#include "test_host.h"

namespace
{

using test::HttpAnswer;

class Pull : public testing::Test
{
  protected:
    HttpAnswer ask(const std::string &operation, const std::string &parameters, std::string_view headers = "")
    {
        return server_.exchange(test::post(test::intrinsic(operation, parameters), headers));
    }

    static std::string text(const std::string &name, const std::string &value)
    {
        return "<IPARAMVALUE NAME=\"" + name + "\"><VALUE>" + value + "</VALUE></IPARAMVALUE>";
    }

    static std::string ofClass(const std::string &name = "Test_Thing")
    {
        return "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"" + name + "\"/></IPARAMVALUE>";
    }

    static std::string next(const std::string &context, int count)
    {
        return text("EnumerationContext", context) + text("MaxObjectCount", std::to_string(count));
    }

    /** The value of an output parameter. */
    static std::string parameter(const HttpAnswer &answer, const std::string &name)
    {
        const std::size_t place = answer.body.find("<PARAMVALUE NAME=\"" + name + "\"");
        if (place == std::string::npos) {
            return "absent";
        }
        const std::size_t begin = answer.body.find("<VALUE>", place) + 7;
        return answer.body.substr(begin, answer.body.find("</VALUE>", begin) - begin);
    }

    static void expectError(const HttpAnswer &answer, int code, const std::string &description)
    {
        EXPECT_EQ(answer.status, 200);
        EXPECT_EQ(test::errorCode(answer.body), code);
        EXPECT_EQ(test::errorText(answer.body), description);
    }

    test::TestServer server_;
};

TEST_F(Pull, InstancesComeInParts)
{
    const HttpAnswer opened = ask("OpenEnumerateInstances", ofClass() + text("MaxObjectCount", "3"));
    EXPECT_EQ(test::count(opened.body, "<VALUE.INSTANCEWITHPATH>"), 3u);
    EXPECT_EQ(test::count(opened.body, "<HOST>"), 3u);
    EXPECT_EQ(parameter(opened, "EndOfSequence"), "FALSE");
    const std::string context = parameter(opened, "EnumerationContext");
    EXPECT_EQ(context.size(), 32u);
    const HttpAnswer second = ask("PullInstancesWithPath", next(context, 4));
    EXPECT_EQ(test::count(second.body, "<VALUE.INSTANCEWITHPATH>"), 4u);
    EXPECT_EQ(parameter(second, "EnumerationContext"), context);
    EXPECT_EQ(parameter(second, "EndOfSequence"), "FALSE");
    const HttpAnswer last = ask("PullInstancesWithPath", next(context, 100));
    EXPECT_EQ(test::count(last.body, "<VALUE.INSTANCEWITHPATH>"), 1u);
    EXPECT_EQ(parameter(last, "EndOfSequence"), "TRUE");
    expectError(ask("PullInstancesWithPath", next(context, 1)), 21,
                "There is no such enumeration of this kind; it has ended, was closed, or its time is over.");
}

TEST_F(Pull, AllAtOnceLeavesNothingOpen)
{
    const HttpAnswer all = ask("OpenEnumerateInstances", ofClass() + text("MaxObjectCount", "1000"));
    EXPECT_EQ(test::count(all.body, "<VALUE.INSTANCEWITHPATH>"), 8u);
    EXPECT_EQ(parameter(all, "EnumerationContext"), "");
    EXPECT_EQ(parameter(all, "EndOfSequence"), "TRUE");
}

TEST_F(Pull, WithoutACountNothingComesYet)
{
    const HttpAnswer opened = ask("OpenEnumerateInstancePaths", ofClass());
    EXPECT_EQ(test::count(opened.body, "<INSTANCEPATH>"), 0u);
    EXPECT_EQ(parameter(opened, "EndOfSequence"), "FALSE");
    const HttpAnswer paths = ask("PullInstancePaths", next(parameter(opened, "EnumerationContext"), 8));
    EXPECT_EQ(test::count(paths.body, "<INSTANCEPATH>"), 8u);
    EXPECT_EQ(parameter(paths, "EndOfSequence"), "TRUE");
}

TEST_F(Pull, AssociationsAndQueriesComeInPartsToo)
{
    const std::string source = "<IPARAMVALUE NAME=\"InstanceName\">" + test::thingName(3) + "</IPARAMVALUE>";
    const std::string one = text("MaxObjectCount", "1");
    HttpAnswer answer = ask("OpenAssociatorInstances", source + one);
    EXPECT_EQ(test::count(answer.body, "<VALUE.INSTANCEWITHPATH>"), 1u);
    answer = ask("PullInstancesWithPath", next(parameter(answer, "EnumerationContext"), 9));
    EXPECT_EQ(test::count(answer.body, "<VALUE.INSTANCEWITHPATH>"), 2u);
    EXPECT_EQ(test::count(ask("OpenAssociatorInstancePaths", source + one).body, "<INSTANCEPATH>"), 1u);
    const std::string pairs =
        "<IPARAMVALUE NAME=\"ResultClass\"><CLASSNAME NAME=\"Test_ThingPair\"/></IPARAMVALUE>";
    answer = ask("OpenReferenceInstances", source + pairs + one);
    EXPECT_EQ(test::count(answer.body, "<VALUE.INSTANCEWITHPATH>"), 1u) << answer.body;
    EXPECT_EQ(test::count(ask("OpenReferenceInstancePaths", source + one).body, "<INSTANCEPATH>"), 1u);
    const HttpAnswer query = ask("OpenQueryInstances",
                                 text("FilterQueryLanguage", "DMTF:CQL") +
                                     text("FilterQuery", "SELECT Label FROM Test_Thing WHERE Level &gt; 30") +
                                     text("ReturnQueryResultClass", "TRUE") + text("MaxObjectCount", "2"));
    EXPECT_EQ(test::count(query.body, "<INSTANCE CLASSNAME"), 2u);
    EXPECT_EQ(test::count(query.body, "<INSTANCEPATH>"), 0u);
    EXPECT_EQ(test::count(query.body, "<PARAMVALUE NAME=\"QueryResultClass\">"), 1u);
    const HttpAnswer rest = ask("PullInstances", next(parameter(query, "EnumerationContext"), 9));
    EXPECT_EQ(parameter(rest, "EndOfSequence"), "TRUE");
}

TEST_F(Pull, AQueryHasATextAndALanguage)
{
    const std::string query = text("FilterQuery", "SELECT * FROM Test_Thing");
    const std::string language = text("FilterQueryLanguage", "DMTF:CQL");
    expectError(ask("OpenQueryInstances", language), 4, "The parameter FilterQuery is missing.");
    expectError(ask("OpenQueryInstances", query), 4, "The parameter FilterQueryLanguage is missing.");
    expectError(ask("OpenQueryInstances", query + "<IPARAMVALUE NAME=\"FilterQueryLanguage\"/>"), 4,
                "The parameter FilterQueryLanguage is missing.");
}

TEST_F(Pull, FiltersLeaveWhatTheyAdmit)
{
    const HttpAnswer filtered =
        ask("OpenEnumerateInstances", ofClass() + text("FilterQueryLanguage", "DMTF:FQL") +
                                          text("FilterQuery", "Level = 30") + text("MaxObjectCount", "9"));
    EXPECT_EQ(test::count(filtered.body, "<VALUE.INSTANCEWITHPATH>"), 1u);
    EXPECT_NE(filtered.body.find("<VALUE>label-3</VALUE>"), std::string::npos);
    expectError(ask("OpenEnumerateInstances", ofClass() + text("FilterQueryLanguage", "WQL") +
                                                  text("FilterQuery", "Level = 30") +
                                                  text("MaxObjectCount", "9")),
                14, "The filter language WQL is not supported; DMTF:FQL is.");
    const HttpAnswer invalid =
        ask("OpenEnumerateInstances", ofClass() + text("FilterQueryLanguage", "DMTF:FQL") +
                                          text("FilterQuery", "Level &gt;") + text("MaxObjectCount", "9"));
    EXPECT_EQ(test::errorCode(invalid.body), 15);
    expectError(ask("OpenEnumerateInstancePaths",
                    ofClass() + text("FilterQueryLanguage", "DMTF:FQL") + text("FilterQuery", "Level = 30")),
                25, "Paths cannot be filtered; enumerate instances.");
}

TEST_F(Pull, WhatCannotBeServedIsRefusedByItsCode)
{
    expectError(ask("OpenEnumerateInstances", ofClass() + text("ContinueOnError", "TRUE")), 26,
                "ContinueOnError is not supported.");
    expectError(ask("OpenEnumerateInstances", ofClass() + text("OperationTimeout", "601")), 22,
                "The OperationTimeout has to be from 1 to 600 seconds.");
    expectError(ask("OpenEnumerateInstances", ofClass() + text("OperationTimeout", "0")), 22,
                "The OperationTimeout has to be from 1 to 600 seconds.");
    expectError(ask("OpenEnumerateInstances", ofClass() + text("MaxObjectCount", "-1")), 4,
                "The parameter MaxObjectCount is not a number of 32 bits.");
    EXPECT_EQ(test::errorCode(ask("OpenEnumerateInstances", ofClass() + text("MaxObjectCount", " 2 ")).body),
              0)
        << "white space around a number does not count";
    expectError(ask("OpenEnumerateInstances", ofClass("Test_Nope")), 5,
                "The class Test_Nope does not exist.");
    expectError(ask("PullInstancesWithPath", text("EnumerationContext", "x")), 4,
                "The parameter MaxObjectCount is missing.");
    expectError(ask("EnumerationCount", text("EnumerationContext", "x")), 7,
                "The requested operation is not supported.");
}

TEST_F(Pull, AContextIsGoodForItsKindUntilItIsClosed)
{
    const std::string context = parameter(
        ask("OpenEnumerateInstancePaths", ofClass() + text("MaxObjectCount", "1")), "EnumerationContext");
    const char *none =
        "There is no such enumeration of this kind; it has ended, was closed, or its time is over.";
    expectError(ask("PullInstancesWithPath", next(context, 1)), 21, none);
    EXPECT_EQ(test::count(ask("PullInstancePaths", next(context, 1)).body, "<INSTANCEPATH>"), 1u);
    const HttpAnswer closed = ask("CloseEnumeration", text("EnumerationContext", context));
    EXPECT_EQ(test::errorCode(closed.body), 0);
    EXPECT_EQ(test::count(closed.body, "IRETURNVALUE"), 0u);
    expectError(ask("CloseEnumeration", text("EnumerationContext", context)), 21, none);
    expectError(ask("PullInstancePaths", next(context, 1)), 21, none);
}

TEST_F(Pull, EachUserHasAFewEnumerationsOpen)
{
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(test::errorCode(ask("OpenEnumerateInstances", ofClass()).body), 0) << i;
    }
    expectError(ask("OpenEnumerateInstances", ofClass()), 27,
                "Too many enumerations are open, or too large ones; close one, or read one to its end.");
    EXPECT_EQ(test::errorCode(ask("OpenEnumerateInstances", ofClass() + text("MaxObjectCount", "99")).body),
              0)
        << "what is read at once needs no room";
}

TEST_F(Pull, ClassesAreTiedByAssociations)
{
    const std::string source =
        "<IPARAMVALUE NAME=\"ObjectName\"><CLASSNAME NAME=\"Test_Thing\"/></IPARAMVALUE>";
    const HttpAnswer names = ask("AssociatorNames", source);
    EXPECT_EQ(test::count(names.body, "<OBJECTPATH>\n<CLASSPATH>"), 3u);
    const HttpAnswer classes = ask("References", source);
    EXPECT_EQ(test::count(classes.body, "<VALUE.OBJECTWITHPATH>\n<CLASSPATH>"), 3u);
    EXPECT_EQ(test::count(classes.body, "<CLASS NAME=\"Test_ThingPair\""), 1u);
}

// ------------------------------------------------------------------------------------- the header of
// requests

TEST_F(Pull, TheHeaderHasToSayThatItIsAMethodCall)
{
    const std::string body = test::intrinsic("EnumerateInstanceNames", ofClass());
    for (const char *field : {"CIMOperation: Other\r\n", "CIMOperation:\r\n"}) {
        const HttpAnswer answer = server_.exchange(test::post(body, field));
        EXPECT_EQ(answer.status, 400) << field;
        EXPECT_EQ(answer.header("CIMError"), "unsupported-operation") << field;
    }
}

TEST_F(Pull, TheHeaderAgreesWithTheBody)
{
    const std::string body = test::intrinsic("EnumerateInstanceNames", ofClass());
    for (const char *field : {"CIMMethod: EnumerateInstanceNames\r\n", "CIMObject: root/cimv2\r\n",
                              "CIMObject: root%2Fcimv2\r\n", "CIMProtocolVersion: 1.0\r\n"}) {
        EXPECT_EQ(server_.exchange(test::post(body, field)).status, 200) << field;
    }
    for (const char *field :
         {"CIMMethod: GetClass\r\n", "CIMObject: root/other\r\n", "CIMObject: root/cimv2:Test_Thing\r\n",
          "CIMProtocolVersion: 1.1\r\n", "CIMBatch:\r\n"}) {
        const HttpAnswer answer = server_.exchange(test::post(body, field));
        EXPECT_EQ(answer.status, 400) << field;
        EXPECT_EQ(answer.header("CIMError"), "header-mismatch") << field;
    }
    const std::string call = test::methodCall(3, "Touch", "");
    EXPECT_EQ(
        server_.exchange(test::post(call, "CIMObject: root%2Fcimv2%3ATest_Thing.DeviceID=\"x\"\r\n")).status,
        200)
        << "of a path the namespace and the class count";
    EXPECT_EQ(server_.exchange(test::post(call, "CIMObject: root/cimv2:Test_Simple.Id=1\r\n")).status, 400);
}

} // namespace
