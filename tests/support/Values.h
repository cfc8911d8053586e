/* Values for tests, each made in one expression, and what values hold as text. */
#ifndef SUPPORT_VALUES_H
#define SUPPORT_VALUES_H

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <BQ/BQ.h>

namespace support {

/* Holds a reference to an object of any class, and passes for a pointer to it. */
class Value : public BQRef<const void> {
 public:
  Value() = default;
  static Value adopt(BQTypeRef object) { return Value(BQRef::adopt(object)); }
  static Value retain(BQTypeRef object) { return Value(BQRef::retain(object)); }

  template <class T>
  operator const T*() const {
    return static_cast<const T*>(get());
  }
  /* The object for writing. */
  template <class T>
  T* as() const {
    return static_cast<T*>(const_cast<void*>(get()));
  }

 private:
  explicit Value(BQRef other) : BQRef(std::move(other)) {}
};

Value string(std::string_view utf8);
/* An integer of 32 bits, or of another number type. */
Value integer(int64_t number, BQNumberType type = kBQNumberSInt32Type);
Value real(double number);
Value date(BQAbsoluteTime time);
Value blob(std::string_view bytes);
/* Mutable; a value that holds null is an empty slot. */
Value array(std::initializer_list<Value> values);
/* Mutable, in the order given. */
Value dictionary(std::initializer_list<std::pair<std::string_view, Value>> pairs);
Value url(std::string_view text);
/* The tree of a document; fails the test if it does not parse. */
Value tree(std::string_view document);

/* A string's text, or the description of anything else. */
std::string text(BQTypeRef object);
std::string bytes(const BQData* data);

/*
 * A value with the class of each part: 'text', 5, 5L (made with 64 bits), 2.5d, true, null,
 * @2005-02-28T13:45:09, <00ff>, [a, b], {name: a}; the class name for any other; "-" for no value. In a
 * string a backslash precedes "'" and a backslash.
 */
std::string notation(BQTypeRef value);

/* Parses values in that notation, separated by blanks. Any other word is the public constant of that text. */
std::vector<Value> valuesOf(const std::string& notation);

}  // namespace support

#endif
