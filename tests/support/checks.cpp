// SPDX-License-Identifier: Apache-2.0
#include "checks.h"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace test_support
{

namespace
{

Value methodValue(CMPIType type, int value)
{
    return type == CMPI_uint8 ? uint8(static_cast<uint8_t>(value)) : uint32(static_cast<uint32_t>(value));
}

std::string upperCase(std::string text)
{
    for (char &c : text) {
        c = static_cast<char>(toupper(static_cast<unsigned char>(c)));
    }
    return text;
}

std::string lowerCase(std::string text)
{
    for (char &c : text) {
        c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
    }
    return text;
}

/** The text with the case of its letters turned round, so that it differs from itself if it has any letter.
 */
std::string otherCase(std::string text)
{
    for (char &c : text) {
        c = static_cast<char>(isupper(static_cast<unsigned char>(c))
                                  ? tolower(static_cast<unsigned char>(c))
                                  : toupper(static_cast<unsigned char>(c)));
    }
    return text;
}

} // namespace

// ---- the skeleton of a class ----

namespace
{

template <typename MI>
void checkFactory(MI *(*factory)(const CMPIBroker *, const CMPIContext *, CMPIStatus *),
                  const std::string &miName)
{
    SCOPED_TRACE("factory of " + miName);
    CMPIStatus status = {CMPI_RC_ERR_ALREADY_EXISTS, nullptr};
    MI *mi = factory(&broker, contextOf(noUser()), &status);
    ASSERT_NE(mi, nullptr);
    ASSERT_NE(mi->ft, nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_ALREADY_EXISTS) << "the status is not the factory's";
    EXPECT_EQ(status.msg, nullptr);
    EXPECT_EQ(mi->ft->ftVersion, 200);
    EXPECT_EQ(mi->ft->miVersion, 200);
    EXPECT_STREQ(mi->ft->miName, miName.c_str());
    EXPECT_EQ(factory(&broker, nullptr, nullptr), mi) << "another table the second time";

    const CMPIStatus cleaned = mi->ft->cleanup(mi, nullptr, true);
    EXPECT_EQ(cleaned.rc, CMPI_RC_OK);
    EXPECT_EQ(cleaned.msg, nullptr);
    const CMPIStatus again = mi->ft->cleanup(mi, contextOf(noUser()), false);
    EXPECT_EQ(again.rc, CMPI_RC_OK);
    EXPECT_EQ(again.msg, nullptr);
}

void expectNotSupported(const std::string &operation, const Answer &answer)
{
    SCOPED_TRACE(operation);
    EXPECT_STATUS(answer, CMPI_RC_ERR_NOT_SUPPORTED, "NOT_SUPPORTED");
    EXPECT_EQ(answer.returned.size(), 0u);
    EXPECT_CALLS(answer, {});
    EXPECT_SENT(answer, {});
}

} // namespace

void checkSkeleton(const TestedClass &tested, bool modifyIsOffered)
{
    SCOPED_TRACE(tested.name);
    const std::string name = tested.name;
    checkFactory(tested.createInstanceMI, "instance" + name);
    if (tested.createMethodMI) {
        checkFactory(tested.createMethodMI, "method" + name);
    }
    if (tested.createAssociationMI) {
        checkFactory(tested.createAssociationMI, "association" + name);
    }

    const Path target = path(name, {{"InstanceID", "anything"}});
    const Instance given = instance(target, {{"Name", "anything"}});
    expectNotSupported("CreateInstance", create(tested, target, given));
    if (!modifyIsOffered) {
        expectNotSupported("ModifyInstance", modify(tested, target, given, "admin"));
    }
    expectNotSupported("DeleteInstance", remove(tested, target));
    expectNotSupported("ExecQuery", query(tested, target, "SELECT * FROM CIM_ManagedElement", "WQL"));

    // Whatever the arguments.
    CMPIInstanceMI *mi = tested.createInstanceMI(&broker, nullptr, nullptr);
    const auto bare = [&](auto operation) {
        return collect([&](const CMPIResult *) { return operation(); });
    };
    expectNotSupported("CreateInstance of nothing",
                       bare([&] { return mi->ft->createInstance(mi, nullptr, nullptr, nullptr, nullptr); }));
    if (!modifyIsOffered) {
        expectNotSupported("ModifyInstance of nothing", bare([&] {
                               return mi->ft->modifyInstance(mi, nullptr, nullptr, nullptr, nullptr, nullptr);
                           }));
    }
    expectNotSupported("DeleteInstance of nothing",
                       bare([&] { return mi->ft->deleteInstance(mi, nullptr, nullptr, nullptr); }));
    expectNotSupported("ExecQuery of nothing", bare([&] {
                           return mi->ft->execQuery(mi, nullptr, nullptr, nullptr, nullptr, nullptr);
                       }));
}

void checkPlaceholderMethod(const TestedClass &tested, const Path &target, CMPIrc unknownCode,
                            const Value &returnValue)
{
    for (const char *name : {"insert_method_name", "INSERT_METHOD_NAME", "Insert_Method_Name"}) {
        SCOPED_TRACE(name);
        EXPECT_METHOD(invoke(tested, target, name), returnValue, CMPI_RC_OK, "");
        EXPECT_METHOD(invoke(tested, target.ofClass(otherCase(tested.name)), name), returnValue, CMPI_RC_OK,
                      "");
        EXPECT_METHOD(invoke(tested, target.ofClass("CIM_System"), name), returnValue, unknownCode, name);
    }
    for (const char *name : {"Reboot", "insert_method_nam", "insert_method_name1"}) {
        SCOPED_TRACE(name);
        EXPECT_METHOD(invoke(tested, target, name), returnValue, unknownCode, name);
    }
    const Answer answer = invoke(tested, target, "insert_method_name");
    EXPECT_CALLS(answer, {});
}

void checkUnknownMethods(const TestedClass &tested, const Path &target, const std::vector<std::string> &names,
                         CMPIrc code, const Value &returnValue)
{
    for (const std::string &name : names) {
        SCOPED_TRACE("method " + name);
        const Answer answer = invoke(tested, target, name, {}, "admin");
        EXPECT_METHOD(answer, returnValue, code, name);
        EXPECT_SENT(answer, {});
    }
}

void checkOtherClass(const TestedClass &tested, const Path &target, const std::string &method,
                     const Entries &arguments, const User &user, CMPIrc code, const std::string &message,
                     const Value &returnValue)
{
    for (const std::string &name :
         {std::string("CIM_System"), std::string(tested.name) + "2", std::string()}) {
        SCOPED_TRACE("a path of class " + name);
        const Answer answer = invoke(tested, target.ofClass(name), method, arguments, user);
        EXPECT_METHOD(answer, returnValue, code, message);
        EXPECT_SENT(answer, {});
    }
    for (const TextForm form : {TextForm::noString, TextForm::noCharacters, TextForm::noHandle}) {
        SCOPED_TRACE("a path whose class name cannot be read");
        Path unreadable = target;
        unreadable.classNameForm = form;
        const Answer answer = invoke(tested, unreadable, method, arguments, user);
        EXPECT_METHOD(answer, returnValue, code, message);
        EXPECT_SENT(answer, {});
    }
    {
        SCOPED_TRACE("a path without keys, and a method that does not exist");
        const Answer answer = invoke(tested, path("CIM_System"), "Reboot", {}, user);
        EXPECT_METHOD(answer, returnValue, code, message);
        EXPECT_CALLS(answer, {});
    }
    SCOPED_TRACE("the class name in other letter case");
    const Answer accepted = invoke(tested, target.ofClass(otherCase(tested.name)), method, arguments, user);
    EXPECT_STATUS(accepted, CMPI_RC_OK, "");
}

// ---- reads of a class ----

namespace
{

Entries asCharacters(const Entries &keys)
{
    Entries made;
    for (const Entry &key : keys) {
        made.push_back({key.name, chars(key.value.text)});
    }
    return made;
}

std::string traceLine(const TestedClass &tested, const std::string &text)
{
    return std::string("--- ") + tested.name + " " + text + "\n";
}

struct Read {
    const char *name;
    std::function<Answer()> run;
};

std::vector<Read> readsOf(const TestedClass &tested, const Path &target)
{
    return {{"EnumInstanceNames", [&] { return enumerateNames(tested, path(tested.name)); }},
            {"EnumInstances", [&] { return enumerate(tested, path(tested.name)); }},
            {"GetInstance", [&] { return get(tested, target); }}};
}

} // namespace

void checkPaths(const TestedClass &tested, const std::vector<Path> &expected,
                const std::vector<std::string> &calls)
{
    SCOPED_TRACE(std::string("EnumInstanceNames of ") + tested.name);
    const Answer answer = enumerateNames(tested, path(tested.name).inNameSpace("root/other"));
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_EQ(answer.done, 1);
    EXPECT_CALLS(answer, {calls});
    EXPECT_SENT(answer, {});
    std::string trace = traceLine(tested, "CMPI EnumInstanceNames() called");
    const std::vector<Path> found = answer.paths();
    ASSERT_EQ(found.size(), expected.size());
    for (size_t i = 0; i < found.size(); ++i) {
        EXPECT_EQ(found[i].nameSpace, "root/other");
        EXPECT_EQ(found[i].className, expected[i].className);
        EXPECT_TRUE(hasEntries(found[i].keys, asCharacters(expected[i].keys)));
        trace += traceLine(tested, "makePath called");
    }
    EXPECT_EQ(answer.trace, trace + traceLine(tested, "CMPI EnumInstanceNames() exited"));
}

void checkInstance(const TestedClass &tested, const Path &target, const Entries &properties,
                   const std::vector<std::string> &calls, bool pathIsTraced)
{
    const std::string made = (pathIsTraced ? traceLine(tested, "makePath called") : "") +
                             traceLine(tested, "makeInst) called") + traceLine(tested, "makeInst) exited");
    const struct {
        const char *operation;
        Answer answer;
        const char *exited;
    } reads[] = {
        {"EnumInstances()", enumerate(tested, path(tested.name)), "leave "},
        {"GetInstance()", get(tested, target), "exited"},
    };
    for (const auto &[operation, answer, exited] : reads) {
        SCOPED_TRACE(std::string(operation) + " of " + tested.name);
        EXPECT_STATUS(answer, CMPI_RC_OK, "");
        EXPECT_EQ(answer.done, 1);
        const Instance found = answer.instance();
        EXPECT_EQ(found.path.nameSpace, target.nameSpace);
        EXPECT_EQ(found.path.className, target.className);
        EXPECT_TRUE(hasEntries(found.path.keys, asCharacters(target.keys)));
        EXPECT_TRUE(hasEntries(found.properties, properties));
        EXPECT_CALLS(answer, {calls});
        EXPECT_SENT(answer, {});
        const std::string name = std::string("CMPI ") + operation + " ";
        EXPECT_EQ(answer.trace, traceLine(tested, name + "called") + made + traceLine(tested, name + exited));
    }
}

void checkNameOfSystem(const TestedClass &tested, const Path &target, const std::string &suffix)
{
    const auto expectName = [&](const std::string &expected) {
        SCOPED_TRACE(expected);
        const Answer answer = get(tested, target);
        EXPECT_STATUS(answer, CMPI_RC_OK, "");
        const Instance found = answer.instance();
        const Value *name = found.find("Name");
        ASSERT_NE(name, nullptr);
        EXPECT_EQ(*name, chars(expected));
    };
    expectName("Studio 7" + suffix);
    setField(seam.monitor.DisplayName, "");
    expectName("192.0.2.17" + suffix);
    fillField(seam.monitor.DisplayName, 'd');
    expectName("ddddddddddddddddddddddddd" + suffix);
}

// ---- keys ----

std::vector<KeyRule> instanceIDOfReads()
{
    return {{.name = "InstanceID",
             .missing = "Could not get InstanceID of instance.",
             .wrong = "This class name does not exist (wrong InstanceID)."}};
}

std::vector<KeyRule> instanceIDOfMethods(int missingValue, CMPIrc wrongCode)
{
    return {{.name = "InstanceID",
             .missing = "Invalid selector(Could not get InstanceID of instance.)",
             .wrong = "This class name does not exist (wrong InstanceID).",
             .wrongCode = wrongCode,
             .missingValue = missingValue}};
}

std::vector<KeyRule> systemKeys()
{
    return {
        {.name = "SystemName",
         .missing = "Invalid selectors(Could not get systemName of instance.)",
         .wrong = "This instance does not exist (wrong SystemName).",
         .ignoreCase = true},
        {.name = "SystemCreationClassName",
         .missing = "Invalid selectors(Could not get SystemCreationClassName of instance.)",
         .wrong = "This class name does not exist (wrong SystemCreationClassName).",
         .ignoreCase = true},
        {.name = "CreationClassName",
         .missing = "Invalid selectors(Could not get CreationClassName of instance.)",
         .wrong = "This class name does not exist (wrong CreationClassName).",
         .ignoreCase = true},
    };
}

std::vector<KeyRule> namedSystemKeys(int returnValue)
{
    std::vector<KeyRule> rules = systemKeys();
    rules.insert(rules.begin(), {.name = "Name",
                                 .missing = "Invalid selectors(Could not get Name of instance.)",
                                 .wrong = "This instance does not exist (wrong Name.)",
                                 .ignoreCase = true});
    for (KeyRule &rule : rules) {
        rule.missingValue = rule.wrongValue = returnValue;
    }
    return rules;
}

namespace
{

using KeyRequest = std::function<Answer(const Path &)>;

/** How a request is answered whose key is missing or wrong. */
struct KeyAnswer {
    std::string text;
    CMPIrc code;
    int returnValue;   // of methods
    std::string trace; // of GetInstance
};
using KeyExpectation = std::function<void(const Answer &, const KeyAnswer &expected)>;

/** `target` with every key from the one after `rule` on made wrong, so that an early check of one of them
 * shows. */
Path withWrongRest(Path target, const std::vector<KeyRule> &rules, const KeyRule &rule)
{
    bool later = false;
    for (const KeyRule &each : rules) {
        if (later) {
            target = target.with(each.name, "wrong");
        }
        later = later || &each == &rule;
    }
    return target;
}

void checkKeys(const Path &target, const std::vector<KeyRule> &rules, const KeyRequest &request,
               const KeyExpectation &expect)
{
    {
        SCOPED_TRACE("the target itself");
        EXPECT_STATUS(request(target), CMPI_RC_OK, "");
    }
    for (const KeyRule &rule : rules) {
        SCOPED_TRACE("key " + rule.name);
        const Entry *good = findEntry(target.keys, rule.name);
        ASSERT_NE(good, nullptr) << "the target has no such key";
        const std::string text = good->value.text;
        const Path rest = withWrongRest(target, rules, rule);
        const KeyAnswer ifMissing = {rule.missing, rule.missingCode, rule.missingValue, ""};
        const KeyAnswer ifWrong = {rule.wrong, rule.wrongCode, rule.wrongValue, rule.wrongTrace};

        std::vector<NamedValue> missing = everyMissingString();
        missing.push_back({"a number", uint16(5)});
        missing.push_back({"a boolean", boolean(1)});
        missing.push_back({"a reference", reference(target)});
        for (const NamedValue &form : missing) {
            SCOPED_TRACE(form.name);
            expect(request(rest.with(rule.name, form.value)), ifMissing);
        }
        Value nullCharacters = chars("");
        nullCharacters.form = TextForm::noString;
        {
            SCOPED_TRACE("null characters");
            expect(request(rest.with(rule.name, nullCharacters)), ifMissing);
        }
        {
            SCOPED_TRACE("as characters");
            EXPECT_STATUS(request(target.with(rule.name, chars(text))), CMPI_RC_OK, "");
        }
        if (!rule.valueIsChecked) {
            continue;
        }
        for (const std::string &wrong : {std::string("wrong"), std::string(), text + " ", text + "1",
                                         text.substr(0, text.size() - 1), std::string(5000, 'x')}) {
            SCOPED_TRACE("'" + wrong.substr(0, 80) + "'");
            expect(request(rest.with(rule.name, wrong)), ifWrong);
            expect(request(rest.with(rule.name, chars(wrong))), ifWrong);
        }
        for (const std::string &cased : {otherCase(text), upperCase(text), lowerCase(text)}) {
            if (cased == text) {
                continue;
            }
            SCOPED_TRACE(cased);
            if (rule.ignoreCase) {
                EXPECT_STATUS(request(target.with(rule.name, cased)), CMPI_RC_OK, "");
                continue;
            }
            expect(request(rest.with(rule.name, cased)), ifWrong);
        }
    }
}

} // namespace

void checkKeysOfGetInstance(const TestedClass &tested, const Path &target, const std::vector<KeyRule> &rules)
{
    checkKeys(
        target, rules, [&](const Path &asked) { return get(tested, asked); },
        [&](const Answer &answer, const KeyAnswer &expected) {
            EXPECT_STATUS(answer, expected.code, expected.text);
            EXPECT_EQ(answer.returned.size(), 0u);
            EXPECT_EQ(answer.done, 0);
            EXPECT_SENT(answer, {});
            EXPECT_EQ(answer.trace, traceLine(tested, "CMPI GetInstance() called") + expected.trace);
        });
}

void checkKeysOfMethod(const TestedClass &tested, const Path &target, const std::string &method,
                       const Entries &arguments, const User &user, const std::vector<KeyRule> &rules,
                       CMPIType returnType)
{
    checkKeys(
        target, rules, [&](const Path &asked) { return invoke(tested, asked, method, arguments, user); },
        [&](const Answer &answer, const KeyAnswer &expected) {
            EXPECT_METHOD(answer, methodValue(returnType, expected.returnValue), expected.code,
                          expected.text);
            EXPECT_SENT(answer, {});
        });
    for (const KeyRule &rule : rules) {
        SCOPED_TRACE("an unknown method without the key " + rule.name);
        EXPECT_METHOD(invoke(tested, target.without(rule.name), "Reboot", {}, user),
                      methodValue(returnType, rule.missingValue), rule.missingCode, rule.missing);
    }
}

// ---- administrators ----

namespace
{

void expectRefused(const Answer &answer, CMPIrc code, const std::string &text, const Value &returnValue)
{
    EXPECT_METHOD(answer, returnValue, code, text);
    EXPECT_SENT(answer, {});
    for (const std::string &called : answer.calls) {
        EXPECT_FALSE(called.starts_with("Update") || called.starts_with("GetMonitorStatus")) << called;
    }
}

} // namespace

void checkAdministratorOnly(const TestedClass &tested, const Path &target, const std::string &method,
                            const Entries &arguments, CMPIType returnType, int failureValue)
{
    SCOPED_TRACE(method + " is for administrators");
    const auto by = [&](const User &user, const Entries &given) {
        return invoke(tested, target, method, given, user);
    };
    const auto lookUps = [](const Answer &answer) {
        return std::count_if(answer.calls.begin(), answer.calls.end(),
                             [](const std::string &called) { return called.starts_with("IsAdminUser("); });
    };

    std::vector<NamedValue> missing = everyMissingString();
    missing.push_back({"a number", uint32(0)});
    missing.push_back({"a boolean", boolean(1)});
    Value nullCharacters = chars("");
    nullCharacters.form = TextForm::noString;
    missing.push_back({"null characters", nullCharacters});
    for (const NamedValue &form : missing) {
        SCOPED_TRACE("credentials: " + form.name);
        const Answer answer = by(form.value, arguments);
        expectRefused(answer, CMPI_RC_ERR_FAILED, "Could not get user credentials",
                      methodValue(returnType, failureValue));
        EXPECT_EQ(lookUps(answer), 0);
        EXPECT_EQ(answer.trace.find("requesting user"), std::string::npos) << answer.trace;
    }

    for (const User &user : {User("admin"), chars("admin")}) {
        SCOPED_TRACE("the administrator, as " + typeName(user.type));
        const Answer answer = by(user, arguments);
        EXPECT_METHOD(answer, methodValue(returnType, 0), CMPI_RC_OK, "");
        EXPECT_EQ(lookUps(answer), 1);
        EXPECT_NE(answer.trace.find("AccountSetInstance: requesting user is admin\n"), std::string::npos);
        ASSERT_EQ(seam.printedBefore.size(), 1u);
        EXPECT_TRUE(seam.printedBefore[0].ends_with("AccountSetInstance: requesting user is admin\n"))
            << "the user is told before it is looked up";
        EXPECT_TRUE(!seam.errorTextBefore.empty() && seam.errorTextBefore[0] == " ")
            << "the errorText of IsAdminUser holds a single blank before";
    }

    // The rights come before the arguments.
    for (const Entries &given : {arguments, Entries{}}) {
        SCOPED_TRACE(given.empty() ? "without arguments" : "with arguments");
        for (const User &user : {User("operator"), chars("operator")}) {
            SCOPED_TRACE("no administrator, as " + typeName(user.type));
            const Answer answer = by(user, given);
            expectRefused(answer, CMPI_RC_ERR_ACCESS_DENIED,
                          "Operation not allowed for non-admin user credentials",
                          methodValue(returnType, failureValue));
            EXPECT_TRUE(answer.trace.ends_with("AccountSetInstance: requesting user is operator\n"))
                << answer.trace;
        }
        for (const char *name : {"nobody", "", "Admin"}) {
            SCOPED_TRACE("unknown user '" + std::string(name) + "'");
            const Answer answer = by(name, given);
            expectRefused(answer, CMPI_RC_ERR_FAILED, "The support library has failed.",
                          methodValue(returnType, failureValue));
            EXPECT_TRUE(
                answer.trace.ends_with(std::string("AccountSetInstance: requesting user is ") + name + "\n"))
                << answer.trace;
        }
    }

    for (const char flag : {'\x01', '\x02', '\x80', '\xFF'}) {
        SCOPED_TRACE("every flag but zero is an administrator's");
        seam.isAdministrator = flag;
        EXPECT_METHOD(by("admin", arguments), methodValue(returnType, 0), CMPI_RC_OK, "");
    }
    seam.isAdministrator = 1;

    const std::string usual = seam.errorText;
    const std::string full(249, 'e');
    for (const auto &[written, shown] : {std::pair(std::string(), std::string(" ")), std::pair(full, full),
                                         std::pair(std::string(300, 'e'), full)}) {
        SCOPED_TRACE("an error text of " + std::to_string(written.size()) + " characters");
        seam.errorText = written;
        expectRefused(by("nobody", arguments), CMPI_RC_ERR_FAILED, shown,
                      methodValue(returnType, failureValue));
    }
    seam.errorText = usual;
    for (const int result : {-1, 1, 80000000}) {
        SCOPED_TRACE("the look-up gives " + std::to_string(result));
        seam.returns("IsAdminUser", result);
        expectRefused(by("admin", arguments), CMPI_RC_ERR_FAILED, "The support library has failed.",
                      methodValue(returnType, failureValue));
    }
    seam.returns("IsAdminUser", 0);
}

void checkNoAdministratorNeeded(const TestedClass &tested, const Path &target, const std::string &method,
                                const Entries &arguments, CMPIType returnType)
{
    for (const User &user : {noUser(), User("operator"), User("nobody")}) {
        SCOPED_TRACE(method + " by " + describe(user));
        const Answer answer = invoke(tested, target, method, arguments, user);
        EXPECT_METHOD(answer, methodValue(returnType, 0), CMPI_RC_OK, "");
        for (const std::string &called : answer.calls) {
            EXPECT_FALSE(called.starts_with("IsAdminUser")) << called;
        }
    }
}

// ---- settings ----

namespace
{

/** A step of a send, made to fail. */
struct StepFailure {
    std::string function;
    int nth;
    int result;
    std::string text;
};

/** Every way in which a send fails after `before` exchanges with the engine that worked. */
std::vector<StepFailure> everyFailure(const ChannelSteps &steps, int before)
{
    std::vector<StepFailure> failures = {
        {"GetMonitorStatus", before + 1, BUSY, steps.busy},
        {"SpearEngineMessageQueueCreate", 2 * before + 1, -1, steps.sendQueue},
        {"SendStatusMessagetoSource", before + 1, -1, steps.send},
    };
    if (!steps.onlyMinusOneFails) {
        failures.push_back({"SpearEngineMessageQueueCreate", 2 * before + 1, 1, steps.sendQueue});
        failures.push_back({"SendStatusMessagetoSource", before + 1, 80000002, steps.send});
    }
    if (!steps.reply.empty()) {
        failures.push_back({"SpearEngineMessageQueueCreate", 2 * before + 2, -1, steps.receiveQueue});
        if (!steps.onlyMinusOneFails) {
            failures.push_back({"SpearEngineMessageQueueCreate", 2 * before + 2, 1, steps.receiveQueue});
        }
        failures.push_back({"RecvMessageFromSource", before + 1, -1, steps.reply});
        failures.push_back({"RecvMessageFromSource", before + 1, 5, steps.reply});
    }
    return failures;
}

/** The calls of one send that works. */
std::vector<std::string> callsOfSend(const ChannelSteps &steps)
{
    std::vector<std::string> calls = {"GetMonitorStatus(0)", "SpearEngineMessageQueueCreate(0)",
                                      "SendStatusMessagetoSource(100)"};
    if (!steps.reply.empty()) {
        calls.insert(calls.end(), {"SpearEngineMessageQueueCreate(3)", "RecvMessageFromSource(103)"});
    }
    return calls;
}

/** The calls up to and with the one that failed. */
std::vector<std::string> callsUpTo(const StepFailure &failure, const ChannelSteps &steps, int before)
{
    std::vector<std::string> calls = callsOfSend(steps);
    const bool receiving =
        failure.function == "SpearEngineMessageQueueCreate" && failure.nth == 2 * before + 2;
    const std::string last = receiving ? "SpearEngineMessageQueueCreate(3)" : failure.function + "(";
    for (size_t i = 0; i < calls.size(); ++i) {
        if (calls[i].starts_with(last)) {
            calls.resize(i + 1);
            break;
        }
    }
    return calls;
}

std::string describe(const StepFailure &failure)
{
    return failure.function + " call " + std::to_string(failure.nth) + " gives " +
           std::to_string(failure.result);
}

} // namespace

void checkSender(const std::function<int(char *errorText)> &sender, const std::string &golden,
                 const ChannelSteps &steps)
{
    seam.reset();
    {
        const SetterAnswer answer = call(sender);
        EXPECT_EQ(answer.result, 0);
        EXPECT_EQ(answer.errorText, " ") << "nothing is written on success";
        EXPECT_SENT(answer, {golden});
        EXPECT_CALLS(answer, {callsOfSend(steps)});
        EXPECT_EQ(seam.queueIdBefore, std::vector<int>(steps.reply.empty() ? 1 : 2, -1));
        for (const SentMessage &reply : seam.received) {
            EXPECT_EQ(hex(reply.bytes), hex({})) << "the reply's record is empty before the receive";
        }
    }
    for (const int status : {0, 2, -1, 80000001}) {
        SCOPED_TRACE("the engine's status is " + std::to_string(status));
        seam.reset();
        seam.status = status;
        EXPECT_EQ(call(sender).result, 0) << "only busy is busy";
    }
    for (const StepFailure &failure : everyFailure(steps, 0)) {
        SCOPED_TRACE(describe(failure));
        seam.reset();
        seam.returnsAt(failure.function, failure.nth, failure.result);
        const SetterAnswer answer = call(sender);
        EXPECT_EQ(answer.result, -1);
        EXPECT_EQ(answer.errorText, failure.text);
        EXPECT_CALLS(answer, {callsUpTo(failure, steps, 0)});
    }
    seam.reset();
}

namespace
{

void prepare(const SettingMethod &setting)
{
    seam.reset();
    if (setting.prepare) {
        setting.prepare();
    }
}

Answer invokeSetting(const SettingMethod &setting, const Value &argument)
{
    Entries arguments = setting.otherArguments;
    arguments.push_back({setting.argument, argument});
    return invoke(*setting.tested, setting.target, setting.method, arguments,
                  setting.administrator ? User("admin") : noUser());
}

void expectRefused(const SettingMethod &setting, const Value &argument, CMPIrc code, const std::string &text)
{
    prepare(setting);
    const Answer answer = invokeSetting(setting, argument);
    EXPECT_METHOD(answer, methodValue(setting.returnType, 2), code, text);
    // A class that reads its group afresh first has asked for it by then, or not, but nothing else was sent.
    std::vector<std::string> messages = setting.sentBefore;
    messages.resize(std::min(messages.size(), answer.sent.size()));
    EXPECT_TRUE(hasSent(answer.sent, messages));
}

void expectSent(const SettingMethod &setting, const Value &argument, const std::string &golden)
{
    prepare(setting);
    const Answer answer = invokeSetting(setting, argument);
    EXPECT_METHOD(answer, methodValue(setting.returnType, 0), CMPI_RC_OK, "");
    std::vector<std::string> messages = setting.sentBefore;
    messages.push_back(golden);
    EXPECT_TRUE(hasSent(answer.sent, messages));
    const std::vector<std::string> send = callsOfSend(setting.steps);
    const size_t skipped = answer.calls.size() - std::min(answer.calls.size(), send.size());
    const std::vector<std::string> last(answer.calls.begin() + static_cast<std::ptrdiff_t>(skipped),
                                        answer.calls.end());
    EXPECT_EQ(last, send);
}

/** Texts that stand for `value`; the first is the plain one. */
std::vector<std::string> textsFor(ArgumentIs kind, int value)
{
    const std::string plain = std::to_string(value);
    switch (kind) {
    case ArgumentIs::toggle:
        if (value == 1) {
            return {"1", "true", "TRUE", "True", "tRuE"};
        }
        return {"0", "false", "FALSE", "False", "fAlSe"};
    case ArgumentIs::wholeDecimal:
        // strtol passes over leading blanks and takes a sign.
        return {plain,
                " " + plain,
                "\t" + plain,
                "\n" + plain,
                value < 0 ? plain : "+" + plain,
                value < 0 ? plain : "000" + plain};
    case ArgumentIs::leadingDecimal:
        return {plain,
                " " + plain,
                value < 0 ? plain : "+" + plain,
                value < 0 ? plain : "000" + plain,
                plain + " ",
                plain + "x",
                plain + ".9",
                plain + " 7"};
    }
    return {};
}

/** Texts that are no value of the kind at all. */
std::vector<std::string> malformedTexts(ArgumentIs kind)
{
    switch (kind) {
    case ArgumentIs::toggle:
        return {"yes",   "no",        "on",  "2",          "-1",
                "01",    "00",        " 1",  "1 ",         "true ",
                " true", "truefalse", "tru", "1x",         "+1",
                "0x1",   "1.0",       " ",   "4294967297", std::string(5000, '1')};
    case ArgumentIs::wholeDecimal:
        return {"abc",
                "1x",
                "100x",
                "1 ",
                "1.5",
                "1.0",
                "0x10",
                "1e1",
                "--1",
                "+-1",
                "+",
                "-",
                " ",
                "true",
                "1,000",
                "1\n",
                std::string(5000, 'x')};
    case ArgumentIs::leadingDecimal:
        return {};
    }
    return {};
}

/** Numbers beyond int, and beyond long, that keep no valid number in their low bits. */
std::vector<std::string> hugeNumbers(int min, int max)
{
    return {"2147483647",
            "2147483648",
            "-2147483648",
            "-2147483649",
            std::to_string(4294967296 + min),
            std::to_string(4294967296 + max),
            std::to_string(-4294967296 + min),
            std::to_string(65536 + min),
            std::to_string(65536 + max),
            "9223372036854775807",
            "9223372036854775808",
            "-9223372036854775808",
            "-9223372036854775809",
            "18446744073709551616",
            "18446744073709551617",
            "100000000000000000000000000000000000000000",
            std::string(5000, '9')};
}

void checkIntake(const SettingMethod &setting)
{
    for (const NamedValue &form : everyMissingString()) {
        SCOPED_TRACE("argument: " + form.name);
        expectRefused(setting, form.value, CMPI_RC_ERR_INVALID_PARAMETER, setting.missing);
    }
    for (const Value &other : {chars("1"), uint16(1), uint32(1), sint32(1), boolean(1), real32(1),
                               dateTime(1), stringArray({"1"}), reference(setting.target)}) {
        SCOPED_TRACE("argument: " + describe(other));
        expectRefused(setting, other, CMPI_RC_ERR_INVALID_PARAMETER, setting.invalidType);
    }
    SCOPED_TRACE("an empty argument");
    expectRefused(setting, "", CMPI_RC_ERR_INVALID_PARAMETER, setting.empty);
}

void checkRange(const SettingMethod &setting)
{
    if (setting.range.empty()) {
        return;
    }
    if (setting.kind == ArgumentIs::toggle) {
        // 0 and 1 are in range; the check is there all the same.
        SettingMethod refusing = setting;
        refusing.prepare = [&setting] {
            if (setting.prepare) {
                setting.prepare();
            }
            seam.returns("ValidateInputArgs", -1);
        };
        SCOPED_TRACE("the range check refuses");
        expectRefused(refusing, "true", CMPI_RC_ERR_INVALID_PARAMETER, setting.range);
        expectRefused(refusing, "0", CMPI_RC_ERR_INVALID_PARAMETER, setting.range);
        return;
    }
    std::vector<std::string> outside = hugeNumbers(setting.min, setting.max);
    for (const int beyond : {setting.min - 1, setting.max + 1}) {
        outside.push_back(std::to_string(beyond));
    }
    if (setting.kind == ArgumentIs::leadingDecimal && setting.min > 0) {
        outside.insert(outside.end(), {"abc", " ", "x5", "-", "."});
    }
    for (const std::string &text : outside) {
        SCOPED_TRACE("argument '" + text.substr(0, 80) + "'");
        expectRefused(setting, text, CMPI_RC_ERR_INVALID_PARAMETER, setting.range);
    }
}

} // namespace

void checkSettingMethod(const SettingMethod &setting)
{
    SCOPED_TRACE(setting.method);
    ASSERT_NE(setting.tested, nullptr);
    checkIntake(setting);
    for (const std::string &text : malformedTexts(setting.kind)) {
        SCOPED_TRACE("argument '" + text.substr(0, 80) + "'");
        expectRefused(setting, text, CMPI_RC_ERR_INVALID_PARAMETER, setting.malformed);
    }
    checkRange(setting);
    for (const std::string &text : textsFor(setting.kind, setting.min)) {
        SCOPED_TRACE("argument '" + text + "'");
        expectSent(setting, text, setting.sentAtMin);
    }
    for (const std::string &text : textsFor(setting.kind, setting.max)) {
        SCOPED_TRACE("argument '" + text + "'");
        expectSent(setting, text, setting.sentAtMax);
    }
    const std::string good = textsFor(setting.kind, setting.max)[0];
    const int before = static_cast<int>(setting.sentBefore.size());
    checkFailuresOfSend([&] { return invokeSetting(setting, good); }, setting.steps, before, setting.prepare,
                        setting.returnType);
    prepare(setting);
}

namespace
{

/** `expect` judges the answer to a request in which the step failed, which is the last thing that is done. */
void checkFailures(const std::function<Answer()> &request, const ChannelSteps &steps, int before,
                   const std::function<void()> &prepare,
                   const std::function<void(const Answer &, const std::string &text)> &expect)
{
    for (const StepFailure &failure : everyFailure(steps, before)) {
        SCOPED_TRACE(describe(failure));
        seam.reset();
        if (prepare) {
            prepare();
        }
        seam.returnsAt(failure.function, failure.nth, failure.result);
        const Answer answer = request();
        expect(answer, failure.text);
        ASSERT_FALSE(answer.calls.empty());
        EXPECT_TRUE(answer.calls.back().starts_with(failure.function + "(")) << answer.calls.back();
        EXPECT_EQ(seam.count(failure.function), failure.nth);
    }
    seam.reset();
}

} // namespace

void checkFailuresOfSend(const std::function<Answer()> &method, const ChannelSteps &steps, int before,
                         const std::function<void()> &prepare, CMPIType returnType)
{
    checkFailures(method, steps, before, prepare, [&](const Answer &answer, const std::string &text) {
        EXPECT_METHOD(answer, methodValue(returnType, 2), CMPI_RC_ERR_FAILED, text);
    });
}

void checkFailuresOfRefresh(const TestedClass &tested, const Path &target, int before)
{
    for (const Read &read : readsOf(tested, target)) {
        SCOPED_TRACE(std::string(read.name) + " of " + tested.name);
        checkFailures(read.run, refreshSteps, before, {}, [](const Answer &answer, const std::string &text) {
            EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, text);
            EXPECT_EQ(answer.returned.size(), 0u);
            EXPECT_EQ(answer.done, 0);
        });
    }
}

