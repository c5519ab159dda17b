// SPDX-License-Identifier: Apache-2.0
// display-host as a program: what its tests share.
#ifndef TESTS_HOST_PROGRAM_H
#define TESTS_HOST_PROGRAM_H

#include "test_host.h"

#include <memory>
#include <string>
#include <sys/types.h>
#include <vector>

namespace test
{

struct Outcome {
    int code = -1;
    std::string output; // standard output
    std::string errors; // standard error
};

/** A program that runs, with its output in files of the directory; killed with the object. */
class Process
{
  public:
    /** The process has the descriptors of handedOver as 3, 4 and so on. */
    Process(const std::vector<std::string> &command, const TemporaryDirectory &directory,
            const std::string &input = "", const std::vector<int> &handedOver = {});
    Process(const Process &) = delete;
    Process &operator=(const Process &) = delete;
    ~Process();

    void signal(int number) const;

    pid_t id() const
    {
        return process_;
    }

    Outcome wait();
    bool running();

    /** Waits until the file is there; false when the process has ended before. */
    bool waitFor(const std::string &file);

  private:
    pid_t process_ = -1;
    std::string output_;
    std::string errors_;
};

/** What runs display-host: the program, behind an emulator where one is needed. */
std::vector<std::string> hostCommand(const std::vector<std::string> &arguments);

/** A whole request with the credentials of these tests. */
std::string postAsOperator(const std::string &body);

/** A directory with an account, and display-host in it. */
class Program : public testing::Test
{
  protected:
    Program();

    Outcome run(const std::vector<std::string> &arguments, const std::string &input = "");
    std::vector<std::string> goodArguments() const;

    /** Starts display-host and waits until it listens. */
    std::unique_ptr<Process> start(const std::vector<std::string> &more = {});

    TemporaryDirectory directory_;
    TemporaryDirectory clientDirectory_;
    std::uint16_t port_ = 0;
};

} // namespace test

#endif
