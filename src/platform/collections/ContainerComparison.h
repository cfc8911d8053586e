/* Equality of containers, whatever they hold. */
#ifndef BQ_COLLECTIONS_CONTAINER_COMPARISON_H
#define BQ_COLLECTIONS_CONTAINER_COMPARISON_H

#include <BQ/BQBase.h>

namespace bq {

/*
 * Whether two containers are equal, of which `equalContents` compares what they hold. Containers
 * nested too deep are not equal. Ends in time even if parts are shared by many paths or hold what
 * holds them.
 */
bool compareContainers(BQTypeRef first, BQTypeRef second, bool (*equalContents)(BQTypeRef, BQTypeRef));

}  // namespace bq

#endif
