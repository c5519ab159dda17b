// SPDX-License-Identifier: Apache-2.0
// What a request costs grows with its size, and no faster; whatever names a client chooses cost the same.
//
// Compared is the processor time of this thread for two requests, so that neither the speed of the machine
// counts nor what else it does. What disturbs a measurement makes it longer: the least of several is taken,
// and they are taken again before it is said that there are too many.
#include "wsman/wsman_client.h"

#include <algorithm>
#include <ctime>
#include <functional>
#include <limits>

namespace
{

class Headers final : public host::HttpHeaders
{
  public:
    const char *value(const char *name) const override
    {
        return cim::sameName(name, "CIMOperation") ? "MethodCall" : nullptr;
    }
};

std::string repeated(int count, const std::function<std::string(int)> &part)
{
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += part(i);
    }
    return text;
}

/** Twelve letters; the two forms of each differ in the bit that tells small from capital ones. */
std::string accented(int number)
{
    return repeated(12, [number](int bit) { return (number >> bit) % 2 == 0 ? "\xc3\x80" : "\xc3\xa0"; });
}

class Work : public testing::Test
{
  protected:
    /** Caps on a document would hide what its parts cost. */
    static host::XmlLimits wide()
    {
        return {.depth = 64, .elements = 1000000, .attributes = 16};
    }

    static host::WsmanOptions wsmanOptions()
    {
        host::WsmanOptions options;
        options.xml = wide();
        return options;
    }

    /** Seconds of the processor for one request; the last answer is in answer_. */
    double once(host::FrontEnd &frontEnd, std::string body)
    {
        host::MemoryBudget budget(std::numeric_limits<std::size_t>::max() / 4,
                                  std::numeric_limits<std::size_t>::max() / 4);
        host::MemoryShare memory(budget);
        host::TextBuffer out(memory);
        const Headers headers;
        const host::HttpRequest request{"operator", host::Role::operatorUser, "127.0.0.1", "/", headers, body,
                                        memory};
        timespec begin = {};
        timespec end = {};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &begin);
        frontEnd.handle(request, out);
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &end);
        answer_ = out.view();
        return static_cast<double>(end.tv_sec - begin.tv_sec) +
               static_cast<double>(end.tv_nsec - begin.tv_nsec) / 1e9;
    }

    double cost(host::FrontEnd &frontEnd, const std::string &body)
    {
        double least = once(frontEnd, body);
        for (int i = 0; i < 2; ++i) {
            least = std::min(least, once(frontEnd, body));
        }
        return least;
    }

    /** The body for `much` costs at most so many times what that for `little` costs. */
    void expectAtMost(double factor, host::FrontEnd &frontEnd, const std::string &little,
                      const std::string &much)
    {
        double seen = 0;
        for (int i = 0; i < 4; ++i) {
            seen = cost(frontEnd, much) / cost(frontEnd, little);
            if (seen <= factor) {
                return;
            }
        }
        ADD_FAILURE() << seen << " times as much";
    }

    /** Eight times as many parts: eight times the work would be linear, 64 times quadratic. */
    void expectLinear(host::FrontEnd &frontEnd, const std::function<std::string(int)> &bodyOf)
    {
        expectAtMost(24, frontEnd, bodyOf(few), bodyOf(8 * few));
    }

    /** What the fault that was answered says. */
    std::string reason() const
    {
        const std::string begin = "<s:Text xml:lang=\"en\">";
        const std::size_t place = answer_.find(begin);
        return place == std::string::npos
                   ? answer_
                   : answer_.substr(place + begin.size(),
                                    answer_.find('<', place + 1) - place - begin.size());
    }

    static constexpr int few = 1250;

    std::unique_ptr<host::ObjectManager> manager_ = test::makeManager();
    host::CimXmlFrontEnd cimXml_{manager_->dispatcher(), wide()};
    host::WsmanFrontEnd wsman_{manager_->dispatcher(), wsmanOptions()};
    std::string answer_;
};

std::string getInstance(const std::string &name, const std::string &more = "")
{
    return test::intrinsic("GetInstance",
                           "<IPARAMVALUE NAME=\"InstanceName\">" + name + "</IPARAMVALUE>" + more);
}

// ------------------------------------------------------------------------------------------------- CIM-XML

TEST_F(Work, OfKeysIsLinear)
{
    expectLinear(cimXml_, [](int count) {
        return getInstance("<INSTANCENAME CLASSNAME=\"Test_Thing\">" +
                           repeated(count,
                                    [](int i) {
                                        return "<KEYBINDING NAME=\"k" + std::to_string(i) +
                                               "\"><KEYVALUE>1</KEYVALUE></KEYBINDING>";
                                    }) +
                           "</INSTANCENAME>");
    });
    EXPECT_EQ(test::errorText(answer_), "A path has more than 64 keys.");
}

TEST_F(Work, OfArgumentsIsLinear)
{
    expectLinear(cimXml_, [](int count) {
        return test::methodCall(3, "Echo", repeated(count, [](int i) {
                                    return "<PARAMVALUE NAME=\"a" + std::to_string(i) +
                                           "\"><VALUE>1</VALUE></PARAMVALUE>";
                                }));
    });
    EXPECT_EQ(test::errorText(answer_), "A method call has more than 256 arguments.");
}

TEST_F(Work, OfElementsOfAnArrayIsLinear)
{
    expectLinear(cimXml_, [](int count) {
        return test::methodCall(3, "Echo",
                                "<PARAMVALUE NAME=\"none\"><VALUE.ARRAY>" + repeated(count, [](int) {
                                    return "<VALUE>1</VALUE>";
                                }) + "</VALUE.ARRAY></PARAMVALUE>");
    });
    EXPECT_EQ(test::errorCode(answer_), 0);
}

