// SPDX-License-Identifier: Apache-2.0
// CIM-XML over HTTP (DSP0200, DSP0201) as a front end of the dispatcher.
#ifndef HOST_CIMXML_CIMXML_H
#define HOST_CIMXML_CIMXML_H

#include "cimxml/writer.h"
#include "core/contexts.h"
#include "core/dispatcher.h"
#include "core/front_end.h"
#include "core/xml_text.h"

namespace host
{

class CimXmlFrontEnd final : public FrontEnd
{
  public:
    explicit CimXmlFrontEnd(Dispatcher &dispatcher, const XmlLimits &limits = {},
                            const ContextLimits &contextLimits = {});

    bool serves(std::string_view path) const override;
    bool takes(std::string_view mediaType) const override;
    HttpReply handle(const HttpRequest &request, TextBuffer &out) override;

  private:
    void answer(const CimXmlMessage &message, Arena &arena, TextBuffer &out);

    Dispatcher &dispatcher_;
    XmlLimits limits_;
    FragmentCache fragments_;
    Contexts contexts_;
};

} // namespace host

#endif
