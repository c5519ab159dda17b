// SPDX-License-Identifier: Apache-2.0
// The associations against their definitions, between the objects that the other providers give.

#include "contract.h"

#include <map>
#include <optional>

using namespace contract;

namespace
{

struct AssociationRow {
    const char *name; // after ZT_Marovelton_
    const char *leftRole;
    const char *rightRole;
    const char *leftClass;           // an object of it is asked for its right ends
    const char *rightClass;          // and the other way round
    size_t enumerated;               // associations in all
    size_t ofLeft;                   // of the last object of leftClass
    size_t ofRight;                  // of the last object of rightClass
    std::set<std::string> more = {}; // properties beside the references
    size_t own = 2;                  // properties that the class's own definition writes
};

// Traversal of the endpoints' two associations finds the endpoint of the management interface alone, so there
// are fewer than an enumeration lists.
const AssociationRow rows[] = {
    {"TestPattern", "TestPatternGenerator", "Monitor", "ZT_Marovelton_TestPatternGenerator",
     "ZT_Marovelton_Monitor", 1, 1, 1},
    {"PIPFunctionality", "PictureInPicture", "Monitor", "ZT_Marovelton_PictureInPicture",
     "ZT_Marovelton_Monitor", 1, 1, 1},
    {"OnScreenDisplay", "OSDMenuAndMessages", "Monitor", "ZT_Marovelton_OSDMenuAndMessages",
     "ZT_Marovelton_Monitor", 1, 1, 1},
    {"Management", "DisplayManagement", "Monitor", "ZT_Marovelton_DisplayManagement", "ZT_Marovelton_Monitor",
     1, 1, 1},
    {"InputSource", "VideoInput", "Monitor", "ZT_Marovelton_VideoInput", "ZT_Marovelton_Monitor", 3, 1, 3},
    {"ImageAdjustmentModel", "ImageAdjustment", "Monitor", "ZT_Marovelton_ImageAdjustment",
     "ZT_Marovelton_Monitor", 1, 1, 1},
    {"ColorModel", "ColorSpace", "Monitor", "ZT_Marovelton_ColorSpace", "ZT_Marovelton_Monitor", 7, 1, 7},
    {"Button", "Antecedent", "Dependent", "ZT_Marovelton_Monitor", "ZT_Marovelton_BezelButton", 5, 5, 1},
    {"SystemDevice", "GroupComponent", "PartComponent", "Linux_ComputerSystem", "ZT_Marovelton_Monitor", 1, 1,
     1},
    {"ElementSettingData",
     "ManagedElement",
     "SettingData",
     "ZT_Marovelton_IPNetworkConnection",
     "ZT_Marovelton_DHCPSettingData",
     3,
     3,
     1,
     {"IsCurrent", "IsNext"},
     4},
    {"HostedAccessPoint", "Antecedent", "Dependent", "Linux_ComputerSystem",
     "ZT_Marovelton_IPNetworkConnection", 1, 1, 1},
    {"ProvidesEndpoint", "Dependent", "Antecedent", "ZT_Marovelton_IPProtocolEndpoint",
     "ZT_Marovelton_WSManagementService", 4, 2, 1},
    {"SAPSAPDependency", "Antecedent", "Dependent", "ZT_Marovelton_IPNetworkConnection",
     "ZT_Marovelton_IPProtocolEndpoint", 2, 1, 1},
    // AssignedSequence is of the superclass.
    {"OrderedComponent",
     "GroupComponent",
     "PartComponent",
     "ZT_Marovelton_IPAssignmentSettingData",
     "ZT_Marovelton_ExtendedStaticIPAssignmentSettingData",
     2,
     2,
     1,
     {"AssignedSequence"}},
};

TEST(AssociationRows, AreOneForEachClass)
{
    expectOneRowEach(rows, true);
}

void PrintTo(const AssociationRow &row, std::ostream *out)
{
    *out << row.name;
}

class Associations : public testing::TestWithParam<AssociationRow>
{
  public:
    void SetUp() override
    {
        scriptMonitor();
        ASSERT_NO_FATAL_FAILURE(serveInstances());
    }
    std::set<std::string> roles() const
    {
        return {row.leftRole, row.rightRole};
    }
    const AssociationRow row = GetParam();
    const TestedClass &tested = libraryClass(row.name);
    const std::string className = tested.name;
};

/** The last object of a class that the broker knows. */
Path objectOf(const char *className)
{
    return broker.classes.at(className).instances.back().path;
}

Value endOf(const Entries &properties, const std::string &role)
{
    const Entry *end = findEntry(properties, role);
    EXPECT_TRUE(end && end->value.path) << role;
    return end && end->value.path ? end->value : reference(path("nothing"));
}

/** Both references and all other properties, as they are declared. */
void expectComplete(const AssociationRow &row, const std::string &className, const Instance &association)
{
    std::set<std::string> expected = row.more;
    expected.insert({row.leftRole, row.rightRole});
    EXPECT_EQ(association.path.className, className);
    EXPECT_EQ(association.properties.size(), expected.size());
    EXPECT_EQ(namesOf(association.properties), expected);
    expectDeclared(className, association.properties);

    const std::set<std::string> own = ownProperties(declaredClass(className));
    EXPECT_EQ(own.size(), row.own);
    for (const std::string &name : own) {
        EXPECT_TRUE(expected.contains(name)) << name << " is declared, but not set";
    }
}

TEST_P(Associations, HavePathsOfTheDeclaredReferences)
{
    const std::vector<Path> paths = pathsOf(tested);
    ASSERT_EQ(paths.size(), row.enumerated);
    std::set<std::string> different;
    for (const Path &path : paths) {
        expectPathOf(className, path);
        EXPECT_EQ(namesOf(path.keys), roles());
        for (const Entry &key : path.keys) {
            EXPECT_EQ(key.value.type, CMPI_ref) << key.name;
        }
        different.insert(test_support::describe(path));
    }
    EXPECT_EQ(different.size(), row.enumerated);
}

TEST_P(Associations, EnumeratedHaveTheDeclaredProperties)
{
    const std::vector<Path> paths = pathsOf(tested);
    const std::vector<Instance> instances = instancesOf(tested);
    ASSERT_EQ(paths.size(), row.enumerated);
    ASSERT_EQ(instances.size(), row.enumerated);
    for (size_t i = 0; i < row.enumerated; ++i) {
        SCOPED_TRACE(test_support::describe(paths[i]));
        expectComplete(row, className, instances[i]);
        for (const std::string &role : roles()) {
            EXPECT_EQ(test_support::describe(endOf(instances[i].properties, role)),
                      test_support::describe(endOf(paths[i].keys, role)));
        }
    }
}

// Clients know an association that is got by its path by its references alone.
TEST_P(Associations, GotByTheirPathsHaveTheDeclaredReferences)
{
    const std::vector<Path> paths = pathsOf(tested);
    ASSERT_EQ(paths.size(), row.enumerated);
    for (const Path &path : paths) {
        SCOPED_TRACE(test_support::describe(path));
        const Answer answer = get(tested, path);
        EXPECT_STATUS(answer, CMPI_RC_OK, "");
        ASSERT_EQ(answer.returned.size(), 1u);
        const Instance association = answer.instance();
        EXPECT_EQ(association.path.className, className);
        EXPECT_EQ(association.properties.size(), 2u);
        EXPECT_EQ(namesOf(association.properties), roles());
        expectDeclared(className, association.properties);
        for (const std::string &role : roles()) {
            EXPECT_EQ(test_support::describe(endOf(association.properties, role)),
                      test_support::describe(endOf(path.keys, role)));
        }
    }
}

TEST_P(Associations, AreFoundFromBothEndsByTheDeclaredRoles)
{
    const struct {
        const char *role, *farRole, *sourceClass;
        size_t count;
    } ends[] = {{row.leftRole, row.rightRole, row.leftClass, row.ofLeft},
                {row.rightRole, row.leftRole, row.rightClass, row.ofRight}};
    for (const auto &end : ends) {
        SCOPED_TRACE(end.role);
        const Path source = objectOf(end.sourceClass);
        const cim::Property *role = declaredClass(className).findProperty(end.role);
        const cim::Property *farRole = declaredClass(className).findProperty(end.farRole);
        ASSERT_NE(role, nullptr);
        ASSERT_NE(farRole, nullptr);
        EXPECT_TRUE(mof::deskClasses().isA(source.className, role->referenceClass));

        const Answer answer =
            references(tested, source, {.associationClass = tested.name, .role = role->name.c_str()});
        EXPECT_STATUS(answer, CMPI_RC_OK, "");
        const std::vector<Instance> found = answer.instances();
        ASSERT_EQ(found.size(), end.count);
        for (const Instance &association : found) {
            expectComplete(row, className, association);
            EXPECT_EQ(test_support::describe(*endOf(association.properties, end.role).path),
                      test_support::describe(source));
        }

        const Answer farEnds = associators(tested, source,
                                           {.associationClass = tested.name,
                                            .resultClass = farRole->referenceClass.c_str(),
                                            .role = role->name.c_str(),
                                            .resultRole = farRole->name.c_str()});
        EXPECT_STATUS(farEnds, CMPI_RC_OK, "");
        const std::vector<Instance> objects = farEnds.instances();
        ASSERT_EQ(objects.size(), end.count);
        for (const Instance &object : objects) {
            EXPECT_TRUE(mof::deskClasses().isA(object.path.className, farRole->referenceClass))
                << object.path.className << " is no " << farRole->referenceClass;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(EveryClass, Associations, testing::ValuesIn(rows),
                         [](const auto &tested) { return std::string(tested.param.name); });

// ---- how many there are ----

/** The number in an integer qualifier of an end; none where the end does not have it. */
std::optional<size_t> numberOf(const cim::Property &end, const char *qualifier)
{
    const cim::Qualifier *found = cim::findQualifier(end.qualifiers, qualifier);
    if (!found || found->value.isNull) {
        return std::nullopt;
    }
    return std::stoul(found->value.text());
}

TEST(AssociationEnds, AreAsManyAsDeclared)
{
    scriptMonitor();
    ASSERT_NO_FATAL_FAILURE(serveInstances());
    int limitedEnds = 0;
    for (const AssociationRow &row : rows) {
        const TestedClass &tested = libraryClass(row.name);
        const std::vector<Path> paths = pathsOf(tested);
        ASSERT_EQ(paths.size(), row.enumerated);
        for (const auto &[role, otherRole] :
             {std::pair(row.leftRole, row.rightRole), std::pair(row.rightRole, row.leftRole)}) {
            SCOPED_TRACE(std::string(row.name) + "." + role);
            const cim::Property *end = declaredClass(tested.name).findProperty(role);
            ASSERT_NE(end, nullptr);
            const std::optional<size_t> min = numberOf(*end, "Min");
            const std::optional<size_t> max = numberOf(*end, "Max");
            limitedEnds += min || max;
            std::map<std::string, size_t> atOtherEnd;
            for (const Path &path : paths) {
                ++atOtherEnd[test_support::describe(*endOf(path.keys, otherRole).path)];
            }
            for (const auto &[object, count] : atOtherEnd) {
                EXPECT_GE(count, min.value_or(1)) << object;
                EXPECT_LE(count, max.value_or(count)) << object;
            }
        }
    }
    EXPECT_EQ(limitedEnds, 24); // of 28; the endpoints can be any number
}

} // namespace
