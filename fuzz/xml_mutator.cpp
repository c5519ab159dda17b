// SPDX-License-Identifier: Apache-2.0
// Mutates the tree of an XML document instead of its bytes, so that what comes out can still be read: most
// changes of single bytes end at the parser. Whatever stands before the first '<' of a message is left to the
// usual mutations.
#include "choices.h"
#include "fuzz.h"
#include "http_message.h"

#include <pugixml.hpp>

#include <cstring>
#include <iterator>
#include <random>
#include <sstream>
#include <vector>

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size, std::size_t most,
                                               unsigned seed);

namespace
{

using Random = std::minstd_rand;

constexpr const char *values[] = {"",
                                  " ",
                                  "0",
                                  "1",
                                  "-1",
                                  "2",
                                  "7",
                                  "127",
                                  "128",
                                  "255",
                                  "256",
                                  "32767",
                                  "32768",
                                  "65535",
                                  "65536",
                                  "2147483647",
                                  "-2147483648",
                                  "2147483648",
                                  "4294967295",
                                  "4294967296",
                                  "9223372036854775807",
                                  "9223372036854775808",
                                  "18446744073709551615",
                                  "18446744073709551616",
                                  "-9223372036854775808",
                                  "1.5",
                                  "1e400",
                                  "-1e-400",
                                  "nan",
                                  "inf",
                                  "0x10",
                                  "010",
                                  "TRUE",
                                  "false",
                                  "true ",
                                  "NULL",
                                  "20260131000000.000000+000",
                                  "00000001000000.000000:000",
                                  "uint8",
                                  "sint64",
                                  "string",
                                  "reference",
                                  "datetime",
                                  "real32",
                                  "boolean",
                                  "char16",
                                  "instance",
                                  "object",
                                  "Test_Thing",
                                  "Test_SpecialThing",
                                  "Test_Faulty",
                                  "Test_ThingPair",
                                  "CIM_System",
                                  "root",
                                  "cimv2",
                                  "interop",
                                  "__namespace",
                                  "SELECT * FROM Test_Thing WHERE Level > 5",
                                  "DMTF:CQL",
                                  "WQL",
                                  "DMTF:FQL",
                                  "Level = 3 AND Label LIKE 'a%'",
                                  "@CONTEXT@",
                                  "PT5S",
                                  "P1Y",
                                  "\xc3\xbc",
                                  "\xf0\x9f\x96\xa5",
                                  "<&>\"'",
                                  "]]>",
                                  "&#x10FFFF;"};

template <typename List>
auto &oneOf(const List &list, Random &random)
{
    return list[random() % std::size(list)];
}

struct Collected {
    std::vector<pugi::xml_node> elements;
    std::vector<pugi::xml_attribute> attributes;
};

void collect(pugi::xml_node node, Collected &into)
{
    for (pugi::xml_node child : node.children()) {
        if (child.type() == pugi::node_element) {
            into.elements.push_back(child);
            for (const pugi::xml_attribute attribute : child.attributes()) {
                into.attributes.push_back(attribute);
            }
        }
        collect(child, into);
    }
}

/** A text for an attribute or an element: one that stands in the document, or one that is often wrong
 * somewhere. */
std::string someText(const Collected &all, Random &random)
{
    if (!all.attributes.empty() && random() % 4 == 0) {
        return oneOf(all.attributes, random).value();
    }
    if (random() % 16 == 0) {
        return std::string(random() % 5000, static_cast<char>('a' + random() % 26));
    }
    return oneOf(values, random);
}

void changeElement(pugi::xml_node element, const Collected &all, Random &random)
{
    pugi::xml_node other = oneOf(all.elements, random);
    pugi::xml_node parent = element.parent();
    switch (random() % 7) {
    case 0:
        parent.remove_child(element);
        break;
    case 1:
        for (auto times = random() % 8 + 1; times > 0; --times) {
            parent.insert_copy_after(element, element);
        }
        break;
    case 2:
        other.append_copy(element);
        break;
    case 3:
        other.prepend_copy(element);
        break;
    case 4:
        element.set_name(other.name());
        break;
    case 5:
        element.remove_children();
        break;
    default:
        parent.insert_copy_before(other, element);
        break;
    }
}

void changeAttribute(pugi::xml_node element, const Collected &all, Random &random)
{
    if (all.attributes.empty()) {
        return;
    }
    const pugi::xml_attribute other = oneOf(all.attributes, random);
    if (element.attribute(other.name()).empty()) {
        element.append_attribute(other.name()) = other.value();
    } else if (random() % 4 == 0) {
        element.remove_attribute(other.name());
    } else {
        element.attribute(other.name()) = someText(all, random).c_str();
    }
}

void change(pugi::xml_document &document, Random &random)
{
    Collected all;
    collect(document, all);
    if (all.elements.empty()) {
        return;
    }
    pugi::xml_node element = oneOf(all.elements, random);
    switch (random() % 4) {
    case 0:
        changeElement(element, all, random);
        break;
    case 1:
        changeAttribute(element, all, random);
        break;
    case 2:
        if (!all.attributes.empty()) {
            pugi::xml_attribute(oneOf(all.attributes, random)).set_value(someText(all, random).c_str());
        }
        break;
    default:
        element.text().set(someText(all, random).c_str());
        break;
    }
}

struct Part {
    std::size_t begin;
    std::size_t end;
};

/** The place of one of the documents in the input; nothing when it has none. */
Part documentIn(std::string_view input, Random &random)
{
    std::vector<Part> parts;
    for (std::size_t at = 0; at <= input.size();) {
        const std::size_t end = std::min(input.find(fuzz::separator, at), input.size());
        const std::size_t begin = input.find('<', at);
        if (begin < end) {
            parts.push_back({begin, end});
        }
        at = end + fuzz::separator.size();
    }
    return parts.empty() ? Part{0, 0} : oneOf(parts, random);
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size, std::size_t most,
                                               unsigned seed)
{
    Random random(seed);
    const std::string input(fuzz::textOf(data, size));
    const Part part = documentIn(input, random);
    pugi::xml_document document;
    if (random() % 4 == 0 || part.begin == part.end ||
        !document.load_buffer(input.data() + part.begin, part.end - part.begin, pugi::parse_full)) {
        return LLVMFuzzerMutate(data, size, most);
    }
    for (auto times = random() % 3 + 1; times > 0; --times) {
        change(document, random);
    }
    std::ostringstream changed;
    document.save(changed, "", pugi::format_raw | pugi::format_no_declaration);
    const std::string result = input.substr(0, part.begin) + changed.str() + input.substr(part.end);
    if (result.size() > most) {
        return LLVMFuzzerMutate(data, size, most);
    }
    std::memcpy(data, result.data(), result.size());
    return result.size();
}
