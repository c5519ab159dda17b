// SPDX-License-Identifier: Apache-2.0
// What stands once: the sections in front, the answers that classes have in common, the index.
#include "content.h"

#include "page.h"

#include "words.h"
#include <algorithm>
#include <array>

namespace reference
{

Document Page::write()
{
    gatherTexts();
    introduction();
    overview();
    commonAnswers();
    for (const bool associations : {false, true}) {
        heading(2, associations ? "associations" : "classes", associations ? "Associations" : "Classes");
        for (const ClassFacts &facts : classes_) {
            if (isAssociation(facts) == associations) {
                classSection(facts);
            }
        }
    }
    index();
    silentTexts();
    return document_;
}

// ---- blocks ----

void Page::heading(int level, const std::string &id, const std::string &text)
{
    document_.push_back({.kind = Block::heading, .line = words(text), .level = level, .id = id});
}

void Page::paragraph(const Line &line)
{
    document_.push_back({.kind = Block::paragraph, .line = line});
}

void Page::paragraph(const std::string &text)
{
    paragraph(marked(text));
}

void Page::items(const std::vector<std::string> &lines)
{
    std::vector<Row> rows;
    for (const std::string &text : lines) {
        rows.push_back({"", {marked(text)}});
    }
    document_.push_back({.kind = Block::items, .rows = rows});
}

void Page::table(const std::vector<std::string> &head, const std::vector<Row> &rows)
{
    if (!rows.empty()) {
        document_.push_back({.kind = Block::table, .head = head, .rows = rows});
    }
}

const cim::Class &Page::declared(const ClassFacts &facts)
{
    return *mof::deskClasses().find(facts.name);
}

bool Page::isAssociation(const ClassFacts &facts)
{
    return declared(facts).isAssociation;
}

std::string Page::description(const cim::Qualifiers &qualifiers)
{
    const cim::Qualifier *found = cim::findQualifier(qualifiers, "Description");
    return found ? found->value.text() : "";
}

// ---- texts ----

void Page::note(const Outcome &outcome, const Place &place)
{
    if (outcome.code == 0 && outcome.text.empty()) {
        return;
    }
    texts_[outcome.text].codes.insert(outcome.code);
    texts_[outcome.text].places.insert(place);
}

void Page::gatherTexts()
{
    for (const ClassFacts &facts : classes_) {
        const std::string &name = facts.name;
        for (const ReadCheck &check : facts.reads) {
            for (const std::string &operation : check.operations) {
                note(check.outcome, isAssociation(facts) && isCommonRead(check)
                                        ? Place{"", "all associations", "association-reads"}
                                        : Place{name, operation, idOf(name, "reads")});
            }
        }
        for (const auto &[operation, outcome] : facts.changes) {
            note(outcome, {"", "operations that are not offered", "not-offered"});
        }
        for (const Check &check : facts.modifyChecks) {
            note(check.outcome, {name, "ModifyInstance", idOf(name, "ModifyInstance")});
        }
        for (const Check &check : facts.targetChecks) {
            note(check.outcome, {name, "any method", idOf(name, "methods")});
        }
        for (const MethodFacts &method : facts.methods) {
            const Place place = {name, method.name, idOf(name, method.name)};
            note(method.usual, place);
            for (const Check &check : method.checks) {
                note(check.outcome, place);
            }
        }
    }
}

// ---- the sections in front ----

void Page::introduction()
{
    heading(1, "top", "Reference of the classes");
    size_t methods = 0;
    for (const ClassFacts &facts : classes_) {
        methods += facts.methods.size();
    }
    paragraph(
        "The " + std::to_string(classes_.size()) + " classes of libcmpiDisplayManagement with all their " +
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
    document_.back().rows.back().cells[0] = {{Span::words, "A text that you got is found in the "},
                                             link("index of all texts", "texts"),
                                             {Span::words, "."}};
}

Line Page::instanceCount(const ClassFacts &facts)
{
    if (isAssociation(facts)) {
        size_t count = 0;
        for (const Tie &tie : facts.ties) {
            count += tie.count;
        }
        return words(std::to_string(count) + (tiesVary(facts) ? " or more" : ""));
    }
    return words(facts.countVaries ? "one per network interface" : std::to_string(facts.instances.size()));
}

bool Page::tiesVary(const ClassFacts &facts) const
{
    return std::any_of(facts.ties.begin(), facts.ties.end(), [&](const Tie &tie) {
        return std::any_of(classes_.begin(), classes_.end(), [&](const ClassFacts &end) {
            return end.countVaries && (end.name == tie.left || end.name == tie.right);
        });
    });
}

void Page::overview()
{
    heading(2, "overview", "Overview");
    for (const bool associations : {false, true}) {
        std::vector<Row> rows;
        for (const ClassFacts &facts : classes_) {
            if (isAssociation(facts) != associations) {
                continue;
            }
            Row row = {"", {{link(facts.name, idOf(facts.name))}, instanceCount(facts)}};
            if (!associations) {
                row.cells.push_back(words(facts.methods.empty() ? "" : std::to_string(facts.methods.size())));
            }
            row.cells.push_back(words(description(declared(facts).qualifiers)));
            rows.push_back(row);
        }
        if (associations) {
            table({"Association", "Instances", "What it is"}, rows);
        } else {
            table({"Class", "Instances", "Methods", "What it is"}, rows);
        }
    }
}

// ---- answers that classes have in common ----

void Page::commonAnswers()
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

void Page::statusCodes()
{
    heading(3, "status-codes", "Status codes");
    paragraph(
        "The library answers with these and no others of its own. An object manager may add answers of its "
        "own, for a class that it does not know or a user that it does not let in.");
    std::map<int, std::set<std::string>> methodTexts;
    for (const auto &[text, facts] : texts_) {
        for (const int code : facts.codes) {
            methodTexts[code].insert(text);
        }
    }
    std::vector<Row> rows = {{"", {statusName(0), {code("CMPI_RC_OK")}, words("")}}};
    for (const auto &[code, all] : methodTexts) {
        if (code != 0) {
            rows.push_back({"",
                            {statusName(code),
                             {reference::code(enumerators(CMPI_HEADER, "_CMPIrc").at(code))},
                             words(std::to_string(all.size()))}});
        }
    }
    table({"Status", "Constant", "Texts"}, rows);
}

void Page::notOffered()
{
    heading(3, "not-offered", "Operations that are not offered");
    std::map<std::pair<std::string, Outcome>, std::set<std::string>> answers;
    for (const ClassFacts &facts : classes_) {
        for (const auto &[operation, outcome] : facts.changes) {
            if (outcome.code != 0) {
                answers[{operation, outcome}].insert(facts.name);
            }
        }
    }
    std::vector<Row> rows;
    for (const auto &[answer, names] : answers) {
        Line who = words("every class");
        if (names.size() != classes_.size()) {
            std::set<std::string> others;
            for (const ClassFacts &facts : classes_) {
                if (!names.contains(facts.name)) {
                    others.insert(facts.name);
                }
            }
            who = words("every class but ");
            who += classLinks(others);
        }
        rows.push_back(
            {"", {{code(answer.first)}, statusName(answer.second.code), textLine(answer.second.text), who}});
    }
    table({"Operation", "Status", "Text", "Class"}, rows);
}

void Page::unknownMethods()
{
    heading(3, "unknown-methods", "Unknown methods");
    paragraph(
        "The answer to a method that a class does not have. Classes without methods answer every method so.");
    std::map<std::pair<Outcome, bool>, std::set<std::string>> answers;
    for (const ClassFacts &facts : classes_) {
        if (!isAssociation(facts)) {
            answers[{facts.unknownMethod, facts.ignoresCase}].insert(facts.name);
        }
    }
    std::vector<Row> rows;
    for (const auto &[answer, names] : answers) {
        rows.push_back({"",
                        {value(answer.first.value), statusName(answer.first.code),
                         textLine(answer.first.text, "NoSuchMethod"),
                         words(answer.second ? "does not matter" : "matters"), classLinks(names)}});
    }
    table({"Return", "Status", "Text", "Letter case of names", "Classes"}, rows);
}

void Page::targetTable()
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
    for (const ClassFacts &facts : classes_) {
        for (const Check &check : facts.targetChecks) {
            auto same = std::find_if(all.begin(), all.end(), [&](const Shared &known) {
                return known.check.causes == check.causes && known.check.outcome.code == check.outcome.code &&
                       known.check.outcome.text == check.outcome.text;
            });
            if (same == all.end()) {
                same = all.insert(same, {check, {}, {}});
            }
            same->classNames.insert(facts.name);
            same->values.insert(check.outcome.value.value_or(0));
        }
    }
    std::vector<Row> rows;
    for (const auto &[check, names, values] : all) {
        std::string returned;
        for (const unsigned number : values) {
            returned += (returned.empty() ? "" : " or ") + std::to_string(number);
        }
        rows.push_back({"",
                        {causes(check.causes), words(returned), statusName(check.outcome.code),
                         textLine(check.outcome.text), classLinks(names)}});
    }
    table({"When", "Return", "Status", "Text", "Classes"}, rows);
}

bool Page::isAboutUser(const Check &check)
{
    return std::any_of(check.causes.begin(), check.causes.end(),
                       [](const std::string &cause) { return cause.find("user") != std::string::npos; });
}

void Page::rights()
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
            if (isAboutUser(check) && !known) {
                checks.push_back(check);
            }
        }
    };
    for (const ClassFacts &facts : classes_) {
        for (const MethodFacts &method : facts.methods) {
            if (!method.administrator) {
                continue;
            }
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
    Line line = words("Everybody whom the object manager lets in may read and call methods, but for these " +
                      std::to_string(methods.size()) + ", which only administrators may use: ");
    line += joined(methods, ", ");
    line.push_back({Span::words, "."});
    paragraph(line);
    std::vector<Row> rows;
    for (const Check &check : checks) {
        rows.push_back(
            {"", {causes(check.causes), statusName(check.outcome.code), textLine(check.outcome.text)}});
    }
    table({"When", "Status", "Text"}, rows);
}

std::string Page::withoutPurpose(std::string cause)
{
    for (const std::string purpose : {" for the refresh", " for the write"}) {
        if (cause.ends_with(purpose)) {
            cause.erase(cause.size() - purpose.size());
        }
    }
    return cause;
}

void Page::engine()
{
    heading(3, "engine", "The display engine");
    paragraph(
        "A setting is a message to the display engine: it must not be busy, its queue must open, the message "
        "must be sent, the queue of replies must open, a reply must arrive. Some methods and reads ask it "
        "first to refresh its values, in the same steps.");
    std::map<std::pair<std::string, std::string>, std::set<Place>> answers;
    const auto add = [&](const std::vector<std::string> &all, const Outcome &outcome, const Place &place) {
        for (const std::string &cause : all) {
            if (cause.find("engine") != std::string::npos || cause.find("queue") != std::string::npos) {
                if (outcome.code == 1) {
                    answers[{withoutPurpose(cause), outcome.text}].insert(place);
                }
            }
        }
    };
    for (const ClassFacts &facts : classes_) {
        for (const MethodFacts &method : facts.methods) {
            for (const Check &check : method.checks) {
                add(check.causes, check.outcome, {facts.name, method.name, idOf(facts.name, method.name)});
            }
        }
        for (const Check &check : facts.modifyChecks) {
            add(check.causes, check.outcome,
                {facts.name, "ModifyInstance", idOf(facts.name, "ModifyInstance")});
        }
    }
    const std::vector<std::string> steps = {"busy", "queue to the engine", "message", "queue of replies",
                                            "reply of"};
    std::vector<Row> rows;
    for (const std::string &step : steps) {
        for (const auto &[answer, places] : answers) {
            if (answer.first.find(step) != std::string::npos && (step != steps.back() || places.size() > 1)) {
                rows.push_back({"", {causes({answer.first}), textLine(answer.second), placeLinks(places)}});
            }
        }
    }
    paragraph(
        "All with the status FAILED (1). The text of a missing reply is that of the setting; those that several "
        "settings share stand here.");
    table({"When", "Text", "Where"}, rows);
}

// ---- associations in common ----

bool Page::isCommonRead(const ReadCheck &check) const
{
    size_t associations = 0;
    size_t having = 0;
    for (const ClassFacts &facts : classes_) {
        if (!isAssociation(facts)) {
            continue;
        }
        ++associations;
        having += std::find(facts.reads.begin(), facts.reads.end(), check) != facts.reads.end();
    }
    return having == associations;
}

Row Page::readRow(const ReadCheck &check) const
{
    std::vector<Line> operations;
    for (const std::string &operation : check.operations) {
        operations.push_back({code(operation)});
    }
    return {"",
            {causes(check.causes), joined(operations, ", "), statusName(check.outcome.code),
             textLine(check.outcome.text)}};
}

void Page::associationReads()
{
    heading(3, "association-reads", "Reading associations");
    paragraph("An association asks the object manager for the objects at its ends, whose own failures come "
              "through. What all associations have in common:");
    std::vector<Row> rows;
    for (const ClassFacts &facts : classes_) {
        if (!isAssociation(facts)) {
            continue;
        }
        for (const ReadCheck &check : facts.reads) {
            if (isCommonRead(check)) {
                rows.push_back(readRow(check));
            }
        }
        break;
    }
    table({"When", "Operation", "Status", "Text"}, rows);
}

// ---- the index ----

Line Page::placeLinks(const std::set<Place> &places)
{
    std::map<std::string, std::map<std::string, std::vector<std::string>>> byClass; // labels by id
    for (const Place &place : places) {
        byClass[place.className][place.id].push_back(place.label);
    }
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
            for (const std::string &name : labels) {
                label += (!label.empty()      ? ", "
                          : className.empty() ? ""
                                              : shortName(className) + ": ") +
                         name;
            }
            lines.push_back({link(label, id)});
        }
    }
    return joined(lines, "; ");
}

