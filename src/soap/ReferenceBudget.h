/* How much a message may still read through references. */
#ifndef VX_SOAP_REFERENCE_BUDGET_H
#define VX_SOAP_REFERENCE_BUDGET_H

#include <BQ/BQBase.h>

namespace vx {

/*
 * Shared by all bodies and methods of a message. An element and its text cost the same whether a
 * repeated reference shares the value of the first one or reads the element again, because whoever
 * walks through the result meets the value each time. The first reference to an element costs no
 * text: all first readings together cannot exceed the document.
 */
struct ReferenceBudget {
  long elements = 1000000;
  long text = 64L << 20;
  /*
   * For reading elements again: everything that it looks at, weighted so that the cost is near the
   * memory of the new values. Each body adds kRereadingsOfBody times its own size.
   */
  long rereading = 1L << 20;
  /* What was spent first, a constant message; null while nothing is. */
  const BQString* spent = nullptr;

  static constexpr long kRereadingsOfBody = 20;
};

}  // namespace vx

#endif
