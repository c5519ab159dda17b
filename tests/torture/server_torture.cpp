// SPDX-License-Identifier: Apache-2.0
// A server that runs with failing_calls.so: each request once for every call that it makes, with that call
// failing.
//
//   server_torture PAGE PORT KIND [--every N] [--tls PORT CERTIFICATE] READ REQUEST...
//
// A request is a file: header lines, a blank line, the content; Host and Content-Length are added. READ is
// asked after each failure and has to be answered as ever. In a request whose content has @VALUE@, that
// becomes another text each time; where the answer has <VALUE>0</VALUE> the change is acknowledged, and
// READ's answer has to have the text. Lines of three hyphens part a request into several that follow each
// other: the enumeration that the first one opens is @CONTEXT@ in the others, @SECONDS@ the time that it
// lasts, and in the end none may be left.
//
// With --every of every N calls one fails.
// With --tls the requests, READ too, are made by HTTPS at that port, with the server's certificate.

#include "connection.h"
#include "page.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace torture;

namespace
{

constexpr int mostContexts = 16; // that one user may have

struct Request {
    std::string name, head;
    std::vector<std::string> steps; // the contents; of most requests one
    bool isChange() const
    {
        return steps.front().find("@VALUE@") != std::string::npos;
    }
};

struct Answer {
    std::string status; // "200"; "closed", "no handshake", "silent" without an answer
    std::string content = "";
    std::string head = "";
};

[[noreturn]] void end(const std::string &why)
{
    printf("  WRONG: %s\n", why.c_str());
    exit(1);
}

Request readRequest(const std::string &file)
{
    std::ifstream stream(file, std::ios::binary);
    std::stringstream text;
    text << stream.rdbuf();
    const std::string whole = text.str();
    const size_t blank = whole.find("\n\n");
    if (!stream || blank == std::string::npos) {
        end(file + " is no request");
    }
    Request request = {file.substr(file.rfind('/') + 1), whole.substr(0, blank + 1), {}};
    for (size_t at = 0; (at = request.head.find('\n', at)) != std::string::npos; at += 2) {
        request.head.replace(at, 1, "\r\n");
    }
    for (size_t at = blank + 2; at != std::string::npos;) {
        static const std::string parting = "\n---\n";
        const size_t next = whole.find(parting, at);
        request.steps.push_back(whole.substr(at, next == std::string::npos ? next : next - at));
        at = next == std::string::npos ? next : next + parting.size();
    }
    return request;
}

std::string with(std::string text, const std::string &name, const std::string &value)
{
    if (const size_t at = text.find(name); at != std::string::npos) {
        text.replace(at, name.size(), value);
    }
    return text;
}

/** The text between the two, "" when they are not there. */
std::string between(const std::string &text, const std::string &begin, const std::string &end)
{
    const size_t from = text.find(begin);
    const size_t to = from == std::string::npos ? from : text.find(end, from + begin.size());
    return to == std::string::npos ? "" : text.substr(from + begin.size(), to - from - begin.size());
}

std::string contextOf(const Answer &answer)
{
    return between(between(answer.content, "NAME=\"EnumerationContext\"", "</PARAMVALUE>"), "<VALUE>",
                   "</VALUE>");
}

class Server
{
  public:
    explicit Server(Listener listener) : listener_(std::move(listener)) {}

    Answer ask(const Request &request, const std::string &content) const
    {
        const Received received = torture::exchange(
            listener_, request.head + "Host: 127.0.0.1\r\nConnection: close\r\nContent-Length: " +
                           std::to_string(content.size()) + "\r\n\r\n" + content);
        const std::string &got = received.bytes;
        if (received.end != Received::End::closed) {
            return {received.end == Received::End::silent ? "silent" : "no handshake", got};
        }
        if (got.size() < 12 || got.compare(0, 5, "HTTP/") != 0) {
            return {"closed", got};
        }
        const size_t blank = got.find("\r\n\r\n");
        return {got.substr(9, 3), blank == std::string::npos ? "" : got.substr(blank + 4),
                got.substr(0, blank)};
    }

