/* URLs, alone and relative to another. An input is a URL, a line feed, and the other URL. */
#include "Fuzz.h"

namespace {

using namespace fuzz;

/* The parts of a URL keep their promises, and its text makes an equal one. */
void checkURL(const BQURL* url) {
  if (url == nullptr) return;
  auto scheme = own(BQURLCopyScheme(url));
  auto host = own(BQURLCopyHostName(url));
  auto path = own(BQURLCopyPath(url));
  check(textOf(scheme.get()).find_first_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ") == std::string_view::npos);
  check(host == nullptr || !textOf(host.get()).empty());
  check(textOf(path.get()).find('?') == std::string_view::npos);
  int32_t port = BQURLGetPortNumber(url);
  check(port >= -1 && port <= 65535);
  auto again = own(BQURLCreateWithString(BQURLGetString(url), nullptr));
  check(BQEqual(again.get(), url));
  check(BQHash(again.get()) == BQHash(url));
  check(BQEqual(own(BQURLCopyPath(again.get())).get(), path.get()));
  own(BQHTTPMessageCreateRequest(BQSTR("POST"), url, nullptr));
}

}  // namespace

void fuzz::run(ByteReader input) {
  auto text = makeString(input.takeUntil('\n'));
  auto baseText = makeString(input.rest());
  auto base = own(BQURLCreateWithString(baseText.get(), nullptr));
  checkURL(base.get());
  checkURL(own(BQURLCreateWithString(text.get(), nullptr)).get());
  if (base != nullptr) checkURL(own(BQURLCreateWithString(text.get(), base.get())).get());
}
