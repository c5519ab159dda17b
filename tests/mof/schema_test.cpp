// SPDX-License-Identifier: Apache-2.0
// The class model: types, names and the repository's look-ups.
#include "cim/schema.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

cim::Class makeClass(const std::string &name, const std::string &superclass = "")
{
    cim::Class klass;
    klass.name = name;
    klass.superclass = superclass;
    return klass;
}

std::vector<std::string> names(const std::vector<const cim::Class *> &classes)
{
    std::vector<std::string> result;
    for (const cim::Class *klass : classes) {
        result.push_back(klass->name);
    }
    return result;
}

/** Root with the subclasses Left (with Leaf below it) and Right, and Other beside them. */
void fill(cim::ClassRepository &repository)
{
    ASSERT_NE(repository.add(makeClass("T_Root")), nullptr);
    ASSERT_NE(repository.add(makeClass("T_Left", "T_Root")), nullptr);
    ASSERT_NE(repository.add(makeClass("T_Other")), nullptr);
    ASSERT_NE(repository.add(makeClass("T_Right", "t_ROOT")), nullptr);
    ASSERT_NE(repository.add(makeClass("T_Leaf", "T_Left")), nullptr);
}

TEST(Types, HaveTheCodesOfCmpi)
{
    EXPECT_EQ(cim::cmpiType(cim::Type::boolean, false), 2);
    EXPECT_EQ(cim::cmpiType(cim::Type::char16, false), 3);
    EXPECT_EQ(cim::cmpiType(cim::Type::real32, false), 8);
    EXPECT_EQ(cim::cmpiType(cim::Type::real64, false), 12);
    EXPECT_EQ(cim::cmpiType(cim::Type::uint8, false), 128);
    EXPECT_EQ(cim::cmpiType(cim::Type::uint16, false), 144);
    EXPECT_EQ(cim::cmpiType(cim::Type::uint32, false), 160);
    EXPECT_EQ(cim::cmpiType(cim::Type::uint64, false), 176);
    EXPECT_EQ(cim::cmpiType(cim::Type::sint8, false), 192);
    EXPECT_EQ(cim::cmpiType(cim::Type::sint16, false), 208);
    EXPECT_EQ(cim::cmpiType(cim::Type::sint32, false), 224);
    EXPECT_EQ(cim::cmpiType(cim::Type::sint64, false), 240);
    EXPECT_EQ(cim::cmpiType(cim::Type::reference, false), 4352);
    EXPECT_EQ(cim::cmpiType(cim::Type::string, false), 5632);
    EXPECT_EQ(cim::cmpiType(cim::Type::dateTime, false), 6144);
    EXPECT_EQ(cim::cmpiType(cim::Type::uint16, true), 8336);
    EXPECT_EQ(cim::cmpiType(cim::Type::string, true), 13824);
}

TEST(Types, AreNamedAsInMof)
{
    for (const char *name : {"boolean", "char16", "real32", "real64", "uint8", "uint16", "uint32", "uint64",
                             "sint8", "sint16", "sint32", "sint64", "string", "datetime", "reference"}) {
        EXPECT_STREQ(cim::typeName(cim::typeFromName(name)), name);
    }
    EXPECT_EQ(cim::typeFromName("UInt16"), cim::Type::uint16);
    EXPECT_EQ(cim::typeFromName("int"), cim::Type::none);
    EXPECT_EQ(cim::typeFromName(""), cim::Type::none);
    EXPECT_STREQ(cim::typeName(cim::Type::none), "");
    EXPECT_TRUE(cim::isInteger(cim::Type::uint8));
    EXPECT_TRUE(cim::isInteger(cim::Type::sint64));
    EXPECT_FALSE(cim::isInteger(cim::Type::real32));
    EXPECT_FALSE(cim::isInteger(cim::Type::boolean));
    EXPECT_FALSE(cim::isInteger(cim::Type::string));
    EXPECT_FALSE(cim::isInteger(cim::Type::reference));
    EXPECT_TRUE(cim::isReal(cim::Type::real64));
    EXPECT_FALSE(cim::isReal(cim::Type::uint32));
}

TEST(Names, AreComparedWithoutCase)
{
    EXPECT_TRUE(cim::sameName("InstanceID", "instanceid"));
    EXPECT_TRUE(cim::sameName("", ""));
    EXPECT_FALSE(cim::sameName("Name", "Names"));
    EXPECT_FALSE(cim::sameName("Name", "Nama"));
    EXPECT_FALSE(cim::sameName("[", "{")); // differ by the bit that tells the case of letters
    EXPECT_EQ(cim::NameHash{}("InstanceID"), cim::NameHash{}("INSTANCEID"));
    EXPECT_NE(cim::NameHash{}("InstanceID"), cim::NameHash{}("InstanceIE"));
}

