/* Content types of replies, and bodies in the encoding that they name. An input is a type, a line feed, a
 * body. */
#include "Fuzz.h"
#include "xml/ContentType.h"
#include "xml/Parsing.h"

namespace {

using namespace fuzz;

Owned<BQHTTPMessage> makeResponse(const BQString* contentType) {
  auto response = own(BQHTTPMessageCreateResponse(BQSTR("HTTP/1.1 200 OK")));
  bool isValid = textOf(contentType).find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
  check(BQHTTPMessageSetHeaderFieldValue(response.get(), BQSTR("content-type"), contentType) == isValid);
  return response;
}

Owned<const BQString> readText(std::string_view bytes, BQStringEncoding encoding) {
  return own(BQStringCreateWithBytes(bytes.data(), static_cast<BQIndex>(bytes.size()), encoding));
}

/*
 * Text that was read in an encoding can be written in it, and reads back as it was. An escape character
 * that a decoder lets through is none again when it is written.
 */
void checkText(std::string_view bytes, BQStringEncoding encoding) {
  own(BQStringCreateFromExternalRepresentation(makeData(bytes).get(), encoding));
  auto text = readText(bytes, encoding);
  if (text == nullptr || textOf(text.get()).find('\x1B') != std::string_view::npos) return;
  auto written = own(BQStringCreateExternalRepresentation(text.get(), encoding, 0));
  check(written != nullptr);
  check(BQEqual(readText(viewOf(written.get()), encoding).get(), text.get()));
}

void checkDocument(std::string_view bytes, BQStringEncoding encoding) {
  const BQString* error = nullptr;
  auto tree = own(vx::parseXML(makeData(bytes).get(), 1, encoding, &error));
  auto ownedError = own(error);
  check((tree == nullptr) == (error != nullptr));
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  ByteReader input(bytes, size);
  auto contentType = makeString(input.takeUntil('\n'));
  if (contentType == nullptr) return 0;
  auto response = makeResponse(contentType.get());
  unsigned char isXML = 2, isText = 2;
  vx::checkForXMLContent(response.get(), &isXML, &isText);
  check(isXML < 2 && isText < 2);
  auto encoding = static_cast<BQStringEncoding>(vx::getResponseCharset(response.get()));
  check(BQStringIsEncodingAvailable(encoding));
  check(BQStringConvertEncodingToIANACharSetName(encoding) != nullptr);
  checkText(input.rest(), encoding);
  checkDocument(input.rest(), encoding);
  return 0;
}
