// SPDX-License-Identifier: Apache-2.0
#include "session/outcome.h"

#include <algorithm>
#include <array>

namespace displayctl::session
{

namespace
{

constexpr int accessDenied = 2; // the status code of CIM

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

std::string messageOf(const wbem::Answer &answer)
{
    if (answer.status == wbem::Status::cimError &&
        answer.message.find_first_not_of(' ') == std::string::npos) {
        return "the monitor gives no reason (CIM error " + std::to_string(answer.code) + ")";
    }
    return answer.message;
}

} // namespace displayctl::session
