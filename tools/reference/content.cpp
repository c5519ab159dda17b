// SPDX-License-Identifier: Apache-2.0
#include "content.h"

#include "mof_classes.h"
#include "probe.h"
#include "sources.h"
#include <algorithm>
#include <array>
#include <cctype>
#include <map>
#include <set>

namespace reference
{

namespace
{

// ---- words ----

constexpr const char *prefix = "ZT_Marovelton_";

std::string shortName(const std::string &className)
{
    return className.starts_with(prefix) ? className.substr(std::string(prefix).size()) : className;
}

Line words(const std::string &text)
{
    return {{Span::words, text}};
}

Line statusName(int code)
{
    static const std::map<int, std::string> names = enumerators(CMPI_HEADER, "_CMPIrc");
    std::string name = names.at(code);
    for (const std::string skipped : {"CMPI_RC_", "ERR_"})
        if (name.starts_with(skipped))
            name.erase(0, skipped.size());
    return {code == 0 ? Span{Span::words, "OK"} : ::reference::code(name),
            {Span::words, " (" + std::to_string(code) + ")"}};
}

/** A text as a client gets it. */
Line textLine(const std::string &text, const std::string &methodName = "")
{
    if (text.empty())
        return words("none");
    if (text.find_first_not_of(' ') == std::string::npos)
        return words("a blank");
    if (text == supportLibraryText)
        return words("what the support library says");
    if (!methodName.empty() && text == methodName)
        return words("the method's name as it was asked for");
    return {message(text)};
}

Line value(const std::optional<unsigned> &returned)
{
    return words(returned ? std::to_string(*returned) : "");
}

/** The functions that fail in one way are listed together. */
std::vector<std::string> gathered(const std::vector<std::string> &causes)
{
    static const std::vector<std::pair<std::string, std::string>> ways = {
        {" of the object manager fails", "the object manager fails"},
        {"the monitor's record cannot be read (", "a record of the monitor cannot be read"}};
    std::vector<std::string> result;
    std::map<std::string, size_t> places;
    for (const std::string &cause : causes) {
        const auto way = std::find_if(ways.begin(), ways.end(), [&](const auto &candidate) {
            return cause.find(candidate.first) != std::string::npos;
        });
        if (way == ways.end()) {
            result.push_back(cause);
            continue;
        }
        const size_t begin = cause.find('`');
        const std::string function = cause.substr(begin, cause.find('`', begin + 1) + 1 - begin);
        const auto [place, isNew] = places.insert({way->second, result.size()});
        if (isNew)
            result.push_back(way->second + " (" + function + ")");
        else
            result[place->second].insert(result[place->second].size() - 1, ", " + function);
    }
    return result;
}

Line causes(const std::vector<std::string> &all)
{
    std::vector<Line> lines;
    for (std::string cause : gathered(all)) {
        cause[0] = static_cast<char>(toupper(static_cast<unsigned char>(cause[0])));
        lines.push_back(marked(cause));
    }
    return joined(lines, "; ");
}

Line sentence(std::vector<std::string> parts)
{
    std::string text;
    for (size_t i = 0; i < parts.size(); ++i)
        text += (i == 0 ? "" : i + 1 == parts.size() ? ", then " : ", ") + parts[i];
    return marked(text);
}

// ---- anchors ----

std::string idOf(const std::string &className)
{
    return shortName(className);
}

std::string idOf(const std::string &className, const std::string &member)
{
    return shortName(className) + "." + member;
}

Line classLink(const std::string &className)
{
    return {link(shortName(className), idOf(className))};
}

Line linkOrCode(const std::string &className)
{
    if (className.starts_with(prefix))
        return {link(className, idOf(className))};
    return {code(className)};
}

Line classLinks(const std::set<std::string> &classNames)
{
    std::vector<Line> lines;
    for (const std::string &name : classNames)
        lines.push_back(classLink(name));
    return joined(lines, ", ");
}

// ---- the texts and where they come from ----

/** Where a text was received: a method, or an operation of a class. */
struct Place {
    std::string className; // "" of a section about many classes
    std::string label;
    std::string id;
    auto operator<=>(const Place &) const = default;
};

struct Text {
    std::set<int> codes;
    std::set<Place> places;
};

class Page
{
  public:
    explicit Page(std::vector<ClassFacts> theClasses) : classes(std::move(theClasses)) {}

    Document write()
    {
        gatherTexts();
        introduction();
        overview();
        commonAnswers();
        for (const bool associations : {false, true}) {
            heading(2, associations ? "associations" : "classes", associations ? "Associations" : "Classes");
            for (const ClassFacts &facts : classes)
                if (isAssociation(facts) == associations)
                    classSection(facts);
        }
        index();
        silentTexts();
        return document;
    }

