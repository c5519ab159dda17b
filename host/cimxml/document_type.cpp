// SPDX-License-Identifier: Apache-2.0
#include "cimxml/document_type.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <string_view>

namespace host
{
namespace
{

using pugi::xml_node;

/** How the children of an element stand. */
enum class Order {
    any,
    listed, // in the order of the rule
    text,   // there is text instead of elements
    open,   // not looked at
};

constexpr std::size_t many = static_cast<std::size_t>(-1);

/** The words of a text that has a blank after each; taken apart by the compiler. */
class Words
{
  public:
    static constexpr std::size_t most = 15;

    consteval Words(std::string_view text)
    {
        for (std::size_t begin = 0; begin < text.size(); begin = text.find(' ', begin) + 1) {
            words_[count_++] = text.substr(begin, text.find(' ', begin) - begin);
        }
    }
    consteval Words(const char *text) : Words(std::string_view(text)) {}

    constexpr std::size_t count() const
    {
        return count_;
    }
    constexpr std::string_view operator[](std::size_t place) const
    {
        return words_[place];
    }
    /** The place of a word; npos when it is not there. */
    constexpr std::size_t placeOf(std::string_view word) const
    {
        for (std::size_t i = 0; i < count_; ++i) {
            if (words_[i] == word) {
                return i;
            }
        }
        return std::string_view::npos;
    }

