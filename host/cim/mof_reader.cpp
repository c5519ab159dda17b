#include "cim/mof_reader.h"

#include "cim/mof_lexer.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <unordered_set>
#include <utility>

namespace cim
{
namespace
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

std::string inQuotes(std::string_view text)
{
    return "\"" + std::string(text) + "\"";
}

std::string typeWithArray(Type type, bool isArray)
{
    return std::string(typeName(type)) + (isArray ? "[]" : "");
}

/** A token as a message shows it. */
std::string shown(const MofToken &token)
{
    constexpr std::size_t LONGEST = 40;
    std::string text = token.text.size() > LONGEST ? token.text.substr(0, LONGEST) + "..." : token.text;
    switch (token.kind) {
    case MofTokenKind::End:
        return "the end of the file";
    case MofTokenKind::String:
        return "a string";
    case MofTokenKind::Char:
        return "a character literal";
    case MofTokenKind::Bad:
        return text;
    default:
        return inQuotes(text);
    }
}

/** The range of an integer type: the greatest magnitude of its negative and of its positive values. */
void integerRange(Type type, std::uint64_t &negative, std::uint64_t &positive)
{
    unsigned bits = 64;
    switch (type) {
    case Type::Uint8:
    case Type::Sint8:
        bits = 8;
        break;
    case Type::Uint16:
    case Type::Sint16:
        bits = 16;
        break;
    case Type::Uint32:
    case Type::Sint32:
        bits = 32;
        break;
    default:
        break;
    }
    const bool isSigned =
        type == Type::Sint8 || type == Type::Sint16 || type == Type::Sint32 || type == Type::Sint64;
    positive = UINT64_MAX >> (64 - bits + (isSigned ? 1 : 0));
    negative = isSigned ? positive + 1 : 0;
}

/** True of a datetime as DSP0004 writes it: 25 characters, a time stamp or an interval, '*' for unknown
 * digits. */
bool isDateTime(std::string_view text)
{
    if (text.size() != 25 || text[14] != '.') {
        return false;
    }
    const char sign = text[21];
    if (sign != '+' && sign != '-' && sign != ':') {
        return false;
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isDigitOrStar = (text[i] >= '0' && text[i] <= '9') || (text[i] == '*' && i < 21);
        if (i != 14 && i != 21 && !isDigitOrStar) {
            return false;
        }
    }
    return sign != ':' || text.ends_with("000");
}

bool sameValue(const Value &left, const Value &right)
{
    return left.isNull == right.isNull && left.items == right.items;
}

/** What the qualifiers take in memory, about. */
std::size_t sizeOf(const Qualifiers &qualifiers)
{
    std::size_t size = 0;
    for (const Qualifier &qualifier : qualifiers) {
        size += sizeof qualifier;
        for (const std::string &item : qualifier.value.items) {
            size += sizeof item + item.size();
        }
    }
    return size;
}

class Reader
{
  public:
    Reader(ClassRepository &repository, const MofLimits &limits) : repository_(repository), limits_(limits) {}

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
        return token_.kind == MofTokenKind::Symbol && token_.symbol == symbol;
    }
    bool isWord(std::string_view word) const
    {
        return token_.kind == MofTokenKind::Name && sameName(token_.text, word);
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

// ---- Messages ----

void Reader::note(bool isError, Where where, std::string text)
{
    if (!isError && ++warningCount_ >= limits_.errors) {
        if (warningCount_ > limits_.errors) {
            return;
        }
        text = "more warnings are not shown";
    }
    result_.messages.push_back({isError, file_, where.line, where.column, std::move(text)});
}

void Reader::error(Where where, std::string text)
{
    note(true, where, std::move(text));
    isBroken_ = true;
    if (++errorCount_ >= limits_.errors) {
        note(true, where, "too many errors; the rest is not read");
        throw Stop{};
    }
}

void Reader::abandon(Where where, std::string text)
{
    error(where, std::move(text));
    throw Abandon{};
}

void Reader::unexpected(const std::string &expected)
{
    if (token_.kind == MofTokenKind::Bad) {
        abandon(here(), token_.text);
    }
    abandon(here(), "expected " + expected + ", found " + shown(token_));
}

// ---- Tokens ----

void Reader::advance()
{
    if (isSymbol('{')) {
        ++depth_;
    } else if (isSymbol('}')) {
        --depth_;
    }
    token_ = lexer_.next();
    if (token_.kind == MofTokenKind::Name && token_.text.size() > limits_.nameLength) {
        token_.kind = MofTokenKind::Bad;
        token_.text = "the name is longer than " + std::to_string(limits_.nameLength) + " characters";
    }
}

bool Reader::accept(char symbol)
{
    if (!isSymbol(symbol)) {
        return false;
    }
    advance();
    return true;
}

void Reader::expect(char symbol, const char *after)
{
    if (!accept(symbol)) {
        unexpected(std::string("\"") + symbol + "\" after " + after);
    }
}

std::string Reader::expectName(const char *what)
{
    if (token_.kind != MofTokenKind::Name) {
        unexpected(what);
    }
    std::string name = std::move(token_.text);
    advance();
    return name;
}

void Reader::checkLength(std::size_t length, const char *what)
{
    if (length > limits_.listLength) {
        abandon(here(), "more than " + std::to_string(limits_.listLength) + " " + what);
    }
}

/** Skips to the start of the next declaration: after the semicolon that ends the broken one, or to a word in
 * the first column that can only start another one. */
void Reader::recover()
{
    while (token_.kind != MofTokenKind::End && !isAtDeclaration()) {
        const bool isEnd = isSymbol(';') && depth_ <= 0;
        advance();
        if (isEnd) {
            return;
        }
    }
}

// ---- Files ----

void Reader::readFile(const std::string &name, Where includedAt)
{
    const auto fail = [&](const std::string &text) {
        if (openFiles_.empty()) {
            file_ = name;
        }
        error(includedAt, text);
    };
    const std::string path = std::filesystem::path(name).lexically_normal().string();
    if (std::find(openFiles_.begin(), openFiles_.end(), path) != openFiles_.end()) {
        fail("the file " + inQuotes(name) + " includes itself");
        return;
    }
    if (openFiles_.size() >= limits_.includeDepth) {
        fail("includes are nested more than " + std::to_string(limits_.includeDepth) + " deep");
        return;
    }
    if (++fileCount_ > limits_.files) {
        fail("more than " + std::to_string(limits_.files) + " files");
        return;
    }
    std::error_code status;
    if (!std::filesystem::is_regular_file(path, status)) {
        fail("cannot read " + inQuotes(name) + ": " + (status ? status.message() : "not a file"));
        return;
    }
    std::unique_ptr<std::FILE, int (*)(std::FILE *)> stream(std::fopen(path.c_str(), "rb"), std::fclose);
    if (!stream) {
        fail("cannot read " + inQuotes(name) + ": " + std::strerror(errno));
        return;
    }
    std::string text;
    char buffer[65536];
    for (std::size_t count; (count = std::fread(buffer, 1, sizeof buffer, stream.get())) > 0;) {
        text.append(buffer, count);
        if (text.size() > limits_.fileBytes) {
            break;
        }
    }
    if (std::ferror(stream.get()) != 0) {
        fail("cannot read " + inQuotes(name) + ": " + std::strerror(errno));
        return;
    }
    stream.reset();
    readText(text, path);
}

void Reader::readText(std::string_view text, const std::string &name)
{
    const std::string outerFile = std::exchange(file_, name);
    const MofLexer outerLexer = std::exchange(lexer_, MofLexer(text));
    const MofToken outerToken = std::exchange(token_, MofToken{});
    const int outerDepth = std::exchange(depth_, 0);
    openFiles_.push_back(name);
    totalBytes_ += std::min(text.size(), limits_.totalBytes);
    if (text.size() > limits_.fileBytes) {
        error({}, "the file is longer than " + std::to_string(limits_.fileBytes) + " bytes");
    } else if (totalBytes_ > limits_.totalBytes) {
        error({}, "all files together are longer than " + std::to_string(limits_.totalBytes) + " bytes");
    } else {
        advance();
        readProductions();
    }
    openFiles_.pop_back();
    file_ = outerFile;
    lexer_ = outerLexer;
    token_ = outerToken;
    depth_ = outerDepth;
}

// ---- Productions ----

void Reader::readProductions()
{
    while (token_.kind != MofTokenKind::End) {
        depth_ = 0;
        isBroken_ = false;
        className_.clear();
        try {
            readProduction();
        } catch (const Abandon &) {
            if (!className_.empty()) {
                brokenClasses_.insert(className_);
            }
            recover();
        }
    }
}

void Reader::readProduction()
{
    if (isSymbol('#')) {
        readDirective();
    } else if (isWord("qualifier")) {
        readQualifierDeclaration();
    } else if (isSymbol('[') || isWord("class") || isWord("instance")) {
        std::vector<QualifierUse> uses;
        if (isSymbol('[')) {
            uses = readQualifierList();
        }
        if (isWord("class")) {
            readClass(std::move(uses));
        } else if (isWord("instance")) {
            readInstance();
        } else {
            unexpected("\"class\" or \"instance\" after the qualifiers");
        }
    } else {
        unexpected("a class, a qualifier declaration or a #pragma");
    }
}

void Reader::readDirective()
{
    advance();
    if (!isWord("pragma")) {
        unexpected("\"pragma\" after \"#\"");
    }
    advance();
    const Where where = here();
    const std::string name = expectName("the name of a pragma");
    expect('(', "the name of the pragma");
    if (token_.kind != MofTokenKind::String) {
        unexpected("a string, the argument of the pragma");
    }
    const std::string argument = token_.text;
    const Where argumentWhere = here();
    advance();
    expect(')', "the argument of the pragma");
    if (sameName(name, "include")) {
        if (argument.empty() || argument.find('\0') != std::string::npos) {
            abandon(argumentWhere, "expected the name of a file to include");
        }
        const std::filesystem::path path(argument);
        readFile(path.is_absolute() ? argument : (std::filesystem::path(file_).parent_path() / path).string(),
                 argumentWhere);
    } else if (!sameName(name, "locale") && !sameName(name, "instancelocale")) {
        note(false, where, "#pragma " + name + " is ignored");
    }
}

void Reader::readQualifierDeclaration()
{
    advance();
    const Where where = here();
    Declaration declaration;
    declaration.name = expectName("the name of a qualifier");
    const std::string what = "qualifier " + inQuotes(declaration.name);
    expect(':', "the name of the qualifier");
    const Where typeWhere = here();
    const std::string type = expectName("the type of the qualifier");
    declaration.type = typeFromName(type);
    if (declaration.type == Type::None || declaration.type == Type::Reference) {
        abandon(typeWhere, inQuotes(type) +
                               " is not a type of qualifiers; expected boolean, string, datetime, "
                               "char16, real32, real64 or an integer type");
    }
    Element element;
    declaration.isArray = readArraySuffix(element);
    declaration.arraySize = element.arraySize;
    declaration.defaultValue.isArray = declaration.isArray;
    if (accept('=')) {
        const WrittenValue written = readValue();
        convert(written, declaration.type, declaration.isArray, "default value of " + what,
                declaration.defaultValue);
    }
    expect(',', "the type of the qualifier");
    if (!isWord("scope")) {
        unexpected("\"Scope\"");
    }
    advance();
    expect('(', "\"Scope\"");
    do {
        const Where scopeWhere = here();
        const std::string scope = expectName("what the qualifier may stand at");
        std::uint16_t bit = 0;
        if (sameName(scope, "any")) {
            bit = Declaration::SCOPE_ANY;
        }
        for (unsigned i = 0; i < 8 && bit == 0; ++i) {
            const auto candidate = static_cast<std::uint16_t>(1u << i);
            bit = sameName(scope, scopeName(candidate)) ? candidate : bit;
        }
        if (bit == 0) {
            abandon(scopeWhere, inQuotes(scope) +
                                    " is no scope; expected any, class, association, indication, "
                                    "property, reference, method, parameter or schema");
        }
        declaration.scope = static_cast<std::uint16_t>(declaration.scope | bit);
    } while (accept(','));
    expect(')', "the scopes");
    if (accept(',')) {
        if (!isWord("flavor")) {
            unexpected("\"Flavor\"");
        }
        advance();
        expect('(', "\"Flavor\"");
        do {
            if (!readFlavor(declaration.flavor)) {
                unexpected(
                    "a flavor: EnableOverride, DisableOverride, ToSubclass, Restricted or Translatable");
            }
        } while (accept(','));
        expect(')', "the flavors");
    }
    expect(';', "the qualifier declaration");
    if (repository_.findQualifier(declaration.name) != nullptr) {
        error(where, what + " is declared twice");
    }
    if (!isBroken_) {
        repository_.add(std::move(declaration));
    }
}

/** Takes a flavor's name when there is one. */
bool Reader::readFlavor(Flavor &flavor)
{
    if (isWord("EnableOverride")) {
        flavor.overridable = true;
    } else if (isWord("DisableOverride")) {
        flavor.overridable = false;
    } else if (isWord("ToSubclass")) {
        flavor.toSubclass = true;
    } else if (isWord("Restricted")) {
        flavor.toSubclass = false;
    } else if (isWord("Translatable")) {
        flavor.translatable = true;
    } else if (!isWord("ToInstance")) { // of the first versions of the standard, without effect
        return false;
    }
    advance();
    return true;
}

/** Skips an instance declaration: the instances of the desk come from its providers. */
void Reader::readInstance()
{
    const Where where = here();
    advance();
    if (!isWord("of")) {
        unexpected("\"of\" after \"instance\"");
    }
    advance();
    const std::string name = expectName("the class of the instance");
    while (!isSymbol('{')) {
        if (token_.kind == MofTokenKind::End || isSymbol(';')) {
            unexpected("\"{\" after the class of the instance");
        }
        advance();
    }
    do {
        if (token_.kind == MofTokenKind::End || token_.kind == MofTokenKind::Bad) {
            unexpected("\"}\" at the end of the instance");
        }
        advance();
    } while (depth_ > 0);
    expect(';', "the instance");
    note(false, where, "the instance of " + name + " is skipped; only classes and qualifiers are read");
}

void Reader::readClass(std::vector<QualifierUse> uses)
{
    ParsedClass parsed;
    parsed.uses = std::move(uses);
    advance();
    parsed.where = here();
    parsed.klass.name = expectName("the name of a class");
    className_ = parsed.klass.name;
    if (isWord("as")) {
        advance();
        expect('$', "\"as\"");
        expectName("an alias");
    }
    if (accept(':')) {
        parsed.superclassWhere = here();
        parsed.klass.superclass = expectName("the name of the superclass");
    }
    expect('{', "the name of the class");
    while (!isSymbol('}')) {
        if (token_.kind == MofTokenKind::End || isAtDeclaration()) {
            unexpected("\"}\" at the end of class " + inQuotes(className_));
        }
        readFeature(parsed);
        checkLength(parsed.properties.size(), "properties");
        checkLength(parsed.methods.size(), "methods");
    }
    advance();
    expect(';', "the class");
    parsed.klass.definedAt = file_ + ":" + std::to_string(parsed.where.line);
    resolveClass(parsed);
    if (isBroken_ || repository_.add(std::move(parsed.klass)) == nullptr) {
        brokenClasses_.insert(className_);
    }
}

void Reader::readFeature(ParsedClass &parsed)
{
    std::vector<QualifierUse> uses;
    if (isSymbol('[')) {
        uses = readQualifierList();
    }
    Element element;
    element.type = readType(element.referenceClass);
    const Where where = here();
    element.name = expectName("the name of a property or method");
    if (accept('(')) {
        ParsedMethod method;
        method.where = where;
        method.uses = std::move(uses);
        method.method.name = std::move(element.name);
        method.method.returnType = element.type;
        if (element.type == Type::Reference) {
            error(where, "method " + inQuotes(method.method.name) +
                             " returns a reference; expected one of the "
                             "other types");
        }
        readParameters(method, parsed.klass.name);
        parsed.methods.push_back(std::move(method));
        return;
    }
    ParsedProperty property;
    property.where = where;
    property.uses = std::move(uses);
    static_cast<Element &>(property.property) = std::move(element);
    Property &target = property.property;
    const std::string what = "property " + inQuotes(target.name) + " of class " + inQuotes(parsed.klass.name);
    target.isArray = readArraySuffix(target);
    if (target.isArray && target.type == Type::Reference) {
        error(where, what + " is an array of references; only parameters may be");
    }
    target.defaultValue.isArray = target.isArray;
    if (accept('=')) {
        const WrittenValue written = readValue();
        convert(written, target.type, target.isArray, "default value of " + what, target.defaultValue);
        property.hasDefault = true;
    }
    expect(';', "the property");
    parsed.properties.push_back(std::move(property));
}

void Reader::readParameters(ParsedMethod &parsed, const std::string &className)
{
    if (!isSymbol(')')) {
        do {
            std::vector<QualifierUse> uses;
            if (isSymbol('[')) {
                uses = readQualifierList();
            }
            ParsedParameter parameter;
            Parameter &target = parameter.parameter;
            target.type = readType(target.referenceClass);
            parameter.where = here();
            target.name = expectName("the name of a parameter");
            target.isArray = readArraySuffix(target);
            const std::string what = "parameter " + inQuotes(target.name) + " of method " +
                                     inQuotes(className + "." + parsed.method.name);
            checkScope(uses, Declaration::SCOPE_PARAMETER, what);
            target.qualifiers = mergeQualifiers(nullptr, uses, what);
            const Qualifier *in = findQualifier(target.qualifiers, "In");
            target.isIn = in == nullptr || in->value.isTrue();
            target.isOut = hasQualifier(target.qualifiers, "Out");
            if (parsed.method.findParameter(target.name) != nullptr) {
                error(parameter.where, what + " is declared twice");
            }
            parsed.method.parameters.push_back(target);
            parsed.parameters.push_back(std::move(parameter));
            checkLength(parsed.parameters.size(), "parameters");
        } while (accept(','));
    }
    expect(')', "the parameters");
    expect(';', "the method");
}

std::vector<QualifierUse> Reader::readQualifierList()
{
    std::vector<QualifierUse> uses;
    advance();
    do {
        QualifierUse use;
        use.where = here();
        const std::string name = expectName("the name of a qualifier");
        const std::string what = "qualifier " + inQuotes(name);
        use.declaration = repository_.findQualifier(name);
        if (use.declaration == nullptr) {
            error(use.where, "unknown " + what + "; it must be declared before it is used");
        } else {
            use.qualifier.name = use.declaration->name;
            use.qualifier.type = use.declaration->type;
            use.qualifier.flavor = use.declaration->flavor;
            use.qualifier.value.isArray = use.declaration->isArray;
        }
        if (isSymbol('(') || isSymbol('{')) {
            const bool isScalar = accept('(');
            const WrittenValue written = readValue();
            if (isScalar) {
                expect(')', "the value of the qualifier");
            }
            if (use.declaration != nullptr) {
                convert(written, use.declaration->type, use.declaration->isArray, "value of " + what,
                        use.qualifier.value);
            }
        } else if (use.declaration != nullptr && use.declaration->type == Type::Boolean &&
                   !use.declaration->isArray) {
            use.qualifier.value.isNull = false;
            use.qualifier.value.items = {"true"};
        } else if (use.declaration != nullptr) {
            error(use.where, what + " has no value; expected " +
                                 typeWithArray(use.declaration->type, use.declaration->isArray) + " in " +
                                 (use.declaration->isArray ? "{ }" : "( )"));
        }
        if (accept(':')) {
            if (!readFlavor(use.qualifier.flavor)) {
                unexpected(
                    "a flavor: EnableOverride, DisableOverride, ToSubclass, Restricted or Translatable");
            }
            while (readFlavor(use.qualifier.flavor)) {
            }
        }
        if (use.declaration != nullptr) {
            for (const QualifierUse &other : uses) {
                if (other.declaration == use.declaration) {
                    error(use.where, what + " stands twice in the same list");
                    break;
                }
            }
            uses.push_back(std::move(use));
            checkLength(uses.size(), "qualifiers");
        }
    } while (accept(','));
    expect(']', "the qualifiers");
    return uses;
}

WrittenValue Reader::readValue()
{
    WrittenValue value;
    value.where = here();
    if (!accept('{')) {
        value.items.push_back(readLiteral());
        return value;
    }
    value.isArray = true;
    if (!isSymbol('}')) {
        do {
            value.items.push_back(readLiteral());
            checkLength(value.items.size(), "values");
        } while (accept(','));
    }
    expect('}', "the values");
    return value;
}

Literal Reader::readLiteral()
{
    Literal literal;
    switch (token_.kind) {
    case MofTokenKind::Integer:
    case MofTokenKind::Real:
    case MofTokenKind::String:
    case MofTokenKind::Char:
        break;
    case MofTokenKind::Name:
        literal.isTrue = isWord("true");
        literal.isBoolean = literal.isTrue || isWord("false");
        literal.isNull = isWord("null");
        if (literal.isBoolean || literal.isNull) {
            break;
        }
        [[fallthrough]];
    default:
        unexpected("a value: a number, a string, a character, TRUE, FALSE or NULL");
    }
    literal.token = token_;
    advance();
    return literal;
}

/** Reads "[]" or "[size]" after a name, when there is one, and notes the size in the element. */
bool Reader::readArraySuffix(Element &element)
{
    if (!accept('[')) {
        return false;
    }
    if (token_.kind == MofTokenKind::Integer) {
        if (token_.isNegative || token_.magnitude == 0 || token_.magnitude > UINT32_MAX) {
            abandon(here(), "the size of an array is a positive number of 32 bits");
        }
        element.arraySize = static_cast<std::uint32_t>(token_.magnitude);
        advance();
    }
    expect(']', element.arraySize == 0 ? "\"[\"" : "the size of the array");
    return true;
}

/** Reads a type's name, or a class name followed by REF. */
Type Reader::readType(std::string &referenceClass)
{
    const Where where = here();
    const std::string name = expectName("a type or the name of a class with REF");
    if (isWord("ref")) {
        advance();
        referenceClass = name;
        return Type::Reference;
    }
    const Type type = typeFromName(name);
    if (type == Type::None || type == Type::Reference) {
        abandon(where, "unknown type " + inQuotes(name) +
                           "; expected boolean, string, datetime, char16, real32, real64, uint8 to uint64, "
                           "sint8 to sint64, or a class name followed by REF");
    }
    return type;
}

// ---- Values ----

bool Reader::convert(const WrittenValue &written, Type type, bool isArray, const std::string &what,
                     Value &value)
{
    value = Value{};
    value.isArray = isArray;
    if (!written.isArray && written.items.front().isNull) {
        return true;
    }
    if (written.isArray != isArray) {
        error(written.where, what + ": expected " +
                                 (isArray ? "values in { }" : "a single value without { }") + " for " +
                                 typeWithArray(type, isArray));
        return false;
    }
    for (const Literal &literal : written.items) {
        std::string text;
        if (!convertItem(literal, type, what, text)) {
            return false;
        }
        value.items.push_back(std::move(text));
    }
    value.isNull = false;
    return true;
}

bool Reader::convertItem(const Literal &literal, Type type, const std::string &what, std::string &text)
{
    const MofToken &token = literal.token;
    const auto fail = [&](const std::string &expected) {
        error(whereOf(token), what + ": expected " + expected + ", found " + shown(token));
        return false;
    };
    if (literal.isNull) {
        return fail("a value that is not NULL in an array");
    }
    if (type == Type::Boolean) {
        text = literal.isTrue ? "true" : "false";
        return literal.isBoolean || fail("TRUE or FALSE");
    }
    if (isInteger(type)) {
        std::uint64_t negative = 0;
        std::uint64_t positive = 0;
        integerRange(type, negative, positive);
        if (token.kind != MofTokenKind::Integer) {
            return fail(std::string("a number of type ") + typeName(type));
        }
        if (token.magnitude > (token.isNegative ? negative : positive)) {
            return fail(std::string("a ") + typeName(type) + " (" +
                        (negative == 0 ? "" : "-" + std::to_string(negative) + " to ") +
                        (negative == 0 ? "0 to " : "") + std::to_string(positive) + ")");
        }
        text = (token.isNegative && token.magnitude != 0 ? "-" : "") + std::to_string(token.magnitude);
        return true;
    }
    if (isReal(type)) {
        if (token.kind == MofTokenKind::Integer) {
            text = (token.isNegative ? "-" : "") + std::to_string(token.magnitude);
            return true;
        }
        if (token.kind != MofTokenKind::Real) {
            return fail(std::string("a number of type ") + typeName(type));
        }
        std::string_view digits = token.text;
        const bool isNegative = digits.front() == '-';
        digits.remove_prefix(digits.front() == '-' || digits.front() == '+' ? 1 : 0);
        text = std::string(isNegative ? "-" : "") + (digits.front() == '.' ? "0" : "") + std::string(digits);
        double real64 = 0;
        float real32 = 0;
        const char *end = text.data() + text.size();
        const auto read = type == Type::Real64 ? std::from_chars(text.data(), end, real64)
                                               : std::from_chars(text.data(), end, real32);
        return read.ec == std::errc() || fail(std::string("a number in the range of ") + typeName(type));
    }
    text = token.text;
    if (type == Type::Char16) {
        return token.kind == MofTokenKind::Char || fail("a character in single quotes");
    }
    if (token.kind != MofTokenKind::String) {
        return fail(type == Type::Reference ? "an object path in a string" : "a string");
    }
    if (type == Type::DateTime && !isDateTime(text)) {
        return fail("a datetime like \"20250131235959.000000+000\" or \"00000001235959.000000:000\"");
    }
    return true;
}

// ---- Qualifiers ----

void Reader::checkScope(const std::vector<QualifierUse> &uses, std::uint16_t scope, const std::string &what)
{
    for (const QualifierUse &use : uses) {
        if ((use.declaration->scope & scope) != 0) {
            continue;
        }
        std::string allowed;
        for (unsigned i = 0; i < 8; ++i) {
            const auto bit = static_cast<std::uint16_t>(1u << i);
            if ((use.declaration->scope & bit) != 0) {
                allowed += (allowed.empty() ? "" : ", ") + std::string(scopeName(bit));
            }
        }
        error(use.where, "qualifier " + inQuotes(use.qualifier.name) + " may not stand at " + what +
                             "; its scope is " + allowed);
    }
}

/** What an element has from the overridden or inherited one. */
Qualifiers Reader::inheritedQualifiers(const Qualifiers &qualifiers)
{
    Qualifiers result;
    for (const Qualifier &qualifier : qualifiers) {
        if (qualifier.flavor.toSubclass) {
            result.push_back(qualifier);
            result.back().propagated = true;
        }
    }
    return result;
}

/** The written qualifiers followed by the inherited ones that they do not replace. */
Qualifiers Reader::mergeQualifiers(const Qualifiers *inherited, const std::vector<QualifierUse> &uses,
                                   const std::string &what)
{
    Qualifiers result;
    for (const QualifierUse &use : uses) {
        result.push_back(use.qualifier);
    }
    if (inherited == nullptr) {
        return result;
    }
    for (Qualifier &old : inheritedQualifiers(*inherited)) {
        const auto use = std::find_if(uses.begin(), uses.end(), [&](const QualifierUse &candidate) {
            return sameName(candidate.qualifier.name, old.name);
        });
        if (use == uses.end()) {
            result.push_back(std::move(old));
        } else if (!old.flavor.overridable && !sameValue(use->qualifier.value, old.value)) {
            error(use->where, "qualifier " + inQuotes(old.name) + " of " + what +
                                  " may not change; the inherited value is " +
                                  (old.value.isNull ? "NULL" : inQuotes(old.value.text())));
        }
    }
    return result;
}

// ---- Classes ----

void Reader::resolveClass(ParsedClass &parsed)
{
    Class &klass = parsed.klass;
    const std::string what = "class " + inQuotes(klass.name);
    if (const Class *other = repository_.find(klass.name)) {
        abandon(parsed.where, what + " is defined twice, first at " + other->definedAt);
    }
    const Class *parent = nullptr;
    if (!klass.superclass.empty()) {
        parent = repository_.find(klass.superclass);
        if (parent == nullptr) {
            abandon(parsed.superclassWhere,
                    brokenClasses_.contains(klass.superclass)
                        ? "the superclass " + inQuotes(klass.superclass) + " of " + what + " has errors"
                        : "unknown superclass " + inQuotes(klass.superclass) + " of " + what +
                              "; it must be declared before its subclasses");
        }
        if (parent->lineage.size() >= limits_.inheritanceDepth) {
            abandon(parsed.superclassWhere, what + " derives through more than " +
                                                std::to_string(limits_.inheritanceDepth) + " classes");
        }
        klass.superclass = parent->name;
    }
    klass.qualifiers = mergeQualifiers(parent != nullptr ? &parent->qualifiers : nullptr, parsed.uses, what);
    klass.isAssociation = hasQualifier(klass.qualifiers, "Association");
    klass.isIndication = hasQualifier(klass.qualifiers, "Indication");
    klass.isAbstract = hasQualifier(klass.qualifiers, "Abstract");
    if (klass.isAssociation && parent != nullptr && !parent->isAssociation) {
        error(parsed.where,
              what + " is an association and its superclass " + inQuotes(parent->name) + " is not");
    }
    checkScope(parsed.uses,
               klass.isAssociation  ? Declaration::SCOPE_CLASS | Declaration::SCOPE_ASSOCIATION
               : klass.isIndication ? Declaration::SCOPE_CLASS | Declaration::SCOPE_INDICATION
                                    : Declaration::SCOPE_CLASS,
               what);
    resolveProperties(parsed, parent);
    resolveMethods(parsed, parent);
    if (klass.isAssociation) {
        const auto count = std::count_if(klass.properties.begin(), klass.properties.end(),
                                         [](const Property &p) { return p.type == Type::Reference; });
        if (count < 2) {
            error(parsed.where, what + " is an association with " + std::to_string(count) +
                                    " references; expected at least two");
        }
    }
}

void Reader::checkOverride(const Qualifiers &qualifiers, const char *kind, const std::string &name,
                           const std::string &className, const std::string *inheritedFrom, Where where)
{
    const Qualifier *override = findQualifier(qualifiers, "Override");
    const std::string what = std::string(kind) + " " + inQuotes(name) + " of class " + inQuotes(className);
    if (override == nullptr || override->propagated) {
        if (inheritedFrom != nullptr) {
            error(where, what + " is already declared in " + inQuotes(*inheritedFrom) +
                             "; expected [Override (" + inQuotes(name) + ")]");
        }
    } else if (!sameName(override->value.text(), name)) {
        error(where, what + " overrides " + inQuotes(override->value.text()) + "; expected its own name");
    } else if (inheritedFrom == nullptr) {
        error(where, what + " overrides nothing; no superclass declares it");
    }
}

void Reader::addReference(const Element &element, const std::string &ancestor, const std::string &what,
                          Where where)
{
    if (element.type == Type::Reference) {
        pending_.push_back({element.referenceClass, ancestor, what, file_, where});
    }
}

void Reader::resolveProperties(ParsedClass &parsed, const Class *parent)
{
    Class &klass = parsed.klass;
    NameMap<std::size_t> places;
    if (parent != nullptr) {
        for (const Property &inherited : parent->properties) {
            places.emplace(inherited.name, klass.properties.size());
            klass.properties.push_back(inherited);
            Property &property = klass.properties.back();
            property.propagated = true;
            property.qualifiers = inheritedQualifiers(inherited.qualifiers);
            charge(sizeof property + sizeOf(property.qualifiers), parsed.where);
        }
    }
    std::unordered_set<std::string, NameHash, NameEqual> own;
    for (ParsedProperty &declared : parsed.properties) {
        Property &property = declared.property;
        const std::string what = "property " + inQuotes(property.name) + " of class " + inQuotes(klass.name);
        if (!own.insert(property.name).second) {
            error(declared.where, what + " is declared twice");
            continue;
        }
        const auto place = places.find(property.name);
        const bool isInherited = place != places.end();
        const Property *old = isInherited ? parent->findProperty(property.name) : nullptr;
        checkScope(declared.uses,
                   property.type == Type::Reference ? Declaration::SCOPE_REFERENCE
                                                    : Declaration::SCOPE_PROPERTY,
                   what);
        property.qualifiers =
            mergeQualifiers(old != nullptr ? &old->qualifiers : nullptr, declared.uses, what);
        property.isKey = hasQualifier(property.qualifiers, "Key");
        property.classOrigin = old != nullptr ? old->classOrigin : klass.name;
        checkOverride(property.qualifiers, "property", property.name, klass.name,
                      old != nullptr ? &old->classOrigin : nullptr, declared.where);
        if (property.type == Type::Reference && !klass.isAssociation) {
            error(declared.where, what + " is a reference; only an association may have one");
        }
        if (property.isKey && property.isArray) {
            error(declared.where, what + " is a key and an array; a key has a single value");
        }
        if (property.isKey && parent != nullptr && !parent->keys.empty() && (old == nullptr || !old->isKey)) {
            std::string keys;
            for (const Property *key : repository_.keys(*parent)) {
                keys += (keys.empty() ? "" : ", ") + key->name;
            }
            error(declared.where, what + " may not be a key; the keys are those of superclass " +
                                      inQuotes(parent->name) + ": " + keys);
        }
        if (old == nullptr) {
            addReference(property, "", what, declared.where);
            klass.properties.push_back(std::move(property));
            continue;
        }
        if (property.type != old->type || property.isArray != old->isArray) {
            error(declared.where, what + " has type " + typeWithArray(property.type, property.isArray) +
                                      "; the property it overrides has " +
                                      typeWithArray(old->type, old->isArray));
        } else {
            addReference(property, old->referenceClass, what, declared.where);
        }
        if (!declared.hasDefault) {
            property.defaultValue = old->defaultValue;
        }
        klass.properties[place->second] = std::move(property);
    }
    checkTotal(klass.properties.size(), "properties", parsed.where);
}

void Reader::resolveMethods(ParsedClass &parsed, const Class *parent)
{
    Class &klass = parsed.klass;
    NameMap<std::size_t> places;
    if (parent != nullptr) {
        for (const Method &inherited : parent->methods) {
            places.emplace(inherited.name, klass.methods.size());
            klass.methods.push_back(inherited);
            Method &method = klass.methods.back();
            method.propagated = true;
            method.qualifiers = inheritedQualifiers(inherited.qualifiers);
            std::size_t size = sizeof method + sizeOf(method.qualifiers);
            for (const Parameter &parameter : method.parameters) {
                size += sizeof parameter + sizeOf(parameter.qualifiers);
            }
            charge(size, parsed.where);
        }
    }
    std::unordered_set<std::string, NameHash, NameEqual> own;
    for (ParsedMethod &declared : parsed.methods) {
        Method &method = declared.method;
        const std::string what = "method " + inQuotes(method.name) + " of class " + inQuotes(klass.name);
        if (!own.insert(method.name).second) {
            error(declared.where, what + " is declared twice");
            continue;
        }
        const auto place = places.find(method.name);
        const bool isInherited = place != places.end();
        const Method *old = isInherited ? parent->findMethod(method.name) : nullptr;
        checkScope(declared.uses, Declaration::SCOPE_METHOD, what);
        method.qualifiers = mergeQualifiers(old != nullptr ? &old->qualifiers : nullptr, declared.uses, what);
        method.isStatic = hasQualifier(method.qualifiers, "Static");
        method.classOrigin = old != nullptr ? old->classOrigin : klass.name;
        checkOverride(method.qualifiers, "method", method.name, klass.name,
                      old != nullptr ? &old->classOrigin : nullptr, declared.where);
        for (const ParsedParameter &parameter : declared.parameters) {
            addReference(parameter.parameter, "",
                         "parameter " + inQuotes(parameter.parameter.name) + " of " + what, parameter.where);
        }
        if (old == nullptr) {
            klass.methods.push_back(std::move(method));
            continue;
        }
        // The parameters may differ from the overridden method's: the monitor's services take every argument
        // as text where the standard has numbers, and clients depend on it.
        if (method.returnType != old->returnType) {
            error(declared.where, what + " returns " + typeName(method.returnType) +
                                      "; the method it overrides returns " + typeName(old->returnType));
        }
        klass.methods[place->second] = std::move(method);
    }
    checkTotal(klass.methods.size(), "methods", parsed.where);
}

void Reader::charge(std::size_t bytes, Where where)
{
    inheritedBytes_ += bytes;
    if (inheritedBytes_ > limits_.inheritedBytes) {
        error(where, "the classes inherit more than " + std::to_string(limits_.inheritedBytes) +
                         " bytes; the rest is not read");
        throw Stop{};
    }
}

void Reader::checkTotal(std::size_t count, const char *what, Where where)
{
    if (count > limits_.listLength) {
        abandon(where, "the class has more than " + std::to_string(limits_.listLength) + " " + what +
                           " with the inherited ones");
    }
}

/** What can only be known at the end: the classes that references name. */
void Reader::checkReferences()
{
    for (const PendingReference &reference : pending_) {
        file_ = reference.file;
        const Class *klass = repository_.find(reference.referenceClass);
        if (klass == nullptr) {
            error(reference.where,
                  reference.element + " refers to class " + inQuotes(reference.referenceClass) +
                      (brokenClasses_.contains(reference.referenceClass) ? ", which has errors"
                                                                         : ", which is not defined"));
        } else if (!reference.ancestor.empty() && !repository_.isA(klass->name, reference.ancestor)) {
            error(reference.where, reference.element + " refers to class " + inQuotes(klass->name) +
                                       "; expected " + inQuotes(reference.ancestor) +
                                       " or a subclass, as the " + "overridden property has it");
        }
    }
}

template <typename Input>
MofResult readAll(ClassRepository &repository, const MofLimits &limits, Input input)
{
    Reader reader(repository, limits);
    try {
        input(reader);
        reader.checkReferences();
    } catch (const Stop &) {
    }
    return reader.takeResult();
}

} // namespace

std::string MofMessage::format() const
{
    std::string result = file;
    if (line != 0) {
        result += ":" + std::to_string(line) + ":" + std::to_string(column);
    }
    return result + (isError ? ": error: " : ": warning: ") + text;
}

bool MofResult::ok() const
{
    return std::none_of(messages.begin(), messages.end(), [](const MofMessage &m) { return m.isError; });
}

MofResult readMofFiles(ClassRepository &repository, const std::vector<std::string> &files,
                       const MofLimits &limits)
{
    return readAll(repository, limits, [&](Reader &reader) {
        for (const std::string &file : files) {
            reader.readFile(file);
        }
    });
}

MofResult readMofText(ClassRepository &repository, std::string_view text, const std::string &name,
                      const MofLimits &limits)
{
    return readAll(repository, limits, [&](Reader &reader) { reader.readText(text, name); });
}

} // namespace cim
