// SPDX-License-Identifier: Apache-2.0
// Checks that many classes have in common, with what differs between them as data.
#ifndef TEST_SUPPORT_CHECKS_H
#define TEST_SUPPORT_CHECKS_H

#include "provider_fixture.h"

namespace test_support
{

// ---- the skeleton of a class ----

/** The factories (names and versions of the function tables, the status left alone, the same table every
 * time), Cleanup, and the operations that the class does not offer. */
void checkSkeleton(const TestedClass &tested, bool modifyIsOffered = false);

/** The factories of classes without methods of their own: "insert_method_name" in any letter case is answered
 *  with OK; any other method, and another class, with `unknownCode` and the method name; always
 * `returnValue`. */
void checkPlaceholderMethod(const TestedClass &tested, const Path &target, CMPIrc unknownCode,
                            const Value &returnValue);

/** Methods that do not exist, among them the existing names in other letter case unless that is ignored. */
void checkUnknownMethods(const TestedClass &tested, const Path &target, const std::vector<std::string> &names,
                         CMPIrc code, const Value &returnValue);

/** A method called on a path of another class, which is answered before its keys and the method name are
 * looked at; the class's own name in other letter case is accepted. */
void checkOtherClass(const TestedClass &tested, const Path &target, const std::string &method,
                     const Entries &arguments, const User &user, CMPIrc code, const std::string &message,
                     const Value &returnValue);

// ---- reads of a class ----

/** EnumInstanceNames, asked in a namespace of its own: the paths in their order, with their keys as
 * characters; the calls that takes, and its trace. */
void checkPaths(const TestedClass &tested, const std::vector<Path> &expected,
                const std::vector<std::string> &calls = {});

/** EnumInstances and GetInstance of a class whose one instance is keyed by its InstanceID: the same instance,
 * with these properties in their order; the calls that takes, and their traces, in some classes with that of
 * the path. */
void checkInstance(const TestedClass &tested, const Path &target, const Entries &properties,
                   const std::vector<std::string> &calls, bool pathIsTraced = false);

/** The property Name of an instance: the system's name, or without one its address, and then `suffix`. */
void checkNameOfSystem(const TestedClass &tested, const Path &target, const std::string &suffix);

// ---- keys ----

/** One key that a request is checked for, in the order of the checks. */
struct KeyRule {
    std::string name = {};
    std::string missing = {};
    std::string wrong = {};
    bool ignoreCase = false;
    CMPIrc missingCode = CMPI_RC_ERR_NOT_FOUND;
    CMPIrc wrongCode = CMPI_RC_ERR_NOT_FOUND;
    int missingValue = 2; // the return value, of methods
    int wrongValue = 2;
    bool valueIsChecked = true;
    std::string wrongTrace = {}; // what GetInstance prints while it compares the value
};

/** The key InstanceID as all classes check it that have no other, in reads and, with some differences, in
 * methods. */
std::vector<KeyRule> instanceIDOfReads();
std::vector<KeyRule> instanceIDOfMethods(int missingValue = 2, CMPIrc wrongCode = CMPI_RC_ERR_NOT_FOUND);

/** The keys of objects that belong to the system, and of those that have a name of their own in it. */
std::vector<KeyRule> systemKeys();
std::vector<KeyRule> namedSystemKeys(int returnValue = 2);

/** GetInstance with each key missing in every way, of another type, wrong, in other letter case; the first
 * key that is wrong decides, and nothing but `wrongTrace` is printed after the first line. `target` must be a
 * path with which GetInstance succeeds. Keys handed as characters are accepted. */
void checkKeysOfGetInstance(const TestedClass &tested, const Path &target, const std::vector<KeyRule> &rules);

/** The same of a method call that succeeds on `target`; a missing key comes before an unknown method. */
void checkKeysOfMethod(const TestedClass &tested, const Path &target, const std::string &method,
                       const Entries &arguments, const User &user, const std::vector<KeyRule> &rules,
                       CMPIType returnType = CMPI_uint32);

// ---- administrators ----

/** A method that only administrators may call: credentials missing in every way, users that cannot be looked
 * up, users that are none; nothing is sent or stored then. The arguments must make the call succeed. */
void checkAdministratorOnly(const TestedClass &tested, const Path &target, const std::string &method,
                            const Entries &arguments, CMPIType returnType = CMPI_uint32,
                            int failureValue = 2);

/** A method that everybody may call, without looking the user up. */
void checkNoAdministratorNeeded(const TestedClass &tested, const Path &target, const std::string &method,
                                const Entries &arguments, CMPIType returnType = CMPI_uint32);

// ---- settings ----

/** The texts of a send's steps; the usual ones unless a setting spells them otherwise. */
struct ChannelSteps {
    std::string reply = {}; // the reply cannot be received; empty: no reply is awaited
    std::string busy = "Device is Busy. Please try after some time.";
    std::string sendQueue = "Unable to create a message queue for sending message.";
    std::string send = "Unable to send value to SPEAr.";
    std::string receiveQueue = "Unable to create a message queue for receiving message.";
    bool onlyMinusOneFails = false; // queue and send results other than -1 count as success
};

/** The steps of a request for a group's values, before a read or a method that needs them. */
inline const ChannelSteps refreshSteps = {.reply = "Failed to read the value from spear.",
                                          .busy = "Device is Busy. Please try after some time.."};

/** A setting function by itself: `golden` is sent, every step fails once (with -1 and with another number),
 * the calls have their order, and errorText holds the text of the failed step and is left alone on success.
 */
void checkSender(const std::function<int(char *errorText)> &sender, const std::string &golden,
                 const ChannelSteps &steps);

enum class ArgumentIs {
    toggle,         // "true", "false" in any letter case, "0", "1"
    wholeDecimal,   // strtol must consume the text
    leadingDecimal, // as atoi reads it
};

/** A method that reads one argument and sends one setting. */
struct SettingMethod {
    const TestedClass *tested = nullptr;
    Path target = {};
    std::string method = {};
    std::string argument = {};
    ArgumentIs kind = ArgumentIs::wholeDecimal;
    int min = 0;
    int max = 1;
    std::string missing = {}; // "Required argument ... missing."
    std::string range = {};   // empty: the value is not checked against a range
    ChannelSteps steps = {};
    std::string sentAtMin = {}; // the golden bytes of the message with the value min; of toggles: 0
    std::string sentAtMax = {}; // with the value max; of toggles: 1
    bool administrator = false;
    CMPIType returnType = CMPI_uint32;
    std::string invalidType = "Invalid type of parameter.";
    std::string empty = "Invalid parameter. Value is missing.";
    std::string malformed = "Invalid parameter.";
    Entries otherArguments = {};              // given beside the argument
    std::vector<std::string> sentBefore = {}; // messages before the setting's own, of a refresh
    std::function<void()> prepare = {};       // the script of the seam; run before every call
};

/** The argument missing in every way, of another type, empty, malformed, out of range on either side and
 * beyond int and long; accepted at both ends of its range; each step of the send failing. */
void checkSettingMethod(const SettingMethod &setting);

/** A method whose send fails at each of its steps, after `before` exchanges with the engine that worked: that
 * is the last thing it does, and its answer has the step's text. `prepare` scripts the seam before every
 * call. */
void checkFailuresOfSend(const std::function<Answer()> &method, const ChannelSteps &steps, int before = 0,
                         const std::function<void()> &prepare = {}, CMPIType returnType = CMPI_uint32);

/** The three reads of `target` while their refresh fails, likewise: nothing is returned, and the result stays
 * open. */
void checkFailuresOfRefresh(const TestedClass &tested, const Path &target, int before = 0);

/** The intake of a string argument alone: missing in every way, of another type, empty. */
void checkStringArgument(const TestedClass &tested, const Path &target, const std::string &method,
                         const std::string &argument, const std::string &missing,
                         const Entries &otherArguments, const User &user, CMPIType returnType = CMPI_uint32,
                         const std::string &invalidType = "Invalid type of parameter.",
                         const std::string &empty = "Invalid parameter. Value is missing.");

// ---- building ----

/** Failing builders, after which nothing is returned and the result stays open: EnumInstanceNames and
 * EnumInstances when a path, an instance (or, with `array`, an array) cannot be made, in every way that
 * shows, and EnumInstances when one of the records cannot be read. GetInstance likewise where `reference` has
 * the key InstanceID: to check that, no record is read. */
void checkBuildFailures(const TestedClass &tested, const Path &reference,
                        const std::vector<std::string> &records, bool array = false);

/** A record that an instance is built from: the call that reads it, and the builder's text if that fails. */
struct RecordRead {
    std::string call = {};
    std::string failure = {};
};

/** The builders of a class, and what they need. */
struct Builders {
    const TestedClass *tested = nullptr;
    Path reference = {};
    std::function<CMPIObjectPath *(const CMPIObjectPath *, CMPIStatus *)> makePath = {};
    std::function<CMPIInstance *(const CMPIObjectPath *, CMPIStatus *)> makeInst = {};
    std::vector<RecordRead> records = {}; // in the order in which they are read
    int arrays = 0;                       // among the properties
    bool recordsFirst = false;            // they are read before the instance is made
};

/** checkBuildFailures, and the builders by themselves: every object, element and record failing, with the
 * text that says which; no record is read after one that failed, and none for an object that cannot be made.
 */
void checkBuilders(const Builders &builders);

// ---- torture ----

struct Torture {
    std::function<void()> prepare = {}; // the script; run before every call
    std::vector<std::string> harmless =
        {}; // functions whose failure may change the answer without failing it
};

/** Runs an operation once for every call of the broker and of the support library that could fail, with that
 * call failing in each way it can: nothing crashes or is left behind, and the operation fails, or its answer
 * is what it is without the failure (setting a key or property and handing an answer over apart, which may
 * fail unheeded). A failing method never answers with the return value 0. */
void checkTorture(const std::function<Answer()> &operation, const Torture &torture = {});

/** checkTorture of the three reads of `target`. */
void checkTortureOfReads(const TestedClass &tested, const Path &target, const Torture &torture = {});

} // namespace test_support

#endif
