#include "Request.h"

#include <algorithm>
#include <string>

#include <BQ/BQData.h>

namespace tools::vxserve {
namespace {

enum Status : unsigned {
  kOK = 200,
  kNotFound = 404,
  kMethodNotAllowed = 405,
  kContentTooLarge = 413,
  kInternalError = 500,
  kUnavailable = 503,
};

/*
 * How much of a body is read past the limit, and dropped: a peer that is still sending when the
 * connection is closed may never see the answer.
 */
constexpr uint64_t kMostDropped = uint64_t{16} << 20;

/* What is announced is not believed before it comes. */
constexpr uint64_t kMostReserved = uint64_t{64} << 10;

}  // namespace

Request::Request(const Head& head, size_t maximumBody)
    : endpoint_(findEndpoint(head.path)), maximumBody_(maximumBody) {
  uint64_t length = head.length.value_or(0);
  if (endpoint_ == nullptr) {
    refusal_ = kNotFound;
  } else if (head.method != "POST") {
    refusal_ = kMethodNotAllowed;
  } else if (length > maximumBody_) {
    refusal_ = kContentTooLarge;
  } else {
    body_ = BQAdopt(BQDataCreateMutable(static_cast<BQIndex>(std::min(length, kMostReserved))));
  }
  refusedAtOnce_ = refusal_ != 0 && (head.expectsContinue || length > maximumBody_ + kMostDropped);
  isAnswered_ = refusedAtOnce_;
}

void Request::refuse(unsigned status) {
  refusal_ = status;
  body_ = {};
}

bool Request::addBody(const char* bytes, size_t length) {
  received_ += length;
  if (refusal_ == 0 && received_ > maximumBody_) refuse(kContentTooLarge);
  if (refusal_ != 0) return received_ <= maximumBody_ + kMostDropped;
  BQDataAppendBytes(body_.get(), bytes, static_cast<BQIndex>(length));
  return true;
}

void Request::answer() {
  isAnswered_ = true;
  if (refusal_ != 0) return;
  answer_ = answerRequest(*endpoint_, body_.get());
  body_ = {};
  if (!answer_.document) refuse(kInternalError);
}

bool Request::isDocument() const {
  return refusal_ == 0 && interruption_.empty();
}

unsigned Request::status() const {
  if (refusal_ != 0) return refusal_;
  return interruption_.empty() ? answer_.status : unsigned{kUnavailable};
}

const BQData* Request::takeDocument() {
  if (!isDocument()) return nullptr;
  return static_cast<const BQData*>(BQRetain(answer_.document.get()));
}

std::string_view Request::words() const {
  switch (status()) {
    case kNotFound:
      return "Nothing is here. XML-RPC is served on /RPC2, SOAP on /soap and /soap-1999.\n";
    case kMethodNotAllowed:
      return "Requests are sent with POST.\n";
    case kContentTooLarge:
      return "The body is longer than this server takes; its option --max-body says how long that is.\n";
    case kUnavailable:
      return interruption_;
    default:
      return "The answer could not be written.\n";
  }
}

std::string Request::outcome() const {
  if (!isAnswered_) return "incomplete";
  if (!isDocument()) return "http-" + std::to_string(status());
  return answer_.faultCode ? "fault" + std::string(":") + std::to_string(*answer_.faultCode) : "ok";
}

std::chrono::microseconds Request::age() const {
  return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start_);
}

}  // namespace tools::vxserve
