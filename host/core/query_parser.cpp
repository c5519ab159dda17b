// SPDX-License-Identifier: Apache-2.0
// From the text of a query to its tree.
#include "core/query.h"

#include <charconv>

namespace host
{
namespace
{

struct Token {
    enum class Kind { end, word, text, number, sign, broken } kind = Kind::end;
    std::string text; // of a Text without its quotes; of a Broken one what is wrong
};

/** Cuts the text into words, texts, numbers and signs. */
class QueryLexer
{
  public:
    QueryLexer(std::string_view text, QueryLanguage language) : rest_(text), language_(language) {}

    Token next()
    {
        const std::size_t start = rest_.find_first_not_of(" \t\r\n");
        if (start == std::string_view::npos) {
            return {};
        }
        rest_.remove_prefix(start);
        const char first = rest_.front();
        if (isLetter(first)) {
            return {Token::Kind::word, take([](char c) { return isLetter(c) || isDigit(c); })};
        }
        if (first == '\'' || (first == '"' && language_ == QueryLanguage::wql)) {
            return text(first);
        }
        if (isDigit(first) || (isSign(first) && rest_.size() > 1 && isDigit(rest_[1]))) {
            return number();
        }
        return sign();
    }

  private:
    static bool isLetter(char c)
    {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
               static_cast<unsigned char>(c) >= 0x80;
    }

    static bool isDigit(char c)
    {
        return c >= '0' && c <= '9';
    }

    static bool isSign(char c)
    {
        return c == '-' || c == '+';
    }

    template <typename Belongs>
    std::string take(Belongs belongs)
    {
        std::size_t end = 1;
        while (end < rest_.size() && belongs(rest_[end])) {
            ++end;
        }
        std::string taken(rest_.substr(0, end));
        rest_.remove_prefix(end);
        return taken;
    }

    Token text(char quote)
    {
        std::string text;
        for (std::size_t i = 1; i < rest_.size(); ++i) {
            if (rest_[i] == '\\' && i + 1 < rest_.size()) {
                text += rest_[++i];
            } else if (rest_[i] != quote) {
                text += rest_[i];
            } else {
                rest_.remove_prefix(i + 1);
                return {Token::Kind::text, text};
            }
        }
        return {Token::Kind::broken, "a text does not end"};
    }

    Token number()
    {
        char before = 0;
        return {Token::Kind::number, take([&before](char c) {
                    const bool belongs = isDigit(c) || c == '.' || c == 'e' || c == 'E' ||
                                         (isSign(c) && (before == 'e' || before == 'E'));
                    before = c;
                    return belongs;
                })};
    }

    Token sign()
    {
        for (const std::string_view known :
             {"<>", "!=", "<=", ">=", "=", "<", ">", "(", ")", ",", "*", "."}) {
            if (rest_.starts_with(known)) {
                rest_.remove_prefix(known.size());
                return {Token::Kind::sign, std::string(known)};
            }
        }
        return {Token::Kind::broken,
                "the character " + std::string(rest_.substr(0, 1)) + " has no place in it"};
    }

    std::string_view rest_;
    QueryLanguage language_;
};

} // namespace

/** Recursive descent; the first problem ends it. */
class QueryParser
{
  public:
    QueryParser(std::string_view text, QueryLanguage language)
        : lexer_(text, language), language_(language), token_(lexer_.next())
    {
    }

    bool parse()
    {
        if (!word("SELECT") || !selectList() || !word("FROM") || !name(query_.className_, "a class")) {
            return false;
        }
        const bool as = isWord("AS") && advance();
        if (as || (token_.kind == Token::Kind::word && !isWord("WHERE"))) {
            if (!name(alias_, "an alias")) {
                return false;
            }
        }
        if (isWord("WHERE")) {
            advance();
            std::size_t root = 0;
            if (!condition(root)) {
                return false;
            }
        }
        return token_.kind == Token::Kind::end ? checkQualifiers() : expected("the end");
    }

    Query &query()
    {
        return query_;
    }

    const std::string &problem() const
    {
        return problem_;
    }

  private:
    using Node = Query::Node;
    using Relation = Query::Relation;

    // ---- tokens ----

    bool advance()
    {
        token_ = lexer_.next();
        return true;
    }

