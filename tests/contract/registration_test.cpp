// SPDX-License-Identifier: Apache-2.0
// The registration and the definitions against the factories that the library has.

#include "contract.h"
#include "core/registration.h"

#include <cstring>
#include <gmock/gmock.h>

using namespace contract;

namespace
{

std::vector<host::Registration> registrations()
{
    std::vector<std::string> problems;
    std::vector<host::Registration> read =
        host::readRegistration(mof::fileText("libcmpiDisplayManagement.reg"), "the registration", problems);
    EXPECT_THAT(problems, testing::IsEmpty());
    return read;
}

template <typename MI>
int expectNamed(MI *(*factory)(const CMPIBroker *, const CMPIContext *, CMPIStatus *),
                const std::string &expected)
{
    if (!factory) {
        return 0;
    }
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    const MI *mi = factory(&broker, contextOf(noUser()), &status);
    EXPECT_EQ(status.rc, CMPI_RC_OK) << expected;
    EXPECT_TRUE(mi && mi->ft && mi->ft->miName && mi->ft->miName == expected) << expected;
    return 1;
}

} // namespace

TEST(Classes, AreTheSameInTheLibraryAndTheDefinitions)
{
    std::set<std::string> inLibrary;
    size_t associations = 0;
    for (const TestedClass &tested : libraryClasses()) {
        inLibrary.insert(tested.name);
        associations += declaredClass(tested.name).isAssociation;
        EXPECT_FALSE(declaredClass(tested.name).isAbstract) << tested.name;
    }
    std::set<std::string> declared;
    for (const cim::Class *one : mof::deskClasses().all()) {
        if (one->name.starts_with("ZT_")) {
            declared.insert(one->name);
        }
    }
    EXPECT_EQ(inLibrary.size(), 33u);
    EXPECT_EQ(associations, 14u);
    EXPECT_EQ(declared, inLibrary);
}

TEST(Registration, NamesTheFactoriesThatTheLibraryHas)
{
    std::set<std::string> registered;
    size_t withMethods = 0;
    size_t withAssociations = 0;
    for (const host::Registration &is : registrations()) {
        SCOPED_TRACE(is.className);
        EXPECT_TRUE(registered.insert(is.className).second) << "registered twice";
        ASSERT_TRUE(is.className.starts_with("ZT_Marovelton_"));
        const TestedClass &tested = libraryClass(is.className.substr(strlen("ZT_Marovelton_")));
        EXPECT_EQ(is.provider, is.className); // the factories are named after the provider
        EXPECT_EQ("lib" + is.location + ".so", LIBRARY_FILE_NAME);
        EXPECT_THAT(is.nameSpaces, testing::ElementsAre("root/cimv2"));

        EXPECT_TRUE(is.isInstance);
        EXPECT_EQ(is.isInstance, tested.createInstanceMI != nullptr);
        EXPECT_EQ(is.isMethod, tested.createMethodMI != nullptr);
        EXPECT_EQ(is.isAssociation, tested.createAssociationMI != nullptr);
        EXPECT_NE(is.isMethod, is.isAssociation);
        EXPECT_EQ(is.isAssociation, declaredClass(is.className).isAssociation);
        withMethods += is.isMethod;
        withAssociations += is.isAssociation;
    }
    EXPECT_EQ(registered.size(), 33u);
    EXPECT_EQ(withMethods, 19u);
    EXPECT_EQ(withAssociations, 14u);
}

TEST(Registration, TheFactoriesGiveTablesOfTheirNames)
{
    int instance = 0;
    int method = 0;
    int association = 0;
    for (const TestedClass &tested : libraryClasses()) {
        const std::string name = tested.name;
        instance += expectNamed(tested.createInstanceMI, "instance" + name);
        method += expectNamed(tested.createMethodMI, "method" + name);
        association += expectNamed(tested.createAssociationMI, "association" + name);
    }
    EXPECT_EQ(instance, 33);
    EXPECT_EQ(method, 19);
    EXPECT_EQ(association, 14);
}
