/* Calls one after the other on the loopback, beside a libcurl handle that posts the same bytes. */
#include <benchmark/benchmark.h>
#include <curl/curl.h>

#include "Payload.h"
#include "Responder.h"

namespace bench {
namespace {

const Payload& smallPayload() {
  return payloads().back();
}

/* One server for all call benchmarks, started by the first of them. */
const Responder& sharedResponder() {
  static const Responder responder(bytesOf(checkedReply(smallPayload()).get()));
  return responder;
}

Owned<const BQDictionary> makeParameters() {
  const auto value = smallPayload().makeValue();
  const void* name = BQSTR("record");
  const void* values[] = {value.get()};
  return own(BQDictionaryCreate(&name, values, 1));
}

/* An invocation is a pointer to an opaque type without a base: void is what can be released. */
Owned<void> makeInvocation(const BQURL* url, const BQDictionary* parameters) {
  VXMethodInvocationRef invocation = VXMethodInvocationCreate(url, BQSTR("bench"), kVXXMLRPCProtocol);
  VXMethodInvocationSetParameters(invocation, parameters, nullptr);
  return Owned<void>(invocation);
}

bool invoke(const Owned<void>& invocation) {
  const auto result = own(VXMethodInvocationInvoke(static_cast<VXMethodInvocationRef>(invocation.get())));
  return !VXMethodResultIsFault(result.get());
}

Owned<const BQURL> makeURL() {
  const std::string url = sharedResponder().url();
  const auto text = own(BQStringCreateWithUTF8(url.data(), static_cast<BQIndex>(url.size())));
  return own(BQURLCreateWithString(text.get(), nullptr));
}

void callWithNewInvocations(benchmark::State& state) {
  const auto url = makeURL();
  const auto parameters = makeParameters();
  for (auto _ : state) {
    if (!invoke(makeInvocation(url.get(), parameters.get()))) return state.SkipWithError("fault");
  }
}

void callWithOneInvocation(benchmark::State& state) {
  const auto url = makeURL();
  const auto parameters = makeParameters();
  const auto invocation = makeInvocation(url.get(), parameters.get());
  for (auto _ : state) {
    if (!invoke(invocation)) return state.SkipWithError("fault");
  }
}

size_t countReceived(char*, size_t size, size_t count, void* total) {
  *static_cast<size_t*>(total) += size * count;
  return size * count;
}

void callWithCurl(benchmark::State& state) {
  const auto parameters = makeParameters();
  const auto request = own(VXProtocolHandlerCopyRequestDocument(sharedHandler(), BQSTR("bench"),
                                                                parameters.get(), nullptr, nullptr));
  const std::string url = sharedResponder().url();
  const std::string_view body = bytesOf(request.get());
  size_t received = 0;
  CURL* handle = curl_easy_init();
  curl_slist* headers = curl_slist_append(nullptr, "Content-Type: text/xml");
  curl_easy_setopt(handle, CURLOPT_URL, url.c_str());
  curl_easy_setopt(handle, CURLOPT_HTTPHEADER, headers);
  curl_easy_setopt(handle, CURLOPT_POSTFIELDS, body.data());
  curl_easy_setopt(handle, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, countReceived);
  curl_easy_setopt(handle, CURLOPT_WRITEDATA, &received);
  curl_easy_setopt(handle, CURLOPT_PROXY, "");
  for (auto _ : state) {
    if (curl_easy_perform(handle) != CURLE_OK) {
      state.SkipWithError("no reply");
      break;
    }
  }
  benchmark::DoNotOptimize(received);
  curl_slist_free_all(headers);
  curl_easy_cleanup(handle);
}

BENCHMARK(callWithNewInvocations)->Name("call/new")->UseRealTime();
BENCHMARK(callWithOneInvocation)->Name("call/repeated")->UseRealTime();
BENCHMARK(callWithCurl)->Name("call/curl")->UseRealTime();

}  // namespace
}  // namespace bench
