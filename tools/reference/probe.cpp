// SPDX-License-Identifier: Apache-2.0
#include "probe_methods.h"

#include <algorithm>
#include <set>

namespace reference
{

namespace
{

// ---- kinds and instances ----

std::string kindOf(const TestedClass &tested)
{
    std::string kind = "instance";
    if (tested.createMethodMI) {
        kind += ", method";
    }
    if (tested.createAssociationMI) {
        kind += ", association";
    }
    return kind;
}

Request reading(const TestedClass &tested, Operation operation, const Path &target)
{
    return {.tested = &tested, .operation = operation, .target = target};
}

// ---- what is the same on every monitor ----

/** Changes every byte of a record. */
template <typename Record>
void alter(Record &record)
{
    char bytes[sizeof record];
    memcpy(bytes, &record, sizeof record);
    for (char &byte : bytes) {
        byte ^= 1;
    }
    memcpy(&record, bytes, sizeof record);
}

constexpr const char *oneName = "Studio 7"; // of the scripted monitor
constexpr const char *otherName = "Other 9";

/** A monitor of which everything is different, and another controller. */
void otherMonitor()
{
    alter(seam.monitor);
    setField(seam.monitor.DisplayName, otherName);
    alter(seam.management);
    alter(seam.imageAdjustment);
    alter(seam.pip);
    alter(seam.osd);
    for (ColorSpaceInfo &preset : seam.colorSpaces) {
        alter(preset);
    }
    alter(seam.bezel);
    for (FunctionButtonInfo &button : seam.functionButtons) {
        alter(button);
    }
    alter(seam.testPattern);
    alter(seam.remote);
    for (auto &[address, text] : seam.registers) {
        text = std::to_string(std::stoi(text) ^ 5);
    }
    seam.commands = {
        {"cat /proc/net/dev",
         {.output = {"Inter-|   Receive\n", " face |bytes\n", "  eth1: 1 0 0\n", "  eth2: 1 0 0\n"}}}};
}

/** A value as text, with the monitor's name left open. */
std::string openText(const Value &value, const std::string &systemName)
{
    std::string text = value.text;
    if (value.type == CMPI_boolean) {
        text = value.integer ? "true" : "false";
    } else if (!value.elements.empty()) {
        for (const Value &element : value.elements) {
            text += (text.empty() ? "" : ", ") + openText(element, systemName);
        }
    } else if (value.type & (CMPI_UINT | CMPI_SINT)) {
        text = std::to_string(value.integer);
    } else if (value.type == CMPI_real32) {
        text = std::to_string(value.real);
    } else if (value.type == CMPI_dateTime) {
        text = std::to_string(value.integer);
    }
    if (const size_t at = text.find(systemName); at != std::string::npos) {
        text.replace(at, systemName.size(), "{system name}");
    }
    return text;
}

Keys openKeys(const Path &path)
{
    Keys keys;
    for (const Entry &key : path.keys) {
        keys.push_back({key.name, openText(key.value, oneName)});
    }
    return keys;
}

void probeProperties(const TestedClass &tested, ClassFacts &facts)
{
    Request request = reading(tested, Operation::enumerate, path(tested.name));
    const std::vector<Instance> here = ask(request).instances();
    request.state.push_back(otherMonitor);
    const std::vector<Instance> there = ask(request).instances();
    if (here.empty() || here.size() != there.size()) {
        return;
    }
    for (const Entry &property : here[0].properties) {
        PropertyFacts &known = facts.properties[property.name];
        std::vector<std::string> texts;
        bool constant = true;
        for (size_t i = 0; i < here.size(); ++i) {
            const Value *one = here[i].find(property.name);
            const Value *other = there[i].find(property.name);
            if (!one || !other || one->type == CMPI_ref ||
                openText(*one, oneName) != openText(*other, otherName)) {
                constant = false;
                break;
            }
            texts.push_back(openText(*one, oneName));
        }
        if (!constant) {
            continue;
        }
        if (std::set<std::string>(texts.begin(), texts.end()).size() == 1) {
            texts.resize(1);
        }
        known.constants = texts;
    }
}

// ---- reads ----

/** The checks of one operation, each answer once with all that leads to it. */
std::vector<Check> byOutcome(const std::vector<Check> &checks)
{
    std::vector<Check> kept;
    for (const Check &check : checks) {
        auto same = std::find_if(kept.begin(), kept.end(),
                                 [&](const Check &other) { return other.outcome == check.outcome; });
        if (same == kept.end()) {
            same = kept.insert(same, {{}, check.outcome, check.call});
        }
        for (const std::string &cause : check.causes) {
            if (std::find(same->causes.begin(), same->causes.end(), cause) == same->causes.end()) {
                same->causes.push_back(cause);
            }
        }
    }
    return kept;
}

void probeReads(const Request &base, const std::vector<Fault> &special, std::vector<ReadCheck> &reads)
{
    std::vector<Fault> faultList;
    if (base.operation == Operation::get) {
        faultList = wrongTargets(base);
    }
    faultList.insert(faultList.end(), special.begin(), special.end());
    for (const Fault &fault : everyFailingCall(base)) {
        faultList.push_back(fault);
    }
    std::vector<Check> checks = byOutcome(orderedChecks(base, faultList));
    if (const Outcome usual = ending(base); usual.code != CMPI_RC_OK) {
        checks.push_back({{"in every other case"}, usual});
    }
    for (const Check &check : checks) {
        if (check.outcome.code == CMPI_RC_OK) {
            continue;
        }
        const auto same = std::find_if(reads.begin(), reads.end(), [&](const ReadCheck &known) {
            return known.outcome == check.outcome && known.causes == check.causes;
        });
        if (same == reads.end()) {
            reads.push_back({{nameOf(base.operation)}, check.causes, check.outcome});
        } else {
            same->operations.push_back(nameOf(base.operation));
        }
    }
}

/** The object that GetInstance finds: the enumerated one, else the one that is identified by the class. */
Path foundObject(const TestedClass &tested)
{
    const Path object = broker.classes[tested.name].instances.at(0).path;
    const std::string identifier = "ZT:" + std::string(tested.name).substr(3);
    const Path identified = path(tested.name, {{"InstanceID", identifier}});
    const bool other = ending(reading(tested, Operation::get, object)).code != CMPI_RC_OK &&
                       ending(reading(tested, Operation::get, identified)).code == CMPI_RC_OK;
    return other ? identified : object;
}

void probeInstanceReads(const TestedClass &tested, ClassFacts &facts)
{
    const Path object = foundObject(tested);
    facts.found = openKeys(object);
    probeReads(reading(tested, Operation::get, object), {}, facts.reads);
    probeReads(reading(tested, Operation::enumerate, path(tested.name)), {}, facts.reads);
    probeReads(reading(tested, Operation::enumerateNames, path(tested.name)), {}, facts.reads);
    facts.refresh = messagesOf(ask(reading(tested, Operation::get, object)));
}

/** Leaves one object of each class: the last, which of the endpoints is the management interface's. */
void keepOneObject(std::map<std::string, ClassScript> &classes)
{
    for (auto &[name, script] : classes) {
        if (script.instances.size() > 1) {
            script.instances.erase(script.instances.begin(), script.instances.end() - 1);
        }
    }
}

void probeAssociation(const TestedClass &tested, ClassFacts &facts)
{
    const std::vector<Path> objects =
        ask(reading(tested, Operation::enumerateNames, path(tested.name))).paths();
    std::set<std::string> ends;
    for (const Path &object : objects) {
        const std::string left = object.keys.at(0).value.path->className;
        const std::string right = object.keys.at(1).value.path->className;
        const auto known = std::find_if(facts.ties.begin(), facts.ties.end(), [&](const Tie &tie) {
            return tie.left == left && tie.right == right;
        });
        if (known == facts.ties.end()) {
            facts.ties.push_back({left, right, 1});
        } else {
            ++known->count;
        }
        ends.insert({left, right});
    }
    if (objects.empty()) {
        return;
    }
    for (const Entry &role : objects[0].keys) {
        facts.roles.push_back(role.name);
    }

    const auto served = broker.classes;
    keepOneObject(broker.classes);
    const Path object = objects.back();
    const Path source = *object.keys.at(0).value.path;
    const Fault missing = {{{"object", "missing"}},
                           "an object at an end is not found",
                           [ends](Request &request) { request.unknown = ends; }};
    for (const Operation operation :
         {Operation::get, Operation::enumerate, Operation::enumerateNames, Operation::associators,
          Operation::associatorNames, Operation::references, Operation::referenceNames}) {
        const Path target = operation == Operation::get           ? object
                            : operation >= Operation::associators ? source
                                                                  : path(tested.name);
        probeReads(reading(tested, operation, target), {missing}, facts.reads);
    }
    broker.classes = served;
}

// ---- changes ----

void probeChanges(const TestedClass &tested, const Path &object, const Entries &properties, ClassFacts &facts)
{
    for (const Operation operation :
         {Operation::create, Operation::modify, Operation::remove, Operation::query}) {
        const Request request = {
            .tested = &tested, .operation = operation, .target = object, .values = properties};
        const Answer answer = ask(request);
        facts.changes[nameOf(operation)] = outcomeOf(answer);
        if (operation != Operation::modify || answer.rc == CMPI_RC_ERR_NOT_SUPPORTED) {
            continue;
        }
        std::vector<Fault> faultList = wrongUsers();
        for (const Entry &property : properties) {
            faultList.push_back({{{"property " + property.name, "missing"}},
                                 "`" + property.name + "` is not given",
                                 [name = property.name](Request &changed) {
                                     std::erase_if(changed.values,
                                                   [&](const Entry &entry) { return entry.name == name; });
                                 }});
        }
        for (const Fault &fault : wrongTargets(request)) {
            faultList.push_back(fault);
        }
        for (const Fault &fault : failingCalls(request)) {
            faultList.push_back(fault);
        }
        facts.modifyChecks = orderedChecks(request, faultList);
        facts.modifyMessages = messagesOf(answer);
    }
}

} // namespace

std::vector<ClassFacts> probeClasses()
{
    seam.reset();
    contract::scriptMonitor();
    contract::serveInstances();
    std::vector<ClassFacts> all;
    for (const TestedClass &tested : contract::libraryClasses()) {
        ClassFacts facts;
        facts.name = tested.name;
        facts.kind = kindOf(tested);
        if (tested.createAssociationMI) {
            probeAssociation(tested, facts);
            probeProperties(tested, facts);
            const std::vector<Path> names =
                ask(reading(tested, Operation::enumerateNames, path(tested.name))).paths();
            probeChanges(tested, names.empty() ? path(tested.name) : names[0], {}, facts);
        } else {
            const std::vector<Instance> objects = broker.classes[tested.name].instances;
            for (const Instance &object : objects) {
                facts.instances.push_back(openKeys(object.path));
            }
            Request other = reading(tested, Operation::enumerateNames, path(tested.name));
            other.state.push_back([] { seam.commands["cat /proc/net/dev"].output.pop_back(); });
            facts.countVaries = ask(other).paths().size() != objects.size();
            probeProperties(tested, facts);
            probeInstanceReads(tested, facts);
            probeMethods(tested, facts);
            probeChanges(tested, objects.at(0).path, objects.at(0).properties, facts);
        }
        all.push_back(facts);
    }
    return all;
}

} // namespace reference
