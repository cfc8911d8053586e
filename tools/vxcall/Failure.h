/* Results that are no value: faults of the server and failures on the way. */
#ifndef VXCALL_FAILURE_H
#define VXCALL_FAILURE_H

#include <string>

#include <BQ/BQBase.h>

#include "Invocation.h"

namespace tools::vxcall {

/* Whether a fault was made by the transport rather than sent by the server. */
bool isTransportFailure(const BQDictionary* fault);

/* One line that says what failed and, where it is known, what to do about it. */
std::string describeTransportFailure(const BQDictionary* failure, const Invocation& invocation);

/* Whether a reply was no fault, and no answer either: a document of another kind. */
bool holdsNoAnswer(const BQDictionary* result, const Invocation& invocation);
std::string describeMissingAnswer(const Invocation& invocation);

/* One line with the code and the text that the server sent. */
std::string describeServerFault(const BQDictionary* fault);

}  // namespace tools::vxcall

#endif
