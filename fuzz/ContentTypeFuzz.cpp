/* Content types of replies, and bodies in the encoding that they name. An input is a type, a line feed, a
 * body. */
#include "Fuzz.h"
#include "xml/ContentType.h"
#include "xml/Parsing.h"

namespace {

using namespace fuzz;

Owned<const BQString> readText(std::string_view bytes, BQStringEncoding encoding) {
  return own(BQStringCreateWithBytes(bytes.data(), static_cast<BQIndex>(bytes.size()), encoding));
}

/*
 * Text that was read in an encoding can be written in it, and reads back unchanged. An escape character
 * that a decoder lets through is lost when it is written.
 */
void checkText(std::string_view bytes, BQStringEncoding encoding) {
  auto text = readText(bytes, encoding);
  if (text == nullptr || textOf(text.get()).find('\x1B') != std::string_view::npos) return;
  auto written = own(BQStringCreateExternalRepresentation(text.get(), encoding, 0));
  check(BQEqual(readText(viewOf(written.get()), encoding).get(), text.get()));
}

}  // namespace

void fuzz::run(ByteReader input) {
  auto contentType = makeString(input.takeUntil('\n'));
  if (contentType == nullptr) return;
  auto response = own(BQHTTPMessageCreateResponse(BQSTR("HTTP/1.1 200 OK")));
  bool isValid = textOf(contentType.get()).find_first_of(kHeaderEnds) == std::string_view::npos;
  check(BQHTTPMessageSetHeaderFieldValue(response.get(), BQSTR("content-type"), contentType.get()) ==
        isValid);
  unsigned char isXML = 2, isText = 2;
  vx::checkForXMLContent(response.get(), &isXML, &isText);
  check(isXML < 2 && isText < 2);
  auto encoding = static_cast<BQStringEncoding>(vx::getResponseCharset(response.get()));
  check(BQStringConvertEncodingToIANACharSetName(encoding) != nullptr);
  auto body = makeData(input.rest());
  own(BQStringCreateFromExternalRepresentation(body.get(), encoding));
  checkText(viewOf(body.get()), encoding);
  resultOf<BQString>(vx::parseXML, body.get(), 1, encoding);
}
