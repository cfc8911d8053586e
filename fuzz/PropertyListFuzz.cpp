/* Property lists, and the values in them written in every form and read back. */
#include "Fuzz.h"

void fuzz::run(ByteReader input) {
  auto document = makeData(input.rest());
  auto value = resultOf<BQString>(BQPropertyListCreateFromXMLData, document.get());
  if (value == nullptr) return;
  auto written = own(BQPropertyListCreateXMLData(value.get()));
  check(BQEqual(resultOf<BQString>(BQPropertyListCreateFromXMLData, written.get()).get(), value.get()));
  for (const BQString* protocol : {kVXXMLRPCProtocol, kVXSOAP1999Protocol, kVXSOAP2001Protocol})
    checkRoundTrip(protocol, makePortable(value.get()).get());
}
