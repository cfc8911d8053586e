/* How much a message may still make the reader do through references. */
#ifndef VX_SOAP_REFERENCE_BUDGET_H
#define VX_SOAP_REFERENCE_BUDGET_H

namespace vx {

/*
 * One for a whole message: each of its bodies and methods could spend one of its own. Elements count
 * whenever they are read through a reference; bytes only from the second reference to an element on,
 * for the first reading of each cannot exceed the document.
 */
struct ReferenceBudget {
  long elements = 1000000;
  long repeatedBytes = 64L << 20;
};

}  // namespace vx

#endif
