/* How values are written where the library's own way would lose something or trouble clients. */
#ifndef VXSERVE_WIRE_FORMS_H
#define VXSERVE_WIRE_FORMS_H

#include <VX/VXProtocolHandler.h>

namespace tools::vxserve {

/* Doubles with all their digits; dates without a zone, which few clients read; null as a string. */
void setXMLRPCForms(VXProtocolHandlerRef handler);

/* Doubles with all their digits; null by the attribute of the generation of XML Schema. */
void setSOAPForms(VXProtocolHandlerRef handler, bool isOf1999);

}  // namespace tools::vxserve

#endif