    bool isWord(std::string_view wanted) const
    {
        return token_.kind == Token::Kind::word && cim::sameName(token_.text, wanted);
    }

    bool isSign(std::string_view wanted) const
    {
        return token_.kind == Token::Kind::sign && token_.text == wanted;
    }

    bool refuse(std::string problem)
    {
        problem_ = std::move(problem);
        return false;
    }

    bool expected(const std::string &what)
    {
        if (token_.kind == Token::Kind::broken) {
            return refuse("The query is not well-formed: " + token_.text + ".");
        }
        const std::string found = token_.kind == Token::Kind::end ? "the end" : token_.text.substr(0, 100);
        return refuse("The query is not well-formed: " + what + " is expected in place of " + found + ".");
    }

    bool word(std::string_view wanted)
    {
        return isWord(wanted) ? advance() : expected(std::string(wanted));
    }

    bool name(std::string &into, const char *what)
    {
        if (token_.kind != Token::Kind::word) {
            return expected(what);
        }
        into = token_.text;
        return advance();
    }

    // ---- the parts of a query ----

    bool selectList()
    {
        if (isSign("*")) {
            return advance();
        }
        do {
            std::string property;
            if (!propertyName(property)) {
                return false;
            }
            query_.selected_.push_back(property);
        } while (isSign(",") && advance());
        return true;
    }

    /** A name, or a name of the class or its alias, a dot and a name. */
    bool propertyName(std::string &into)
    {
        if (!name(into, "a property")) {
            return false;
        }
        if (!isSign(".")) {
            return true;
        }
        qualifiers_.push_back(into); // FROM may not have been read yet
        advance();
        return name(into, "a property");
    }

    bool checkQualifiers()
    {
        for (const std::string &qualifier : qualifiers_) {
            if (!isSource(qualifier)) {
                return refuse("The query names " + qualifier +
                              ", which is neither the class after FROM nor its alias.");
            }
        }
        return true;
    }

    bool isSource(std::string_view name) const
    {
        return cim::sameName(name, query_.className_) || (!alias_.empty() && cim::sameName(name, alias_));
    }

    std::size_t add(Node node)
    {
        query_.nodes_.push_back(std::move(node));
        return query_.nodes_.size() - 1;
    }

    std::size_t join(Node::Kind kind, std::size_t left, std::size_t right)
    {
        Node node;
        node.kind = kind;
        node.left = left;
        node.right = right;
        return add(std::move(node));
    }

    bool condition(std::size_t &place)
    {
        if (!term(place)) {
            return false;
        }
        while (isWord("OR")) {
            advance();
            std::size_t right = 0;
            if (!term(right)) {
                return false;
            }
            place = join(Node::Kind::disjunction, place, right);
        }
        return true;
    }

    bool term(std::size_t &place)
    {
        if (!factor(place)) {
            return false;
        }
        while (isWord("AND")) {
            advance();
            std::size_t right = 0;
            if (!factor(right)) {
                return false;
            }
            place = join(Node::Kind::conjunction, place, right);
        }
        return true;
    }

    bool factor(std::size_t &place)
    {
        if (depth_ >= Query::maxDepth) {
            return refuse("The query is nested more than " + std::to_string(Query::maxDepth) + " deep.");
        }
        ++depth_;
        const bool good = deeperFactor(place);
        --depth_;
        return good;
    }

    bool deeperFactor(std::size_t &place)
    {
        if (isWord("NOT")) {
            advance();
            std::size_t inner = 0;
            if (!factor(inner)) {
                return false;
            }
            place = join(Node::Kind::negation, inner, inner);
            return true;
        }
        if (!isSign("(")) {
            return test(place);
        }
        advance();
        if (!condition(place)) {
            return false;
        }
        return isSign(")") ? advance() : expected(")");
    }

