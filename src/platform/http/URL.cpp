#include <BQ/BQURL.h>

#include <cstdlib>

#include <algorithm>
#include <string>

#include "platform/http/CurlURL.h"
#include "platform/http/Text.h"
#include "platform/object/Object.h"

/* Everything is taken apart once, when the URL is made. */
struct BQURL : bq::Object {
  bq::Ref<const BQString> text;
  bq::Ref<const BQString> scheme;
  bq::Ref<const BQString> host;
  bq::Ref<const BQString> path;
  int32_t port = -1;

  using Object::Object;
};

namespace bq {
namespace {

using Text = Ref<const BQString>;

const BQURL* asURL(BQTypeRef object) {
  return isInstance(object, BQURLGetTypeID()) ? static_cast<const BQURL*>(object) : nullptr;
}

bool equalURLs(BQTypeRef first, BQTypeRef second) {
  return BQEqual(static_cast<const BQURL*>(first)->text.get(), static_cast<const BQURL*>(second)->text.get());
}

BQHashCode hashURL(BQTypeRef url) {
  return BQHash(static_cast<const BQURL*>(url)->text.get());
}

const BQString* describeURL(BQTypeRef url) {
  return static_cast<const BQString*>(BQRetain(static_cast<const BQURL*>(url)->text.get()));
}

const BQRuntimeClass kURLClass = {0,         "BQURL", nullptr,     nullptr, finalizeObject<BQURL>,
                                  equalURLs, hashURL, describeURL, nullptr};

/* The pieces of a URL reference as it is written. */
struct Pieces {
  std::string_view scheme;
  std::string_view authority;
  std::string_view path;
};

/*
 * Whether every character may stand in a URL. Square brackets are let through everywhere, since
 * they are usual in queries.
 */
bool hasURLCharacters(std::string_view text) {
  for (size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (c <= ' ' || c >= 0x7F) return false;
    if (std::string_view("\"<>\\^`{|}").find(c) != std::string_view::npos) return false;
    if (c == '%' && !(i + 2 < text.size() && isHexDigit(text[i + 1]) && isHexDigit(text[i + 2])))
      return false;
  }
  return !text.empty();
}

bool isScheme(std::string_view text) {
  for (char c : text) {
    if (!isLetter(c) && !isDigit(c) && c != '+' && c != '-' && c != '.') return false;
  }
  return !text.empty() && isLetter(text.front());
}

/* False for text whose first segment has a colon behind something that is no scheme. */
bool takeApart(std::string_view text, Pieces& pieces) {
  size_t end = text.find_first_of(":/?#");
  if (end != std::string_view::npos && text[end] == ':') {
    pieces.scheme = text.substr(0, end);
    if (!isScheme(pieces.scheme)) return false;
    text.remove_prefix(end + 1);
  }
  if (text.starts_with("//")) {
    pieces.authority = text.substr(2, text.find_first_of("/?#", 2) - 2);
    text.remove_prefix(2 + pieces.authority.size());
  }
  pieces.path = text.substr(0, text.find_first_of("?#"));
  return true;
}

std::string_view withoutBrackets(std::string_view host) {
  return host.starts_with('[') && host.ends_with(']') ? host.substr(1, host.size() - 2) : host;
}

/* Sets host and port. False if the authority is malformed; one without a host is not. */
bool readAuthority(const Pieces& pieces, BQURL& url) {
  if (pieces.authority.empty()) return true;
  std::string text;
  text.append(pieces.scheme).append("://").append(pieces.authority).append("/");
  CurlURL parsed;
  CURLUcode code = parsed.set(CURLUPART_URL, text.c_str(), CURLU_NON_SUPPORT_SCHEME);
  if (code == CURLUE_NO_HOST) return true;
  if (code != CURLUE_OK) return false;
  url.host = Text::adopt(makeReceivedText(withoutBrackets(parsed.get(CURLUPART_HOST))));
  std::string port = parsed.get(CURLUPART_PORT);
  if (!port.empty()) url.port = std::atoi(port.c_str());
  return true;
}

Text lowerCased(std::string_view text) {
  if (text.empty()) return {};
  std::string lower(text);
  for (char& c : lower) c = lowerCase(c);
  return Text::adopt(makeText(lower));
}

/* A URL from checked text; null if it is none. */
const BQURL* makeURL(Text text) {
  Pieces pieces;
  if (!takeApart(textOf(text.get()), pieces)) return nullptr;
  Ref<BQURL> url = Ref<BQURL>::adopt(makeObject<BQURL>(BQURLGetTypeID()));
  if (!pieces.scheme.empty() && !readAuthority(pieces, *url.get())) return nullptr;
  url->text = std::move(text);
  url->scheme = lowerCased(pieces.scheme);
  url->path = Text::adopt(makeText(pieces.path.empty() ? "/" : pieces.path));
  return url.release();
}

/* What libcurl sees in place of an authority, since it would decode the percent escapes of the host. */
constexpr std::string_view kStandIn = "//localhost";

/* A URL reference with the stand-in; `authority` is a part of it. */
std::string withStandIn(std::string_view reference, std::string_view authority) {
  std::string text(reference);
  if (authority.empty()) return text;
  auto position = static_cast<size_t>(authority.data() - reference.data()) - 2;
  return text.replace(position, authority.size() + 2, kStandIn);
}

/*
 * The text of a relative reference seen from an absolute URL; null if there is no such URL. Of a URL
 * without an authority libcurl would take the start of the path for one.
 */
Text resolveAgainst(std::string_view base, std::string_view reference) {
  Pieces from, to;
  if (!takeApart(base, from) || !takeApart(reference, to) || from.authority.empty()) return {};
  CurlURL url;
  unsigned flags = CURLU_NON_SUPPORT_SCHEME;
  if (url.set(CURLUPART_URL, withStandIn(base, from.authority).c_str(), flags) != CURLUE_OK) return {};
  url.set(CURLUPART_FRAGMENT, nullptr);
  if (url.set(CURLUPART_URL, withStandIn(reference, to.authority).c_str(), flags) != CURLUE_OK) return {};
  std::string text = url.get(CURLUPART_URL);
  size_t position = text.find(':') + 1;
  if (text.compare(position, kStandIn.size(), kStandIn) != 0) return {};
  std::string_view authority = to.authority.empty() ? from.authority : to.authority;
  return Text::adopt(makeText(text.replace(position + 2, kStandIn.size() - 2, authority)));
}

/* The text of a relative reference seen from a base; null if there is no such URL. */
Text resolve(const BQURL* base, std::string_view reference) {
  std::string_view start = textOf(base->text.get());
  if (!reference.starts_with('#')) return resolveAgainst(start, reference);
  return Text::adopt(makeText(std::string(start.substr(0, start.find('#'))).append(reference)));
}

}  // namespace
}  // namespace bq

