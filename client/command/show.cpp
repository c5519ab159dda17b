// SPDX-License-Identifier: Apache-2.0
// show: the settings as a table by group.
#include "command/settings.h"
#include "model/values.h"
#include "profile/profile.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>

namespace displayctl::command
{

namespace
{

using model::Setting;
using model::Value;

constexpr const char *bold = "\033[1m";
constexpr const char *plain = "\033[0m";

/** What is to be shown. */
struct Wanted {
    std::vector<model::Named> settings;
    bool isAll = false;
    std::vector<profile::Entry> against;
    bool isCompared = false;
};

bool isUsual(const Setting &setting)
{
    return !setting.has(model::onlyAll) && !setting.has(model::neverAccepted);
}

std::string methodOf(const Setting &setting)
{
    if (!setting.arguments.empty()) {
        const model::MethodArgument &argument = setting.arguments.front();
        return std::string(argument.owner->name.substr(model::classPrefix.size())) + "." +
               std::string(argument.method->name);
    }
    return setting.isWritable() ? std::string(setting.row->className) + ".ModifyInstance" : "-";
}

std::string propertyOf(const Setting &setting)
{
    std::string text;
    for (const model::PropertyFacts *property : setting.properties) {
        text +=
            (text.empty() ? std::string(setting.row->className) + "." : ",") + std::string(property->name);
    }
    if (setting.kind() == model::Kind::preset) {
        return "ColorSpace.Active";
    }
    return text.empty() ? "-" : text;
}

// What `show --all` adds: each property of each object that no setting stands for.
struct PropertyRow {
    std::string name;
    Value value;
    std::string property;
};

bool isSetting(std::string_view className, std::string_view property)
{
    return std::ranges::any_of(model::settingRows(), [&](const model::SettingRow &row) {
        return row.className == className &&
               std::ranges::find(row.properties, property) != row.properties.end();
    });
}

std::string objectName(const std::string &className, const wbem::Instance &object, std::size_t count)
{
    if (count <= 1) {
        return className;
    }
    std::string id(object.path.text("InstanceID"));
    if (id.empty()) {
        id = object.path.text("Name");
        return className + "." + id.substr(id.find('_') + 1);
    }
    return className + "." + id.substr(id.rfind(':') + 1);
}

/** One element of a property, in the kind that its class declares. */
Value elementOf(std::string_view type, const std::string &text)
{
    const wbem::Value element(text);
    if (type == "boolean") {
        const auto truth = element.boolean();
        return truth ? Value(*truth) : Value(text);
    }
    const bool isWhole = type.starts_with("uint") || type.starts_with("sint");
    const auto number = isWhole ? element.number() : std::nullopt;
    return number ? Value(*number) : Value(text);
}

Value valueOf(const model::PropertyFacts &property, const wbem::Value &value)
{
    if (value.isNull()) {
        return {};
    }
    if (!value.isArray()) {
        return elementOf(property.type, value.text().value_or(""));
    }
    Value elements = Value::array();
    for (const std::string &each : value.elements()) {
        elements.push_back(elementOf(property.type, each));
    }
    return elements;
}

std::vector<PropertyRow> otherProperties(const model::State &state)
{
    std::vector<PropertyRow> rows;
    for (const model::ClassFacts &facts : model::allClasses()) {
        const std::string className(facts.name.substr(model::classPrefix.size()));
        if (facts.isAssociation) {
            continue;
        }
        const auto &objects = state.objects(className);
        for (const wbem::Instance &object : objects) {
            for (const model::PropertyFacts &property : facts.properties) {
                if (isSetting(className, property.name)) {
                    continue;
                }
                const std::string name = std::string(property.name);
                rows.push_back({objectName(className, object, objects.size()) + "." + name,
                                valueOf(property, object.value(property.name)), className + "." + name});
            }
        }
    }
    return rows;
}

class Table
{
  public:
    Table(const Wanted &wanted, const site::CodeNames &names, bool hasColor)
        : wanted_(wanted), names_(names), hasColor_(hasColor)
    {
    }

    void add(const Setting &setting, const Value &value, bool isDifferent)
    {
        group(setting.name.substr(0, setting.name.find('.')));
        const std::string text = model::textOf(setting, value, names_);
        std::vector<std::string> row = {(isDifferent ? "* " : "  ") + setting.name, text.empty() ? "-" : text,
                                        std::string(setting.unit()), model::allowedValues(setting, names_)};
        if (wanted_.isAll) {
            row.push_back(propertyOf(setting));
            row.push_back(methodOf(setting));
        }
        rows_.push_back(std::move(row));
    }

    void add(const PropertyRow &property)
    {
        group("other properties");
        const std::string text = property.value.is_string() ? property.value.get<std::string>()
                                 : property.value.is_null() ? "-"
                                                            : property.value.dump();
        rows_.push_back({"  " + property.name, text, "", "", property.property, "-"});
    }

    void add(const model::ActionRow &action)
    {
        group("actions");
        std::string name(action.name);
        name += action.argument.empty() ? "" : " " + std::string(action.argument);
        rows_.push_back({"  " + name, "-", "", "", "-", std::string(action.method)});
    }

