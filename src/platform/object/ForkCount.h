/* Whether the process is still the one that made something: a child shares what it did not make. */
#ifndef BQ_OBJECT_FORK_COUNT_H
#define BQ_OBJECT_FORK_COUNT_H

#include <cstdint>

namespace bq {

/* How many forks lie between the process and the one that loaded the library. */
uint32_t forkCount();

}  // namespace bq

#endif
