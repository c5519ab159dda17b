// SPDX-License-Identifier: Apache-2.0
// The main program of the test executables. Standard output belongs to the code under test: it is led into a
// file in memory, and only the test report is printed where standard output really goes.

#include "faults.h"
#include "recording_broker.h"
#include "scripted_seam.h"
#include "trace_capture.h"
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <sys/mman.h>
#include <unistd.h>

namespace test_support
{

namespace
{

int realOutput = -1;
int capturedOutput = -1;

void leadOutputTo(int file)
{
    fflush(stdout);
    if (dup2(file, STDOUT_FILENO) < 0) {
        abort();
    }
}

/** Prints with the printer of the test framework while standard output is the real one. */
class ReportPrinter : public testing::TestEventListener
{
  public:
    explicit ReportPrinter(testing::TestEventListener *thePrinter) : printer_(thePrinter) {}

    void OnTestProgramStart(const testing::UnitTest &test) override
    {
        print(&Printer::OnTestProgramStart, test);
    }
    void OnTestIterationStart(const testing::UnitTest &test, int iteration) override
    {
        print(&Printer::OnTestIterationStart, test, iteration);
    }
    void OnEnvironmentsSetUpStart(const testing::UnitTest &test) override
    {
        print(&Printer::OnEnvironmentsSetUpStart, test);
    }
    void OnEnvironmentsSetUpEnd(const testing::UnitTest &test) override
    {
        print(&Printer::OnEnvironmentsSetUpEnd, test);
    }
    void OnTestSuiteStart(const testing::TestSuite &suite) override
    {
        print(&Printer::OnTestSuiteStart, suite);
    }
    void OnTestStart(const testing::TestInfo &test) override
    {
        print(&Printer::OnTestStart, test);
        // Every test begins with an empty broker, a monitor in its usual state and nothing printed.
        faults.disarm();
        broker.reset();
        seam.reset();
        forgetTrace();
    }
    void OnTestPartResult(const testing::TestPartResult &result) override
    {
        print(&Printer::OnTestPartResult, result);
    }
    void OnTestEnd(const testing::TestInfo &test) override
    {
        print(&Printer::OnTestEnd, test);
        broker.reset();
    }
    void OnTestSuiteEnd(const testing::TestSuite &suite) override
    {
        print(&Printer::OnTestSuiteEnd, suite);
    }
    void OnEnvironmentsTearDownStart(const testing::UnitTest &test) override
    {
        print(&Printer::OnEnvironmentsTearDownStart, test);
    }
    void OnEnvironmentsTearDownEnd(const testing::UnitTest &test) override
    {
        print(&Printer::OnEnvironmentsTearDownEnd, test);
    }
    void OnTestIterationEnd(const testing::UnitTest &test, int iteration) override
    {
        print(&Printer::OnTestIterationEnd, test, iteration);
    }
    void OnTestProgramEnd(const testing::UnitTest &test) override
    {
        print(&Printer::OnTestProgramEnd, test);
    }

  private:
    using Printer = testing::TestEventListener;
    template <typename... Parameters, typename... Arguments>
    void print(void (Printer::*event)(Parameters...), Arguments &&...arguments)
    {
        leadOutputTo(realOutput);
        (printer_.get()->*event)(arguments...);
        leadOutputTo(capturedOutput);
    }
    std::unique_ptr<testing::TestEventListener> printer_;
};

} // namespace

std::string traceText()
{
    fflush(stdout);
    const off_t size = lseek(capturedOutput, 0, SEEK_END);
    std::string text(static_cast<size_t>(size), '\0');
    const ssize_t got = pread(capturedOutput, text.data(), text.size(), 0);
    text.resize(got < 0 ? 0 : static_cast<size_t>(got));
    return text;
}

void forgetTrace()
{
    fflush(stdout);
    if (ftruncate(capturedOutput, 0) != 0 || lseek(capturedOutput, 0, SEEK_SET) != 0) {
        abort();
    }
}

} // namespace test_support

int main(int argc, char **argv)
{
    using namespace test_support;
    testing::InitGoogleTest(&argc, argv);
    if (testing::GTEST_FLAG(list_tests)) {
        return RUN_ALL_TESTS();
    }
    realOutput = dup(STDOUT_FILENO);
    capturedOutput = memfd_create("trace of the library", 0);
    if (realOutput < 0 || capturedOutput < 0) {
        perror("standard output cannot be captured");
        return 2;
    }
    auto &listeners = testing::UnitTest::GetInstance()->listeners();
    listeners.Append(new ReportPrinter(listeners.Release(listeners.default_result_printer())));
    leadOutputTo(capturedOutput);
    const int result = RUN_ALL_TESTS();
    leadOutputTo(realOutput);
    return result;
}
