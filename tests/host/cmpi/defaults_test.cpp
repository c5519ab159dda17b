// SPDX-License-Identifier: Apache-2.0
// The defaults of the class definitions: in instances that a provider makes, and in no others.
#include "test_host.h"

#include "core/typing.h"

#include <cmpi/cmpimacs.h>

namespace
{

constexpr const char *classDefinitions = R"(
    Qualifier Key : boolean = false, Scope(property, reference), Flavor(DisableOverride);
    Qualifier Association : boolean = false, Scope(association), Flavor(DisableOverride);
    Qualifier Override : string, Scope(property, reference, method), Flavor(Restricted);
    class Test_Base {
        [Key] string Id;
        [Key] string Kind = "usual";
        uint16 State = 5;
        uint16 Wanted = 12;
        uint16 Origin = 0;
        uint16 Unset = NULL;
        uint16 Plain;
    };
    class Test_Derived : Test_Base {
        [Override ("Wanted")] uint16 Wanted;
        [Override ("Origin")] uint16 Origin = 4;
        [Override ("State")] uint16 State = NULL;
        string Text = "a \"b\"";
        boolean Flag = true;
        sint8 Low = -128;
        uint64 High = 18446744073709551615;
        real64 Real = 0.5;
        char16 Letter = 'x';
        datetime When = "20260305000000.000000+000";
        uint32 List[] = {1, 2, 3};
        string None[] = {};
    };
    [Association] class Test_Tie {
        [Key] Test_Base REF One;
        [Key] Test_Base REF Other;
        uint16 IsCurrent = 2;
    };
)";

cim::ClassRepository readClasses()
{
    cim::ClassRepository classes;
    for (const cim::MofMessage &message : cim::readMofText(classes, classDefinitions).messages) {
        ADD_FAILURE() << message.format();
    }
    return classes;
}

class Defaults : public testing::Test
{
  protected:
    Defaults() : classes_(readClasses()), nameSpaces_(classes_, "root/cimv2"), broker_(nameSpaces_) {}

    CMPIObjectPath *path(const char *className)
    {
        return CMNewObjectPath(&broker_.cmpi(), "root/cimv2", className, nullptr);
    }

    CMPIInstance *instance(const char *className)
    {
        return CMNewInstance(&broker_.cmpi(), path(className), nullptr);
    }

    /** The value as text; the state instead where it is not that of a value. */
    std::string value(const CMPIInstance *instance, const char *name)
    {
        const CMPIData data = CMGetProperty(instance, name, nullptr);
        if (host::isNull(data)) {
            return "null";
        }
        return std::string(host::valueText(call_.arena, data)->view());
    }

    test::TestCall call_;
    cim::ClassRepository classes_;
    cim::NameSpaces nameSpaces_;
    host::DispatchingBroker broker_;
};

TEST_F(Defaults, AreThereWhereTheProviderSetsNothing)
{
    const CMPIInstance *base = instance("Test_Base");
    EXPECT_EQ(value(base, "State"), "5");
    EXPECT_EQ(value(base, "Wanted"), "12");
    EXPECT_EQ(value(base, "Origin"), "0");
    EXPECT_EQ(value(base, "Unset"), "null");
    EXPECT_EQ(value(base, "Plain"), "null");
    EXPECT_EQ(CMGetProperty(base, "State", nullptr).type, CMPI_uint16);
    EXPECT_EQ(CMGetProperty(base, "State", nullptr).state, CMPI_goodValue);
}

TEST_F(Defaults, AreInheritedAndOverridden)
{
    const CMPIInstance *derived = instance("Test_Derived");
    EXPECT_EQ(value(derived, "Wanted"), "12") << "an override without a default keeps the inherited one";
    EXPECT_EQ(value(derived, "Origin"), "4");
    EXPECT_EQ(value(derived, "State"), "null") << "an override can take the default away";
}

TEST_F(Defaults, MayBeOfAnyType)
{
    const CMPIInstance *derived = instance("Test_Derived");
    EXPECT_EQ(value(derived, "Text"), "a \"b\"");
    EXPECT_EQ(value(derived, "Flag"), "TRUE");
    EXPECT_EQ(value(derived, "Low"), "-128");
    EXPECT_EQ(value(derived, "High"), "18446744073709551615");
    EXPECT_EQ(CMGetProperty(derived, "Real", nullptr).value.real64, 0.5);
    EXPECT_EQ(CMGetProperty(derived, "Letter", nullptr).value.char16, 'x');
    EXPECT_EQ(value(derived, "When"), "20260305000000.000000+000");
    const CMPIData list = CMGetProperty(derived, "List", nullptr);
    ASSERT_EQ(list.type, CMPI_uint32A);
    ASSERT_EQ(CMGetArrayCount(list.value.array, nullptr), 3u);
    EXPECT_EQ(CMGetArrayElementAt(list.value.array, 2, nullptr).value.uint32, 3u);
    const CMPIData none = CMGetProperty(derived, "None", nullptr);
    ASSERT_FALSE(host::isNull(none)) << "an empty array is a value";
    EXPECT_EQ(CMGetArrayCount(none.value.array, nullptr), 0u);
}

