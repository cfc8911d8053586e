#include "MethodTable.h"

#include <string>

#include "Fault.h"

namespace tools::vxserve {

MethodTable::MethodTable(std::vector<Method> methods) : methods_(std::move(methods)) {
  for (const Method& method : methods_) byName_.emplace(method.name, &method);
}

const Method& MethodTable::find(std::string_view name) const {
  auto found = byName_.find(name);
  if (found != byName_.end()) return *found->second;
  throw Fault(kFaultMethodNotFound, "there is no method '" + std::string(name) + "'");
}

std::string usageOf(const Method& method) {
  std::string usage;
  for (const Signature& signature : method.signatures) {
    if (!usage.empty()) usage += " or ";
    usage.append(method.name).append("(");
    std::string_view separator;
    for (const Parameter& parameter : signature.parameters) {
      usage.append(separator).append(nameOf(parameter.kind)).append(" ").append(parameter.name);
      separator = ", ";
    }
    usage += ")";
  }
  return usage;
}

}  // namespace tools::vxserve
