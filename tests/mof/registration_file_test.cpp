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

constexpr const char *METHOD = "instance method";
constexpr const char *ASSOCIATION = "instance association";

constexpr Row ROWS[] = {
    {"Monitor", METHOD},
    {"DisplayManagement", METHOD},
    {"VideoInput", METHOD},
    {"ImageAdjustment", METHOD},
    {"PictureInPicture", METHOD},
    {"OSDMenuAndMessages", METHOD},
    {"ColorSpace", METHOD},
    {"BezelButton", METHOD},
    {"FunctionButton", METHOD},
    {"TestPatternGenerator", METHOD},
    {"RemoteManagementService", METHOD},
    {"WSManagementService", METHOD},
    {"IPProtocolEndpoint", METHOD},
    {"IPNetworkConnection", METHOD},
    {"IPConfigurationService", METHOD},
    {"ExtendedStaticIPAssignmentSettingData", METHOD},
    {"DHCPSettingData", METHOD},
    {"IPVersionSettingData", METHOD},
    {"IPAssignmentSettingData", METHOD},
    {"TestPattern", ASSOCIATION},
    {"PIPFunctionality", ASSOCIATION},
    {"OnScreenDisplay", ASSOCIATION},
    {"Management", ASSOCIATION},
    {"InputSource", ASSOCIATION},
    {"ImageAdjustmentModel", ASSOCIATION},
    {"ColorModel", ASSOCIATION},
    {"Button", ASSOCIATION},
    {"SystemDevice", ASSOCIATION},
    {"ElementSettingData", ASSOCIATION},
    {"HostedAccessPoint", ASSOCIATION},
    {"ProvidesEndpoint", ASSOCIATION},
    {"SAPSAPDependency", ASSOCIATION},
    {"OrderedComponent", ASSOCIATION},
};

TEST(RegistrationFile, HasOneStanzaPerClassInStrictForm)
{
    static_assert(std::size(ROWS) == 33);
    std::string expected;
    for (const Row &row : ROWS) {
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
    for (const Row &row : ROWS) {
        const std::string name = std::string("ZT_Marovelton_") + row.name;
        const cim::Class *klass = mof::deskClasses().find(name);
        ASSERT_NE(klass, nullptr) << name;
        EXPECT_EQ(klass->isAssociation, row.types == ASSOCIATION) << name;
        EXPECT_TRUE(registered.insert(name).second) << name;
    }
    for (const cim::Class *klass : mof::deskClasses().all()) {
        if (klass->name.starts_with("ZT_")) {
            EXPECT_TRUE(registered.contains(klass->name)) << klass->name;
        }
    }
}

} // namespace