  private:
    Listener listener_;
};

/** Without what is another each time: the identifier of a message, the name of an enumeration. */
std::string comparable(const std::string &content)
{
    static const std::regex changing("uuid:[-0-9a-f]{36}|>[0-9a-f]{32}<");
    return std::regex_replace(content, changing, "");
}

bool isRefusal(const Answer &answer)
{
    return answer.content.find("<ERROR ") != std::string::npos ||
           answer.content.find("Fault>") != std::string::npos;
}

class Torture
{
  public:
    Torture(Page &thePage, const Server &theServer, const Fault &theFault, const Request &theRead)
        : page_(thePage), server_(theServer), fault_(theFault), read_(theRead)
    {
    }

    void run(const Request &request, long every)
    {
        stored_ = nextValue();
        usual_ = converse(request, stored_, briefly);
        for (const Answer &answer : usual_) {
            if (!isAcknowledged(answer, request) || answer.status.size() != 3) {
                end(request.name + " is refused as it stands: " + answer.status + " " + answer.head +
                    answer.content);
            }
        }
        if (usual_.size() != request.steps.size()) {
            end(request.name + " opens no enumeration");
        }
        for (long nth = 1; strike(request, nth); nth += every) {
        }
        if (request.steps.size() > 1) {
            expectNoContext(request);
        }
        print(request);
    }

  private:
    // Seconds that an enumeration stays open: of an answer that is lost the client cannot close it.
    static constexpr const char *briefly = "1";
    static constexpr const char *forLong = "600";

    static bool isAcknowledged(const Answer &answer, const Request &request)
    {
        return request.isChange() ? answer.content.find("<VALUE>0</VALUE>") != std::string::npos
                                  : answer.status != "200" || !isRefusal(answer);
    }

    std::string nextValue()
    {
        return "Room " + std::to_string(++number_) + "x";
    }

    /** The answers to the steps, until there is no enumeration to go on with. */
    std::vector<Answer> converse(const Request &request, const std::string &value, const char *seconds) const
    {
        std::vector<Answer> answers;
        std::string context;
        for (const std::string &step : request.steps) {
            if (!answers.empty() && context.empty()) {
                break;
            }
            answers.push_back(
                server_.ask(request, with(with(with(step, "@VALUE@", value), "@CONTEXT@", context),
                                          "@SECONDS@", seconds)));
            if (answers.size() == 1) {
                context = contextOf(answers.front());
            }
        }
        return answers;
    }

    /** What the step was answered with: "as usual", or what else. */
    std::string outcomeOf(const Request &request, const std::vector<Answer> &answers, size_t step) const
    {
        const Answer &answer = answers[step];
        const Answer &usual = usual_[step];
        if (answer.status != usual.status) {
            return answer.status;
        }
        if (!isAcknowledged(answer, request)) {
            return usual.status + " refused";
        }
        if (!request.isChange() && comparable(answer.content) != comparable(usual.content)) {
            end(request.name + ", " + fault_.name +
                ": an answer that is neither the usual one nor an error: " + answer.content);
        }
        return "as usual";
    }

    /** The request with that call failing; false when there was no such call. */
    bool strike(const Request &request, long nth)
    {
        const std::string value = nextValue();
        page_.arm(fault_, nth);
        const std::vector<Answer> answers = converse(request, value, briefly);
        page_.disarm();
        std::string outcome = "as usual";
        for (size_t step = 0; step < answers.size() && outcome == "as usual"; ++step) {
            outcome = outcomeOf(request, answers, step);
            if (outcome != "as usual" && request.steps.size() > 1) {
                outcome = std::to_string(step + 1) + ": " + outcome;
            }
        }
        if (!page_.struck()) {
            if (outcome != "as usual") {
                end(request.name + ", " + fault_.name + ": behind the last failure it was answered " +
                    outcome);
            }
            stored_ = request.isChange() ? value : stored_;
            return false;
        }
        ++failed_;
        ++functions_[page_.function()];
        const std::string what = request.name + ", " + fault_.name + ": call " + std::to_string(nth) + ", " +
                                 page_.function() + ", was to fail";
        ++outcomes_[outcome];
        for (size_t step = 0; step < answers.size(); ++step) {
            expectRightAnswer(what, answers[step], usual_[step]);
        }
        expectServed(what, request, answers.front(), value);
        if (answers.size() > 1 && outcome != "as usual") { // the client closes what it knows of
            server_.ask(request, with(request.steps.back(), "@CONTEXT@", contextOf(answers.front())));
        }
        return true;
    }

