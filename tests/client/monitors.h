// SPDX-License-Identifier: Apache-2.0
// Many monitors in one process: each address answers as a desk monitor did when its answers were recorded,
// and keeps the luminance that it is given.
#ifndef TESTS_CLIENT_MONITORS_H
#define TESTS_CLIENT_MONITORS_H

#include "responder.h"

#include <filesystem>
#include <map>
#include <string>
#include <utility>

namespace responder
{

/** How other object managers tell the same. */
enum class Manner {
    asRecorded,
    different, // properties and keys from the last to the first, more of them that are null, dates with
               // +00:00, no types
};

/** Answers EnumerateInstances of the recorded classes, and SetDisplayLuminance. For one responder. */
class Monitors
{
  public:
    /** directory: with one recorded answer for each class. */
    explicit Monitors(const std::filesystem::path &directory, Manner manner = Manner::asRecorded);

    [[nodiscard]] Reply answer(const Request &request);

  private:
    [[nodiscard]] Reply setLuminance(const Request &request);

    std::map<std::string, std::string> recorded_;                         // by class
    std::map<std::string, Reply> replies_;                                // of all that were not changed
    std::map<std::string, std::map<std::string, std::string>> luminance_; // by address, by InstanceID
};

} // namespace responder

#endif
