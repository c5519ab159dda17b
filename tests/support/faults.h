// SPDX-License-Identifier: Apache-2.0
// Fault injection: the n-th call that could fail, of the broker and of the monitor's support library
// together, does fail.
#ifndef TEST_SUPPORT_FAULTS_H
#define TEST_SUPPORT_FAULTS_H

#include <string>

namespace test_support
{

enum class Fault {
    none,
    fails,    // a failing status or result; null, or data that is not there
    silent,   // null, or data that is not there, with the status OK (broker functions that deliver something)
    noHandle, // an object whose handle is null (broker functions that deliver an object)
    noTable,  // an object whose function table is null (likewise)
};
/** Every way in which a function that delivers an object can fail. */
inline constexpr Fault everyFlaw[] = {Fault::fails, Fault::silent, Fault::noHandle, Fault::noTable};
const char *describe(Fault fault);

class Faults
{
  public:
    /** Forgets the calls counted; nothing fails. */
    void disarm();
    /** Counts anew; the n-th call, from 1, is struck. */
    void arm(int nth, Fault fault);
    /** Counts anew; the n-th call of one function is struck; 0: every call of it. */
    void arm(const std::string &function, int nth, Fault fault = Fault::fails);

    /** Called by everything that can fail: what is to happen to this call. */
    Fault strike(const std::string &function);

    int calls() const
    {
        return count_;
    }
    /** The function that was struck; empty when none was. */
    const std::string &struck() const
    {
        return name_;
    }

  private:
    int count_ = 0;
    int counted_ = 0; // calls of the armed function
    int target_ = 0;
    std::string function_;
    Fault armed_ = Fault::none;
    std::string name_;
};

extern Faults faults;

} // namespace test_support

#endif
