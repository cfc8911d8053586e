/* One request of HTTP, from its headers to its answer. */
#ifndef VXSERVE_REQUEST_H
#define VXSERVE_REQUEST_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <BQ/BQBase.h>
#include <BQ/BQRef.h>

#include "Answer.h"
#include "Endpoint.h"

namespace tools::vxserve {

class Request {
 public:
  /* What the headers tell. */
  struct Head {
    std::string_view method;
    std::string_view path;
    /* As announced; nothing if it is not. */
    std::optional<uint64_t> length;
    /* The peer waits for leave to send the body. */
    bool expectsContinue;
  };

  Request(const Head& head, size_t maximumBody);

  /* Whether it is refused before its body was read: the body is too long to be worth it, or unsent. */
  bool isRefusedAtOnce() const { return refusedAtOnce_; }

  /* Takes a part of the body. False if more has come than is worth reading to the end. */
  bool addBody(const char* bytes, size_t length);

  /* Makes the answer, once all of the body is there. */
  void answer();

  /* Answers with the words, borrowed, that say why the document is not held back as long as it should be. */
  void cutShort(std::string_view words) { interruption_ = words; }

  /* What to send. */
  unsigned status() const;
  bool isDocument() const;
  /* The document, whose reference the caller takes over; null for an answer in words. */
  const BQData* takeDocument();
  /* The words. */
  std::string_view words() const;

  double delay() const { return answer_.delay; }
  bool isAnswered() const { return isAnswered_; }

  /* What the log tells. */
  std::string_view protocol() const { return endpoint_ == nullptr ? "-" : endpoint_->name; }
  std::string_view method() const { return answer_.method; }
  std::string outcome() const;
  std::chrono::microseconds age() const;

 private:
  void refuse(unsigned status);

  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  const Endpoint* endpoint_;
  size_t maximumBody_;
  /* What HTTP has against the request; 0 for nothing. */
  unsigned refusal_ = 0;
  bool refusedAtOnce_ = false;
  bool isAnswered_ = false;
  std::string_view interruption_;
  BQRef<BQData> body_;
  uint64_t received_ = 0;
  Answer answer_;
};

}  // namespace tools::vxserve

#endif
