// SPDX-License-Identifier: Apache-2.0
// What a query means: its properties and types, and whether an instance satisfies it.
#include "core/query.h"

#include "cmpi/date_time.h"

#include <algorithm>
#include <compare>
#include <utility>

namespace host
{
namespace
{

using Integer = std::variant<std::int64_t, std::uint64_t>;

std::string noProperty(const cim::Class &klass, const std::string &name)
{
    return "The class " + klass.name + " has no property " + name + ".";
}

/** A value of an instance or of the query, ready to be compared; monostate: null. */
using Comparable = std::variant<std::monostate, std::string_view, std::string, Integer, double, bool>;

std::string utf8(CMPIChar16 letter)
{
    std::string text;
    if (letter < 0x80) {
        return {static_cast<char>(letter)};
    }
    if (letter < 0x800) {
        return {static_cast<char>(0xc0 | letter >> 6), static_cast<char>(0x80 | (letter & 0x3f))};
    }
    return {static_cast<char>(0xe0 | letter >> 12), static_cast<char>(0x80 | (letter >> 6 & 0x3f)),
            static_cast<char>(0x80 | (letter & 0x3f))};
}

Comparable comparableOf(const CMPIData &data)
{
    if (isNull(data)) {
        return {};
    }
    switch (data.type) {
    case CMPI_boolean:
        return data.value.boolean != 0;
    case CMPI_char16:
        return utf8(data.value.char16);
    case CMPI_uint8:
        return Integer(std::uint64_t{data.value.uint8});
    case CMPI_uint16:
        return Integer(std::uint64_t{data.value.uint16});
    case CMPI_uint32:
        return Integer(std::uint64_t{data.value.uint32});
    case CMPI_uint64:
        return Integer(std::uint64_t{data.value.uint64});
    case CMPI_sint8:
        return Integer(std::int64_t{data.value.sint8});
    case CMPI_sint16:
        return Integer(std::int64_t{data.value.sint16});
    case CMPI_sint32:
        return Integer(std::int64_t{data.value.sint32});
    case CMPI_sint64:
        return Integer(std::int64_t{data.value.sint64});
    case CMPI_real32:
        return double{data.value.real32};
    case CMPI_real64:
        return data.value.real64;
    default:
        break;
    }
    if (const DateTime *dateTime = dateTimeOf(data); dateTime != nullptr) {
        // The form of a point in time depends on its zone: compared is the moment.
        return Integer(static_cast<std::int64_t>(dateTime->microseconds));
    }
    const String *string = stringOf(data);
    return string != nullptr ? Comparable(string->view()) : Comparable();
}

std::partial_ordering order(const Integer &left, const Integer &right)
{
    return std::visit(
        [](auto a, auto b) -> std::partial_ordering {
            return std::cmp_less(a, b)   ? std::partial_ordering::less
                   : std::cmp_less(b, a) ? std::partial_ordering::greater
                                         : std::partial_ordering::equivalent;
        },
        left, right);
}

double realOf(const Integer &number)
{
    return std::visit([](auto value) { return static_cast<double>(value); }, number);
}

/** Unordered when a side is null, or when the values can't be compared. */
std::partial_ordering order(const Comparable &left, const Comparable &right)
{
    const auto textOf = [](const Comparable &value) -> std::optional<std::string_view> {
        if (const auto *view = std::get_if<std::string_view>(&value)) {
            return *view;
        }
        const auto *text = std::get_if<std::string>(&value);
        return text != nullptr ? std::optional<std::string_view>(*text) : std::nullopt;
    };
    if (const auto a = textOf(left), b = textOf(right); a && b) {
        return *a <=> *b;
    }
    const auto *a = std::get_if<Integer>(&left);
    const auto *b = std::get_if<Integer>(&right);
    const auto *realA = std::get_if<double>(&left);
    const auto *realB = std::get_if<double>(&right);
    if (a != nullptr && b != nullptr) {
        return order(*a, *b);
    }
    if ((a != nullptr || realA != nullptr) && (b != nullptr || realB != nullptr)) {
        return (a != nullptr ? realOf(*a) : *realA) <=> (b != nullptr ? realOf(*b) : *realB);
    }
    const auto *truthA = std::get_if<bool>(&left);
    const auto *truthB = std::get_if<bool>(&right);
    if (truthA != nullptr && truthB != nullptr) {
        return *truthA <=> *truthB;
    }
    return std::partial_ordering::unordered;
}

/** "%" is any number of characters, "_" one byte or one character of UTF-8. */
bool isLike(std::string_view text, std::string_view pattern)
{
    const auto next = [](std::string_view of, std::size_t place) {
        do {
            ++place;
        } while (place < of.size() && (static_cast<unsigned char>(of[place]) & 0xc0u) == 0x80);
        return place;
    };
    std::size_t t = 0;
    std::size_t p = 0;
    std::size_t star = std::string_view::npos; // the last "%", and what of the text it has taken
    std::size_t taken = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '%') {
            star = p++;
            taken = t;
        } else if (p < pattern.size() && pattern[p] == '_') {
            t = next(text, t);
            ++p;
        } else if (p < pattern.size() && pattern[p] == text[t]) {
            ++t;
            ++p;
        } else if (star != std::string_view::npos) {
            taken = next(text, taken);
            t = taken;
            p = star + 1;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '%') {
        ++p;
    }
    return p == pattern.size();
}

bool holds(std::partial_ordering order, bool less, bool equal, bool greater)
{
    return (less && std::is_lt(order)) || (equal && std::is_eq(order)) || (greater && std::is_gt(order));
}

} // namespace

