// SPDX-License-Identifier: Apache-2.0
// The object manager with the classes and providers of its tests, made once.
#ifndef FUZZ_TEST_CLASSES_H
#define FUZZ_TEST_CLASSES_H

#include "core/front_end.h"
#include "core/object_manager.h"

namespace fuzz
{

host::ObjectManager &testManager();

/** What a front end answered. */
struct Reply {
    host::HttpReply head;
    std::string body;
};

class HttpMessage;

/** Hands the request to the front end, as an operator, or a reader where a header X-Role says so. Holds it to
 * what is so of every answer: all memory is given back, a body has its type, a status is one of HTTP. */
Reply answerOf(host::FrontEnd &frontEnd, const HttpMessage &message);

} // namespace fuzz

#endif
