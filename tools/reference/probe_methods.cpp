// SPDX-License-Identifier: Apache-2.0
#include "probe_methods.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <set>

namespace reference
{

namespace
{

bool succeeds(const Request &request)
{
    return ending(request) == Outcome{.code = CMPI_RC_OK, .text = "", .value = 0u};
}

Request with(Request request, const std::string &name, const Value &value)
{
    for (Entry &entry : request.values) {
        if (entry.name == name) {
            entry.value = value;
        }
    }
    return request;
}

Request in(Request request, const std::function<void()> &state)
{
    request.state.push_back(state);
    return request;
}

std::string quoted(const std::string &text)
{
    return "`" + text + "`";
}

// ---- what an argument takes ----

/** Integers from `first` to `last` that are answered alike. */
struct Stretch {
    long first, last;
    Outcome outcome;
};

/** How an argument's integers are answered, in rising order. Between points that are tried and answered alike
 *  nothing else is expected. */
std::vector<Stretch> stretchesOf(const Request &base, const std::string &argument)
{
    const auto answer = [&](long value) { return ending(with(base, argument, std::to_string(value))); };
    std::vector<long> points = {INT_MIN, -70000, -32769, -32768, -1000, -100};
    for (long value = -10; value <= 256; ++value) {
        points.push_back(value);
    }
    for (long value = 280; value <= 2600; value += 30) {
        points.push_back(value);
    }
    for (const long value : {10000L, 32767L, 32768L, 65535L, 65536L, long{INT_MAX}}) {
        points.push_back(value);
    }

    std::vector<Stretch> stretches = {{points[0], points[0], answer(points[0])}};
    for (size_t i = 1; i < points.size(); ++i) {
        const Outcome outcome = answer(points[i]);
        Stretch &before = stretches.back();
        if (outcome == before.outcome) {
            before.last = points[i];
            continue;
        }
        long low = before.last;
        long high = points[i];
        while (high - low > 1) {
            const long middle = (low + high) / 2;
            (answer(middle) == before.outcome ? low : high) = middle;
        }
        before.last = low;
        stretches.push_back({high, points[i], outcome});
    }
    return stretches;
}

std::string numbers(const std::vector<Stretch> &stretches)
{
    std::string text;
    for (size_t i = 0; i < stretches.size(); ++i) {
        const auto &[first, last, outcome] = stretches[i];
        text += i == 0 ? "" : i + 1 == stretches.size() ? " or " : ", ";
        if (first == INT_MIN && last == INT_MAX) {
            text += "any number";
        } else if (first == INT_MIN) {
            text += "less than " + std::to_string(last + 1);
        } else if (last == INT_MAX) {
            text += "more than " + std::to_string(first - 1);
        } else {
            text += std::to_string(first) + (first == last ? "" : " to " + std::to_string(last));
        }
    }
    return text;
}

std::vector<Stretch> answeredWith(const std::vector<Stretch> &all, const Outcome &outcome)
{
    std::vector<Stretch> some;
    std::copy_if(all.begin(), all.end(), std::back_inserter(some),
                 [&](const Stretch &stretch) { return stretch.outcome == outcome; });
    return some;
}

/** The quarters that a decimal fraction may be, from 0 to 200. */
std::string quarters(const Request &base, const std::string &argument)
{
    std::string text;
    for (int quarter = 0; quarter <= 800; ++quarter) {
        char value[16];
        snprintf(value, sizeof value, "%g", quarter / 4.0);
        if (succeeds(with(base, argument, value))) {
            text += (text.empty() ? "" : ", ") + std::string(value);
        }
    }
    return text;
}

enum class Form { toggle, integer, leading, fraction, text, ignored };

const char *words(Form form)
{
    switch (form) {
    case Form::toggle:
        return "switch: `true` or `false` in any letter case, `1` or `0`";
    case Form::integer:
        return "whole decimal number";
    case Form::leading:
        return "decimal number; what follows its digits is passed over, a text without digits counts as 0";
    case Form::fraction:
        return "decimal fraction";
    case Form::text:
        return "text";
    case Form::ignored:
        return "not looked at";
    }
    return "";
}

std::string textOf(const Request &request, const std::string &name)
{
    const Entry *entry = findEntry(request.values, name);
    return entry ? entry->value.text : "";
}

/** How a string argument is read, from what it is refused for. */
Form formOf(const Request &base, const std::string &name)
{
    const auto accepts = [&](const std::string &value) { return succeeds(with(base, name, value)); };
    const std::string good = textOf(base, name);
    const bool isNumber = !good.empty() && isdigit(static_cast<unsigned char>(good[0]));
    if (accepts("true") && accepts("FALSE") && accepts("0") && accepts("1") && !accepts("2")) {
        return Form::toggle;
    }
    if (!isNumber || (accepts("any text") && accepts("-1") && accepts("99999"))) {
        return Form::text;
    }
    if (accepts(good + " and more")) {
        return Form::leading;
    }
    // A fraction is refused as no integer, or for its value as another number would be.
    const Outcome noNumber = ending(with(base, name, "no number"));
    return ending(with(base, name, good + ".5")) == noNumber ? Form::integer : Form::fraction;
}

// ---- the arguments of a method ----

/** A method's complete arguments that make it succeed, where there are such. */
bool complete(Request &request, const cim::Method &declared, size_t argument = 0)
{
    if (argument == declared.parameters.size()) {
        return succeeds(request);
    }
    const cim::Parameter &parameter = declared.parameters[argument];
    std::vector<Value> candidates;
    if (parameter.type == cim::Type::reference) {
        for (const TestedClass &other : contract::libraryClasses()) {
            if (mof::deskClasses().isA(other.name, parameter.referenceClass)) {
                for (const Instance &object : broker.classes[other.name].instances) {
                    candidates.push_back(test_support::reference(object.path));
                }
            }
        }
    } else {
        for (const char *text : {"0", "1", "2", "25", "48", "160", "222", "31/01/2025", "any text"}) {
            candidates.push_back(text);
        }
    }
    for (const Value &candidate : candidates) {
        request = with(request, parameter.name, candidate);
        if (complete(request, declared, argument + 1)) {
            return true;
        }
    }
    return false;
}

struct MethodProbe {
    Request base;
    const cim::Method &declared;
    std::vector<Fault> faults = {};
    MethodFacts facts = {};
};

Fault valueFault(const std::string &name, const std::string &how, const std::string &when, const Value &value)
{
    return {{{"argument " + name, how}}, "`" + name + "` " + when, [name, value](Request &request) {
                request = with(request, name, value);
            }};
}

/** The integers that are refused, one fault for each answer. */
void addRangeFaults(MethodProbe &probe, const std::string &name, const std::vector<Stretch> &stretches,
                    const std::set<Outcome> &otherwise, Form form = Form::integer,
                    const StateOption *state = nullptr, const std::string &group = "",
                    const Entries &goodThere = {})
{
    std::set<Outcome> seen = otherwise;
    for (const Stretch &stretch : stretches) {
        if (stretch.outcome == Outcome{.code = 0, .text = "", .value = 0u} ||
            !seen.insert(stretch.outcome).second) {
            continue;
        }
        const std::vector<Stretch> alike = answeredWith(stretches, stretch.outcome);
        const bool inBetween = alike.front().first > INT_MIN && alike.back().last < INT_MAX;
        const std::string when = form == Form::fraction && inBetween ? "is between those that are accepted"
                                                                     : "is " + numbers(alike);
        // The numbers nearest to those that are accepted are the ones to be sure of.
        const long value = stretch.first == INT_MIN ? stretch.last : stretch.first;
        Fault fault = valueFault(name, "is " + std::to_string(value), when, std::to_string(value));
        if (state) {
            fault.aspects["state " + group] = state->when;
            fault.state = state->when;
            fault.apply = [set = fault.apply, change = state->set, usual = probe.base.values,
                           goodThere](Request &request) {
                for (size_t i = 0; i < usual.size(); ++i) { // unless another fault has changed it
                    if (request.values[i] == usual[i]) {
                        request.values[i] = goodThere[i];
                    }
                }
                set(request);
                request.state.push_back(change);
            };
        }
        probe.faults.push_back(fault);
    }
}

const Outcome success = {.code = CMPI_RC_OK, .text = "", .value = 0u};

bool reads(const Answer &answer, const StateGroup &group)
{
    return std::find(answer.calls.begin(), answer.calls.end(), group.readBy) != answer.calls.end();
}

/** The numbers that are accepted and those that are refused, in each state that matters. */
void probeNumbers(MethodProbe &probe, ArgumentFacts &argument, const std::set<Outcome> &otherwise)
{
    const std::vector<Stretch> usual = stretchesOf(probe.base, argument.name);
    const std::string accepted = numbers(answeredWith(usual, success));
    const Answer answer = ask(probe.base);
    for (const StateGroup &group : stateGroups()) {
        if (!reads(answer, group)) {
            continue;
        }
        struct Tried {
            const StateOption *option;
            Entries values;
            std::vector<Stretch> stretches;
        };
        std::vector<Tried> options;
        bool differs = false;
        for (const StateOption &option : group.options) {
            Request request = in(probe.base, option.set);
            if (!complete(request, probe.declared)) {
                continue;
            }
            const std::vector<Stretch> stretches = stretchesOf(request, argument.name);
            differs |= numbers(answeredWith(stretches, success)) != accepted;
            options.push_back({&option, request.values, stretches});
        }
        if (!differs) {
            continue;
        }
        std::map<std::string, std::string> states; // by the numbers
        std::vector<std::string> order;
        for (const auto &[option, goodThere, stretches] : options) {
            const std::string values = numbers(answeredWith(stretches, success));
            if (states[values].empty()) {
                order.push_back(values);
            }
            states[values] += (states[values].empty() ? "" : "; ") + option->when;
            addRangeFaults(probe, argument.name, stretches, otherwise, Form::integer, option,
                           group.options[0].when, goodThere);
        }
        for (const std::string &values : order) {
            argument.values.push_back(values + " (" + states[values] + ")");
        }
        return;
    }
    argument.values.push_back(accepted);
    addRangeFaults(probe, argument.name, usual, otherwise);
}

void probeText(MethodProbe &probe, const std::string &name)
{
    ArgumentFacts argument = {name, "", {}};
    const Request &base = probe.base;
    const Form form = formOf(base, name);
    argument.form = words(form);
    probe.faults.push_back(valueFault(name, "absent", "is not given", absent()));
    probe.faults.push_back(valueFault(name, "null", "is null", nullOf(CMPI_string)));
    probe.faults.push_back(valueFault(name, "type", "is no string", uint32(1)));
    probe.faults.push_back(valueFault(name, "empty", "is empty", ""));
    const Outcome noNumber = ending(with(base, name, "no number"));
    switch (form) {
    case Form::toggle:
        probe.faults.push_back(valueFault(name, "form", "is none of the words and numbers of a switch", "2"));
        break;
    case Form::integer:
        probe.faults.push_back(valueFault(name, "form", "is not wholly a decimal number", "no number"));
        probeNumbers(probe, argument, {noNumber});
        break;
    case Form::leading:
        probeNumbers(probe, argument, {});
        break;
    case Form::fraction:
        probe.faults.push_back(valueFault(name, "form", "is not wholly a decimal number", "no number"));
        argument.values.push_back(quarters(base, name));
        addRangeFaults(probe, name, stretchesOf(base, name), {noNumber}, form);
        break;
    case Form::text:
    case Form::ignored:
        break;
    }
    probe.facts.arguments.push_back(argument);
}

void probeReference(MethodProbe &probe, const cim::Parameter &parameter)
{
    const std::string &name = parameter.name;
    const Request &base = probe.base;
    const Path good = *findEntry(base.values, name)->value.path;
    std::map<std::string, Path> accepted; // one object of each class
    ArgumentFacts argument = {name, "reference", {}};
    for (const auto &[className, script] : broker.classes) {
        for (const Instance &object : script.instances) {
            if (!succeeds(with(base, name, test_support::reference(object.path)))) {
                continue;
            }
            accepted.insert({className, object.path});
        }
    }
    if (accepted.size() == broker.classes.size()) {
        argument.values.push_back("an object of any class");
        accepted = {{good.className, good}};
    } else {
        for (const auto &[className, path] : accepted) {
            const std::vector<Instance> &objects = broker.classes[className].instances;
            const auto count = std::count_if(objects.begin(), objects.end(), [&](const Instance &object) {
                return succeeds(with(base, name, test_support::reference(object.path)));
            });
            argument.values.push_back(
                quoted(className) + (count == 1 ? "" : ", any of its " + std::to_string(count) + " objects"));
        }
    }
    Path unreadable = good;
    unreadable.classNameForm = TextForm::noCharacters;
    const auto ref = [](const Path &path) { return test_support::reference(path); };
    probe.faults.push_back(valueFault(name, "absent", "is not given", absent()));
    probe.faults.push_back(valueFault(name, "null", "is null", nullOf(CMPI_string)));
    probe.faults.push_back(valueFault(name, "type", "is no reference", "text"));
    probe.faults.push_back(valueFault(name, "nothing", "leads nowhere", nullReference()));
    probe.faults.push_back(valueFault(name, "unreadable", "has no readable class name", ref(unreadable)));
    probe.faults.push_back(valueFault(name, "class", "leads to an object of another class",
                                      ref(good.ofClass("CIM_ManagedElement"))));
    for (const bool missing : {true, false}) {
        for (const auto &[className, path] : accepted) {
            const std::string where = accepted.size() > 1 ? " (of " + quoted(className) + ")" : "";
            for (const Entry &key : path.keys) {
                probe.faults.push_back(
                    missing
                        ? valueFault(name, "no " + key.name + className,
                                     "has no key " + quoted(key.name) + where, ref(path.without(key.name)))
                        : valueFault(name, "other " + key.name + className,
                                     "has a key " + quoted(key.name) + " of no such object",
                                     ref(path.with(key.name, "another"))));
            }
        }
    }
    probe.facts.arguments.push_back(argument);
}

/** The states of the monitor in which no arguments make the method succeed. */
void addStateFaults(MethodProbe &probe)
{
    const Answer answer = ask(probe.base);
    for (const StateGroup &group : stateGroups()) {
        if (!reads(answer, group)) {
            continue;
        }
        for (const StateOption &option : group.options) {
            Request request = in(probe.base, option.set);
            if (complete(request, probe.declared)) {
                continue;
            }
            probe.faults.push_back({{{"state " + group.options[0].when, option.when}},
                                    option.when,
                                    [set = option.set](Request &changed) { changed.state.push_back(set); },
                                    "",
                                    false});
        }
    }
}

MethodFacts probeMethod(MethodProbe probe, size_t callsBefore)
{
    const cim::Method &declared = probe.declared;
    const bool works = complete(probe.base, declared);
    probe.facts.name = declared.name;
    if (!works) {
        for (const cim::Parameter &parameter : declared.parameters) {
            probe.base = with(probe.base, parameter.name, "1");
        }
    }
    probe.facts.usual = ending(probe.base);
    probe.facts.messages = messagesOf(ask(probe.base));

    for (const Fault &fault : wrongTargets(probe.base)) {
        probe.faults.push_back(fault);
    }
    for (const Fault &fault : wrongUsers()) {
        probe.faults.push_back(fault);
    }
    if (declared.parameters.empty()) {
        probe.faults.push_back({{{"argument", "any"}}, "an argument is given", [](Request &request) {
                                    request.values.push_back({"Argument", "1"});
                                }});
    }
    for (const cim::Parameter &parameter : declared.parameters) {
        if (!works) {
            probe.facts.arguments.push_back({parameter.name, words(Form::ignored), {}});
        } else if (parameter.type == cim::Type::reference) {
            probeReference(probe, parameter);
        } else {
            probeText(probe, parameter.name);
        }
    }
    addStateFaults(probe);
    for (const Fault &fault : failingCalls(probe.base, callsBefore)) {
        probe.faults.push_back(fault);
    }
    probe.facts.checks = orderedChecks(probe.base, probe.faults);

    Request ordinary = probe.base;
    ordinary.user = "operator";
    probe.facts.administrator = ending(ordinary) != probe.facts.usual;
    return probe.facts;
}

/** Messages that a call on another object of the class sends instead. */
void addMessagesOfOthers(const Request &base, const std::vector<Instance> &objects,
                         const cim::Method &declared, MethodFacts &facts)
{
    for (const Instance &object : objects) {
        Request request = base;
        request.target = object.path;
        if (!complete(request, declared)) {
            continue;
        }
        const std::vector<std::string> messages = messagesOf(ask(request));
        if (messages == facts.messages || messages.empty()) {
            continue;
        }
        facts.messages.back() += " or, on another object, " + messages.back();
    }
}

} // namespace

void probeMethods(const TestedClass &tested, ClassFacts &facts)
{
    const std::vector<Instance> &objects = broker.classes[tested.name].instances;
    const cim::Class &declaredClass = contract::declaredClass(tested.name);
    Request unknown = {.tested = &tested,
                       .operation = Operation::invoke,
                       .target = objects.at(0).path,
                       .method = "NoSuchMethod"};
    facts.unknownMethodName = unknown.method;
    facts.unknownMethod = ending(unknown);
    std::vector<Fault> faultList = wrongTargets(unknown);
    for (const Fault &fault : failingCalls(unknown)) {
        faultList.push_back(fault);
    }
    facts.targetChecks = orderedChecks(unknown, faultList);
    const size_t callsBefore = ask(unknown).calls.size();
    const std::set<Outcome> ofTarget = [&] {
        std::set<Outcome> outcomes;
        for (const Check &check : facts.targetChecks) {
            outcomes.insert(check.outcome);
        }
        return outcomes;
    }();

    for (const cim::Method &declared : declaredClass.methods) {
        MethodProbe probe = {.base = unknown, .declared = declared};
        probe.base.method = declared.name;
        for (const cim::Parameter &parameter : declared.parameters) {
            probe.base.values.push_back({parameter.name, absent()});
        }
        // The object that the method succeeds on, where one does.
        for (const Instance &object : objects) {
            Request request = probe.base;
            request.target = object.path;
            if (complete(request, declared)) {
                probe.base.target = object.path;
                break;
            }
        }
        const Outcome asUnknown = {facts.unknownMethod.code, declared.name, facts.unknownMethod.value};
        if (declared.propagated && ending(probe.base) == asUnknown) {
            facts.notOffered.push_back(declared.name);
            continue;
        }
        MethodFacts method = probeMethod(probe, callsBefore);
        addMessagesOfOthers(probe.base, objects, declared, method);
        std::erase_if(method.checks, [&](const Check &check) { return ofTarget.contains(check.outcome); });
        facts.methods.push_back(method);

        Request shouted = probe.base;
        std::transform(shouted.method.begin(), shouted.method.end(), shouted.method.begin(),
                       [](unsigned char character) { return static_cast<char>(toupper(character)); });
        facts.ignoresCase |= ending(shouted).text != shouted.method;
    }
}

} // namespace reference
