// SPDX-License-Identifier: Apache-2.0
// From the text of MOF to declarations.
#include "cim/mof_parser.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <system_error>

namespace cim
{

std::string inQuotes(std::string_view text)
{
    return "\"" + std::string(text) + "\"";
}

std::string typeWithArray(Type type, bool isArray)
{
    return std::string(typeName(type)) + (isArray ? "[]" : "");
}

std::string shown(const MofToken &token)
{
    constexpr std::size_t longest = 40;
    std::string text = token.text.size() > longest ? token.text.substr(0, longest) + "..." : token.text;
    switch (token.kind) {
    case MofTokenKind::end:
        return "the end of the file";
    case MofTokenKind::string:
        return "a string";
    case MofTokenKind::character:
        return "a character literal";
    case MofTokenKind::bad:
        return text;
    default:
        return inQuotes(text);
    }
}

// ---- Messages ----

void MofParser::note(bool isError, Where where, std::string text)
{
    if (!isError && ++warningCount_ >= limits_.errors) {
        if (warningCount_ > limits_.errors) {
            return;
        }
        text = "more warnings are not shown";
    }
    result_.messages.push_back({isError, file_, where.line, where.column, std::move(text)});
}

void MofParser::error(Where where, std::string text)
{
    note(true, where, std::move(text));
    isBroken_ = true;
    if (++errorCount_ >= limits_.errors) {
        note(true, where, "too many errors; the rest is not read");
        throw Stop{};
    }
}

void MofParser::abandon(Where where, std::string text)
{
    error(where, std::move(text));
    throw Abandon{};
}

void MofParser::unexpected(const std::string &expected)
{
    if (token_.kind == MofTokenKind::bad) {
        abandon(here(), token_.text);
    }
    abandon(here(), "expected " + expected + ", found " + shown(token_));
}

// ---- Tokens ----

void MofParser::advance()
{
    if (isSymbol('{')) {
        ++depth_;
    } else if (isSymbol('}')) {
        --depth_;
    }
    token_ = lexer_.next();
    if (token_.kind == MofTokenKind::name && token_.text.size() > limits_.nameLength) {
        token_.kind = MofTokenKind::bad;
        token_.text = "the name is longer than " + std::to_string(limits_.nameLength) + " characters";
    }
}

bool MofParser::accept(char symbol)
{
    if (!isSymbol(symbol)) {
        return false;
    }
    advance();
    return true;
}

void MofParser::expect(char symbol, const char *after)
{
    if (!accept(symbol)) {
        unexpected(std::string("\"") + symbol + "\" after " + after);
    }
}

std::string MofParser::expectName(const char *what)
{
    if (token_.kind != MofTokenKind::name) {
        unexpected(what);
    }
    std::string name = std::move(token_.text);
    advance();
    return name;
}

void MofParser::checkLength(std::size_t length, const char *what)
{
    if (length > limits_.listLength) {
        abandon(here(), "more than " + std::to_string(limits_.listLength) + " " + what);
    }
}

/** Skips to the start of the next declaration: after the semicolon that ends the broken one, or to a word in
 * the first column that can only start another one. */
void MofParser::recover()
{
    while (token_.kind != MofTokenKind::end && !isAtDeclaration()) {
        const bool isEnd = isSymbol(';') && depth_ <= 0;
        advance();
        if (isEnd) {
            return;
        }
    }
}

// ---- Files ----

void MofParser::readFile(const std::string &name, Where includedAt)
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

void MofParser::readText(std::string_view text, const std::string &name)
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

void MofParser::readProductions()
{
    while (token_.kind != MofTokenKind::end) {
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

void MofParser::readProduction()
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

void MofParser::readDirective()
{
    advance();
    if (!isWord("pragma")) {
        unexpected("\"pragma\" after \"#\"");
    }
    advance();
    const Where where = here();
    const std::string name = expectName("the name of a pragma");
    expect('(', "the name of the pragma");
    if (token_.kind != MofTokenKind::string) {
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

/** The bit of one of the things that a qualifier may stand at; of any, all that there are. */
std::uint16_t MofParser::readScope()
{
    const Where where = here();
    const std::string scope = expectName("what the qualifier may stand at");
    if (sameName(scope, "any")) {
        return Declaration::scopeAny;
    }
    for (unsigned i = 0; i < 8; ++i) {
        const auto bit = static_cast<std::uint16_t>(1u << i);
        if (sameName(scope, scopeName(bit))) {
            return bit;
        }
    }
    abandon(where, inQuotes(scope) + " is no scope; expected any, class, association, indication, "
                                     "property, reference, method, parameter or schema");
}

void MofParser::readQualifierDeclaration()
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
    if (declaration.type == Type::none || declaration.type == Type::reference) {
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
        declaration.scope = static_cast<std::uint16_t>(declaration.scope | readScope());
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
bool MofParser::readFlavor(Flavor &flavor)
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
void MofParser::readInstance()
{
    const Where where = here();
    advance();
    if (!isWord("of")) {
        unexpected("\"of\" after \"instance\"");
    }
    advance();
    const std::string name = expectName("the class of the instance");
    while (!isSymbol('{')) {
        if (token_.kind == MofTokenKind::end || isSymbol(';')) {
            unexpected("\"{\" after the class of the instance");
        }
        advance();
    }
    do {
        if (token_.kind == MofTokenKind::end || token_.kind == MofTokenKind::bad) {
            unexpected("\"}\" at the end of the instance");
        }
        advance();
    } while (depth_ > 0);
    expect(';', "the instance");
    note(false, where, "the instance of " + name + " is skipped; only classes and qualifiers are read");
}

void MofParser::readClass(std::vector<QualifierUse> uses)
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
        if (token_.kind == MofTokenKind::end || isAtDeclaration()) {
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

void MofParser::readFeature(ParsedClass &parsed)
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
        if (element.type == Type::reference) {
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
    if (target.isArray && target.type == Type::reference) {
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

void MofParser::readParameters(ParsedMethod &parsed, const std::string &className)
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
            checkScope(uses, Declaration::scopeParameter, what);
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

std::vector<QualifierUse> MofParser::readQualifierList()
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
        } else if (use.declaration != nullptr && use.declaration->type == Type::boolean &&
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

WrittenValue MofParser::readValue()
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

Literal MofParser::readLiteral()
{
    Literal literal;
    switch (token_.kind) {
    case MofTokenKind::integer:
    case MofTokenKind::real:
    case MofTokenKind::string:
    case MofTokenKind::character:
        break;
    case MofTokenKind::name:
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
bool MofParser::readArraySuffix(Element &element)
{
    if (!accept('[')) {
        return false;
    }
    if (token_.kind == MofTokenKind::integer) {
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
Type MofParser::readType(std::string &referenceClass)
{
    const Where where = here();
    const std::string name = expectName("a type or the name of a class with REF");
    if (isWord("ref")) {
        advance();
        referenceClass = name;
        return Type::reference;
    }
    const Type type = typeFromName(name);
    if (type == Type::none || type == Type::reference) {
        abandon(where, "unknown type " + inQuotes(name) +
                           "; expected boolean, string, datetime, char16, real32, real64, uint8 to uint64, "
                           "sint8 to sint64, or a class name followed by REF");
    }
    return type;
}

} // namespace cim
