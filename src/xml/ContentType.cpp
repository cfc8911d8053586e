#include "xml/ContentType.h"

#include <string_view>

#include <BQ/BQHTTPMessage.h>
#include <BQ/BQString.h>

#include "values/Owned.h"
#include "xml/Text.h"

namespace vx {
namespace {

Owned<const BQString> contentTypeOf(const BQHTTPMessage* response) {
  return own(BQHTTPMessageCopyHeaderFieldValue(response, BQSTR("Content-Type")));
}

bool isQuote(char character) {
  return character == '"' || character == '\'';
}

/* The value of the charset parameter without its quotes. */
std::string_view charsetOf(const BQString* contentType) {
  std::string_view text = textOf(contentType);
  BQRange found;
  BQRange whole = BQRangeMake(0, BQStringGetLength(contentType));
  if (!BQStringFind(contentType, BQSTR("charset="), whole, kBQCompareCaseInsensitive, &found)) return {};
  std::string_view value = text.substr(static_cast<size_t>(found.location + found.length));
  value = value.substr(0, value.find(';'));
  while (!value.empty() && isQuote(value.front())) value.remove_prefix(1);
  while (!value.empty() && isQuote(value.back())) value.remove_suffix(1);
  return value;
}

}  // namespace

unsigned long getResponseCharset(const BQHTTPMessage* response) {
  auto contentType = contentTypeOf(response);
  std::string_view charset = charsetOf(contentType.get());
  if (charset.empty()) return kBQStringEncodingUTF8;
  auto name = own(BQStringCreateWithUTF8(charset.data(), static_cast<BQIndex>(charset.size())));
  BQStringEncoding encoding = BQStringConvertIANACharSetNameToEncoding(name.get());
  return encoding == kBQStringEncodingInvalidId ? kBQStringEncodingASCII : encoding;
}

void checkForXMLContent(const BQHTTPMessage* response, unsigned char* outIsXML, unsigned char* outIsText) {
  auto contentType = contentTypeOf(response);
  *outIsXML = 0;
  *outIsText = 1;
  if (contentType == nullptr) return;
  BQRange whole = BQRangeMake(0, BQStringGetLength(contentType.get()));
  *outIsText = BQStringHasPrefix(contentType.get(), BQSTR("text/")) ? 1 : 0;
  *outIsXML =
      BQStringFind(contentType.get(), BQSTR("/xml"), whole, kBQCompareCaseInsensitive, nullptr) ? 1 : 0;
}

}  // namespace vx
