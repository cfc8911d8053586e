#include "Answer.h"

#include <BQ/BQ.h>
#include <VX/VXConstants.h>
#include <VX/VXProtocolHandler.h>

#include "Binding.h"
#include "Fault.h"
#include "Handlers.h"
#include "Sendable.h"
#include "Values.h"
#include "XMLText.h"
#include "common/Text.h"

namespace tools::vxserve {
namespace {

constexpr std::string_view kNamespace = "urn:interop";
constexpr unsigned kStatusOfSOAPFaults = 500;

using Document = BQRef<const BQData>;

/* Turns one request into its answer. */
class Answering {
 public:
  explicit Answering(const Endpoint& endpoint) : endpoint_(endpoint), handler_(handlerOf(endpoint)) {}

  Answer answer(const BQData* body) {
    try {
      request_ = BQAdopt(VXProtocolHandlerCopyRequestDictionary(handler_, body));
      answer_.document = reply(call());
    } catch (const Fault& fault) {
      refuse(fault);
    }
    return std::move(answer_);
  }

 private:
  BQTypeRef entry(const BQString* key) const { return BQDictionaryGetValue(request_.get(), key); }

  Value call() {
    BQTypeRef name = entry(BQSTR("/VXMethodName"));
    if (textOf(name).empty()) throw Fault(kFaultNotARequest, "the body is not a well-formed " + what());
    answer_.method = textOf(name);
    if (endpoint_.isSOAP) checkNamespace();
    const MethodTable& methods = endpoint_.methods();
    const Method& method = methods.find(answer_.method);
    Call call = {methods, arguments(method)};
    Value result = method.function(call);
    answer_.delay = call.delay;
    return endpoint_.isSOAP ? result : makeSendable(result.get());
  }

  std::string what() const { return endpoint_.isSOAP ? "SOAP 1.1 request" : "XML-RPC call"; }

  void checkNamespace() const {
    if (textOf(entry(kVXSOAPMethodNamespaceURI)) == kNamespace) return;
    throw Fault(kFaultMethodNotFound, "the methods are in the namespace " + std::string(kNamespace) +
                                          ", and there is no method '" + answer_.method + "' in '" +
                                          std::string(textOf(entry(kVXSOAPMethodNamespaceURI))) + "'");
  }

  std::vector<Value> arguments(const Method& method) const {
    const BQDictionary* parameters = asStruct(entry(BQSTR("/VXMethodParameters")));
    const BQArray* order = asArray(entry(BQSTR("/VXMethodParameterOrder")));
    if (endpoint_.isSOAP) return bindByName(method, parameters, order);
    std::vector<BQTypeRef> values = itemsOf(order);
    for (BQTypeRef& value : values) value = BQDictionaryGetValue(parameters, value);
    return bindByPosition(method, values);
  }

  Document reply(const Value& result) {
    auto document =
        Document::adopt(VXProtocolHandlerCopyReplyDocument(handler_, request_.get(), result.get()));
    if (!document) throw Fault(kFaultInternalError, "the result cannot be written");
    return document;
  }

  void refuse(const Fault& fault) {
    /* The text of a SOAP fault is written as it stands. */
    Value text = makeText(endpoint_.isSOAP ? escapeMarkup(fault.what()) : fault.what());
    Value entries =
        makeStruct({{kVXFaultCode, makeInteger(fault.code())}, {kVXFaultString, std::move(text)}});
    answer_.document = Document::adopt(
        VXProtocolHandlerCopyFaultDocument(handler_, request_.get(), asStruct(entries.get())));
    answer_.faultCode = fault.code();
    if (endpoint_.isSOAP) answer_.status = kStatusOfSOAPFaults;
  }

  const Endpoint& endpoint_;
  VXProtocolHandlerRef handler_;
  BQRef<const BQDictionary> request_;
  Answer answer_;
};

}  // namespace

Answer answerRequest(const Endpoint& endpoint, const BQData* body) {
  return Answering(endpoint).answer(body);
}

}  // namespace tools::vxserve
