// SPDX-License-Identifier: Apache-2.0
// What all 33 classes have in common: their factories, their Cleanup and the operations that none of them
// offers.

#include "checks.h"
#include "every_class.h"

// One of them has the name of a record.
namespace tested
{

#define DECLARE_METHOD_CLASS(Class) METHOD_CLASS(Class);
#define DECLARE_ASSOCIATION_CLASS(Class) ASSOCIATION_CLASS(Class);
EVERY_METHOD_CLASS(DECLARE_METHOD_CLASS)
EVERY_ASSOCIATION_CLASS(DECLARE_ASSOCIATION_CLASS)

} // namespace tested

#define ADDRESS_OF(Class) &tested::Class,

TEST(Skeletons, InstanceAndMethodProviders)
{
    const TestedClass *const classes[] = {EVERY_METHOD_CLASS(ADDRESS_OF)};
    EXPECT_EQ(std::size(classes), 19u);
    for (const TestedClass *each : classes) {
        // The one class whose instance can be modified.
        checkSkeleton(*each, each == &tested::ExtendedStaticIPAssignmentSettingData);
    }
}

TEST(Skeletons, InstanceAndAssociationProviders)
{
    const TestedClass *const classes[] = {EVERY_ASSOCIATION_CLASS(ADDRESS_OF)};
    EXPECT_EQ(std::size(classes), 14u);
    for (const TestedClass *each : classes) {
        checkSkeleton(*each);
    }
}

TEST(Skeletons, EveryClassHasTablesOfItsOwn)
{
    std::vector<const void *> tables;
    for (const TestedClass *each :
         {&tested::Monitor, &tested::ColorSpace, &tested::Button, &tested::ColorModel, &tested::VideoInput}) {
        tables.push_back(each->createInstanceMI(&broker, nullptr, nullptr)->ft);
    }
    for (size_t i = 0; i < tables.size(); ++i) {
        for (size_t other = 0; other < i; ++other) {
            EXPECT_NE(tables[i], tables[other]);
        }
    }
}
