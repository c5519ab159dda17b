// SPDX-License-Identifier: Apache-2.0
// Every call of the library fails once: for each operation of each class the n-th call of the support library
// and the n-th call of the object manager, for every n. What may be answered then is a table, outcomes.tsv;
// beside it nothing is left behind, and nothing is sent that comes after the failure.

#include "outcomes.h"

#include <cstdio>
#include <map>

using namespace torture;

namespace
{

/** A line of the report. */
struct Figures {
    size_t operations = 0;
    long failed = 0;               // calls that were made to fail
    long whole = 0;                // answers that were as if nothing had happened
    std::map<int, long> codes;     // the others, by their code
    std::set<std::string> answers; // code, value and text of the others
};

const char *faultName(Fault fault)
{
    switch (fault) {
    case Fault::fails:
        return "fails";
    case Fault::silent:
        return "nothing";
    case Fault::noHandle:
        return "no handle";
    default:
        return "no table";
    }
}

/** Whether there is such a failure of the function: a status can fail, an object can be without its handle.
 */
bool canFailSo(const std::string &function, Fault fault)
{
    static const std::set<std::string> actions = {"addKey",         "setProperty",     "setElementAt",
                                                  "setNameSpace",   "returnData",      "returnDone",
                                                  "returnInstance", "returnObjectPath"};
    static const std::set<std::string> values = {"classPathIsA", "getArgCount", "getSize", "hasNext",
                                                 "getCharPtr"};
    return fault == Fault::fails || (fault == Fault::silent && !actions.contains(function)) ||
           (!actions.contains(function) && !values.contains(function));
}

bool isOfSupportLibrary(const std::string &function)
{
    return function == "runcommand" || isupper(static_cast<unsigned char>(function[0]));
}

/** The call as the table names it: without what is the operation's own argument, or the number of a like
 * object. */
std::string namedCall(const std::string &call)
{
    const std::string function = call.substr(0, call.find('('));
    for (const char *numbered : {"GetRegisterValue", "SpearEngineMessageQueueCreate", "runcommand"}) {
        if (function == numbered) {
            return call;
        }
    }
    if (function == "ValidateInputArgs") {
        return function + "(" + call.substr(call.find(',') + 2);
    }
    return function;
}

class LibraryTorture : public testing::TestWithParam<const TestedClass *>
{
  public:
    void SetUp() override
    {
        contract::scriptMonitor();
        contract::serveInstances();
        usual = seam;
        if (!table) {
            table = std::make_unique<OutcomeTable>(OUTCOMES);
        }
    }
    static void TearDownTestSuite()
    {
        fprintf(stderr, "%-42s %10s %8s %8s %8s  %s\n", "class", "operations", "failed", "unheeded",
                "answers", "by code");
        Figures all;
        for (const auto &[name, of] : report) {
            printLine(name, of);
            all.operations += of.operations;
            all.failed += of.failed;
            all.whole += of.whole;
            for (const auto &[code, count] : of.codes) {
                all.codes[code] += count;
            }
            all.answers.insert(of.answers.begin(), of.answers.end());
        }
        printLine("all", all);
        table.reset();
    }
    static void printLine(const std::string &name, const Figures &of)
    {
        std::string codes;
        for (const auto &[code, count] : of.codes) {
            codes += std::to_string(code) + ": " + std::to_string(count) + "  ";
        }
        fprintf(stderr, "%-42s %10zu %8ld %8ld %8zu  %s\n", name.c_str(), of.operations, of.failed, of.whole,
                of.answers.size(), codes.c_str());
    }

    /** The monitor and the broker as they are before the operation. */
    void makeReady(const Operation &operation)
    {
        faults.disarm();
        broker.freeObjects();
        seam = usual;
        operation.prepare();
    }

    void torture(const Operation &operation)
    {
        SCOPED_TRACE(operation.name + (operation.situation.empty() ? "" : ", " + operation.situation));
        makeReady(operation);
        faults.arm(0, Fault::none);
        const Answer whole = operation.run();
        const int calls = faults.calls();
        expectUsual(operation, whole);
        if (operation.situation.empty()) {
            sentUsually[operation.name] = whole.sent.size();
        }
        ++figures().operations;

        for (const Fault fault : everyFlaw) {
            for (int nth = 1; nth <= calls; ++nth) {
                makeReady(operation);
                faults.arm(nth, fault);
                const Answer answer = operation.run();
                const std::string struck = faults.struck();
                faults.disarm();
                ASSERT_NE(struck, "") << "the operation does not repeat its calls";
                if (!isOfSupportLibrary(struck) &&
                    canFailSo(struck, fault)) { // the support library has its own turn
                    check(operation, whole, answer, struck, faultName(fault));
                }
            }
        }
        std::map<std::string, int> times;
        for (const std::string &call : whole.calls) {
            const int nth = ++times[call];
            for (const int result : {-1, 1}) {
                makeReady(operation);
                seam.returnsAt(call, nth, result);
                const Answer answer = operation.run();
                check(operation, whole, answer, namedCall(call), std::to_string(result));
                checkNothingSentAfter(whole, answer, call, nth);
            }
        }
    }

