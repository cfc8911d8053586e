/* What differs between the two schema generations of SOAP 1.1. */
#ifndef VX_SOAP_GENERATION_H
#define VX_SOAP_GENERATION_H

#include <BQ/BQBase.h>

namespace vx {

struct Generation {
  const BQString* protocol;
  const BQString* schemaNamespace;
  const BQString* schemaInstanceNamespace;
  const BQString* encodingNamespace;
  const BQString* envelopeNamespace;
  const BQString* arrayItemType;
  const BQString* dateType;
  const BQString* dataType;
  bool declaresEncodingFirst; /* of the encoding and the envelope namespace */
  bool hasDocumentForm;
};

/* The generation of a protocol constant, recognised by identity; null for anything else. */
const Generation* generationOf(const BQString* protocol);

/* The namespace of methods that are given none. */
extern const BQString* const kPlaceholderMethodNamespace;

}  // namespace vx

#endif
