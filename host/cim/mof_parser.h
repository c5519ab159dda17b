// SPDX-License-Identifier: Apache-2.0
// The parser of MOF: what mof_reader.h offers, taken apart. Reading the text, the typing of written values,
// and what declarations mean together stand in a file each.
#ifndef HOST_CIM_MOF_PARSER_H
#define HOST_CIM_MOF_PARSER_H

#include "cim/mof_lexer.h"
#include "cim/mof_reader.h"

#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

namespace cim
{

using Declaration = QualifierDeclaration;

struct Where {
    unsigned line = 0;
    unsigned column = 0;
};

/** A qualifier as it stands in a qualifier list, typed after its declaration. */
struct QualifierUse {
    Qualifier qualifier;
    const Declaration *declaration = nullptr;
    Where where;
};

struct ParsedProperty {
    Property property;
    std::vector<QualifierUse> uses;
    Where where;
    bool hasDefault = false;
};

struct ParsedParameter {
    Parameter parameter;
    Where where;
};

struct ParsedMethod {
    Method method;
    std::vector<QualifierUse> uses;
    std::vector<ParsedParameter> parameters;
    Where where;
};

struct ParsedClass {
    Class klass;
    std::vector<QualifierUse> uses;
    std::vector<ParsedProperty> properties;
    std::vector<ParsedMethod> methods;
    Where where;
    Where superclassWhere;
};

/** The class a reference names, to be looked up when everything has been read. */
struct PendingReference {
    std::string referenceClass;
    std::string ancestor; // the class that the overridden reference names, or ""
    std::string element;  // "property Antecedent of class X"
    std::string file;
    Where where;
};

/** A value as written, before its type is known. */
struct Literal {
    MofToken token;
    bool isNull = false;
    bool isBoolean = false;
    bool isTrue = false;
};

struct WrittenValue {
    bool isArray = false;
    std::vector<Literal> items;
    Where where;
};

/** Ends the declaration that is being read; its message has been noted. */
struct Abandon {
};

/** Ends the reading; there are too many errors. */
struct Stop {
};

/** The text in double quotes, for messages. */
std::string inQuotes(std::string_view text);

/** "uint16[]". */
std::string typeWithArray(Type type, bool isArray);

/** A token as a message shows it. */
std::string shown(const MofToken &token);

class MofParser
{
  public:
    MofParser(ClassRepository &repository, const MofLimits &limits) : repository_(repository), limits_(limits)
    {
    }

    void readFile(const std::string &name, Where includedAt = {});
    void readText(std::string_view text, const std::string &name);
    void checkReferences();
    MofResult takeResult()
    {
        return std::move(result_);
    }

  private:
    // Messages
    void note(bool isError, Where where, std::string text);
    void error(Where where, std::string text);
    [[noreturn]] void abandon(Where where, std::string text);
    [[noreturn]] void unexpected(const std::string &expected);

    // Tokens
    static Where whereOf(const MofToken &token)
    {
        return {token.line, token.column};
    }
    Where here() const
    {
        return whereOf(token_);
    }
    void advance();
    bool isSymbol(char symbol) const
    {
        return token_.kind == MofTokenKind::symbol && token_.symbol == symbol;
    }
    bool isWord(std::string_view word) const
    {
        return token_.kind == MofTokenKind::name && sameName(token_.text, word);
    }
    /** True at a word in the first column that can only start a declaration: something before it is
     * unfinished. */
    bool isAtDeclaration() const
    {
        return token_.column == 1 &&
               (isSymbol('#') || isWord("class") || isWord("qualifier") || isWord("instance"));
    }
    bool accept(char symbol);
    void expect(char symbol, const char *after);
    std::string expectName(const char *what);
    void checkLength(std::size_t length, const char *what);
    void recover();

    // Productions
    void readProductions();
    void readProduction();
    void readDirective();
    void readQualifierDeclaration();
    void readInstance();
    void readClass(std::vector<QualifierUse> uses);
    void readFeature(ParsedClass &parsed);
    void readParameters(ParsedMethod &parsed, const std::string &className);
    std::vector<QualifierUse> readQualifierList();
    std::uint16_t readScope();
    bool readFlavor(Flavor &flavor);
    WrittenValue readValue();
    Literal readLiteral();
    bool readArraySuffix(Element &element);
    Type readType(std::string &referenceClass);

    // Meaning
    bool convert(const WrittenValue &written, Type type, bool isArray, const std::string &what, Value &value);
    bool convertItem(const Literal &literal, Type type, const std::string &what, std::string &text);
    void checkScope(const std::vector<QualifierUse> &uses, std::uint16_t scope, const std::string &what);
    Qualifiers mergeQualifiers(const Qualifiers *inherited, const std::vector<QualifierUse> &uses,
                               const std::string &what);
    static Qualifiers inheritedQualifiers(const Qualifiers &qualifiers);
    void checkOverride(const Qualifiers &qualifiers, const char *kind, const std::string &name,
                       const std::string &className, const std::string *inheritedFrom, Where where);
    void addReference(const Element &element, const std::string &ancestor, const std::string &what,
                      Where where);
    void checkProperty(const Property &property, const Class &klass, const Class *parent,
                       const Property *overridden, const std::string &what, Where where);
    void charge(std::size_t bytes, Where where);
    void checkTotal(std::size_t count, const char *what, Where where);
    void resolveClass(ParsedClass &parsed);
    void resolveProperties(ParsedClass &parsed, const Class *parent);
    void resolveMethods(ParsedClass &parsed, const Class *parent);

    ClassRepository &repository_;
    const MofLimits limits_;
    MofResult result_;
    std::size_t errorCount_ = 0;
    std::size_t warningCount_ = 0;
    std::size_t totalBytes_ = 0;
    std::size_t fileCount_ = 0;
    std::vector<std::string> openFiles_;
    std::vector<PendingReference> pending_;
    std::unordered_set<std::string, NameHash, NameEqual> brokenClasses_;

    // Of the text that is being read
    std::string file_;
    MofLexer lexer_{{}};
    MofToken token_;
    int depth_ = 0;         // braces open in the declaration at hand
    bool isBroken_ = false; // the declaration at hand has an error
    std::string className_; // of the class at hand
    std::size_t inheritedBytes_ = 0;
};

} // namespace cim

#endif
