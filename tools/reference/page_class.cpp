// SPDX-License-Identifier: Apache-2.0
// The sections of one class each.
#include "page.h"

#include "words.h"
#include <algorithm>
#include <array>

namespace reference
{

// ---- one class ----

void Page::classSection(const ClassFacts &facts)
{
    const cim::Class &klass = declared(facts);
    heading(3, idOf(facts.name), facts.name);
    document_.back().brief = shortName(facts.name);
    paragraph(words(description(klass.qualifiers)));
    generalTable(facts, klass);
    if (!facts.ties.empty()) {
        tieTable(facts, klass);
    }
    properties(facts, klass);
    reads(facts);
    modification(facts);
    if (!isAssociation(facts)) {
        methods(facts, klass);
    }
}

void Page::generalTable(const ClassFacts &facts, const cim::Class &klass)
{
    std::vector<std::string> superclasses;
    for (const cim::Class *above = mof::deskClasses().find(klass.superclass); above;
         above = mof::deskClasses().find(above->superclass)) {
        superclasses.push_back("`" + above->name + "`");
    }
    std::string chain;
    for (const std::string &name : superclasses) {
        chain += (chain.empty() ? "" : ", ") + name;
    }
    std::vector<Row> rows = {{"",
                              {words(superclasses.size() > 1 ? "Superclasses" : "Superclass"),
                               chain.empty() ? words("none") : marked(chain)}},
                             {"", {words("Provider"), words(facts.kind)}},
                             {"", {words("Instances"), instanceCount(facts)}}};
    const auto keyWords = [](const Keys &keys) {
        std::string text;
        for (const auto &[name, keyValue] : keys) {
            text += (text.empty() ? "" : ", ") + std::string("`") + name + "=\"" + keyValue + "\"`";
        }
        return marked(text);
    };
    if (!facts.instances.empty()) {
        std::vector<Line> lines;
        for (const Keys &keys : facts.instances) {
            lines.push_back(keyWords(keys));
        }
        if (facts.countVaries) {
            lines = {words("for example "), lines.back()};
        }
        rows.push_back({"",
                        {words(lines.size() == 1 ? "Its keys" : "Their keys"),
                         facts.countVaries ? joined(lines, "") : joined(lines, "; ")}});
        if (facts.found != facts.instances[0]) {
            rows.push_back({"", {words("GetInstance finds it by"), keyWords(facts.found)}});
        }
    }
    if (!facts.refresh.empty()) {
        rows.push_back({"", {words("Before a read it"), sentence(facts.refresh)}});
    }
    table({"", ""}, rows);
}

void Page::tieTable(const ClassFacts &facts, const cim::Class &klass)
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
    for (const Tie &tie : facts.ties) {
        rows.push_back({"", {linkOrCode(tie.left), linkOrCode(tie.right), words(std::to_string(tie.count))}});
    }
    paragraph("What it ties on a monitor with the network interfaces `lo` and `eth0`:");
    table({facts.roles.at(0), facts.roles.at(1), "Objects"}, rows);
}

std::string Page::listed(const cim::Qualifier *qualifier)
{
    std::string text;
    for (const std::string &item : qualifier->value.items) {
        text += (text.empty() ? "" : ", ") + item;
    }
    return text;
}

Line Page::declaredValues(const cim::Qualifiers &qualifiers)
{
    std::vector<Line> lines;
    const cim::Qualifier *map = cim::findQualifier(qualifiers, "ValueMap");
    const cim::Qualifier *names = cim::findQualifier(qualifiers, "Values");
    std::string values;
    for (size_t i = 0; i < (map ? map->value.items.size() : names ? names->value.items.size() : 0); ++i) {
        values += (values.empty() ? "" : ", ") + (map ? map->value.items[i] : std::to_string(i));
        if (names && i < names->value.items.size()) {
            values += " " + names->value.items[i];
        }
    }
    if (!values.empty()) {
        lines.push_back(words(values + (names ? "" : " (what they mean is not documented)")));
    }
    static const std::vector<std::pair<std::string, std::string>> others = {
        {"MinValue", "at least "},
        {"MaxValue", "at most "},
        {"MaxLen", "characters at most: "},
        {"PUnit", "unit: "},
        {"Units", "unit: "}};
    for (const auto &[name, text] : others) {
        if (const cim::Qualifier *found = cim::findQualifier(qualifiers, name)) {
            lines.push_back(words(text + listed(found)));
        }
    }
    if (cim::hasQualifier(qualifiers, "Write")) {
        lines.push_back(words("can be modified"));
    }
    return joined(lines, "; ");
}

std::string Page::typeOf(const cim::Element &element)
{
    const std::string type =
        element.type == cim::Type::reference ? element.referenceClass + " REF" : cim::typeName(element.type);
    return type + (element.isArray ? "[]" : "");
}

std::vector<std::string> Page::keyValues(const ClassFacts &facts, const std::string &property)
{
    std::vector<std::string> values;
    for (const Keys &keys : facts.instances) {
        for (const auto &[name, keyValue] : keys) {
            if (name == property) {
                values.push_back(keyValue);
            }
        }
    }
    if (std::set<std::string>(values.begin(), values.end()).size() == 1) {
        values.resize(1);
    }
    return facts.countVaries && values.size() > 1 ? std::vector<std::string>() : values;
}

