/* The five predefined entities of XML. */
#ifndef VX_XML_ENTITIES_H
#define VX_XML_ENTITIES_H

#include <BQ/BQBase.h>

#include <cstddef>
#include <string_view>

namespace vx {

/* Entity name to character ("amp" to "&"), and entity reference to character ("&amp;" to "&"). Borrowed. */
const BQDictionary* getEntityToCharacterStringDict();
const BQDictionary* getTrueEntityToCharactersStringDict();

/* A new mutable string, owned by the caller, with the five characters replaced by references. */
BQString* entityEncodeString(const BQString* text);

/* Replaces every occurrence of `find`, without regard to case; returns their number. */
BQIndex findReplaceAll(BQString* text, const BQString* find, const BQString* replacement);

/* The character of an entity name or reference, borrowed; "<<Unknown Escape>>" for any other or null. */
const BQString* decodeEntityReference(const BQString* name);
const BQString* decodeUnparsedEntityReference(const BQString* reference);

/* A size that the entity-encoded text does not exceed. */
size_t entityEncodedRoom(std::string_view text);

/* Writes the entity-encoded text to memory with that much room; returns its end. */
char* entityEncode(std::string_view text, char* out);

}  // namespace vx

#endif
