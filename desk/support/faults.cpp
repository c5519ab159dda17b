// SPDX-License-Identifier: Apache-2.0
#include "support/faults.h"

#include "support/environment.h"
#include "support/values.h"

#include <algorithm>

namespace desk
{

namespace
{

/** Takes the part before the next comma off the list. */
std::string_view nextOf(std::string_view &list)
{
    const std::size_t comma = list.find(',');
    const std::string_view part = list.substr(0, comma);
    list = comma == list.npos ? std::string_view() : list.substr(comma + 1);
    return part;
}

/** The functions that can be told by name to fail. */
constexpr std::string_view functions[] = {
    "GetMoinitorInfo",        "GetRegisterValue",     "GetDisplayManagementInfo",
    "GetImageAdjustmentInfo", "GetPIPSettingsInfo",   "GetOSDMenuAndMessagesInfo",
    "GetColorSpaceInfoById",  "GetBezelButtonInfo",   "GetFunctionButtonInfoById",
    "GetTestPatternInfo",     "GetIPAddress",         "GetRemoteManagementServerInfo",
    "UpdateDisplayName",      "UpdateDeploymentDate", "UpdateDeploymentLocation",
};

std::string functionsOf(std::string_view list, std::string_view kind)
{
    while (!list.empty()) {
        const std::string_view name = nextOf(list);
        const bool known = std::find(std::begin(functions), std::end(functions), name) != std::end(functions);
        if (!known || !name.starts_with(kind)) {
            return "no function " + std::string(kind) + "... is called " + std::string(name);
        }
    }
    return {};
}

std::string noArgument(std::string_view argument)
{
    return argument.empty() ? std::string() : "takes no argument";
}

std::string seconds(std::string_view argument)
{
    double value = 0;
    const bool good = parseSeconds(argument, value) && value <= 3600;
    return good ? std::string() : std::string(argument) + " is no number of seconds from 0 to 3600";
}

std::string count(std::string_view argument)
{
    int value = 0;
    const bool good = parseNumber(argument, value) && value >= 1;
    return good ? std::string() : std::string(argument) + " is no number of replies";
}

std::string queue(std::string_view argument)
{
    int value = 0;
    const bool good = argument.empty() || (parseNumber(argument, value) && value >= 0 && value < queueCount);
    return good ? std::string() : std::string(argument) + " is no queue";
}

std::string readers(std::string_view argument)
{
    return functionsOf(argument, "Get");
}

std::string updates(std::string_view argument)
{
    return functionsOf(argument, "Update");
}

constexpr FaultRow rows[] = {
    {"busy", "", "", "the display engine reports that it is busy", noArgument},
    {"silent", "", "", "the engine takes requests, applies them and answers none", noArgument},
    {"slow", "seconds", "1", "the engine waits before it applies and answers a request", seconds},
    {"lose-reply", "count", "1", "the engine loses its next replies", count},
    {"fail-read", "functions", "", "readers fail: all Get functions, or the ones named (comma-separated)",
     readers},
    {"fail-update", "functions", "", "updates of name, date and location fail: all, or the ones named",
     updates},
    {"fail-user", "", "", "no user can be looked up", noArgument},
    {"fail-queue", "queue", "", "message queues cannot be obtained: all, or the one numbered", queue},
    {"fail-send", "", "", "messages cannot be sent", noArgument},
    {"fail-receive", "", "", "replies cannot be received", noArgument},
};

} // namespace

std::span<const FaultRow> faultRows()
{
    return rows;
}

const FaultRow *findFault(std::string_view name)
{
    const FaultRow *row = std::find_if(std::begin(rows), std::end(rows),
                                       [=](const FaultRow &candidate) { return candidate.name == name; });
    return row == std::end(rows) ? nullptr : row;
}

bool failsByFault(const Faults &faults, std::string_view fault, std::string_view function)
{
    if (faults.empty()) {
        return false;
    }
    const auto found = faults.find(fault);
    if (found == faults.end()) {
        return false;
    }
    std::string_view names = found->second;
    if (names.empty()) {
        return true;
    }
    while (!names.empty()) {
        if (nextOf(names) == function) {
            return true;
        }
    }
    return false;
}

std::string switchFault(Faults &faults, std::string_view name, bool on, std::string_view argument)
{
    const FaultRow *row = findFault(name);
    if (row == nullptr) {
        return "there is no fault " + std::string(name);
    }
    if (!on) {
        faults.erase(std::string(name));
        return {};
    }
    const std::string_view given = argument.empty() ? row->defaultArgument : argument;
    if (const std::string wrong = row->complaint(given); !wrong.empty()) {
        return std::string(name) + ": " + wrong;
    }
    faults[std::string(name)] = given;
    return {};
}

} // namespace desk
