#include "Loss.h"

#include <charconv>
#include <cmath>
#include <string_view>

#include <BQ/BQ.h>
#include <VX/VXConstants.h>
#include <VX/VXMethodInvocation.h>

#include "ValuePath.h"
#include "common/Text.h"

namespace tools::vxcall {
namespace {

constexpr std::string_view kNullAdvice =
    ", since XML-RPC has no null; leave it out, or send <nil/> by an override in a program";

/* The losses of one kind. */
struct Loss {
  std::string first;
  long count = 0;
};

/* As many digits as the library writes, or for no number of them all that tell the double from others. */
std::string writeDouble(double number, int digits) {
  char text[32];
  char* last = text + sizeof text;
  auto format = std::chars_format::general;
  auto end =
      digits > 0 ? std::to_chars(text, last, number, format, digits) : std::to_chars(text, last, number);
  return {text, end.ptr};
}

class LossFinder {
 public:
  explicit LossFinder(bool isXMLRPC) : isXMLRPC_(isXMLRPC) {}

  void visitParameter(BQTypeRef value, std::string_view name) {
    ValuePath path = {.name = name};
    if (value != nullptr) return visit(value, path);
    if (isXMLRPC_) note(absent_, path, " has no value and is sent as the int 0", kNullAdvice);
  }

  std::vector<std::string> notes() const {
    std::vector<std::string> notes;
    for (const Loss* loss : {&digits_, &infinite_, &absent_, &null_}) {
      if (loss->count == 0) continue;
      std::string more = loss->count == 1 ? "" : " (and " + std::to_string(loss->count - 1) + " more)";
      notes.push_back(loss->first + more);
    }
    return notes;
  }

 private:
  /* The recursion is as deep as the value, which was read with a bound on its nesting. */
  void visit(BQTypeRef value, const ValuePath& path) {
    BQTypeID type = BQGetTypeID(value);
    if (type == BQNumberGetTypeID()) {
      visitNumber(static_cast<const BQNumber*>(value), path);
    } else if (type == BQArrayGetTypeID()) {
      const auto* array = static_cast<const BQArray*>(value);
      BQIndex count = BQArrayGetCount(array);
      for (BQIndex i = 0; i < count; ++i) visit(BQArrayGetValueAtIndex(array, i), {&path, {}, i});
    } else if (type == BQDictionaryGetTypeID()) {
      visitMembers(static_cast<const BQDictionary*>(value), path);
    } else if (value == kBQNull && isXMLRPC_) {
      note(null_, path, " is null and is sent as the string null", kNullAdvice);
    }
  }

  void visitMembers(const BQDictionary* members, const ValuePath& path) {
    auto count = static_cast<size_t>(BQDictionaryGetCount(members));
    std::vector<BQTypeRef> names(count), values(count);
    BQDictionaryGetKeysAndValues(members, names.data(), values.data());
    for (size_t i = 0; i < count; ++i) visit(values[i], {&path, textOf(names[i])});
  }

  void visitNumber(const BQNumber* number, const ValuePath& path) {
    double value = 0;
    if (!BQNumberIsFloatType(number) || !BQNumberGetValue(number, kBQNumberDoubleType, &value)) return;
    std::string sent = writeDouble(value, isXMLRPC_ ? 6 : 8);
    if (!std::isfinite(value)) return noteInfinite(value, sent, path);
    double received = 0;
    std::from_chars(sent.data(), sent.data() + sent.size(), received);
    if (received != value) noteDigits(value, sent, path);
  }

  void noteInfinite(double value, const std::string& sent, const ValuePath& path) {
    std::string_view schema = std::isnan(value) ? "NaN" : value < 0 ? "-INF" : "INF";
    std::string reason = isXMLRPC_ ? ", which is no double of XML-RPC" : ", where XML Schema has ";
    if (!isXMLRPC_) reason += schema;
    note(infinite_, path, " is sent as " + sent, reason);
  }

  void noteDigits(double value, const std::string& sent, const ValuePath& path) {
    note(digits_, path, ": " + writeDouble(value, 0) + " is sent as " + sent,
         isXMLRPC_ ? ", with the six digits that doubles have in XML-RPC; a string keeps all"
                   : ", with the eight digits that doubles have in SOAP; a string keeps all");
  }

  static void note(Loss& loss, const ValuePath& path, std::string_view fact, std::string_view reason) {
    if (++loss.count == 1) loss.first = path.text().append(fact).append(reason);
  }

  bool isXMLRPC_;
  Loss digits_, infinite_, absent_, null_;
};

}  // namespace

std::vector<std::string> describeLosses(const Invocation& invocation) {
  const BQArray* copiedOrder = nullptr;
  auto values = BQAdopt(VXMethodInvocationCopyParameters(invocation.handle.get(), &copiedOrder));
  auto order = BQAdopt(copiedOrder);
  LossFinder finder(invocation.protocol == kVXXMLRPCProtocol);
  for (BQIndex i = 0; i < BQArrayGetCount(order.get()); ++i) {
    BQTypeRef name = BQArrayGetValueAtIndex(order.get(), i);
    finder.visitParameter(BQDictionaryGetValue(values.get(), name), textOf(name));
  }
  return finder.notes();
}

}  // namespace tools::vxcall
