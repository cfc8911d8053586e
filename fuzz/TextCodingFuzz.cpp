/* Base64, dates, integers and entities: any text reads, and what was written reads back. */
#include <algorithm>
#include <cmath>

#include "Fuzz.h"
#include "xml/Base64.h"
#include "xml/Entities.h"
#include "xml/ISODate.h"
#include "xml/Kinds.h"

namespace {

using namespace fuzz;

void checkBytes(const BQData* data) {
  for (int indent = -1; indent <= 9; ++indent) {
    auto text = own(vx::encodeBinaryData(data, indent));
    check(textOf(text.get()).size() == vx::base64Length(data, indent));
    check(BQEqual(own(vx::decodeBinaryData(textOf(text.get()))).get(), data));
  }
}

void checkBase64(std::string_view text) {
  std::string copy(text);
  auto fromBytes = own(vx::__BQPLDataDecode(copy.data(), copy.data() + copy.size()));
  check(viewOf(fromBytes.get()).size() <= copy.size() / 4 * 3 + 3);
  checkBytes(fromBytes.get());
}

/* Text that a date wrote, in whichever form, reads as the same second. */
void checkDate(std::string_view text) {
  std::string copy(text);
  auto date = own(vxCreateDateFromISO8601(reinterpret_cast<const unsigned char*>(copy.data()), copy.size()));
  BQAbsoluteTime time = BQDateGetAbsoluteTime(date.get());
  BQGregorianDate fields = BQAbsoluteTimeGetGregorianDate(time);
  if (fields.year < 0 || fields.year > 9999) return;
  for (unsigned char compact : {0, 1}) {
    auto written = own(vx::isoEncodeDate(date.get(), compact));
    check(BQDateGetAbsoluteTime(own(vx::isoDecodeDate(textOf(written.get()))).get()) == std::floor(time));
  }
}

/* The answer of the C library, which reads digits in the same way, for texts that it sees whole. */
void checkInteger(const BQString* string) {
  auto number = own(vx::makeIntValueFromString(textOf(string)));
  int64_t value = 0;
  check(BQNumberGetValue(number.get(), kBQNumberSInt64Type, &value));
  check(BQNumberGetType(number.get()) ==
        (value == static_cast<int32_t>(value) ? kBQNumberSInt32Type : kBQNumberSInt64Type));
  std::string text(textOf(string));
  bool isASCII = std::all_of(text.begin(), text.end(), [](char character) { return character > 0; });
  if (isASCII && text.size() <= 100) check(value == std::strtoll(text.c_str(), nullptr, 0));
}

void checkEntities(const BQString* string) {
  auto encoded = own(vx::entityEncodeString(string));
  std::string_view text = textOf(encoded.get());
  check(text.size() <= vx::entityEncodedRoom(textOf(string)));
  check(text.find_first_of("<>\"'") == std::string_view::npos);
  std::string decoded;
  for (size_t i = 0; i < text.size();) {
    size_t length = text[i] == '&' ? text.find(';', i) - i + 1 : 1;
    std::string_view piece = text.substr(i, length);
    decoded += length == 1 ? piece : textOf(vx::decodeUnparsedEntityReference(makeString(piece).get()));
    i += length;
  }
  check(decoded == textOf(string));
}

}  // namespace

void fuzz::run(ByteReader input) {
  checkBytes(makeData(input.rest()).get());
  checkBase64(input.rest());
  checkDate(input.rest());
  auto string = makeString(input.rest());
  if (string == nullptr) return;
  own(vx::decodeBinaryData(textOf(string.get())));
  own(vx::isoDecodeDate(textOf(string.get())));
  checkInteger(string.get());
  checkEntities(string.get());
}
