// SPDX-License-Identifier: Apache-2.0
// How the files of a site are read: YAML, with file and line in every message.
#ifndef DISPLAYCTL_SITE_YAML_FILE_H
#define DISPLAYCTL_SITE_YAML_FILE_H

#include "site/directories.h"
#include "site/error.h"
#include "site/text_file.h"

#include <yaml-cpp/yaml.h>

#include <filesystem>
#include <set>
#include <string>
#include <utility>

namespace displayctl::site
{

/** A YAML file, its name for messages and its directory for the names in it. */
class YamlFile
{
  public:
    explicit YamlFile(std::filesystem::path path) : path_(std::move(path))
    {
        const auto content = readTextFile(path_);
        if (!content) {
            throw Error(path_.string() + ": cannot be read");
        }
        try {
            root_ = YAML::Load(*content);
        } catch (const YAML::ParserException &problem) {
            fail(problem.mark, "this is not YAML: " + problem.msg);
        }
        if (!root_.IsNull() && !root_.IsMap()) {
            fail(root_, "the file begins with names, such as `monitors:`");
        }
    }

    [[nodiscard]] const YAML::Node &root() const
    {
        return root_;
    }

    [[noreturn]] void fail(const YAML::Mark &mark, const std::string &problem) const
    {
        throw Error(path_.string() + ':' + std::to_string(mark.line + 1) + ": " + problem);
    }

    [[noreturn]] void fail(const YAML::Node &node, const std::string &problem) const
    {
        fail(node.Mark(), problem);
    }

    [[nodiscard]] std::string text(const YAML::Node &node, const std::string &what) const
    {
        if (!node.IsScalar() || node.Scalar().empty()) {
            fail(node, what + " is a text");
        }
        return node.Scalar();
    }

    [[nodiscard]] bool flag(const YAML::Node &node, const std::string &what) const
    {
        bool value = false;
        if (!YAML::convert<bool>::decode(node, value)) {
            fail(node, what + " is true or false");
        }
        return value;
    }

    /** The name of a file: ~ is the user's home, other relative names are relative to this file. */
    [[nodiscard]] std::filesystem::path path(const YAML::Node &node, const std::string &what) const
    {
        const std::string name = text(node, what);
        if (name.starts_with("~/")) {
            return homeDirectory() / name.substr(2);
        }
        return path_.parent_path() / name;
    }

    /** Calls entry(name, name's node, value's node) for each member of a map; a name twice is refused. */
    template <typename Entry>
    void each(const YAML::Node &map, const std::string &what, const Entry &entry) const
    {
        if (map.IsNull()) {
            return;
        }
        if (!map.IsMap()) {
            fail(map, what + " is a list of names with what belongs to each, such as `name: value`");
        }
        std::set<std::string> known;
        for (const auto &member : map) {
            const std::string name = text(member.first, "a name in " + what);
            if (!known.insert(name).second) {
                fail(member.first, '"' + name + "\" stands twice in " + what);
            }
            entry(name, member.first, member.second);
        }
    }

  private:
    std::filesystem::path path_;
    YAML::Node root_;
};

} // namespace displayctl::site

#endif
