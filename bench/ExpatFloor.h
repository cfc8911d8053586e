/* The least that any reader on top of expat has to do: parse the bytes, and ignore what is in them. */
#ifndef BENCH_EXPAT_FLOOR_H
#define BENCH_EXPAT_FLOOR_H

#include <string_view>

namespace bench {

/* Parses a document with handlers that do nothing; false if it is not well-formed. */
bool parseWithExpat(std::string_view document);

}  // namespace bench

#endif
