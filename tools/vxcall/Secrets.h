/* Headers that hold passwords and tokens. */
#ifndef VXCALL_SECRETS_H
#define VXCALL_SECRETS_H

#include <BQ/BQBase.h>
#include <BQ/BQRef.h>

namespace tools::vxcall {

/* A copy of a result whose captured headers have *** for credentials, cookies and tokens. */
BQRef<const BQDictionary> maskCapturedHeaders(const BQDictionary* result);

}  // namespace tools::vxcall

#endif
