// SPDX-License-Identifier: Apache-2.0
// What providers print: nowhere, or in a file that does not grow without end.
#ifndef HOST_CORE_PROVIDER_OUTPUT_H
#define HOST_CORE_PROVIDER_OUTPUT_H

#include <cstdint>
#include <string>

namespace host
{

/** The standard output of the process. */
class ProviderOutput
{
  public:
    /** From now on standard output goes to the end of the file; "": nowhere, and what
     * is printed fails without a word. What this program itself has to
     * say there goes to ownOutput(). False, with the reason in problem, on failure. */
    [[nodiscard]] bool redirect(const std::string &file, std::uint64_t bytes, std::string &problem);

    /** The standard output of the start. */
    int ownOutput() const
    {
        return ownOutput_;
    }

    /** Puts a file that has become too large aside, as FILE.1; to be called now and then. */
    void rotate();

  private:
    bool open(std::string &problem);

    std::string file_;
    std::uint64_t limit_ = 0;
    int ownOutput_ = 1;
};

} // namespace host

#endif
