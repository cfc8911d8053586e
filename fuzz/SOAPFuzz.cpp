/* Documents of SOAP, whose generations read alike. */
#include "Fuzz.h"

void fuzz::run(ByteReader input) {
  checkDocument(input, kVXSOAP1999Protocol, kVXSOAP2001Protocol);
}
