// SPDX-License-Identifier: Apache-2.0
#include "operations.h"

#include "method_table.h"

#include <algorithm>

namespace torture
{

namespace
{

using contract::MethodClassRow;
using contract::MethodRow;
using contract::Parameter;

/** The paths that are asked for: of a class with many alike the first and the last one. */
std::vector<Path> targetsOf(const TestedClass &tested)
{
    std::vector<Path> paths = contract::pathsOf(tested);
    if (paths.size() > 2) {
        paths = {paths.front(), paths.back()};
    }
    return paths;
}

using Expected = std::pair<CMPIrc, std::string>;
const Expected success = {CMPI_RC_OK, ""};
const Expected notSupported = {CMPI_RC_ERR_NOT_SUPPORTED, "NOT_SUPPORTED"};

// ---- reads, and what no class offers ----

void addReads(const TestedClass &tested, std::vector<Operation> &operations)
{
    const auto add = [&](const char *name, const std::string &situation, std::optional<Expected> expected,
                         std::function<Answer()> run) {
        operations.push_back(
            {.name = name, .situation = situation, .run = std::move(run), .expected = std::move(expected)});
    };
    const Path reference = path(tested.name);
    add("EnumInstanceNames", "", success, [&tested, reference] { return enumerateNames(tested, reference); });
    add("EnumInstances", "", success, [&tested, reference] { return enumerate(tested, reference); });
    const std::vector<Path> targets = targetsOf(tested);
    const auto addGet = [&](const std::string &situation, std::optional<Expected> expected,
                            const Path &target) {
        add("GetInstance", situation, std::move(expected), [&tested, target] { return get(tested, target); });
    };
    // The identifier that this class tells is not the one that it compares with.
    const bool found = tested.name != std::string("ZT_Marovelton_IPVersionSettingData");
    addGet("",
           found ? success
                 : Expected{CMPI_RC_ERR_NOT_FOUND, "This class name does not exist (wrong InstanceID)."},
           targets.front());
    if (targets.size() > 1) {
        addGet("of the last one", success, targets.back());
    }
    for (const Entry &key : targets.front().keys) {
        addGet("without the key " + key.name, std::nullopt, targets.front().without(key.name));
        if (key.value.type != CMPI_ref) {
            addGet("with another " + key.name, std::nullopt,
                   targets.front().with(key.name, "something else"));
        }
    }
    const Path target = targets.front();
    const Instance given = instance(target, target.keys);
    add("CreateInstance", "", notSupported,
        [&tested, target, given] { return create(tested, target, given); });
    add("DeleteInstance", "", notSupported, [&tested, target] { return remove(tested, target); });
    add("ExecQuery", "", notSupported,
        [&tested, target] { return query(tested, target, "SELECT * FROM CIM_Display", "WQL"); });
}

/** One class offers it. */
void addModify(const TestedClass &tested, std::vector<Operation> &operations)
{
    const Path target = targetsOf(tested).front();
    const bool offered = tested.name == std::string("ZT_Marovelton_ExtendedStaticIPAssignmentSettingData");
    const Entries addresses = {{"IPAddresses", stringArray({"192.0.2.18"})},
                               {"SubnetMasks", stringArray({"255.255.255.0"})},
                               {"GatewayAddresses", stringArray({"192.0.2.1"})}};
    const auto add = [&](
                         const std::string &situation, const Entries &properties, const User &user = "admin",
                         const std::function<void()> &prepare = [] {}) {
        const Instance given = instance(target, properties);
        operations.push_back(
            {.name = "ModifyInstance",
             .situation = situation,
             .run = [&tested, target, given, user] { return modify(tested, target, given, user); },
             .prepare = prepare,
             .expected = {}});
        if (situation.empty()) {
            operations.back().expected = offered ? success : notSupported;
        }
    };
    add("", addresses);
    if (!offered) {
        return;
    }
    add("as operator", addresses, "operator");
    add("by nobody", addresses, noUser());
    add("busy", addresses, "admin", [] { seam.status = BUSY; });
    for (const Entry &left : addresses) {
        Entries others = addresses;
        std::erase_if(others, [&](const Entry &entry) { return entry.name == left.name; });
        add("without " + left.name, others);
        others.push_back({left.name, stringArray({"no address"})});
        add("with a bad " + left.name, others);
        others.back().value = "192.0.2.3";
        add("with one text for " + left.name, others);
        others.back().value = stringArray({});
        add("with an empty " + left.name, others);
    }
}

// ---- methods ----

/** One method with arguments, as it is called in all situations. */
class Calls
{
  public:
    Calls(const TestedClass &theClass, Path theTarget, std::string theMethod,
          std::vector<Operation> &theOperations)
        : tested_(theClass), target_(std::move(theTarget)), method_(std::move(theMethod)),
          operations_(theOperations)
    {
    }

    void add(
        const std::string &situation, const Entries &arguments, const User &user = "admin",
        const std::function<void()> &prepare = [] {})
    {
        addOn(target_, situation, arguments, user, prepare);
    }
    void addOn(
        const Path &other, const std::string &situation, const Entries &arguments, const User &user = "admin",
        const std::function<void()> &prepare = [] {})
    {
        operations_.push_back({.name = method_,
                               .situation = situation,
                               .method = true,
                               .run = [&of = tested_, other, called = method_, arguments,
                                       user] { return invoke(of, other, called, arguments, user); },
                               .prepare = prepare,
                               .expected = {}});
    }
    /** The usual call, with its answer. */
    void addUsual(const Entries &arguments, const Expected &expected)
    {
        add("", arguments);
        operations_.back().expected = expected;
    }

