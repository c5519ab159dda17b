// SPDX-License-Identifier: Apache-2.0
#include "account.h"

#include <iostream>
#include <utility>

namespace soak
{

const char *nameOf(Count count)
{
    constexpr std::array<const char *, static_cast<std::size_t>(Count::end)> names = {
        "reads",
        "enumerations",
        "changes acknowledged",
        "changes refused that had to be",
        "changes refused because of a fault",
        "changes that the engine did not answer",
        "requests not served (503, 429)",
        "requests whose connection broke",
        "requests broken off by the client",
        "reads and enumerations that failed",
        "associations told without the ends that failed",
        "runs of displayctl",
    };
    return names[static_cast<std::size_t>(count)];
}

void Ledger::wrong(const std::string &what)
{
    ++wrongs_;
    const std::lock_guard lock(mutex_);
    std::cerr << "WRONG: " << scene_ << ": " << what << '\n';
}

void Ledger::failure(const std::string &text)
{
    const std::lock_guard lock(mutex_);
    ++failures_[text.substr(0, 120)];
}

std::map<std::string, long> Ledger::failures()
{
    const std::lock_guard lock(mutex_);
    return failures_;
}

void Ledger::expectRecord(const std::string &line)
{
    const std::lock_guard lock(mutex_);
    ++records_[line];
}

std::map<std::string, long> Ledger::takeExpectedRecords()
{
    const std::lock_guard lock(mutex_);
    return std::exchange(records_, {});
}

void Ledger::setScene(const std::string &scene)
{
    const std::lock_guard lock(mutex_);
    scene_ = scene;
}

} // namespace soak
