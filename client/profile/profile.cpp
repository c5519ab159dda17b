// SPDX-License-Identifier: Apache-2.0
#include "profile/profile.h"

#include "model/plan.h"
#include "model/values.h"
#include "site/text_file.h"

#include <fcntl.h>
#include <unistd.h>
#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <sstream>

namespace displayctl::profile
{

namespace
{

using model::BadValue;
using model::Setting;
using model::Value;

constexpr int formatVersion = 1;

class Reader
{
  public:
    Reader(std::string name, const site::CodeNames &names) : name_(std::move(name)), names_(names) {}

    std::vector<Entry> read(const std::string &text)
    {
        try {
            readDocument(YAML::Load(text));
        } catch (const YAML::Exception &error) {
            fail(error.mark, error.msg);
        }
        return std::move(entries_);
    }

  private:
    [[noreturn]] void fail(const YAML::Mark &mark, const std::string &what) const
    {
        throw BadValue(name_ + (mark.is_null() ? "" : ":" + std::to_string(mark.line + 1)) + ": " + what);
    }

    void readDocument(const YAML::Node &document)
    {
        if (!document.IsMap() || !document["displayctl"]) {
            fail(document.Mark(), "this is no profile: it does not begin with 'displayctl: 1'");
        }
        if (document["displayctl"].as<std::string>("") != std::to_string(formatVersion)) {
            fail(document["displayctl"].Mark(),
                 "profiles of this version of displayctl have 'displayctl: 1'");
        }
        constexpr std::array known = {"displayctl", "monitor-exported", "date", "settings"};
        for (const auto &member : document) {
            const auto key = member.first.as<std::string>("");
            if (std::ranges::find(known, key) == known.end()) {
                fail(member.first.Mark(),
                     "'" + key + "' is nothing that a profile has; settings stand under 'settings'");
            }
        }
        const YAML::Node settings = document["settings"];
        if (settings && !settings.IsMap() && !settings.IsNull()) {
            fail(settings.Mark(), "'settings' holds settings by group");
        }
        if (settings && settings.IsMap()) {
            readGroup(settings, "");
        }
    }

    void readGroup(const YAML::Node &group, const std::string &prefix)
    {
        for (const auto &member : group) {
            const std::string name = prefix + member.first.as<std::string>("");
            if (member.second.IsMap()) {
                readGroup(member.second, name + ".");
            } else if (!member.second.IsNull() || !isGroup(name)) {
                readSetting(name, member.second, member.first.Mark());
            }
        }
    }

    // Whether settings stand below the name; such a group may be empty.
    static bool isGroup(const std::string &name)
    {
        return std::ranges::any_of(model::allSettings(),
                                   [&](const Setting &each) { return each.name.starts_with(name + "."); });
    }

    void readSetting(const std::string &name, const YAML::Node &node, const YAML::Mark &mark)
    {
        try {
            const model::Named named = model::resolveName(name);
            if (named.name() != name) {
                throw BadValue("there is no setting '" + name + "'; do you mean " + named.name() + "?");
            }
            const bool isTwice =
                std::ranges::any_of(entries_, [&](const Entry &entry) { return entry.named == named; });
            if (isTwice) {
                throw BadValue(name + " is given twice");
            }
            entries_.push_back({named, model::parseValue(*named.setting, textOf(node), names_)});
        } catch (const BadValue &error) {
            fail(mark, error.what());
        }
    }

    // A scalar as it is written; a list is what x,y or r,g,b is in YAML.
    static std::string textOf(const YAML::Node &node)
    {
        if (!node.IsSequence()) {
            return node.as<std::string>("");
        }
        std::string text;
        for (const auto &part : node) {
            text += (text.empty() ? "" : ",") + part.as<std::string>("");
        }
        return text;
    }

