// SPDX-License-Identifier: Apache-2.0
// Queries over the things of the test provider: thing0 to thing6 (level 0 to 60, offset 0 to -600, serial
// 2^(8n), gain n + 0.5, hot when odd) and another thing0, of a subclass.
#include "test_host.h"

#include "core/query.h"

namespace
{

using host::Answer;

class Queries : public testing::Test
{
  protected:
    Queries() : manager_(test::makeManager()) {}

    Answer run(const std::string &query, const char *language = "WQL")
    {
        host::Request request;
        request.operation = host::Operation::execQuery;
        request.nameSpace = "root/cimv2";
        request.principal = "operator";
        request.query = call_.arena.copyText(query);
        request.queryLanguage = language;
        Answer answer(call_.arena);
        manager_->dispatcher().execute(call_.call(), request, answer);
        return answer;
    }

    /** The DeviceIDs of what the condition admits, or the error. */
    std::string found(const std::string &condition, const char *language = "WQL")
    {
        const Answer answer = run("SELECT * FROM Test_Thing WHERE " + condition, language);
        if (!answer.ok()) {
            return std::to_string(static_cast<int>(answer.code)) + " " + answer.message;
        }
        std::string ids;
        for (const host::Instance *instance : answer.instances) {
            const host::NamedValue *id = host::findValue(*instance->path->keys, "DeviceID");
            ids += (ids.empty() ? "" : " ") + std::string(host::textOf(host::stringOf(id->data)));
        }
        return ids;
    }

    std::string error(const std::string &query, const char *language = "WQL")
    {
        const Answer answer = run(query, language);
        return answer.ok() ? "accepted"
                           : std::to_string(static_cast<int>(answer.code)) + " " + answer.message;
    }

