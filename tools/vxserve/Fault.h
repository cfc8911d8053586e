/* How a method refuses a call. */
#ifndef VXSERVE_FAULT_H
#define VXSERVE_FAULT_H

#include <cstdint>
#include <stdexcept>
#include <string>

namespace tools::vxserve {

/* The codes that XML-RPC servers have agreed on. */
enum FaultCode : int32_t {
  kFaultNotARequest = -32700,
  kFaultInternalError = -32603,
  kFaultInvalidParameters = -32602,
  kFaultMethodNotFound = -32601,
};

/* Thrown by a method and by what reads its arguments; the peer gets its code and its text. */
class Fault : public std::runtime_error {
 public:
  Fault(int32_t code, const std::string& text) : std::runtime_error(text), code_(code) {}

  int32_t code() const { return code_; }

 private:
  int32_t code_;
};

}  // namespace tools::vxserve

#endif
