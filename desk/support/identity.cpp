// SPDX-License-Identifier: Apache-2.0
// Users, the texts that an administrator gives the monitor, and the checks of arguments.
#include "support/dates.h"
#include "support/session.h"
#include "support/values.h"

#include <monitor_support.h>

#include <cstdio>
#include <optional>

using namespace desk;

namespace
{

/** Name and location fields are 25 wide and hold their terminating zero. */
constexpr std::size_t longestText = 24;

void explain(char *errorText, const char *reason)
{
    if (errorText != nullptr) {
        snprintf(errorText, ERROR_TEXT_SIZE, "%s", reason);
    }
}

/** 1 to 24 bytes of printable text, not blanks alone. */
bool validDisplayName(const char *text)
{
    if (text == nullptr) {
        return false;
    }
    const std::string_view name = text;
    return name.size() <= longestText && printable(name) && name.find_first_not_of(' ') != name.npos;
}

std::optional<int> deploymentSeconds(const char *text)
{
    return text == nullptr ? std::nullopt : dateSeconds(text);
}

template <class Value>
int store(const char *function, Key key, const Value &value, char *errorText) noexcept
{
    try {
        bool failed = false;
        Session session;
        session.store().change([&](Contents &contents) {
            failed = failsByFault(contents.faults, "fail-update", function);
            contents.settings.set(key, value);
            return !failed;
        });
        if (!failed) {
            return SUCCESS;
        }
        explain(errorText, "The settings database refused the update.");
    } catch (const std::exception &error) {
        report(function, error.what());
        explain(errorText, "The settings database could not be written.");
    }
    return FAILURE;
}

} // namespace

int ParseIPV4Address(const char *text, unsigned char octets[4])
{
    if (octets == nullptr) {
        return FAILURE;
    }
    return parseAddress(text == nullptr ? std::string_view() : std::string_view(text), octets) ? SUCCESS
                                                                                               : FAILURE;
}

int ValidateInputArgs(int value, int min, int max)
{
    return min <= value && value <= max ? SUCCESS : FAILURE;
}

int IsAdminUser(const char *userName, char *isAdmin, char *errorText)
{
    if (isAdmin == nullptr) {
        return FAILURE;
    }
    *isAdmin = 0;
    if (userName == nullptr || *userName == '\0') {
        explain(errorText, "No user name was given.");
        return FAILURE;
    }
    try {
        Session session;
        const Contents &contents = session.read();
        if (contents.fault("fail-user")) {
            explain(errorText, "The user could not be looked up.");
            return FAILURE;
        }
        const auto user = contents.users.find(std::string_view(userName));
        if (user == contents.users.end()) {
            explain(errorText, "The user is not known to the monitor.");
            return FAILURE;
        }
        *isAdmin = user->second ? 1 : 0;
        return SUCCESS;
    } catch (const std::exception &error) {
        report("IsAdminUser", error.what());
        explain(errorText, "The user could not be looked up.");
        return FAILURE;
    }
}

int ValidateDisplayName(const char *text)
{
    return validDisplayName(text) ? SUCCESS : FAILURE;
}

int UpdateDisplayName(const char *text, char *errorText)
{
    if (!validDisplayName(text)) {
        explain(errorText, "A display name has 1 to 24 printable characters.");
        return FAILURE;
    }
    return store("UpdateDisplayName", "display_name", std::string_view(text), errorText);
}

int ValidateDeploymentDate(const char *text)
{
    return deploymentSeconds(text) ? SUCCESS : FAILURE;
}

int UpdateDeploymentDate(const char *text, char *errorText)
{
    const std::optional<int> seconds = deploymentSeconds(text);
    if (!seconds) {
        explain(errorText, "A deployment date is a calendar date, DD/MM/YYYY.");
        return FAILURE;
    }
    return store("UpdateDeploymentDate", "deployment_date", *seconds, errorText);
}

int UpdateDeploymentLocation(const char *text, char *errorText)
{
    if (text == nullptr || std::string_view(text).size() > longestText || !printable(text)) {
        explain(errorText, "A deployment location has at most 24 printable characters.");
        return FAILURE;
    }
    return store("UpdateDeploymentLocation", "deployment_location", std::string_view(text), errorText);
}
