// SPDX-License-Identifier: Apache-2.0
#include "session/outcome.h"

#include <algorithm>
#include <array>

namespace displayctl::session
{

namespace
{

struct OutcomeRow {
    Outcome outcome;
    std::string_view name;
    int exitCode;
};

// From the least to the most serious.
constexpr std::array outcomes = {
    OutcomeRow{Outcome::unchanged, "unchanged", 0},
    OutcomeRow{Outcome::ok, "ok", 0},
    OutcomeRow{Outcome::different, "different", 7},
    OutcomeRow{Outcome::refused, "refused", 1},
    OutcomeRow{Outcome::busy, "busy", 1},
    OutcomeRow{Outcome::unknown, "unknown", 6},
    OutcomeRow{Outcome::unreachable, "unreachable", 3},
    OutcomeRow{Outcome::login, "login", 4},
};

struct ReasonRow {
    std::string_view text; // how the monitor's own begins
    std::string_view reason;
};

constexpr std::string_view isBusy = "the display engine is busy with something else; try again in a moment";
constexpr std::string_view isSilent =
    "the display engine gave no answer in time; see that the monitor is on, and try again";
constexpr std::string_view isCutOff =
    "the monitor cannot reach its display engine; its controller has to be started again if this stays";
constexpr std::string_view isUnreadable =
    "the monitor cannot read its own records; its controller has to be started again if this stays";

// What the monitor says of itself, whatever was asked of it.
constexpr std::array reasons = {
    ReasonRow{"Device is Busy", isBusy},
    ReasonRow{"Failed to read the value from spear.", isSilent},
    ReasonRow{"Failed to receive message.", isSilent},
    ReasonRow{"Failed to set ", isSilent},
    ReasonRow{"Failed to to set ", isSilent},
    ReasonRow{"Failed to perform ", isSilent},
    ReasonRow{"Unable to create a message queue", isCutOff},
    ReasonRow{"Unable to send value to SPEAr.", isCutOff},
    ReasonRow{"Failed to process. Unable to ", isCutOff},
    ReasonRow{"Failed to get ", isUnreadable},
    ReasonRow{"Couldn't build instance", isUnreadable},
    ReasonRow{
        "Failed to update.",
        "the monitor could not write its records; its controller has to be started again if this stays"},
};

auto rowOf(Outcome outcome)
{
    return std::ranges::find(outcomes, outcome, &OutcomeRow::outcome);
}

} // namespace

std::string_view nameOf(Outcome outcome)
{
    return rowOf(outcome)->name;
}

int exitCodeOf(Outcome outcome)
{
    return rowOf(outcome)->exitCode;
}

Outcome worse(Outcome one, Outcome other)
{
    return std::max(rowOf(one), rowOf(other))->outcome;
}

Outcome outcomeOf(const wbem::Answer &answer)
{
    switch (answer.status) {
    case wbem::Status::ok:
        return Outcome::ok;
    case wbem::Status::cimError:
        if (answer.code == accessDenied) {
            return Outcome::login;
        }
        return answer.message.starts_with("Device is Busy") ? Outcome::busy : Outcome::refused;
    case wbem::Status::busy:
        return Outcome::busy;
    case wbem::Status::unauthorized:
    case wbem::Status::forbidden:
        return Outcome::login;
    case wbem::Status::untrusted:
    case wbem::Status::unreachable:
    case wbem::Status::noAnswer:
    case wbem::Status::broken:
        break;
    }
    return Outcome::unreachable;
}

std::string_view reasonOf(const wbem::Answer &answer)
{
    if (answer.status != wbem::Status::cimError) {
        return {};
    }
    if (answer.code == accessDenied) {
        return "only administrators of the monitor may do this";
    }
    const auto row = std::ranges::find_if(
        reasons, [&](const ReasonRow &each) { return answer.message.starts_with(each.text); });
    return row == reasons.end() ? std::string_view() : row->reason;
}

std::string messageOf(const wbem::Answer &answer)
{
    if (answer.status == wbem::Status::cimError &&
        answer.message.find_first_not_of(' ') == std::string::npos) {
        return "the monitor gives no reason (CIM error " + std::to_string(answer.code) + ")";
    }
    return answer.message;
}

} // namespace displayctl::session