  private:
    // ---- blocks ----

    void heading(int level, const std::string &id, const std::string &text)
    {
        document.push_back({.kind = Block::heading, .line = words(text), .level = level, .id = id});
    }
    void paragraph(const Line &line)
    {
        document.push_back({.kind = Block::paragraph, .line = line});
    }
    void paragraph(const std::string &text)
    {
        paragraph(marked(text));
    }
    void items(const std::vector<std::string> &lines)
    {
        std::vector<Row> rows;
        for (const std::string &text : lines)
            rows.push_back({"", {marked(text)}});
        document.push_back({.kind = Block::items, .rows = rows});
    }
    void table(const std::vector<std::string> &head, const std::vector<Row> &rows)
    {
        if (!rows.empty())
            document.push_back({.kind = Block::table, .head = head, .rows = rows});
    }

    static const cim::Class &declared(const ClassFacts &facts)
    {
        return *mof::deskClasses().find(facts.name);
    }
    static bool isAssociation(const ClassFacts &facts)
    {
        return declared(facts).isAssociation;
    }
    static std::string description(const cim::Qualifiers &qualifiers)
    {
        const cim::Qualifier *found = cim::findQualifier(qualifiers, "Description");
        return found ? found->value.text() : "";
    }

    // ---- texts ----

    void note(const Outcome &outcome, const Place &place)
    {
        if (outcome.code == 0 && outcome.text.empty())
            return;
        texts[outcome.text].codes.insert(outcome.code);
        texts[outcome.text].places.insert(place);
    }

    void gatherTexts()
    {
        for (const ClassFacts &facts : classes) {
            const std::string &name = facts.name;
            for (const ReadCheck &check : facts.reads)
                for (const std::string &operation : check.operations)
                    note(check.outcome, isAssociation(facts) && isCommonRead(check)
                                            ? Place{"", "all associations", "association-reads"}
                                            : Place{name, operation, idOf(name, "reads")});
            for (const auto &[operation, outcome] : facts.changes)
                note(outcome, {"", "operations that are not offered", "not-offered"});
            for (const Check &check : facts.modifyChecks)
                note(check.outcome, {name, "ModifyInstance", idOf(name, "ModifyInstance")});
            for (const Check &check : facts.targetChecks)
                note(check.outcome, {name, "any method", idOf(name, "methods")});
            for (const MethodFacts &method : facts.methods) {
                const Place place = {name, method.name, idOf(name, method.name)};
                note(method.usual, place);
                for (const Check &check : method.checks)
                    note(check.outcome, place);
            }
        }
    }

    // ---- the sections in front ----

    void introduction()
    {
        heading(1, "top", "Reference of the classes");
        size_t methods = 0;
        for (const ClassFacts &facts : classes)
            methods += facts.methods.size();
        paragraph(
            "The " + std::to_string(classes.size()) + " classes of libcmpiDisplayManagement with all their " +
            "properties and " + std::to_string(methods) + " methods: what they take, what they check in " +
            "which order, and every text that a client can receive. It is for those who write clients and " +
            "for administrators who look up a text that they got.");
        paragraph(
            "This page is written by a program that reads the class definitions in `mof/` and then asks the "
            "library itself, with each thing that can be wrong, one after the other. "
            "`cmake --build build/dev --target reference` writes it anew; a test fails while it is not "
            "what the library answers.");
        heading(2, "reading", "How to read it");
        items(
            {"Checks stand in the order in which they are made: of several things that are wrong, the one that "
             "stands first is answered.",
             "`Return` is the return value of a method. An object manager delivers it only with the status OK; "
             "with any other status a client gets the status and the text.",
             "`Status` is the CMPI status, in CIM-XML the code of the error. `Text` is its description, to the "
             "letter, with all its blanks.",
             "`Value from the library` is what the monitor says. `Value from the class` is the default of the class "
             "definition, the same for every monitor: `display-host` and other object managers answer with it where the "
             "library sets nothing, some leave it null.",
             "{system name} stands for the monitor's display name, or its IPv4 address while it has none.",
             "Numbers are checked with a function of the monitor. Where only numbers arrive that it cannot refuse, "
             "the check stands here all the same, with the text that a client would receive.",
             ""});
        document.back().rows.back().cells[0] = {{Span::words, "A text that you got is found in the "},
                                                link("index of all texts", "texts"),
                                                {Span::words, "."}};
    }

    Line instanceCount(const ClassFacts &facts)
    {
        if (isAssociation(facts)) {
            size_t count = 0;
            for (const Tie &tie : facts.ties)
                count += tie.count;
            return words(std::to_string(count) + (tiesVary(facts) ? " or more" : ""));
        }
        return words(facts.countVaries ? "one per network interface"
                                       : std::to_string(facts.instances.size()));
    }

