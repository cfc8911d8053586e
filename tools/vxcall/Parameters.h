/* The parameters of a call. */
#ifndef VXCALL_PARAMETERS_H
#define VXCALL_PARAMETERS_H

#include <string>
#include <vector>

#include <BQ/BQBase.h>
#include <BQ/BQRef.h>

namespace tools::vxcall {

struct Parameters {
  /* A name of the order that has no value here is sent as nil. */
  BQRef<const BQDictionary> values;
  BQRef<const BQArray> order;
  /* What the user may have meant otherwise. */
  std::vector<std::string> notes;
};

/* Reads arguments of the form [NAME=][TYPE:]VALUE. Throws UsageError. */
Parameters parseParameters(const std::vector<std::string>& arguments);

}  // namespace tools::vxcall

#endif
