/*
 * Documents that are said to be in several encodings at once: by the header, by their declaration, by
 * byte-order marks, and by being encoded twice. An input is five bytes that choose these, a byte whose
 * lowest bit asks for a declaration and whose others choose a mark after it, and the text.
 */
#include <iterator>

#include "Fuzz.h"
#include "platform/text/EncodingTable.h"
#include "xml/Parsing.h"

namespace {

using namespace fuzz;
using namespace std::string_view_literals;

constexpr std::string_view kMarks[] = {
    "",     "\xEF\xBB\xBF",   "\xFE\xFF"sv,     "\xFF\xFE"sv,
    " ",    "\0\0\xFE\xFF"sv, "\xFF\xFE\0\0"sv, "\n",
    "\0"sv, "\0 "sv,          " \0"sv,          "\xEF\xBB\xBF\xEF\xBB\xBF"};

/* None for 0; the known encodings, counted from 1, again and again. */
const bq::EncodingRecord* encodingAt(size_t number) {
  const auto encodings = bq::allEncodings();
  return number == 0 ? nullptr : &encodings[(number - 1) % encodings.size()];
}

std::string_view markAt(size_t number) {
  return kMarks[number % std::size(kMarks)];
}

/* A text in an encoding; null if it cannot be written in it. */
Owned<const BQData> encode(const std::string& text, const bq::EncodingRecord& encoding) {
  return own(BQStringCreateExternalRepresentation(makeString(text).get(), encoding.number, 0));
}

/* As it is without an encoding, and if it cannot be written in it. */
std::string encoded(const std::string& text, const bq::EncodingRecord* encoding) {
  auto bytes = encoding != nullptr ? encode(text, *encoding) : nullptr;
  return bytes == nullptr ? text : std::string(viewOf(bytes.get()));
}

bool parses(const BQData* document, bool needsDeclaration, const bq::EncodingRecord* header) {
  unsigned long encoding = header != nullptr ? header->number : kBQStringEncodingUTF8;
  return resultOf<BQString>(vx::parseXML, document, needsDeclaration ? 0 : 1, encoding) != nullptr;
}

/* A document without a declaration is as good in the encoding that the header names as in UTF-8. */
void checkHeader(const std::string& text, const bq::EncodingRecord& header) {
  auto bytes = encode(text, header);
  if (bytes == nullptr || text.find("<?") != std::string::npos) return;
  check(parses(bytes.get(), false, &header) == parses(makeData(text).get(), false, nullptr));
}

}  // namespace

void fuzz::run(ByteReader input) {
  const auto *header = encodingAt(input.byte()), *declared = encodingAt(input.byte()),
             *inner = encodingAt(input.byte()), *outer = encodingAt(input.byte());
  std::string_view mark = markAt(input.byte());
  auto options = input.byte();

  std::string text(input.rest());
  if (inner != nullptr) checkHeader(text, *inner);
  text.insert(0, markAt(options >> 1));
  if (declared != nullptr)
    text.insert(0, std::string("<?xml version='1.0' encoding='") + declared->name.bytes + "'?>");
  auto document = makeData(std::string(mark) + encoded(encoded(text, inner), outer));
  parses(document.get(), options % 2 != 0, header);
  own(BQPropertyListCreateFromXMLData(document.get(), nullptr));
}
