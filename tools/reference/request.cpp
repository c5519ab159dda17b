// SPDX-License-Identifier: Apache-2.0
#include "request.h"

#include "sources.h"
#include <algorithm>
#include <set>

namespace reference
{

const std::string supportLibraryText = "The support library has failed.";

namespace
{

const std::map<int, std::string> &registers()
{
    static const auto names = enumerators(SUPPORT_HEADER, "RegisterId");
    return names;
}

const std::map<int, std::string> &groups()
{
    static const auto names = enumerators(SUPPORT_HEADER, "InformationGroup");
    return names;
}

std::string quoted(const std::string &text)
{
    return "`" + text + "`";
}

} // namespace

const char *nameOf(Operation operation)
{
    switch (operation) {
    case Operation::enumerateNames:
        return "EnumInstanceNames";
    case Operation::enumerate:
        return "EnumInstances";
    case Operation::get:
        return "GetInstance";
    case Operation::create:
        return "CreateInstance";
    case Operation::modify:
        return "ModifyInstance";
    case Operation::remove:
        return "DeleteInstance";
    case Operation::query:
        return "ExecQuery";
    case Operation::invoke:
        return "InvokeMethod";
    case Operation::associators:
        return "Associators";
    case Operation::associatorNames:
        return "AssociatorNames";
    case Operation::references:
        return "References";
    case Operation::referenceNames:
        return "ReferenceNames";
    }
    return "";
}

// ---- asking ----

namespace
{

Answer carryOut(const Request &request)
{
    const TestedClass &tested = *request.tested;
    const Instance given = instance(request.target, request.values);
    switch (request.operation) {
    case Operation::enumerateNames:
        return enumerateNames(tested, request.target);
    case Operation::enumerate:
        return enumerate(tested, request.target);
    case Operation::get:
        return get(tested, request.target);
    case Operation::create:
        return create(tested, request.target, given);
    case Operation::modify:
        return modify(tested, request.target, given, request.user);
    case Operation::remove:
        return remove(tested, request.target);
    case Operation::query:
        return query(tested, request.target, "SELECT * FROM CIM_ManagedElement", "WQL");
    case Operation::invoke:
        return invoke(tested, request.target, request.method, request.values, request.user);
    case Operation::associators:
        return associators(tested, request.target);
    case Operation::associatorNames:
        return associatorNames(tested, request.target);
    case Operation::references:
        return references(tested, request.target);
    case Operation::referenceNames:
        return referenceNames(tested, request.target);
    }
    return {};
}

} // namespace

Answer ask(const Request &request)
{
    faults.disarm();
    broker.freeObjects();
    seam.reset();
    seam.errorText = supportLibraryText;
    contract::scriptMonitor();
    for (const std::string &name : request.unknown) {
        broker.classes[name].getInstanceRc = CMPI_RC_ERR_NOT_FOUND;
    }
    for (const auto &change : request.state) {
        change();
    }
    Answer answer = carryOut(request);
    for (const std::string &name : request.unknown) {
        broker.classes[name].getInstanceRc = CMPI_RC_OK;
    }
    return answer;
}

Outcome outcomeOf(const Answer &answer)
{
    Outcome outcome = {.code = answer.rc, .text = answer.message};
    if (answer.returned.size() == 1 && (answer.returned[0].type & CMPI_UINT)) {
        outcome.value = static_cast<unsigned>(answer.returned[0].integer);
    }
    return outcome;
}

Outcome ending(const Request &request)
{
    return outcomeOf(ask(request));
}

// ---- the order of checks ----

namespace
{

struct Found {
    Fault fault;
    Outcome outcome;
};

/** Whether both faults can be there at once. */
bool compatible(const Fault &a, const Fault &b)
{
    for (const auto &[aspect, how] : a.aspects) {
        if (const auto other = b.aspects.find(aspect); other != b.aspects.end() && other->second != how) {
            return false;
        }
    }
    return a.aspects != b.aspects;
}

bool sharesAspect(const Fault &a, const Fault &b)
{
    return std::any_of(a.aspects.begin(), a.aspects.end(),
                       [&](const auto &aspect) { return b.aspects.contains(aspect.first); });
}

Fault both(const Fault &a, const Fault &b)
{
    Fault fault = {a.aspects, a.when + " and " + b.when, nullptr, a.state.empty() ? b.state : a.state};
    fault.aspects.insert(b.aspects.begin(), b.aspects.end());
    fault.apply = [first = a.apply, second = b.apply](Request &request) {
        first(request);
        second(request);
    };
    return fault;
}

/** Places in their order: each after those that are before it, otherwise as they stand. */
std::vector<size_t> sorted(size_t count, std::set<std::pair<size_t, size_t>> before)
{
    std::vector<size_t> order;
    std::set<size_t> left;
    for (size_t i = 0; i < count; ++i) {
        left.insert(i);
    }
    while (!left.empty()) {
        size_t next = *left.begin();
        for (const size_t candidate : left) {
            const bool waits = std::any_of(before.begin(), before.end(), [&](const auto &pair) {
                return pair.second == candidate && left.contains(pair.first);
            });
            if (!waits) {
                next = candidate;
                break;
            }
        }
        order.push_back(next);
        left.erase(next);
    }
    return order;
}

/** Faults that are answered alike: those that follow each other, and the same one in another state. */
struct Group {
    std::vector<Found> members;
    bool takes(const Found &next, bool isLast) const
    {
        return members[0].outcome == next.outcome &&
               (isLast || next.fault.inner || members[0].fault.when == next.fault.when);
    }
};

/** What leads to the answer of a group, the states of the monitor listed once for each fault. */
std::vector<std::string> causesOf(const Group &group)
{
    const bool told = std::any_of(group.members.begin(), group.members.end(),
                                  [](const Found &found) { return !found.fault.inner; });
    std::vector<std::pair<std::string, std::string>> causes; // with their states
    for (const auto &[fault, outcome] : group.members) {
        if (fault.inner && told) {
            continue;
        }
        auto same = std::find_if(causes.begin(), causes.end(),
                                 [&when = fault.when](const auto &cause) { return cause.first == when; });
        if (same == causes.end()) {
            same = causes.insert(same, {fault.when, ""});
        }
        if (!fault.state.empty()) {
            same->second += (same->second.empty() ? "" : "; ") + fault.state;
        }
    }
    std::vector<std::string> words;
    for (const auto &[when, states] : causes) {
        words.push_back(when + (states.empty() ? "" : " (" + states + ")"));
    }
    return words;
}

std::vector<Check> merged(const std::vector<Found> &ordered)
{
    std::vector<Group> groups;
    for (const Found &next : ordered) {
        const auto taking = std::find_if(groups.begin(), groups.end(), [&](const Group &group) {
            return group.takes(next, &group == &groups.back());
        });
        if (taking == groups.end()) {
            groups.push_back({{next}});
        } else {
            taking->members.push_back(next);
        }
    }
    std::vector<Check> checks;
    for (const Group &group : groups) {
        const bool call = std::all_of(group.members.begin(), group.members.end(),
                                      [](const Found &found) { return found.fault.call; });
        checks.push_back({causesOf(group), group.members[0].outcome, call});
    }
    return checks;
}

} // namespace

std::vector<Check> orderedChecks(const Request &base, const std::vector<Fault> &faultList)
{
    const Outcome usual = ending(base);
    std::vector<Found> found;
    std::set<Outcome> known = {usual};
    for (const Fault &fault : faultList) {
        Request request = base;
        fault.apply(request);
        const Outcome outcome = ending(request);
        if (outcome == usual) {
            continue;
        }
        found.push_back({fault, outcome});
        known.insert(outcome);
    }

    std::set<std::pair<size_t, size_t>> before;
    std::vector<std::pair<size_t, Found>> together; // and the place that they stand before
    for (size_t j = 0; j < found.size(); ++j) {
        for (size_t i = 0; i < j; ++i) {
            const Found &a = found[i];
            const Found &b = found[j];
            if (!compatible(a.fault, b.fault)) {
                if (sharesAspect(a.fault, b.fault) && a.fault.natural && b.fault.natural) {
                    before.insert({i, j});
                }
                continue;
            }
            if (a.outcome == b.outcome) {
                continue;
            }
            // What two failing calls bring about together is no check of its own.
            const bool mayBeNew = !a.fault.call && !b.fault.call;
            const Fault pair = both(a.fault, b.fault);
            Request request = base;
            pair.apply(request);
            const Outcome outcome = ending(request);
            if (outcome == a.outcome) {
                before.insert({i, j});
            } else if (outcome == b.outcome) {
                before.insert({j, i});
            } else if (mayBeNew && known.insert(outcome).second) {
                together.push_back({i, {pair, outcome}});
            }
        }
    }

    std::vector<Found> ordered;
    for (const size_t place : sorted(found.size(), before)) {
        for (const auto &[where, pair] : together) {
            if (where == place) {
                ordered.push_back(pair);
            }
        }
        ordered.push_back(found[place]);
    }
    return merged(ordered);
}

// ---- faults ----

namespace
{

std::string numberedName(const std::map<int, std::string> &names, const std::string &number)
{
    const auto found = names.find(std::stoi(number));
    return found == names.end() ? number : found->second;
}

/** A call of the support library as "function" and its arguments. */
struct SeamCall {
    explicit SeamCall(const std::string &call)
        : function(call.substr(0, call.find('('))), arguments(call.substr(function.size() + 1))
    {
        arguments.pop_back();
    }
    std::string function;
    std::string arguments;
};

std::string wordsFor(const SeamCall &call, const std::string &exchange)
{
    const std::string &name = call.function;
    if (name == "GetMonitorStatus") {
        return "the display engine is busy" + exchange;
    }
    if (name == "SpearEngineMessageQueueCreate") {
        return (call.arguments == "0" ? "the queue to the engine cannot be opened"
                                      : "the queue of replies cannot be opened") +
               exchange;
    }
    if (name == "SendStatusMessagetoSource") {
        return "the message to the engine cannot be sent" + exchange;
    }
    if (name == "RecvMessageFromSource") {
        return "no reply of the engine arrives" + exchange;
    }
    if (name == "GetRegisterValue") {
        const std::string number = call.arguments.substr(0, call.arguments.find(','));
        return "register `" + numberedName(registers(), number) + "` cannot be read";
    }
    if (name == "IsAdminUser") {
        return "the user cannot be looked up";
    }
    if (name == "runcommand") {
        return "the command " + quoted(call.arguments) + " fails";
    }
    if (name == "ValidateInputArgs") {
        return "the monitor's range check refuses the value all the same";
    }
    if (name.starts_with("Validate")) {
        return quoted(name) + " of the monitor refuses the value";
    }
    if (name.starts_with("Get")) {
        return "the monitor's record cannot be read (" + quoted(name) + ")";
    }
    return quoted(name) + " of the monitor fails";
}

/** What each exchange with the engine is for, when there are several: " (refresh)", " (write)". */
std::vector<std::string> exchangesOf(const Answer &answer)
{
    std::vector<std::string> exchanges;
    if (answer.sent.size() > 1) {
        for (const SentMessage &message : answer.sent) {
            exchanges.push_back(message.bytes[4] == PROCESS_GET_REQUEST ? " for the refresh"
                                                                        : " for the write");
        }
    }
    return exchanges;
}

} // namespace

std::vector<Fault> failingCalls(const Request &base, size_t first)
{
    const Answer answer = ask(base);
    const std::vector<std::string> exchanges = exchangesOf(answer);
    std::map<std::string, int> times;
    size_t exchange = 0; // each begins with the question whether the engine is busy
    std::vector<Fault> faultList;
    for (size_t i = 0; i < answer.calls.size(); ++i) {
        const SeamCall call(answer.calls[i]);
        const int nth = ++times[call.function];
        const bool busy = call.function == "GetMonitorStatus";
        exchange += busy;
        if (i < first) {
            continue;
        }
        const std::string suffix =
            exchange > 0 && exchange <= exchanges.size() ? exchanges[exchange - 1] : std::string();
        const auto fail = [function = call.function, nth, result = busy ? int{BUSY} : -1] {
            seam.returnsAt(function, nth, result);
        };
        faultList.push_back({{{"call", std::to_string(i)}},
                             wordsFor(call, suffix),
                             [fail](Request &request) { request.state.push_back(fail); },
                             "",
                             true,
                             true,
                             call.function == "ValidateInputArgs" || call.function == "IsAdminUser"});
    }
    return faultList;
}

std::vector<Fault> everyFailingCall(const Request &base)
{
    const bool succeeds = ask(base).rc == CMPI_RC_OK;
    const int count = faults.calls();
    std::vector<Fault> faultList;
    for (int nth = 1; nth <= count; ++nth) {
        const auto arm = [nth] { faults.arm(nth, test_support::Fault::fails); };
        Request request = base;
        request.state.push_back(arm);
        ask(request);
        const std::string struck = faults.struck();
        if (!succeeds && struck == "newString") { // the failure itself loses its text
            continue;
        }
        const bool ofMonitor = isupper(static_cast<unsigned char>(struck[0])) || struck == "runcommand";
        const std::string words = struck == "GetRegisterValue" ? "a register cannot be read"
                                  : struck == "runcommand"     ? "a command of the shell fails"
                                  : struck == "SpearEngineMessageQueueCreate"
                                      ? "a queue of the engine cannot be opened"
                                  : ofMonitor ? wordsFor(SeamCall(struck + "()"), "")
                                              : quoted(struck) + " of the object manager fails";
        faultList.push_back({{{"call", std::to_string(nth)}},
                             words,
                             [arm](Request &changed) { changed.state.push_back(arm); },
                             "",
                             true,
                             true,
                             !ofMonitor});
    }
    return faultList;
}

std::vector<Fault> wrongTargets(const Request &base)
{
    std::vector<Fault> faultList;
    if (base.operation == Operation::invoke) {
        faultList.push_back({{{"class", "other"}}, "the object is of another class", [](Request &request) {
                                 request.target.className = "CIM_ManagedElement";
                             }});
    }
    int references = 0;
    for (const Entry &key : base.target.keys) {
        const bool isReference = key.value.type == CMPI_ref;
        const std::string words = !isReference        ? "key `" + key.name + "`"
                                  : references++ == 0 ? "the first reference of the path"
                                                      : "the second reference of the path";
        const auto replace = [name = key.name](const Value &value) {
            return [name, value](Request &request) { request.target = request.target.with(name, value); };
        };
        faultList.push_back({{{"key " + key.name, "missing"}}, words + " is missing", replace(absent())});
        const Value wrong =
            isReference ? test_support::reference(path("CIM_ManagedElement", {{"InstanceID", "another"}}))
                        : Value("another");
        faultList.push_back({{{"key " + key.name, "wrong"}},
                             words + (isReference ? " leads elsewhere" : " has another value"),
                             replace(wrong)});
    }
    return faultList;
}

std::vector<Fault> wrongUsers()
{
    const auto become = [](const User &user) { return [user](Request &request) { request.user = user; }; };
    return {{{{"user", "none"}}, "the request names no user", become(noUser())},
            {{{"user", "unknown"}}, "the user cannot be looked up", become("stranger")},
            {{{"user", "other"}}, "the user is no administrator", become("operator")}};
}

std::vector<std::string> messagesOf(const Answer &answer)
{
    std::vector<std::string> messages;
    for (const SentMessage &sent : answer.sent) {
        SpearMessage message;
        memcpy(&message, sent.bytes.data(), sizeof message);
        const WebCmd &command = message.Data.Arg.sWebCmd;
        const std::string group = quoted(numberedName(groups(), std::to_string(command.GroupId)));
        if (message.Data.Cmd == PROCESS_GET_REQUEST) {
            messages.push_back("asks the engine to refresh group " + group);
            continue;
        }
        std::string words;
        for (int i = 0; i < command.Count; ++i) {
            words += (words.empty() ? "" : ", ") +
                     quoted(numberedName(registers(), std::to_string(command.sRegdetails[i].Register)));
        }
        messages.push_back("writes " + words + " of group " + group);
    }
    return messages;
}

} // namespace reference