    /** Whether an end of the association is a class whose objects vary in number. */
    bool tiesVary(const ClassFacts &facts) const
    {
        return std::any_of(facts.ties.begin(), facts.ties.end(), [&](const Tie &tie) {
            return std::any_of(classes.begin(), classes.end(), [&](const ClassFacts &end) {
                return end.countVaries && (end.name == tie.left || end.name == tie.right);
            });
        });
    }

    void overview()
    {
        heading(2, "overview", "Overview");
        for (const bool associations : {false, true}) {
            std::vector<Row> rows;
            for (const ClassFacts &facts : classes) {
                if (isAssociation(facts) != associations)
                    continue;
                Row row = {"", {{link(facts.name, idOf(facts.name))}, instanceCount(facts)}};
                if (!associations)
                    row.cells.push_back(
                        words(facts.methods.empty() ? "" : std::to_string(facts.methods.size())));
                row.cells.push_back(words(description(declared(facts).qualifiers)));
                rows.push_back(row);
            }
            if (associations)
                table({"Association", "Instances", "What it is"}, rows);
            else
                table({"Class", "Instances", "Methods", "What it is"}, rows);
        }
    }

    // ---- answers that classes have in common ----

    void commonAnswers()
    {
        heading(2, "common", "Common answers");
        statusCodes();
        notOffered();
        unknownMethods();
        targetTable();
        rights();
        engine();
        associationReads();
    }

    void statusCodes()
    {
        heading(3, "status-codes", "Status codes");
        paragraph(
            "The library answers with these and no others of its own. An object manager may add answers of its "
            "own, for a class that it does not know or a user that it does not let in.");
        std::map<int, std::set<std::string>> methodTexts;
        for (const auto &[text, facts] : texts)
            for (const int code : facts.codes)
                methodTexts[code].insert(text);
        std::vector<Row> rows = {{"", {statusName(0), {code("CMPI_RC_OK")}, words("")}}};
        for (const auto &[code, all] : methodTexts)
            if (code != 0)
                rows.push_back({"",
                                {statusName(code),
                                 {reference::code(enumerators(CMPI_HEADER, "_CMPIrc").at(code))},
                                 words(std::to_string(all.size()))}});
        table({"Status", "Constant", "Texts"}, rows);
    }

    void notOffered()
    {
        heading(3, "not-offered", "Operations that are not offered");
        std::map<std::pair<std::string, Outcome>, std::set<std::string>> answers;
        for (const ClassFacts &facts : classes)
            for (const auto &[operation, outcome] : facts.changes)
                if (outcome.code != 0)
                    answers[{operation, outcome}].insert(facts.name);
        std::vector<Row> rows;
        for (const auto &[answer, names] : answers) {
            Line who = words("every class");
            if (names.size() != classes.size()) {
                std::set<std::string> others;
                for (const ClassFacts &facts : classes)
                    if (!names.contains(facts.name))
                        others.insert(facts.name);
                who = words("every class but ");
                who += classLinks(others);
            }
            rows.push_back(
                {"",
                 {{code(answer.first)}, statusName(answer.second.code), textLine(answer.second.text), who}});
        }
        table({"Operation", "Status", "Text", "Class"}, rows);
    }

    void unknownMethods()
    {
        heading(3, "unknown-methods", "Unknown methods");
        paragraph(
            "The answer to a method that a class does not have. Classes without methods answer every method so.");
        std::map<std::pair<Outcome, bool>, std::set<std::string>> answers;
        for (const ClassFacts &facts : classes)
            if (!isAssociation(facts))
                answers[{facts.unknownMethod, facts.ignoresCase}].insert(facts.name);
        std::vector<Row> rows;
        for (const auto &[answer, names] : answers)
            rows.push_back({"",
                            {value(answer.first.value), statusName(answer.first.code),
                             textLine(answer.first.text, "NoSuchMethod"),
                             words(answer.second ? "does not matter" : "matters"), classLinks(names)}});
        table({"Return", "Status", "Text", "Letter case of names", "Classes"}, rows);
    }

