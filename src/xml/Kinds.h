/*
 * The kinds of values, and the schema type names that stand for them. The conversions between
 * kinds and classes are public (VX/VXTypes.h).
 */
#ifndef VX_XML_KINDS_H
#define VX_XML_KINDS_H

#include <BQ/BQBase.h>
#include <VX/VXTypes.h>

#include <string_view>

namespace vx {

/* A class of values and its kind. Numbers have kind 0 here: theirs is 3 or 4, by value. */
struct TypeRow {
  BQTypeID typeID;
  BQTypeID (*getTypeID)();
  VXTypeID kind;
};

inline constexpr int kTypeRowCount = 8;

/* The table of the eight classes. */
const TypeRow* getTypeTable();

/*
 * The kind of a schema type name; 0 if it is unknown. A bare name counts in one of the schema or
 * encoding namespaces, a prefixed one only outside of them. The namespace may be null.
 */
VXTypeID VXQualifiedtoVXType(const BQString* namespaceURI, const BQString* typeName);

/*
 * A new number, owned by the caller, from the start of a text: decimal, octal after "0",
 * hexadecimal after "0x"; 0 if there are no digits. 32 bits wide if it fits, else 64.
 */
const BQNumber* makeIntValueFromString(std::string_view text);

/* The number under a key as an int; the fallback if there is none that fits. */
int getDictNumber(const BQDictionary* dictionary, const BQString* key, int fallback);

/* Whether an entry is written as a member: its key is not empty and does not begin with "/". */
bool isValidKey(const BQString* key);

}  // namespace vx

#endif