TEST(Repository, FindsClassesInAnyCase)
{
    cim::ClassRepository repository;
    fill(repository);
    ASSERT_NE(repository.find("t_left"), nullptr);
    EXPECT_EQ(repository.find("t_left")->name, "T_Left");
    EXPECT_EQ(repository.find("T_None"), nullptr);
    EXPECT_EQ(repository.find(""), nullptr);
    EXPECT_EQ(repository.idOf("T_None"), cim::noClass);
    EXPECT_EQ(&repository.byId(repository.idOf("T_LEAF")), repository.find("T_Leaf"));
    EXPECT_EQ(repository.size(), 5u);
}

TEST(Repository, RefusesWhatDoesNotFit)
{
    cim::ClassRepository repository;
    fill(repository);
    EXPECT_EQ(repository.add(makeClass("t_root")), nullptr);
    EXPECT_EQ(repository.add(makeClass("T_New", "T_Unknown")), nullptr);
    EXPECT_EQ(repository.add(makeClass("")), nullptr);
    EXPECT_EQ(repository.size(), 5u);
    EXPECT_EQ(repository.find("T_New"), nullptr);
}

TEST(Repository, KnowsTheTree)
{
    cim::ClassRepository repository;
    fill(repository);
    const cim::Class &root = *repository.find("T_Root");
    EXPECT_THAT(names(repository.roots()), ElementsAre("T_Root", "T_Other"));
    EXPECT_THAT(names(repository.subclasses(root)), ElementsAre("T_Left", "T_Right"));
    EXPECT_THAT(names(repository.deepSubclasses(root)), ElementsAre("T_Left", "T_Leaf", "T_Right"));
    EXPECT_THAT(names(repository.deepSubclasses(*repository.find("T_Leaf"))), IsEmpty());
    EXPECT_THAT(names(repository.all()), ElementsAre("T_Root", "T_Left", "T_Other", "T_Right", "T_Leaf"));
}

TEST(Repository, TellsAncestors)
{
    cim::ClassRepository repository;
    fill(repository);
    EXPECT_TRUE(repository.isA("T_Leaf", "T_Root"));
    EXPECT_TRUE(repository.isA("t_leaf", "T_LEFT"));
    EXPECT_TRUE(repository.isA("T_Leaf", "T_Leaf"));
    EXPECT_FALSE(repository.isA("T_Left", "T_Leaf"));
    EXPECT_FALSE(repository.isA("T_Leaf", "T_Right"));
    EXPECT_FALSE(repository.isA("T_Leaf", "T_Other"));
    EXPECT_FALSE(repository.isA("T_Other", "T_Root"));
    EXPECT_FALSE(repository.isA("T_None", "T_Root"));
    EXPECT_FALSE(repository.isA("T_Root", "T_None"));
    EXPECT_FALSE(repository.isA("T_None", "T_None"));
    EXPECT_TRUE(repository.isA(repository.idOf("T_Leaf"), repository.idOf("T_Root")));
    EXPECT_FALSE(repository.isA(cim::noClass, repository.idOf("T_Root")));
    EXPECT_FALSE(repository.isA(repository.idOf("T_Root"), cim::noClass));
}

TEST(Repository, ListsTheKeysInOrder)
{
    cim::Class klass = makeClass("T_Keyed");
    for (const char *name : {"First", "Second", "Third"}) {
        cim::Property property;
        property.name = name;
        property.type = cim::Type::string;
        property.isKey = property.name != "Second";
        klass.properties.push_back(property);
    }
    cim::ClassRepository repository;
    const cim::Class *stored = repository.add(std::move(klass));
    ASSERT_NE(stored, nullptr);
    const auto keys = repository.keys(*stored);
    ASSERT_EQ(keys.size(), 2u);
    EXPECT_EQ(keys[0]->name, "First");
    EXPECT_EQ(keys[1]->name, "Third");
    ASSERT_NE(stored->findProperty("SECOND"), nullptr);
    EXPECT_EQ(stored->findProperty("Fourth"), nullptr);
    EXPECT_EQ(stored->findMethod("First"), nullptr);
}

TEST(Repository, KeepsQualifierDeclarations)
{
    cim::ClassRepository repository;
    cim::QualifierDeclaration declaration;
    declaration.name = "Key";
    declaration.type = cim::Type::boolean;
    EXPECT_TRUE(repository.add(declaration));
    declaration.name = "KEY";
    EXPECT_FALSE(repository.add(declaration));
    ASSERT_NE(repository.findQualifier("key"), nullptr);
    EXPECT_EQ(repository.findQualifier("key")->name, "Key");
    EXPECT_EQ(repository.findQualifier("Keys"), nullptr);
    EXPECT_EQ(repository.qualifiers().size(), 1u);
}

TEST(Values, AreReadAsText)
{
    cim::Value value;
    EXPECT_EQ(value.text(), "");
    EXPECT_FALSE(value.isTrue());
    value.isNull = false;
    value.items = {"true"};
    EXPECT_TRUE(value.isTrue());
    EXPECT_EQ(value.text(), "true");
    value.isArray = true;
    EXPECT_FALSE(value.isTrue());
    value.items.clear();
    EXPECT_EQ(value.text(), "");
}

} // namespace