    /** The checks of the object that a method is called on, with the classes that make them. */
    void targetTable()
    {
        heading(3, "target-checks", "The object that a method is called on");
        paragraph(
            "Checked before the method is looked up. Each class below lists its own checks in their order.");
        struct Shared {
            Check check;
            std::set<std::string> classNames;
            std::set<unsigned> values;
        };
        std::vector<Shared> all;
        for (const ClassFacts &facts : classes) {
            for (const Check &check : facts.targetChecks) {
                auto same = std::find_if(all.begin(), all.end(), [&](const Shared &known) {
                    return known.check.causes == check.causes &&
                           known.check.outcome.code == check.outcome.code &&
                           known.check.outcome.text == check.outcome.text;
                });
                if (same == all.end())
                    same = all.insert(same, {check, {}, {}});
                same->classNames.insert(facts.name);
                same->values.insert(check.outcome.value.value_or(0));
            }
        }
        std::vector<Row> rows;
        for (const auto &[check, names, values] : all) {
            std::string returned;
            for (const unsigned number : values)
                returned += (returned.empty() ? "" : " or ") + std::to_string(number);
            rows.push_back({"",
                            {causes(check.causes), words(returned), statusName(check.outcome.code),
                             textLine(check.outcome.text), classLinks(names)}});
        }
        table({"When", "Return", "Status", "Text", "Classes"}, rows);
    }

    static bool isAboutUser(const Check &check)
    {
        return std::any_of(check.causes.begin(), check.causes.end(),
                           [](const std::string &cause) { return cause.find("user") != std::string::npos; });
    }

    void rights()
    {
        heading(3, "rights", "Rights");
        std::vector<Line> methods;
        std::vector<Check> checks;
        const auto add = [&](const std::vector<Check> &all) {
            for (const Check &check : all) {
                const bool known = std::any_of(checks.begin(), checks.end(), [&](const Check &other) {
                    return other.causes == check.causes && other.outcome.code == check.outcome.code &&
                           other.outcome.text == check.outcome.text;
                });
                if (isAboutUser(check) && !known)
                    checks.push_back(check);
            }
        };
        for (const ClassFacts &facts : classes) {
            for (const MethodFacts &method : facts.methods) {
                if (!method.administrator)
                    continue;
                methods.push_back(
                    {link(shortName(facts.name) + "." + method.name, idOf(facts.name, method.name))});
                add(method.checks);
            }
            if (!facts.modifyChecks.empty()) {
                methods.push_back(
                    {link(shortName(facts.name) + ".ModifyInstance", idOf(facts.name, "ModifyInstance"))});
                add(facts.modifyChecks);
            }
        }
        Line line =
            words("Everybody whom the object manager lets in may read and call methods, but for these " +
                  std::to_string(methods.size()) + ", which only administrators may use: ");
        line += joined(methods, ", ");
        line.push_back({Span::words, "."});
        paragraph(line);
        std::vector<Row> rows;
        for (const Check &check : checks)
            rows.push_back(
                {"", {causes(check.causes), statusName(check.outcome.code), textLine(check.outcome.text)}});
        table({"When", "Status", "Text"}, rows);
    }

    static std::string withoutPurpose(std::string cause)
    {
        for (const std::string purpose : {" for the refresh", " for the write"})
            if (cause.ends_with(purpose))
                cause.erase(cause.size() - purpose.size());
        return cause;
    }

    void engine()
    {
        heading(3, "engine", "The display engine");
        paragraph(
            "A setting is a message to the display engine: it must not be busy, its queue must open, the message "
            "must be sent, the queue of replies must open, a reply must arrive. Some methods and reads ask it "
            "first to refresh its values, in the same steps.");
        std::map<std::pair<std::string, std::string>, std::set<Place>> answers;
        const auto add = [&](const std::vector<std::string> &all, const Outcome &outcome,
                             const Place &place) {
            for (const std::string &cause : all)
                if (cause.find("engine") != std::string::npos || cause.find("queue") != std::string::npos)
                    if (outcome.code == 1)
                        answers[{withoutPurpose(cause), outcome.text}].insert(place);
        };
        for (const ClassFacts &facts : classes) {
            for (const MethodFacts &method : facts.methods)
                for (const Check &check : method.checks)
                    add(check.causes, check.outcome,
                        {facts.name, method.name, idOf(facts.name, method.name)});
            for (const Check &check : facts.modifyChecks)
                add(check.causes, check.outcome,
                    {facts.name, "ModifyInstance", idOf(facts.name, "ModifyInstance")});
        }
        const std::vector<std::string> steps = {"busy", "queue to the engine", "message", "queue of replies",
                                                "reply of"};
        std::vector<Row> rows;
        for (const std::string &step : steps)
            for (const auto &[answer, places] : answers)
                if (answer.first.find(step) != std::string::npos &&
                    (step != steps.back() || places.size() > 1))
                    rows.push_back(
                        {"", {causes({answer.first}), textLine(answer.second), placeLinks(places)}});
        paragraph(
            "All with the status FAILED (1). The text of a missing reply is that of the setting; those that several "
            "settings share stand here.");
        table({"When", "Text", "Where"}, rows);
    }

    // ---- associations in common ----

