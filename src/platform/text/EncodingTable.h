/* The known encodings: their numbers, names and properties. */
#ifndef BQ_TEXT_ENCODING_TABLE_H
#define BQ_TEXT_ENCODING_TABLE_H

#include <BQ/BQString.h>

#include <span>
#include <string_view>

namespace bq {

struct EncodingRecord {
  BQStringEncoding number;
  /* Whether bytes below 0x80 are ASCII wherever they begin a character. */
  bool asciiSuperset;
  /* The preferred name in documents. */
  BQConstantString name;
  /* Further names in lower case, without hyphens and underscores, a space between two. */
  const char* aliases;
  /* The name in the C library, null if it is the preferred name. */
  const char* converterName;

  const char* converter() const { return converterName != nullptr ? converterName : name.bytes; }
};

/* The record of an encoding; null for a number that is none. */
const EncodingRecord* findEncoding(BQStringEncoding number);

/* The encoding of a name or alias, without regard to case; kBQStringEncodingInvalidId if there is none. */
BQStringEncoding findEncodingByName(std::string_view name);

/* Every known encoding, by ascending number. */
std::span<const EncodingRecord> allEncodings();

}  // namespace bq

#endif
