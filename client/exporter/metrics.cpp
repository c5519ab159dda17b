// SPDX-License-Identifier: Apache-2.0
#include "exporter/metrics.h"

#include <algorithm>
#include <array>
#include <map>

namespace displayctl::exporter
{

namespace
{

using model::Kind;
using model::Setting;
using model::Value;
using prometheus::MetricType;
using Labels = Families::Labels;

/** How a unit of the class definitions is told: in base units, with the unit in the name. */
struct UnitRow {
    std::string_view programmatic; // as PUnit has it
    std::string_view inName;       // in the setting's name, where the unit takes its place
    std::string_view suffix;
    double factor;
    MetricType type;
    std::string_view help; // what the description does not say
};

constexpr std::array units{
    UnitRow{"candela / meter^2", "", "_candelas_per_square_meter", 1, MetricType::Gauge, ""},
    UnitRow{"percent", "", "_ratio", 0.01, MetricType::Gauge, " 1 is 100 percent."},
    UnitRow{"second", "", "_seconds", 1, MetricType::Gauge, ""},
    // Only what the monitor has been on for is told in hours: it counts.
    UnitRow{"hour", "_hours", "_seconds_total", 3600, MetricType::Counter, " Told in seconds."},
    UnitRow{"pixel", "", "_pixels", 1, MetricType::Gauge, ""},
};

/** How the parts of a value are told apart. */
struct PartsRow {
    Kind kind;
    std::string_view label;
    std::array<std::string_view, 3> values;
};

constexpr std::array parts{
    PartsRow{Kind::position, "axis", {"x", "y"}},
    PartsRow{Kind::size, "dimension", {"width", "height"}},
    PartsRow{Kind::colour, "channel", {"red", "green", "blue"}},
    PartsRow{Kind::chromaticity, "coordinate", {"x", "y"}},
};

constexpr std::string_view uvSuffix = "-uv"; // of the settings that tell u' and v'

std::string underscored(std::string_view text)
{
    std::string result(text);
    std::ranges::replace_if(
        result, [](char c) { return c == '-' || c == '.'; }, '_');
    return result;
}

/** preset of preset.N.luminance. */
std::string_view groupOf(const Setting &setting)
{
    const std::string_view name = setting.row->name;
    return name.substr(0, name.find('.'));
}

std::string_view lastOf(const Setting &setting)
{
    const std::string_view name = setting.row->name;
    return name.substr(name.rfind('.') + 1);
}

/** What the setting's object is told by: preset="3". */
Labels labelsOf(const Setting &setting)
{
    return setting.number == 0 ? Labels{}
                               : Labels{{underscored(groupOf(setting)), std::to_string(setting.number)}};
}

const UnitRow *unitOf(const Setting &setting)
{
    if (setting.properties.empty()) {
        return nullptr;
    }
    const auto found = std::ranges::find(units, setting.properties.front()->unit, &UnitRow::programmatic);
    return found == units.end() ? nullptr : found;
}

std::string nameOf(const Setting &setting)
{
    std::string_view last = lastOf(setting);
    if (setting.kind() == Kind::chromaticity) {
        last = last.substr(0, last.rfind(uvSuffix));
        return "displayctl_" + underscored(groupOf(setting)) + "_" + underscored(last) + "_chromaticity";
    }
    std::string name = "displayctl_" + underscored(groupOf(setting)) + "_" + underscored(last);
    if (const UnitRow *unit = unitOf(setting)) {
        if (!unit->inName.empty() && name.ends_with(unit->inName)) {
            name.resize(name.size() - unit->inName.size());
        }
        name += unit->suffix;
    }
    return name;
}

std::string helpOf(const Setting &setting)
{
    std::string help;
    switch (setting.kind()) {
    case Kind::chromaticity:
        help = "CIE chromaticity, x and y of 1931, u and v of 1976.";
        break;
    case Kind::colour:
        help = "Colour by channel, 0 to 255.";
        break;
    case Kind::preset:
        help = "Number of the preset in use.";
        break;
    case Kind::networkMode:
        help = "Where the address comes from: 1 for that mode.";
        break;
    default:
        for (const model::PropertyFacts *property : setting.properties) {
            help += (help.empty() ? "" : " ") + std::string(property->description);
        }
        help += unitOf(setting) == nullptr ? "" : unitOf(setting)->help;
    }
    return help + " Setting " + std::string(setting.row->name) + ".";
}

double numberOf(const Value &value)
{
    return value.is_boolean() ? (value.get<bool>() ? 1 : 0) : value.get<double>();
}

bool isNumber(const Value &value)
{
    return value.is_number() || value.is_boolean();
}

void addParts(Families &families, const Setting &setting, const Value &value)
{
    const PartsRow &row = *std::ranges::find(parts, setting.kind(), &PartsRow::kind);
    const bool isUv = lastOf(setting).ends_with(uvSuffix);
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (!value[i].is_number()) {
            continue;
        }
        Labels labels = labelsOf(setting);
        const std::string_view part = isUv ? (i == 0 ? "u" : "v") : row.values[i];
        labels.push_back({std::string(row.label), std::string(part)});
        families.add(nameOf(setting), helpOf(setting), value[i].get<double>(), std::move(labels));
    }
}

/** One series for each word that the setting may have: 1 for the one that it has. */
void addWords(Families &families, const Setting &setting, const Value &value)
{
    static const std::vector<std::string_view> networkModes{"dhcp", "static"};
    const auto &words = setting.row->words.empty() ? networkModes : setting.row->words;
    for (const std::string_view word : words) {
        Labels labels = labelsOf(setting);
        labels.push_back({underscored(lastOf(setting)), std::string(word)});
        families.add(nameOf(setting), helpOf(setting), value == word ? 1 : 0, std::move(labels));
    }
}

/** Texts: labels of one series for each object, whose value is 1. */
class Infos
{
  public:
    void add(const Setting &setting, const Value &value)
    {
        const Labels key = labelsOf(setting);
        Labels &labels = infos_[{std::string(groupOf(setting)), setting.number}];
        if (labels.empty()) {
            labels = key;
        }
        labels.push_back({underscored(lastOf(setting)), value.get<std::string>()});
    }

