// SPDX-License-Identifier: Apache-2.0
// The namespace "interop": what the object manager says about itself, and the associations that lead from
// there into the namespace of the providers and back.
#include "test_host.h"

#include "core/conformance.h"

#include <gmock/gmock.h>

namespace
{

using host::Answer;
using host::Operation;
using host::Path;
using host::Request;
using testing::ElementsAre;
using testing::IsEmpty;

/** The classes of test.mof, and those by which an element tells its profile. */
cim::ClassRepository classesWithConformance()
{
    cim::ClassRepository classes = test::readTestClasses();
    const cim::MofResult result =
        cim::readMofText(classes, "class CIM_RegisteredProfile : Test_Element {\n"
                                  "    [Key] string InstanceID;\n"
                                  "};\n"
                                  "[Association] class CIM_ElementConformsToProfile {\n"
                                  "    [Key] CIM_RegisteredProfile REF ConformantStandard;\n"
                                  "    [Key] Test_Element REF ManagedElement;\n"
                                  "};\n");
    EXPECT_TRUE(result.ok());
    return classes;
}

class Interop : public testing::Test
{
  protected:
    Request request(Operation operation, std::string_view nameSpace = "interop")
    {
        Request made;
        made.operation = operation;
        made.nameSpace = nameSpace;
        made.principal = "operator";
        made.role = host::Role::operatorUser;
        return made;
    }

    Answer run(const Request &request)
    {
        Answer answer(call_.arena);
        manager_->dispatcher().execute(call_.call(), request, answer);
        return answer;
    }

    Path *path(std::string_view nameSpace, std::string_view className,
               const std::vector<std::pair<std::string, std::string>> &keys)
    {
        Path *made = host::makePath(call_.arena, manager_->nameSpaces(), nameSpace, className);
        for (const auto &[name, value] : keys) {
            host::setKey(*made, name, host::stringData(host::makeString(call_.arena, value)));
        }
        return made;
    }

    Path *profile(const std::string &id, std::string_view nameSpace = "interop")
    {
        return path(nameSpace, "CIM_RegisteredProfile", {{"InstanceID", id}});
    }

    Path *special(int number)
    {
        return path("root/cimv2", "Test_SpecialThing",
                    {{"SystemCreationClassName", "Linux_ComputerSystem"},
                     {"SystemName", "desk"},
                     {"CreationClassName", "Test_SpecialThing"},
                     {"DeviceID", "thing" + std::to_string(number)}});
    }

    /** The paths of an answer as texts; what differs between machines replaced. */
    std::vector<std::string> texts(const Answer &answer)
    {
        EXPECT_EQ(answer.code, CMPI_RC_OK) << (answer.message != nullptr ? answer.message : "");
        std::vector<std::string> found;
        for (const Path *each : answer.paths) {
            std::string text(host::pathText(call_.arena, *each)->view());
            const std::string name = "\"" + manager_->dispatcher().hostName() + "\"";
            if (const std::size_t place = text.find(name); place != std::string::npos) {
                text.replace(place, name.size(), "\"this-host\"");
            }
            found.push_back(text);
        }
        for (const host::Instance *each : answer.instances) {
            found.emplace_back(host::pathText(call_.arena, *each->path)->view());
        }
        return found;
    }

    std::vector<std::string> follow(Operation operation, Path *source,
                                    const host::TraversalFilter &filter = {})
    {
        Request made = request(operation, source->nameSpace->view());
        made.path = source;
        made.filter = filter;
        return texts(run(made));
    }

    static std::string error(const Answer &answer)
    {
        return std::to_string(static_cast<int>(answer.code)) + " " +
               (answer.message != nullptr ? answer.message : "(none)");
    }

