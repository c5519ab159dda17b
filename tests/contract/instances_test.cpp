// SPDX-License-Identifier: Apache-2.0
// The paths and instances of the classes that are no associations, against their definitions.

#include "contract.h"

using namespace contract;

namespace
{

struct InstanceRow {
    const char *name; // after ZT_Marovelton_
    size_t instances;
    size_t properties;                   // that each instance sets
    size_t own;                          // of these, those that the class's own definition writes
    size_t keys;                         // of its path
    size_t keysSet;                      // of these, those that the instance sets as properties, too
    const char *getInstanceID = nullptr; // where GetInstance asks for another InstanceID than the path has
};

// The monitor's keys are in the path of its instance alone; its provider sets none of them as a property.
// The IP version sets nothing at all, and GetInstance asks for another key than its path has.
const InstanceRow rows[] = {
    {"Monitor", 1, 16, 11, 4, 0},
    {"DisplayManagement", 1, 12, 8, 1, 1},
    {"VideoInput", 3, 7, 3, 1, 1},
    {"ImageAdjustment", 1, 18, 14, 1, 1},
    {"PictureInPicture", 1, 14, 10, 1, 1},
    {"OSDMenuAndMessages", 1, 15, 11, 1, 1},
    {"ColorSpace", 7, 26, 22, 1, 1},
    {"BezelButton", 1, 9, 5, 1, 1},
    {"FunctionButton", 4, 6, 2, 1, 1},
    {"TestPatternGenerator", 1, 10, 6, 1, 1},
    {"RemoteManagementService", 1, 10, 2, 4, 4},
    {"WSManagementService", 1, 11, 3, 4, 4},
    {"IPProtocolEndpoint", 2, 20, 2, 4, 4},
    {"IPNetworkConnection", 1, 8, 0, 4, 4},
    {"IPConfigurationService", 1, 9, 1, 4, 4},
    {"ExtendedStaticIPAssignmentSettingData", 1, 13, 3, 1, 1},
    {"DHCPSettingData", 1, 10, 3, 1, 1},
    {"IPVersionSettingData", 1, 0, 0, 1, 0, "ZT:Marovelton_IPVersionSettingData"},
    {"IPAssignmentSettingData", 1, 5, 0, 1, 1},
};

TEST(InstanceRows, AreOneForEachClass)
{
    expectOneRowEach(rows, false);
}

void PrintTo(const InstanceRow &row, std::ostream *out)
{
    *out << row.name;
}

class Instances : public testing::TestWithParam<InstanceRow>
{
  public:
    void SetUp() override
    {
        scriptMonitor();
    }
    const InstanceRow row = GetParam();
    const TestedClass &tested = libraryClass(row.name);
    const std::string className = tested.name;
};

/** The instance's properties are declared, and what the class's definition writes is among them. */
void expectAsDeclared(const InstanceRow &row, const std::string &className, const Instance &instance)
{
    EXPECT_EQ(instance.path.className, className);
    EXPECT_EQ(instance.properties.size(), row.properties);
    expectDeclared(className, instance.properties);

    const std::set<std::string> own = ownProperties(declaredClass(className));
    const std::set<std::string> set = namesOf(instance.properties);
    EXPECT_EQ(set.size(), row.properties);
    EXPECT_EQ(own.size(), row.own);
    for (const std::string &name : own) {
        EXPECT_TRUE(set.contains(name)) << name << " is declared, but not set";
    }
}

/** The instance tells all keys of its path, as properties or by a path of its own; the IP version tells none.
 */
void expectKeysOf(const InstanceRow &row, const Path &path, const Instance &instance)
{
    size_t told = 0;
    size_t keysSet = 0;
    for (const Entry &key : path.keys) {
        keysSet += namesOf(instance.properties).contains(key.name);
        const Value *value = instance.find(key.name);
        if (!value) {
            continue;
        }
        ++told;
        EXPECT_EQ(test_support::describe(*value), test_support::describe(key.value)) << key.name;
    }
    EXPECT_EQ(keysSet, row.keysSet);
    EXPECT_EQ(told, row.getInstanceID ? 0 : row.keys);
}

TEST_P(Instances, HavePathsOfTheDeclaredKeys)
{
    const std::vector<Path> paths = pathsOf(tested);
    ASSERT_EQ(paths.size(), row.instances);
    std::set<std::string> different;
    for (const Path &path : paths) {
        EXPECT_EQ(path.keys.size(), row.keys);
        expectPathOf(className, path);
        for (const Entry &key : path.keys) {
            EXPECT_EQ(key.value.type, CMPI_chars) << key.name;
            EXPECT_NE(key.value.text, "") << key.name;
        }
        different.insert(test_support::describe(path));
    }
    EXPECT_EQ(different.size(), row.instances);
}

TEST_P(Instances, EnumeratedHaveTheDeclaredProperties)
{
    const std::vector<Path> paths = pathsOf(tested);
    const std::vector<Instance> instances = instancesOf(tested);
    ASSERT_EQ(paths.size(), row.instances);
    ASSERT_EQ(instances.size(), row.instances);
    for (size_t i = 0; i < row.instances; ++i) {
        SCOPED_TRACE(test_support::describe(paths[i]));
        expectAsDeclared(row, className, instances[i]);
        expectKeysOf(row, paths[i], instances[i]);
    }
}

TEST_P(Instances, AreGotByTheirPaths)
{
    const std::vector<Path> paths = pathsOf(tested);
    const std::vector<Instance> instances = instancesOf(tested);
    ASSERT_EQ(paths.size(), row.instances);
    ASSERT_EQ(instances.size(), row.instances);
    for (size_t i = 0; i < row.instances; ++i) {
        SCOPED_TRACE(test_support::describe(paths[i]));
        Path asked = paths[i];
        if (row.getInstanceID) {
            // Clients know this class by the refusal of its own path.
            EXPECT_STATUS(get(tested, asked), CMPI_RC_ERR_NOT_FOUND,
                          "This class name does not exist (wrong InstanceID).");
            asked = asked.with("InstanceID", row.getInstanceID);
        }
        const Answer answer = get(tested, asked);
        EXPECT_STATUS(answer, CMPI_RC_OK, "");
        ASSERT_EQ(answer.returned.size(), 1u);
        expectAsDeclared(row, className, answer.instance());
        EXPECT_EQ(test_support::describe(answer.instance()), test_support::describe(instances[i]));
    }
}

INSTANTIATE_TEST_SUITE_P(EveryClass, Instances, testing::ValuesIn(rows),
                         [](const auto &tested) { return std::string(tested.param.name); });

} // namespace
