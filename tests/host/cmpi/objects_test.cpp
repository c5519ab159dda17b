// SPDX-License-Identifier: Apache-2.0
// The encapsulated types through their function tables.
#include "test_host.h"

#include <cmpi/cmpimacs.h>

#include <cstring>

namespace
{

class Objects : public testing::Test
{
  protected:
    Objects()
        : repository_(test::readTestClasses()), nameSpaces_(repository_, "root/cimv2"), broker_(nameSpaces_)
    {
    }

    const CMPIBroker *broker() const
    {
        return &broker_.cmpi();
    }

    CMPIObjectPath *path(const char *className = "Test_Thing")
    {
        return CMNewObjectPath(broker(), "root/cimv2", className, nullptr);
    }

    CMPIInstance *instance(const char *className = "Test_Thing")
    {
        return CMNewInstance(broker(), path(className), nullptr);
    }

    test::TestCall call_;
    cim::ClassRepository repository_;
    cim::NameSpaces nameSpaces_;
    host::DispatchingBroker broker_;
};

const CMPIValue *chars(const char *text)
{
    return reinterpret_cast<const CMPIValue *>(text);
}

template <typename T>
const CMPIValue *address(const T &value)
{
    return reinterpret_cast<const CMPIValue *>(&value);
}

std::string text(const CMPIString *string)
{
    return CMGetCharPtr(string);
}

std::string text(const CMPIData &data)
{
    return data.type == CMPI_string && data.state != CMPI_nullValue ? CMGetCharPtr(data.value.string)
                                                                    : "<none>";
}

// --------------------------------------------------------------------------------------------------- strings

TEST_F(Objects, StringsAreCopies)
{
    char buffer[] = "before";
    const CMPIString *string = CMNewString(broker(), buffer, nullptr);
    buffer[0] = 'X';
    EXPECT_EQ(text(string), "before");
}

TEST_F(Objects, ClonesOutliveTheCall)
{
    CMPIString *clone = nullptr;
    CMPIInstance *instanceClone = nullptr;
    {
        test::TestCall inner;
        clone = CMClone(CMNewString(broker(), "kept", nullptr), nullptr);
        CMPIInstance *made = instance();
        CMSetProperty(made, "Label", chars("kept too"), CMPI_chars);
        instanceClone = CMClone(made, nullptr);
    }
    EXPECT_EQ(text(clone), "kept");
    EXPECT_EQ(text(CMGetProperty(instanceClone, "Label", nullptr)), "kept too");
    CMPIString *again = CMClone(clone, nullptr);
    EXPECT_EQ(CMRelease(clone).rc, CMPI_RC_OK);
    EXPECT_EQ(text(again), "kept");
    EXPECT_EQ(CMRelease(again).rc, CMPI_RC_OK);
    EXPECT_EQ(CMRelease(instanceClone).rc, CMPI_RC_OK);
}

TEST_F(Objects, ReleasingAnObjectOfTheCallDoesNothing)
{
    CMPIString *string = CMNewString(broker(), "still here", nullptr);
    EXPECT_EQ(CMRelease(string).rc, CMPI_RC_OK);
    EXPECT_EQ(text(string), "still here");
}

TEST_F(Objects, FunctionsRefuseObjectsWithoutHandle)
{
    CMPIString string = {nullptr, &host::stringTable};
    CMPIStatus status = {};
    EXPECT_EQ(string.ft->getCharPtr(&string, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(string.ft->clone(&string, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(string.ft->release(&string).rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(host::pathTable.getKeyCount(nullptr, &status), 0u);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(host::pathTable.getNameSpace(nullptr, &status), nullptr);
    EXPECT_EQ(host::pathTable.addKey(nullptr, "k", nullptr, CMPI_string).rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(host::pathTable.getKey(nullptr, "k", &status).state, CMPI_badValue);
    EXPECT_EQ(host::instanceTable.getProperty(nullptr, "p", &status).state, CMPI_badValue);
    EXPECT_EQ(host::instanceTable.setProperty(nullptr, "p", nullptr, CMPI_string).rc,
              CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(host::instanceTable.getObjectPath(nullptr, &status), nullptr);
    EXPECT_EQ(host::arrayTable.getElementAt(nullptr, 0, &status).state, CMPI_badValue);
    EXPECT_EQ(host::arrayTable.setElementAt(nullptr, 0, nullptr, CMPI_string).rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(host::argsTable.getArg(nullptr, "a", &status).state, CMPI_badValue);
    EXPECT_EQ(host::enumerationTable.getNext(nullptr, &status).state, CMPI_badValue);
    EXPECT_EQ(host::enumerationTable.hasNext(nullptr, &status), 0);
    EXPECT_EQ(host::dateTimeTable.getBinaryFormat(nullptr, &status), 0u);
    EXPECT_EQ(host::contextTable.getEntry(nullptr, "e", &status).state, CMPI_badValue);
    EXPECT_EQ(host::resultTable.returnDone(nullptr).rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(host::selectExpressionTable.getString(nullptr, &status), nullptr);
    EXPECT_EQ(host::errorTable.getMessage(nullptr, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
}

// --------------------------------------------------------------------------------------------------- arrays

TEST_F(Objects, ArraysHoldElementsOfOneType)
{
    CMPIStatus status = {};
    CMPIArray *array = CMNewArray(broker(), 2, CMPI_uint16, &status);
    EXPECT_EQ(CMGetArrayCount(array, nullptr), 2u);
    EXPECT_EQ(CMGetArrayType(array, nullptr), CMPI_uint16);
    EXPECT_EQ(CMGetArrayElementAt(array, 0, nullptr).state, CMPI_nullValue) << "elements begin as null";
    const CMPIUint16 number = 65535;
    EXPECT_EQ(CMSetArrayElementAt(array, 1, address(number), CMPI_uint16).rc, CMPI_RC_OK);
    EXPECT_EQ(CMGetArrayElementAt(array, 1, nullptr).value.uint16, 65535);
    EXPECT_EQ(CMSetArrayElementAt(array, 1, address(number), CMPI_uint32).rc, CMPI_RC_ERR_TYPE_MISMATCH);
    EXPECT_EQ(CMSetArrayElementAt(array, 2, address(number), CMPI_uint16).rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
    EXPECT_EQ(CMGetArrayElementAt(array, 2, &status).state, CMPI_notFound);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
    EXPECT_EQ(CMSetArrayElementAt(array, 1, nullptr, CMPI_null).rc, CMPI_RC_OK);
    EXPECT_EQ(CMGetArrayElementAt(array, 1, nullptr).state, CMPI_nullValue);
}

TEST_F(Objects, ArraysOfCharsHoldStrings)
{
    CMPIArray *array = CMNewArray(broker(), 2, CMPI_chars, nullptr);
    EXPECT_EQ(CMGetArrayType(array, nullptr), CMPI_string);
    CMSetArrayElementAt(array, 0, chars("one"), CMPI_chars);
    const CMPIString *two = CMNewString(broker(), "two", nullptr);
    CMSetArrayElementAt(array, 1, address(two), CMPI_string);
    EXPECT_EQ(text(CMGetArrayElementAt(array, 0, nullptr)), "one");
    EXPECT_EQ(text(CMGetArrayElementAt(array, 1, nullptr)), "two");
    CMPIArray *empty = CMNewArray(broker(), 0, CMPI_ref, nullptr);
    EXPECT_EQ(CMGetArrayCount(empty, nullptr), 0u);
    CMPIArray *clone = CMClone(array, nullptr);
    CMSetArrayElementAt(array, 0, chars("changed"), CMPI_chars);
    EXPECT_EQ(text(CMGetArrayElementAt(clone, 0, nullptr)), "one");
    CMRelease(clone);
}

// ---------------------------------------------------------------------------------------------------- paths

TEST_F(Objects, PathsHoldTheirParts)
{
    CMPIObjectPath *made = path();
    EXPECT_EQ(text(CMGetNameSpace(made, nullptr)), "root/cimv2");
    EXPECT_EQ(text(CMGetClassName(made, nullptr)), "Test_Thing");
    EXPECT_EQ(text(CMGetHostname(made, nullptr)), "");
    EXPECT_EQ(CMSetNameSpace(made, "root/other").rc, CMPI_RC_OK);
    EXPECT_EQ(CMSetHostname(made, "somewhere").rc, CMPI_RC_OK);
    EXPECT_EQ(made->ft->setClassName(made, "Test_Simple").rc, CMPI_RC_OK);
    EXPECT_EQ(text(CMObjectPathToString(made, nullptr)), "//somewhere/root/other:Test_Simple");
    EXPECT_EQ(made->ft->setClassName(made, "").rc, CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(made->ft->setClassName(made, nullptr).rc, CMPI_RC_ERR_INVALID_PARAMETER);
    CMPIObjectPath *other = path();
    EXPECT_EQ(CMSetNameSpaceFromObjectPath(other, made).rc, CMPI_RC_OK);
    EXPECT_EQ(text(CMObjectPathToString(other, nullptr)), "root/other:Test_Thing");
    EXPECT_EQ(other->ft->setHostAndNameSpaceFromObjectPath(other, made).rc, CMPI_RC_OK);
    EXPECT_EQ(text(CMGetHostname(other, nullptr)), "somewhere");
    EXPECT_EQ(CMSetNameSpaceFromObjectPath(other, nullptr).rc, CMPI_RC_ERR_INVALID_HANDLE);
}

TEST_F(Objects, PathsHoldKeysOfAllTypes)
{
    CMPIStatus status = {};
    CMPIObjectPath *made = path();
    const CMPIUint64 number = 18446744073709551615u;
    const CMPIBoolean yes = 1;
    CMPIObjectPath *target = path("Test_Simple");
    EXPECT_EQ(CMAddKey(made, "Name", chars("first"), CMPI_chars).rc, CMPI_RC_OK);
    EXPECT_EQ(CMAddKey(made, "Number", address(number), CMPI_uint64).rc, CMPI_RC_OK);
    EXPECT_EQ(CMAddKey(made, "Flag", address(yes), CMPI_boolean).rc, CMPI_RC_OK);
    EXPECT_EQ(CMAddKey(made, "Target", address(target), CMPI_ref).rc, CMPI_RC_OK);
    EXPECT_EQ(CMAddKey(made, "NAME", chars("second"), CMPI_chars).rc, CMPI_RC_OK);
    EXPECT_EQ(CMGetKeyCount(made, nullptr), 4u) << "letter case makes no other key";
    const CMPIData name = CMGetKey(made, "name", &status);
    EXPECT_EQ(name.type, CMPI_string) << "chars are kept as strings";
    EXPECT_EQ(name.state, CMPI_keyValue);
    EXPECT_STREQ(CMGetCharPtr(name.value.string), "second");
    EXPECT_EQ(CMGetKey(made, "Number", nullptr).value.uint64, 18446744073709551615u);
    CMPIString *keyName = nullptr;
    EXPECT_EQ(CMGetKeyAt(made, 2, &keyName, nullptr).value.boolean, 1);
    EXPECT_EQ(text(keyName), "Flag");
    EXPECT_EQ(CMGetKeyAt(made, 4, &keyName, &status).state, CMPI_notFound);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
    EXPECT_EQ(CMGetKey(made, "None", &status).state, CMPI_notFound);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(CMGetKey(made, nullptr, &status).state, CMPI_notFound);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(CMAddKey(made, nullptr, chars("x"), CMPI_chars).rc, CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(CMAddKey(made, "Bad", address(number), CMPI_class).rc, CMPI_RC_ERR_INVALID_DATA_TYPE);
    // What is added is a copy.
    CMSetNameSpace(target, "changed");
    EXPECT_EQ(text(CMGetNameSpace(CMGetKey(made, "Target", nullptr).value.ref, nullptr)), "root/cimv2");
}

TEST_F(Objects, PathsKnowQualifiers)
{
    CMPIStatus status = {};
    CMPIObjectPath *made = path();
    EXPECT_EQ(text(made->ft->getClassQualifier(made, "description", &status)), "A thing.");
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    EXPECT_EQ(made->ft->getPropertyQualifier(made, "DeviceID", "Key", &status).value.boolean, 1);
    EXPECT_EQ(text(made->ft->getPropertyQualifier(made, "Level", "Units", &status)), "Percent");
    const CMPIData map = made->ft->getPropertyQualifier(made, "Codes", "ValueMap", &status);
    ASSERT_EQ(map.type, CMPI_stringA);
    EXPECT_EQ(text(CMGetArrayElementAt(map.value.array, 2, nullptr)), "2");
    EXPECT_EQ(made->ft->getMethodQualifier(made, "Hello", "Static", &status).value.boolean, 1);
    EXPECT_EQ(made->ft->getParameterQualifier(made, "Echo", "reply", "Out", &status).value.boolean, 1);
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    made->ft->getClassQualifier(made, "Nope", &status);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_FOUND);
    made->ft->getPropertyQualifier(made, "Nope", "Key", &status);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
    made->ft->getMethodQualifier(made, "Nope", "Static", &status);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_METHOD_NOT_FOUND);
    made->ft->getParameterQualifier(made, "Nope", "reply", "Out", &status);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_METHOD_NOT_FOUND);
    made->ft->getParameterQualifier(made, "Echo", "nope", "Out", &status);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_FOUND);
    made->ft->getClassQualifier(made, nullptr, &status);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_PARAMETER);
    CMPIObjectPath *unknown = path("Test_Nope");
    unknown->ft->getClassQualifier(unknown, "Key", &status);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_CLASS);
}

// ------------------------------------------------------------------------------------------------- instances

TEST_F(Objects, InstancesBeginWithTheDefaultsOfTheirClass)
{
    CMPIStatus status = {};
    const CMPIInstance *made = instance();
    EXPECT_EQ(CMGetPropertyCount(made, nullptr), 16u);
    const CMPIData level = CMGetProperty(made, "Level", &status);
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    EXPECT_EQ(level.type, CMPI_uint16);
    EXPECT_EQ(level.state, CMPI_nullValue);
    const CMPIData enabled = CMGetProperty(made, "EnabledState", &status);
    EXPECT_EQ(enabled.type, CMPI_uint16);
    EXPECT_EQ(enabled.state, CMPI_goodValue);
    EXPECT_EQ(enabled.value.uint16, 5);
    CMPIString *name = nullptr;
    CMGetPropertyAt(made, 0, &name, nullptr);
    EXPECT_EQ(text(name), "Caption");
    CMGetPropertyAt(made, 15, &name, nullptr);
    EXPECT_EQ(text(name), "Codes");
    EXPECT_EQ(CMGetPropertyAt(made, 16, &name, &status).state, CMPI_notFound);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
}

TEST_F(Objects, InstancesTakeWhatTheClassDeclares)
{
    CMPIStatus status = {};
    CMPIInstance *made = instance();
    const CMPIUint16 level = 77;
    const CMPIUint32 wide = 77;
    EXPECT_EQ(CMSetProperty(made, "level", address(level), CMPI_uint16).rc, CMPI_RC_OK);
    EXPECT_EQ(CMGetProperty(made, "LEVEL", nullptr).value.uint16, 77);
    EXPECT_EQ(CMSetProperty(made, "Level", address(wide), CMPI_uint32).rc, CMPI_RC_ERR_TYPE_MISMATCH);
    EXPECT_EQ(CMSetProperty(made, "Level", chars("77"), CMPI_chars).rc, CMPI_RC_ERR_TYPE_MISMATCH);
    EXPECT_EQ(CMSetProperty(made, "Nope", address(level), CMPI_uint16).rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
    EXPECT_EQ(CMSetProperty(made, nullptr, address(level), CMPI_uint16).rc, CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(CMGetProperty(made, "Nope", &status).state, CMPI_notFound);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
    CMGetProperty(made, nullptr, &status);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_PARAMETER);
    const CMPIString *string = CMNewString(broker(), "as string", nullptr);
    EXPECT_EQ(CMSetProperty(made, "Label", address(string), CMPI_string).rc, CMPI_RC_OK);
    EXPECT_EQ(text(CMGetProperty(made, "Label", nullptr)), "as string");
    EXPECT_EQ(CMSetProperty(made, "Label", chars("as chars"), CMPI_chars).rc, CMPI_RC_OK);
    EXPECT_EQ(text(CMGetProperty(made, "Label", nullptr)), "as chars");
    EXPECT_EQ(CMSetProperty(made, "Label", nullptr, CMPI_chars).rc, CMPI_RC_OK);
    EXPECT_EQ(CMGetProperty(made, "Label", nullptr).state, CMPI_nullValue);
    const CMPIString *null = nullptr;
    EXPECT_EQ(CMSetProperty(made, "Label", address(null), CMPI_string).rc, CMPI_RC_OK);
    EXPECT_EQ(CMGetProperty(made, "Label", nullptr).state, CMPI_nullValue);
    EXPECT_EQ(CMSetProperty(made, "Level", nullptr, CMPI_null).rc, CMPI_RC_OK);
    EXPECT_EQ(CMGetProperty(made, "Level", nullptr).state, CMPI_nullValue);
    EXPECT_EQ(made->ft->setPropertyWithOrigin(made, "Level", address(level), CMPI_uint16, "Test_Thing").rc,
              CMPI_RC_OK);
    EXPECT_EQ(CMGetProperty(made, "Level", nullptr).value.uint16, 77);
}

TEST_F(Objects, InstancesCopyArrays)
{
    CMPIInstance *made = instance();
    CMPIArray *tags = CMNewArray(broker(), 1, CMPI_chars, nullptr);
    CMSetArrayElementAt(tags, 0, chars("first"), CMPI_chars);
    EXPECT_EQ(CMSetProperty(made, "Tags", address(tags), CMPI_charsA).rc, CMPI_RC_OK);
    CMSetArrayElementAt(tags, 0, chars("changed"), CMPI_chars);
    EXPECT_EQ(text(CMGetArrayElementAt(CMGetProperty(made, "Tags", nullptr).value.array, 0, nullptr)),
              "first");
    const CMPIArray *numbers = CMNewArray(broker(), 1, CMPI_uint16, nullptr);
    EXPECT_EQ(CMSetProperty(made, "Tags", address(numbers), CMPI_stringA).rc, CMPI_RC_ERR_TYPE_MISMATCH)
        << "the array itself holds numbers";
    EXPECT_EQ(CMSetProperty(made, "Codes", address(numbers), CMPI_uint16A).rc, CMPI_RC_OK);
}

TEST_F(Objects, KeysAreInThePathAndInTheInstance)
{
    CMPIObjectPath *withKey = path();
    CMAddKey(withKey, "DeviceID", chars("from the path"), CMPI_chars);
    CMPIInstance *made = CMNewInstance(broker(), withKey, nullptr);
    EXPECT_EQ(CMGetProperty(made, "DeviceID", nullptr).state, CMPI_keyValue);
    EXPECT_STREQ(CMGetCharPtr(CMGetProperty(made, "DeviceID", nullptr).value.string), "from the path");
    CMSetProperty(made, "DeviceID", chars("set"), CMPI_chars);
    CMSetProperty(made, "SystemName", chars("desk"), CMPI_chars);
    CMPIObjectPath *found = CMGetObjectPath(made, nullptr);
    EXPECT_EQ(text(CMObjectPathToString(found, nullptr)),
              "root/cimv2:Test_Thing.DeviceID=\"set\",SystemName=\"desk\"");
    CMAddKey(found, "DeviceID", chars("elsewhere"), CMPI_chars);
    EXPECT_STREQ(CMGetCharPtr(CMGetProperty(made, "DeviceID", nullptr).value.string), "set")
        << "the path is a copy";
    EXPECT_EQ(CMSetObjectPath(made, found).rc, CMPI_RC_OK);
    EXPECT_STREQ(CMGetCharPtr(CMGetProperty(made, "DeviceID", nullptr).value.string), "elsewhere");
    EXPECT_EQ(CMSetObjectPath(made, path("Test_Simple")).rc, CMPI_RC_ERR_INVALID_CLASS);
    EXPECT_EQ(CMSetObjectPath(made, nullptr).rc, CMPI_RC_ERR_INVALID_HANDLE);
}

TEST_F(Objects, AKeyOfAnotherTypeStaysOutOfTheInstance)
{
    CMPIObjectPath *strange = path("Test_Simple");
    CMAddKey(strange, "Id", chars("5"), CMPI_chars);
    const CMPIInstance *made = CMNewInstance(broker(), strange, nullptr);
    EXPECT_EQ(CMGetProperty(made, "Id", nullptr).state, CMPI_nullValue);
}

TEST_F(Objects, FiltersKeepPropertiesFromBeingSet)
{
    CMPIInstance *made = instance();
    const char *wanted[] = {"label", nullptr};
    const char *keys[] = {"Level", nullptr};
    EXPECT_EQ(CMSetPropertyFilter(made, wanted, keys).rc, CMPI_RC_OK);
    const CMPIUint16 level = 1;
    const CMPISint32 offset = 1;
    EXPECT_EQ(CMSetProperty(made, "Label", chars("set"), CMPI_chars).rc, CMPI_RC_OK);
    EXPECT_EQ(CMSetProperty(made, "Level", address(level), CMPI_uint16).rc, CMPI_RC_OK);
    EXPECT_EQ(CMSetProperty(made, "Offset32", address(offset), CMPI_sint32).rc, CMPI_RC_OK)
        << "a filtered property is ignored, not refused";
    EXPECT_EQ(CMSetProperty(made, "DeviceID", chars("id"), CMPI_chars).rc, CMPI_RC_OK);
    EXPECT_EQ(text(CMGetProperty(made, "Label", nullptr)), "set");
    EXPECT_EQ(CMGetProperty(made, "Level", nullptr).state, CMPI_goodValue);
    EXPECT_EQ(CMGetProperty(made, "Offset32", nullptr).state, CMPI_nullValue);
    EXPECT_EQ(CMGetProperty(made, "DeviceID", nullptr).state, CMPI_keyValue) << "keys are always set";
    EXPECT_EQ(CMSetPropertyFilter(made, nullptr, nullptr).rc, CMPI_RC_OK);
    CMSetProperty(made, "Offset32", address(offset), CMPI_sint32);
    EXPECT_EQ(CMGetProperty(made, "Offset32", nullptr).state, CMPI_goodValue);
    EXPECT_EQ(CMSetPropertyFilter(made, wanted, nullptr).rc, CMPI_RC_OK);
    CMPIInstance *clone = CMClone(made, nullptr);
    const CMPIUint16 other = 2;
    CMSetProperty(clone, "Level", address(other), CMPI_uint16);
    EXPECT_EQ(CMGetProperty(clone, "Level", nullptr).value.uint16, 1) << "a clone keeps the filter";
    CMRelease(clone);
}

TEST_F(Objects, AllTypesComeBackAsTheyWereSet)
{
    CMPIInstance *made = instance("Test_Simple");
    const CMPIBoolean flag = 1;
    const CMPISint64 lowest = -9223372036854775807LL - 1;
    const CMPIReal64 real = 0.1;
    const CMPIChar16 letter = 0x20ac;
    CMPIDateTime *when = CMNewDateTimeFromBinary(broker(), 0, 0, nullptr);
    CMPIArray *bytes = CMNewArray(broker(), 1, CMPI_uint8, nullptr);
    EXPECT_EQ(CMSetProperty(made, "Flag", address(flag), CMPI_boolean).rc, CMPI_RC_OK);
    EXPECT_EQ(CMSetProperty(made, "Signed", address(lowest), CMPI_sint64).rc, CMPI_RC_OK);
    EXPECT_EQ(CMSetProperty(made, "Real", address(real), CMPI_real64).rc, CMPI_RC_OK);
    EXPECT_EQ(CMSetProperty(made, "Letter", address(letter), CMPI_char16).rc, CMPI_RC_OK);
    EXPECT_EQ(CMSetProperty(made, "When", address(when), CMPI_dateTime).rc, CMPI_RC_OK);
    EXPECT_EQ(CMSetProperty(made, "Bytes", address(bytes), CMPI_uint8A).rc, CMPI_RC_OK);
    EXPECT_EQ(CMGetProperty(made, "Flag", nullptr).value.boolean, 1);
    EXPECT_EQ(CMGetProperty(made, "Signed", nullptr).value.sint64, lowest);
    EXPECT_EQ(CMGetProperty(made, "Real", nullptr).value.real64, 0.1);
    EXPECT_EQ(CMGetProperty(made, "Letter", nullptr).value.char16, 0x20ac);
    EXPECT_EQ(text(CMGetStringFormat(CMGetProperty(made, "When", nullptr).value.dateTime, nullptr)),
              "19700101000000.000000+000");
    EXPECT_EQ(CMGetArrayType(CMGetProperty(made, "Bytes", nullptr).value.array, nullptr), CMPI_uint8);
}

// ---------------------------------------------------------------- arguments, enumerations, contexts, results

TEST_F(Objects, ArgumentsKeepTheirOrder)
{
    CMPIStatus status = {};
    CMPIArgs *args = CMNewArgs(broker(), nullptr);
    const CMPIUint8 number = 255;
    CMPIObjectPath *reference = path();
    EXPECT_EQ(CMAddArg(args, "number", address(number), CMPI_uint8).rc, CMPI_RC_OK);
    EXPECT_EQ(CMAddArg(args, "text", chars("text"), CMPI_chars).rc, CMPI_RC_OK);
    EXPECT_EQ(CMAddArg(args, "reference", address(reference), CMPI_ref).rc, CMPI_RC_OK);
    EXPECT_EQ(CMAddArg(args, "null", nullptr, CMPI_string).rc, CMPI_RC_OK);
    EXPECT_EQ(CMAddArg(args, "", chars("x"), CMPI_chars).rc, CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(CMGetArgCount(args, nullptr), 4u);
    EXPECT_EQ(CMGetArg(args, "NUMBER", nullptr).value.uint8, 255);
    EXPECT_EQ(CMGetArg(args, "null", nullptr).state, CMPI_nullValue);
    CMPIString *name = nullptr;
    EXPECT_EQ(text(CMGetArgAt(args, 1, &name, nullptr)), "text");
    EXPECT_EQ(text(name), "text");
    EXPECT_EQ(CMGetArg(args, "none", &status).state, CMPI_notFound);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(CMGetArgAt(args, 4, nullptr, &status).state, CMPI_notFound);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
    CMPIArgs *clone = CMClone(args, nullptr);
    EXPECT_EQ(CMGetArgCount(clone, nullptr), 4u);
    CMRelease(clone);
}

TEST_F(Objects, EnumerationsEnd)
{
    CMPIStatus status = {};
    host::Enumeration *made = host::makeEnumeration(call_.arena, CMPI_ref);
    for (const char *name : {"Test_Thing", "Test_Simple"}) {
        CMPIData data = {};
        data.type = CMPI_ref;
        data.value.ref = path(name);
        made->elements->append(data);
    }
    CMPIEnumeration *enumeration = &made->cmpi;
    CMPIArray *array = CMToArray(enumeration, nullptr);
    EXPECT_EQ(CMGetArrayCount(array, nullptr), 2u);
    EXPECT_EQ(CMGetArrayType(array, nullptr), CMPI_ref);
    CMPIEnumeration *clone = CMClone(enumeration, nullptr);
    EXPECT_EQ(CMHasNext(enumeration, nullptr), 1);
    for (const char *name : {"Test_Thing", "Test_Simple"}) {
        const CMPIData next = CMGetNext(enumeration, &status);
        EXPECT_EQ(text(CMGetClassName(next.value.ref, nullptr)), name);
    }
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    EXPECT_EQ(CMHasNext(enumeration, nullptr), 0);
    EXPECT_EQ(CMGetNext(enumeration, &status).state, CMPI_notFound);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
    EXPECT_EQ(CMHasNext(clone, nullptr), 1);
    CMRelease(clone);
}

TEST_F(Objects, ContextsHoldEntries)
{
    CMPIStatus status = {};
    CMPIContext *context = &host::makeContext(call_.arena)->cmpi;
    EXPECT_EQ(CMAddContextEntry(context, CMPIPrincipal, chars("operator"), CMPI_chars).rc, CMPI_RC_OK);
    EXPECT_EQ(CMGetContextEntryCount(context, nullptr), 1u);
    EXPECT_EQ(text(CMGetContextEntry(context, CMPIPrincipal, nullptr)), "operator");
    CMPIString *name = nullptr;
    CMGetContextEntryAt(context, 0, &name, nullptr);
    EXPECT_EQ(text(name), "CMPIPrincipal");
    EXPECT_EQ(CMGetContextEntry(context, CMPIRole, &status).state, CMPI_notFound);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NO_SUCH_PROPERTY);
    CMPIContext *clone = CMClone(context, nullptr);
    EXPECT_EQ(text(CMGetContextEntry(clone, CMPIPrincipal, nullptr)), "operator");
    CMRelease(clone);
}

TEST_F(Objects, SelectExpressionsKeepTheirText)
{
    CMPIStatus status = {};
    CMPIArray *projection = reinterpret_cast<CMPIArray *>(&status);
    CMPISelectExp *expression = CMNewSelectExp(broker(), "SELECT * FROM X", "WQL", &projection, &status);
    ASSERT_NE(expression, nullptr);
    EXPECT_EQ(projection, nullptr);
    EXPECT_EQ(text(expression->ft->getString(expression, nullptr)), "SELECT * FROM X");
    EXPECT_EQ(expression->ft->evaluate(expression, instance(), &status), 0);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(expression->ft->getDOC(expression, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(expression->ft->getCOD(expression, &status), nullptr);
    EXPECT_EQ(expression->ft->evaluateUsingAccessor(expression, nullptr, nullptr, &status), 0);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_SUPPORTED);
    CMPISelectExp *clone = CMClone(expression, nullptr);
    EXPECT_EQ(text(clone->ft->getString(clone, nullptr)), "SELECT * FROM X");
    CMRelease(clone);
    EXPECT_EQ(CMNewSelectExp(broker(), nullptr, "WQL", nullptr, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_PARAMETER);
}

TEST_F(Objects, ErrorsHoldTheirParts)
{
    CMPIStatus status = {};
    CMPIError *error = CMNewCMPIError(broker(), "owner", "id", "message", ErrorSevHigh, Congestion,
                                      CMPI_RC_ERR_ACCESS_DENIED, &status);
    ASSERT_NE(error, nullptr);
    const CMPIErrorFT &ft = *error->ft;
    EXPECT_EQ(text(ft.getOwningEntity(error, nullptr)), "owner");
    EXPECT_EQ(text(ft.getMessageID(error, nullptr)), "id");
    EXPECT_EQ(text(ft.getMessage(error, nullptr)), "message");
    EXPECT_EQ(ft.getPerceivedSeverity(error, nullptr), ErrorSevHigh);
    EXPECT_EQ(ft.getProbableCause(error, nullptr), Congestion);
    EXPECT_EQ(ft.getCIMStatusCode(error, nullptr), CMPI_RC_ERR_ACCESS_DENIED);
    EXPECT_EQ(ft.getErrorType(error, nullptr), UnknownErrorType);
    EXPECT_EQ(ft.getOtherErrorType(error, &status), nullptr);
    EXPECT_EQ(ft.getRecommendedActions(error, &status), nullptr);
    EXPECT_EQ(ft.setErrorType(error, OtherErrorType).rc, CMPI_RC_OK);
    EXPECT_EQ(ft.setOtherErrorType(error, "other").rc, CMPI_RC_OK);
    EXPECT_EQ(ft.setProbableCauseDescription(error, "cause").rc, CMPI_RC_OK);
    EXPECT_EQ(ft.setErrorSource(error, "source").rc, CMPI_RC_OK);
    EXPECT_EQ(ft.setErrorSourceFormat(error, CMPIErrSrcOther).rc, CMPI_RC_OK);
    EXPECT_EQ(ft.setOtherErrorSourceFormat(error, "format").rc, CMPI_RC_OK);
    EXPECT_EQ(ft.setCIMStatusCodeDescription(error, "denied").rc, CMPI_RC_OK);
    CMPIArray *actions = CMNewArray(broker(), 1, CMPI_string, nullptr);
    CMSetArrayElementAt(actions, 0, chars("do this"), CMPI_chars);
    EXPECT_EQ(ft.setRecommendedActions(error, actions).rc, CMPI_RC_OK);
    EXPECT_EQ(ft.setMessageArguments(error, actions).rc, CMPI_RC_OK);
    EXPECT_EQ(ft.setMessageArguments(error, CMNewArray(broker(), 1, CMPI_uint8, nullptr)).rc,
              CMPI_RC_ERR_TYPE_MISMATCH);
    CMPIError *clone = CMClone(error, nullptr);
    EXPECT_EQ(ft.getErrorType(clone, nullptr), OtherErrorType);
    EXPECT_EQ(text(ft.getOtherErrorType(clone, nullptr)), "other");
    EXPECT_EQ(text(ft.getProbableCauseDescription(clone, nullptr)), "cause");
    EXPECT_EQ(text(ft.getErrorSource(clone, nullptr)), "source");
    EXPECT_EQ(ft.getErrorSourceFormat(clone, nullptr), CMPIErrSrcOther);
    EXPECT_EQ(text(ft.getOtherErrorSourceFormat(clone, nullptr)), "format");
    EXPECT_EQ(text(ft.getCIMStatusCodeDescription(clone, nullptr)), "denied");
    EXPECT_EQ(text(CMGetArrayElementAt(ft.getRecommendedActions(clone, nullptr), 0, nullptr)), "do this");
    EXPECT_EQ(CMGetArrayCount(ft.getMessageArguments(clone, nullptr), nullptr), 1u);
    CMRelease(clone);
}

/** Counts what it is given. */
class Sink final : public host::ResultSink
{
  public:
    int data = 0;
    int instances = 0;
    int paths = 0;
    int errors = 0;
    int ends = 0;

    CMPIrc takeData(const CMPIValue *, CMPIType) override
    {
        ++data;
        return CMPI_RC_OK;
    }

    CMPIrc takeInstance(const host::Instance &) override
    {
        ++instances;
        return CMPI_RC_OK;
    }

    CMPIrc takePath(const host::Path &) override
    {
        ++paths;
        return CMPI_RC_ERR_FAILED;
    }

    void takeError(const host::Error &) override
    {
        ++errors;
    }

    void done() override
    {
        ++ends;
    }
};

TEST_F(Objects, ResultsGoToTheirSink)
{
    Sink sink;
    CMPIStatus status = {};
    CMPIResult *result = &host::makeResult(call_.arena, sink)->cmpi;
    const CMPIUint32 number = 1;
    EXPECT_EQ(CMReturnData(result, address(number), CMPI_uint32).rc, CMPI_RC_OK);
    EXPECT_EQ(CMReturnInstance(result, instance()).rc, CMPI_RC_OK);
    EXPECT_EQ(CMReturnObjectPath(result, path()).rc, CMPI_RC_ERR_FAILED) << "the sink's answer comes back";
    EXPECT_EQ(CMReturnError(result, CMNewCMPIError(broker(), "o", "i", "m", ErrorSevLow, Timeout,
                                                   CMPI_RC_ERR_FAILED, nullptr))
                  .rc,
              CMPI_RC_OK);
    EXPECT_EQ(CMReturnDone(result).rc, CMPI_RC_OK);
    EXPECT_EQ(sink.data + sink.instances + sink.paths + sink.errors + sink.ends, 5);
    EXPECT_EQ(CMReturnInstance(result, nullptr).rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(CMReturnObjectPath(result, nullptr).rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(CMReturnError(result, nullptr).rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(CMClone(result, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(CMRelease(result).rc, CMPI_RC_OK);
}

// ----------------------------------------------------------------------------------------------------- dates

TEST_F(Objects, DatesFromBinary)
{
    const auto format = [&](CMPISint64 microseconds) {
        CMPIDateTime *made =
            CMNewDateTimeFromBinary(broker(), static_cast<CMPIUint64>(microseconds), 0, nullptr);
        return made != nullptr ? text(CMGetStringFormat(made, nullptr)) : "null";
    };
    EXPECT_EQ(format(0), "19700101000000.000000+000");
    EXPECT_EQ(format(1700000000000000), "20231114221320.000000+000");
    EXPECT_EQ(format(-1), "19691231235959.999999+000");
    EXPECT_EQ(format(-2147483648000000), "19011213204552.000000+000");
    EXPECT_EQ(format(2147483647000000), "20380119031407.000000+000");
    EXPECT_EQ(format(951782400000000), "20000229000000.000000+000");
    EXPECT_EQ(format(253402300799999999), "99991231235959.999999+000");
    EXPECT_EQ(format(253402300800000000), "null");
    EXPECT_EQ(format(-62167219200000000), "00000101000000.000000+000");
    EXPECT_EQ(format(-62167219200000001), "null");
    EXPECT_EQ(format(9223372036854775807), "null");
    EXPECT_EQ(format(-9223372036854775807 - 1), "null");
    CMPIStatus status = {};
    CMNewDateTimeFromBinary(broker(), 9223372036854775807u, 0, &status);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_PARAMETER);
}

TEST_F(Objects, IntervalsFromBinary)
{
    CMPIStatus status = {};
    CMPIDateTime *made = CMNewDateTimeFromBinary(broker(), 93784000005u, 1, &status);
    EXPECT_EQ(text(CMGetStringFormat(made, nullptr)), "00000001020304.000005:000");
    EXPECT_EQ(CMIsInterval(made, nullptr), 1);
    EXPECT_EQ(CMGetBinaryFormat(made, nullptr), 93784000005u);
    made = CMNewDateTimeFromBinary(broker(), 8639999999999999999u, 1, &status);
    EXPECT_EQ(text(CMGetStringFormat(made, nullptr)), "99999999235959.999999:000");
    EXPECT_EQ(CMNewDateTimeFromBinary(broker(), 8640000000000000000u, 1, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(CMNewDateTimeFromBinary(broker(), 18446744073709551615u, 1, &status), nullptr);
}

TEST_F(Objects, DatesFromText)
{
    CMPIStatus status = {};
    const auto binary = [&](const char *given) {
        CMPIDateTime *made = CMNewDateTimeFromChars(broker(), given, &status);
        return made != nullptr ? static_cast<CMPISint64>(CMGetBinaryFormat(made, nullptr)) : -4711;
    };
    EXPECT_EQ(binary("19700101000000.000001+000"), 1);
    EXPECT_EQ(binary("19700101010000.000000+060"), 0) << "the offset is east of UTC";
    EXPECT_EQ(binary("19691231190000.000000-300"), 0);
    EXPECT_EQ(binary("00000001000000.000000:000"), 86400000000);
    EXPECT_EQ(binary("1970**********.******+000"), 0) << "digits may be left open";
    CMPIDateTime *kept = CMNewDateTimeFromChars(broker(), "20240229120000.5*****+120", &status);
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(text(CMGetStringFormat(kept, nullptr)), "20240229120000.5*****+120");
    CMPIDateTime *clone = CMClone(kept, nullptr);
    EXPECT_EQ(text(CMGetStringFormat(clone, nullptr)), "20240229120000.5*****+120");
    CMRelease(clone);
    for (const char *bad :
         {"", "19700101000000.000000", "19700101000000.000000+00x", "19700101000000,000000+000",
          "19701301000000.000000+000", "19700132000000.000000+000", "19700001000000.000000+000",
          "19700101240000.000000+000", "19700101006000.000000+000", "19700101000060.000000+000",
          "20230229000000.000000+000", "19700101000000.000000:000x", "0000000100000.000000:0000",
          "00000001000000.000000:001", "1970010100000a.000000+000", "19700101000000.*00000+000"}) {
        EXPECT_EQ(CMNewDateTimeFromChars(broker(), bad, &status), nullptr) << bad;
        EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_PARAMETER) << bad;
    }
    EXPECT_EQ(CMNewDateTimeFromChars(broker(), nullptr, &status), nullptr);
}

TEST_F(Objects, NowIsNow)
{
    const auto before = static_cast<CMPIUint64>(time(nullptr)) * 1000000;
    CMPIDateTime *now = CMNewDateTime(broker(), nullptr);
    EXPECT_GE(CMGetBinaryFormat(now, nullptr), before);
    EXPECT_LE(CMGetBinaryFormat(now, nullptr), (static_cast<CMPIUint64>(time(nullptr)) + 1) * 1000000);
    EXPECT_EQ(CMIsInterval(now, nullptr), 0);
}

// ----------------------------------------------------------------------------------------------- comparisons

TEST_F(Objects, PathsAreCompared)
{
    const auto behind = [](CMPIObjectPath *cmpi) { return host::behind<host::Path>(cmpi); };
    const CMPIUint16 number = 5;
    CMPIObjectPath *left = path();
    CMAddKey(left, "Name", chars("a"), CMPI_chars);
    CMAddKey(left, "Number", address(number), CMPI_uint16);
    CMPIObjectPath *right = path("test_thing");
    CMAddKey(right, "NUMBER", address(number), CMPI_uint16);
    CMAddKey(right, "name", chars("a"), CMPI_chars);
    EXPECT_TRUE(host::samePath(*behind(left), *behind(right)));
    EXPECT_EQ(host::hashPath(*behind(left)), host::hashPath(*behind(right)));
    CMPIObjectPath *other = path();
    CMAddKey(other, "Name", chars("A"), CMPI_chars);
    CMAddKey(other, "Number", address(number), CMPI_uint16);
    EXPECT_FALSE(host::samePath(*behind(left), *behind(other))) << "values count as they are";
    CMPIObjectPath *fewer = path();
    CMAddKey(fewer, "Name", chars("a"), CMPI_chars);
    EXPECT_FALSE(host::samePath(*behind(left), *behind(fewer)));
    CMPIObjectPath *leftPair = path("Test_ThingPair");
    CMAddKey(leftPair, "Antecedent", address(left), CMPI_ref);
    CMPIObjectPath *rightPair = path("Test_ThingPair");
    CMAddKey(rightPair, "Antecedent", address(right), CMPI_ref);
    EXPECT_TRUE(host::samePath(*behind(leftPair), *behind(rightPair)));
    EXPECT_EQ(host::hashPath(*behind(leftPair)), host::hashPath(*behind(rightPair)));
}

TEST(Arena, GivesAlignedMemoryAndTakesItBack)
{
    host::Arena arena(64, 1000);
    for (std::size_t size = 0; size < 300; ++size) {
        auto *memory = static_cast<char *>(arena.allocate(size));
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(memory) % alignof(std::max_align_t), 0u);
        std::memset(memory, 0x55, size);
    }
    EXPECT_TRUE(arena.exhausted());
    arena.reset();
    EXPECT_LE(arena.footprint(), std::size_t{1024} * 1024);
    char *text = arena.copyText("text");
    EXPECT_STREQ(text, "text");
    arena.allocate(std::size_t{8} * 1024 * 1024);
    arena.reset();
    EXPECT_LE(arena.footprint(), std::size_t{1024} * 1024) << "a chunk that large is not kept";
}

} // namespace