    bool isCommonRead(const ReadCheck &check) const
    {
        size_t associations = 0;
        size_t having = 0;
        for (const ClassFacts &facts : classes) {
            if (!isAssociation(facts))
                continue;
            ++associations;
            having += std::find(facts.reads.begin(), facts.reads.end(), check) != facts.reads.end();
        }
        return having == associations;
    }

    Row readRow(const ReadCheck &check) const
    {
        std::vector<Line> operations;
        for (const std::string &operation : check.operations)
            operations.push_back({code(operation)});
        return {"",
                {causes(check.causes), joined(operations, ", "), statusName(check.outcome.code),
                 textLine(check.outcome.text)}};
    }

    void associationReads()
    {
        heading(3, "association-reads", "Reading associations");
        paragraph(
            "An association asks the object manager for the objects at its ends, whose own failures come "
            "through. What all associations have in common:");
        std::vector<Row> rows;
        for (const ClassFacts &facts : classes) {
            if (!isAssociation(facts))
                continue;
            for (const ReadCheck &check : facts.reads)
                if (isCommonRead(check))
                    rows.push_back(readRow(check));
            break;
        }
        table({"When", "Operation", "Status", "Text"}, rows);
    }

    // ---- one class ----

    void classSection(const ClassFacts &facts)
    {
        const cim::Class &klass = declared(facts);
        heading(3, idOf(facts.name), facts.name);
        document.back().brief = shortName(facts.name);
        paragraph(words(description(klass.qualifiers)));
        generalTable(facts, klass);
        if (!facts.ties.empty())
            tieTable(facts, klass);
        properties(facts, klass);
        reads(facts);
        modification(facts);
        if (!isAssociation(facts))
            methods(facts, klass);
    }

    void generalTable(const ClassFacts &facts, const cim::Class &klass)
    {
        std::vector<std::string> superclasses;
        for (const cim::Class *above = mof::deskClasses().find(klass.superclass); above;
             above = mof::deskClasses().find(above->superclass))
            superclasses.push_back("`" + above->name + "`");
        std::string chain;
        for (const std::string &name : superclasses)
            chain += (chain.empty() ? "" : ", ") + name;
        std::vector<Row> rows = {{"",
                                  {words(superclasses.size() > 1 ? "Superclasses" : "Superclass"),
                                   chain.empty() ? words("none") : marked(chain)}},
                                 {"", {words("Provider"), words(facts.kind)}},
                                 {"", {words("Instances"), instanceCount(facts)}}};
        const auto keyWords = [](const Keys &keys) {
            std::string text;
            for (const auto &[name, keyValue] : keys)
                text += (text.empty() ? "" : ", ") + std::string("`") + name + "=\"" + keyValue + "\"`";
            return marked(text);
        };
        if (!facts.instances.empty()) {
            std::vector<Line> lines;
            for (const Keys &keys : facts.instances)
                lines.push_back(keyWords(keys));
            if (facts.countVaries)
                lines = {words("for example "), lines.back()};
            rows.push_back({"",
                            {words(lines.size() == 1 ? "Its keys" : "Their keys"),
                             facts.countVaries ? joined(lines, "") : joined(lines, "; ")}});
            if (facts.found != facts.instances[0])
                rows.push_back({"", {words("GetInstance finds it by"), keyWords(facts.found)}});
        }
        if (!facts.refresh.empty())
            rows.push_back({"", {words("Before a read it"), sentence(facts.refresh)}});
        table({"", ""}, rows);
    }

    void tieTable(const ClassFacts &facts, const cim::Class &klass)
    {
        std::vector<Row> ends;
        for (const std::string &name : facts.roles) {
            const cim::Property *role = klass.findProperty(name);
            const cim::Qualifier *min = cim::findQualifier(role->qualifiers, "Min");
            const cim::Qualifier *max = cim::findQualifier(role->qualifiers, "Max");
            const std::string from = min ? min->value.text() : "0";
            const std::string to = max ? max->value.text() : "any number";
            ends.push_back({"",
                            {{code(role->name)},
                             linkOrCode(role->referenceClass),
                             words(from == to ? from : from + " to " + to),
                             words(description(role->qualifiers))}});
        }
        heading(4, idOf(facts.name, "ends"), "Ends");
        table({"Role", "Class", "Objects", "Description"}, ends);
        std::vector<Row> rows;
        for (const Tie &tie : facts.ties)
            rows.push_back(
                {"", {linkOrCode(tie.left), linkOrCode(tie.right), words(std::to_string(tie.count))}});
        paragraph("What it ties on a monitor with the network interfaces `lo` and `eth0`:");
        table({facts.roles.at(0), facts.roles.at(1), "Objects"}, rows);
    }