    std::unique_ptr<host::ObjectManager> manager_;
    test::TestCall call_;
};

TEST_F(Queries, CompareNumbersOfEverySize)
{
    EXPECT_EQ(found("Level = 20"), "thing2");
    EXPECT_EQ(found("20 = Level"), "thing2");
    EXPECT_EQ(found("Level > 50 AND Level < 70"), "thing6");
    EXPECT_EQ(found("Level >= 60 AND Level <= 6.0e1"), "thing6");
    EXPECT_EQ(found("50 < Level"), "thing6");
    EXPECT_EQ(found("Offset32 = -300"), "thing3");
    EXPECT_EQ(found("Offset32 < -5.5e2"), "thing6");
    EXPECT_EQ(found("Serial = 281474976710656"), "thing6");
    EXPECT_EQ(found("Serial > 18446744073709551615"), "");
    EXPECT_EQ(found("Serial >= 281474976710656 AND NOT Serial > 281474976710656"), "thing6");
    EXPECT_EQ(found("Offset32 > 9223372036854775808"), "") << "beyond the signed numbers";
    EXPECT_EQ(found("Gain = 3.5"), "thing3");
    EXPECT_EQ(found("Gain > 6.4999 AND Gain <> 7.5"), "thing6");
    EXPECT_EQ(found("Level = Gain"), "");
    EXPECT_EQ(found("Level < Gain"), "thing0 thing0");
}

TEST_F(Queries, CompareTextsTruthsAndDates)
{
    EXPECT_EQ(found("ElementName = 'thing4'"), "thing4");
    EXPECT_EQ(found("elementNAME = \"thing4\""), "thing4");
    EXPECT_EQ(found("ElementName = 'Thing4'"), "") << "texts have letter case";
    EXPECT_EQ(found("ElementName > 'thing5'"), "thing6");
    EXPECT_EQ(found("Hot = TRUE AND Level > 20"), "thing3 thing5");
    EXPECT_EQ(found("Hot = false AND Level > 40"), "thing6");
    EXPECT_EQ(found("Seen = '20231114221320.000000+000' AND Level = 10"), "thing1");
    EXPECT_EQ(found("Seen = '20231114231320.000000+060' AND Level = 10"), "thing1")
        << "the same moment elsewhere";
    EXPECT_EQ(found("'20231114221319.999999+000' < Seen AND Level = 10"), "thing1");
    EXPECT_EQ(found("Seen > '20231114221320.000000+000'"), "");
}

TEST_F(Queries, NullIsNeitherTrueNorFalse)
{
    EXPECT_EQ(found("Caption IS NULL AND Level = 10"), "thing1");
    EXPECT_EQ(found("Caption IS NOT NULL"), "");
    EXPECT_EQ(found("Caption = 'x' OR Level = 10"), "thing1");
    EXPECT_EQ(found("NOT Caption = 'x'"), "");
    EXPECT_EQ(found("NOT (Caption = 'x' AND Level = 10)  AND Level < 20"), "thing0 thing0");
    EXPECT_EQ(found("Caption <> 'x'"), "");
    EXPECT_EQ(found("Tags IS NULL"), "") << "an array can be tested for null";
}

TEST_F(Queries, AndBindsTighterThanOr)
{
    EXPECT_EQ(found("Level = 10 OR Level = 20 AND Hot = TRUE"), "thing1");
    EXPECT_EQ(found("(Level = 10 OR Level = 20) AND Hot = TRUE"), "thing1");
    EXPECT_EQ(found("(Level = 10 OR Level = 20) AND Hot = FALSE"), "thing2");
    EXPECT_EQ(found("NOT Level > 0 OR NOT NOT Level = 10"), "thing0 thing1 thing0");
}

TEST_F(Queries, LikeMatchesPatterns)
{
    EXPECT_EQ(found("ElementName LIKE 'thing_' AND Level < 20"), "thing0 thing1 thing0");
    EXPECT_EQ(found("ElementName LIKE '%g3'"), "thing3");
    EXPECT_EQ(found("ElementName LIKE 't%n%3'"), "thing3");
    EXPECT_EQ(found("ElementName LIKE 'thing'"), "");
    EXPECT_EQ(found("ElementName LIKE 'thing3_'"), "");
    EXPECT_EQ(found("ElementName LIKE '%%thing3%%'"), "thing3");
    EXPECT_EQ(found("ElementName LIKE 'x%'"), "");
    EXPECT_EQ(found("ElementName LIKE 'x%'", "DMTF:CQL"), "15 LIKE is not supported in CQL; in WQL it is.");
    EXPECT_EQ(found("Level LIKE '1%'"), "15 The query compares values of different types.");
    EXPECT_EQ(found("ElementName LIKE 1"),
              "15 The query is not well-formed: a text after LIKE is expected in place of 1.");
}

TEST_F(Queries, TextsKeepWhatABackslashProtects)
{
    EXPECT_EQ(found("ElementName = 'thing\\4'"), "thing4");
    EXPECT_EQ(found("ElementName = 'a\\'b' OR Level = 40"), "thing4");
    EXPECT_EQ(found("ElementName = \"thing4\"", "DMTF:CQL"),
              "15 The query is not well-formed: the character \" has no place in it.");
}

TEST_F(Queries, NamesMayBeQualified)
{
    const auto count = [this](const std::string &query) { return run(query).instances.size(); };
    EXPECT_EQ(count("SELECT Test_Thing.Label FROM Test_Thing WHERE test_thing.Level = 10"), 1u);
    EXPECT_EQ(count("SELECT t.Label FROM Test_Thing AS t WHERE t.Level = 10"), 1u);
    EXPECT_EQ(count("SELECT t.Label FROM Test_Thing t WHERE t.Level = 10"), 1u);
    EXPECT_EQ(error("SELECT u.Label FROM Test_Thing t"),
              "15 The query names u, which is neither the class after FROM nor its alias.");
}

TEST_F(Queries, AClassStandsForItsSubclassesToo)
{
    const std::size_t all = run("SELECT * FROM Test_Thing").instances.size();
    const std::size_t special = run("SELECT * FROM Test_SpecialThing").instances.size();
    EXPECT_EQ(all, 8u);
    EXPECT_EQ(special, 1u);
    EXPECT_EQ(run("SELECT * FROM Test_Thing WHERE Test_Thing ISA Test_SpecialThing").instances.size(),
              special);
    EXPECT_EQ(run("SELECT * FROM Test_Thing WHERE NOT __THIS ISA 'Test_SpecialThing'").instances.size(),
              all - special);
    EXPECT_EQ(error("SELECT * FROM Test_Thing WHERE Label ISA Test_Thing"),
              "15 The query is not well-formed: ISA follows the class after FROM or its alias.");
    EXPECT_EQ(error("SELECT * FROM Test_Thing WHERE Test_Thing ISA Test_Nope"),
              "15 The class Test_Nope does not exist.");
}

TEST_F(Queries, WhatIsSelectedIsShown)
{
    const Answer answer = run("SELECT Level, label FROM Test_Thing WHERE Level = 10");
    ASSERT_EQ(answer.instances.size(), 1u);
    const host::Instance &instance = *answer.instances[0];
    std::string shown;
    for (std::size_t i = 0; i < instance.klass->properties.size(); ++i) {
        if (instance.visible == nullptr || instance.visible->contains(i)) {
            shown += instance.klass->properties[i].name + " ";
        }
    }
    EXPECT_EQ(shown, "Label Level ");
    EXPECT_EQ(error("SELECT Level, Nope FROM Test_Thing"), "15 The class Test_Thing has no property Nope.");
}

TEST_F(Queries, BothLanguagesAreKnownByTheirNames)
{
    for (const char *language : {"WQL", "wql", "DMTF:CQL", "dmtf:cql", "CQL"}) {
        EXPECT_EQ(found("Level = 10", language), "thing1") << language;
    }
    EXPECT_EQ(error("SELECT * FROM Test_Thing", "SQL"),
              "14 The query language SQL is not supported; WQL and DMTF:CQL are.");
    EXPECT_EQ(error("SELECT * FROM Test_Thing", ""),
              "14 The query language  is not supported; WQL and DMTF:CQL are.");
}

TEST_F(Queries, WhatIsNoQueryIsRefusedWithTheReason)
{
    const std::string start = "15 The query is not well-formed: ";
    EXPECT_EQ(error(""), start + "SELECT is expected in place of the end.");
    EXPECT_EQ(error("SELECT"), start + "a property is expected in place of the end.");
    EXPECT_EQ(error("SELECT *"), start + "FROM is expected in place of the end.");
    EXPECT_EQ(error("SELECT * FROM"), start + "a class is expected in place of the end.");
    EXPECT_EQ(error("SELECT , FROM Test_Thing"), start + "a property is expected in place of ,.");
    EXPECT_EQ(error("DELETE FROM Test_Thing"), start + "SELECT is expected in place of DELETE.");
    EXPECT_EQ(error("SELECT * FROM Test_Thing WHERE"),
              start + "a property or a value is expected in place of the end.");
    EXPECT_EQ(error("SELECT * FROM Test_Thing WHERE Level"),
              start + "a comparison is expected in place of the end.");
    EXPECT_EQ(error("SELECT * FROM Test_Thing WHERE Level ="),
              start + "a property or a value is expected in place of the end.");
    EXPECT_EQ(error("SELECT * FROM Test_Thing WHERE (Level = 1"),
              start + ") is expected in place of the end.");
    EXPECT_EQ(error("SELECT * FROM Test_Thing WHERE Level = 1)"),
              start + "the end is expected in place of ).");
    EXPECT_EQ(error("SELECT * FROM Test_Thing WHERE Label = 'x"), start + "a text does not end.");
    EXPECT_EQ(error("SELECT * FROM Test_Thing WHERE Level = 1.2.3"), start + "1.2.3 is not a number.");
    EXPECT_EQ(error("SELECT * FROM Test_Thing WHERE Level = #"),
              start + "the character # has no place in it.");
    EXPECT_EQ(error("SELECT * FROM Test_Thing WHERE Level IS 1"), start + "NULL is expected in place of 1.");
    EXPECT_EQ(error("SELECT * FROM Test_Thing WHERE 1 IS NULL"), start + "LIKE and IS follow a property.");
    EXPECT_EQ(error("SELECT * FROM Test_Nope"), "5 The class Test_Nope does not exist.");
    EXPECT_EQ(error("SELECT * FROM Test_Thing WHERE Nope = 1"),
              "15 The class Test_Thing has no property Nope.");
    EXPECT_EQ(error("SELECT * FROM Test_Thing WHERE Level = 'x'"),
              "15 The query compares values of different types.");
    EXPECT_EQ(error("SELECT * FROM Test_Thing WHERE 'x' = 1"),
              "15 The query compares values of different types.");
    EXPECT_EQ(error("SELECT * FROM Test_Thing WHERE Hot = 1"),
              "15 The query compares values of different types.");
    EXPECT_EQ(error("SELECT * FROM Test_Thing WHERE Tags = 'x'"),
              "15 The property Tags can only be tested for NULL.");
    EXPECT_EQ(error("SELECT * FROM Test_Thing WHERE Seen = 'noon'"),
              "15 The value 'noon' is not a datetime, as Seen is.");
    EXPECT_EQ(error("SELECT * FROM Test_Thing WHERE 'noon' < Seen"),
              "15 The value 'noon' is not a datetime, as Seen is.");
    EXPECT_EQ(error("SELECT * FROM Test_Unserved WHERE Name = 'x'"),
              "7 No instance provider is registered for the class Test_Unserved or a subclass of it.");
}

TEST_F(Queries, LengthAndDepthAreBounded)
{
    const std::string start = "SELECT * FROM Test_Thing WHERE ";
    const auto nested = [&](std::size_t depth) {
        return error(start + std::string(depth, '(') + "Level = 1" + std::string(depth, ')'));
    };
    EXPECT_EQ(nested(63), "accepted");
    EXPECT_EQ(nested(64), "15 The query is nested more than 64 deep.");
    std::string longest = start + "Label = '";
    longest += std::string(host::Query::maxLength - longest.size() - 1, 'x') + "'";
    EXPECT_EQ(error(longest), "accepted");
    EXPECT_EQ(error(longest + " "), "15 The query is longer than 16384 bytes.");
    std::string chain = start + "Level = 1";
    while (chain.size() + 13 <= host::Query::maxLength) {
        chain += " OR Level = 2";
    }
    EXPECT_EQ(error(chain), "accepted");
}

TEST_F(Queries, ATextCutOffAnywhereIsRefusedOrAnswered)
{
    const std::string query =
        "SELECT t.Level, Label FROM Test_Thing AS t WHERE NOT (t.Level >= 10 AND Label LIKE 'a%')";
    for (std::size_t length = 0; length < query.size(); ++length) {
        const Answer answer = run(query.substr(0, length));
        ASSERT_TRUE(answer.ok() || answer.code == CMPI_RC_ERR_INVALID_QUERY ||
                    answer.code == CMPI_RC_ERR_INVALID_CLASS)
            << length;
    }
    EXPECT_TRUE(run(query).ok());
}

} // namespace
