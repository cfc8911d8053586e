/* The methods that one protocol offers. */
#ifndef VXSERVE_METHOD_TABLE_H
#define VXSERVE_METHOD_TABLE_H

#include <string_view>
#include <unordered_map>
#include <vector>

#include "Method.h"

namespace tools::vxserve {

class MethodTable {
 public:
  explicit MethodTable(std::vector<Method> methods);
  MethodTable(const MethodTable&) = delete;
  MethodTable& operator=(const MethodTable&) = delete;

  const std::vector<Method>& methods() const { return methods_; }

  /* Throws Fault if there is no such method. */
  const Method& find(std::string_view name) const;

 private:
  std::vector<Method> methods_;
  std::unordered_map<std::string_view, const Method*> byName_;
};

/* The tables of the two protocols; made at the first call, which any thread may make. */
const MethodTable& xmlrpcMethods();
const MethodTable& soapMethods();

/* The parts of the XML-RPC table. */
std::vector<Method> makeSystemMethods();
std::vector<Method> makeValidatorMethods();
Method makeMultiCall();

}  // namespace tools::vxserve

#endif