  private:
    const TestedClass &tested_;
    Path target_;
    std::string method_;
    std::vector<Operation> &operations_;
};

Entries withArgument(Entries arguments, const std::string &name, const Value &value)
{
    findEntry(arguments, name)->value = value;
    return arguments;
}

/** Each argument missing, of another type, empty, no number, far out of every range. */
void addBadArguments(const MethodRow &row, Calls &calls)
{
    const Entries arguments = contract::completeArguments(row);
    for (const Parameter &parameter : row.parameters) {
        const std::string name = parameter.name;
        calls.add("without " + name, withArgument(arguments, name, absent()));
        calls.add("with a number for " + name, withArgument(arguments, name, uint32(1)));
        if (parameter.given.type == CMPI_ref) {
            calls.add("with a null " + name, withArgument(arguments, name, nullReference()));
            calls.add("with a keyless " + name,
                      withArgument(arguments, name, reference(path(parameter.given.path->className))));
            calls.add("with another class for " + name,
                      withArgument(arguments, name, reference(path("CIM_Service"))));
            continue;
        }
        calls.add("with an empty " + name, withArgument(arguments, name, ""));
        calls.add("with no number for " + name, withArgument(arguments, name, "12 or so"));
        calls.add("with a huge " + name, withArgument(arguments, name, "99999"));
    }
}

/** Every register that a precondition may look at holds `text`; without one none can be read. */
void setConditions(const char *text)
{
    for (auto &[of, value] : seam.registers) {
        value = text ? text : "";
    }
    if (!text) {
        seam.registers.clear();
    }
}

void addMethod(const TestedClass &tested, const MethodRow &row, const Path &target,
               std::vector<Operation> &operations)
{
    Calls calls(tested, target, row.name, operations);
    const Entries arguments = contract::completeArguments(row);
    calls.addUsual(arguments, {row.code, row.message});
    calls.add("as operator", arguments, "operator");
    calls.add("as a stranger", arguments, "nobody");
    calls.add("by nobody", arguments, noUser());
    calls.add("busy", arguments, "admin", [] { seam.status = BUSY; });
    calls.add("with conditions at 0", arguments, "admin", [] { setConditions("0"); });
    calls.add("with conditions at 9", arguments, "admin", [] { setConditions("9"); });
    calls.add("with no condition readable", arguments, "admin", [] { setConditions(nullptr); });
    addBadArguments(row, calls);
    for (const Entry &key : target.keys) {
        calls.addOn(target.without(key.name), "without the key " + key.name, arguments);
        calls.addOn(target.with(key.name, "something else"), "with another " + key.name, arguments);
    }
    calls.addOn(target.ofClass("CIM_Service"), "on another class", arguments);
}

void addMethods(const TestedClass &tested, std::vector<Operation> &operations)
{
    const auto table = contract::methodTable();
    const auto of = std::find_if(table.begin(), table.end(), [&](const MethodClassRow &row) {
        return tested.name == std::string("ZT_Marovelton_") + row.name;
    });
    ASSERT_NE(of, table.end()) << tested.name;
    const Path target = contract::pathsOf(tested).at(of->target);
    for (const MethodRow &row : of->methods) {
        addMethod(tested, row, target, operations);
    }
    Calls(tested, target, "Reboot", operations).addUsual({}, {of->unknownCode, "Reboot"});
}

// ---- associations ----

void addAssociations(const TestedClass &tested, std::vector<Operation> &operations)
{
    using Follow = Answer (*)(const TestedClass &, const Path &, const Filters &);
    const struct {
        const char *name;
        Follow follow;
    } kinds[] = {{"Associators", associators},
                 {"AssociatorNames", associatorNames},
                 {"References", references},
                 {"ReferenceNames", referenceNames}};
    const Path pair = contract::pathsOf(tested).at(0);
    // Two associations look for keys in names that have none.
    const bool keyless = tested.name == std::string("ZT_Marovelton_ProvidesEndpoint") ||
                         tested.name == std::string("ZT_Marovelton_SAPSAPDependency");
    const Expected withoutKey = {CMPI_RC_ERR_FAILED, "Could not get key of instance."};
    for (const auto &kind : kinds) {
        for (const Entry &end : pair.keys) {
            const Path source = *end.value.path;
            operations.push_back(
                {.name = kind.name,
                 .situation = "from " + end.name,
                 .run = [&tested, source, follow = kind.follow] { return follow(tested, source, {}); },
                 .expected = keyless && kind.follow == referenceNames ? withoutKey : success});
        }
    }
}

} // namespace

std::vector<Operation> operationsOf(const TestedClass &tested)
{
    std::vector<Operation> operations;
    addReads(tested, operations);
    addModify(tested, operations);
    if (tested.createMethodMI) {
        addMethods(tested, operations);
    }
    if (tested.createAssociationMI) {
        addAssociations(tested, operations);
    }
    return operations;
}

} // namespace torture
