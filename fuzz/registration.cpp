// SPDX-License-Identifier: Apache-2.0
// The registration of providers, and the profiles that the classes conform to. What is read, written again,
// is read as the same.
#include "core/registration.h"
#include "core/profiles.h"

#include "fuzz.h"

namespace
{

std::string joined(const std::vector<std::string> &words)
{
    std::string text;
    for (const std::string &word : words) {
        text += " " + word;
    }
    return text;
}

void checkProblems(const std::vector<std::string> &problems)
{
    for (const std::string &problem : problems) {
        fuzz::require(problem.starts_with("input:") && problem.size() > 10,
                      "a problem has its place and its reason", problem);
    }
}

std::string written(const host::Registration &one)
{
    std::string types = one.isInstance ? " instance" : "";
    types += one.isMethod ? " method" : "";
    types += one.isAssociation ? " association" : "";
    return "[" + one.className + "]\n provider: " + one.provider + "\n location: " + one.location +
           "\n type:" + types + "\n namespace:" + joined(one.nameSpaces) + "\n";
}

void checkRegistration(std::string_view text)
{
    std::vector<std::string> problems;
    const std::vector<host::Registration> first = host::readRegistration(text, "input", problems);
    checkProblems(problems);
    std::string again;
    for (const host::Registration &one : first) {
        fuzz::require(!one.className.empty() && !one.provider.empty() && !one.location.empty() &&
                          !one.nameSpaces.empty(),
                      "a registration is complete", one.where);
        again += written(one);
    }
    problems.clear();
    const std::vector<host::Registration> second = host::readRegistration(again, "input", problems);
    fuzz::require(problems.empty() && second.size() == first.size(), "what was read can be read again",
                  again);
    for (std::size_t i = 0; i < first.size(); ++i) {
        fuzz::require(written(first[i]) == written(second[i]), "what was read is read as the same", again);
    }
}

std::string written(const host::Profile &one)
{
    const std::string organization =
        one.otherOrganization.empty() ? one.organization == 2 ? "DMTF" : "SNIA" : one.otherOrganization;
    return "[" + one.instanceId + "]\n organization: " + organization + "\n name: " + one.name +
           "\n version: " + one.version +
           (one.centralClasses.empty() ? "" : "\n central-class:" + joined(one.centralClasses)) +
           (one.references.empty() ? "" : "\n references:" + joined(one.references)) + "\n";
}

void checkProfiles(std::string_view text)
{
    std::vector<std::string> problems;
    const std::vector<host::Profile> first = host::readProfiles(text, "input", problems);
    checkProblems(problems);
    std::string again;
    for (const host::Profile &one : first) {
        again += written(one);
    }
    const bool wasGood = problems.empty();
    problems.clear();
    const std::vector<host::Profile> second = host::readProfiles(again, "input", problems);
    // References may lead to a stanza that was bad.
    fuzz::require(!wasGood || (problems.empty() && second.size() == first.size()),
                  "profiles that were read can be read again", again);
    for (std::size_t i = 0; wasGood && i < first.size(); ++i) {
        fuzz::require(written(first[i]) == written(second[i]) &&
                          first[i].organization == second[i].organization,
                      "a profile that was read is read as the same", again);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    checkRegistration(fuzz::textOf(data, size));
    checkProfiles(fuzz::textOf(data, size));
    return 0;
}