bool Query::bind(const cim::Class &klass, const cim::ClassRepository &classes, std::string &problem)
{
    for (const std::string &name : selected_) {
        if (klass.findProperty(name) == nullptr) {
            problem = noProperty(klass, name);
            return false;
        }
    }
    for (Node &node : nodes_) {
        if (node.kind == Node::Kind::test && !bindTest(node, klass, classes, problem)) {
            return false;
        }
    }
    return true;
}

Query::Family Query::familyOf(const cim::Property &property)
{
    if (property.isArray) {
        return Family::none;
    }
    switch (property.type) {
    case cim::Type::boolean:
        return Family::boolean;
    case cim::Type::string:
    case cim::Type::char16:
        return Family::text;
    case cim::Type::dateTime:
        return Family::dateTime;
    case cim::Type::reference:
    case cim::Type::none:
        return Family::none;
    default:
        return Family::number;
    }
}

/** What the operand is compared as; nothing, with what is wrong in problem, when the class has no such
 * property. */
std::optional<Query::Side> Query::sideOf(const Operand &operand, const cim::Class &klass,
                                         std::string &problem)
{
    if (const auto *name = std::get_if<PropertyName>(&operand)) {
        const cim::Property *property = klass.findProperty(name->name);
        if (property == nullptr) {
            problem = noProperty(klass, name->name);
            return std::nullopt;
        }
        return Side{familyOf(*property), property};
    }
    if (std::holds_alternative<std::string>(operand)) {
        return Side{Family::text, nullptr};
    }
    return Side{std::holds_alternative<bool>(operand) ? Family::boolean : Family::number, nullptr};
}

/** A text beside a date is a date. */
bool Query::bindDate(Operand &operand, Side &side, const cim::Property &beside, std::string &problem)
{
    const auto *text = std::get_if<std::string>(&operand);
    if (text == nullptr) {
        return true;
    }
    std::uint64_t microseconds = 0;
    bool isInterval = false;
    if (!parseDateTime(*text, microseconds, isInterval)) {
        problem = "The value '" + text->substr(0, 100) + "' is not a datetime, as " + beside.name + " is.";
        return false;
    }
    operand = Integer(static_cast<std::int64_t>(microseconds));
    side.family = Family::dateTime;
    return true;
}

