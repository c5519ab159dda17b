// SPDX-License-Identifier: Apache-2.0
// The registration file as the strictest object manager reads it: a blank or a carriage return at the end of
// a line, or a last line without its end, keeps it from starting.
#include "mof_classes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace
{

const cim::Class *declared(const std::string &name)
{
    const cim::Class *klass = mof::deskClasses().find(name);
    EXPECT_NE(klass, nullptr) << name;
    return klass;
}

TEST(RegistrationFile, HasOneStanzaPerClassInStrictForm)
{
    std::string expected;
    int associations = 0;
    for (const std::string &name : mof::registeredClasses()) {
        ASSERT_NE(declared(name), nullptr);
        const bool association = declared(name)->isAssociation;
        associations += association;
        expected += expected.empty() ? "" : "\n";
        expected += "[" + name + "]\n";
        expected += "   provider: " + name + "\n";
        expected += "   location: cmpiDisplayManagement\n";
        expected += std::string("   type: instance ") + (association ? "association" : "method") + "\n";
        expected += "   namespace: root/cimv2\n";
        expected += "   unload: never\n";
    }
    EXPECT_EQ(associations, 14);
    EXPECT_EQ(mof::fileText("libcmpiDisplayManagement.reg"), expected);
}

TEST(RegistrationFile, HasNoBlankAtTheEndOfALine)
{
    const std::string text = mof::fileText("libcmpiDisplayManagement.reg");
    ASSERT_FALSE(text.empty());
    EXPECT_EQ(text.find(" \n"), std::string::npos);
    EXPECT_EQ(text.find('\t'), std::string::npos);
    EXPECT_EQ(text.find('\r'), std::string::npos);
    EXPECT_EQ(text.back(), '\n');
    EXPECT_NE(text[text.size() - 2], '\n');
}

TEST(RegistrationFile, NamesTheClassesThatAreDefined)
{
    std::set<std::string> defined;
    for (const cim::Class *klass : mof::deskClasses().all()) {
        if (klass->name.starts_with("ZT_")) {
            defined.insert(klass->name);
        }
    }
    EXPECT_EQ(defined.size(), 33u);
    EXPECT_THAT(mof::registeredClasses(), testing::UnorderedElementsAreArray(defined));
}

} // namespace
