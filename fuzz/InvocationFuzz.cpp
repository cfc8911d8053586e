/*
 * Serialized invocations, up to the opening of the request that they would send. The stream goes to a port
 * of this machine that is closed, and over http no file is opened.
 */
#include <sys/stat.h>

#include <VX/VX.h>

#include "Fuzz.h"
#include "api/MethodInvocationHandle.h"
#include "api/base/WebServiceMethodInvocation.h"
#include "transport/HTTPRequest.h"
#include "values/DictIterator.h"

namespace {

using namespace fuzz;

/* A copy is written with the same bytes and sends the same document. */
void checkCopy(VXMethodInvocationRef invocation, const BQData* body) {
  auto written = own(VXMethodInvocationCopySerialization(invocation));
  auto copy = own(VXMethodInvocationCreateFromSerialization(written.get()));
  check(written != nullptr && copy != nullptr);
  check(viewOf(own(VXMethodInvocationCopySerialization(copy.get())).get()) == viewOf(written.get()));
  check(viewOf(own(copy->wrapped->constructMessage(nullptr)).get()) == viewOf(body));
}

/* No header can add another one. */
void checkHeaders(const BQHTTPMessage* request) {
  constexpr std::string_view kSeparators("\r\n\0", 3);
  auto headers = own(BQHTTPMessageCopyAllHeaderFields(request));
  for (vx::DictIterator entries(headers.get()); entries.hasNext();) {
    auto* name = static_cast<const BQString*>(entries.nextKey());
    auto* value = static_cast<const BQString*>(entries.valueFor(name));
    check(textOf(name).find_first_of(kSeparators) == std::string_view::npos);
    check(textOf(value).find_first_of(kSeparators) == std::string_view::npos);
  }
}

bool isRegularFile(const BQString* path) {
  struct stat status = {};
  return stat(BQStringGetUTF8Ptr(path), &status) == 0 && S_ISREG(status.st_mode);
}

/* A stream that would have to wait for its file of certificates does not open. */
void checkOpening(vx::WebServiceMethodInvocation* invocation, const BQHTTPMessage* request) {
  auto stream = own(BQReadStreamCreateForHTTPRequest(request));
  vx::configureStream(invocation, stream.get());
  BQReadStreamScheduleWithRunLoop(stream.get(), BQRunLoopGetCurrent(), kBQRunLoopDefaultMode);
  bool isOpen = BQReadStreamOpen(stream.get());
  BQReadStreamClose(stream.get());
  BQTypeRef file = invocation->getPropertyOfType(kVXHTTPCertificateAuthorityFile, BQStringGetTypeID());
  check(!isOpen || file == nullptr || isRegularFile(static_cast<const BQString*>(file)));
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  static const BQURL* const closed = BQURLCreateWithString(BQSTR("http://127.0.0.1:1/"), nullptr);
  auto document = own(BQDataCreate(bytes, static_cast<BQIndex>(size)));
  auto invocation = own(VXMethodInvocationCreateFromSerialization(document.get()));
  if (invocation == nullptr) return 0;
  vx::WebServiceMethodInvocation* wrapped = invocation->wrapped;
  auto body = own(wrapped->constructMessage(nullptr));
  checkCopy(invocation.get(), body.get());
  if (body == nullptr) return 0;
  if (const BQURL* url = wrapped->getServiceURL()) {
    auto request = vx::createHTTPRequest(wrapped, url, body.get(), nullptr);
    if (request != nullptr) checkHeaders(request.get());
  }
  auto request = vx::createHTTPRequest(wrapped, closed, body.get(), nullptr);
  if (request != nullptr) checkOpening(wrapped, request.get());
  return 0;
}