BQTypeID BQURLGetTypeID(void) {
  static const BQTypeID typeID = _BQRuntimeRegisterClass(&bq::kURLClass);
  return typeID;
}

const BQURL* BQURLCreateWithString(const BQString* text, const BQURL* base) {
  if (!bq::isText(text) || !bq::hasURLCharacters(bq::textOf(text))) return nullptr;
  bq::Pieces pieces;
  base = bq::asURL(base);
  if (base != nullptr && bq::takeApart(bq::textOf(text), pieces) && pieces.scheme.empty()) {
    bq::Text resolved = bq::resolve(base, bq::textOf(text));
    return resolved ? bq::makeURL(std::move(resolved)) : nullptr;
  }
  return bq::makeURL(bq::Text::adopt(BQStringCreateCopy(text)));
}

const BQString* BQURLGetString(const BQURL* url) {
  url = bq::asURL(url);
  return url == nullptr ? nullptr : url->text.get();
}

const BQString* BQURLCopyDisplayString(const BQURL* url) {
  url = bq::asURL(url);
  if (url == nullptr) return nullptr;
  std::string_view text = bq::textOf(url->text.get());
  bq::Pieces pieces;
  bq::takeApart(text, pieces);
  /* A URL that lost its slashes has the password in what is then its path. */
  std::string_view named = pieces.authority.empty() ? pieces.path : pieces.authority;
  auto start = static_cast<size_t>(named.data() - text.data());
  size_t host = named.rfind('@');
  size_t end = std::min(text.find_first_of("?#"), text.size());
  std::string shown(text.substr(0, end));
  if (host != std::string_view::npos) shown.replace(start, host, "***");
  if (end + 1 < text.size()) shown.append(text, end, 1).append("***");
  return bq::makeText(shown);
}

const BQString* BQURLCopyScheme(const BQURL* url) {
  url = bq::asURL(url);
  return url == nullptr ? nullptr : bq::Text(url->scheme).release();
}

const BQString* BQURLCopyHostName(const BQURL* url) {
  url = bq::asURL(url);
  return url == nullptr ? nullptr : bq::Text(url->host).release();
}

int32_t BQURLGetPortNumber(const BQURL* url) {
  url = bq::asURL(url);
  return url == nullptr ? -1 : url->port;
}

const BQString* BQURLCopyPath(const BQURL* url) {
  url = bq::asURL(url);
  return url == nullptr ? nullptr : bq::Text(url->path).release();
}
