/*
 * Documents that are said to be in several encodings at once: by the header, by their declaration, by
 * byte-order marks, and by being encoded twice. An input is five bytes that choose these, a byte of
 * options, and the text.
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

/* Bits of the options. The others choose a mark between the declaration and the text. */
constexpr uint8_t kNeedsDeclaration = 1;

/* None for 0; the known encodings, counted from 1; then those of Unicode, which end the list, over and over.
 */
const bq::EncodingRecord* encodingAt(size_t number) {
  constexpr size_t kUnicodeEncodings = 6;
  const auto encodings = bq::allEncodings();
  if (number == 0) return nullptr;
  return &encodings[number <= encodings.size() ? number - 1
                                               : encodings.size() - 1 - number % kUnicodeEncodings];
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
  const BQString* error = nullptr;
  auto tree = own(vx::parseXML(document, needsDeclaration ? 0 : 1,
                               header != nullptr ? header->number : kBQStringEncodingUTF8, &error));
  auto ownedError = own(error);
  check((tree == nullptr) == (error != nullptr));
  return tree != nullptr;
}

/* A document without a declaration is as good in the encoding that the header names as in UTF-8. */
void checkHeader(const std::string& text, const bq::EncodingRecord& header) {
  auto bytes = encode(text, header);
  if (bytes == nullptr || text.find("<?") != std::string::npos) return;
  check(parses(bytes.get(), false, &header) == parses(makeData(text).get(), false, nullptr));
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  ByteReader input(bytes, size);
  const auto *header = encodingAt(input.byte()), *declared = encodingAt(input.byte()),
             *inner = encodingAt(input.byte()), *outer = encodingAt(input.byte());
  std::string_view mark = markAt(input.byte());
  uint8_t options = input.byte();

  std::string text(input.rest());
  if (inner != nullptr) checkHeader(text, *inner);
  text.insert(0, markAt(options >> 1));
  if (declared != nullptr)
    text.insert(0, std::string("<?xml version='1.0' encoding='") + declared->name.bytes + "'?>");
  auto document = makeData(std::string(mark) + encoded(encoded(text, inner), outer));

  parses(document.get(), (options & kNeedsDeclaration) != 0, header);
  own(BQPropertyListCreateFromXMLData(document.get(), nullptr));
  return 0;
}