    static std::string listed(const cim::Qualifier *qualifier)
    {
        std::string text;
        for (const std::string &item : qualifier->value.items)
            text += (text.empty() ? "" : ", ") + item;
        return text;
    }

    /** What the declaration says about values: names, bounds, unit. */
    static Line declaredValues(const cim::Qualifiers &qualifiers)
    {
        std::vector<Line> lines;
        const cim::Qualifier *map = cim::findQualifier(qualifiers, "ValueMap");
        const cim::Qualifier *names = cim::findQualifier(qualifiers, "Values");
        std::string values;
        for (size_t i = 0; i < (map ? map->value.items.size() : names ? names->value.items.size() : 0); ++i) {
            values += (values.empty() ? "" : ", ") + (map ? map->value.items[i] : std::to_string(i));
            if (names && i < names->value.items.size())
                values += " " + names->value.items[i];
        }
        if (!values.empty())
            lines.push_back(words(values + (names ? "" : " (what they mean is not documented)")));
        static const std::vector<std::pair<std::string, std::string>> others = {
            {"MinValue", "at least "},
            {"MaxValue", "at most "},
            {"MaxLen", "characters at most: "},
            {"PUnit", "unit: "},
            {"Units", "unit: "}};
        for (const auto &[name, text] : others)
            if (const cim::Qualifier *found = cim::findQualifier(qualifiers, name))
                lines.push_back(words(text + listed(found)));
        if (cim::hasQualifier(qualifiers, "Write"))
            lines.push_back(words("can be modified"));
        return joined(lines, "; ");
    }

    static std::string typeOf(const cim::Element &element)
    {
        const std::string type = element.type == cim::Type::reference ? element.referenceClass + " REF"
                                                                      : cim::typeName(element.type);
        return type + (element.isArray ? "[]" : "");
    }

    /** What a key is in the paths, of all instances alike or of one after the other. */
    static std::vector<std::string> keyValues(const ClassFacts &facts, const std::string &property)
    {
        std::vector<std::string> values;
        for (const Keys &keys : facts.instances)
            for (const auto &[name, keyValue] : keys)
                if (name == property)
                    values.push_back(keyValue);
        if (std::set<std::string>(values.begin(), values.end()).size() == 1)
            values.resize(1);
        return facts.countVaries && values.size() > 1 ? std::vector<std::string>() : values;
    }

    static Line provided(const ClassFacts &facts, const cim::Property &property)
    {
        const auto found = facts.properties.find(property.name);
        std::vector<Line> constants;
        for (const std::string &constant :
             found == facts.properties.end() ? keyValues(facts, property.name) : found->second.constants)
            constants.push_back(constant.find_first_not_of(' ') == std::string::npos
                                    ? words("a blank")
                                    : Line{message(constant)});
        if (constants.empty())
            return words("varies");
        const bool onlyKey = found == facts.properties.end();
        Line line = words(std::string(onlyKey ? "none; in the path " : "") +
                          (constants.size() == 1 ? "always " : "in turn "));
        line += joined(constants, ", ");
        return line;
    }

    /** What the object manager fills in from the class. */
    static Line byDefault(const cim::Property &property)
    {
        std::vector<Line> values;
        for (const std::string &item : property.defaultValue.items) {
            values.push_back({code(item)});
        }
        return joined(values, ", ");
    }

    void properties(const ClassFacts &facts, const cim::Class &klass)
    {
        const auto hasValue = [&](const cim::Property &property) {
            return property.isKey || facts.properties.contains(property.name);
        };
        const auto row = [&](const cim::Property &property) {
            Line name = {code(property.name)};
            if (property.isKey)
                name.push_back({Span::words, " (key)"});
            if (property.classOrigin != klass.name)
                name.push_back({Span::words, " from " + property.classOrigin});
            Row cells = {idOf(klass.name, property.name),
                         {name,
                          {code(typeOf(property))},
                          words(description(property.qualifiers)),
                          declaredValues(property.qualifiers)}};
            cells.cells.push_back(hasValue(property) ? provided(facts, property) : byDefault(property));
            return cells;
        };
        std::vector<Row> given, without;
        for (const bool propagated : {false, true}) // the class's own ones first
            for (const cim::Property &property : klass.properties)
                if (property.propagated == propagated)
                    (hasValue(property) ? given : without).push_back(row(property));
        if (given.empty() && without.empty())
            return;
        heading(4, idOf(klass.name, "properties"), "Properties");
        table({"Property", "Type", "Description", "Declared values", "Value from the library"}, given);
        if (without.empty())
            return;
        if (std::none_of(without.begin(), without.end(),
                         [](const Row &each) { return !each.cells.back().empty(); })) {
            for (Row &each : without)
                each.cells.pop_back();
            paragraph("Declared, without a value from the library or from the class:");
            table({"Property", "Type", "Description", "Declared values"}, without);
            return;
        }
        paragraph(
            "Declared, without a value from the library; where the class has a default, the object manager answers "
            "with it:");
        table({"Property", "Type", "Description", "Declared values", "Value from the class"}, without);
    }

