#include "Secrets.h"

#include <cctype>

#include <algorithm>
#include <vector>

#include <BQ/BQDictionary.h>
#include <VX/VXConstants.h>

#include "common/Text.h"

namespace tools::vxcall {
namespace {

/* Names that contain one of these belong to headers that prove who sends them, standard or not. */
constexpr std::string_view kSecretNames[] = {"auth",   "cookie",  "credential", "key",  "passw",
                                             "secret", "session", "signature",  "token"};

/* The value of a header as it may be shown. */
std::string maskHeader(std::string_view header, std::string_view value) {
  std::string name(header);
  std::transform(name.begin(), name.end(), name.begin(),
                 [](char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); });
  bool isSecret = std::any_of(std::begin(kSecretNames), std::end(kSecretNames), [&](std::string_view secret) {
    return name.find(secret) != std::string::npos;
  });
  /* A challenge such as WWW-Authenticate is no secret, and says why a call was refused. */
  if (isSecret && !name.ends_with("authenticate")) return "***";
  return name.ends_with("location") ? maskURL(value) : maskAnyURL(value);
}

}  // namespace

BQRef<const BQDictionary> maskCapturedHeaders(const BQDictionary* result) {
  auto masked = BQAdopt(BQDictionaryCreateMutableCopy(0, result));
  for (const BQString* key : {kVXDebugOutgoingHeaders, kVXDebugIncomingHeaders}) {
    BQTypeRef captured = BQDictionaryGetValue(result, key);
    if (BQGetTypeID(captured) != BQDictionaryGetTypeID()) continue;
    const auto* headers = static_cast<const BQDictionary*>(captured);
    auto shown = BQAdopt(BQDictionaryCreateMutableCopy(0, headers));
    auto count = static_cast<size_t>(BQDictionaryGetCount(headers));
    std::vector<BQTypeRef> names(count), values(count);
    BQDictionaryGetKeysAndValues(headers, names.data(), values.data());
    for (size_t i = 0; i < count; ++i) {
      BQDictionarySetValue(shown.get(), names[i],
                           makeString(maskHeader(textOf(names[i]), textOf(values[i]))).get());
    }
    BQDictionarySetValue(masked.get(), key, shown.get());
  }
  return masked;
}

}  // namespace tools::vxcall
