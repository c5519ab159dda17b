// SPDX-License-Identifier: Apache-2.0
#include "test_classes.h"

#include "cim/mof_reader.h"
#include "fuzz.h"
#include "http_message.h"

#include <cstring>
#include <memory>

namespace fuzz
{

namespace
{

std::unique_ptr<host::ObjectManager> makeManager()
{
    cim::ClassRepository classes;
    require(cim::readMofFiles(classes, {TEST_DATA_DIR "/test.mof"}).ok(), "the test classes can be read");
    host::ObjectManagerOptions options;
    options.libraryFile = TEST_PROVIDER_FILE;
    options.version = "1.2.3";
    std::vector<std::string> problems;
    options.profiles = host::readProfileFile(TEST_DATA_DIR "/test.profiles", problems);
    auto manager = std::make_unique<host::ObjectManager>(std::move(classes), options);
    const auto registrations = host::readRegistrationFile(TEST_DATA_DIR "/test.reg", problems);
    require(problems.empty() && manager->load(registrations).empty(), "the test providers can be loaded");
    return manager;
}

} // namespace

host::ObjectManager &testManager()
{
    static const std::unique_ptr<host::ObjectManager> manager = makeManager();
    return *manager;
}

Reply answerOf(host::FrontEnd &frontEnd, const HttpMessage &message)
{
    if (strcasestr(message.body.c_str(), "Nap") != nullptr) {
        return {}; // the test provider has a method that sleeps
    }
    const char *role = message.value("X-Role");
    const bool isReader = role != nullptr && std::strcmp(role, "reader") == 0;
    std::string body = message.body;
    host::MemoryBudget budget;
    Reply reply;
    {
        host::MemoryShare memory(budget);
        require(memory.take(body.size()), "an input is paid for");
        const host::HttpRequest request{"operator",  isReader ? host::Role::reader : host::Role::operatorUser,
                                        "127.0.0.1", message.path,
                                        message,     body,
                                        memory};
        host::TextBuffer out(memory);
        try {
            reply.head = frontEnd.handle(request, out);
            reply.body = out.view();
        } catch (const host::MemoryExceeded &) {
            reply.head.status = 503; // what the server makes of it
        }
    }
    require(budget.used() == 0, "a request gives back what it took");
    require(reply.head.status >= 200 && reply.head.status < 600, "a status is one of HTTP");
    require(reply.body.empty() || reply.head.contentType != nullptr, "a body has a type", reply.body);
    return reply;
}

} // namespace fuzz