    [[nodiscard]] std::string text() const
    {
        return table(rows_);
    }

  private:
    void group(const std::string &name)
    {
        if (name != group_) {
            if (!rows_.empty()) {
                rows_.push_back({""});
            }
            rows_.push_back({hasColor_ ? bold + name + plain : name});
            group_ = name;
        }
    }

    const Wanted &wanted_;
    const site::CodeNames &names_;
    bool hasColor_;
    std::string group_;
    std::vector<std::vector<std::string>> rows_;
};

session::Classes classesOf(const Wanted &wanted)
{
    session::Classes classes;
    for (const model::Named &named : wanted.settings) {
        model::addClasses(*named.setting, classes);
    }
    for (const model::ClassFacts &facts : model::allClasses()) {
        if (wanted.isAll && !facts.isAssociation) {
            classes.insert(std::string(facts.name.substr(model::classPrefix.size())));
        }
    }
    return classes;
}

bool differs(const Wanted &wanted, const Setting &setting, const model::State &state)
{
    return std::ranges::any_of(wanted.against, [&](const profile::Entry &entry) {
        if (&entry.named.at(std::max(1, state.activePreset())) != &setting) {
            return false;
        }
        const Value value = setting.kind() == model::Kind::preset
                                ? model::presetNumber(entry.value, state.presetNames())
                                : entry.value;
        return !model::sameValue(value, state.value(setting));
    });
}

Report show(Call &call, const site::Monitor &monitor, const Wanted &wanted)
{
    session::Session session(monitor, call.options.timeout());
    const auto failure = session.read(classesOf(wanted));
    Report report = failure ? failureReport(*failure) : Report();
    const site::CodeNames &names = call.configuration().names;
    const model::State &state = session.state();
    Table lines(wanted, names, call.hasColor() && !call.isMany());
    Json settings = Json::object();
    for (const model::Named &named : wanted.settings) {
        if (!state.has(named.setting->row->className)) {
            continue; // could not be read; the report says why
        }
        const Setting &setting = named.at(std::max(1, state.activePreset()));
        const Value value = state.value(setting);
        const bool isDifferent = differs(wanted, setting, state);
        lines.add(setting, value, isDifferent);
        settings[setting.name] = settingDocument(setting, value, names);
        if (wanted.isAll) {
            settings[setting.name]["property"] = propertyOf(setting);
            settings[setting.name]["method"] = methodOf(setting);
        }
        if (wanted.isCompared) {
            settings[setting.name]["differs"] = isDifferent;
        }
    }
    if (wanted.isAll) {
        for (const model::ActionRow &action : model::allActions()) {
            lines.add(action);
            const std::string name = std::string(action.name) + (action.argument.empty() ? "" : " ");
            history::member(report.document,
                            "actions")[name + std::string(action.argument)] = {{"method", action.method}};
        }
        for (const PropertyRow &row : otherProperties(state)) {
            lines.add(row);
            settings[row.name] = {{"value", row.value}, {"writable", false}, {"property", row.property}};
        }
    }
    report.text = settings.empty() ? "" : lines.text();
    report.document["settings"] = std::move(settings);
    return report;
}

Wanted parseWanted(Call &call, const std::vector<std::string> &patterns, bool isAll,
                   const std::string &against)
{
    Wanted wanted;
    wanted.isAll = isAll;
    for (const std::string &pattern : patterns) {
        for (const model::Named &named : model::matchPattern(pattern)) {
            if (std::ranges::find(wanted.settings, named) == wanted.settings.end()) {
                wanted.settings.push_back(named);
            }
        }
    }
    if (patterns.empty()) {
        for (const Setting &setting : model::allSettings()) {
            if (isAll || isUsual(setting)) {
                wanted.settings.push_back({&setting});
            }
        }
    }
    if (!against.empty()) {
        wanted.against = profile::read(against, call.configuration().names);
        wanted.isCompared = true;
    }
    return wanted;
}

} // namespace

void addShow(CLI::App &program, Action &action)
{
    CLI::App *command = program.add_subcommand("show", "Shows settings: name, value, unit, what they take");
    auto patterns = std::make_shared<std::vector<std::string>>();
    auto isAll = std::make_shared<bool>(false);
    auto against = std::make_shared<std::string>();
    command->add_option("SETTING-PATTERN", *patterns,
                        "a setting, a group (pip, preset.3), or a name with * and ?");
    command->add_flag("--all", *isAll,
                      "every property and every method, also what only identifies an object");
    command->add_option("--against", *against, "mark with * what differs from this profile");
    command->footer("Examples:\n"
                    "  displayctl show\n"
                    "  displayctl show pip preset.active\n"
                    "  displayctl show 'preset.*.luminance'\n"
                    "  displayctl show --against house.yaml");
    command->callback([patterns, isAll, against, &action] {
        action = [patterns, isAll, against](Call &call) {
            const Wanted wanted = parseWanted(call, *patterns, *isAll, *against);
            return call.forEachMonitor(
                [&](const site::Monitor &monitor) { return show(call, monitor, wanted); });
        };
    });
}

} // namespace displayctl::command
