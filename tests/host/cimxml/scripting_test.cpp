// SPDX-License-Identifier: Apache-2.0
// CIM-XML: the recorded exchanges of the scripting client that have several steps, or that look into what the
// server is: enumerations in parts, queries, associations of classes, discovery. Each answer is compared to
// the byte.
#include "test_host.h"

#include <array>

namespace
{

using test::HttpAnswer;

/** Recorded requests that belong together: NAME, or with several steps NAME.1, NAME.2 and so on; and the file
 * with the answer of each step. */
struct Exchange {
    const char *name;
    std::array<const char *, 5> answers;
};

void PrintTo(const Exchange &exchange, std::ostream *stream)
{
    *stream << exchange.name;
}

void replaceAll(std::string &text, const std::string &before, const std::string &after)
{
    for (std::size_t place = text.find(before); place != std::string::npos;
         place = text.find(before, place + after.size())) {
        text.replace(place, before.size(), after);
    }
}

/** The request with the right length after its body has changed. */
std::string withLength(std::string request)
{
    const std::size_t body = request.find("\r\n\r\n") + 4;
    const std::size_t length = request.find("Content-Length: ") + 16;
    const std::string number = std::to_string(request.size() - body);
    return request.replace(length, request.find('\r', length) - length, number);
}

std::string contextIn(const std::string &body)
{
    const std::size_t place = body.find("<PARAMVALUE NAME=\"EnumerationContext\"");
    if (place == std::string::npos) {
        return "";
    }
    const std::size_t begin = body.find("<VALUE>", place) + 7;
    return body.substr(begin, body.find('<', begin) - begin);
}

class ScriptingReplay : public testing::TestWithParam<Exchange>
{
  protected:
    explicit ScriptingReplay(std::unique_ptr<host::ObjectManager> manager = test::makeManager())
        : server_({}, {}, std::move(manager))
    {
    }

    void replay(const Exchange &exchange)
    {
        const bool hasSteps = exchange.answers[1] != nullptr;
        for (std::size_t i = 0; i < exchange.answers.size() && exchange.answers[i] != nullptr; ++i) {
            const std::string step = hasSteps ? "." + std::to_string(i + 1) : "";
            const HttpAnswer answer = server_.exchange(request(exchange.name + step));
            EXPECT_EQ(answer.status, 200) << step;
            EXPECT_EQ(comparable(answer.body),
                      test::readData(std::string("answers/scripting-") + exchange.answers[i] + ".xml"))
                << step;
        }
    }

    /** The recorded request as a client of this server sends it: with the name of the enumeration that this
     * server has given it, and with the class that this server has told it of. */
    std::string request(const std::string &name) const
    {
        std::string text = test::recorded("scripting/" + name);
        if (!context_.empty()) {
            replaceAll(text, "enum-1", context_);
        }
        replaceAll(text, "Test_RegisteredProfile", "CIM_RegisteredProfile");
        return withLength(text);
    }

    /** The answer without what is different each time, and on each machine. */
    std::string comparable(std::string body)
    {
        const std::string &host = server_.manager().dispatcher().hostName();
        if (const std::string context = contextIn(body); !context.empty()) {
            context_ = context;
        }
        if (!context_.empty()) {
            replaceAll(body, context_, "enum-1");
        }
        replaceAll(body, "<HOST>" + host + "<", "<HOST>this-host<");
        replaceAll(body, "display-host:" + host + "<", "display-host:this-host<");
        for (const char *before : {"<KEYBINDING NAME=\"SystemName\">\n<KEYVALUE VALUETYPE=\"string\">",
                                   "<KEYBINDING NAME=\"Name\">\n<KEYVALUE VALUETYPE=\"string\">",
                                   "<PROPERTY NAME=\"SystemName\" TYPE=\"string\">\n<VALUE>"}) {
            replaceAll(body, before + host + "<", std::string(before) + "this-host<");
        }
        return body;
    }

    test::TestServer server_;