Line Page::provided(const ClassFacts &facts, const cim::Property &property)
{
    const auto found = facts.properties.find(property.name);
    std::vector<Line> constants;
    for (const std::string &constant :
         found == facts.properties.end() ? keyValues(facts, property.name) : found->second.constants) {
        constants.push_back(constant.find_first_not_of(' ') == std::string::npos ? words("a blank")
                                                                                 : Line{message(constant)});
    }
    if (constants.empty()) {
        return words("varies");
    }
    const bool onlyKey = found == facts.properties.end();
    Line line = words(std::string(onlyKey ? "none; in the path " : "") +
                      (constants.size() == 1 ? "always " : "in turn "));
    line += joined(constants, ", ");
    return line;
}

Line Page::byDefault(const cim::Property &property)
{
    std::vector<Line> values;
    for (const std::string &item : property.defaultValue.items) {
        values.push_back({code(item)});
    }
    return joined(values, ", ");
}

void Page::properties(const ClassFacts &facts, const cim::Class &klass)
{
    const auto hasValue = [&](const cim::Property &property) {
        return property.isKey || facts.properties.contains(property.name);
    };
    const auto row = [&](const cim::Property &property) {
        Line name = {code(property.name)};
        if (property.isKey) {
            name.push_back({Span::words, " (key)"});
        }
        if (property.classOrigin != klass.name) {
            name.push_back({Span::words, " from " + property.classOrigin});
        }
        Row cells = {idOf(klass.name, property.name),
                     {name,
                      {code(typeOf(property))},
                      words(description(property.qualifiers)),
                      declaredValues(property.qualifiers)}};
        cells.cells.push_back(hasValue(property) ? provided(facts, property) : byDefault(property));
        return cells;
    };
    std::vector<Row> given, without;
    for (const bool propagated : {false, true}) { // the class's own ones first
        for (const cim::Property &property : klass.properties) {
            if (property.propagated == propagated) {
                (hasValue(property) ? given : without).push_back(row(property));
            }
        }
    }
    if (given.empty() && without.empty()) {
        return;
    }
    heading(4, idOf(klass.name, "properties"), "Properties");
    table({"Property", "Type", "Description", "Declared values", "Value from the library"}, given);
    if (without.empty()) {
        return;
    }
    if (std::none_of(without.begin(), without.end(),
                     [](const Row &each) { return !each.cells.back().empty(); })) {
        for (Row &each : without) {
            each.cells.pop_back();
        }
        paragraph("Declared, without a value from the library or from the class:");
        table({"Property", "Type", "Description", "Declared values"}, without);
        return;
    }
    paragraph(
        "Declared, without a value from the library; where the class has a default, the object manager answers "
        "with it:");
    table({"Property", "Type", "Description", "Declared values", "Value from the class"}, without);
}

void Page::reads(const ClassFacts &facts)
{
    heading(4, idOf(facts.name, "reads"), "Reads");
    std::vector<Row> rows;
    bool common = false;
    for (const ReadCheck &check : facts.reads) {
        if (isAssociation(facts) && isCommonRead(check)) {
            common = true;
        } else {
            rows.push_back(readRow(check));
        }
    }
    if (common) {
        Line line = words("Beside what ");
        line += {link("all associations", "association-reads"), {Span::words, " answer:"}};
        paragraph(line);
    }
    table({"When", "Operation", "Status", "Text"}, rows);
}

std::vector<Row> Page::checkRows(const std::vector<Check> &checks, bool values)
{
    std::vector<Row> rows;
    for (const Check &check : checks) {
        Row row = {"", {words(std::to_string(rows.size() + 1)), causes(check.causes)}};
        if (values) {
            row.cells.push_back(value(check.outcome.value));
        }
        row.cells.push_back(statusName(check.outcome.code));
        row.cells.push_back(textLine(check.outcome.text));
        rows.push_back(row);
    }
    return rows;
}

void Page::modification(const ClassFacts &facts)
{
    if (facts.modifyChecks.empty()) {
        return;
    }
    heading(4, idOf(facts.name, "ModifyInstance"), "ModifyInstance");
    Line line = words("Only administrators may use it. It ");
    line += sentence(facts.modifyMessages);
    line.push_back({Span::words, "."});
    paragraph(line);
    table({"", "When", "Status", "Text"}, checkRows(facts.modifyChecks, false));
}

// ---- methods ----

void Page::methods(const ClassFacts &facts, const cim::Class &klass)
{
    heading(4, idOf(facts.name, "methods"), "Methods");
    if (facts.methods.empty()) {
        Line line = words("None; ");
        line += {link("every method is unknown", "unknown-methods"), {Span::words, "."}};
        paragraph(line);
    }
    if (!facts.notOffered.empty()) {
        std::string names;
        for (const std::string &name : facts.notOffered) {
            names += (names.empty() ? "" : ", ") + ("`" + name + "`");
        }
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
    for (const MethodFacts &method : facts.methods) {
        methodSection(facts, *klass.findMethod(method.name), method);
    }
}

void Page::methodSection(const ClassFacts &facts, const cim::Method &method, const MethodFacts &answers)
{
    heading(5, idOf(facts.name, method.name), method.name);
    paragraph(words(description(method.qualifiers)));
    Line signature = {code(mof::describe(method))};
    signature.push_back({Span::words, answers.administrator ? ". " : ". Everybody may call it."});
    if (answers.administrator) {
        signature += {strong("Only administrators"), {Span::words, " may call it."}};
    }
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
        for (const std::string &accepts : argument.values) {
            accepted.push_back(marked(accepts));
        }
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

} // namespace reference
