#include "Functions.h"

#include <string>

#include "Values.h"

namespace tools::vxserve {

Value echo(Call& call) {
  return call.arguments[0];
}

Value add(Call& call) {
  return makeInteger(int64_t{call.integer(0)} + call.integer(1));
}

Value concat(Call& call) {
  return makeText(std::string(call.text(0)).append(call.text(1)));
}

Value slow(Call& call) {
  call.hold(call.real(0));
  return makeText("done");
}

}  // namespace tools::vxserve
