// SPDX-License-Identifier: Apache-2.0
// The one header of the library's test suites: calls of a class's operations through its factories, what they
// answered, and expectations of it.
//
//     METHOD_CLASS(Monitor);
//
//     TEST(Monitor, SetNameNeedsAnAdministrator)
//     {
//         const Answer answer = invoke(Monitor, monitorPath(), "SetName", {{"Name", "Studio 8"}},
//         "operator"); EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_ACCESS_DENIED,
//                       "Operation not allowed for non-admin user credentials");
//         EXPECT_SENT(answer, {});
//     }
//
// The scripted monitor is `seam`, the broker is `broker`; both are as new before every test.
#ifndef TEST_SUPPORT_PROVIDER_FIXTURE_H
#define TEST_SUPPORT_PROVIDER_FIXTURE_H

#include "cmpi_values.h"
#include "faults.h"
#include "recording_broker.h"
#include "scripted_seam.h"
#include "trace_capture.h"
#include <cmpi/cmpidt.h>
#include <cmpi/cmpift.h>
#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

namespace test_support
{

/** A class under test: its name and its factories. */
struct TestedClass {
    const char *name;
    CMPIInstanceMI *(*createInstanceMI)(const CMPIBroker *, const CMPIContext *, CMPIStatus *);
    CMPIMethodMI *(*createMethodMI)(const CMPIBroker *, const CMPIContext *, CMPIStatus *);
    CMPIAssociationMI *(*createAssociationMI)(const CMPIBroker *, const CMPIContext *, CMPIStatus *);
};

// Declares the factories of ZT_Marovelton_<Class> and a constant `Class` to hand to the functions below.
#define TESTED_FACTORY(Class, Kind)                                                                          \
    extern "C" CMPI##Kind##MI *ZT_Marovelton_##Class##_Create_##Kind##MI(const CMPIBroker *,                 \
                                                                         const CMPIContext *, CMPIStatus *)
