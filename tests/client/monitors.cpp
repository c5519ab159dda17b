// SPDX-License-Identifier: Apache-2.0
#include "monitors.h"

#include <pugixml.hpp>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace responder
{

namespace
{

constexpr const char *presets = "ZT_Marovelton_ColorSpace";

void reverse(pugi::xml_node parent, const std::vector<std::string> &names)
{
    std::vector<pugi::xml_node> children;
    for (const pugi::xml_node child : parent.children()) {
        if (std::ranges::find(names, child.name()) != names.end()) {
            children.push_back(child);
        }
    }
    for (const pugi::xml_node child : children) {
        parent.prepend_move(child);
    }
}

/** The same in the manner of another object manager. */
std::string differently(const std::string &text)
{
    pugi::xml_document document;
    if (!document.load_string(text.c_str())) {
        throw std::runtime_error("a recorded answer is no XML");
    }
    for (const pugi::xpath_node found : document.select_nodes("//INSTANCE")) {
        pugi::xml_node instance = found.node();
        reverse(instance, {"PROPERTY", "PROPERTY.ARRAY", "PROPERTY.REFERENCE"});
        for (const char *name : {"InstallDate", "Generation"}) {
            pugi::xml_node null = instance.prepend_child("PROPERTY");
            null.append_attribute("NAME") = name;
        }
        for (pugi::xml_node property : instance.children()) {
            property.remove_attribute("TYPE");
        }
    }
    for (const pugi::xpath_node found : document.select_nodes("//INSTANCENAME")) {
        reverse(found.node(), {"KEYBINDING"});
    }
    for (const pugi::xpath_node found : document.select_nodes("//KEYVALUE")) {
        found.node().attribute("VALUETYPE") = "numeric";
    }
    std::ostringstream out;
    document.save(out, "", pugi::format_raw);
    return std::regex_replace(out.str(), std::regex{"(\\d{14}\\.\\d{6})\\+000"}, "$1+00:00");
}

std::string between(const std::string &text, const std::string &begin, const std::string &end)
{
    const std::size_t from = text.find(begin);
    const std::size_t to = from == std::string::npos ? from : text.find(end, from + begin.size());
    return to == std::string::npos ? "" : text.substr(from + begin.size(), to - from - begin.size());
}

/** The presets with another luminance where one was set. */
std::string withLuminance(const std::string &text, const std::map<std::string, std::string> &values)
{
    pugi::xml_document document;
    static_cast<void>(document.load_string(text.c_str()));
    for (const auto &[preset, value] : values) {
        const std::string place = "//INSTANCE[PROPERTY[@NAME='InstanceID']/VALUE='" + preset +
                                  "']/PROPERTY[@NAME='DisplayLuminance']/VALUE";
        document.select_node(place.c_str()).node().text() = value.c_str();
    }
    std::ostringstream out;
    document.save(out, "", pugi::format_raw);
    return out.str();
}

} // namespace

Monitors::Monitors(const std::filesystem::path &directory, Manner manner)
{
    for (const auto &entry : std::filesystem::directory_iterator{directory}) {
        std::ifstream file{entry.path(), std::ios::binary};
        const std::string text{std::istreambuf_iterator<char>{file}, {}};
        const std::string name = entry.path().stem();
        recorded_[name] = manner == Manner::different ? differently(text) : text;
        replies_[name] = http(recorded_[name]);
    }
    if (!recorded_.contains(presets)) {
        throw std::runtime_error("no recorded answers in " + directory.string());
    }
}

Reply Monitors::answer(const Request &request)
{
    if (request.header("CIMMethod") == "SetDisplayLuminance") {
        return setLuminance(request);
    }
    const std::string name = classOf(request);
    if (request.header("CIMMethod") != "EnumerateInstances" || !replies_.contains(name)) {
        return intrinsic(request.header("CIMMethod"), "<ERROR CODE=\"7\" DESCRIPTION=\"not recorded\"/>");
    }
    const auto changed = luminance_.find(request.address);
    if (name != presets || changed == luminance_.end()) {
        return replies_.at(name);
    }
    return http(withLuminance(recorded_.at(name), changed->second));
}

Reply Monitors::setLuminance(const Request &request)
{
    const std::string preset =
        between(request.body, "<KEYBINDING NAME=\"InstanceID\"><KEYVALUE VALUETYPE=\"", "<");
    const std::string value =
        between(between(request.body, "<PARAMVALUE", "</PARAMVALUE>"), "<VALUE>", "</VALUE>");
    luminance_[request.address][preset.substr(preset.find('>') + 1)] = value;
    return method("SetDisplayLuminance", "<RETURNVALUE PARAMTYPE=\"uint32\"><VALUE>0</VALUE></RETURNVALUE>");
}

} // namespace responder