  private:
    std::string context_;
};

TEST_P(ScriptingReplay, IsAnsweredToTheByte)
{
    replay(GetParam());
}

std::string nameOf(const testing::TestParamInfo<Exchange> &info)
{
    std::string name = info.param.name;
    replaceAll(name, "-", "_");
    return name;
}

constexpr Exchange exchanges[] = {
    {"central-instances", {"central-instances"}},
    {"central-instances-method", {"central-instances-method"}},
    {"central-instances-no-method", {"central-instances-method", "central-instances"}},
    {"central-instances-scoping",
     {"central-instances-scoping.1", "central-instances-scoping.2", "central-instances",
      "central-instances-scoping.4", "central-instances-scoping.4"}},
    {"class-associator-names", {"class-associator-names"}},
    {"class-associator-names-filtered", {"central-instances-scoping.1"}},
    {"class-associators", {"class-associators"}},
    {"class-associators-filtered", {"class-associators-filtered"}},
    {"class-reference-names", {"class-reference-names"}},
    {"class-reference-names-filtered", {"class-reference-names-filtered"}},
    {"class-references", {"class-references"}},
    {"class-references-filtered", {"class-references-filtered"}},
    {"discovery", {"discovery.1", "discovery.2", "discovery.3", "discovery.4", "discovery.5"}},
    {"discovery-no-interop", {"discovery.1", "discovery.1", "discovery-no-interop.3"}},
    {"discovery-no-namespace-class",
     {"discovery.1", "discovery.2", "discovery-no-namespace-class.3", "discovery-no-namespace-class.4"}},
    {"discovery-root-interop", {"discovery.1", "discovery.1", "discovery.2"}},
    {"error-context", {"error-context"}},
    {"error-context-close", {"error-context-close"}},
    {"error-context-exhausted",
     {"error-context-exhausted.1", "error-context-exhausted.2", "error-context-exhausted.3"}},
    {"error-continue-on-error", {"error-continue-on-error"}},
    {"error-exec-query-invalid", {"error-exec-query-invalid"}},
    {"error-exec-query-language", {"error-exec-query-language"}},
    {"error-exec-query-unsupported", {"error-exec-query-unsupported"}},
    {"error-filter-invalid", {"error-filter-invalid"}},
    {"error-filter-language", {"error-filter-language"}},
    {"error-filter-unsupported", {"error-filter-unsupported"}},
    {"error-get-class", {"error-get-class"}},
    {"error-open-class", {"error-open-class"}},
    {"error-operation-timeout", {"error-operation-timeout"}},
    {"error-pull-kind", {"error-pull-kind.1", "error-context", "error-pull-kind.3"}},
    {"error-query-language", {"error-query-language"}},
    {"exec-query", {"exec-query"}},
    {"exec-query-empty", {"exec-query-empty"}},
    {"exec-query-object", {"exec-query-object"}},
    {"exec-query-select", {"exec-query-select"}},
    {"get-class-local", {"get-class-local"}},
    {"get-class-no-props", {"get-class-no-props"}},
    {"get-class-origin", {"get-class-origin"}},
    {"get-class-props", {"get-class-props"}},
    {"iter-associator-paths", {"iter-associator-paths.1", "iter-associator-paths.2"}},
    {"iter-associators", {"iter-associators.1", "iter-associators.2"}},
    {"iter-default", {"iter-default"}},
    {"iter-enumerate-instances", {"enumerate-instances"}},
    {"iter-fallback-1", {"iter-fallback-1.1", "iter-default", "iter-default"}},
    {"iter-fallback-7", {"iter-fallback-1.1", "iter-default", "iter-default"}},
    {"iter-fallback-associator-paths", {"iter-fallback-associator-paths.1", "associator-names"}},
    {"iter-fallback-associators", {"iter-fallback-associators.1", "iter-fallback-associators.2"}},
    {"iter-fallback-paths", {"iter-fallback-paths.1", "enumerate-names"}},
    {"iter-fallback-query", {"iter-fallback-query.1", "exec-query-object"}},
    {"iter-fallback-reference-paths", {"iter-fallback-reference-paths.1", "reference-names"}},
    {"iter-forced-unsupported", {"iter-forced-unsupported"}},
    {"iter-instances", {"iter-fallback-1.1", "iter-instances.2", "iter-instances.3"}},
    {"iter-instances-abandoned", {"iter-fallback-1.1", "error-pull-kind.3"}},
    {"iter-paths", {"iter-paths.1", "iter-paths.2"}},
    {"iter-query", {"iter-query.1", "iter-query.2"}},
    {"iter-reference-paths", {"iter-fallback-reference-paths.1", "error-context-exhausted.3"}},
    {"iter-references", {"iter-references.1", "iter-references.2"}},
    {"open-all", {"open-all"}},
    {"open-associators-filtered", {"open-associators-filtered"}},
    {"open-empty", {"open-empty"}},
    {"open-filter", {"open-filter"}},
    {"open-no-count", {"open-no-count.1", "error-pull-kind.3"}},
    {"open-query-close", {"open-query-close.1", "error-pull-kind.3"}},
    {"open-references-filtered", {"open-references-filtered"}},
    {"open-zero", {"open-no-count.1", "open-zero.2", "open-zero.3"}},
    {"pull-associator-paths", {"iter-associator-paths.1", "iter-associator-paths.2"}},
    {"pull-associators", {"pull-associators.1", "pull-associators.2"}},
    {"pull-instances", {"iter-forced-unsupported", "pull-instances.2", "pull-instances.3"}},
    {"pull-instances-close", {"iter-fallback-1.1", "error-pull-kind.3"}},
    {"pull-paths", {"iter-fallback-paths.1", "pull-paths.2", "error-context-exhausted.2"}},
    {"pull-query", {"pull-query.1", "pull-query.2"}},
    {"pull-reference-paths", {"iter-fallback-reference-paths.1", "error-context-exhausted.3"}},
};

INSTANTIATE_TEST_SUITE_P(Recorded, ScriptingReplay, testing::ValuesIn(exchanges), nameOf);

/** The test classes, with that put for this in their text. */
cim::ClassRepository changedClasses(const std::vector<std::pair<std::string, std::string>> &changes)
{
    const test::TemporaryDirectory directory;
    std::string mof = test::readData("test.mof");
    for (const auto &[before, after] : changes) {
        EXPECT_NE(mof.find(before), std::string::npos) << before;
        replaceAll(mof, before, after);
    }
    test::writeFile(directory.file("mof"), mof);
    cim::ClassRepository repository;
    const cim::MofResult result = cim::readMofFiles(repository, {directory.file("mof")});
    for (const cim::MofMessage &message : result.messages) {
        ADD_FAILURE() << message.format();
    }
    return repository;
}

/** Where the association with systems, whose references are broken, is none of things. */
class ReferencesReplay : public ScriptingReplay
{
  protected:
    ReferencesReplay()
        : ScriptingReplay(test::makeManager(changedClasses(
              {{"    Linux_ComputerSystem REF Antecedent;\n        [Override(\"Dependent\")]\n    Test_Thing REF",
                "    Linux_ComputerSystem REF Antecedent;\n        [Override(\"Dependent\")]\n"
                "    Linux_ComputerSystem REF"}})))
    {
    }
};

TEST_P(ReferencesReplay, IsAnsweredToTheByte)
{
    replay(GetParam());
}

constexpr Exchange referencesExchanges[] = {
    {"iter-fallback-references", {"iter-fallback-references.1", "iter-fallback-references.2"}},
    {"pull-references", {"pull-references.1", "pull-references.2"}},
};

INSTANTIATE_TEST_SUITE_P(Recorded, ReferencesReplay, testing::ValuesIn(referencesExchanges), nameOf);

TEST(ScriptingReplayed, InstancesAreReturnedAsTextsOfThatType)
{
    test::TestServer server(
        {}, {},
        test::makeManager(changedClasses(
            {{"    uint32 Nap(",
              "    uint32 Describe([In, EmbeddedInstance(\"Test_State\")] string want,\n"
              "        [In, EmbeddedInstance(\"Test_State\")] string wants[],\n"
              "        [In(false), Out, EmbeddedInstance(\"Test_State\")] string state,\n"
              "        [In(false), Out, EmbeddedInstance(\"Test_State\")] string states[],\n"
              "        [In(false), Out, EmbeddedInstance(\"Test_State\")] string none,\n"
              "        [In(false), Out] string wanted);\n"
              "    uint32 Nap("},
             {"class Test_Simple\n", "class Test_State { string Note; uint16 Load; };\nclass Test_Simple\n"},
             {"Qualifier In :",
              "Qualifier EmbeddedInstance : string = null, Scope(property, method, parameter);\n"
              "Qualifier In :"}})));
    const HttpAnswer answer = server.exchange(test::recorded("scripting/invoke-embedded"));
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, test::readData("answers/scripting-invoke-embedded.xml"));
}

} // namespace
