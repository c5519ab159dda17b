// SPDX-License-Identifier: Apache-2.0
#include "core/registration.h"

#include "cim/schema.h"
#include "core/stanzas.h"

#include <algorithm>

namespace host
{
namespace
{

class RegistrationReader final : private StanzaReader
{
  public:
    RegistrationReader(const std::string &file, std::vector<std::string> &problems)
        : StanzaReader("Class", file, problems)
    {
    }

    std::vector<Registration> read(std::string_view text)
    {
        readText(text);
        return std::move(registrations_);
    }

  private:
    void begin(std::string_view name) override
    {
        current_ = {};
        current_.className = name;
        current_.where = where();
    }

    bool take(std::string_view key, std::string_view value) override
    {
        if (key == "provider") {
            current_.provider = value;
        } else if (key == "location") {
            current_.location = value;
        } else if (key == "namespace") {
            current_.nameSpaces = wordsOf(value);
        } else if (key == "type") {
            readTypes(value);
        } else {
            // These three are for object managers that run providers in processes of their own.
            return key == "unload" || key == "user" || key == "group";
        }
        return true;
    }

    void readTypes(std::string_view value)
    {
        for (const std::string &type : wordsOf(value)) {
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

    void check() override
    {
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
    }

    void keep() override
    {
        registrations_.push_back(current_);
    }

    std::vector<Registration> registrations_;
    Registration current_;
};

} // namespace

std::vector<Registration> readRegistration(std::string_view text, const std::string &file,
                                           std::vector<std::string> &problems)
{
    return RegistrationReader(file, problems).read(text);
}

std::vector<Registration> readRegistrationFile(const std::string &file, std::vector<std::string> &problems)
{
    return readRegistration(readStanzaFile(file, problems), file, problems);
}

} // namespace host
