/* The null object, which stands for "no value" where a container needs an object. */
#ifndef BQ_NULL_H
#define BQ_NULL_H

#include <BQ/BQBase.h>

BQ_EXTERN_C_BEGIN

/** The identifier of the null class. */
BQ_EXPORT BQTypeID BQNullGetTypeID(void);

/** The one null object; immortal. */
BQ_EXPORT extern const BQNull* const kBQNull;

BQ_EXTERN_C_END

#endif
