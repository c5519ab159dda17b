// SPDX-License-Identifier: Apache-2.0
// WS-Management (DSP0226) with its binding to CIM (DSP0227, DSP0230) as a front end of the dispatcher.
#ifndef HOST_WSMAN_WSMAN_H
#define HOST_WSMAN_WSMAN_H

#include "core/front_end.h"
#include "core/xml_text.h"
#include "wsman/exchange.h"

namespace host
{

struct WsmanOptions {
    XmlLimits xml;
    ContextLimits contexts;
    /** The beginning of the resource URIs of classes that are not CIM's own, where no client has told the
     * one it uses; with a slash at its end. */
    std::string vendorBase = "http://schemas.example.org/wbem/wscim/1/cim-schema/2/";
    /** What Identify says. */
    std::string vendor = "display-host";
    std::string version = "unknown";
    /** Of the open enumerations; tests have their own. */
    std::function<Contexts::Clock::time_point()> now = Contexts::Clock::now;
};

class WsmanFrontEnd final : public FrontEnd
{
  public:
    explicit WsmanFrontEnd(Dispatcher &dispatcher, const WsmanOptions &options = {});

    bool serves(std::string_view path) const override;
    bool takes(std::string_view mediaType) const override;
    HttpReply handle(const HttpRequest &request, TextBuffer &out) override;

    Contexts &contexts()
    {
        return service_.contexts;
    }

  private:
    const XmlLimits limits_;
    wsman::Service service_;
};

} // namespace host

#endif