    static void expectRightAnswer(const std::string &what, const Answer &answer, const Answer &usual)
    {
        if (answer.status == "silent") {
            end(what + ": no answer within " + std::to_string(patience) + " s");
        }
        if (usual.status == "401" && answer.status == "200") {
            end(what + ": a wrong password was let in");
        }
        if (answer.status == "401" &&
            answer.head.find("\r\nWWW-Authenticate: Basic realm=\"cimom\"") == std::string::npos) {
            end(what + ": an answer 401 that asks for no login: " + answer.head);
        }
    }

    /** The next request is served as ever, and has what was acknowledged. */
    void expectServed(const std::string &what, const Request &request, const Answer &answer,
                      const std::string &value)
    {
        const Answer after = server_.ask(read_, read_.steps.front());
        if (after.status != "200" || isRefusal(after)) {
            end(what + ": the next request was answered " + after.status + " " + after.content);
        }
        if (!request.isChange()) {
            return;
        }
        const bool hasNew = after.content.find(value) != std::string::npos;
        if (answer.status == usual_.front().status && isAcknowledged(answer, request) && !hasNew) {
            end(what + ": an acknowledged change is lost: " + value);
        }
        if (!hasNew && after.content.find(stored_) == std::string::npos) {
            end(what + ": neither the former nor the new value: " + stored_ + ", " + value);
        }
        stored_ = hasNew ? value : stored_;
    }

    /** As many can be opened as there may be, once the last time of one has passed. */
    void expectNoContext(const Request &request) const
    {
        const auto last = std::chrono::steady_clock::now() + std::chrono::seconds(patience);
        for (;;) {
            std::vector<std::string> open;
            std::string context;
            while (open.size() < mostContexts &&
                   !(context =
                         contextOf(server_.ask(request, with(request.steps.front(), "@SECONDS@", forLong))))
                        .empty()) {
                open.push_back(context);
            }
            for (const std::string &each : open) {
                server_.ask(request, with(request.steps.back(), "@CONTEXT@", each));
            }
            if (open.size() == mostContexts) {
                return;
            }
            if (std::chrono::steady_clock::now() > last) {
                end(request.name + ", " + fault_.name + ": " + std::to_string(mostContexts - open.size()) +
                    " enumerations are left open");
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
    }

    void print(const Request &request)
    {
        std::string text;
        for (const auto &[outcome, count] : outcomes_) {
            text += outcome + ": " + std::to_string(count) + "  ";
        }
        text += "(";
        for (const auto &[function, count] : functions_) {
            text += function + " " + std::to_string(count) + " ";
        }
        text.back() = ')';
        printf("  %-18s %-12s %6ld failed  %s\n", request.name.c_str(), fault_.name, failed_, text.c_str());
        fflush(stdout);
        failed_ = 0;
        outcomes_.clear();
        functions_.clear();
    }

    Page &page_;
    const Server &server_;
    const Fault fault_;
    const Request &read_;
    std::vector<Answer> usual_; // of the request that is tried
    std::string stored_;
    int number_ = 0;
    long failed_ = 0;
    std::map<std::string, long> outcomes_;
    std::map<std::string, long> functions_;
};

[[noreturn]] void endWithUsage()
{
    fprintf(stderr, "usage: server_torture PAGE PORT KIND [--every N] [--tls PORT CERTIFICATE] "
                    "READ REQUEST...\n");
    exit(2);
}

} // namespace

int main(int argc, char **argv)
{
    std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() < 5) {
        endWithUsage();
    }
    long every = 1;
    Listener listener = {atoi(arguments[1].c_str()), ""};
    size_t at = 3;
    for (; at + 2 < arguments.size() && arguments[at].starts_with("--"); ++at) {
        if (arguments[at] == "--every") {
            every = atol(arguments[++at].c_str());
        } else if (arguments[at] == "--tls") {
            listener = {atoi(arguments[at + 1].c_str()), arguments[at + 2]};
            at += 2;
        } else {
            endWithUsage();
        }
    }
    if (arguments.size() < at + 2 || every < 1) {
        endWithUsage();
    }
    setvbuf(stdout, nullptr, _IOLBF, 0);
    Page page(arguments[0]);
    const Server server(listener);
    const Request read = readRequest(arguments[at]);
    Torture torture(page, server, faultNamed(arguments[2]), read);
    for (++at; at < arguments.size(); ++at) {
        const Request request = readRequest(arguments[at]);
        torture.run(request, every);
    }
    return 0;
}
