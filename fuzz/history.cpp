// SPDX-License-Identifier: Apache-2.0
// The history of changes. The first byte of an input chooses:
//   v  the rest is the text of a history, which is verified
//   c  the rest makes a chain of lines, which verifies, and one change of it, which is found
//   r  the rest is what lies in the files of a history and of a journal when they are opened
//   s  the rest is what --since gets
#include "history/chain.h"
#include "history/journal.h"

#include "choices.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace
{

using namespace displayctl::history;

/** The texts of an input for files: of the history, of its head, of a journal. */
constexpr std::string_view separator = "\n%%\n";

void verify(std::string_view text)
{
    End end;
    end.number = static_cast<std::uint64_t>(std::ranges::count(text, '\n'));
    const std::string_view hashBefore = ",\"hash\":\"";
    const std::size_t last = text.rfind(hashBefore);
    if (last != std::string_view::npos && text.size() >= last + hashBefore.size() + 64) {
        end.hash = text.substr(last + hashBefore.size(), 64);
    }
    const Verification result = verifyChain(text, end);
    fuzz::require((result.firstBadLine == 0) == result.problem.empty(), "what is wrong has a line");
    fuzz::require(result.firstBadLine <= end.number + 1,
                  "a bad line is one of the file, or the one behind it");
}

std::string chainOf(fuzz::Choices &choices, End &end)
{
    std::string text;
    const std::size_t lines = choices.below(5) + 1;
    for (std::size_t i = 0; i < lines; ++i) {
        Json document = Json::object();
        const std::size_t members = choices.below(4);
        for (std::size_t k = 0; k < members; ++k) {
            const std::string name = choices.text();
            // The history adds these three itself.
            if (name != "number" && name != "previous" && name != "hash") {
                document[name] = choices.oneIn(3) ? Json(choices.number(4)) : Json(choices.text());
            }
        }
        text += seal(document, end);
    }
    return text;
}

void checkChain(fuzz::Choices choices)
{
    End end;
    const std::string text = chainOf(choices, end);
    const Verification good = verifyChain(text, end);
    fuzz::require(good.firstBadLine == 0 && good.problem.empty(), "what was sealed verifies", text);

    std::string changed = text;
    const std::size_t at = choices.below(std::min<std::size_t>(text.size(), 65536));
    switch (choices.below(5)) {
    case 0:
        changed[at] = static_cast<char>(choices.byte());
        break;
    case 1:
        changed.erase(at, choices.below(256) + 1);
        break;
    case 2:
        changed.insert(at, choices.text());
        break;
    case 3: { // a line is removed
        const std::size_t begin = text.rfind('\n', at == 0 ? 0 : at - 1);
        changed.erase(begin == std::string::npos ? 0 : begin + 1,
                      text.find('\n', at) + 1 - (begin == std::string::npos ? 0 : begin + 1));
        break;
    }
    default:
        changed += text.substr(0, text.find('\n') + 1); // a line is added
        break;
    }
    if (changed != text) {
        fuzz::require(verifyChain(changed, end).firstBadLine != 0, "a change is found", changed);
    }
}

/** A directory that is empty before each input. */
std::filesystem::path emptyDirectory()
{
    static const std::filesystem::path directory = [] {
        std::string name = (std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : "/tmp") +
                           std::string("/fuzz-history.XXXXXX");
        fuzz::require(mkdtemp(name.data()) != nullptr, "a directory can be made");
        static std::string made;
        made = name;
        std::atexit([] {
            std::error_code ignored;
            std::filesystem::remove_all(made, ignored);
        });
        return std::filesystem::path(name);
    }();
    for (const auto &entry : std::filesystem::directory_iterator(directory)) {
        std::filesystem::remove_all(entry.path());
    }
    return directory;
}

std::string_view takePart(std::string_view &rest)
{
    const std::size_t end = rest.find(separator);
    const std::string_view part = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + separator.size());
    return part;
}

/** Whatever lies there: a change that was stored is read, and what could not be stored was told. */
void openFiles(std::string_view rest)
{
    const std::filesystem::path directory = emptyDirectory();
    std::ofstream(directory / "history.jsonl", std::ios::binary) << takePart(rest);
    if (const std::string_view head = takePart(rest); !head.empty()) {
        std::ofstream(directory / "history.head", std::ios::binary) << head;
    }
    try {
        History history(directory);
        const Verification before = history.verify();
        const std::size_t lines = history.read().size();
        Change change;
        change.monitor = "studio";
        change.setting = "luminance";
        change.oldValue = 100;
        change.newValue = 110;
        change.result = "set";
        history.append(change);
        const std::vector<Json> after = history.read();
        fuzz::require(!after.empty() && after.back().value("setting", "") == "luminance",
                      "what was stored is read");
        fuzz::require(after.size() >= 1 && after.size() <= lines + 1, "nothing else is added");
        fuzz::require(before.firstBadLine != 0 || history.verify().firstBadLine == 0,
                      "a history that verified still does");
    } catch (const Error &error) {
        fuzz::require(*error.what() != '\0', "a failure is told");
    }
}

void openJournal(std::string_view text)
{
    const std::filesystem::path state = emptyDirectory();
    {
        std::optional<Journal> journal = Journal::open(state, "studio"); // makes the directories
    }
    for (const auto &entry : std::filesystem::recursive_directory_iterator(state)) {
        if (entry.is_regular_file()) {
            std::ofstream(entry.path(), std::ios::binary) << text;
        }
    }
    try {
        std::optional<Journal> journal = Journal::open(state, "studio");
        fuzz::require(journal.has_value(), "a journal that nobody has can be taken");
        journal->write(Json{{"step", "sent"}});
        fuzz::require(!journal->isEmpty() && journal->records().back() == Json{{"step", "sent"}},
                      "a record is there");
        journal->finish();
        fuzz::require(journal->isEmpty() && Journal::leftOver(state, "studio").empty(),
                      "what is done leaves nothing");
    } catch (const Error &error) {
        fuzz::require(*error.what() != '\0', "a failure is told");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    const std::string_view rest = fuzz::textOf(data + 1, size - 1);
    switch (*data) {
    case 'v':
        verify(rest);
        break;
    case 'c':
        checkChain(fuzz::Choices(data + 1, size - 1));
        break;
    case 'r':
        openFiles(rest);
        openJournal(rest);
        break;
    case 's':
        if (const auto since = parseSince(rest)) {
            fuzz::require(since->size() == 24 && since->ends_with('Z'), "a time is as the history writes it",
                          *since);
        }
        break;
    default:
        break;
    }
    return 0;
}
