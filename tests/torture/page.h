// SPDX-License-Identifier: Apache-2.0
// The test's end of the page of control.h.
#ifndef TESTS_TORTURE_PAGE_H
#define TESTS_TORTURE_PAGE_H

#include "control.h"
#include <string>
#include <vector>

namespace torture
{

struct Fault {
    const char *name;
    int kind;
    int error;
};
/** The kinds by name, each with the error that its calls have in such a case; ends the program for another
 * name. */
Fault faultNamed(const std::string &name);

class Page
{
  public:
    /** Makes the file of the page. */
    explicit Page(const std::string &file);
    Page(const Page &) = delete;
    Page &operator=(const Page &) = delete;
    ~Page();

    /** From now on the calls of that kind are counted, and the n-th fails; 0: none. */
    void arm(const Fault &fault, long nth, Action action = fail, bool forever = false);
    void disarm();
    /** From now on the calls of that kind are counted, and the places noted that they come from. */
    void survey(const Fault &fault);
    /** The numbers of the calls from places that had not been seen before, in their order. */
    std::vector<long> places() const;

    long count() const
    {
        return control_->count.load();
    }
    bool struck() const
    {
        return control_->struck.load() > 0;
    }
    /** The function that failed. */
    std::string function() const
    {
        return control_->name;
    }

  private:
    Control *control_;
};

} // namespace torture

#endif
