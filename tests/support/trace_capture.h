// SPDX-License-Identifier: Apache-2.0
// What the library prints on standard output, kept out of the test report and readable for tests.
#ifndef TEST_SUPPORT_TRACE_CAPTURE_H
#define TEST_SUPPORT_TRACE_CAPTURE_H

#include <string>

namespace test_support
{

/** Everything printed since the test began or since forgetTrace. */
std::string traceText();
void forgetTrace();

} // namespace test_support

#endif