    std::unique_ptr<host::ObjectManager> manager_ = test::makeManager(classesWithConformance());
    test::TestCall call_;
};

constexpr const char *specialThing =
    "root/cimv2:Test_SpecialThing.SystemCreationClassName=\"Linux_ComputerSystem\",SystemName=\"desk\","
    "CreationClassName=\"Test_SpecialThing\",DeviceID=\"thing0\"";

TEST_F(Interop, IsThereByTwoNames)
{
    for (const char *nameSpace : {"interop", "root/interop"}) {
        Request made = request(Operation::enumerateInstanceNames, nameSpace);
        made.className = "CIM_RegisteredProfile";
        EXPECT_THAT(
            texts(run(made)),
            ElementsAre(std::string(nameSpace) + ":CIM_RegisteredProfile.InstanceID=\"test:profile1\"",
                        std::string(nameSpace) + ":CIM_RegisteredProfile.InstanceID=\"test:profile2\""));
        made.className = "CIM_Namespace";
        EXPECT_EQ(run(made).paths.size(), 3u);
    }
    Request other = request(Operation::enumerateInstanceNames, "root/PG_InterOp");
    other.className = "CIM_Namespace";
    EXPECT_EQ(error(run(other)), "3 The namespace root/PG_InterOp does not exist.");
}

TEST_F(Interop, CanBeTheNamespaceOfTheProvidersInstead)
{
    host::ObjectManagerOptions options;
    options.nameSpace = "interop";
    const host::ObjectManager manager(test::readTestClasses(), options);
    ASSERT_EQ(manager.nameSpaces().all().size(), 2u);
    EXPECT_NE(manager.nameSpaces().find("interop")->classes->find("Test_Thing"), nullptr);
    EXPECT_EQ(manager.nameSpaces().find("root/interop")->classes->find("Test_Thing"), nullptr);
}

TEST_F(Interop, ProfilesLeadToTheirCentralInstancesInTheOtherNamespace)
{
    EXPECT_THAT(follow(Operation::associatorNames, profile("test:profile1"),
                       {"CIM_ElementConformsToProfile", nullptr, nullptr, "ManagedElement"}),
                ElementsAre(specialThing));
    EXPECT_THAT(follow(Operation::associators, profile("test:profile1"), {"CIM_ElementConformsToProfile"}),
                ElementsAre(specialThing));
    EXPECT_THAT(follow(Operation::associatorNames, profile("test:profile1"),
                       {"CIM_ElementConformsToProfile", "Test_Thing"}),
                ElementsAre(specialThing))
        << "a filter may name a class of the other namespace, and a superclass";
    EXPECT_THAT(follow(Operation::associatorNames, profile("test:profile1"),
                       {"CIM_ElementConformsToProfile", "Test_Simple"}),
                IsEmpty());
    EXPECT_THAT(
        follow(Operation::associatorNames, profile("test:profile2"), {"CIM_ElementConformsToProfile"}),
        IsEmpty());
    Request made = request(Operation::associatorNames);
    made.path = profile("test:profile1");
    made.filter.resultClass = "Test_Nope";
    EXPECT_EQ(error(run(made)), "4 The class Test_Nope of the filter does not exist.");
}

TEST_F(Interop, ElementsLeadToTheirProfile)
{
    const host::TraversalFilter conformance = {"CIM_ElementConformsToProfile"};
    EXPECT_THAT(follow(Operation::associatorNames, special(0), conformance),
                ElementsAre("interop:CIM_RegisteredProfile.InstanceID=\"test:profile1\""));
    EXPECT_THAT(follow(Operation::associators, special(0), conformance),
                ElementsAre("interop:CIM_RegisteredProfile.InstanceID=\"test:profile1\""));
    EXPECT_THAT(
        follow(Operation::referenceNames, special(0), conformance),
        ElementsAre("root/cimv2:CIM_ElementConformsToProfile."
                    "ConformantStandard=\"interop:CIM_RegisteredProfile.InstanceID=\\\"test:profile1\\\"\","
                    "ManagedElement=\"root/cimv2:Test_SpecialThing."
                    "SystemCreationClassName=\\\"Linux_ComputerSystem\\\",SystemName=\\\"desk\\\","
                    "CreationClassName=\\\"Test_SpecialThing\\\",DeviceID=\\\"thing0\\\"\""));
    EXPECT_EQ(follow(Operation::references, special(0), conformance).size(), 1u);
    EXPECT_THAT(follow(Operation::associatorNames,
                       path("root/cimv2", "Test_Thing",
                            {{"SystemCreationClassName", "Linux_ComputerSystem"},
                             {"SystemName", "desk"},
                             {"CreationClassName", "Test_Thing"},
                             {"DeviceID", "thing3"}}),
                       conformance),
                IsEmpty())
        << "a class that is no central class of a profile";
}

TEST_F(Interop, TheStandardSchemaGetsTheClassesForThatWayWhenThereAreProfiles)
{
    const auto nameSpaceWith = [](const std::string &mof, bool hasProfiles) {
        cim::ClassRepository classes = test::readTestClasses();
        EXPECT_TRUE(cim::readMofText(classes, mof).ok());
        std::vector<host::Profile> profiles(hasProfiles ? 1 : 0);
        return host::withConformanceClasses(std::move(classes), profiles);
    };
    const std::string standard = "class CIM_ManagedElement { string InstanceID; };";
    const cim::ClassRepository with = nameSpaceWith(standard, true);
    EXPECT_TRUE(with.isA("CIM_RegisteredProfile", "CIM_ManagedElement"));
    EXPECT_EQ(with.keys(*with.find("CIM_ElementConformsToProfile")).size(), 2u);
    EXPECT_EQ(with.keys(*with.find("CIM_RegisteredProfile")).size(), 1u);
    EXPECT_EQ(nameSpaceWith(standard, false).find("CIM_RegisteredProfile"), nullptr);
    EXPECT_EQ(nameSpaceWith("class Other_Class { };", true).find("CIM_RegisteredProfile"), nullptr);
    const std::string own = standard + "class CIM_RegisteredProfile { string Own; };";
    EXPECT_EQ(nameSpaceWith(own, true).find("CIM_ElementConformsToProfile"), nullptr);
}

TEST_F(Interop, ProfilesLeadToThoseThatTheyReference)
{
    EXPECT_THAT(follow(Operation::associatorNames, profile("test:profile2", "root/interop"),
                       {"CIM_ReferencedProfile", nullptr, nullptr, "Dependent"}),
                ElementsAre("root/interop:CIM_RegisteredProfile.InstanceID=\"test:profile1\""));
    EXPECT_THAT(follow(Operation::associatorNames, profile("test:profile1"),
                       {"CIM_ReferencedProfile", nullptr, "Dependent", nullptr}),
                ElementsAre("interop:CIM_RegisteredProfile.InstanceID=\"test:profile2\""));
    EXPECT_THAT(follow(Operation::associatorNames, profile("test:profile1"),
                       {"CIM_ReferencedProfile", nullptr, nullptr, "Dependent"}),
                IsEmpty());
}

TEST_F(Interop, TheObjectManagerLeadsToItsNamespaces)
{
    Request made = request(Operation::enumerateInstanceNames);
    made.className = "CIM_ObjectManager";
    const Answer managers = run(made);
    ASSERT_EQ(managers.paths.size(), 1u);
    const auto found = follow(Operation::associatorNames, managers.paths[0], {"CIM_NamespaceInManager"});
    ASSERT_EQ(found.size(), 3u);
    EXPECT_TRUE(found[0].ends_with("CreationClassName=\"CIM_Namespace\",Name=\"root/cimv2\"")) << found[0];
    EXPECT_TRUE(found[1].ends_with("CreationClassName=\"CIM_Namespace\",Name=\"interop\"")) << found[1];
    EXPECT_TRUE(found[2].ends_with("CreationClassName=\"CIM_Namespace\",Name=\"root/interop\"")) << found[2];
    made.className = "CIM_Namespace";
    EXPECT_EQ(follow(Operation::referenceNames, run(made).paths[1]).size(), 1u);
}

TEST_F(Interop, CentralInstancesAreToldByTheMethodToo)
{
    Request made = request(Operation::invokeMethod);
    made.path = profile("test:profile1");
    made.methodName = "GetCentralInstances";
    made.arguments = host::makeArgs(call_.arena);
    const Answer answer = run(made);
    ASSERT_EQ(answer.code, CMPI_RC_OK);
    EXPECT_EQ(answer.returnValue.value.uint32, 0u);
    const host::NamedValue *instances = host::findValue(*answer.outArguments->values, "CentralInstances");
    ASSERT_NE(instances, nullptr);
    const host::Array *array = host::arrayOf(instances->data);
    ASSERT_EQ(array->size, 1u);
    EXPECT_EQ(host::pathText(call_.arena, *host::pathOf(array->elements[0]))->view(), specialThing);
    made.path = profile("test:nope");
    EXPECT_EQ(error(run(made)), "6 There is no instance with these keys.");
    made.path = profile("test:profile1");
    made.methodName = "Other";
    EXPECT_EQ(error(run(made)),
              "17 The class CIM_RegisteredProfile has the method GetCentralInstances alone.");
}

TEST_F(Interop, IsNotToBeChanged)
{
    const char *refusal = "7 The object manager makes these instances itself; they cannot be changed.";
    Request made = request(Operation::deleteInstance);
    made.path = profile("test:profile1");
    EXPECT_EQ(error(run(made)), refusal);
    made.operation = Operation::modifyInstance;
    made.instance = host::makeInstance(call_.arena, *made.path);
    EXPECT_EQ(error(run(made)), refusal);
    made.operation = Operation::createInstance;
    EXPECT_EQ(error(run(made)), refusal);
    made.operation = Operation::getInstance;
    made.path = profile("test:nope");
    EXPECT_EQ(error(run(made)), "6 There is no instance with these keys.");
}

TEST_F(Interop, HasWhatAClassNeedsToBeRead)
{
    const cim::ClassRepository classes = host::readInteropClasses();
    EXPECT_EQ(classes.keys(*classes.find("CIM_Namespace")).size(), 6u);
    EXPECT_EQ(classes.keys(*classes.find("CIM_ObjectManager")).size(), 4u);
    EXPECT_EQ(classes.keys(*classes.find("CIM_RegisteredProfile")).size(), 1u);
    EXPECT_EQ(classes.keys(*classes.find("CIM_ElementConformsToProfile")).size(), 2u);
    EXPECT_TRUE(classes.isA("CIM_ReferencedProfile", "CIM_Dependency"));
    EXPECT_TRUE(classes.isA("CIM_ObjectManager", "CIM_ManagedElement"));
}

} // namespace
