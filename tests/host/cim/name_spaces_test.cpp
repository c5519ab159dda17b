// SPDX-License-Identifier: Apache-2.0
// Namespaces and the looking up of what classes have.
#include "test_host.h"

#include "cim/name_spaces.h"

namespace
{

TEST(NameSpaces, FindsPropertiesInAnyLetterCase)
{
    const cim::ClassRepository repository = test::readTestClasses();
    const cim::NameSpaces nameSpaces(repository, "root/cimv2");
    const cim::Class *thing = repository.find("TEST_THING");
    ASSERT_NE(thing, nullptr);
    for (std::size_t i = 0; i < thing->properties.size(); ++i) {
        EXPECT_EQ(thing->placeOf(thing->properties[i].name), i);
    }
    EXPECT_EQ(thing->placeOf("deviceid"), thing->placeOf("DEVICEID"));
    EXPECT_EQ(thing->placeOf("Extra"), cim::noProperty);
    EXPECT_EQ(thing->placeOf(""), cim::noProperty);
    // Looked up one after the other in whatever order, and in another the next time, they are where they are.
    const std::size_t count = thing->properties.size();
    for (std::size_t step = 1; step < count; ++step) {
        std::size_t previous = cim::noProperty;
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t place = i * step % count;
            EXPECT_EQ(thing->placeAfter(previous, thing->properties[place].name.c_str()), place);
            EXPECT_EQ(thing->placeAfter(place, "Extra"), cim::noProperty);
            EXPECT_EQ(thing->placeAfter(place, "DEVICEID"), thing->placeOf("DeviceID"));
            previous = place;
        }
    }
    EXPECT_EQ(repository.find("Test_Nope"), nullptr);
    EXPECT_TRUE(repository.find("Test_SpecialThing")->isA(*thing));
    EXPECT_FALSE(thing->isA(*repository.find("Test_SpecialThing")));
    EXPECT_EQ(nameSpaces.find("root/cimv2"), &nameSpaces.standard());
    EXPECT_EQ(nameSpaces.find("/ROOT/CIMV2"), &nameSpaces.standard());
    EXPECT_EQ(nameSpaces.find("root/cimv"), nullptr);
    EXPECT_EQ(nameSpaces.find(""), nullptr);
}

} // namespace