void checkStringArgument(const TestedClass &tested, const Path &target, const std::string &method,
                         const std::string &argument, const std::string &missing,
                         const Entries &otherArguments, const User &user, CMPIType returnType,
                         const std::string &invalidType, const std::string &empty)
{
    SCOPED_TRACE(method + ", argument " + argument);
    const auto refuses = [&](const Value &value, const std::string &text) {
        Entries arguments = otherArguments;
        arguments.push_back({argument, value});
        const Answer answer = invoke(tested, target, method, arguments, user);
        EXPECT_METHOD(answer, methodValue(returnType, 2), CMPI_RC_ERR_INVALID_PARAMETER, text);
        EXPECT_SENT(answer, {});
    };
    for (const NamedValue &form : everyMissingString()) {
        SCOPED_TRACE(form.name);
        refuses(form.value, missing);
    }
    for (const Value &other : {chars("1"), uint16(1), boolean(1), stringArray({"x"}), reference(target)}) {
        SCOPED_TRACE(test_support::describe(other));
        refuses(other, invalidType);
    }
    SCOPED_TRACE("empty");
    refuses("", empty);
}

// ---- building ----

void checkBuildFailures(const TestedClass &tested, const Path &reference,
                        const std::vector<std::string> &records, bool array)
{
    std::vector<Read> reads = readsOf(tested, reference);
    const Read names = reads[0];
    reads.erase(reads.begin());
    if (!findEntry(reference.keys, "InstanceID")) {
        reads.pop_back();
    }

    const auto expectNothing = [&](const Read &read, const char *text) {
        SCOPED_TRACE(std::string(read.name) + " of " + tested.name);
        const Answer answer = read.run();
        EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, text);
        EXPECT_EQ(answer.returned.size(), 0u) << answer.text();
        EXPECT_EQ(answer.done, 0);
    };
    const auto fails = [&](const Read &read, const char *text, const std::string &function, Fault fault) {
        SCOPED_TRACE(function + " " + describe(fault));
        broker.freeObjects();
        faults.arm(function, 1, fault);
        expectNothing(read, text);
        EXPECT_EQ(faults.struck(), function);
        faults.disarm();
    };
    const char *const noInstance = "Couldn't build instance";
    for (const Fault fault : everyFlaw) {
        fails(names, "Couldn't build objectpath", "newObjectPath", fault);
        for (const Read &read : reads) {
            fails(read, noInstance, "newObjectPath", fault);
            fails(read, noInstance, "newInstance", fault);
            if (array) {
                fails(read, noInstance, "newArray", fault);
            }
        }
    }
    for (const std::string &record : records) {
        for (const int result : {-1, 1, 80000001}) {
            SCOPED_TRACE(record + " gives " + std::to_string(result));
            seam.returns(record, result);
            for (const Read &read : reads) {
                expectNothing(read, noInstance);
            }
            seam.returns(record, 0);
        }
    }
}

