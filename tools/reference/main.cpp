// SPDX-License-Identifier: Apache-2.0
// make-reference FILE...            writes each file, as Markdown or HTML by its suffix, .md or .html
// make-reference --check FILE...    tells whether the files are as they would be written

#include "content.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

// The test support keeps what the library prints; here it goes nowhere.
namespace test_support
{

std::string traceText()
{
    return "";
}

void forgetTrace() {}

} // namespace test_support

namespace
{

struct File {
    std::filesystem::path path;
    std::string content;
};

bool isPage(const std::filesystem::path &path)
{
    return path.extension() == ".md" || path.extension() == ".html";
}

bool write(const File &file)
{
    std::ofstream stream(file.path, std::ios::binary);
    if (stream << file.content << std::flush) {
        return true;
    }
    fprintf(stderr, "cannot write %s\n", file.path.c_str());
    return false;
}

/** Compares a file with what it should hold, and shows the first line that differs. */
bool isCurrent(const File &file)
{
    std::ifstream stream(file.path, std::ios::binary);
    std::stringstream is(std::string(std::istreambuf_iterator<char>(stream), {}));
    std::stringstream shall(file.content);
    if (is.str() == file.content) {
        return true;
    }
    std::string isLine, shallLine;
    int number = 0;
    do {
        ++number;
        isLine = shallLine = "(no more lines)";
        std::getline(is, isLine);
        std::getline(shall, shallLine);
    } while (isLine == shallLine && is && shall);
    fprintf(stderr,
            "%s is not what the library answers now. Line %d is\n  %s\nand should be\n  %s\n"
            "Renew it with: cmake --build <build directory> --target reference\n",
            file.path.c_str(), number, isLine.c_str(), shallLine.c_str());
    return false;
}

} // namespace

int main(int argc, char **argv)
{
    constexpr const char *usage =
        "usage: make-reference [--check] FILE...    each FILE ends in .md or .html\n";
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments == std::vector<std::string>{"--help"} ||
        arguments == std::vector<std::string>{"--version"}) {
        fputs(arguments[0] == "--help" ? usage : "make-reference " VERSION "\n", stdout);
        return 0;
    }
    const bool check = !arguments.empty() && arguments[0] == "--check";
    const std::vector<std::filesystem::path> paths(arguments.begin() + (check ? 1 : 0), arguments.end());
    if (paths.empty() || !std::all_of(paths.begin(), paths.end(), isPage)) {
        fputs(usage, stderr);
        return 2;
    }
    if (!freopen("/dev/null", "w", stdout)) {
        perror("/dev/null");
        return 2;
    }
    const reference::Document document = reference::referencePage();
    // The test support expects things of the library and of its callers on the way.
    const testing::TestResult &expectations = testing::UnitTest::GetInstance()->ad_hoc_test_result();
    for (int i = 0; i < expectations.total_part_count(); ++i) {
        fprintf(stderr, "%s\n", expectations.GetTestPartResult(i).message());
    }
    if (expectations.Failed()) {
        return 2;
    }
    bool right = true;
    for (const std::filesystem::path &path : paths) {
        const File file = {path, path.extension() == ".md" ? reference::markdown(document)
                                                           : reference::html(document)};
        right &= check ? isCurrent(file) : write(file);
    }
    return right ? 0 : 1;
}
