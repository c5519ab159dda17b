// SPDX-License-Identifier: Apache-2.0
#ifndef DISPLAYCTL_SITE_ERROR_H
#define DISPLAYCTL_SITE_ERROR_H

#include <stdexcept>

namespace displayctl::site
{

/** A call or a file that is not as it should be: the program says what() and ends with exit code 2. */
class Error : public std::runtime_error
{
  public:
    using std::runtime_error::runtime_error;
};

} // namespace displayctl::site

#endif