TEST_F(Defaults, GiveWayToWhatTheProviderSets)
{
    CMPIInstance *base = instance("Test_Base");
    const CMPIUint16 two = 2;
    EXPECT_EQ(CMSetProperty(base, "State", reinterpret_cast<const CMPIValue *>(&two), CMPI_uint16).rc,
              CMPI_RC_OK);
    EXPECT_EQ(CMSetProperty(base, "Wanted", nullptr, CMPI_uint16).rc, CMPI_RC_OK);
    EXPECT_EQ(CMSetProperty(base, "Origin", nullptr, CMPI_null).rc, CMPI_RC_OK);
    EXPECT_EQ(value(base, "State"), "2");
    EXPECT_EQ(value(base, "Wanted"), "null") << "a null that the provider sets is its answer";
    EXPECT_EQ(value(base, "Origin"), "null");
    CMPIInstance *clone = CMClone(base, nullptr);
    EXPECT_EQ(value(clone, "Wanted"), "null") << "a copy is not given the default again";
    CMRelease(clone);
}

TEST_F(Defaults, OfKeysGiveWayToTheKeysOfThePath)
{
    CMPIObjectPath *given = path("Test_Base");
    CMAddKey(given, "Kind", reinterpret_cast<const CMPIValue *>("rare"), CMPI_chars);
    const CMPIInstance *made = CMNewInstance(&broker_.cmpi(), given, nullptr);
    EXPECT_EQ(value(made, "Kind"), "rare");
    EXPECT_EQ(value(made, "State"), "5");

    CMPIInstance *other = instance("Test_Base");
    EXPECT_EQ(value(other, "Kind"), "usual");
    const CMPIObjectPath *path = CMGetObjectPath(other, nullptr);
    EXPECT_EQ(CMGetKeyCount(path, nullptr), 1u);
    EXPECT_STREQ(CMGetCharPtr(CMGetKey(path, "Kind", nullptr).value.string), "usual")
        << "the path of an instance has the keys that the instance has";
    CMSetProperty(other, "Kind", reinterpret_cast<const CMPIValue *>("rare"), CMPI_chars);
    EXPECT_STREQ(CMGetCharPtr(CMGetKey(CMGetObjectPath(other, nullptr), "Kind", nullptr).value.string),
                 "rare");
}

TEST_F(Defaults, AreThereInAssociationsToo)
{
    const CMPIInstance *tie = instance("Test_Tie");
    EXPECT_EQ(value(tie, "IsCurrent"), "2");
    EXPECT_EQ(value(tie, "One"), "null");
}

TEST_F(Defaults, AreFilteredLikeOtherValues)
{
    CMPIInstance *base = instance("Test_Base");
    const char *wanted[] = {"wanted", nullptr};
    EXPECT_EQ(CMSetPropertyFilter(base, wanted, nullptr).rc, CMPI_RC_OK);
    EXPECT_EQ(value(base, "Wanted"), "12");
    EXPECT_EQ(value(base, "State"), "null");
    EXPECT_EQ(value(base, "Kind"), "usual") << "keys are always there";
}

TEST_F(Defaults, AreNotPutIntoInstancesOfClients)
{
    // compat: a property that a client leaves out of ModifyInstance is one that it does not want to change.
    host::ArenaList<host::ValueText> properties(call_.arena);
    host::ValueText given;
    given.name = "Wanted";
    given.item.text = "3";
    properties.append(given);
    host::Typing typing(call_.arena, nameSpaces_);
    const host::Path *path = host::makePath(call_.arena, nameSpaces_, "root/cimv2", "Test_Base");
    const host::Instance *instance = typing.instance(*path, properties);
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(value(&instance->cmpi, "Wanted"), "3");
    EXPECT_EQ(value(&instance->cmpi, "State"), "null");
    EXPECT_EQ(value(&instance->cmpi, "Kind"), "null");
}

} // namespace
