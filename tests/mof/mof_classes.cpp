// SPDX-License-Identifier: Apache-2.0
#include "mof_classes.h"

#include "cim/mof_reader.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace mof
{
namespace
{

constexpr std::uint16_t chars = 0x1700; // CMPI_chars
constexpr std::uint16_t charsArray = 0x3700;

std::uint16_t declaredType(std::uint16_t cmpiType)
{
    const std::uint16_t string = static_cast<std::uint16_t>(cim::Type::string);
    if (cmpiType == chars) {
        return string;
    }
    return cmpiType == charsArray ? cim::cmpiType(cim::Type::string, true) : cmpiType;
}

std::string join(std::vector<std::string> names)
{
    std::sort(names.begin(), names.end());
    std::string result;
    for (const std::string &name : names) {
        result += (result.empty() ? "" : ", ") + name;
    }
    return "(" + result + ")";
}

/** Compares two sets of names; what says which set it is. */
std::string compare(const std::string &what, const std::vector<std::string> &declared,
                    const std::vector<std::string> &wanted)
{
    const std::string left = join(declared);
    const std::string right = join(wanted);
    return left == right ? "" : what + " are " + left + ", not " + right;
}

} // namespace

const cim::ClassRepository &deskClasses()
{
    static const cim::ClassRepository *const classes = [] {
        static cim::ClassRepository repository;
        const cim::MofResult result = cim::readMofFiles(repository, {MOF_DIR "/desk.mof"});
        for (const cim::MofMessage &message : result.messages) {
            std::fprintf(stderr, "%s\n", message.format().c_str());
        }
        if (!result.ok()) {
            std::abort();
        }
        return &repository;
    }();
    return *classes;
}

std::string fileText(const std::string &name)
{
    std::ifstream stream(MOF_DIR "/" + name, std::ios::binary);
    std::ostringstream text;
    if (!stream || !(text << stream.rdbuf())) {
        std::fprintf(stderr, "cannot read %s/%s\n", MOF_DIR, name.c_str());
        std::abort();
    }
    return text.str();
}

std::vector<std::string> registeredClasses()
{
    std::vector<std::string> names;
    std::istringstream lines(fileText("libcmpiDisplayManagement.reg"));
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("[") && line.ends_with("]")) {
            names.push_back(line.substr(1, line.size() - 2));
        }
    }
    return names;
}

std::string checkProperty(std::string_view className, std::string_view property, std::uint16_t cmpiType)
{
    const cim::Class *klass = deskClasses().find(className);
    if (klass == nullptr) {
        return "no class " + std::string(className);
    }
    const cim::Property *declared = klass->findProperty(property);
    if (declared == nullptr) {
        return "no property " + std::string(property) + " in " + std::string(className);
    }
    if (declared->name != property) {
        return "the property is spelled " + declared->name + ", not " + std::string(property);
    }
    if (declared->cmpiCode() != declaredType(cmpiType)) {
        char text[64];
        std::snprintf(text, sizeof text, " has CMPI type 0x%04x, not 0x%04x", declared->cmpiCode(), cmpiType);
        return std::string(className) + "." + declared->name + text;
    }
    return "";
}

std::string checkKeys(std::string_view className, const std::vector<std::string> &names)
{
    const cim::Class *klass = deskClasses().find(className);
    if (klass == nullptr) {
        return "no class " + std::string(className);
    }
    std::vector<std::string> declared;
    for (const cim::Property *key : deskClasses().keys(*klass)) {
        declared.push_back(key->name);
    }
    return compare("the keys of " + klass->name, declared, names);
}

std::string checkMethod(std::string_view className, std::string_view method, std::uint16_t cmpiReturnType,
                        const std::vector<std::string> &parameters)
{
    const cim::Class *klass = deskClasses().find(className);
    if (klass == nullptr) {
        return "no class " + std::string(className);
    }
    const cim::Method *declared = klass->findMethod(method);
    if (declared == nullptr) {
        return "no method " + std::string(method) + " in " + std::string(className);
    }
    if (declared->name != method) {
        return "the method is spelled " + declared->name + ", not " + std::string(method);
    }
    if (cim::cmpiType(declared->returnType, false) != cmpiReturnType) {
        return klass->name + "." + declared->name + " returns " + cim::typeName(declared->returnType);
    }
    std::vector<std::string> names;
    for (const cim::Parameter &parameter : declared->parameters) {
        if (parameter.isIn) {
            names.push_back(parameter.name);
        }
    }
    return compare("the parameters of " + klass->name + "." + declared->name, names, parameters);
}

std::string describe(const cim::Element &element)
{
    const std::string type =
        element.type == cim::Type::reference ? element.referenceClass + " REF" : cim::typeName(element.type);
    const std::string size = element.arraySize == 0 ? "" : std::to_string(element.arraySize);
    return type + " " + element.name + (element.isArray ? "[" + size + "]" : "");
}

std::string describe(const cim::Method &method)
{
    std::string parameters;
    for (const cim::Parameter &parameter : method.parameters) {
        parameters += (parameters.empty() ? "" : ", ") + std::string(parameter.isOut ? "out " : "") +
                      std::string(parameter.isIn || parameter.isOut ? "" : "neither ") + describe(parameter);
    }
    return std::string(cim::typeName(method.returnType)) + " " + method.name + "(" + parameters + ")";
}

} // namespace mof
