/* Calls one after the other on the loopback, beside a libcurl handle that posts the same bytes. */
#include <benchmark/benchmark.h>
#include <curl/curl.h>

#include "Codec.h"
#include "Payload.h"
#include "Responder.h"
#include "ToolServer.h"

namespace bench {
namespace {

/* A call of a server that answers with the argument that it was sent. */
class EchoCall {
 public:
  EchoCall(const Payload& payload, std::string url)
      : parameters_(makeParameters(payload)), url_(std::move(url)) {}

  const std::string& url() const { return url_; }

  BQRef<const BQURL> makeURL() const {
    const auto string = BQAdopt(BQStringCreateWithUTF8(url_.data(), static_cast<BQIndex>(url_.size())));
    return BQAdopt(BQURLCreateWithString(string.get(), nullptr));
  }

  /* An invocation is a pointer to an opaque type without a base: void is what can be released. */
  BQRef<void> makeInvocation(const BQURL* url) const {
    VXMethodInvocationRef invocation = VXMethodInvocationCreate(url, BQSTR("echo"), kVXXMLRPCProtocol);
    VXMethodInvocationSetParameters(invocation, parameters_.get(), nullptr);
    return BQRef<void>::adopt(invocation);
  }

  BQRef<const BQData> makeRequest() const {
    return BQAdopt(VXProtocolHandlerCopyRequestDocument(Codec::xmlRPC().handler(), BQSTR("echo"),
                                                        parameters_.get(), nullptr, nullptr));
  }

 private:
  static BQRef<const BQDictionary> makeParameters(const Payload& payload) {
    const auto value = payload.makeValue();
    const void* name = BQSTR("value");
    const void* values[] = {value.get()};
    return BQAdopt(BQDictionaryCreate(&name, values, 1));
  }

  BQRef<const BQDictionary> parameters_;
  std::string url_;
};

bool invoke(const BQRef<void>& invocation) {
  const auto result = BQAdopt(VXMethodInvocationInvoke(static_cast<VXMethodInvocationRef>(invocation.get())));
  return !VXMethodResultIsFault(result.get());
}

/* As most programs call: an invocation per call. */
void callWithNewInvocations(benchmark::State& state, const EchoCall& call) {
  const auto url = call.makeURL();
  for (auto _ : state) {
    if (!invoke(call.makeInvocation(url.get()))) return state.SkipWithError("fault");
  }
}

void callWithOneInvocation(benchmark::State& state, const EchoCall& call) {
  const auto invocation = call.makeInvocation(call.makeURL().get());
  for (auto _ : state) {
    if (!invoke(invocation)) return state.SkipWithError("fault");
  }
}

size_t countReceived(char*, size_t size, size_t count, void* total) {
  *static_cast<size_t*>(total) += size * count;
  return size * count;
}

void callWithCurl(benchmark::State& state, const EchoCall& call) {
  const auto request = call.makeRequest();
  const std::string_view body = bytesOf(request.get());
  size_t received = 0;
  CURL* handle = curl_easy_init();
  curl_slist* headers = curl_slist_append(nullptr, "Content-Type: text/xml");
  curl_easy_setopt(handle, CURLOPT_URL, call.url().c_str());
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

struct Kind {
  const char* name;
  void (*run)(benchmark::State& state, const EchoCall& call);
};

constexpr Kind kKinds[] = {
    {"call", callWithNewInvocations}, {"call-again", callWithOneInvocation}, {"curl", callWithCurl}};

/* A server starts with the first benchmark that needs it, and serves all of them. */
template <const Payload& (*payload)()>
const EchoCall& callOfResponder() {
  static const Responder server(bytesOf(Codec::xmlRPC().checkedReply(payload()).get()));
  static const EchoCall call(payload(), server.url());
  return call;
}

template <const Payload& (*payload)()>
const EchoCall& callOfTool() {
  static const ToolServer server;
  static const EchoCall call(payload(), server.url());
  return call;
}

void add(const std::string& name, const Kind& kind, const EchoCall& (*call)()) {
  auto run = [&kind, call](benchmark::State& state) { kind.run(state, call()); };
  benchmark::RegisterBenchmark(name.c_str(), run)->UseRealTime();
}

const bool registered = [] {
  for (const Kind& kind : kKinds) {
    const std::string name = kind.name;
    add(name + "/int", kind, callOfResponder<integerPayload>);
    add(name + "/struct", kind, callOfResponder<structPayload>);
    add(name + "-vxserve/int", kind, callOfTool<integerPayload>);
    add(name + "-vxserve/struct", kind, callOfTool<structPayload>);
  }
  return true;
}();

}  // namespace
}  // namespace bench
