// SPDX-License-Identifier: Apache-2.0
// Every method of the library through CMPI, with arguments of any name, type and value. An input chooses the
// class, the object, the method, the user, what some registers hold, and the arguments.
#include "contract.h"

#include "choices.h"

#include "engine/wire.h"

#include <cmpi/cmpidt.h>

#include <cstdio>
#include <set>

// The library prints its traces, which nobody reads here. Instead of those of tests/support, which belong to
// its main program.
namespace test_support
{

std::string traceText()
{
    return {};
}

void forgetTrace() {}

} // namespace test_support

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv);

namespace
{

using fuzz::Choices;

struct Target {
    const TestedClass *tested;
    const cim::Class *declared;
    std::vector<Path> paths;
};

/** The classes with methods; their objects as they tell them. */
const std::vector<Target> &targets()
{
    static const std::vector<Target> all = [] {
        std::vector<Target> made;
        std::size_t methods = 0;
        seam.reset();
        broker.reset();
        contract::scriptMonitor();
        for (const TestedClass &tested : contract::libraryClasses()) {
            const cim::Class &declared = contract::declaredClass(tested.name);
            if (tested.createMethodMI != nullptr && !declared.methods.empty()) {
                made.push_back({&tested, &declared, contract::pathsOf(tested)});
                methods += declared.methods.size();
                fuzz::require(!made.back().paths.empty(), "a class with methods has objects", tested.name);
            }
        }
        fuzz::require(made.size() >= 10 && methods >= 65, "there are methods to be called");
        return made;
    }();
    return all;
}

constexpr const char *texts[] = {"",
                                 " ",
                                 "0",
                                 "1",
                                 "2",
                                 "3",
                                 "7",
                                 "10",
                                 "48",
                                 "49",
                                 "100",
                                 "120",
                                 "250",
                                 "251",
                                 "255",
                                 "256",
                                 "-1",
                                 "+1",
                                 "010",
                                 "0x10",
                                 "1.5",
                                 "1e3",
                                 "32767",
                                 "32768",
                                 "65535",
                                 "65536",
                                 "2147483647",
                                 "2147483648",
                                 "-2147483648",
                                 "4294967295",
                                 "4294967296",
                                 "99999999999999999999",
                                 "true",
                                 "false",
                                 "TRUE",
                                 "True",
                                 "on",
                                 "31/01/2025",
                                 "29/02/2023",
                                 "29/02/2024",
                                 "2025-01-31",
                                 "00/00/0000",
                                 "192.168.1.1",
                                 "255.255.255.0",
                                 "0.0.0.0",
                                 "256.1.1.1",
                                 "1.2.3",
                                 "1.2.3.4.5",
                                 "Studio 8",
                                 "%s%n%d",
                                 "\xc3\xbc",
                                 "ZT:Marovelton_ColorSpace:3",
                                 "ZT:Marovelton_VideoInput:1",
                                 "ZT:Marovelton_ColorSpace:0",
                                 "ZT:Marovelton_ColorSpace:8",
                                 "administrator",
                                 "\n",
                                 "a\tb"};

std::string someText(Choices &choices)
{
    switch (choices.below(4)) {
    case 0:
        return choices.text();
    case 1:
        return std::to_string(static_cast<std::int16_t>(choices.number(2)));
    case 2:
        return std::string(choices.number(2) % 1000, static_cast<char>(choices.byte() | 1));
    default:
        return choices.of(texts);
    }
}

Path somePath(Choices &choices)
{
    const Target &target = choices.of(targets());
    Path path = choices.of(target.paths);
    if (choices.oneIn(4) && !path.keys.empty()) {
        Entry &key = path.keys[choices.below(path.keys.size())];
        key.value = choices.oneIn(4) ? uint32(static_cast<std::uint32_t>(choices.number(4)))
                                     : string(someText(choices));
    }
    if (choices.oneIn(8) && !path.keys.empty()) {
        path.keys.erase(path.keys.begin() + static_cast<std::ptrdiff_t>(choices.below(path.keys.size())));
    }
    if (choices.oneIn(8)) {
        path.className = someText(choices);
    }
    if (choices.oneIn(8)) {
        path.nameSpace = someText(choices);
    }
    return path;
}

Value someValue(Choices &choices)
{
    switch (choices.below(16)) {
    case 0:
        return uint8(choices.byte());
    case 1:
        return uint16(static_cast<std::uint16_t>(choices.number(2)));
    case 2:
        return uint32(static_cast<std::uint32_t>(choices.number(4)));
    case 3:
        return uint64(choices.number());
    case 4:
        return sint32(static_cast<std::int32_t>(choices.number(4)));
    case 5:
        return boolean(choices.byte());
    case 6:
        return real32(static_cast<float>(choices.number(4)) / 3);
    case 7:
        return dateTime(static_cast<std::int64_t>(choices.number()));
    case 8:
        return reference(somePath(choices));
    case 9:
        return choices.oneIn(2) ? nullReference() : embedded(instance(somePath(choices)));
    case 10: {
        const auto missing = everyMissingString();
        return choices.of(missing).value;
    }
    case 11:
        return stringArray({someText(choices), someText(choices)});
    case 12:
        return nullOf(static_cast<CMPIType>(choices.oneIn(2) ? CMPI_ref : CMPI_uint16));
    case 13:
        return chars(someText(choices));
    default:
        return string(someText(choices));
    }
}

Entries someArguments(Choices &choices, const cim::Method &method)
{
    Entries arguments;
    for (const cim::Parameter &parameter : method.parameters) {
        if (!choices.oneIn(16)) {
            const bool fits = !choices.oneIn(4);
            const bool isReference = parameter.type == cim::Type::reference;
            arguments.push_back({parameter.name, fits ? (isReference ? reference(somePath(choices))
                                                                     : string(someText(choices)))
                                                      : someValue(choices)});
        }
    }
    while (choices.oneIn(8)) {
        arguments.push_back({someText(choices), someValue(choices)});
    }
    return arguments;
}

/** Everything that a message to the engine has to be, whatever was asked for. */
void checkSent(const SentMessage &sent)
{
    const desk::wire::Request request = desk::wire::decode(sent.bytes);
    fuzz::require(request.type == desk::wire::messageType && request.source == desk::wire::sourceWsMan,
                  "a message is one of the library", hex(sent.bytes));
    const bool isSet = request.command == desk::wire::setRequest;
    fuzz::require(isSet || request.command == desk::wire::getRequest, "a message sets or refreshes",
                  hex(sent.bytes));
    fuzz::require(isSet ? request.count >= 1 && request.count <= 4 : request.count == 0,
                  "a message has its entries", hex(sent.bytes));
    for (std::size_t i = static_cast<std::size_t>(request.count); i < desk::wire::mostEntries; ++i) {
        const desk::wire::Entry &entry = request.entries[i];
        fuzz::require(entry.type == 0 && entry.registerId == 0 &&
                          entry.octets[0] + entry.octets[1] + entry.octets[2] + entry.octets[3] == 0,
                      "entries that are not used are zeros", hex(sent.bytes));
    }
}

void check(const Answer &answer, bool isItsOwn, const std::string &what)
{
    const std::string told = what + "\n" + answer.text();
    fuzz::require(answer.returned.size() <= 1 && answer.done == 1,
                  "a method returns one value and is done once", told);
    fuzz::require((answer.rc == CMPI_RC_OK) == !answer.hasMessage,
                  "a failure has a text, and nothing else has one", told);
    const bool isZero = answer.returned.size() == 1 && answer.returned.front().integer == 0;
    // compat: a path of another class is answered with a failing value and no error; some classes answer an
    // unknown method with 0 beside the error.
    const bool isUnknown = answer.rc == CMPI_RC_ERR_NOT_FOUND || answer.rc == CMPI_RC_ERR_NOT_SUPPORTED;
    fuzz::require(isItsOwn ? isUnknown || (answer.rc == CMPI_RC_OK) == isZero
                           : !isZero && answer.sent.empty(),
                  "0 is returned when all was done", told);
    for (const SentMessage &sent : answer.sent) {
        checkSent(sent);
        fuzz::require(answer.rc == CMPI_RC_OK ||
                          desk::wire::decode(sent.bytes).command == desk::wire::getRequest,
                      "what is refused changes nothing", told);
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    testing::FLAGS_gtest_break_on_failure = true;
    fuzz::require(std::freopen("/dev/null", "w", stdout) != nullptr,
                  "what the library prints can be thrown away");
    targets();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Choices choices(data, size);
    seam.reset();
    broker.reset();
    contract::scriptMonitor();
    const Target &target = choices.of(targets());
    const cim::Method &method = choices.of(target.declared->methods);
    const char *const users[] = {"admin", "operator", "unknown"};
    const User user = choices.oneIn(8) ? noUser() : User(choices.of(users));
    const Path path = choices.oneIn(8) ? somePath(choices) : choices.of(target.paths);
    const std::string name = choices.oneIn(32) ? someText(choices) : method.name;
    for (auto &[place, text] : seam.registers) {
        if (choices.oneIn(4)) {
            text = someText(choices).substr(0, REGISTER_TEXT_SIZE - 1);
        }
    }
    const Entries arguments = someArguments(choices, method);
    const bool isItsOwn = cim::sameName(path.className, target.tested->name);
    check(invoke(*target.tested, path, name, arguments, user), isItsOwn,
          describe(path) + "\n" + name + "\n" + describe(arguments));
    return 0;
}
