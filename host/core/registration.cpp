// SPDX-License-Identifier: Apache-2.0
#include "core/registration.h"

#include "cim/schema.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

namespace host
{
namespace
{

constexpr std::string_view blanks = " \t\r\v\f";

std::string_view trim(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::vector<std::string> words(std::string_view text)
{
    std::vector<std::string> found;
    for (text = trim(text); !text.empty(); text = trim(text)) {
        const std::size_t end = std::min(text.find_first_of(blanks), text.size());
        found.emplace_back(text.substr(0, end));
        text.remove_prefix(end);
    }
    return found;
}

class Reader
{
  public:
    Reader(const std::string &file, std::vector<std::string> &problems) : file_(file), problems_(problems) {}

    std::vector<Registration> read(std::string_view text)
    {
        while (!text.empty()) {
            const std::size_t end = std::min(text.find('\n'), text.size());
            ++line_;
            readLine(trim(text.substr(0, end)));
            text.remove_prefix(std::min(end + 1, text.size()));
        }
        finish();
        return std::move(registrations_);
    }

  private:
    void readLine(std::string_view line)
    {
        if (line.empty() || line.front() == '#') {
            return;
        }
        if (line.front() == '[') {
            finish();
            if (line.back() != ']' || trim(line.substr(1, line.size() - 2)).empty()) {
                problem("a stanza begins with [Class]");
                return;
            }
            current_ = {};
            current_.className = trim(line.substr(1, line.size() - 2));
            current_.where = file_ + ":" + std::to_string(line_);
            inStanza_ = true;
            bad_ = false;
            return;
        }
        const std::size_t colon = line.find(':');
        if (colon == std::string_view::npos) {
            problem("expected \"key: value\"");
            return;
        }
        if (!inStanza_) {
            problem("a value stands before the first [Class]");
            return;
        }
        readValue(trim(line.substr(0, colon)), trim(line.substr(colon + 1)));
    }

    void readValue(std::string_view key, std::string_view value)
    {
        if (value.empty()) {
            problem(std::string("\"").append(key).append("\" has no value"));
        } else if (key == "provider") {
            current_.provider = value;
        } else if (key == "location") {
            current_.location = value;
        } else if (key == "namespace") {
            current_.nameSpaces = words(value);
        } else if (key == "type") {
            readTypes(value);
        } else if (key != "unload" && key != "user" && key != "group") {
            // Those three are for object managers that run providers in processes of their own.
            problem(std::string("unknown key \"").append(key).append("\""));
        }
    }

    void readTypes(std::string_view value)
    {
        for (const std::string &type : words(value)) {
            if (type == "instance") {
                current_.isInstance = true;
            } else if (type == "method") {
                current_.isMethod = true;
            } else if (type == "association") {
                current_.isAssociation = true;
            } else {
                problem(std::string("providers of type \"").append(type).append("\" are not supported"));
            }
        }
    }

    void finish()
    {
        if (!inStanza_) {
            return;
        }
        if (current_.provider.empty()) {
            problemOfStanza("\"provider\" is missing");
        }
        if (current_.location.empty()) {
            problemOfStanza("\"location\" is missing");
        }
        if (current_.nameSpaces.empty()) {
            problemOfStanza("\"namespace\" is missing");
        }
        if (!current_.isInstance && !current_.isMethod && !current_.isAssociation) {
            problemOfStanza("\"type\" is missing");
        }
        if (std::any_of(registrations_.begin(), registrations_.end(), [this](const Registration &other) {
                return cim::sameName(other.className, current_.className);
            })) {
            problemOfStanza("the class has a stanza already");
        }
        if (!bad_) {
            registrations_.push_back(current_);
        }
        inStanza_ = false;
    }

    void problem(const std::string &text)
    {
        problems_.push_back(file_ + ":" + std::to_string(line_) + ": " + text);
        bad_ = true;
    }

    void problemOfStanza(const std::string &text)
    {
        problems_.push_back(current_.where + ": [" + current_.className + "] " + text);
        bad_ = true;
    }

    const std::string &file_;
    std::vector<std::string> &problems_;
    std::vector<Registration> registrations_;
    Registration current_;
    std::size_t line_ = 0;
    bool inStanza_ = false;
    bool bad_ = false;
};

} // namespace

std::vector<Registration> readRegistration(std::string_view text, const std::string &file,
                                           std::vector<std::string> &problems)
{
    return Reader(file, problems).read(text);
}

std::vector<Registration> readRegistrationFile(const std::string &file, std::vector<std::string> &problems)
{
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream text;
    if (!stream || !(text << stream.rdbuf())) {
        problems.push_back(file + ": cannot be read: " + std::strerror(errno));
        return {};
    }
    return readRegistration(text.str(), file, problems);
}

} // namespace host
