/* The public constants that are strings, which go into saved calls and printed results, with their texts. */
#ifndef SUPPORT_CONSTANTS_H
#define SUPPORT_CONSTANTS_H

#include <VX/VXConstants.h>

#include <utility>

namespace support {

inline const BQString* const kProtocols[] = {kVXXMLRPCProtocol, kVXSOAP1999Protocol, kVXSOAP2001Protocol};

inline const std::pair<const BQString*, const char*> kConstants[] = {
#include "EveryConstant.inc"
};

}  // namespace support

#endif