    void reads(const ClassFacts &facts)
    {
        heading(4, idOf(facts.name, "reads"), "Reads");
        std::vector<Row> rows;
        bool common = false;
        for (const ReadCheck &check : facts.reads) {
            if (isAssociation(facts) && isCommonRead(check))
                common = true;
            else
                rows.push_back(readRow(check));
        }
        if (common) {
            Line line = words("Beside what ");
            line += {link("all associations", "association-reads"), {Span::words, " answer:"}};
            paragraph(line);
        }
        table({"When", "Operation", "Status", "Text"}, rows);
    }

    static std::vector<Row> checkRows(const std::vector<Check> &checks, bool values)
    {
        std::vector<Row> rows;
        for (const Check &check : checks) {
            Row row = {"", {words(std::to_string(rows.size() + 1)), causes(check.causes)}};
            if (values)
                row.cells.push_back(value(check.outcome.value));
            row.cells.push_back(statusName(check.outcome.code));
            row.cells.push_back(textLine(check.outcome.text));
            rows.push_back(row);
        }
        return rows;
    }

    void modification(const ClassFacts &facts)
    {
        if (facts.modifyChecks.empty())
            return;
        heading(4, idOf(facts.name, "ModifyInstance"), "ModifyInstance");
        Line line = words("Only administrators may use it. It ");
        line += sentence(facts.modifyMessages);
        line.push_back({Span::words, "."});
        paragraph(line);
        table({"", "When", "Status", "Text"}, checkRows(facts.modifyChecks, false));
    }

    // ---- methods ----

    void methods(const ClassFacts &facts, const cim::Class &klass)
    {
        heading(4, idOf(facts.name, "methods"), "Methods");
        if (facts.methods.empty()) {
            Line line = words("None; ");
            line += {link("every method is unknown", "unknown-methods"), {Span::words, "."}};
            paragraph(line);
        }
        if (!facts.notOffered.empty()) {
            std::string names;
            for (const std::string &name : facts.notOffered)
                names += (names.empty() ? "" : ", ") + ("`" + name + "`");
            paragraph("Declared by a superclass and not offered, answered as unknown: " + names + ".");
        }
        if (!facts.targetChecks.empty()) {
            paragraph("Before any method:");
            std::vector<Row> rows = checkRows(facts.targetChecks, true);
            rows.push_back({"",
                            {words(std::to_string(rows.size() + 1)), words("There is no such method"),
                             value(facts.unknownMethod.value), statusName(facts.unknownMethod.code),
                             textLine(facts.unknownMethod.text, facts.unknownMethodName)}});
            table({"", "When", "Return", "Status", "Text"}, rows);
        }
        for (const MethodFacts &method : facts.methods)
            methodSection(facts, *klass.findMethod(method.name), method);
    }

    void methodSection(const ClassFacts &facts, const cim::Method &method, const MethodFacts &answers)
    {
        heading(5, idOf(facts.name, method.name), method.name);
        paragraph(words(description(method.qualifiers)));
        Line signature = {code(mof::describe(method))};
        signature.push_back({Span::words, answers.administrator ? ". " : ". Everybody may call it."});
        if (answers.administrator)
            signature += {strong("Only administrators"), {Span::words, " may call it."}};
        if (!answers.messages.empty()) {
            signature.push_back({Span::words, " It "});
            signature += sentence(answers.messages);
            signature.push_back({Span::words, "."});
        }
        if (const Line values = declaredValues(method.qualifiers); !values.empty()) {
            signature.push_back({Span::words, " Return values: "});
            signature += values;
            signature.push_back({Span::words, "."});
        }
        paragraph(signature);

        std::vector<Row> rows;
        for (const ArgumentFacts &argument : answers.arguments) {
            const cim::Parameter &parameter = *method.findParameter(argument.name);
            std::vector<Line> accepted;
            for (const std::string &accepts : argument.values)
                accepted.push_back(marked(accepts));
            rows.push_back({idOf(facts.name, method.name + "." + argument.name),
                            {{code(argument.name)},
                             {code(typeOf(parameter))},
                             words(description(parameter.qualifiers)),
                             marked(argument.form),
                             joined(accepted, "; "),
                             declaredValues(parameter.qualifiers)}});
        }
        table({"Argument", "Type", "Description", "Read as", "Accepted", "Declared values"}, rows);

        std::vector<Row> checks = checkRows(answers.checks, true);
        const bool works = answers.usual.code == 0;
        checks.push_back(
            {"",
             {words(std::to_string(checks.size() + 1)), words(works ? "Otherwise" : "Always"),
              value(answers.usual.value), statusName(answers.usual.code), textLine(answers.usual.text)}});
        table({"", "When", "Return", "Status", "Text"}, checks);
    }