bool Query::bindTest(Node &node, const cim::Class &klass, const cim::ClassRepository &classes,
                     std::string &problem)
{
    if (node.relation == Relation::isA) {
        const std::string &name = std::get<std::string>(node.second);
        node.isA = classes.find(name);
        if (node.isA == nullptr) {
            problem = "The class " + name + " does not exist.";
        }
        return node.isA != nullptr;
    }
    std::optional<Side> left = sideOf(node.first, klass, problem);
    if (!left || node.relation == Relation::isNull || node.relation == Relation::isNotNull) {
        return left.has_value();
    }
    std::optional<Side> right = sideOf(node.second, klass, problem);
    if (!right) {
        return false;
    }
    for (const Side &side : {*left, *right}) {
        if (side.family == Family::none) {
            problem = "The property " + side.property->name + " can only be tested for NULL.";
            return false;
        }
    }
    if ((left->family == Family::dateTime && !bindDate(node.second, *right, *left->property, problem)) ||
        (right->family == Family::dateTime && right->property != nullptr &&
         !bindDate(node.first, *left, *right->property, problem))) {
        return false;
    }
    if (left->family != right->family || (node.relation == Relation::like && left->family != Family::text)) {
        problem = "The query compares values of different types.";
        return false;
    }
    return true;
}

bool Query::admits(const Instance &instance) const
{
    return nodes_.empty() || truthOf(nodes_.size() - 1, instance) == Truth::isTrue;
}

Query::Truth Query::truthOf(std::size_t place, const Instance &instance) const
{
    const Node &node = nodes_[place];
    switch (node.kind) {
    case Node::Kind::conjunction:
        return std::min(truthOf(node.left, instance), truthOf(node.right, instance));
    case Node::Kind::disjunction:
        return std::max(truthOf(node.left, instance), truthOf(node.right, instance));
    case Node::Kind::negation: {
        const Truth inner = truthOf(node.left, instance);
        return inner == Truth::unknown ? inner : inner == Truth::isTrue ? Truth::isFalse : Truth::isTrue;
    }
    case Node::Kind::test:
        break;
    }
    return test(node, instance);
}

Query::Truth Query::test(const Node &node, const Instance &instance)
{
    const auto truth = [](bool is) { return is ? Truth::isTrue : Truth::isFalse; };
    if (node.relation == Relation::isA) {
        return truth(instance.klass->isA(*node.isA));
    }
    const auto valueOf = [&instance](const Operand &operand) -> Comparable {
        if (const auto *name = std::get_if<PropertyName>(&operand)) {
            return comparableOf(instance.values[instance.klass->placeOf(name->name)]);
        }
        if (const auto *text = std::get_if<std::string>(&operand)) {
            return std::string_view(*text);
        }
        if (const auto *integer = std::get_if<Integer>(&operand)) {
            return *integer;
        }
        if (const auto *real = std::get_if<double>(&operand)) {
            return *real;
        }
        const auto *boolean = std::get_if<bool>(&operand);
        return boolean != nullptr ? Comparable(*boolean) : Comparable();
    };
    if (node.relation == Relation::isNull || node.relation == Relation::isNotNull) {
        const auto &name = std::get<PropertyName>(node.first).name;
        const bool null = isNull(instance.values[instance.klass->placeOf(name)]);
        return truth(null == (node.relation == Relation::isNull));
    }
    const Comparable left = valueOf(node.first);
    const Comparable right = valueOf(node.second);
    if (std::holds_alternative<std::monostate>(left) || std::holds_alternative<std::monostate>(right)) {
        return Truth::unknown;
    }
    if (node.relation == Relation::like) {
        const auto *view = std::get_if<std::string_view>(&left);
        const std::string_view text = view != nullptr ? *view : std::string_view(std::get<std::string>(left));
        return truth(isLike(text, std::get<std::string_view>(right)));
    }
    const std::partial_ordering relation = order(left, right);
    switch (node.relation) {
    case Relation::equal:
        return truth(holds(relation, false, true, false));
    case Relation::notEqual:
        return truth(!holds(relation, false, true, false));
    case Relation::less:
        return truth(holds(relation, true, false, false));
    case Relation::lessOrEqual:
        return truth(holds(relation, true, true, false));
    case Relation::greater:
        return truth(holds(relation, false, false, true));
    default:
        return truth(holds(relation, false, true, true));
    }
}

} // namespace host
