/* The hash of texts. */
#ifndef BQ_TEXT_STRING_HASH_H
#define BQ_TEXT_STRING_HASH_H

#include <cstdint>
#include <string_view>

namespace bq {

/*
 * Keyed with a seed that differs from process to process, so that a peer who chooses names cannot
 * make them collide (SipHash-1-3).
 */
uint64_t hashText(std::string_view text);

}  // namespace bq

#endif