    // ---- the index ----

    /** Links to places; where there are many, those of a class together. */
    static Line placeLinks(const std::set<Place> &places)
    {
        std::map<std::string, std::map<std::string, std::vector<std::string>>> byClass; // labels by id
        for (const Place &place : places)
            byClass[place.className][place.id].push_back(place.label);
        std::vector<Line> lines;
        for (const auto &[className, byId] : byClass) {
            if (byClass.size() > 6 && !className.empty()) {
                lines.push_back(
                    {link(shortName(className), byId.size() == 1 ? byId.begin()->first : idOf(className))});
                continue;
            }
            if (places.size() > 8 && byId.size() > 1 && !className.empty()) {
                lines.push_back({link(shortName(className), idOf(className)),
                                 {Span::words, " (" + std::to_string(byId.size()) + " places)"}});
                continue;
            }
            for (const auto &[id, labels] : byId) {
                std::string label;
                for (const std::string &name : labels)
                    label += (!label.empty()      ? ", "
                              : className.empty() ? ""
                                                  : shortName(className) + ": ") +
                             name;
                lines.push_back({link(label, id)});
            }
        }
        return joined(lines, "; ");
    }

    void index()
    {
        heading(2, "texts", "Index of all texts");
        paragraph(
            "Every text that a request was answered with, in alphabetical order, with where it comes from. A "
            "number in a text may depend on the monitor's state; look for its beginning.");
        const auto before = [](const std::string &a, const std::string &b) {
            return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
                return tolower(static_cast<unsigned char>(x)) < tolower(static_cast<unsigned char>(y));
            });
        };
        std::vector<std::string> order;
        for (const auto &[text, facts] : texts)
            if (text.find_first_not_of(' ') != std::string::npos && text != supportLibraryText)
                order.push_back(text);
        std::stable_sort(order.begin(), order.end(), before);
        std::vector<Row> rows;
        for (const std::string &text : order) {
            const Text &facts = texts.at(text);
            std::vector<Line> codes;
            for (const int code : facts.codes)
                codes.push_back(statusName(code));
            rows.push_back(
                {"", {{message(text)}, joined(codes, ", "), placeLinks(facts.places), sourcesOf(text)}});
        }
        table({"Text", "Code", "Where it comes from", "Source"}, rows);
    }

    static Line sourceName(const SourceText &source)
    {
        std::string file = source.file;
        if (file.starts_with(prefix))
            file.erase(0, std::string(prefix).size());
        return {code(file), {Span::words, " "}, code(source.function)};
    }

    Line sourcesOf(const std::string &text)
    {
        std::vector<Line> lines;
        std::set<std::string> known;
        for (const SourceText &source : sources)
            if (isMadeBy(text, source.text) && known.insert(source.file + source.function).second)
                lines.push_back(sourceName(source));
        if (lines.size() > 3)
            lines = {lines[0], words("and " + std::to_string(lines.size() - 1) + " more places")};
        return joined(lines, ", ");
    }

    /** The texts in the sources that are no answer and no value of a property. */
    void silentTexts()
    {
        std::set<std::string> heard;
        for (const auto &[text, facts] : texts)
            heard.insert(text);
        for (const ClassFacts &facts : classes)
            for (const auto &[name, property] : facts.properties)
                heard.insert(property.constants.begin(), property.constants.end());
        std::vector<Row> rows;
        std::set<std::array<std::string, 3>> known;
        for (const SourceText &source : sources) {
            const bool made = std::any_of(heard.begin(), heard.end(), [&](const std::string &text) {
                return isMadeBy(text, source.text);
            });
            if (!made && known.insert({source.text, source.file, source.function}).second)
                rows.push_back({"", {{message(source.text)}, sourceName(source)}});
        }
        heading(2, "silent-texts", "Texts that no request was answered with");
        paragraph(
            "These stand in the library's source too. Another text takes their place on the way to the client, or "
            "no request leads to the function that holds them.");
        table({"Text", "Source"}, rows);
    }

    std::vector<ClassFacts> classes;
    Document document;
    std::map<std::string, Text> texts;
    std::vector<SourceText> sources = sourceTexts(SOURCE_DIR);
};

} // namespace

Document referencePage()
{
    return Page(probeClasses()).write();
}

} // namespace reference
