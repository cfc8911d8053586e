/* Constant strings that other files use. */
#ifndef VX_VALUES_CONSTANT_STRING_H
#define VX_VALUES_CONSTANT_STRING_H

#include <BQ/BQString.h>

/*
 * Defines `name`, which a header declares. It is set at compile time, so that the initialisers of
 * other files, a program's own among them, may use it. (A copy of the pointer that
 * BQ_DEFINE_STATIC_STRING makes would be set by an initialiser.)
 */
#define VX_DEFINE_STRING(name, text)                                            \
  static const BQConstantString name##_storage = BQ_CONSTANT_STRING_INIT(text); \
  const BQString* const name = reinterpret_cast<const BQString*>(&name##_storage)

#endif