    void addTo(Families &families) const
    {
        for (const auto &[object, labels] : infos_) {
            families.add("displayctl_" + underscored(object.first) + "_info",
                         "Names and other texts of the settings " + object.first + ".", 1, labels);
        }
    }

  private:
    std::map<std::pair<std::string, int>, Labels> infos_;
};

void addSetting(Families &families, Infos &infos, const Setting &setting, const Value &value)
{
    switch (setting.kind()) {
    case Kind::text:
    case Kind::date:
    case Kind::address:
        if (value.is_string()) {
            infos.add(setting, value);
        }
        return;
    case Kind::choice:
    case Kind::networkMode:
        if (value.is_string()) {
            addWords(families, setting, value);
        }
        return;
    case Kind::position:
    case Kind::size:
    case Kind::colour:
    case Kind::chromaticity:
        if (value.is_array()) {
            addParts(families, setting, value);
        }
        return;
    case Kind::number:
    case Kind::decimal:
    case Kind::onOff:
    case Kind::code:
    case Kind::preset:
        break;
    case Kind::anything:
        return;
    }
    if (isNumber(value)) {
        const UnitRow *unit = unitOf(setting);
        families.add(nameOf(setting), helpOf(setting), numberOf(value) * (unit == nullptr ? 1 : unit->factor),
                     labelsOf(setting), unit == nullptr ? MetricType::Gauge : unit->type);
    }
}

void addOutcome(Families &families, const Reading &reading)
{
    using session::Outcome;
    families.add("displayctl_up", "Whether the monitor has answered everything that was asked.",
                 reading.outcome == Outcome::ok ? 1 : 0);
    families.add("displayctl_probe_duration_seconds", "Time that reading the monitor took.",
                 reading.duration.count());
    for (const Outcome outcome :
         {Outcome::ok, Outcome::refused, Outcome::busy, Outcome::unreachable, Outcome::login}) {
        families.add("displayctl_probe_outcome", "How the probe ended: 1 for that outcome.",
                     reading.outcome == outcome ? 1 : 0,
                     {{"outcome", std::string(session::nameOf(outcome))}});
    }
    if (reading.certificateExpiry) {
        families.add("displayctl_certificate_expiry_timestamp_seconds",
                     "When the certificate of the monitor expires, in seconds since 1970.",
                     static_cast<double>(*reading.certificateExpiry));
    }
}

void addDrift(Families &families, const Drift &drift)
{
    families.add("displayctl_profile_differences", "Settings that differ from the profile.",
                 static_cast<double>(drift.settings.size()), {{"profile", drift.profile}});
    for (const std::string &setting : drift.settings) {
        families.add("displayctl_profile_drift", "A setting that differs from the profile: always 1.", 1,
                     {{"profile", drift.profile}, {"setting", setting}});
    }
}

} // namespace

void Families::add(const std::string &name, const std::string &help, double value, Labels labels,
                   MetricType type)
{
    auto family = std::ranges::find(families_, name, &prometheus::MetricFamily::name);
    if (family == families_.end()) {
        families_.push_back({name, help, type, {}});
        family = families_.end() - 1;
    }
    prometheus::ClientMetric metric;
    metric.label = std::move(labels);
    (type == MetricType::Counter ? metric.counter.value : metric.gauge.value) = value;
    family->metric.push_back(std::move(metric));
}

Families metricsOf(const Reading &reading, const std::optional<Drift> &drift)
{
    Families families;
    addOutcome(families, reading);
    if (drift && reading.outcome == session::Outcome::ok) {
        addDrift(families, *drift);
    }
    Infos infos;
    for (const Setting &setting : model::allSettings()) {
        if (isExported(setting) && reading.state.has(setting.row->className)) {
            addSetting(families, infos, setting, reading.state.value(setting));
        }
    }
    infos.addTo(families);
    return families;
}

} // namespace displayctl::exporter
