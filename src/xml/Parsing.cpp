#include "xml/Parsing.h"

#include <cstring>

#include <algorithm>
#include <string_view>

#include <BQ/BQ.h>

#include "diag/Log.h"
#include "values/Owned.h"
#include "xml/Text.h"

namespace vx {
namespace {

constexpr BQIndex kNoDeclaration = -1;

/* Where the XML declaration begins. */
BQIndex findDeclaration(const BQData* data) {
  auto* bytes = reinterpret_cast<const char*>(BQDataGetBytePtr(data));
  const char* end = bytes + BQDataGetLength(data);
  for (const char* next = bytes; end - next >= 5; ++next) {
    next = static_cast<const char*>(std::memchr(next, '<', static_cast<size_t>(end - next)));
    if (next == nullptr || end - next < 5) break;
    if (equalIgnoringCase({next, 5}, "<?xml")) return next - bytes;
  }
  return kNoDeclaration;
}

/* The document after a declaration made for the encoding; null if that cannot be written in it. */
Owned<const BQData> withDeclaration(const BQData* data, BQStringEncoding encoding) {
  const BQString* name = BQStringConvertEncodingToIANACharSetName(encoding);
  if (name == nullptr) name = BQSTR("UTF-8");
  auto text = own(BQStringCreateWithFormat(BQSTR("<?xml version=\"1.0\" encoding=\"%@\"?>\r\n"), name));
  auto declaration = own(BQStringCreateExternalRepresentation(text.get(), encoding, 0));
  if (declaration == nullptr) return nullptr;
  BQIndex declarationLength = BQDataGetLength(declaration.get());
  BQData* whole = BQDataCreateMutable(declarationLength + BQDataGetLength(data));
  BQDataAppendBytes(whole, BQDataGetBytePtr(declaration.get()), declarationLength);
  BQDataAppendBytes(whole, BQDataGetBytePtr(data), BQDataGetLength(data));
  return own(static_cast<const BQData*>(whole));
}

/*
 * Returns true if the first bytes show the encoding, which the parser then uses: a byte-order mark, or a
 * declaration in UTF-16, UTF-32 or EBCDIC.
 */
bool showsEncoding(const BQData* data) {
  using namespace std::string_view_literals;
  std::string_view bytes(reinterpret_cast<const char*>(BQDataGetBytePtr(data)),
                         static_cast<size_t>(BQDataGetLength(data)));
  constexpr std::string_view kSigns[] = {"\xEF\xBB\xBF"sv,   "\xFE\xFF"sv,       "\xFF\xFE"sv,
                                         "\0\0\xFE\xFF"sv,   "\0<\0?"sv,         "<\0?\0"sv,
                                         "\0\0\0<\0\0\0?"sv, "<\0\0\0?\0\0\0"sv, "\x4C\x6F\xA7\x94"sv};
  return std::any_of(std::begin(kSigns), std::end(kSigns),
                     [bytes](std::string_view sign) { return bytes.starts_with(sign); });
}

/* The bytes to parse; null if the document has no declaration and may not or cannot get one. */
Owned<const BQData> documentBytes(const BQData* data, bool allowMissingDeclaration, unsigned long encoding) {
  BQIndex offset = findDeclaration(data);
  if (offset == 0) return retain(data);
  if (offset > 0)
    return own(BQDataCreateView(BQDataGetBytePtr(data) + offset, BQDataGetLength(data) - offset));
  if (!allowMissingDeclaration) return nullptr;
  if (showsEncoding(data)) return retain(data);
  return withDeclaration(data, static_cast<BQStringEncoding>(encoding));
}

/* A number of the error dictionary: -1 if it is missing, 0 if it does not fit. */
int errorNumber(const BQDictionary* error, const BQString* key) {
  auto* number = static_cast<const BQNumber*>(BQDictionaryGetValue(error, key));
  if (number == nullptr) return -1;
  int value = 0;
  return BQNumberGetValue(number, kBQNumberIntType, &value) ? value : 0;
}

const BQString* describeError(const BQDictionary* error) {
  vxPrintf(BQSTR("XML Parse error occurred: %@"), error);
  if (error == nullptr) return BQSTR("Can't even create parser for errors");
  BQTypeRef description = BQDictionaryGetValue(error, kBQXMLTreeErrorDescription);
  if (description == nullptr) description = BQSTR("Unknown parse error");
  return BQStringCreateWithFormat(
      BQSTR("%@ (line %d, pos %d, status %d)"), description, errorNumber(error, kBQXMLTreeErrorLineNumber),
      errorNumber(error, kBQXMLTreeErrorLocation), errorNumber(error, kBQXMLTreeErrorStatusCode));
}

}  // namespace

const BQTree* parseXML(const BQData* data, unsigned char allowMissingDeclaration, unsigned long encoding,
                       const BQString** outError) {
  *outError = nullptr;
  auto bytes = documentBytes(data, allowMissingDeclaration != 0, encoding);
  if (bytes == nullptr) {
    *outError = BQSTR("No valid XML data in response");
    return nullptr;
  }
  const BQDictionary* error = nullptr;
  const BQTree* tree = BQXMLTreeCreateFromDataWithError(bytes.get(), &error);
  auto ownedError = own(error);
  if (tree == nullptr) *outError = describeError(error);
  return tree;
}

}  // namespace vx
