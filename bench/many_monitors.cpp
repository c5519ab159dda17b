// SPDX-License-Identifier: Apache-2.0
// many-monitors COUNT CONFIG: COUNT monitors on loopback addresses until standard input ends, and the file of
// monitors for displayctl, which is there when they answer. For measures; tests have the same in their own
// process.
#include "monitors.h"

#include <sys/resource.h>

#include <charconv>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <string>

namespace
{

/** One socket for each monitor, and as many connections. */
void allowManyFiles()
{
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}

} // namespace

int main(int argc, char **argv)
{
    unsigned count = 0;
    const std::string_view text = argc == 3 ? argv[1] : "";
    if (std::from_chars(text.data(), text.data() + text.size(), count).ec != std::errc{} || count < 1 ||
        count > 60'000) {
        std::cerr << "usage: many-monitors COUNT CONFIG, with 1 to 60000 monitors\n";
        return 2;
    }
    allowManyFiles();
    try {
        responder::Monitors monitors{MONITOR_DATA_DIR};
        const std::vector<std::string> addresses = responder::loopbackAddresses(count);
        const responder::Responder server{
            addresses, [&](const responder::Request &request) { return monitors.answer(request); }};
        const std::string config = argv[2];
        {
            std::ofstream file{config + ".new"};
            file << "monitors:\n";
            for (std::size_t i = 0; i < addresses.size(); ++i) {
                file << "  m" << i << ": { url: \"http://" << addresses[i] << ':' << server.port()
                     << "\" }\n";
            }
        }
        if (std::rename((config + ".new").c_str(), config.c_str()) != 0) {
            std::cerr << "many-monitors: " << config << " cannot be written\n";
            return 1;
        }
        while (std::cin.get() != std::char_traits<char>::eof()) {
        }
    } catch (const std::exception &problem) {
        std::cerr << "many-monitors: " << problem.what() << '\n';
        return 1;
    }
}
