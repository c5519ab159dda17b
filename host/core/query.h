// SPDX-License-Identifier: Apache-2.0
// Queries: WQL, and the same part of CQL (DSP0202): SELECT properties FROM class WHERE condition.
//
//   query     = SELECT ( "*" | property { "," property } ) FROM class [ [ AS ] alias ] [ WHERE condition ]
//   condition = term { OR term }        term = factor { AND factor }
//   factor    = NOT factor | "(" condition ")" | test
//   test      = operand ( "=" | "<>" | "!=" | "<" | "<=" | ">" | ">=" ) operand | property IS [ NOT ] NULL
//             | property LIKE text (WQL alone; "%" stands for any characters, "_" for one)
//             | ( class | alias | __THIS ) ISA class
//   operand   = property | text | number | TRUE | FALSE
//   property  = [ ( class | alias ) "." ] name
//
// A text stands in single quotes, in WQL also in double ones; a backslash takes the next character as it is.
// Words and names have no letter case, texts do. A test of a null value is neither true nor false, as in SQL.
#ifndef HOST_CORE_QUERY_H
#define HOST_CORE_QUERY_H

#include "cmpi/objects.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace host
{

enum class QueryLanguage { wql, cql };

/** The language of that name ("WQL", "DMTF:CQL", "CQL"; any letter case). */
std::optional<QueryLanguage> queryLanguage(std::string_view name);

/** A query that is well-formed; what it means for a class is known after bind(). */
class Query
{
  public:
    static constexpr std::size_t maxLength = std::size_t{16} * 1024;
    static constexpr unsigned maxDepth = 64; // of parentheses and NOTs

    /** Nothing, with what is wrong in problem, when the text is no query of the language. */
    static std::optional<Query> parse(std::string_view text, QueryLanguage language, std::string &problem);

    /** The class after FROM. */
    const std::string &className() const
    {
        return className_;
    }

    /** The selected properties; empty: all. */
    const std::vector<std::string> &selected() const
    {
        return selected_;
    }

    /** Looks the properties up in the class and compares the types; false, with what is wrong in problem,
     * when the class has no such property or values can't be compared. classes: where ISA looks. */
    [[nodiscard]] bool bind(const cim::Class &klass, const cim::ClassRepository &classes,
                            std::string &problem);

    /** True when the condition is true for the instance, which is one of the bound class or of a subclass. */
    bool admits(const Instance &instance) const;

  private:
    friend class QueryParser;

    enum class Relation {
        equal,
        notEqual,
        less,
        lessOrEqual,
        greater,
        greaterOrEqual,
        isNull,
        isNotNull,
        like,
        isA
    };
    enum class Truth { isFalse, unknown, isTrue };

    using Integer = std::variant<std::int64_t, std::uint64_t>;
    struct PropertyName {
        std::string name;
    };
    /** What is compared: nothing, a property, a text, a number, a truth. */
    using Operand = std::variant<std::monostate, PropertyName, std::string, Integer, double, bool>;

    struct Node {
        enum class Kind { conjunction, disjunction, negation, test } kind = Kind::test;
        std::size_t left = 0; // places in nodes_
        std::size_t right = 0;
        Relation relation = Relation::equal;
        Operand first;
        Operand second;
        const cim::Class *isA = nullptr; // filled by bind()
    };

    /** What values are compared as. */
    enum class Family { none, text, number, boolean, dateTime };
    struct Side {
        Family family;
        const cim::Property *property; // null: a value of the query
    };

    static Family familyOf(const cim::Property &property);
    static std::optional<Side> sideOf(const Operand &operand, const cim::Class &klass, std::string &problem);
    static bool bindDate(Operand &operand, Side &side, const cim::Property &beside, std::string &problem);
    static bool bindTest(Node &node, const cim::Class &klass, const cim::ClassRepository &classes,
                         std::string &problem);
    Truth truthOf(std::size_t place, const Instance &instance) const;
    static Truth test(const Node &node, const Instance &instance);

    std::string className_;
    std::vector<std::string> selected_;
    std::vector<Node> nodes_; // the condition is the last one; none: everything is admitted
};

} // namespace host

#endif
