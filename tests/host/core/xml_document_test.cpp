// SPDX-License-Identifier: Apache-2.0
// What the parsed document of a request costs, and who pays for it.
#include "core/xml_document.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using host::MemoryBudget;
using host::MemoryShare;
using host::XmlProblem;

/** A document with so many elements. */
std::string wide(int elements)
{
    std::string text = "<a>";
    for (int i = 1; i < elements; ++i) {
        text += "<b/>";
    }
    return text + "</a>";
}

TEST(XmlDocument, IsPaidForUntilItsRequestEnds)
{
    MemoryBudget budget(1000000, 1000000);
    {
        MemoryShare share(budget);
        pugi::xml_document document;
        std::string text = wide(2000);
        ASSERT_EQ(readXml(text, {}, share, document), XmlProblem::none);
        EXPECT_GE(share.taken(), 2000 * 6 * sizeof(void *)) << "a node has a name, a value and four links";
        EXPECT_LE(share.taken(), 400000u);
        EXPECT_STREQ(document.first_child().name(), "a");
    }
    EXPECT_EQ(budget.used(), 0u);
}

TEST(XmlDocument, BeyondWhatARequestOrAllMayHaveIsAnException)
{
    MemoryBudget budget(10000000, 100000);
    {
        MemoryShare share(budget);
        pugi::xml_document document;
        std::string text = wide(10000);
        EXPECT_THROW((void)readXml(text, {}, share, document), host::MemoryExceeded);
    }
    EXPECT_EQ(budget.used(), 0u);
    MemoryBudget little(100000, 100000);
    MemoryShare others(little);
    ASSERT_TRUE(others.take(90000));
    MemoryShare share(little);
    pugi::xml_document document;
    std::string text = wide(500);
    EXPECT_THROW((void)readXml(text, {}, share, document), host::MemoryExceeded);
}

TEST(XmlDocument, LimitsAreToldByName)
{
    const host::XmlLimits limits{3, 4, 2};
    MemoryBudget budget;
    MemoryShare share(budget);
    const auto read = [&](std::string text) {
        pugi::xml_document document;
        return readXml(text, limits, share, document);
    };
    EXPECT_EQ(read("<a><b><c/></b></a>"), XmlProblem::none);
    EXPECT_EQ(read("<a><b><c><d/></c></b></a>"), XmlProblem::tooDeep);
    EXPECT_EQ(read(wide(5)), XmlProblem::tooManyElements);
    EXPECT_EQ(read("<a b='' c='' d=''/>"), XmlProblem::tooManyAttributes);
    EXPECT_EQ(read("<a></b>"), XmlProblem::notWellFormed);
    EXPECT_EQ(read("<a>"), XmlProblem::notWellFormed);
    EXPECT_EQ(limitText(XmlProblem::tooManyElements, limits), "The document has more than 4 elements.");
    EXPECT_EQ(limitText(XmlProblem::tooDeep, limits),
              "The document has elements that are nested more than 3 deep.");
    EXPECT_EQ(limitText(XmlProblem::tooManyAttributes, limits),
              "The document has an element with more than 2 attributes.");
    EXPECT_EQ(limitText(XmlProblem::notWellFormed, limits), "");
}

} // namespace
