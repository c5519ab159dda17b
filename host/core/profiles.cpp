// SPDX-License-Identifier: Apache-2.0
#include "core/profiles.h"

#include "core/stanzas.h"

#include <algorithm>

namespace host
{
namespace
{

constexpr std::uint16_t unlistedOrganization = 1;

struct Organization {
    std::string_view name;
    std::uint16_t number;
};

constexpr Organization organizations[] = {{"DMTF", 2}, {"SNIA", 11}};

class ProfileReader final : private StanzaReader
{
  public:
    ProfileReader(const std::string &file, std::vector<std::string> &problems)
        : StanzaReader("InstanceID", file, problems)
    {
    }

    std::vector<Profile> read(std::string_view text)
    {
        readText(text);
        return std::move(profiles_);
    }

  private:
    void begin(std::string_view name) override
    {
        current_ = {};
        current_.instanceId = name;
        current_.where = where();
    }

    bool take(std::string_view key, std::string_view value) override
    {
        if (key == "organization") {
            const auto *known = std::ranges::find(organizations, value, &Organization::name);
            const bool isKnown = known != std::end(organizations);
            current_.organization = isKnown ? known->number : unlistedOrganization;
            current_.otherOrganization = isKnown ? std::string_view() : value;
        } else if (key == "name") {
            current_.name = value;
        } else if (key == "version") {
            current_.version = value;
        } else if (key == "central-class") {
            current_.centralClasses = wordsOf(value);
        } else if (key == "references") {
            current_.references = wordsOf(value);
        } else {
            return false;
        }
        return true;
    }

    void check() override
    {
        if (current_.organization == 0) {
            problemOfStanza("\"organization\" is missing");
        }
        if (current_.name.empty()) {
            problemOfStanza("\"name\" is missing");
        }
        if (current_.version.empty()) {
            problemOfStanza("\"version\" is missing");
        }
        if (std::ranges::find(profiles_, current_.instanceId, &Profile::instanceId) != profiles_.end()) {
            problemOfStanza("the profile has a stanza already");
        }
    }

    void keep() override
    {
        profiles_.push_back(current_);
    }

    std::vector<Profile> profiles_;
    Profile current_;
};

} // namespace

std::vector<Profile> readProfiles(std::string_view text, const std::string &file,
                                  std::vector<std::string> &problems)
{
    return ProfileReader(file, problems).read(text);
}

std::vector<Profile> readProfileFile(const std::string &file, std::vector<std::string> &problems)
{
    return readProfiles(readStanzaFile(file, problems), file, problems);
}

} // namespace host
