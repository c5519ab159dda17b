// CIM-XML over HTTP (DSP0200, DSP0201) as a front end of the dispatcher.
#ifndef DESK_HOST_CIMXML_H
#define DESK_HOST_CIMXML_H

#include "cimxml_writer.h"
#include "dispatcher.h"
#include "front_end.h"
#include "xml_text.h"

namespace host
{

class CimXmlFrontEnd final : public FrontEnd
{
  public:
    explicit CimXmlFrontEnd(Dispatcher &dispatcher, const XmlLimits &limits = {});

    bool serves(std::string_view path) const override;
    HttpReply handle(Session &session, std::string_view principal) override;

  private:
    Dispatcher &dispatcher_;
    XmlLimits limits_;
    FragmentCache fragments_;
};

} // namespace host

#endif