  private:
    std::array<std::string_view, most> words_;
    std::size_t count_ = 0;
};

struct Rule {
    std::string_view element;
    Words required; // attributes
    Words optional;
    Words children; // elements
    std::size_t atLeast = 0;
    std::size_t atMost = many;
    Order order = Order::any;
};

#define OBJECT_ATTRIBUTES "CLASSORIGIN PROPAGATED EmbeddedObject EMBEDDEDOBJECT MODIFIED "
#define ANY_VALUE "VALUE VALUE.NULL VALUE.ARRAY VALUE.REFERENCE VALUE.REFARRAY "
#define ANY_PATH "CLASSPATH LOCALCLASSPATH CLASSNAME INSTANCEPATH LOCALINSTANCEPATH INSTANCENAME "
#define DECLARATIONS "CLASS INSTANCE VALUE.NAMEDINSTANCE QUALIFIER.DECLARATION "

constexpr Rule rules[] = {
    {"CIM", "CIMVERSION DTDVERSION ", "", "MESSAGE ", 1, 1},
    {"MESSAGE", "ID PROTOCOLVERSION ", "", "SIMPLEREQ ", 1, 1},
    {"SIMPLEREQ", "", "", "CORRELATOR IMETHODCALL METHODCALL ", 1, many, Order::listed},
    {"CORRELATOR", "NAME TYPE ", "", "VALUE ", 1, 1},
    {"IMETHODCALL", "NAME ", "", "LOCALNAMESPACEPATH IPARAMVALUE ", 1, many, Order::listed},
    {"METHODCALL", "NAME ", "", "LOCALINSTANCEPATH LOCALCLASSPATH PARAMVALUE ", 1, many, Order::listed},
    // compat: null values are sent as VALUE.NULL, too, where the document type has no element at all.
    {"IPARAMVALUE", "NAME ", "", ANY_VALUE ANY_PATH DECLARATIONS, 0, 1},
    {"PARAMVALUE", "NAME ", "PARAMTYPE EmbeddedObject EMBEDDEDOBJECT ", ANY_VALUE ANY_PATH DECLARATIONS, 0,
     1},
    {"LOCALNAMESPACEPATH", "", "", "NAMESPACE ", 1},
    {"NAMESPACE", "NAME ", "", "", 0, 0},
    {"NAMESPACEPATH", "", "", "HOST LOCALNAMESPACEPATH ", 2, 2, Order::listed},
    {"HOST", "", "", "", 0, 0, Order::text},
    {"LOCALCLASSPATH", "", "", "LOCALNAMESPACEPATH CLASSNAME ", 2, 2, Order::listed},
    {"CLASSPATH", "", "", "NAMESPACEPATH CLASSNAME ", 2, 2, Order::listed},
    {"LOCALINSTANCEPATH", "", "", "LOCALNAMESPACEPATH INSTANCENAME ", 2, 2, Order::listed},
    {"INSTANCEPATH", "", "", "NAMESPACEPATH INSTANCENAME ", 2, 2, Order::listed},
    {"CLASSNAME", "NAME ", "", "", 0, 0},
    {"INSTANCENAME", "CLASSNAME ", "", "KEYBINDING KEYVALUE VALUE.REFERENCE "},
    {"KEYBINDING", "NAME ", "", "KEYVALUE VALUE.REFERENCE ", 1, 1},
    {"KEYVALUE", "", "VALUETYPE TYPE ", "", 0, 0, Order::text},
    {"VALUE", "", "TYPE ", "", 0, 0, Order::text},
    {"VALUE.NULL", "", "", "", 0, 0},
    {"VALUE.ARRAY", "", "TYPE ", "VALUE VALUE.NULL "},
    {"VALUE.REFERENCE", "", "TYPE ", ANY_PATH, 1, 1},
    {"VALUE.REFARRAY", "", "TYPE ", "VALUE.REFERENCE VALUE.NULL "},
    {"VALUE.NAMEDINSTANCE", "", "", "INSTANCENAME INSTANCE ", 2, 2, Order::listed},
    {"INSTANCE", "CLASSNAME ", "", "QUALIFIER PROPERTY PROPERTY.ARRAY PROPERTY.REFERENCE "},
    {"QUALIFIER", "NAME TYPE ", "PROPAGATED OVERRIDABLE TOSUBCLASS TOINSTANCE TRANSLATABLE ",
     "VALUE VALUE.ARRAY ", 0, 1},
    {"PROPERTY", "NAME TYPE ", OBJECT_ATTRIBUTES, "QUALIFIER VALUE "},
    {"PROPERTY.ARRAY", "NAME TYPE ", OBJECT_ATTRIBUTES "ARRAYSIZE ", "QUALIFIER VALUE.ARRAY "},
    {"PROPERTY.REFERENCE", "NAME ", OBJECT_ATTRIBUTES "REFERENCECLASS ", "QUALIFIER VALUE.REFERENCE "},
    {"CLASS", "", "", "", 0, many, Order::open},
    {"QUALIFIER.DECLARATION", "", "", "", 0, many, Order::open},
};

/** The rules of the elements that may stand in those of each rule, in the same order. */
using ChildRules = std::array<std::array<const Rule *, Words::most>, std::size(rules)>;

consteval ChildRules makeChildRules()
{
    ChildRules all{};
    for (std::size_t i = 0; i < all.size(); ++i) {
        const Words &children = rules[i].children;
        for (std::size_t place = 0; place < children.count(); ++place) {
            all[i][place] = std::ranges::find(rules, children[place], &Rule::element);
        }
    }
    return all;
}

constexpr ChildRules childRules = makeChildRules();

constexpr bool haveRules(const ChildRules &all)
{
    return std::ranges::all_of(all, [](const auto &children) {
        return std::ranges::find(children, std::end(rules)) == children.end();
    });
}
static_assert(haveRules(childRules), "an element that may stand in another has a rule");

bool hasValidAttributes(const xml_node &node, const Rule &rule)
{
    std::size_t found = 0;
    for (pugi::xml_attribute attribute = node.first_attribute(); attribute;
         attribute = attribute.next_attribute()) {
        const std::string_view name = attribute.name();
        if (rule.required.placeOf(name) != std::string_view::npos) {
            ++found;
        } else if (!name.starts_with("xml") && rule.optional.placeOf(name) == std::string_view::npos) {
            return false;
        }
    }
    return found == rule.required.count();
}

bool isBlank(std::string_view text)
{
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

bool isValid(const xml_node &node, const Rule &rule)
{
    if (rule.order == Order::open) {
        return true;
    }
    if (!hasValidAttributes(node, rule)) {
        return false;
    }
    const auto &rulesOfChildren = childRules[static_cast<std::size_t>(&rule - rules)];
    std::size_t count = 0;
    std::size_t last = 0;
    for (xml_node child = node.first_child(); child; child = child.next_sibling()) {
        if (child.type() == pugi::node_element) {
            const std::size_t place = rule.children.placeOf(child.name());
            if (place == std::string_view::npos || ++count > rule.atMost ||
                (rule.order == Order::listed && place < last) || !isValid(child, *rulesOfChildren[place])) {
                return false;
            }
            last = place;
        } else if (rule.order != Order::text && !isBlank(child.value())) {
            return false;
        }
    }
    return count >= rule.atLeast;
}

std::size_t countOf(const xml_node &node, std::string_view name)
{
    std::size_t count = 0;
    for (xml_node child = node.first_child(); child; child = child.next_sibling()) {
        count += child.name() == name ? 1u : 0u;
    }
    return count;
}

} // namespace

bool isValidRequest(const xml_node &cim)
{
    if (cim.name() != rules[0].element || !isValid(cim, rules[0])) {
        return false;
    }
    const xml_node request = cim.child("MESSAGE").child("SIMPLEREQ");
    const std::size_t intrinsic = countOf(request, "IMETHODCALL");
    const std::size_t extrinsic = countOf(request, "METHODCALL");
    if (intrinsic + extrinsic != 1) {
        return false; // a second call would get no answer
    }
    if (intrinsic == 1) {
        return countOf(request.child("IMETHODCALL"), "LOCALNAMESPACEPATH") == 1;
    }
    const xml_node call = request.child("METHODCALL");
    return countOf(call, "LOCALINSTANCEPATH") + countOf(call, "LOCALCLASSPATH") == 1;
}

} // namespace host
