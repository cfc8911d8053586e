/* Views of strings, for code that looks at their bytes. */
#ifndef VX_XML_TEXT_H
#define VX_XML_TEXT_H

#include <BQ/BQString.h>

#include <string_view>

namespace vx {

/* The UTF-8 bytes of a string, borrowed; empty for null. */
inline std::string_view textOf(const BQString* string) {
  const char* bytes = BQStringGetUTF8Ptr(string);
  return bytes == nullptr ? std::string_view()
                          : std::string_view(bytes, static_cast<size_t>(BQStringGetLength(string)));
}

inline char foldCase(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character + 32) : character;
}

/* Whether texts are equal, the case of ASCII letters aside. */
inline bool equalIgnoringCase(std::string_view first, std::string_view second) {
  if (first.size() != second.size()) return false;
  for (size_t i = 0; i < first.size(); ++i) {
    if (first[i] != second[i] && foldCase(first[i]) != foldCase(second[i])) return false;
  }
  return true;
}

}  // namespace vx

#endif
