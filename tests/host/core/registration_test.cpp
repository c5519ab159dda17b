// SPDX-License-Identifier: Apache-2.0
// The registration of providers, and the loading of them.
#include "test_host.h"

#include <gmock/gmock.h>

namespace
{

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::vector<std::string> problemsOf(std::string_view text)
{
    std::vector<std::string> problems;
    host::readRegistration(text, "x.reg", problems);
    return problems;
}

TEST(Registration, StanzasAreRead)
{
    std::vector<std::string> problems;
    const auto found = host::readRegistration("# comment\n"
                                              "[A_Class]  \r\n"
                                              "   provider: A_Provider \t\r\n"
                                              "   location: aLibrary\r\n"
                                              "   type: instance method  \r\n"
                                              "   namespace: root/cimv2 root/other\r\n"
                                              "   unload: never\r\n"
                                              "\n"
                                              "[B_Class]\n"
                                              "provider:B\n"
                                              "location:b\n"
                                              "type:association\n"
                                              "namespace:root/cimv2",
                                              "x.reg", problems);
    EXPECT_THAT(problems, IsEmpty());
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0].className, "A_Class");
    EXPECT_EQ(found[0].provider, "A_Provider");
    EXPECT_EQ(found[0].location, "aLibrary");
    EXPECT_THAT(found[0].nameSpaces, ElementsAre("root/cimv2", "root/other"));
    EXPECT_TRUE(found[0].isInstance);
    EXPECT_TRUE(found[0].isMethod);
    EXPECT_FALSE(found[0].isAssociation);
    EXPECT_EQ(found[0].where, "x.reg:2");
    EXPECT_EQ(found[1].className, "B_Class");
    EXPECT_TRUE(found[1].isAssociation);
}

TEST(Registration, ProblemsAreTold)
{
    EXPECT_THAT(problemsOf("provider: x\n"), ElementsAre("x.reg:1: a value stands before the first [Class]"));
    EXPECT_THAT(problemsOf("[A\n"), ElementsAre("x.reg:1: a stanza begins with [Class]"));
    EXPECT_THAT(problemsOf("[ ]\n"), ElementsAre("x.reg:1: a stanza begins with [Class]"));
    EXPECT_THAT(problemsOf("[A]\n"),
                ElementsAre("x.reg:1: [A] \"provider\" is missing", "x.reg:1: [A] \"location\" is missing",
                            "x.reg:1: [A] \"namespace\" is missing", "x.reg:1: [A] \"type\" is missing"));
    const std::string good = "[A]\nprovider: A\nlocation: l\nnamespace: n\n";
    EXPECT_THAT(problemsOf(good + "type: indication\n"),
                ElementsAre("x.reg:5: providers of type \"indication\" are not supported",
                            "x.reg:1: [A] \"type\" is missing"));
    EXPECT_THAT(problemsOf(good + "type: instance\ncolour: red\n"),
                ElementsAre("x.reg:6: unknown key \"colour\""));
    EXPECT_THAT(problemsOf(good + "type: instance\nnonsense\n"),
                ElementsAre("x.reg:6: expected \"key: value\""));
    EXPECT_THAT(problemsOf(good + "type: instance\nunload:\n"),
                ElementsAre("x.reg:6: \"unload\" has no value"));
    EXPECT_THAT(problemsOf(good + "type: instance\n" + "[a]\nprovider: A\nlocation: l\nnamespace: n\n" +
                           "type: method\n"),
                ElementsAre("x.reg:6: [a] the class has a stanza already"));
    std::vector<std::string> problems;
    host::readRegistrationFile("/nonexistent/file.reg", problems);
    EXPECT_THAT(problems, ElementsAre("/nonexistent/file.reg: cannot be read: No such file or directory"));
}

class Loading : public testing::Test
{
  protected:
    std::string problemOf(const std::string &className, const std::string &provider, const std::string &types,
                          const std::string &location = "hostTestProvider",
                          const std::string &nameSpace = "root/cimv2")
    {
        std::vector<std::string> problems;
        const auto registrations =
            host::readRegistration("[" + className + "]\nprovider: " + provider + "\nlocation: " + location +
                                       "\ntype: " + types + "\nnamespace: " + nameSpace + "\n",
                                   "x.reg", problems);
        EXPECT_THAT(problems, IsEmpty());
        host::ObjectManagerOptions options;
        options.libraryDirectories = {"/nonexistent", TEST_PROVIDER_DIR};
        host::ObjectManager manager(test::readTestClasses(), options);
        const auto found = manager.load(registrations);
        return found.empty() ? "" : found[0];
    }
};

TEST_F(Loading, FindsLibrariesInTheDirectories)
{
    EXPECT_EQ(problemOf("Test_Thing", "Test_Thing", "instance method"), "");
}

TEST_F(Loading, SaysWhatIsMissing)
{
    EXPECT_EQ(problemOf("Test_Thing", "Test_Thing", "instance", "absent"),
              std::string("x.reg:1: [Test_Thing] there is no libabsent.so in /nonexistent ") +
                  TEST_PROVIDER_DIR);
    EXPECT_EQ(problemOf("Test_Nope", "Test_Thing", "instance"),
              "x.reg:1: [Test_Nope] no MOF file defines the class");
    EXPECT_EQ(problemOf("Test_Thing", "Test_Thing", "instance", "hostTestProvider", "root/other"),
              "x.reg:1: [Test_Thing] the class is registered for another namespace than root/cimv2");
    EXPECT_THAT(problemOf("Test_Thing", "Test_Absent", "instance"),
                HasSubstr("libhostTestProvider.so has no factory Test_Absent_Create_InstanceMI"));
    EXPECT_THAT(problemOf("Test_SpecialThing", "Test_SpecialThing", "instance method"),
                HasSubstr("libhostTestProvider.so has no factory Test_SpecialThing_Create_MethodMI"));
    EXPECT_THAT(problemOf("Test_Thing", "Test_Broken", "instance"),
                HasSubstr("Test_Broken_Create_InstanceMI of "));
    EXPECT_THAT(problemOf("Test_Thing", "Test_ThingPair", "association"),
                HasSubstr("has an association provider, but the class is no association"));
}

TEST_F(Loading, SaysWhyAFactoryFailed)
{
    EXPECT_THAT(problemOf("Test_Thing", "Test_Broken", "instance"),
                HasSubstr("failed with code 1: not today"));
}

TEST_F(Loading, SaysWhyALibraryCannotBeLoaded)
{
    test::TemporaryDirectory directory;
    test::writeFile(directory.file("libbad.so"), "this is no library");
    host::ObjectManagerOptions options;
    options.libraryDirectories = {directory.path()};
    host::ObjectManager manager(test::readTestClasses(), options);
    std::vector<std::string> problems;
    const auto registrations = host::readRegistration(
        "[Test_Thing]\nprovider: A\nlocation: bad\ntype: instance\nnamespace: root/cimv2\n", "x.reg",
        problems);
    const auto found = manager.load(registrations);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_THAT(found[0], HasSubstr("the library cannot be loaded: " + directory.file("libbad.so")));
}

} // namespace
