/* URLs, alone and relative to another. An input is a URL, and after a line feed the other one. */
#include "Fuzz.h"

namespace {

using namespace fuzz;

bool isLowerCase(std::string_view text) {
  return text.find_first_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ") == std::string_view::npos;
}

/* The parts of a URL keep their promises, and its text makes an equal one. */
void checkURL(const BQURL* url) {
  auto scheme = own(BQURLCopyScheme(url));
  auto host = own(BQURLCopyHostName(url));
  auto path = own(BQURLCopyPath(url));
  check(isLowerCase(textOf(scheme.get())));
  check(host == nullptr || !textOf(host.get()).empty());
  check(path == nullptr || textOf(path.get()).find('?') == std::string_view::npos);
  int32_t port = BQURLGetPortNumber(url);
  check(port >= -1 && port <= 65535);
  auto again = own(BQURLCreateWithString(BQURLGetString(url), nullptr));
  check(BQEqual(again.get(), url));
  check(BQHash(again.get()) == BQHash(url));
  check(BQEqual(own(BQURLCopyPath(again.get())).get(), path.get()));
  own(BQHTTPMessageCreateRequest(BQSTR("POST"), url, nullptr));
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  ByteReader input(bytes, size);
  auto text = makeString(input.takeUntil('\n'));
  auto baseText = makeString(input.rest());
  auto base = own(BQURLCreateWithString(baseText.get(), nullptr));
  if (base != nullptr) checkURL(base.get());
  auto url = own(BQURLCreateWithString(text.get(), nullptr));
  if (url != nullptr) checkURL(url.get());
  auto resolved = own(BQURLCreateWithString(text.get(), base.get()));
  if (resolved != nullptr && base != nullptr) checkURL(resolved.get());
  return 0;
}
