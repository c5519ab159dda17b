// SPDX-License-Identifier: Apache-2.0
// Requests as they are sent, and answers as object managers send them, some of them recorded.
#include "wbem/message.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace displayctl::wbem
{
namespace
{

constexpr std::string_view requestBegin =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
    "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>";
constexpr std::string_view requestEnd = "</SIMPLEREQ></MESSAGE></CIM>\n";
constexpr std::string_view space =
    "<LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"cimv2\"/></LOCALNAMESPACEPATH>";

/** What stands between the frame that all requests have. */
std::string content(const Operation &operation)
{
    const std::string body = requestBody(operation, "root/cimv2");
    EXPECT_TRUE(body.starts_with(requestBegin)) << body;
    EXPECT_TRUE(body.ends_with(requestEnd)) << body;
    return body.substr(requestBegin.size(), body.size() - requestBegin.size() - requestEnd.size());
}

std::string recorded(const std::string &name)
{
    std::ifstream file{TEST_DATA_DIR "/recorded/" + name + ".xml", std::ios::binary};
    EXPECT_TRUE(file) << name;
    return {std::istreambuf_iterator<char>{file}, {}};
}

ObjectPath preset(const std::string &number)
{
    return {"ZT_Marovelton_ColorSpace", {{"InstanceID", "ZT:Marovelton_ColorSpace:" + number, {}, {}}}};
}

Answer answerTo(const Operation &operation, std::string body)
{
    return parseAnswer(body, operation);
}

/** An answer of the intrinsic operation with the given content. */
std::string intrinsic(const std::string &name, const std::string &content)
{
    return "<CIM><MESSAGE><SIMPLERSP><IMETHODRESPONSE NAME=\"" + name + "\">" + content +
           "</IMETHODRESPONSE></SIMPLERSP></MESSAGE></CIM>";
}

TEST(Request, EnumerateInstancesNamesTheClassAndTheProperties)
{
    EXPECT_EQ(content(enumerateInstances("A_Class", {"One", "Two"})),
              "<IMETHODCALL NAME=\"EnumerateInstances\">" + std::string{space} +
                  "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"A_Class\"/></IPARAMVALUE>"
                  "<IPARAMVALUE NAME=\"PropertyList\"><VALUE.ARRAY><VALUE>One</VALUE><VALUE>Two</VALUE>"
                  "</VALUE.ARRAY></IPARAMVALUE></IMETHODCALL>");
}

TEST(Request, GetInstanceNamesTheKeysWithTheirKinds)
{
    const ObjectPath path{"A_Class",
                          {{"Name", "a<b&\"c\"", Key::Kind::text, {}},
                           {"Number", "7", Key::Kind::number, {}},
                           {"Flag", "TRUE", Key::Kind::boolean, {}}}};
    EXPECT_EQ(
        content(getInstance(path)),
        "<IMETHODCALL NAME=\"GetInstance\">" + std::string{space} +
            "<IPARAMVALUE NAME=\"InstanceName\"><INSTANCENAME CLASSNAME=\"A_Class\">"
            "<KEYBINDING NAME=\"Name\"><KEYVALUE VALUETYPE=\"string\">a&lt;b&amp;&quot;c&quot;</KEYVALUE>"
            "</KEYBINDING><KEYBINDING NAME=\"Number\"><KEYVALUE VALUETYPE=\"numeric\">7</KEYVALUE>"
            "</KEYBINDING><KEYBINDING NAME=\"Flag\"><KEYVALUE VALUETYPE=\"boolean\">TRUE</KEYVALUE>"
            "</KEYBINDING></INSTANCENAME></IPARAMVALUE></IMETHODCALL>");
}

TEST(Request, AssociatorsAndReferencesSayWhatTheyAreLimitedTo)
{
    const AssociationFilter filter{"An_Association", "A_Result", "Near", "Far"};
    const std::string begin =
        std::string{space} +
        "<IPARAMVALUE NAME=\"ObjectName\"><INSTANCENAME CLASSNAME=\"A_Class\">"
        "<KEYBINDING NAME=\"Id\"><KEYVALUE VALUETYPE=\"string\">1</KEYVALUE></KEYBINDING>"
        "</INSTANCENAME></IPARAMVALUE>";
    const ObjectPath path{"A_Class", {{"Id", "1", {}, {}}}};
    EXPECT_EQ(content(associatorNames(path, filter)),
              "<IMETHODCALL NAME=\"AssociatorNames\">" + begin +
                  "<IPARAMVALUE NAME=\"AssocClass\"><CLASSNAME NAME=\"An_Association\"/></IPARAMVALUE>"
                  "<IPARAMVALUE NAME=\"Role\"><VALUE>Near</VALUE></IPARAMVALUE>"
                  "<IPARAMVALUE NAME=\"ResultClass\"><CLASSNAME NAME=\"A_Result\"/></IPARAMVALUE>"
                  "<IPARAMVALUE NAME=\"ResultRole\"><VALUE>Far</VALUE></IPARAMVALUE></IMETHODCALL>");
    EXPECT_EQ(content(references(path, filter)),
              "<IMETHODCALL NAME=\"References\">" + begin +
                  "<IPARAMVALUE NAME=\"ResultClass\"><CLASSNAME NAME=\"An_Association\"/></IPARAMVALUE>"
                  "<IPARAMVALUE NAME=\"Role\"><VALUE>Near</VALUE></IPARAMVALUE></IMETHODCALL>");
    EXPECT_EQ(content(referenceNames(path)),
              "<IMETHODCALL NAME=\"ReferenceNames\">" + begin + "</IMETHODCALL>");
}

TEST(Request, ModifyInstanceSendsTheNewValuesAndAListOfThem)
{
    const ObjectPath path{"A_Class", {{"Id", "1", {}, {}}}};
    EXPECT_EQ(
        content(modifyInstance(path, {{"Name", "string", Value{"new"}},
                                      {"Codes", "uint16", Value::array({"1", "2"})},
                                      {"Nothing", "string", Value{}}})),
        "<IMETHODCALL NAME=\"ModifyInstance\">" + std::string{space} +
            "<IPARAMVALUE NAME=\"ModifiedInstance\"><VALUE.NAMEDINSTANCE><INSTANCENAME CLASSNAME=\"A_Class\">"
            "<KEYBINDING NAME=\"Id\"><KEYVALUE VALUETYPE=\"string\">1</KEYVALUE></KEYBINDING></INSTANCENAME>"
            "<INSTANCE CLASSNAME=\"A_Class\"><PROPERTY NAME=\"Name\" TYPE=\"string\"><VALUE>new</VALUE>"
            "</PROPERTY><PROPERTY.ARRAY NAME=\"Codes\" TYPE=\"uint16\"><VALUE.ARRAY><VALUE>1</VALUE>"
            "<VALUE>2</VALUE></VALUE.ARRAY></PROPERTY.ARRAY><PROPERTY NAME=\"Nothing\" TYPE=\"string\">"
            "</PROPERTY></INSTANCE></VALUE.NAMEDINSTANCE></IPARAMVALUE>"
            "<IPARAMVALUE NAME=\"PropertyList\"><VALUE.ARRAY><VALUE>Name</VALUE><VALUE>Codes</VALUE>"
            "<VALUE>Nothing</VALUE></VALUE.ARRAY></IPARAMVALUE></IMETHODCALL>");
}

TEST(Request, AMethodGetsItsArgumentsWithTheirTypesAndNoneThatIsNull)
{
    EXPECT_EQ(
        content(invokeMethod({"A_Class", {{"Id", "1", {}, {}}}}, "SetAll",
                             {{"Text", "string", Value{"x\ry"}},
                              {"Target", "reference", Value{preset("3")}},
                              {"Nothing", "string", Value{}}})),
        "<METHODCALL NAME=\"SetAll\"><LOCALINSTANCEPATH>" + std::string{space} +
            "<INSTANCENAME CLASSNAME=\"A_Class\"><KEYBINDING NAME=\"Id\"><KEYVALUE VALUETYPE=\"string\">1"
            "</KEYVALUE></KEYBINDING></INSTANCENAME></LOCALINSTANCEPATH>"
            "<PARAMVALUE NAME=\"Text\" PARAMTYPE=\"string\"><VALUE>x&#13;y</VALUE></PARAMVALUE>"
            "<PARAMVALUE NAME=\"Target\" PARAMTYPE=\"reference\"><VALUE.REFERENCE><LOCALINSTANCEPATH>" +
            std::string{space} +
            "<INSTANCENAME CLASSNAME=\"ZT_Marovelton_ColorSpace\"><KEYBINDING NAME=\"InstanceID\">"
            "<KEYVALUE VALUETYPE=\"string\">ZT:Marovelton_ColorSpace:3</KEYVALUE></KEYBINDING></INSTANCENAME>"
            "</LOCALINSTANCEPATH></VALUE.REFERENCE></PARAMVALUE></METHODCALL>");
}

TEST(Request, HeadersNameOperationAndObjectInAscii)
{
    const Operation method =
        invokeMethod({"A_Class", {{"B", "2", {}, {}}, {"a", "gr\xC3\xBCn\r\n\"", {}, {}}}}, "Go");
    EXPECT_EQ(methodHeader(method), "Go");
    EXPECT_EQ(objectHeader(method, "root/cimv2"), "root/cimv2:A_Class.a=\"gr%C3%BCn%0D%0A\\\"\",B=\"2\"");
    EXPECT_EQ(methodHeader(enumerateInstances("A_Class")), "EnumerateInstances");
    EXPECT_EQ(objectHeader(enumerateInstances("A_Class"), "root/cimv2"), "root/cimv2");
}

TEST(AnswerOf, ARecordedGetInstanceHasItsValuesWithTheirKindsAndNulls)
{
    const Answer answer =
        answerTo(getInstance({"Test_Thing", {{"DeviceID", "thing3", {}, {}}}}), recorded("get-instance"));
    ASSERT_EQ(answer.status, Status::ok) << answer.message;
    ASSERT_EQ(answer.instances.size(), 1U);
    const Instance &thing = answer.instances.front();
    EXPECT_EQ(thing.path.text("DeviceID"), "thing3"); // as asked
    EXPECT_EQ(thing.value("elementname").text(), "thing3");
    EXPECT_EQ(thing.find("ElementName")->type, "string");
    EXPECT_TRUE(thing.value("Generation").isNull());
    EXPECT_TRUE(thing.value("StatusDescriptions").isNull());
    EXPECT_EQ(thing.value("EnabledState").number(), 5);
    EXPECT_EQ(thing.value("Codes").elements(), (std::vector<std::string>{"30", "31", "32"}));
    EXPECT_TRUE(thing.value("Codes").isArray());
    EXPECT_EQ(thing.value("Tags").elements(), (std::vector<std::string>{"red & <blue>", "gr\xC3\xBCn"}));
    EXPECT_EQ(thing.value("Hot").boolean(), true);
    EXPECT_EQ(thing.value("Offset32").number(), -300);
    EXPECT_EQ(dateOf(*thing.value("Seen").text()), "2023-11-14");
    EXPECT_EQ(thing.find("NoSuch"), nullptr);
    EXPECT_TRUE(thing.value("NoSuch").isNull());
}

TEST(AnswerOf, RecordedNamesAreComparedWhateverTheOrderOfTheirKeys)
{
    const Answer answer = answerTo(enumerateInstanceNames("Test_Thing"), recorded("enumerate-names"));
    ASSERT_EQ(answer.status, Status::ok) << answer.message;
    ASSERT_EQ(answer.paths.size(), 7U);
    const ObjectPath same{"test_thing",
                          {{"DeviceID", "thing1", Key::Kind::text, {}},
                           {"creationclassname", "Test_Thing", Key::Kind::number, {}},
                           {"SystemName", "vm", {}, {}},
                           {"SystemCreationClassName", "Linux_ComputerSystem", {}, {}}}};
    EXPECT_EQ(answer.paths[1], same);
    EXPECT_NE(answer.paths[2], same);
    EXPECT_EQ(answer.paths[1].toText(), "Test_Thing.CreationClassName=\"Test_Thing\",DeviceID=\"thing1\","
                                        "SystemCreationClassName=\"Linux_ComputerSystem\",SystemName=\"vm\"");
}

TEST(AnswerOf, RecordedAssociationsBringPathsWithTheirNamespaces)
{
    const Answer objects = answerTo(associators(preset("1")), recorded("associators"));
    ASSERT_EQ(objects.status, Status::ok) << objects.message;
    ASSERT_EQ(objects.instances.size(), 1U);
    EXPECT_EQ(objects.instances[0].path.nameSpace, "root/cimv2");
    EXPECT_EQ(objects.instances[0].path.text("DeviceID"), "thing4");
    EXPECT_EQ(objects.instances[0].value("Label").text(), "label-4");

    const Answer ties = answerTo(references(preset("1")), recorded("references"));
    ASSERT_EQ(ties.status, Status::ok) << ties.message;
    ASSERT_EQ(ties.instances.size(), 2U);
    const ObjectPath *antecedent = ties.instances[0].value("Antecedent").reference();
    ASSERT_NE(antecedent, nullptr);
    EXPECT_EQ(antecedent->text("DeviceID"), "thing2");
    EXPECT_EQ(antecedent->nameSpace, "root/cimv2");
    EXPECT_EQ(ties.instances[0].find("Antecedent")->type, "reference");

    const Answer names = answerTo(referenceNames(preset("1")), recorded("reference-names"));
    ASSERT_EQ(names.status, Status::ok) << names.message;
    ASSERT_EQ(names.paths.size(), 3U);
    const Key *dependent = names.paths[0].find("Dependent");
    ASSERT_NE(dependent, nullptr);
    ASSERT_EQ(dependent->reference.size(), 1U);
    EXPECT_EQ(dependent->reference.front().text("DeviceID"), "thing3");
    EXPECT_EQ(names.paths[0], ties.instances[0].path);
}

TEST(AnswerOf, ARecordedMethodHasReturnValueAndOutputs)
{
    const Answer typed = answerTo(invokeMethod({"Test_Thing", {}}, "Types"), recorded("invoke-types"));
    ASSERT_EQ(typed.status, Status::ok) << typed.message;
    EXPECT_EQ(typed.returnValue.number(), 0);
    ASSERT_EQ(typed.outputs.size(), 1U);
    EXPECT_EQ(typed.outputs[0].name, "described");

    const Answer referring =
        answerTo(invokeMethod({"Test_Thing", {}}, "Touch"), recorded("invoke-reference"));
    ASSERT_EQ(referring.outputs.size(), 2U);
    ASSERT_NE(referring.outputs[0].value.reference(), nullptr);
    EXPECT_EQ(referring.outputs[0].value.reference()->text("DeviceID"), "thing5");
}

TEST(AnswerOf, RecordedErrorsKeepCodeAndText)
{
    const Answer refused = answerTo(invokeMethod({"Test_Thing", {}}, "Fail"), recorded("invoke-error"));
    EXPECT_EQ(refused.status, Status::cimError);
    EXPECT_EQ(refused.code, 4);
    EXPECT_EQ(refused.message, "bad & ugly");
    EXPECT_FALSE(refused.maybeDone);
    EXPECT_EQ(answerTo(getInstance({"Test_Thing", {}}), recorded("error-not-found")).code, 6);
}

TEST(AnswerOf, ModifyInstanceIsOkWithOrWithoutAnEmptyReturnValue)
{
    EXPECT_TRUE(answerTo(modifyInstance(preset("1"), {}), recorded("modify-instance")).ok());
    EXPECT_TRUE(answerTo(modifyInstance(preset("1"), {}), intrinsic("ModifyInstance", "")).ok());
}

TEST(AnswerOf, AValueOfWhiteSpaceIsAValueAndAnEmptyOneIsNotNull)
{
    const Answer answer = answerTo(
        getInstance(preset("1")),
        intrinsic("GetInstance",
                  "<IRETURNVALUE>\n<INSTANCE CLASSNAME=\"A\">\n<PROPERTY NAME=\"Blank\"><VALUE>  </VALUE>"
                  "</PROPERTY>\n<PROPERTY NAME=\"Empty\" TYPE=\"string\"><VALUE></VALUE></PROPERTY>"
                  "<PROPERTY NAME=\"Closed\" TYPE=\"string\"><VALUE/></PROPERTY>"
                  "<PROPERTY NAME=\"Null\" TYPE=\"string\"/>"
                  "<PROPERTY NAME=\"Data\" TYPE=\"string\"><VALUE>a<![CDATA[<b>]]>c</VALUE></PROPERTY>"
                  "</INSTANCE>\n</IRETURNVALUE>"));
    ASSERT_EQ(answer.status, Status::ok) << answer.message;
    const Instance &instance = answer.instances.front();
    EXPECT_EQ(instance.value("Blank").text(), "  ");
    EXPECT_EQ(instance.value("Empty").text(), "");
    EXPECT_EQ(instance.value("Closed").text(), "");
    EXPECT_TRUE(instance.value("Null").isNull());
    EXPECT_EQ(instance.value("Data").text(), "a<b>c");
}

TEST(AnswerOf, WhatIsNoAnswerIsBrokenAndSaysWhy)
{
    const Operation operation = getInstance(preset("1"));
    const auto problem = [&](const std::string &body) {
        const Answer answer = answerTo(operation, body);
        EXPECT_EQ(answer.status, Status::broken);
        EXPECT_FALSE(answer.maybeDone);
        return answer.message;
    };
    constexpr std::string_view begin = "the answer to GetInstance cannot be understood: ";
    EXPECT_EQ(problem(""), std::string{begin} + "it is not well-formed XML (byte 0)");
    EXPECT_EQ(problem("<html><body>Hello</body></html>"), std::string{begin} + "it has no IMETHODRESPONSE");
    EXPECT_EQ(problem("<CIM><MESSAGE>"), std::string{begin} + "it is not well-formed XML (byte 13)");
    EXPECT_EQ(problem(std::string("<CIM></CIM\0>", 12)),
              std::string{begin} + "it is not well-formed XML (byte 10)");
    EXPECT_EQ(problem(intrinsic("EnumerateInstances", "")),
              std::string{begin} + "it answers EnumerateInstances");
    EXPECT_EQ(problem(intrinsic("GetInstance", "<IRETURNVALUE></IRETURNVALUE>")),
              std::string{begin} + "it holds 0 instances instead of one");
    EXPECT_EQ(problem(intrinsic("GetInstance", "<IRETURNVALUE><VALUE>1</VALUE></IRETURNVALUE>")),
              std::string{begin} + "an instance was expected in VALUE");
    EXPECT_EQ(
        problem(intrinsic("GetInstance", "<IRETURNVALUE><INSTANCE CLASSNAME=\"A\"><PROPERTY TYPE=\"string\"/>"
                                         "</INSTANCE></IRETURNVALUE>")),
        std::string{begin} + "a property or an argument has no name");
}

TEST(AnswerOf, APathHasAClassAndItsKeysHaveNames)
{
    const auto problem = [](const std::string &path) {
        const Answer answer = answerTo(associatorNames(preset("1")),
                                       intrinsic("AssociatorNames", "<IRETURNVALUE><OBJECTPATH>" + path +
                                                                        "</OBJECTPATH></IRETURNVALUE>"));
        EXPECT_EQ(answer.status, Status::broken);
        return answer.message;
    };
    constexpr std::string_view begin = "the answer to AssociatorNames cannot be understood: ";
    EXPECT_EQ(problem("<INSTANCEPATH/>"), std::string{begin} + "a path names no class");
    EXPECT_EQ(problem("<INSTANCEPATH><INSTANCENAME/></INSTANCEPATH>"),
              std::string{begin} + "a path names no class");
    EXPECT_EQ(problem("<CLASSPATH><CLASSNAME/></CLASSPATH>"), std::string{begin} + "a class has no name");
    EXPECT_EQ(
        problem("<INSTANCEPATH><INSTANCENAME CLASSNAME=\"A\"><KEYBINDING><KEYVALUE>1</KEYVALUE></KEYBINDING>"
                "</INSTANCENAME></INSTANCEPATH>"),
        std::string{begin} + "a key has no name");
}

TEST(AnswerOf, AnErrorWithoutAReadableCodeIsAFailure)
{
    for (const char *code : {"", "CODE=\"\"", "CODE=\"abc\"", "CODE=\"0\"", "CODE=\"-3\""}) {
        const Answer answer =
            answerTo(getInstance(preset("1")),
                     intrinsic("GetInstance", std::string{"<ERROR "} + code + " DESCRIPTION=\"No.\"/>"));
        EXPECT_EQ(answer.status, Status::cimError) << code;
        EXPECT_EQ(answer.code, 1) << code;
        EXPECT_EQ(answer.message, "No.") << code;
    }
}

TEST(AnswerOf, AMethodWhoseAnswerIsBrokenMayHaveBeenDone)
{
    const Answer answer = answerTo(invokeMethod(preset("1"), "Go"), intrinsic("Go", ""));
    EXPECT_EQ(answer.status, Status::broken);
    EXPECT_TRUE(answer.maybeDone);
}

TEST(AnswerOf, ReferencesNestedWithoutEndAreRefused)
{
    std::string name = "<INSTANCENAME CLASSNAME=\"A\"/>";
    for (int i = 0; i < 100'000; ++i) {
        name = "<INSTANCENAME CLASSNAME=\"A\"><KEYBINDING NAME=\"K\"><VALUE.REFERENCE>" + std::move(name);
        if (name.size() > 10'000) {
            break;
        }
    }
    std::string ends;
    for (std::size_t at = name.find("<KEYBINDING"); at != std::string::npos;
         at = name.find("<KEYBINDING", at + 1)) {
        ends += "</VALUE.REFERENCE></KEYBINDING></INSTANCENAME>";
    }
    const Answer answer =
        answerTo(enumerateInstanceNames("A"),
                 intrinsic("EnumerateInstanceNames", "<IRETURNVALUE>" + name + ends + "</IRETURNVALUE>"));
    EXPECT_EQ(answer.status, Status::broken);
    EXPECT_EQ(answer.message,
              "the answer to EnumerateInstanceNames cannot be understood: references are nested too deeply");
}

TEST(ValueOf, NumbersAndTruthValuesAreReadHoweverTheyAreWritten)
{
    EXPECT_EQ(Value{"+12"}.number(), 12);
    EXPECT_EQ(Value{"12x"}.number(), std::nullopt);
    EXPECT_EQ(Value{""}.number(), std::nullopt);
    EXPECT_EQ(Value{"99999999999999999999"}.number(), std::nullopt);
    EXPECT_EQ(Value{"True"}.boolean(), true);
    EXPECT_EQ(Value{"0"}.boolean(), false);
    EXPECT_EQ(Value{"yes"}.boolean(), std::nullopt);
    EXPECT_EQ(Value{}.text(), std::nullopt);
    EXPECT_EQ(Value::array({}).text(), std::nullopt);
    EXPECT_EQ(Value::array({"5"}).number(), 5);
}

TEST(ValueOf, DatesAreReadWithEitherFormOfOffset)
{
    EXPECT_EQ(dateOf("20260131235959.000000+000"), "2026-01-31");
    EXPECT_EQ(dateOf("20260131000000.000000+00:00"), "2026-01-31");
    EXPECT_EQ(dateOf("20260131000000.000000-060"), "2026-01-31");
    EXPECT_EQ(dateOf("00000005000000.000000:000"), std::nullopt);
    EXPECT_EQ(dateOf("2026****000000.000000+000"), std::nullopt);
    EXPECT_EQ(dateOf("2026-01-31"), std::nullopt);
}

TEST(PathOf, TheNamespaceCountsOnlyWhereBothHaveOne)
{
    ObjectPath left = preset("1");
    ObjectPath right = preset("1");
    left.nameSpace = "root/cimv2";
    EXPECT_EQ(left, right);
    right.nameSpace = "root/other";
    EXPECT_NE(left, right);
    EXPECT_NE(preset("1"), preset("2"));
}

} // namespace
} // namespace displayctl::wbem
