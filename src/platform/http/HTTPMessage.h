/* The inside of HTTP messages, for the transfers that send and receive them. */
#ifndef BQ_HTTP_HTTP_MESSAGE_H
#define BQ_HTTP_HTTP_MESSAGE_H

#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <BQ/BQHTTPMessage.h>

#include "platform/object/Object.h"

struct BQHTTPMessage : bq::Object {
  /* In UTF-8. Most names and values are short enough to need no memory of their own. */
  struct Field {
    std::string name;
    std::string value;
  };

  /* A request has a method and a URL, a response a status line and a status code. */
  bq::Ref<const BQString> method;
  bq::Ref<const BQURL> url;
  bq::Ref<const BQString> statusLine;
  BQIndex statusCode = 0;

  bq::Ref<const BQString> version;
  bq::Ref<const BQData> body;

  using Object::Object;

  const std::vector<Field>& fields() const;
  /* Those that may be changed: of this message alone. */
  std::vector<Field>& ownFields();
  void shareFieldsOf(const BQHTTPMessage& other);

 private:
  /* Null while there are none. */
  std::shared_ptr<std::vector<Field>> fields_;
  /*
   * Whether a copy has the same ones, or had: whoever changes them makes its own first. Copies may be
   * made on several threads at once.
   */
  mutable std::atomic<bool> areShared_{false};
};

namespace bq {

/* The message behind a pointer; null for null and for another class. */
inline BQHTTPMessage* asMessage(BQTypeRef object) {
  bool isMessage = isInstance(object, BQHTTPMessageGetTypeID());
  return isMessage ? static_cast<BQHTTPMessage*>(const_cast<void*>(object)) : nullptr;
}

/*
 * A response from the lines that a peer sent: the status line and the headers, without the empty
 * line. Lines that are no headers are dropped. Null if the first is no status line.
 */
Ref<BQHTTPMessage> makeReceivedResponse(std::string_view lines);

/* The first header of a name; null if there is none. */
const BQHTTPMessage::Field* findHeader(const BQHTTPMessage& message, std::string_view name);

}  // namespace bq

#endif
