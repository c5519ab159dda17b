// SPDX-License-Identifier: Apache-2.0
#include "provider_fixture.h"

#include <cctype>
#include <cstring>

namespace test_support
{

namespace
{

Value messageOf(const CMPIStatus &status)
{
    return status.msg ? Value(textOf(status.msg, "(a message without text)")) : absent();
}

void checkNothingLeft()
{
    EXPECT_EQ(broker.unreleasedClones(), 0) << "clones that were not released";
    EXPECT_EQ(seam.unfreedLines, 0) << "output of commands that was not freed";
}

CMPIInstanceMI *instanceMI(const TestedClass &tested)
{
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    CMPIInstanceMI *mi = tested.createInstanceMI(&broker, contextOf(noUser()), &status);
    EXPECT_NE(mi, nullptr);
    return mi;
}

CMPIAssociationMI *associationMI(const TestedClass &tested)
{
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    CMPIAssociationMI *mi = tested.createAssociationMI(&broker, contextOf(noUser()), &status);
    EXPECT_NE(mi, nullptr);
    return mi;
}

} // namespace

CMPIContext *contextOf(const User &user)
{
    return broker.newContext({{"CMPIInvocationFlags", uint32(0)}, {"CMPIPrincipal", user}});
}

Answer collect(const std::function<CMPIStatus(const CMPIResult *)> &operation)
{
    seam.forgetCalls();
    broker.upCalls.clear();
    forgetTrace();
    const ResultObject *result = broker.newResult();
    const CMPIStatus status = operation(result);

    Answer answer;
    answer.rc = status.rc;
    answer.hasMessage = status.msg != nullptr;
    answer.message = messageOf(status).text;
    answer.returned = result->returned;
    answer.done = result->done;
    answer.sent = seam.sent;
    answer.calls = seam.calls;
    answer.upCalls = broker.upCalls;
    answer.trace = traceText();
    checkNothingLeft();
    return answer;
}

std::vector<Path> Answer::paths() const
{
    std::vector<Path> found;
    for (const Value &value : returned) {
        if (value.type == CMPI_ref && value.path) {
            found.push_back(*value.path);
        } else {
            ADD_FAILURE() << "not a path: " << describe(value);
        }
    }
    return found;
}

std::vector<Instance> Answer::instances() const
{
    std::vector<Instance> found;
    for (const Value &value : returned) {
        if (value.type == CMPI_instance && value.instance) {
            found.push_back(*value.instance);
        } else {
            ADD_FAILURE() << "not an instance: " << describe(value);
        }
    }
    return found;
}

Path Answer::path() const
{
    const std::vector<Path> all = paths();
    EXPECT_EQ(all.size(), 1u) << text();
    return all.size() == 1 ? all[0] : Path{};
}

Instance Answer::instance() const
{
    const std::vector<Instance> all = instances();
    EXPECT_EQ(all.size(), 1u) << text();
    return all.size() == 1 ? all[0] : Instance{};
}

std::string Answer::text() const
{
    std::string text = "status " + std::to_string(rc) + (hasMessage ? " \"" + message + "\"" : "") +
                       ", closed " + std::to_string(done) + " times\n";
    for (const Value &value : returned) {
        text += describe(value) + "\n";
    }
    return text;
}

Answer enumerateNames(const TestedClass &tested, const Path &reference)
{
    CMPIInstanceMI *mi = instanceMI(tested);
    return collect([&](const CMPIResult *result) {
        return mi->ft->enumerateInstanceNames(mi, contextOf(noUser()), result, broker.newPath(reference));
    });
}

Answer enumerate(const TestedClass &tested, const Path &reference)
{
    CMPIInstanceMI *mi = instanceMI(tested);
    return collect([&](const CMPIResult *result) {
        return mi->ft->enumerateInstances(mi, contextOf(noUser()), result, broker.newPath(reference),
                                          nullptr);
    });
}

Answer get(const TestedClass &tested, const Path &reference)
{
    CMPIInstanceMI *mi = instanceMI(tested);
    return collect([&](const CMPIResult *result) {
        return mi->ft->getInstance(mi, contextOf(noUser()), result, broker.newPath(reference), nullptr);
    });
}

Answer create(const TestedClass &tested, const Path &reference, const Instance &given)
{
    CMPIInstanceMI *mi = instanceMI(tested);
    return collect([&](const CMPIResult *result) {
        return mi->ft->createInstance(mi, contextOf(noUser()), result, broker.newPath(reference),
                                      broker.newInstance(given));
    });
}

Answer modify(const TestedClass &tested, const Path &reference, const Instance &given, const User &user)
{
    CMPIInstanceMI *mi = instanceMI(tested);
    return collect([&](const CMPIResult *result) {
        return mi->ft->modifyInstance(mi, contextOf(user), result, broker.newPath(reference),
                                      broker.newInstance(given), nullptr);
    });
}

Answer remove(const TestedClass &tested, const Path &reference)
{
    CMPIInstanceMI *mi = instanceMI(tested);
    return collect([&](const CMPIResult *result) {
        return mi->ft->deleteInstance(mi, contextOf(noUser()), result, broker.newPath(reference));
    });
}

Answer query(const TestedClass &tested, const Path &reference, const char *text, const char *language)
{
    CMPIInstanceMI *mi = instanceMI(tested);
    return collect([&](const CMPIResult *result) {
        return mi->ft->execQuery(mi, contextOf(noUser()), result, broker.newPath(reference), text, language);
    });
}

Answer invoke(const TestedClass &tested, const Path &reference, const std::string &method,
              const Entries &arguments, const User &user)
{
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    CMPIMethodMI *mi = tested.createMethodMI(&broker, contextOf(noUser()), &status);
    EXPECT_NE(mi, nullptr);
    ArgsObject *out = broker.newArgs({});
    const Answer answer = collect([&](const CMPIResult *result) {
        return mi->ft->invokeMethod(mi, contextOf(user), result, broker.newPath(reference), method.c_str(),
                                    broker.newArgs(arguments), out);
    });
    EXPECT_EQ(describe(out->entries), "") << "no method of the library has output arguments";
    return answer;
}

Answer associators(const TestedClass &tested, const Path &source, const Filters &filters)
{
    CMPIAssociationMI *mi = associationMI(tested);
    return collect([&](const CMPIResult *result) {
        return mi->ft->associators(mi, contextOf(noUser()), result, broker.newPath(source),
                                   filters.associationClass, filters.resultClass, filters.role,
                                   filters.resultRole, nullptr);
    });
}

Answer associatorNames(const TestedClass &tested, const Path &source, const Filters &filters)
{
    CMPIAssociationMI *mi = associationMI(tested);
    return collect([&](const CMPIResult *result) {
        return mi->ft->associatorNames(mi, contextOf(noUser()), result, broker.newPath(source),
                                       filters.associationClass, filters.resultClass, filters.role,
                                       filters.resultRole);
    });
}

Answer references(const TestedClass &tested, const Path &source, const Filters &filters)
{
    CMPIAssociationMI *mi = associationMI(tested);
    return collect([&](const CMPIResult *result) {
        return mi->ft->references(mi, contextOf(noUser()), result, broker.newPath(source),
                                  filters.associationClass, filters.role, nullptr);
    });
}

Answer referenceNames(const TestedClass &tested, const Path &source, const Filters &filters)
{
    CMPIAssociationMI *mi = associationMI(tested);
    return collect([&](const CMPIResult *result) {
        return mi->ft->referenceNames(mi, contextOf(noUser()), result, broker.newPath(source),
                                      filters.associationClass, filters.role);
    });
}

namespace
{

template <typename Make, typename Take>
Built runBuilder(const TestedClass &tested, const Path &reference, const Make &make, const Take &take)
{
    instanceMI(tested);
    const PathObject *from = broker.newPath(reference);
    seam.forgetCalls();
    forgetTrace();
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    const auto *made = make(from, &status);
    Built built;
    built.rc = status.rc;
    built.message = messageOf(status).text;
    if (made) {
        take(built, made);
    }
    built.calls = seam.calls;
    built.trace = traceText();
    return built;
}

} // namespace

Built build(const TestedClass &tested, const Path &reference,
            const std::function<CMPIObjectPath *(const CMPIObjectPath *, CMPIStatus *)> &makePath)
{
    return runBuilder(tested, reference, makePath, [](Built &built, const CMPIObjectPath *made) {
        built.path = static_cast<const PathObject *>(made)->path;
    });
}

Built build(const TestedClass &tested, const Path &reference,
            const std::function<CMPIInstance *(const CMPIObjectPath *, CMPIStatus *)> &makeInst)
{
    return runBuilder(tested, reference, makeInst, [](Built &built, const CMPIInstance *made) {
        built.instance = static_cast<const InstanceObject *>(made)->instance;
    });
}

SetterAnswer call(const std::function<int(char *errorText)> &setter)
{
    seam.forgetCalls();
    forgetTrace();
    // Exactly its size on the heap, so that the sanitizer sees the first character too many.
    const auto buffer = std::make_unique<char[]>(ERROR_TEXT_SIZE);
    memset(buffer.get(), 0, ERROR_TEXT_SIZE);
    buffer[0] = ' ';
    const int result = setter(buffer.get());
    EXPECT_NE(memchr(buffer.get(), '\0', ERROR_TEXT_SIZE), nullptr)
        << "an errorText without its terminating zero";
    buffer[ERROR_TEXT_SIZE - 1] = '\0';
    return {result, buffer.get(), seam.sent, seam.calls, traceText()};
}

// ---- expectations ----

testing::AssertionResult hasStatus(const Answer &answer, CMPIrc rc, const std::string &message)
{
    const auto says = [](CMPIrc code, bool has, const std::string &text) {
        return std::to_string(code) + (has ? " \"" + text + "\"" : " without a message");
    };
    if (answer.rc == rc && answer.message == message && answer.hasMessage == !message.empty()) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "status is " << says(answer.rc, answer.hasMessage, answer.message)
                                       << "\n expected " << says(rc, !message.empty(), message);
}

testing::AssertionResult isMethodAnswer(const Answer &answer, const Value &returnValue, CMPIrc rc,
                                        const std::string &message)
{
    testing::AssertionResult status = hasStatus(answer, rc, message);
    if (!status) {
        return status << "\n" << answer.text();
    }
    if (answer.returned != std::vector<Value>{returnValue} || answer.done != 1) {
        return testing::AssertionFailure()
               << "expected the return value " << describe(returnValue) << " and the result closed once:\n"
               << answer.text();
    }
    return testing::AssertionSuccess();
}

std::array<uint8_t, 40> bytes(const std::string &typed)
{
    std::array<uint8_t, 40> result = {};
    std::string text = typed;
    const bool zeros = text.ends_with("...");
    if (zeros) {
        text.resize(text.size() - 3);
    }
    std::string digits;
    for (const char c : text) {
        if (!isspace(static_cast<unsigned char>(c))) {
            digits += c;
        }
    }
    const bool complete = zeros ? digits.size() < 80 : digits.size() == 80;
    EXPECT_TRUE(complete && digits.size() % 2 == 0) << "not the 40 bytes of a message: " << typed;
    for (size_t i = 0; i + 1 < digits.size() && i / 2 < result.size(); i += 2) {
        char *end = nullptr;
        const std::string pair = digits.substr(i, 2);
        result[i / 2] = static_cast<uint8_t>(strtoul(pair.c_str(), &end, 16));
        EXPECT_EQ(*end, '\0') << "not hexadecimal: " << typed;
    }
    return result;
}

testing::AssertionResult hasSent(const std::vector<SentMessage> &sent,
                                 const std::vector<std::string> &expected)
{
    std::string is;
    std::string should;
    for (const SentMessage &message : sent) {
        is += "queue " + std::to_string(message.queueId) + ": " + hex(message.bytes) + "\n";
    }
    for (const std::string &typed : expected) {
        should += "queue 100: " + hex(bytes(typed)) + "\n";
    }
    if (is == should) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "messages sent:\n" << is << "expected:\n" << should;
}

testing::AssertionResult hasEntries(const Entries &entries, const Entries &expected)
{
    if (entries == expected) {
        return testing::AssertionSuccess();
    }
    std::string difference;
    for (size_t i = 0; i < std::max(entries.size(), expected.size()); ++i) {
        const std::string is = i < entries.size() ? describe({entries[i]}) : "nothing\n";
        const std::string should = i < expected.size() ? describe({expected[i]}) : "nothing\n";
        if (is != should) {
            difference += "  " + std::to_string(i) + ": is " + is + "     expected " + should;
        }
    }
    return testing::AssertionFailure() << "differences:\n" << difference;
}

} // namespace test_support
