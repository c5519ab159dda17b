// SPDX-License-Identifier: Apache-2.0
#include "clients.h"

#include <unistd.h>

#include <csignal>
#include <fstream>

namespace soak
{

namespace
{

/** How a process ends that was killed. */
constexpr int killedCode = 128 + SIGKILL;

} // namespace

std::string recordOf(const std::string &user, const Setting &setting, const Value &value)
{
    std::string line = "\"user\":\"" + user + "\" \"method\":\"" + setting.method + "\",\"arguments\":{";
    for (std::size_t i = 0; i < value.size(); ++i) {
        line += std::string(i == 0 ? "" : ",") + "\"" + setting.arguments[i] + "\":\"" +
                argumentText(setting, value[i]) + "\"";
    }
    return line + "},\"answer\":{\"code\":0";
}

// ---- by a protocol ----

ProtocolClient::ProtocolClient(Desk &desk, Ledger &ledger, Protocol protocol, const User &user,
                               std::uint64_t seed)
    : desk_(desk), ledger_(ledger), protocol_(protocol), user_(user), random_(seed)
{
}

void ProtocolClient::work(long operations)
{
    connection_ = std::make_unique<Connection>();
    for (long i = 0; i < operations; ++i) {
        one();
        ++ledger_.operations;
    }
    slowest_ = std::max(slowest_, connection_->slowest());
    connection_.reset();
}

void ProtocolClient::one()
{
    const int dice = anyOf(random_, 0, 99);
    if (dice < 30) {
        readOwn();
    } else if (dice < 40) {
        readOther();
    } else if (dice < 60) {
        enumerate();
    } else if (dice < 90) {
        change();
    } else {
        changeThatIsRefused();
    }
}

Answer ProtocolClient::ask(const User &user, const Message &message, bool mayBreakOff)
{
    const bool breaksOff = anyOf(random_, 0, 1) == 0;
    const std::chrono::milliseconds moment{anyOf(random_, 1, 3)};
    const bool isKilled = mayBreakOff && breaksOff && ledger_.clientsAreKilled;
    const auto begin = std::chrono::steady_clock::now();
    Answer answer = connection_->send(ledger_.port, user, message, isKilled ? moment : Connection::longest);
    if (answer.outcome == Outcome::notServed) {
        ledger_.count(Count::notServed);
        ledger_.failure(answer.text);
    } else if (answer.outcome == Outcome::broken) {
        ledger_.count(isKilled ? Count::abandoned : Count::broken);
        ledger_.failure((isKilled ? "broken off: " : "") + answer.text);
        if (!isKilled && std::chrono::steady_clock::now() - begin >= Connection::longest) {
            ledger_.wrong("no answer within 100 s");
        }
        if (isKilled) { // as if another client came
            connection_ = std::make_unique<Connection>();
        } else { // nobody is there at the moment
            usleep(20'000);
        }
    }
    return answer;
}

void ProtocolClient::failed(const Answer &answer)
{
    if (answer.outcome == Outcome::refused || answer.outcome == Outcome::noAnswer) {
        ledger_.count(Count::failedReads);
        ledger_.failure("read: " + answer.text);
    }
}

void ProtocolClient::readOwn()
{
    const Account &account = *accounts_[random_() % accounts_.size()];
    const Answer answer = ask(user_, readMessage(protocol_, account.setting()), true);
    if (answer.outcome != Outcome::done) {
        return failed(answer);
    }
    ledger_.count(Count::reads);
    const Value shown =
        shownValue(account.setting(), propertiesOf(answer.body, account.setting().properties));
    if (!account.mayShow(shown)) {
        ledger_.wrong("reads " + describe(account.setting(), shown) + " instead of " +
                      describe(account.setting(), *account.possible().begin()));
    }
}

void ProtocolClient::readOther()
{
    const Setting &setting = settings()[random_() % settings().size()];
    const Answer answer = ask(user_, readMessage(protocol_, setting), true);
    if (answer.outcome != Outcome::done) {
        return failed(answer);
    }
    ledger_.count(Count::reads);
    if (shownValue(setting, propertiesOf(answer.body, setting.properties)).empty()) {
        ledger_.wrong(std::string(setting.className) + " is read without " + setting.properties[0]);
    }
}

void ProtocolClient::enumerate()
{
    const ClassRow &row = classes()[random_() % classes().size()];
    const bool names = anyOf(random_, 0, 1) == 0;
    const Answer answer =
        ask(user_, names ? namesMessage(protocol_, row.name) : enumerateMessage(protocol_, row.name), true);
    if (answer.outcome != Outcome::done) {
        return failed(answer);
    }
    ledger_.count(Count::enumerations);
    const int found = objectsIn(protocol_, answer.body);
    if (row.isAssociation && found < row.objects) {
        ledger_.count(Count::shorter);
    } else if (found != row.objects) {
        ledger_.wrong(std::to_string(found) + " objects of " + row.name + " instead of " +
                      std::to_string(row.objects));
    }
}

void ProtocolClient::change()
{
    Account &account = *accounts_[random_() % accounts_.size()];
    if (!account.isSettled()) {
        return readOwn();
    }
    const Value value = anotherValue(account.setting(), *account.possible().begin(), random_);
    const Answer answer = ask(user_, changeMessage(protocol_, account.setting(), value), true);
    switch (answer.outcome) {
    case Outcome::done:
        account.acknowledged(value);
        ledger_.count(Count::acknowledged);
        ledger_.expectRecord(recordOf(user_.name, account.setting(), value));
        break;
    case Outcome::refused:
        ledger_.count(Count::otherwiseRefused);
        ledger_.failure("change: " + answer.text);
        break;
    case Outcome::noAnswer:
        ledger_.count(Count::unanswered);
        if (ledger_.missingAnswerSaysNothing) {
            account.either(value);
        }
        break;
    case Outcome::broken:
        account.maybeLater(value);
        break;
    case Outcome::notServed:
        break;
    }
}

/** A change that is never accepted, whatever is going on. */
Answer ProtocolClient::refusedRequest(const Account &account, std::string &what)
{
    const Setting &setting = account.setting();
    const Value other = anotherValue(setting, *account.possible().begin(), random_);
    switch (anyOf(random_, 0, 2)) {
    case 0:
        what = "a change by an account that may only read";
        return ask(desk_.reader(), changeMessage(protocol_, setting, other), false);
    case 1:
        what = "an unknown method";
        return ask(user_, unknownMethodMessage(protocol_, setting), false);
    default:
        if (setting.isAdministrators) {
            what = "a change by an ordinary user";
            return ask(desk_.ordinary(), changeMessage(protocol_, setting, other), false);
        }
        what = "a value that is out of range";
        return ask(user_, changeMessage(protocol_, setting, refusedValue(setting)), false);
    }
}

void ProtocolClient::changeThatIsRefused()
{
    const Account &account = *accounts_[random_() % accounts_.size()];
    std::string what;
    const Answer answer = refusedRequest(account, what);
    if (answer.outcome == Outcome::done) {
        ledger_.wrong(what + " was accepted: " + account.setting().method);
    } else if (answer.outcome == Outcome::refused) {
        ledger_.count(Count::refused);
    }
}

// ---- by displayctl ----

CommandClient::CommandClient(Desk &desk, Ledger &ledger, std::uint64_t seed)
    : desk_(desk), ledger_(ledger), random_(seed)
{
}

void CommandClient::work(long operations)
{
    for (long i = 0; i < operations; ++i) {
        const int dice = anyOf(random_, 0, 9);
        if (dice < 4) {
            get();
        } else if (dice < 9) {
            set();
        } else {
            setThatIsRefused();
        }
        ++ledger_.operations;
    }
}

int CommandClient::command(const std::vector<std::string> &arguments)
{
    const std::string file = desk_.directory() + "/displayctl.out";
    unlink(file.c_str());
    std::vector<std::string> words = {desk_.programs().displayctl, "-m", "desk", "--yes"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    process_.start(words, file);
    ledger_.count(Count::commands);
    const auto begin = std::chrono::steady_clock::now();
    const int code = process_.wait();
    if (std::chrono::steady_clock::now() - begin >= Connection::longest) {
        ledger_.wrong("displayctl ran for more than 100 s");
    }
    if (code >= 128 && code != killedCode) {
        ledger_.wrong("displayctl ended with " + std::to_string(code));
    }
    return code;
}

std::vector<std::string> CommandClient::output() const
{
    std::vector<std::string> lines;
    std::ifstream stream(desk_.directory() + "/displayctl.out");
    for (std::string line; std::getline(stream, line);) {
        if (!line.empty() && line.find_first_not_of("0123456789") == std::string::npos) {
            lines.push_back(line);
        }
    }
    return lines;
}

void CommandClient::get()
{
    std::vector<std::string> words = {"get"};
    for (const Account *account : accounts_) {
        words.emplace_back(account->setting().name);
    }
    if (command(words) != 0) {
        return ledger_.count(Count::failedReads);
    }
    ledger_.count(Count::reads);
    const std::vector<std::string> values = output();
    for (std::size_t i = 0; i < accounts_.size(); ++i) {
        const Value shown = i < values.size() ? shownValue(accounts_[i]->setting(), {values[i]}) : Value();
        if (!accounts_[i]->mayShow(shown)) {
            ledger_.wrong("displayctl reads " + describe(accounts_[i]->setting(), shown) + " instead of " +
                          describe(accounts_[i]->setting(), *accounts_[i]->possible().begin()));
        }
    }
}

void CommandClient::set()
{
    Account &account = *accounts_[random_() % accounts_.size()];
    if (!account.isSettled()) {
        return get();
    }
    const Setting &setting = account.setting();
    const Value value = anotherValue(setting, *account.possible().begin(), random_);
    switch (const int code = command({"set", std::string(setting.name) + "=" + std::to_string(value[0])});
            code) {
    case 0:
        account.acknowledged(value);
        ledger_.count(Count::acknowledged);
        break;
    case 1: // refused
    case 4:
        ledger_.count(Count::otherwiseRefused);
        if (ledger_.missingAnswerSaysNothing) {
            account.either(value);
        }
        break;
    case 3: // no answer in time, or not reachable
    case 6: // nobody can know
    case killedCode:
        ledger_.count(code == killedCode ? Count::abandoned : Count::broken);
        account.maybeLater(value);
        break;
    default:
        ledger_.wrong("displayctl set ended with " + std::to_string(code));
        account.maybeLater(value);
    }
}

void CommandClient::setThatIsRefused()
{
    const Setting &setting = accounts_[random_() % accounts_.size()]->setting();
    const int code = command({"set", std::string(setting.name) + "=" + std::to_string(setting.last + 1)});
    if (code == 0) {
        ledger_.wrong("displayctl accepted a value that is out of range");
    } else if (code != killedCode) {
        ledger_.count(Count::refused);
    }
}

void CommandClient::verifyHistory()
{
    if (const int code = command({"history", "--verify"}); code != 0) {
        ledger_.wrong("displayctl history --verify ended with " + std::to_string(code));
    }
}

} // namespace soak