namespace
{

/** The calls of a builder that could not make its object, and says so with the text. */
template <typename Make>
std::vector<std::string> callsOfFailure(const Builders &builders, const Make &make, const std::string &text)
{
    const Built built = build(*builders.tested, builders.reference, make);
    EXPECT_FALSE(built.path || built.instance);
    EXPECT_EQ(built.rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(built.message, text);
    return built.calls;
}

} // namespace

void checkBuilders(const Builders &builders)
{
    SCOPED_TRACE(std::string("the builders of ") + builders.tested->name);
    const std::vector<std::string> none;
    std::vector<std::string> functions;
    std::vector<std::string> calls;
    for (const RecordRead &record : builders.records) {
        functions.push_back(record.call.substr(0, record.call.find('(')));
        calls.push_back(record.call);
    }
    for (const Fault fault : everyFlaw) {
        SCOPED_TRACE(describe(fault));
        const auto arm = [&](const char *function, int nth) { faults.arm(function, nth, fault); };
        arm("newObjectPath", 1);
        EXPECT_EQ(callsOfFailure(builders, builders.makePath, "Create CMPIObjectPath failed."), none);
        arm("newObjectPath", 1);
        EXPECT_EQ(callsOfFailure(builders, builders.makeInst, "Create CMPIObjectPath failed."), none);
        arm("newInstance", 1);
        EXPECT_EQ(callsOfFailure(builders, builders.makeInst, "Create CMPIInstance failed."),
                  builders.recordsFirst ? calls : none);
        for (int array = 1; array <= builders.arrays; ++array) {
            SCOPED_TRACE("array " + std::to_string(array));
            arm("newArray", array);
            callsOfFailure(builders, builders.makeInst, "Failed to initialize array.");
        }
        faults.disarm();
    }
    for (int array = 1; array <= builders.arrays; ++array) {
        SCOPED_TRACE("the element of array " + std::to_string(array) + " cannot be set");
        faults.arm("setElementAt", array);
        callsOfFailure(builders, builders.makeInst, "Failed to initialize array.");
    }
    faults.disarm();
    for (size_t i = 0; i < functions.size(); ++i) {
        const std::vector<std::string> upToThis(calls.begin(),
                                                calls.begin() + static_cast<std::ptrdiff_t>(i + 1));
        for (const int result : {-1, 1, 80000001}) {
            SCOPED_TRACE(calls[i] + " gives " + std::to_string(result));
            seam.returns(functions[i], result);
            EXPECT_EQ(callsOfFailure(builders, builders.makeInst, builders.records[i].failure), upToThis);
            seam.returns(functions[i], 0);
        }
    }
    const Built path = build(*builders.tested, builders.reference, builders.makePath);
    EXPECT_EQ(path.rc, CMPI_RC_OK);
    EXPECT_TRUE(path.path);
    const Built instance = build(*builders.tested, builders.reference, builders.makeInst);
    EXPECT_EQ(instance.rc, CMPI_RC_OK);
    EXPECT_TRUE(instance.instance);
    EXPECT_EQ(instance.calls, calls);

    checkBuildFailures(*builders.tested, builders.reference, functions, builders.arrays > 0);
}

// ---- torture ----

namespace
{

/** Whose failures the library passes over on purpose: an object manager refuses a key or a property only
 * where its class definition lacks it, and gets the rest of the object all the same; a date that cannot be
 * made stays null; and an object manager that cannot take an answer has given up the request itself. */
const std::vector<std::string> passedOver = {"addKey",     "setProperty",    "newDateTimeFromBinary",
                                             "returnData", "returnInstance", "returnObjectPath",
                                             "returnDone"};

bool contains(const std::vector<std::string> &names, const std::string &name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

} // namespace

void checkTorture(const std::function<Answer()> &operation, const Torture &torture)
{
    const auto prepare = [&](int nth, Fault fault) {
        faults.disarm();
        broker.freeObjects();
        if (torture.prepare) {
            torture.prepare();
        }
        faults.arm(nth, fault);
    };
    prepare(0, Fault::none);
    const Answer whole = operation();
    const int calls = faults.calls();
    ASSERT_GT(calls, 0) << "nothing in this operation can fail";

    for (const Fault fault : {Fault::fails, Fault::silent, Fault::noHandle}) {
        for (int nth = 1; nth <= calls; ++nth) {
            prepare(nth, fault);
            const Answer answer = operation();
            const std::string struck = faults.struck();
            faults.disarm();
            SCOPED_TRACE("call " + std::to_string(nth) + " of " + std::to_string(calls) + ", " + struck +
                         ", " + describe(fault));
            EXPECT_NE(struck, "") << "the operation does not repeat its calls";
            const bool handingOver = struck == "returnData" || struck == "returnDone";
            const bool method = whole.returned.size() == 1 && (whole.returned[0].type == CMPI_uint32 ||
                                                               whole.returned[0].type == CMPI_uint8);
            // A method called on a path of no readable class may answer with OK and a value that tells of
            // failure.
            const bool mayRefuse = method && (whole.rc != CMPI_RC_OK || whole.returned[0].integer == 0);
            const bool failed = answer.rc != CMPI_RC_OK ||
                                (mayRefuse && answer.returned.size() == 1 && answer.returned[0].integer != 0);
            if (!failed && !contains(torture.harmless, struck) && !contains(passedOver, struck)) {
                EXPECT_TRUE(answer.text() == whole.text()) << "neither a failure nor the whole answer:\n"
                                                           << answer.text() << "the whole answer:\n"
                                                           << whole.text();
            }
            // A method says both ways whether it failed.
            if (!method || handingOver) {
                continue;
            }
            EXPECT_EQ(answer.done, 1);
            EXPECT_EQ(answer.returned.size(), 1u) << answer.text();
            if (answer.returned.size() == 1 && answer.rc != CMPI_RC_OK) {
                EXPECT_NE(answer.returned[0].integer, 0u) << answer.text();
            }
        }
    }
    faults.disarm();
}

void checkTortureOfReads(const TestedClass &tested, const Path &target, const Torture &torture)
{
    for (const Read &read : readsOf(tested, target)) {
        SCOPED_TRACE(std::string(read.name) + " of " + tested.name);
        checkTorture(read.run, torture);
    }
}

} // namespace test_support