#define METHOD_CLASS(Class)                                                                                  \
    TESTED_FACTORY(Class, Instance);                                                                         \
    TESTED_FACTORY(Class, Method);                                                                           \
    [[maybe_unused]] static const test_support::TestedClass Class = {                                        \
        "ZT_Marovelton_" #Class, ZT_Marovelton_##Class##_Create_InstanceMI,                                  \
        ZT_Marovelton_##Class##_Create_MethodMI, nullptr}
#define ASSOCIATION_CLASS(Class)                                                                             \
    TESTED_FACTORY(Class, Instance);                                                                         \
    TESTED_FACTORY(Class, Association);                                                                      \
    [[maybe_unused]] static const test_support::TestedClass Class = {                                        \
        "ZT_Marovelton_" #Class, ZT_Marovelton_##Class##_Create_InstanceMI, nullptr,                         \
        ZT_Marovelton_##Class##_Create_AssociationMI}

// ---- what an operation answered ----

struct Answer {
    CMPIrc rc = CMPI_RC_OK;
    bool hasMessage = false;
    std::string message;              // "" without one
    std::vector<Value> returned;      // everything handed to the result, in order
    int done = 0;                     // how often the result was closed
    std::vector<SentMessage> sent;    // to the engine's queue
    std::vector<std::string> calls;   // of the support library
    std::vector<std::string> upCalls; // to other classes
    std::string trace;                // what was printed

    /** The returned data, which must all be of the kind. */
    std::vector<Path> paths() const;
    std::vector<Instance> instances() const;
    /** The one returned path or instance; an empty one, and a failure, if there is not exactly one. */
    Path path() const;
    Instance instance() const;
    /** Status and returned data as text, to compare answers. */
    std::string text() const;
};

// ---- users ----

/** The requesting user as the context entry "CMPIPrincipal"; without one the entry is absent. */
using User = Value;
inline User noUser()
{
    return absent();
}

// ---- operations ----

Answer enumerateNames(const TestedClass &tested, const Path &reference);
Answer enumerate(const TestedClass &tested, const Path &reference);
Answer get(const TestedClass &tested, const Path &reference);
Answer create(const TestedClass &tested, const Path &reference, const Instance &given);
Answer modify(const TestedClass &tested, const Path &reference, const Instance &given,
              const User &user = noUser());
Answer remove(const TestedClass &tested, const Path &reference);
Answer query(const TestedClass &tested, const Path &reference, const char *text, const char *language);
Answer invoke(const TestedClass &tested, const Path &reference, const std::string &method,
              const Entries &arguments = {}, const User &user = noUser());

/** Filters of the association operations; null is not given. */
struct Filters {
    const char *associationClass = nullptr; // of Associators; of References it is the result class
    const char *resultClass = nullptr;
    const char *role = nullptr;
    const char *resultRole = nullptr;
};
Answer associators(const TestedClass &tested, const Path &source, const Filters &filters = {});
Answer associatorNames(const TestedClass &tested, const Path &source, const Filters &filters = {});
Answer references(const TestedClass &tested, const Path &source, const Filters &filters = {});
Answer referenceNames(const TestedClass &tested, const Path &source, const Filters &filters = {});

/** Runs anything that takes broker objects and gives a status, and collects its answer. */
Answer collect(const std::function<CMPIStatus(const CMPIResult *)> &operation);
/** The context of a request by `user`. */
CMPIContext *contextOf(const User &user);

// ---- builders, called by themselves ----

struct Built {
    CMPIrc rc = CMPI_RC_OK;
    std::string message;
    std::optional<Path> path;         // nothing for null
    std::optional<Instance> instance; // nothing for null
    std::vector<std::string> calls;
    std::string trace;
};
/** Loads the class, then runs a builder: build(Monitor, path, _makePath_ZT_Marovelton_Monitor). */
Built build(const TestedClass &tested, const Path &reference,
            const std::function<CMPIObjectPath *(const CMPIObjectPath *, CMPIStatus *)> &makePath);
Built build(const TestedClass &tested, const Path &reference,
            const std::function<CMPIInstance *(const CMPIObjectPath *, CMPIStatus *)> &makeInst);

// ---- setting functions, called by themselves ----

struct SetterAnswer {
    int result;
    std::string errorText; // a single blank unless the function wrote something
    std::vector<SentMessage> sent;
    std::vector<std::string> calls;
    std::string trace;
};
/** Calls a function that fills a 250-character errorText, which holds a single blank before. */
SetterAnswer call(const std::function<int(char *errorText)> &setter);

// ---- expectations ----

testing::AssertionResult hasStatus(const Answer &answer, CMPIrc rc, const std::string &message);
testing::AssertionResult isMethodAnswer(const Answer &answer, const Value &returnValue, CMPIrc rc,
                                        const std::string &message);
testing::AssertionResult hasSent(const std::vector<SentMessage> &sent,
                                 const std::vector<std::string> &expected);
testing::AssertionResult hasEntries(const Entries &entries, const Entries &expected);

// The status, with its message; "" is no message at all.
#define EXPECT_STATUS(answer, rc, message) EXPECT_TRUE(test_support::hasStatus(answer, rc, message))
// The status and exactly one return value of that type, and the result closed once.
#define EXPECT_METHOD(answer, returnValue, rc, message)                                                      \
    EXPECT_TRUE(test_support::isMethodAnswer(answer, returnValue, rc, message))
// The messages sent to the engine, each as its 40 bytes in hexadecimal; "..." at the end stands for zeros.
#define EXPECT_SENT(answer, ...)                                                                             \
    EXPECT_TRUE(test_support::hasSent((answer).sent, std::vector<std::string> __VA_ARGS__))
// The properties of an instance, in their order, with their types, and nothing else.
#define EXPECT_PROPERTIES(instance, ...)                                                                     \
    EXPECT_TRUE(test_support::hasEntries((instance).properties, test_support::Entries __VA_ARGS__))
// The keys of a path likewise.
#define EXPECT_KEYS(path, ...)                                                                               \
    EXPECT_TRUE(test_support::hasEntries((path).keys, test_support::Entries __VA_ARGS__))
// The calls of the support library, in their order.
#define EXPECT_CALLS(answer, ...) EXPECT_EQ((answer).calls, (std::vector<std::string> __VA_ARGS__))

/** The 40 bytes of a message typed in hexadecimal; "..." at the end stands for zeros. */
std::array<uint8_t, 40> bytes(const std::string &typed);

} // namespace test_support

using namespace test_support;

#endif
