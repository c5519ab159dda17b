// SPDX-License-Identifier: Apache-2.0
// Values that arrive as text take the types of their class.
#include "test_host.h"

#include "core/typing.h"

namespace
{

using cim::Type;

class Typing : public testing::Test
{
  protected:
    Typing() : repository_(test::readTestClasses()), nameSpaces_(repository_, "root/cimv2") {}

    /** The scalar of that type; on failure its state is CMPI_badValue and error_ says why. */
    CMPIData scalar(Type type, std::string_view text)
    {
        host::Typing typing(call_.arena, nameSpaces_);
        host::ValueText value;
        value.name = "x";
        value.item.text = text;
        CMPIData data = {};
        if (!typing.value(value, type, false, "root/cimv2", data)) {
            error_ = typing.error();
            EXPECT_EQ(typing.code(), CMPI_RC_ERR_INVALID_PARAMETER);
            data.state = CMPI_badValue;
        }
        return data;
    }

    bool fails(Type type, std::string_view text)
    {
        return scalar(type, text).state == CMPI_badValue;
    }

    test::TestCall call_;
    cim::ClassRepository repository_;
    cim::NameSpaces nameSpaces_;
    std::string error_;
};

TEST_F(Typing, Integers)
{
    EXPECT_EQ(scalar(Type::uint8, "255").value.uint8, 255);
    EXPECT_TRUE(fails(Type::uint8, "256"));
    EXPECT_EQ(error_, "The value \"256\" of x is not a uint8.");
    EXPECT_TRUE(fails(Type::uint8, "-1"));
    EXPECT_EQ(scalar(Type::uint16, " 65535\n").value.uint16, 65535) << "blanks around a number do not count";
    EXPECT_EQ(scalar(Type::uint32, "4294967295").value.uint32, 4294967295u);
    EXPECT_TRUE(fails(Type::uint32, "4294967296"));
    EXPECT_EQ(scalar(Type::uint64, "18446744073709551615").value.uint64, 18446744073709551615u);
    EXPECT_TRUE(fails(Type::uint64, "18446744073709551616"));
    EXPECT_EQ(scalar(Type::uint64, "0xFF").value.uint64, 255u);
    EXPECT_EQ(scalar(Type::uint16, "+5").value.uint16, 5);
    EXPECT_EQ(scalar(Type::uint16, "-0").value.uint16, 0);
    EXPECT_EQ(scalar(Type::sint8, "-128").value.sint8, -128);
    EXPECT_EQ(scalar(Type::sint8, "127").value.sint8, 127);
    EXPECT_TRUE(fails(Type::sint8, "128"));
    EXPECT_TRUE(fails(Type::sint8, "-129"));
    EXPECT_EQ(scalar(Type::sint16, "-32768").value.sint16, -32768);
    EXPECT_EQ(scalar(Type::sint32, "-2147483648").value.sint32, -2147483647 - 1);
    EXPECT_EQ(scalar(Type::sint64, "-9223372036854775808").value.sint64, -9223372036854775807LL - 1);
    EXPECT_TRUE(fails(Type::sint64, "9223372036854775808"));
    for (const char *bad : {"", " ", "x", "1x", "1.0", "--1", "+", "0x", "1 2"}) {
        EXPECT_TRUE(fails(Type::uint32, bad)) << bad;
    }
}

TEST_F(Typing, OtherScalars)
{
    EXPECT_EQ(scalar(Type::boolean, "TRUE").value.boolean, 1);
    EXPECT_EQ(scalar(Type::boolean, "false").value.boolean, 0);
    EXPECT_EQ(scalar(Type::boolean, " \t\r\nTrue\n").value.boolean, 1) << "blanks around it do not count";
    EXPECT_EQ(scalar(Type::boolean, " false ").value.boolean, 0);
    for (const char *bad : {"1", "", " ", "tru e", "true false"}) {
        EXPECT_TRUE(fails(Type::boolean, bad)) << bad;
    }
    EXPECT_EQ(scalar(Type::real64, "\n +0.5 ").value.real64, 0.5);
    EXPECT_TRUE(fails(Type::real64, "+-0.5"));
    EXPECT_EQ(scalar(Type::dateTime, " 19700101000000.000001+000\n").type, CMPI_dateTime);
    EXPECT_EQ(scalar(Type::real32, "1.5e1").value.real32, 15.0f);
    EXPECT_EQ(scalar(Type::real64, "-0.25").value.real64, -0.25);
    EXPECT_TRUE(fails(Type::real64, "1.5.2"));
    EXPECT_TRUE(fails(Type::real64, ""));
    EXPECT_EQ(scalar(Type::char16, "a").value.char16, 'a');
    EXPECT_EQ(scalar(Type::char16, "\xc3\xbc").value.char16, 0xfc);
    EXPECT_EQ(scalar(Type::char16, "\xe2\x82\xac").value.char16, 0x20ac);
    EXPECT_TRUE(fails(Type::char16, "ab"));
    EXPECT_TRUE(fails(Type::char16, ""));
    EXPECT_TRUE(fails(Type::char16, "\xf0\x9f\x98\x80")) << "beyond 16 bits";
    EXPECT_EQ(scalar(Type::dateTime, "19700101000000.000001+000").type, CMPI_dateTime);
    EXPECT_TRUE(fails(Type::dateTime, "today"));
    const CMPIData string = scalar(Type::string, " kept as it is ");
    EXPECT_EQ(host::behind<host::String>(string.value.string)->view(), " kept as it is ");
    EXPECT_EQ(scalar(Type::none, "5").type, CMPI_string) << "without a type it is a text";
    EXPECT_EQ(scalar(Type::reference, "text").type, CMPI_string) << "a text is no reference";
}

TEST_F(Typing, PathsTakeTheTypesOfTheirClass)
{
    host::ArenaList<host::ValueText> keys(call_.arena);
    host::ValueText id;
    id.name = "id";
    id.type = Type::string;
    id.item.text = "5";
    keys.append(id);
    host::PathText text;
    text.className = "test_simple";
    text.keys = &keys;
    host::Typing typing(call_.arena, nameSpaces_);
    const host::Path *path = typing.path(text, "root/cimv2");
    ASSERT_NE(path, nullptr);
    EXPECT_EQ((*path->keys)[0].data.type, CMPI_uint16);
    EXPECT_EQ((*path->keys)[0].data.value.uint16, 5);
    EXPECT_EQ(path->nameSpace->view(), "root/cimv2");

    keys[0].item.text = "five";
    EXPECT_EQ(typing.path(text, "root/cimv2"), nullptr);
    EXPECT_STREQ(typing.error(), "The value \"five\" of id is not a uint16.");

    keys[0].item.text = "5";
    keys[0].name = "";
    path = typing.path(text, "root/cimv2");
    ASSERT_NE(path, nullptr) << "the only key of a class needs no name";
    EXPECT_EQ((*path->keys)[0].name->view(), "Id");

    text.className = "Test_Thing";
    EXPECT_EQ(typing.path(text, "root/cimv2"), nullptr);
    EXPECT_STREQ(typing.error(), "A key of Test_Thing has no name.");

    text.className = "Test_Nope";
    keys[0].name = "Id";
    keys[0].type = Type::uint64;
    path = typing.path(text, "root/cimv2");
    ASSERT_NE(path, nullptr);
    EXPECT_EQ((*path->keys)[0].data.type, CMPI_uint64) << "of an unknown class the client's type counts";
    keys.append(keys[0]);
    EXPECT_EQ(typing.path(text, "root/cimv2"), nullptr);
    EXPECT_STREQ(typing.error(), "The key Id is given twice.");
}

TEST_F(Typing, ArgumentsKeepTheFormOfTheClient)
{
    host::ArenaList<host::ValueText> values(call_.arena);
    host::PathText reference;
    reference.className = "Test_Thing";
    host::ValueText text; // a reference where a text is declared
    text.name = "text";
    text.item.reference = &reference;
    values.append(text);
    host::ValueText more; // not declared
    more.name = "more";
    more.type = Type::uint16;
    more.item.text = "5";
    values.append(more);
    host::ValueText null;
    null.name = "reply";
    null.isNull = true;
    values.append(null);
    host::Typing typing(call_.arena, nameSpaces_);
    const host::Args *args = typing.arguments(repository_.find("Test_Thing"), "echo", values, "root/cimv2");
    ASSERT_NE(args, nullptr);
    EXPECT_EQ((*args->values)[0].data.type, CMPI_ref);
    EXPECT_EQ((*args->values)[1].data.type, CMPI_uint16);
    EXPECT_EQ((*args->values)[1].data.value.uint16, 5);
    EXPECT_EQ((*args->values)[2].data.type, CMPI_string);
    EXPECT_EQ((*args->values)[2].data.state, CMPI_nullValue);
}

TEST_F(Typing, InstancesHaveOnlyWhatTheClassHas)
{
    host::ArenaList<host::ValueText> properties(call_.arena);
    host::ValueText value;
    value.name = "Nope";
    value.item.text = "1";
    properties.append(value);
    host::Typing typing(call_.arena, nameSpaces_);
    const host::Path *path = host::makePath(call_.arena, nameSpaces_, "root/cimv2", "Test_Simple");
    EXPECT_EQ(typing.instance(*path, properties), nullptr);
    EXPECT_EQ(typing.code(), CMPI_RC_ERR_NO_SUCH_PROPERTY);
    EXPECT_STREQ(typing.error(), "The class Test_Simple has no property Nope.");
    host::ArenaList<host::ItemText> items(call_.arena);
    host::ItemText item;
    item.text = "1";
    items.append(item);
    properties[0].name = "Number";
    properties[0].isArray = true;
    properties[0].items = &items;
    EXPECT_EQ(typing.instance(*path, properties), nullptr);
    EXPECT_EQ(typing.code(), CMPI_RC_ERR_TYPE_MISMATCH);
    EXPECT_STREQ(typing.error(), "The property Number of Test_Simple has the type uint32.");
    properties[0].name = "Bytes";
    properties[0].isArray = false;
    properties[0].item.text = "1";
    EXPECT_EQ(typing.instance(*path, properties), nullptr);
    EXPECT_EQ(typing.code(), CMPI_RC_ERR_TYPE_MISMATCH);
    EXPECT_STREQ(typing.error(), "The property Bytes of Test_Simple has the type uint8[].");
    properties[0].isArray = true;
    const host::Instance *instance = typing.instance(*path, properties);
    ASSERT_NE(instance, nullptr);
    const std::size_t bytes = instance->klass->placeOf("Bytes");
    EXPECT_EQ(instance->values[bytes].type, CMPI_uint8A);
    EXPECT_EQ(host::behind<host::Array>(instance->values[bytes].value.array)->elements[0].value.uint8, 1);
}

} // namespace
