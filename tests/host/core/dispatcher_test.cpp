// SPDX-License-Identifier: Apache-2.0
// Requests on their way to providers and back, without any protocol.
#include "test_host.h"

#include <chrono>
#include <dlfcn.h>
#include <thread>
#include <unistd.h>

namespace
{

using host::Answer;
using host::Operation;
using host::Request;

class Dispatch : public testing::Test
{
  protected:
    Dispatch() : manager_(test::makeManager()) {}

    Request request(Operation operation)
    {
        Request made;
        made.operation = operation;
        made.nameSpace = "root/cimv2";
        made.principal = "operator";
        made.role = host::Role::operatorUser;
        return made;
    }

    host::Path *path(const char *className)
    {
        return host::makePath(call_.arena, manager_->nameSpaces(), "root/cimv2", className);
    }

    void key(host::Path &path, const char *name, const char *value)
    {
        host::setKey(path, name, host::stringData(host::makeString(call_.arena, value)));
    }

    host::Path *thing(int number, const char *className = "Test_Thing")
    {
        host::Path *made = path(className);
        key(*made, "SystemCreationClassName", "Linux_ComputerSystem");
        key(*made, "SystemName", "desk");
        key(*made, "CreationClassName", className);
        key(*made, "DeviceID", ("thing" + std::to_string(number)).c_str());
        return made;
    }

    Answer run(const Request &request)
    {
        Answer answer(call_.arena);
        manager_->dispatcher().execute(call_.call(), request, answer);
        return answer;
    }

    /** The code and the text of an error. */
    static std::string error(const Answer &answer)
    {
        return std::to_string(static_cast<int>(answer.code)) + " " +
               (answer.message != nullptr ? answer.message : "(none)");
    }

    Answer enumerate(const char *className, bool names = false)
    {
        Request made = request(names ? Operation::enumerateInstanceNames : Operation::enumerateInstances);
        made.className = className;
        return run(made);
    }

    Answer relay(const char *what)
    {
        Request made = request(Operation::invokeMethod);
        made.path = thing(3);
        made.methodName = "Relay";
        made.arguments = host::makeArgs(call_.arena);
        host::setValue(*made.arguments->values, "what",
                       host::stringData(host::makeString(call_.arena, what)));
        return run(made);
    }

    static std::string outText(const Answer &answer, const char *name)
    {
        if (!answer.ok()) {
            return error(answer);
        }
        const host::NamedValue *value = host::findValue(*answer.outArguments->values, name);
        return value != nullptr ? std::string(host::behind<host::String>(value->data.value.string)->view())
                                : "(absent)";
    }

    static std::string visibleProperties(const host::Instance &instance)
    {
        std::string names;
        for (std::size_t i = 0; i < instance.klass->properties.size(); ++i) {
            if (instance.visible == nullptr || instance.visible->contains(i)) {
                names += (names.empty() ? "" : " ") + instance.klass->properties[i].name;
            }
        }
        return names;
    }

