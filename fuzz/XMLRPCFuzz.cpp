/* Documents of XML-RPC. */
#include "Fuzz.h"

void fuzz::run(ByteReader input) {
  checkDocument(input, kVXXMLRPCProtocol, kVXXMLRPCProtocol);
}
