/*
 * Serialized invocations, up to the opening of the request that they would send. The stream goes to a port
 * of this machine that is closed, and over http no file is opened.
 */
#include <sys/stat.h>

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
  auto headers = own(BQHTTPMessageCopyAllHeaderFields(request));
  for (vx::DictIterator entries(headers.get()); entries.hasNext();) {
    BQTypeRef name = entries.nextKey();
    for (BQTypeRef text : {name, entries.valueFor(name)})
      check(textOf(static_cast<const BQString*>(text)).find_first_of(kHeaderEnds) == std::string_view::npos);
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

void fuzz::run(ByteReader input) {
  auto invocation = own(VXMethodInvocationCreateFromSerialization(makeData(input.rest()).get()));
  if (invocation == nullptr) return;
  vx::WebServiceMethodInvocation* wrapped = invocation->wrapped;
  auto body = own(wrapped->constructMessage(nullptr));
  checkCopy(invocation.get(), body.get());
  if (body == nullptr) return;
  auto closed = own(BQURLCreateWithString(BQSTR("http://127.0.0.1:1/"), nullptr));
  for (const BQURL* url : {wrapped->getServiceURL(), closed.get()}) {
    auto request = url == nullptr ? nullptr : vx::createHTTPRequest(wrapped, url, body.get(), nullptr);
    if (request == nullptr) continue;
    checkHeaders(request.get());
    if (url == closed.get()) checkOpening(wrapped, request.get());
  }
}