void Page::index()
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
    for (const auto &[text, facts] : texts_) {
        if (text.find_first_not_of(' ') != std::string::npos && text != supportLibraryText) {
            order.push_back(text);
        }
    }
    std::stable_sort(order.begin(), order.end(), before);
    std::vector<Row> rows;
    for (const std::string &text : order) {
        const Text &facts = texts_.at(text);
        std::vector<Line> codes;
        for (const int code : facts.codes) {
            codes.push_back(statusName(code));
        }
        rows.push_back(
            {"", {{message(text)}, joined(codes, ", "), placeLinks(facts.places), sourcesOf(text)}});
    }
    table({"Text", "Code", "Where it comes from", "Source"}, rows);
}

Line Page::sourceName(const SourceText &source)
{
    return {code(shortName(source.file)), {Span::words, " "}, code(source.function)};
}

Line Page::sourcesOf(const std::string &text)
{
    std::vector<Line> lines;
    std::set<std::string> known;
    for (const SourceText &source : sources_) {
        if (isMadeBy(text, source.text) && known.insert(source.file + source.function).second) {
            lines.push_back(sourceName(source));
        }
    }
    if (lines.size() > 3) {
        lines = {lines[0], words("and " + std::to_string(lines.size() - 1) + " more places")};
    }
    return joined(lines, ", ");
}

void Page::silentTexts()
{
    std::set<std::string> heard;
    for (const auto &[text, facts] : texts_) {
        heard.insert(text);
    }
    for (const ClassFacts &facts : classes_) {
        for (const auto &[name, property] : facts.properties) {
            heard.insert(property.constants.begin(), property.constants.end());
        }
    }
    std::vector<Row> rows;
    std::set<std::array<std::string, 3>> known;
    for (const SourceText &source : sources_) {
        const bool made = std::any_of(heard.begin(), heard.end(),
                                      [&](const std::string &text) { return isMadeBy(text, source.text); });
        if (!made && known.insert({source.text, source.file, source.function}).second) {
            rows.push_back({"", {{message(source.text)}, sourceName(source)}});
        }
    }
    heading(2, "silent-texts", "Texts that no request was answered with");
    paragraph(
        "These stand in the library's source too. Another text takes their place on the way to the client, or "
        "no request leads to the function that holds them.");
    table({"Text", "Source"}, rows);
}

Document referencePage()
{
    return Page(probeClasses()).write();
}

} // namespace reference
