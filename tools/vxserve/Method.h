/* A method that the server offers. */
#ifndef VXSERVE_METHOD_H
#define VXSERVE_METHOD_H

#include <string>
#include <string_view>
#include <vector>

#include "Call.h"
#include "Kind.h"
#include "common/Value.h"

namespace tools::vxserve {

struct Parameter {
  Kind kind;
  std::string_view name;
};

struct Signature {
  Kind result;
  std::vector<Parameter> parameters;
};

struct Method {
  using Function = Value (*)(Call& call);

  std::string_view name;
  /* What the arguments are held against, and what the introspection tells. */
  std::vector<Signature> signatures;
  std::string_view help;
  /* Gives the result, the null object for none, or throws Fault. */
  Function function;
};

/* How the method is called, as in "add(int a, int b)". */
std::string usageOf(const Method& method);

}  // namespace tools::vxserve

#endif
