// SPDX-License-Identifier: Apache-2.0
// Paths and values as text, for messages and logs.
#include "cmpi/objects.h"

#include <cstdio>
#include <string>

namespace host
{

namespace
{

/** A text that grows in an arena. */
class TextBuilder
{
  public:
    explicit TextBuilder(Arena &arena) : text_(arena) {}

    void add(std::string_view text, bool quoted = false)
    {
        if (quoted) {
            text_.append('"');
        }
        for (const char letter : text) {
            if (quoted && (letter == '"' || letter == '\\')) {
                text_.append('\\');
            }
            text_.append(letter);
        }
        if (quoted) {
            text_.append('"');
        }
    }

    String *finish()
    {
        return makeString(text_.arena(), {text_.begin(), text_.size()});
    }

  private:
    ArenaList<char> text_;
};

void addData(TextBuilder &text, const CMPIData &data, bool quoted);

void addPath(TextBuilder &text, const Path &path)
{
    if (path.host != nullptr) {
        text.add("//");
        text.add(path.host->view());
        text.add("/");
    }
    if (path.nameSpace != nullptr) {
        text.add(path.nameSpace->view());
        text.add(":");
    }
    text.add(path.className->view());
    char separator[] = ".";
    for (const NamedValue &key : *path.keys) {
        text.add(separator);
        separator[0] = ',';
        text.add(key.name->view());
        text.add("=");
        addData(text, key.data, true);
    }
}

void addInstance(TextBuilder &text, const Instance &instance)
{
    text.add("instance of ");
    text.add(instance.klass->name);
    text.add(" {");
    for (std::size_t i = 0; i < instance.klass->properties.size(); ++i) {
        text.add(" ");
        text.add(instance.klass->properties[i].name);
        text.add(" = ");
        addData(text, instance.values[i], true);
        text.add(";");
    }
    text.add(" }");
}

void addScalar(TextBuilder &text, const CMPIData &data, bool quoted)
{
    NumberText buffer;
    if (const std::string_view number = numberText(data, buffer); !number.empty()) {
        return text.add(number);
    }
    switch (data.type) {
    case CMPI_boolean:
        return text.add(data.value.boolean != 0 ? "TRUE" : "FALSE");
    case CMPI_char16:
        return text.add(std::to_string(data.value.char16));
    case CMPI_string:
        return text.add(stringOf(data)->view(), quoted);
    case CMPI_dateTime:
        return text.add(dateTimeOf(data)->text, quoted);
    case CMPI_ref: {
        const Path &path = *pathOf(data);
        return quoted ? text.add(pathText(*path.arena, path)->view(), true) : addPath(text, path);
    }
    case CMPI_instance:
        return addInstance(text, *instanceOf(data));
    default: {
        char type[24];
        std::snprintf(type, sizeof type, "(type 0x%x)", static_cast<unsigned>(data.type));
        return text.add(type);
    }
    }
}

void addData(TextBuilder &text, const CMPIData &data, bool quoted)
{
    if (isNull(data)) {
        text.add("NULL");
        return;
    }
    if ((data.type & CMPI_ARRAY) == 0) {
        addScalar(text, data, quoted);
        return;
    }
    const Array &array = *arrayOf(data);
    text.add("{");
    for (CMPICount i = 0; i < array.size; ++i) {
        text.add(i == 0 ? "" : ", ");
        addData(text, array.elements[i], true);
    }
    text.add("}");
}

} // namespace

String *pathText(Arena &arena, const Path &path)
{
    TextBuilder text(arena);
    addPath(text, path);
    return text.finish();
}

String *valueText(Arena &arena, const CMPIData &data)
{
    TextBuilder text(arena);
    addData(text, data, false);
    return text.finish();
}

} // namespace host