TEST_F(Work, OfNamesOfPropertiesIsLinear)
{
    expectLinear(cimXml_, [](int count) {
        return getInstance(test::thingName(3),
                           "<IPARAMVALUE NAME=\"PropertyList\"><VALUE.ARRAY>" + repeated(count, [](int i) {
                               return "<VALUE>p" + std::to_string(i) + "</VALUE>";
                           }) + "</VALUE.ARRAY></IPARAMVALUE>");
    });
    EXPECT_EQ(test::errorCode(answer_), 0);
}

TEST_F(Work, OfPropertiesIsLinear)
{
    expectLinear(cimXml_, [](int count) {
        return test::intrinsic(
            "CreateInstance",
            "<IPARAMVALUE NAME=\"NewInstance\"><INSTANCE CLASSNAME=\"Test_Thing\">" +
                repeated(count,
                         [](int) {
                             return "<PROPERTY NAME=\"Label\" TYPE=\"string\"><VALUE>x</VALUE>"
                                    "</PROPERTY>";
                         }) +
                "</INSTANCE></IPARAMVALUE>");
    });
}

TEST_F(Work, OfPiecesOfATextIsLinear)
{
    expectLinear(cimXml_, [](int count) {
        return test::methodCall(3, "Echo", "<PARAMVALUE NAME=\"text\"><VALUE>" + repeated(count, [](int) {
                                               return "a<![CDATA[b]]>";
                                           }) + "</VALUE></PARAMVALUE>");
    });
    EXPECT_EQ(test::errorCode(answer_), 0);
}

TEST_F(Work, OfPartsOfANamespaceIsLinear)
{
    expectLinear(cimXml_, [](int count) {
        return test::intrinsic("EnumerateClassNames", "", repeated(count, [](int) { return "root/"; }));
    });
    EXPECT_EQ(test::errorCode(answer_), 3);
}

TEST_F(Work, OfAQueryIsLinear)
{
    const auto query = [](int count) {
        return test::intrinsic("ExecQuery",
                               "<IPARAMVALUE NAME=\"QueryLanguage\"><VALUE>WQL</VALUE></IPARAMVALUE>"
                               "<IPARAMVALUE NAME=\"Query\"><VALUE>SELECT * FROM Test_Simple WHERE " +
                                   repeated(count, [](int) { return "Id = 1 OR "; }) +
                                   "Id = 2</VALUE></IPARAMVALUE>");
    };
    expectAtMost(24, cimXml_, query(100), query(800));
}

// ------------------------------------------------------------------------------------------- WS-Management

TEST_F(Work, OfSelectorsIsLinear)
{
    expectLinear(wsman_, [](int count) {
        std::vector<std::string> all;
        for (int i = 0; i < count; ++i) {
            all.push_back("k" + std::to_string(i));
            all.emplace_back("1");
        }
        return test::envelope(std::string(test::transfer) + "Get", test::thingUri, test::selectors(all), "");
    });
    EXPECT_EQ(reason(), "There are more than 64 selectors.");
}

std::string types(const std::string &arguments)
{
    const std::string thing = test::thingUri;
    return test::envelope(thing + "/Types", thing, test::thingSelectors(3),
                          "<p:Types_INPUT xmlns:p=\"" + thing + "\">" + arguments + "</p:Types_INPUT>");
}

TEST_F(Work, OfValuesIsLinear)
{
    expectLinear(wsman_, [](int count) {
        return types(repeated(count, [](int i) {
            const std::string name = "p:a" + std::to_string(i);
            return "<" + name + ">1</" + name + ">";
        }));
    });
    EXPECT_EQ(reason(), "There are more than 1024 values.");
    expectLinear(wsman_,
                 [](int count) { return types(repeated(count, [](int) { return "<p:same>1</p:same>"; })); });
}

TEST_F(Work, OfHeadersIsLinear)
{
    expectLinear(wsman_, [](int count) {
        return test::envelope(std::string(test::transfer) + "Get", test::thingUri,
                              repeated(count, [](int) { return "<o:Own xmlns:o=\"urn:own\"/>"; }), "");
    });
    EXPECT_EQ(reason(), "There are more than 32 headers.");
}

/** Names for which a hash that takes no account of letter case is the same, against as long ones for which it
 * is not. */
TEST_F(Work, NamesThatHashAlikeCostWhatOthersCost)
{
    // The last one is refused, so that nothing but reading them counts.
    const auto values = [](const std::function<std::string(int)> &nameOf) {
        return types(repeated(5000,
                              [&nameOf](int i) {
                                  const std::string name = "p:" + nameOf(i % 1000);
                                  return "<" + name + ">1</" + name + ">";
                              }) +
                     "<p:last><p:deep/></p:last>");
    };
    ASSERT_EQ(cim::NameHash()(accented(1)), cim::NameHash()(accented(999)));
    ASSERT_NE(accented(1), accented(999));
    ASSERT_NE(cim::NameHash()(accented(0) + "1"), cim::NameHash()(accented(0) + "2"));
    expectAtMost(3, wsman_, values([](int i) {
                     std::string name = accented(0);
                     return name.replace(name.size() - 4, 4, std::to_string(1000 + i));
                 }),
                 values(accented));
    EXPECT_EQ(reason(), "The element last holds no value but the element deep.");
}

} // namespace
