#include "ValuePath.h"

namespace tools::vxcall {
namespace {

/* ".name", or ["name"] if it would not read as one. */
std::string memberStep(std::string_view name) {
  bool isPlain = !name.empty() && name.find_first_of(".[]\" \t\r\n") == std::string_view::npos;
  return (isPlain ? "." : "[\"") + std::string(name) + (isPlain ? "" : "\"]");
}

}  // namespace

std::string ValuePath::text() const {
  if (outer == nullptr) return std::string(name);
  return outer->text() + (index >= 0 ? "[" + std::to_string(index) + "]" : memberStep(name));
}

}  // namespace tools::vxcall