    std::string name_;
    const site::CodeNames &names_;
    std::vector<Entry> entries_;
};

// In JSON's quotes, which are YAML's; texts of monitors may be no UTF-8, and what is not is replaced.
std::string quoted(const std::string &text)
{
    return Value(text).dump(-1, ' ', false, Value::error_handler_t::replace);
}

// Text in quotes where YAML would read it as something else.
std::string yamlText(const Value &value, const std::string &text)
{
    const bool isPlain =
        !text.empty() &&
        text.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789.-,") ==
            std::string::npos &&
        text.front() != '-' && text.front() != ',' && text.front() != '.';
    if (!value.is_string() || isPlain) {
        return value.is_array() ? "\"" + text + "\"" : text;
    }
    return quoted(text);
}

std::string comment(const Setting &setting, const site::CodeNames &names)
{
    std::string text(setting.unit());
    const std::string allowed = model::allowedValues(setting, names);
    text += (text.empty() || allowed.empty() ? "" : ", ") + allowed;
    return text.empty() ? "" : "  # " + text;
}

std::vector<std::string> componentsOf(const std::string &name)
{
    std::vector<std::string> result;
    std::stringstream stream(name);
    for (std::string part; std::getline(stream, part, '.');) {
        result.push_back(part);
    }
    return result;
}

} // namespace

std::vector<Entry> readText(const std::string &text, const std::string &name, const site::CodeNames &names)
{
    return Reader(name, names).read(text);
}

std::vector<Entry> read(const std::filesystem::path &file, const site::CodeNames &names)
{
    const auto text = site::readTextFile(file);
    if (!text) {
        throw BadValue("the profile " + file.string() + " cannot be read");
    }
    return readText(*text, file.string(), names);
}

std::string write(const model::State &state, const std::string &monitor, const std::string &date,
                  const site::CodeNames &names)
{
    std::string result =
        "displayctl: 1\nmonitor-exported: " + quoted(monitor) + "\ndate: " + date + "\nsettings:\n";
    std::vector<std::string> open; // the groups that the last line stands in
    for (const Setting &setting : model::allSettings()) {
        const Value value = state.value(setting);
        if (!setting.isWritable() || !setting.isReadable()) {
            continue;
        }
        const std::vector<std::string> parts = componentsOf(setting.name);
        std::size_t same = 0;
        while (same < open.size() && same + 1 < parts.size() && open[same] == parts[same]) {
            ++same;
        }
        for (std::size_t i = same; i + 1 < parts.size(); ++i) {
            result += std::string(2 * (i + 1), ' ') + parts[i] + ":\n";
        }
        open.assign(parts.begin(), parts.end() - 1);
        // What has no value, and what cannot be set back to the empty text that it has, is there to be read
        // only.
        const std::string text = model::textOf(setting, value, names);
        const bool isGiven = model::canBeSetBack(state, setting);
        result += std::string(2 * parts.size(), ' ') + (isGiven ? "" : "# ") + parts.back() + ": " +
                  (isGiven ? yamlText(model::documentOf(setting, value, names), text) : "") +
                  comment(setting, names) + "\n";
    }
    return result;
}

namespace
{

/** Waits until what was written is on the disk. */
bool flush(const std::filesystem::path &file)
{
    const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC);
    const bool isFlushed = descriptor >= 0 && fsync(descriptor) == 0;
    if (descriptor >= 0) {
        close(descriptor);
    }
    return isFlushed;
}

} // namespace

void writeFile(const std::filesystem::path &file, const std::string &text)
{
    const std::filesystem::path whole = file.string() + ".part";
    std::ofstream stream(whole);
    stream << text;
    stream.close();
    std::error_code error;
    // In this order, so that after a crash there is the old file or the new one.
    const bool isWritten = stream && flush(whole);
    if (isWritten) {
        std::filesystem::rename(whole, file, error);
    }
    if (!isWritten || error) {
        std::filesystem::remove(whole, error);
        throw BadValue("the file " + file.string() + " cannot be written");
    }
}

} // namespace displayctl::profile
