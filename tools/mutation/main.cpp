// SPDX-License-Identifier: Apache-2.0
// mutations: chooses small faults for source files, tells them, and writes one of them into its file.
#include "mutation.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>

namespace
{

std::string readFile(const std::string &name)
{
    std::ifstream stream(name, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    if (stream.bad() || text.empty()) {
        throw CLI::ValidationError(name, "it cannot be read, or is empty");
    }
    return text;
}

std::string trimmed(const std::vector<std::string> &lines)
{
    std::string text;
    for (const std::string &line : lines) {
        text += (text.empty() ? "" : " | ") + line.substr(std::min(line.find_first_not_of(' '), line.size()));
    }
    std::ranges::replace(text, '\t', ' ');
    return text;
}

void print(const std::vector<mutation::Fault> &faults)
{
    std::size_t number = 0;
    for (const mutation::Fault &fault : faults) {
        std::printf("%zu\t%s\t%s:%zu\t%s\t%s\n", ++number, std::string(nameOf(fault.kind)).c_str(),
                    fault.file.c_str(), fault.line, trimmed(fault.before).c_str(),
                    trimmed(fault.after).c_str());
    }
}

} // namespace

int main(int argc, char **argv)
{
    CLI::App app(
        "Chooses small faults for source files. Prints number, kind, file:line, what stands there, what would.");
    std::size_t count = 100;
    std::uint32_t seed = 1;
    std::size_t apply = 0;
    std::string header;
    std::vector<std::string> files;
    app.add_option("--count", count, "How many")->capture_default_str();
    app.add_option("--seed", seed, "The same seed chooses the same faults")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    app.add_option("--apply", apply, "Write the fault of that number into its file instead");
    app.add_option("--header", header, "Its enumerators are exchanged for their neighbours")->required();
    app.add_option("files", files, "The sources")->required();
    app.set_version_flag("--version", "mutations " DISPLAY_VERSION);
    try {
        app.parse(argc, argv);
        const mutation::Neighbours neighbours = mutation::neighboursIn(readFile(header));
        std::vector<mutation::Fault> all;
        for (const std::string &file : files) {
            std::ranges::copy(mutation::faultsIn(file, readFile(file), neighbours), std::back_inserter(all));
        }
        const std::vector<mutation::Fault> chosen = mutation::choose(all, count, seed);
        if (apply == 0) {
            print(chosen);
            return 0;
        }
        if (apply > chosen.size()) {
            throw CLI::ValidationError("--apply", "there are " + std::to_string(chosen.size()) + " faults");
        }
        const mutation::Fault &fault = chosen[apply - 1];
        const std::string text = mutation::applied(fault, readFile(fault.file));
        std::ofstream(fault.file, std::ios::binary) << text;
    } catch (const CLI::ParseError &error) {
        const int code = app.exit(error);
        return code == 0 ? 0 : 2;
    }
    return 0;
}