    /** The operation by itself, to know that it is what is meant. */
    static void expectUsual(const Operation &operation, const Answer &whole)
    {
        EXPECT_TRUE(operation.expected || !operation.situation.empty());
        if (operation.expected) {
            EXPECT_EQ(whole.rc, operation.expected->first) << whole.text();
            EXPECT_EQ(whole.message, operation.expected->second);
        }
    }

    Figures &figures() const
    {
        return report[GetParam()->name];
    }

    /** What holds for every operation, so that it is not in the table. */
    static bool isUsualFor(const std::string &call, const Answer &whole, const Answer &answer, bool same)
    {
        if (call == "returnData" || call == "returnDone" || call == "returnInstance" ||
            call == "returnObjectPath") {
            // An object manager that cannot take an answer has given up the request itself.
            return answer.rc == whole.rc && answer.message == whole.message;
        }
        if (call == "newString" &&
            answer.rc != CMPI_RC_OK) { // the message of a status that says no all the same
            return answer.rc == whole.rc && answer.returned == whole.returned &&
                   (!answer.hasMessage || answer.message == "(a message without text)");
        }
        return same && whole.rc != CMPI_RC_OK; // a refusal stays what it was
    }

    void check(const Operation &operation, const Answer &whole, const Answer &answer, const std::string &call,
               const std::string &fault)
    {
        const bool same = answer.text() == whole.text() && answer.hasMessage == whole.hasMessage;
        const std::string value =
            operation.method
                ? (answer.returned.size() == 1 ? std::to_string(answer.returned[0].integer)
                                               : std::to_string(answer.returned.size()) + " values")
            : answer.returned == whole.returned ? "whole"
            : answer.returned.empty()           ? "none"
                                                : "part";
        const Outcome outcome = {
            .className = std::string(GetParam()->name).substr(strlen("ZT_Marovelton_")),
            .operation = operation.name,
            .call = call,
            .fault = fault,
            .code = same ? "=" : std::to_string(answer.rc),
            .value = value,
            .text = answer.hasMessage ? answer.message : "-",
            .method = operation.method,
        };
        ++figures().failed;
        if (same) {
            ++figures().whole;
        } else {
            ++figures().codes[answer.rc];
            figures().answers.insert(outcome.code + "\t" + value + "\t" + outcome.text);
        }
        EXPECT_TRUE(isUsualFor(call, whole, answer, same) || table->allows(outcome)) << "not in the table:\n"
                                                                                     << outcome.line();

        // A failure can lift a refusal: a monitor whose state cannot be read counts as free.
        const size_t most = operation.situation.empty()
                                ? whole.sent.size()
                                : std::max(whole.sent.size(), sentUsually[operation.name]);
        EXPECT_LE(answer.sent.size(), most) << outcome.line();
        // What a refused parser leaves of an address is sent.
        const size_t alike = call == "ParseIPV4Address" ? 0 : std::min(answer.sent.size(), whole.sent.size());
        for (size_t i = 0; i < alike; ++i) {
            EXPECT_EQ(hex(answer.sent[i].bytes), hex(whole.sent[i].bytes)) << outcome.line();
        }
        if (operation.method && call != "returnData" && call != "returnDone") {
            EXPECT_EQ(answer.returned.size(), 1u) << outcome.line();
            EXPECT_EQ(answer.done, 1) << outcome.line();
        }
    }

    /** After a call of the support library that failed, and made the operation fail, nothing else is sent. */
    static void checkNothingSentAfter(const Answer &whole, const Answer &answer, const std::string &call,
                                      int nth)
    {
        if (whole.rc != CMPI_RC_OK || answer.rc == CMPI_RC_OK) {
            return;
        }
        size_t sentBefore = 0;
        int times = 0;
        for (const std::string &made : whole.calls) {
            if (made == call && ++times == nth) {
                break;
            }
            sentBefore += made.starts_with("SendStatusMessagetoSource(");
        }
        EXPECT_EQ(answer.sent.size(), sentBefore) << call << " failed";
    }

    Seam usual;
    std::map<std::string, size_t> sentUsually; // messages, by operation
    static inline std::unique_ptr<OutcomeTable> table;
    static inline std::map<std::string, Figures> report;
};

TEST_P(LibraryTorture, EveryCallFailsOnce)
{
    for (const Operation &operation : operationsOf(*GetParam())) {
        torture(operation);
    }
    for (const std::string &line :
         table->unseen(std::string(GetParam()->name).substr(strlen("ZT_Marovelton_")))) {
        ADD_FAILURE() << "no failure leads to this answer of the table:\n" << line;
    }
    EXPECT_GT(figures().failed, 50);
}

std::vector<const TestedClass *> everyClass()
{
    std::vector<const TestedClass *> classes;
    for (const TestedClass &tested : contract::libraryClasses()) {
        classes.push_back(&tested);
    }
    return classes;
}

INSTANTIATE_TEST_SUITE_P(EveryClass, LibraryTorture, testing::ValuesIn(everyClass()), [](const auto &tested) {
    return std::string(tested.param->name).substr(strlen("ZT_Marovelton_"));
});

} // namespace