    std::unique_ptr<host::ObjectManager> manager_;
    test::TestCall call_;
};

// --------------------------------------------------------------------------------------------- before any
// class

TEST_F(Dispatch, NothingWithoutAPrincipal)
{
    Request made = request(Operation::enumerateInstances);
    made.className = "Test_Thing";
    made.principal = "";
    EXPECT_EQ(error(run(made)), "2 The request has no principal.");
}

TEST_F(Dispatch, OtherNamespacesDoNotExist)
{
    for (const char *nameSpace : {"root/other", "root", "interop/root", ""}) {
        Request made = request(Operation::enumerateInstanceNames);
        made.className = "CIM_Namespace";
        made.nameSpace = nameSpace;
        EXPECT_EQ(error(run(made)), std::string("3 The namespace ") + nameSpace + " does not exist.");
    }
    Request made = request(Operation::enumerateInstanceNames);
    made.className = "Test_Thing";
    made.nameSpace = "/ROOT/cimv2";
    EXPECT_TRUE(run(made).ok());
}

TEST_F(Dispatch, UnknownClassesAreInvalid)
{
    EXPECT_EQ(error(enumerate("Test_Nope")), "5 The class Test_Nope does not exist.");
    for (const Operation operation :
         {Operation::getInstance, Operation::deleteInstance, Operation::associators, Operation::invokeMethod,
          Operation::modifyInstance, Operation::createInstance, Operation::getProperty}) {
        Request made = request(operation);
        made.path = path("Test_Nope");
        EXPECT_EQ(error(run(made)), "5 The class Test_Nope does not exist.") << operationName(operation);
    }
}

TEST_F(Dispatch, ClassesWithoutProviderAreNotSupported)
{
    EXPECT_EQ(error(enumerate("Test_Unserved")),
              "7 No instance provider is registered for the class Test_Unserved or a subclass of it.");
    Request made = request(Operation::getInstance);
    made.path = path("Test_Unserved");
    EXPECT_EQ(error(run(made)), "7 No instance provider is registered for the class Test_Unserved.");
    made.operation = Operation::invokeMethod;
    EXPECT_EQ(error(run(made)), "7 No method provider is registered for the class Test_Unserved.");
}

// --------------------------------------------------------------------------------------------------
// instances

TEST_F(Dispatch, EnumerationsReachSubclasses)
{
    EXPECT_EQ(enumerate("Test_Thing").instances.size(), 8u);
    EXPECT_EQ(enumerate("Test_Thing", true).paths.size(), 8u);
    EXPECT_EQ(enumerate("Test_SpecialThing").instances.size(), 1u);
    EXPECT_EQ(enumerate("Test_Device").instances.size(), 8u);
    EXPECT_EQ(enumerate("Test_Element", true).paths.size(), 9u) << "the computer system is an element too";
}

TEST_F(Dispatch, ShallowInstancesHaveThePropertiesOfTheirSuperclass)
{
    Request made = request(Operation::enumerateInstances);
    made.className = "Test_Device";
    made.deepInheritance = false;
    const Answer answer = run(made);
    ASSERT_EQ(answer.instances.size(), 8u);
    EXPECT_EQ(
        visibleProperties(*answer.instances[0]),
        "Caption ElementName SystemCreationClassName SystemName CreationClassName DeviceID EnabledState");
    EXPECT_EQ(answer.instances[7]->klass->name, "Test_SpecialThing");
    made.deepInheritance = true;
    EXPECT_EQ(
        visibleProperties(*run(made).instances[7]),
        "Caption ElementName SystemCreationClassName SystemName CreationClassName DeviceID EnabledState "
        "Label Level Offset32 Serial Hot Gain Seen Tags Codes Extra");
}

TEST_F(Dispatch, PropertyListsAndLocalOnlyLimitWhatIsSeen)
{
    Request made = request(Operation::getInstance);
    made.path = thing(0, "Test_SpecialThing");
    const char *list[] = {"LEVEL", "extra", "Nope", nullptr};
    made.propertyList = list;
    EXPECT_EQ(visibleProperties(*run(made).instances[0]), "Level Extra");
    made.propertyList = nullptr;
    made.localOnly = true;
    EXPECT_EQ(visibleProperties(*run(made).instances[0]), "Label Extra")
        << "an overridden property is local, an inherited one is not";
    const char *none[] = {nullptr};
    made.localOnly = false;
    made.propertyList = none;
    EXPECT_EQ(visibleProperties(*run(made).instances[0]), "");
}

TEST_F(Dispatch, GetInstanceFindsOneInstance)
{
    Request made = request(Operation::getInstance);
    made.path = thing(3);
    const Answer answer = run(made);
    ASSERT_TRUE(answer.ok()) << error(answer);
    ASSERT_EQ(answer.instances.size(), 1u);
    const host::Instance &instance = *answer.instances[0];
    EXPECT_EQ(instance.values[instance.klass->placeOf("Level")].value.uint16, 30);
    EXPECT_EQ(host::pathText(call_.arena, *instance.path)->view(),
              "root/cimv2:Test_Thing.SystemCreationClassName=\"Linux_ComputerSystem\",SystemName=\"desk\","
              "CreationClassName=\"Test_Thing\",DeviceID=\"thing3\"");
    made.path = thing(9);
    EXPECT_EQ(error(run(made)), "6 no such thing");
}

TEST_F(Dispatch, APathOfASuperclassLeadsToTheInstanceOfTheSubclass)
{
    Request made = request(Operation::getInstance);
    made.path = thing(3, "Test_Device");
    const Answer found = run(made);
    ASSERT_EQ(found.instances.size(), 1u);
    EXPECT_EQ(found.instances[0]->klass->name, "Test_Thing");
    made.operation = Operation::invokeMethod;
    made.methodName = "Echo";
    made.arguments = host::makeArgs(call_.arena);
    EXPECT_TRUE(run(made).ok());
    made.operation = Operation::associators;
    EXPECT_EQ(run(made).instances.size(), 3u);
    made.operation = Operation::getInstance;
    made.path = thing(99, "Test_Device");
    EXPECT_EQ(error(run(made)),
              "6 There is no instance of Test_Device itself; its subclasses have instances.");
    made.operation = Operation::deleteInstance;
    EXPECT_EQ(error(run(made)),
              "6 There is no instance of Test_Device itself, and none of a subclass with these keys.");
}

TEST_F(Dispatch, ClassesAreTiedByTheirAssociations)
{
    Request made = request(Operation::associators);
    made.path = path("Test_Thing");
    made.isOfClass = true;
    const auto names = [&] {
        std::string text;
        for (const cim::Class *klass : run(made).classes) {
            text += (text.empty() ? "" : " ") + klass->name;
        }
        return text;
    };
    EXPECT_EQ(names(), "Test_Element Test_Thing Linux_ComputerSystem");
    made.filter.associationClass = "Test_ThingPair";
    EXPECT_EQ(names(), "Test_Thing");
    made.filter.resultRole = "Nope";
    EXPECT_EQ(names(), "");
    made.filter = {};
    made.filter.resultClass = "Test_System";
    EXPECT_EQ(names(), "Linux_ComputerSystem");
    made.filter = {};
    made.operation = Operation::references;
    EXPECT_EQ(names(), "Test_Dependency Test_ThingPair Test_ThingOnSystem");
    made.filter.role = "Antecedent";
    made.filter.associationClass = "Test_ThingPair";
    EXPECT_EQ(names(), "Test_ThingPair");
    made.filter.associationClass = "Test_Nope";
    EXPECT_EQ(error(run(made)), "4 The class Test_Nope of the filter does not exist.");
}

TEST_F(Dispatch, AnErrorWinsOverWhatWasReturnedBefore)
{
    const Answer names = enumerate("Test_Faulty", true);
    EXPECT_EQ(error(names), "1 failed  after <one> & \"more\"");
    EXPECT_TRUE(names.paths.empty());
    EXPECT_EQ(error(enumerate("Test_Faulty")), "2 an extended error");
}

TEST_F(Dispatch, StrangeProvidersAreTold)
{
    Request made = request(Operation::getInstance);
    made.path = path("Test_Faulty");
    key(*made.path, "Name", "other");
    EXPECT_EQ(error(run(made)), "1 (none)") << "a path is not accepted in the place of an instance";
    key(*made.path, "Name", "nothing");
    EXPECT_EQ(error(run(made)), "6 The provider of Test_Faulty returned no instance.");
    for (const Operation operation :
         {Operation::createInstance, Operation::modifyInstance, Operation::deleteInstance}) {
        made.operation = operation;
        made.instance = host::makeInstance(call_.arena, *made.path);
        EXPECT_EQ(error(run(made)), "7 The provider does not implement the operation.");
    }
    EXPECT_EQ(error(enumerate("Test_Simple")), "7 The provider does not implement the operation.");
    made.operation = Operation::invokeMethod;
    made.methodName = "Any";
    made.arguments = host::makeArgs(call_.arena);
    EXPECT_EQ(error(run(made)), "7 The provider does not implement the operation.");
}

TEST_F(Dispatch, AHungryProviderIsStopped)
{
    Request made = request(Operation::getInstance);
    made.path = path("Test_Faulty");
    key(*made.path, "Name", "hungry");
    EXPECT_EQ(run(made).code, CMPI_RC_ERR_SERVER_LIMITS_EXCEEDED);
}

TEST_F(Dispatch, InstancesAreModified)
{
    Request made = request(Operation::modifyInstance);
    made.path = thing(2);
    made.instance = host::makeInstance(call_.arena, *made.path);
    host::setProperty(*made.instance, made.instance->klass->placeOf("Label"),
                      host::stringData(host::makeString(call_.arena, "renamed")));
    EXPECT_TRUE(run(made).ok());
    Request get = request(Operation::getProperty);
    get.path = thing(2);
    get.propertyName = "label";
    EXPECT_EQ(host::behind<host::String>(run(get).returnValue.value.string)->view(), "renamed");
    const char *list[] = {"Level", nullptr};
    made.propertyList = list;
    EXPECT_EQ(error(run(made)), "7 only the label and the tags can be changed");
}

TEST_F(Dispatch, SinglePropertiesAreReadAndSet)
{
    Request set = request(Operation::setProperty);
    set.path = thing(4);
    set.propertyName = "Label";
    set.propertyValue = host::stringData(host::makeString(call_.arena, "single"));
    EXPECT_TRUE(run(set).ok());
    Request get = request(Operation::getProperty);
    get.path = thing(4);
    get.propertyName = "Label";
    const Answer answer = run(get);
    ASSERT_TRUE(answer.hasReturnValue);
    EXPECT_EQ(host::behind<host::String>(answer.returnValue.value.string)->view(), "single");
    get.propertyName = "Nope";
    EXPECT_EQ(error(run(get)), "12 The class Test_Thing has no property Nope.");
    set.propertyName = "Nope";
    EXPECT_EQ(error(run(set)), "12 The class Test_Thing has no property Nope.");
    set.propertyName = "Level";
    EXPECT_EQ(error(run(set)), "13 The property Level of Test_Thing has the type uint16.");
    set.propertyName = "Codes";
    EXPECT_EQ(error(run(set)), "13 The property Codes of Test_Thing has the type uint16[].");
    get.propertyName = "EnabledState";
    const Answer byDefault = run(get);
    ASSERT_TRUE(byDefault.hasReturnValue);
    EXPECT_EQ(byDefault.returnValue.value.uint16, 5) << "the class has this default";
    get.propertyName = "Caption";
    const Answer null = run(get);
    EXPECT_TRUE(null.ok());
    EXPECT_FALSE(null.hasReturnValue);
}

TEST_F(Dispatch, InstancesAreCreated)
{
    Request made = request(Operation::createInstance);
    made.path = thing(12);
    made.instance = host::makeInstance(call_.arena, *made.path);
    const Answer answer = run(made);
    ASSERT_EQ(answer.paths.size(), 1u) << error(answer);
    made.path = thing(3);
    made.instance = host::makeInstance(call_.arena, *made.path);
    EXPECT_EQ(error(run(made)), "11 the thing is there already");
}

TEST_F(Dispatch, TheComputerSystemIsThere)
{
    const Answer all = enumerate("Linux_ComputerSystem");
    ASSERT_EQ(all.instances.size(), 1u);
    const host::Path &found = *all.instances[0]->path;
    const host::NamedValue *name = host::findValue(*found.keys, "Name");
    char hostName[256] = {};
    gethostname(hostName, sizeof hostName - 1);
    EXPECT_EQ(host::behind<host::String>(name->data.value.string)->view(), hostName);
    Request made = request(Operation::getInstance);
    made.path = host::copyObject(call_.arena, found);
    EXPECT_TRUE(run(made).ok());
    key(*made.path, "Name", "another");
    EXPECT_EQ(error(run(made)), "6 This host is another computer system.");
    made.operation = Operation::deleteInstance;
    EXPECT_EQ(error(run(made)), "7 The computer system cannot be changed.");
}

// ------------------------------------------------------------------------------------------------
// associations

TEST_F(Dispatch, AllAssociationsOfAnObjectAreTraversed)
{
    Request made = request(Operation::associatorNames);
    made.path = thing(3);
    const Answer answer = run(made);
    ASSERT_TRUE(answer.ok()) << error(answer);
    EXPECT_EQ(answer.paths.size(), 3u) << "two neighbours, once each, and the computer system";
    EXPECT_EQ(answer.paths[2]->className->view(), "Linux_ComputerSystem");
    made.operation = Operation::associators;
    EXPECT_EQ(run(made).instances.size(), 3u);
    made.operation = Operation::referenceNames;
    EXPECT_EQ(run(made).paths.size(), 2u);
}

TEST_F(Dispatch, TheFirstErrorEndsATraversal)
{
    Request made = request(Operation::references);
    made.path = thing(3);
    const Answer answer = run(made);
    EXPECT_EQ(error(answer), "1 references are broken");
    EXPECT_TRUE(answer.instances.empty());
    made.filter.associationClass = "Test_ThingPair";
    EXPECT_EQ(run(made).instances.size(), 2u) << "the filter keeps the broken provider out";
}

TEST_F(Dispatch, FiltersLimitTheAssociations)
{
    Request made = request(Operation::associatorNames);
    made.path = thing(3);
    made.filter.associationClass = "test_thingpair";
    EXPECT_EQ(run(made).paths.size(), 2u);
    made.filter.role = "Antecedent";
    EXPECT_EQ(run(made).paths.size(), 1u) << "the role arrives at the provider";
    made.filter.role = "Nope";
    EXPECT_TRUE(run(made).ok());
    EXPECT_EQ(run(made).paths.size(), 0u);
    made.filter.role = nullptr;
    made.filter.associationClass = "Test_Dependency";
    EXPECT_EQ(run(made).paths.size(), 3u) << "subclasses of the filter are in its reach";
    made.filter.associationClass = "Test_Simple";
    EXPECT_TRUE(run(made).ok());
    EXPECT_EQ(run(made).paths.size(), 0u) << "no association is a Test_Simple";
    made.filter.associationClass = "Test_Nope";
    EXPECT_EQ(error(run(made)), "4 The class Test_Nope of the filter does not exist.");
    made.filter.associationClass = nullptr;
    made.filter.resultClass = "Test_Nope";
    EXPECT_EQ(error(run(made)), "4 The class Test_Nope of the filter does not exist.");
}

TEST_F(Dispatch, OnlyAssociationsThatCanHoldTheObjectAreAsked)
{
    const Answer systems = enumerate("Linux_ComputerSystem", true);
    Request made = request(Operation::references);
    made.path = systems.paths[0];
    EXPECT_EQ(error(run(made)), "1 references are broken") << "of the two only this one refers to systems";
    made.path = path("Test_Simple");
    key(*made.path, "Id", "1");
    const Answer answer = run(made);
    EXPECT_TRUE(answer.ok()) << error(answer);
    EXPECT_EQ(answer.instances.size(), 0u);
    made.path = path("Test_Thing");
    EXPECT_EQ(error(run(made)), "7 References of a class is not supported: the path has no keys.");
}

// ----------------------------------------------------------------------------------------------------
// up-calls

TEST_F(Dispatch, UpCallsGoTheSameWay)
{
    EXPECT_EQ(outText(relay("names"), "info"), "8");
    EXPECT_EQ(outText(relay("instances"), "info"), "8");
    EXPECT_EQ(outText(relay("system"), "info"), "Linux_ComputerSystem");
    EXPECT_EQ(outText(relay("associators"), "info"), "2");
    EXPECT_EQ(outText(relay("property"), "info"), "0x90/30");
    EXPECT_EQ(outText(relay("missing"), "info"), "6 no such special thing");
    EXPECT_EQ(outText(relay("modify"), "info"), "");
    Request get = request(Operation::getProperty);
    get.path = thing(3);
    get.propertyName = "Label";
    EXPECT_EQ(host::behind<host::String>(run(get).returnValue.value.string)->view(), "relayed");
}

TEST_F(Dispatch, TheContextTellsWhoAsksAndHow)
{
    EXPECT_EQ(outText(relay("context"), "info"), "operator root/cimv2 0xa0 2");
}

TEST_F(Dispatch, ALoopOfUpCallsEnds)
{
    EXPECT_EQ(outText(relay("loop"), "info"),
              "1 Up-calls of providers are nested more than 16 deep; this is probably a loop.");
    EXPECT_EQ(outText(relay("names"), "info"), "8") << "and leaves nothing behind";
}

TEST_F(Dispatch, AttachedThreadsMakeUpCalls)
{
    EXPECT_EQ(outText(relay("thread"), "info"), "thing4");
}

// ----------------------------------------------------------------------------------------------------
// classes

TEST_F(Dispatch, ClassesAreRead)
{
    Request made = request(Operation::getClass);
    made.className = "test_thing";
    ASSERT_EQ(run(made).classes.size(), 1u);
    EXPECT_EQ(run(made).classes[0]->name, "Test_Thing");
    made.className = "Test_Nope";
    EXPECT_EQ(error(run(made)), "6 The class Test_Nope does not exist.");
    made.operation = Operation::enumerateClassNames;
    made.className = "";
    made.deepInheritance = false;
    EXPECT_EQ(run(made).classes.size(), 5u);
    made.deepInheritance = true;
    EXPECT_EQ(run(made).classes.size(), 12u);
    made.className = "Test_Device";
    EXPECT_EQ(run(made).classes.size(), 2u);
    made.deepInheritance = false;
    EXPECT_EQ(run(made).classes.size(), 1u);
    made.className = "Test_Nope";
    EXPECT_EQ(error(run(made)), "5 The class Test_Nope does not exist.");
}

TEST_F(Dispatch, QualifiersAreRead)
{
    Request made = request(Operation::getQualifier);
    made.qualifierName = "KEY";
    ASSERT_EQ(run(made).qualifiers.size(), 1u);
    EXPECT_EQ(run(made).qualifiers[0]->name, "Key");
    made.qualifierName = "Nope";
    EXPECT_EQ(error(run(made)), "6 The qualifier Nope does not exist.");
    made.operation = Operation::enumerateQualifiers;
    EXPECT_EQ(run(made).qualifiers.size(), 10u);
}

TEST_F(Dispatch, ARequestDoesNotWaitWithoutEnd)
{
    using namespace std::chrono_literals;
    void *provider = dlopen(TEST_PROVIDER_FILE, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(provider, nullptr) << dlerror();
    const auto isNapping = reinterpret_cast<bool (*)()>(dlsym(provider, "isNapping"));
    const auto wakeNapper = reinterpret_cast<void (*)()>(dlsym(provider, "wakeNapper"));
    ASSERT_TRUE(isNapping != nullptr && wakeNapper != nullptr);
    const host::Path *sleeper = thing(1);
    std::thread other([this, sleeper] {
        test::TestCall call;
        Request made = request(Operation::invokeMethod);
        made.path = host::copyObject(call.arena, *sleeper);
        made.methodName = "Nap";
        made.arguments = host::makeArgs(call.arena);
        CMPIData ms = {};
        ms.type = CMPI_uint32;
        ms.value.uint32 = UINT32_MAX; // until it is woken
        host::setValue(*made.arguments->values, "ms", ms);
        Answer answer(call.arena);
        manager_->dispatcher().execute(call.call(), made, answer);
        EXPECT_TRUE(answer.ok());
    });
    while (!isNapping()) {
        std::this_thread::yield();
    }
    manager_->dispatcher().setPatience(20ms);
    EXPECT_EQ(error(enumerate("Test_SpecialThing")),
              "1 Another request has been keeping the providers busy for too long.");
    wakeNapper();
    other.join();
    EXPECT_TRUE(enumerate("Test_SpecialThing").ok());
    dlclose(provider);
}

} // namespace
