// SPDX-License-Identifier: Apache-2.0
// The registration file as the strictest object manager reads it: a blank or a carriage return at the end of
// a line, or a last line without its end, keeps it from starting.
#include "mof_classes.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace
{

struct Row {
    const char *name; // after ZT_Marovelton_
    const char *types;
};

constexpr const char *method = "instance method";
constexpr const char *association = "instance association";

constexpr Row rows[] = {
    {"Monitor", method},
    {"DisplayManagement", method},
    {"VideoInput", method},
    {"ImageAdjustment", method},
    {"PictureInPicture", method},
    {"OSDMenuAndMessages", method},
    {"ColorSpace", method},
    {"BezelButton", method},
    {"FunctionButton", method},
    {"TestPatternGenerator", method},
    {"RemoteManagementService", method},
    {"WSManagementService", method},
    {"IPProtocolEndpoint", method},
    {"IPNetworkConnection", method},
    {"IPConfigurationService", method},
    {"ExtendedStaticIPAssignmentSettingData", method},
    {"DHCPSettingData", method},
    {"IPVersionSettingData", method},
    {"IPAssignmentSettingData", method},
    {"TestPattern", association},
    {"PIPFunctionality", association},
    {"OnScreenDisplay", association},
    {"Management", association},
    {"InputSource", association},
    {"ImageAdjustmentModel", association},
    {"ColorModel", association},
    {"Button", association},
    {"SystemDevice", association},
    {"ElementSettingData", association},
    {"HostedAccessPoint", association},
    {"ProvidesEndpoint", association},
    {"SAPSAPDependency", association},
    {"OrderedComponent", association},
};

TEST(RegistrationFile, HasOneStanzaPerClassInStrictForm)
{
    static_assert(std::size(rows) == 33);
    std::string expected;
    for (const Row &row : rows) {
        const std::string name = std::string("ZT_Marovelton_") + row.name;
        expected += expected.empty() ? "" : "\n";
        expected += "[" + name + "]\n";
        expected += "   provider: " + name + "\n";
        expected += "   location: cmpiDisplayManagement\n";
        expected += std::string("   type: ") + row.types + "\n";
        expected += "   namespace: root/cimv2\n";
        expected += "   unload: never\n";
    }
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
    std::set<std::string> registered;
    for (const Row &row : rows) {
        const std::string name = std::string("ZT_Marovelton_") + row.name;
        const cim::Class *klass = mof::deskClasses().find(name);
        ASSERT_NE(klass, nullptr) << name;
        EXPECT_EQ(klass->isAssociation, row.types == association) << name;
        EXPECT_TRUE(registered.insert(name).second) << name;
    }
    for (const cim::Class *klass : mof::deskClasses().all()) {
        if (klass->name.starts_with("ZT_")) {
            EXPECT_TRUE(registered.contains(klass->name)) << klass->name;
        }
    }
}

} // namespace
