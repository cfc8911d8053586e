/* The two boolean objects. */
#ifndef BQ_BOOLEAN_H
#define BQ_BOOLEAN_H

#include <BQ/BQBase.h>

BQ_EXTERN_C_BEGIN

/** The identifier of the boolean class. */
BQ_EXPORT BQTypeID BQBooleanGetTypeID(void);

/** The one true object; immortal. Compared by identity. */
BQ_EXPORT extern const BQBoolean* const kBQBooleanTrue;

/** The one false object; immortal. Compared by identity. */
BQ_EXPORT extern const BQBoolean* const kBQBooleanFalse;

/** True for the true object, false for anything else, null included. */
BQ_EXPORT bool BQBooleanGetValue(const BQBoolean* boolean);

BQ_EXTERN_C_END

#endif
