// SPDX-License-Identifier: Apache-2.0
// The file that says which management profiles the classes conform to.
#include "test_host.h"

#include <gmock/gmock.h>

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> problemsOf(std::string_view text)
{
    std::vector<std::string> problems;
    host::readProfiles(text, "x.profiles", problems);
    return problems;
}

TEST(Profiles, StanzasAreRead)
{
    std::vector<std::string> problems;
    const auto found = host::readProfiles("# comment\n"
                                          "[ACME:One:1.0.0]\r\n"
                                          "   organization: ACME & Sons\r\n"
                                          "   name: One Thing\n"
                                          "   version: 1.0.0\n"
                                          "   central-class: ACME_One ACME_Two\n"
                                          "   references: DMTF:Part:2.1.0 ACME:Other\n"
                                          "[DMTF:Part:2.1.0]\n"
                                          "organization:DMTF\n"
                                          "name:Part\n"
                                          "version:2.1.0\n"
                                          "[SNIA:x]\n"
                                          "organization:SNIA\n"
                                          "name:x\n"
                                          "version:3",
                                          "x.profiles", problems);
    EXPECT_THAT(problems, IsEmpty());
    ASSERT_EQ(found.size(), 3u);
    EXPECT_EQ(found[0].instanceId, "ACME:One:1.0.0");
    EXPECT_EQ(found[0].organization, 1);
    EXPECT_EQ(found[0].otherOrganization, "ACME & Sons");
    EXPECT_EQ(found[0].name, "One Thing");
    EXPECT_EQ(found[0].version, "1.0.0");
    EXPECT_THAT(found[0].centralClasses, ElementsAre("ACME_One", "ACME_Two"));
    EXPECT_THAT(found[0].references, ElementsAre("DMTF:Part:2.1.0", "ACME:Other"));
    EXPECT_EQ(found[0].where, "x.profiles:2");
    EXPECT_EQ(found[1].organization, 2);
    EXPECT_EQ(found[1].otherOrganization, "");
    EXPECT_THAT(found[1].centralClasses, IsEmpty());
    EXPECT_EQ(found[2].organization, 11);
}

TEST(Profiles, ProblemsAreTold)
{
    EXPECT_THAT(problemsOf("name: x\n"),
                ElementsAre("x.profiles:1: a value stands before the first [InstanceID]"));
    EXPECT_THAT(problemsOf("[A\n"), ElementsAre("x.profiles:1: a stanza begins with [InstanceID]"));
    EXPECT_THAT(problemsOf("[A]\n"), ElementsAre("x.profiles:1: [A] \"organization\" is missing",
                                                 "x.profiles:1: [A] \"name\" is missing",
                                                 "x.profiles:1: [A] \"version\" is missing"));
    const std::string good = "[A]\norganization: DMTF\nname: n\nversion: 1\n";
    EXPECT_THAT(problemsOf(good), IsEmpty());
    EXPECT_THAT(problemsOf(good + "colour: red\n"), ElementsAre("x.profiles:5: unknown key \"colour\""));
    EXPECT_THAT(problemsOf(good + "references:\n"), ElementsAre("x.profiles:5: \"references\" has no value"));
    EXPECT_THAT(problemsOf(good + good), ElementsAre("x.profiles:5: [A] the profile has a stanza already"));
    std::vector<std::string> problems;
    host::readProfileFile("/nonexistent/x.profiles", problems);
    EXPECT_THAT(problems, ElementsAre("/nonexistent/x.profiles: cannot be read: No such file or directory"));
}

TEST(Profiles, WhatTheyNameHasToBeThere)
{
    std::vector<std::string> problems;
    host::ObjectManagerOptions options;
    options.profiles = host::readProfiles("[A]\norganization: DMTF\nname: n\nversion: 1\n"
                                          "central-class: Test_Thing Test_Nope\nreferences: A B\n",
                                          "x.profiles", problems);
    EXPECT_THAT(problems, IsEmpty());
    host::ObjectManager manager(test::readTestClasses(), options);
    EXPECT_THAT(manager.load({}),
                ElementsAre("x.profiles:1: [A] no MOF file defines the central class Test_Nope",
                            "x.profiles:1: [A] there is no profile B to reference"));
}

} // namespace
