// SPDX-License-Identifier: Apache-2.0
// Writes displayctl's table of the monitor's classes from their definitions:
//
//   generate-model OUTPUT MOF-FILE...
//
// What the table holds is declared in client/model/facts.h.
#include "cim/mof_reader.h"
#include "cim/schema.h"

#include <charconv>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

namespace
{

constexpr std::string_view classPrefix = "ZT_Marovelton_";

std::string quoted(std::string_view text)
{
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            result += '\\';
        }
        result += c;
    }
    return result + "\"";
}

std::string textOf(const cim::Qualifiers &qualifiers, std::string_view name)
{
    const cim::Qualifier *qualifier = cim::findQualifier(qualifiers, name);
    return qualifier != nullptr && !qualifier->value.items.empty() ? qualifier->value.items.front() : "";
}

std::string numberOf(const cim::Qualifiers &qualifiers, std::string_view name)
{
    const std::string text = textOf(qualifiers, name);
    return text.empty() ? "std::nullopt" : text;
}

const char *boolean(bool value)
{
    return value ? "true" : "false";
}

class Writer
{
  public:
    explicit Writer(std::ostream &out) : out_(out) {}

    void writeClass(const cim::Class &klass)
    {
        const std::string id = klass.name.substr(classPrefix.size());
        std::string properties;
        for (const cim::Property &property : klass.properties) {
            properties += "    " + propertyRow(id, property) + ",\n";
        }
        std::string methods;
        for (const cim::Method &method : klass.methods) {
            if (!method.propagated) {
                methods += "    " + methodRow(id, method) + ",\n";
            }
        }
        out_ << "constexpr PropertyFacts properties" << id << "[] = {\n" << properties << "};\n";
        if (!methods.empty()) {
            out_ << "constexpr MethodFacts methods" << id << "[] = {\n" << methods << "};\n";
        }
        rows_ += "    {" + quoted(klass.name) + ", " + quoted(textOf(klass.qualifiers, "Description")) +
                 ", " + boolean(klass.isAssociation) + ", properties" + id + ", " +
                 (methods.empty() ? std::string("{}") : "methods" + id) + "},\n";
    }

    void writeClasses()
    {
        out_ << "constexpr ClassFacts classes[] = {\n" << rows_ << "};\n";
    }

  private:
    // The codes of a ValueMap as an array of their own; ranges ("3..7", "..") are no codes that have a name.
    std::string codes(const std::string &id, const cim::Qualifiers &qualifiers)
    {
        const cim::Qualifier *map = cim::findQualifier(qualifiers, "ValueMap");
        const cim::Qualifier *names = cim::findQualifier(qualifiers, "Values");
        std::string rows;
        for (std::size_t i = 0; map != nullptr && i < map->value.items.size(); ++i) {
            const std::string &text = map->value.items[i];
            int code = 0;
            const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), code);
            if (error == std::errc() && rest == text.data() + text.size()) {
                const bool named = names != nullptr && i < names->value.items.size();
                rows += "{" + text + ", " + quoted(named ? names->value.items[i] : "") + "}, ";
            }
        }
        if (rows.empty()) {
            return "{}";
        }
        out_ << "constexpr CodeName codes" << id << "[] = {" << rows << "};\n";
        return "codes" + id;
    }

    std::string propertyRow(const std::string &id, const cim::Property &property)
    {
        const cim::Qualifiers &q = property.qualifiers;
        return "{" + quoted(property.name) + ", " + quoted(cim::typeName(property.type)) + ", " +
               boolean(property.isArray) + ", " + boolean(property.isKey) + ", " +
               quoted(textOf(q, "Description")) + ", " + quoted(textOf(q, "PUnit")) + ", " +
               numberOf(q, "MinValue") + ", " + numberOf(q, "MaxValue") + ", " +
               codes(id + property.name, q) + ", " + quoted(textOf(q, "ModelCorrespondence")) + "}";
    }

    std::string methodRow(const std::string &id, const cim::Method &method)
    {
        std::string arguments;
        for (const cim::Parameter &parameter : method.parameters) {
            arguments += "    {" + quoted(parameter.name) + ", " + quoted(cim::typeName(parameter.type)) +
                         ", " + quoted(textOf(parameter.qualifiers, "Description")) + ", " +
                         codes(id + method.name + parameter.name, parameter.qualifiers) + "},\n";
        }
        if (!arguments.empty()) {
            out_ << "constexpr ArgumentFacts arguments" << id << method.name << "[] = {\n"
                 << arguments << "};\n";
        }
        return "{" + quoted(method.name) + ", " + quoted(textOf(method.qualifiers, "Description")) + ", " +
               (arguments.empty() ? std::string("{}") : "arguments" + id + method.name) + "}";
    }

    std::ostream &out_;
    std::string rows_;
};

} // namespace

int main(int argc, char **argv)
{
    if (argc < 3) {
        std::cerr << "usage: generate-model OUTPUT MOF-FILE...\n";
        return 2;
    }
    cim::ClassRepository classes;
    const cim::MofResult result = cim::readMofFiles(classes, std::vector<std::string>(argv + 2, argv + argc));
    for (const cim::MofMessage &message : result.messages) {
        std::cerr << message.format() << '\n';
    }
    if (!result.ok()) {
        return 1;
    }
    std::ofstream out(argv[1]);
    out << "// Written by generate-model from the class definitions; do not edit.\n"
           "#include \"model/facts.h\"\n\nnamespace displayctl::model {\n\nnamespace {\n\n";
    Writer writer(out);
    for (const cim::Class *klass : classes.all()) {
        if (klass->name.starts_with(classPrefix)) {
            writer.writeClass(*klass);
        }
    }
    writer.writeClasses();
    out << "\n} // namespace\n\nstd::span<const ClassFacts> allClasses() {\n    return classes;\n}\n\n"
           "} // namespace displayctl::model\n";
    out.close();
    if (!out) {
        std::cerr << "generate-model: cannot write " << argv[1] << '\n';
        return 1;
    }
    return 0;
}