    bool test(std::size_t &place)
    {
        Node node;
        if (!operand(node.first)) {
            return false;
        }
        if (!relation(node.relation)) {
            return false;
        }
        const auto *property = std::get_if<Query::PropertyName>(&node.first);
        switch (node.relation) {
        case Relation::isNull:
        case Relation::isNotNull:
            break;
        case Relation::isA:
            if (property == nullptr ||
                !(isSource(property->name) || cim::sameName(property->name, "__THIS"))) {
                return refuse("The query is not well-formed: ISA follows the class after FROM or its alias.");
            }
            if (!className(node.second)) {
                return false;
            }
            break;
        case Relation::like:
            if (token_.kind != Token::Kind::text) {
                return expected("a text after LIKE");
            }
            [[fallthrough]];
        default:
            if (!operand(node.second)) {
                return false;
            }
        }
        const bool isNullTest = node.relation == Relation::isNull || node.relation == Relation::isNotNull;
        if (property == nullptr && (isNullTest || node.relation == Relation::like)) {
            return refuse("The query is not well-formed: LIKE and IS follow a property.");
        }
        place = add(std::move(node));
        return true;
    }

    /** After ISA: the name of a class, in WQL also as a text. */
    bool className(Query::Operand &into)
    {
        if (token_.kind != Token::Kind::word && token_.kind != Token::Kind::text) {
            return expected("a class");
        }
        into = token_.text;
        return advance();
    }

    bool relation(Relation &into)
    {
        struct Sign {
            std::string_view text;
            Relation relation;
        };
        for (const Sign &sign :
             {Sign{"=", Relation::equal}, Sign{"<>", Relation::notEqual}, Sign{"!=", Relation::notEqual},
              Sign{"<", Relation::less}, Sign{"<=", Relation::lessOrEqual}, Sign{">", Relation::greater},
              Sign{">=", Relation::greaterOrEqual}}) {
            if (isSign(sign.text)) {
                into = sign.relation;
                return advance();
            }
        }
        if (isWord("IS")) {
            advance();
            const bool isNot = isWord("NOT") && advance();
            into = isNot ? Relation::isNotNull : Relation::isNull;
            return word("NULL");
        }
        if (isWord("ISA")) {
            into = Relation::isA;
            return advance();
        }
        if (isWord("LIKE")) {
            if (language_ == QueryLanguage::cql) {
                return refuse("LIKE is not supported in CQL; in WQL it is.");
            }
            into = Relation::like;
            return advance();
        }
        return expected("a comparison");
    }

    bool operand(Query::Operand &into)
    {
        switch (token_.kind) {
        case Token::Kind::text:
            into = token_.text;
            return advance();
        case Token::Kind::number:
            return number(into);
        case Token::Kind::word: {
            if (isWord("TRUE") || isWord("FALSE")) {
                into = isWord("TRUE");
                return advance();
            }
            Query::PropertyName property;
            if (!propertyName(property.name)) {
                return false;
            }
            into = std::move(property);
            return true;
        }
        default:
            return expected("a property or a value");
        }
    }

    template <typename Number>
    static bool whole(std::string_view text, Number &number)
    {
        const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
        return problem == std::errc() && end == text.data() + text.size();
    }

    bool number(Query::Operand &into)
    {
        const std::string_view text =
            std::string_view(token_.text).substr(token_.text.front() == '+' ? 1 : 0);
        std::int64_t small = 0;
        std::uint64_t large = 0;
        double real = 0;
        if (whole(text, small)) {
            into = Query::Integer(small);
        } else if (whole(text, large)) {
            into = Query::Integer(large);
        } else if (whole(text, real)) {
            into = real;
        } else {
            return refuse("The query is not well-formed: " + token_.text.substr(0, 100) +
                          " is not a number.");
        }
        return advance();
    }

    QueryLexer lexer_;
    QueryLanguage language_;
    Token token_;
    Query query_;
    std::string alias_;
    std::vector<std::string> qualifiers_;
    std::string problem_;
    unsigned depth_ = 0;
};

std::optional<QueryLanguage> queryLanguage(std::string_view name)
{
    if (cim::sameName(name, "WQL")) {
        return QueryLanguage::wql;
    }
    if (cim::sameName(name, "DMTF:CQL") || cim::sameName(name, "CQL")) {
        return QueryLanguage::cql;
    }
    return std::nullopt;
}

std::optional<Query> Query::parse(std::string_view text, QueryLanguage language, std::string &problem)
{
    if (text.size() > maxLength) {
        problem = "The query is longer than " + std::to_string(maxLength) + " bytes.";
        return std::nullopt;
    }
    QueryParser parser(text, language);
    if (!parser.parse()) {
        problem = parser.problem();
        return std::nullopt;
    }
    return std::move(parser.query());
}

} // namespace host
