// SPDX-License-Identifier: Apache-2.0
#include "cim/mof_reader.h"

#include "cim/mof_parser.h"

#include <algorithm>

namespace cim
{
namespace
{

template <typename Input>
MofResult readAll(ClassRepository &repository, const MofLimits &limits, Input input)
{
    MofParser reader(repository, limits);
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
    return readAll(repository, limits, [&](MofParser &reader) {
        for (const std::string &file : files) {
            reader.readFile(file);
        }
    });
}

MofResult readMofText(ClassRepository &repository, std::string_view text, const std::string &name,
                      const MofLimits &limits)
{
    return readAll(repository, limits, [&](MofParser &reader) { reader.readText(text, name); });
}

} // namespace cim
