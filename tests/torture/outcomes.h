// SPDX-License-Identifier: Apache-2.0
// What the library may answer when a call of it fails: a table typed in outcomes.tsv.
#ifndef TESTS_TORTURE_OUTCOMES_H
#define TESTS_TORTURE_OUTCOMES_H

#include "operations.h"
#include <map>
#include <set>
#include <string>
#include <vector>

namespace torture
{

/** A failed call and the answer of the operation, as the columns of the table have them. */
struct Outcome {
    std::string className; // after ZT_Marovelton_
    std::string operation;
    std::string call;  // "newObjectPath", "GetRegisterValue(1, 0)"
    std::string fault; // "fails", "nothing", "no handle", "no table"; of the support library its result
    std::string code;  // "=": the whole answer, as if nothing had happened
    std::string value; // what a method returns; of reads "none", "part" or "whole" of the answer
    std::string text;  // "-": no message
    bool method = false;

    /** The line to be written into the table for it. */
    std::string line() const;
};

class OutcomeTable
{
  public:
    explicit OutcomeTable(const std::string &file);

    /** Whether the table has a row for it; the row counts as seen. */
    bool allows(const Outcome &outcome);
    /** The rows that name the class and were not seen in its operations. */
    std::vector<std::string> unseen(const std::string &className) const;

  private:
    struct Row {
        std::set<std::string> classes, operations, faults; // "*" for all
        std::string code, value, text, line;
        std::set<std::string> seen; // the classes
    };
    bool allowsAfter(const std::string &call, const Outcome &outcome);

    std::multimap<std::string, Row> rows_; // by call
};

} // namespace torture

#endif
