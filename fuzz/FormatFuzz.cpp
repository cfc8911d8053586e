/* Formats with arguments that fit, held against printf of the C library where it has the conversion. */
#include <cstdio>
#include <cstring>

#include <algorithm>

#include "Fuzz.h"

#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"

namespace {

using namespace fuzz;

constexpr int kLargestWidth = 600;

/* Makes up one conversion: "%-5.*ld". */
struct Conversion {
  explicit Conversion(ByteReader& input, std::string_view kinds) {
    text = "%";
    for (size_t count = input.byte() % 4; count > 0; --count) text += "-+ #0"[input.byte() % 5];
    addNumber(input);
    if ((input.byte() & 1) != 0) {
      text += '.';
      addNumber(input);
    }
    kind = kinds[input.byte() % kinds.size()];
  }

  void addNumber(ByteReader& input) {
    int number = input.number<int16_t>() % kLargestWidth;
    const uint8_t kind = input.byte() % 3;
    if (kind == 0) text += std::to_string(std::abs(number));
    if (kind == 1) {
      text += '*';
      stars[starCount++] = number;
    }
  }

  std::string text;
  int starCount = 0;
  int stars[2] = {0, 0};
  char kind;
};

template <class... Arguments>
std::string printed(const std::string& format, Arguments... arguments) {
  int length = std::snprintf(nullptr, 0, format.c_str(), arguments...);
  check(length >= 0);
  std::string text(static_cast<size_t>(length) + 1, '\0');
  std::snprintf(text.data(), text.size(), format.c_str(), arguments...);
  text.pop_back();
  return text;
}

template <class... Arguments>
std::string formatted(const std::string& format, Arguments... arguments) {
  auto text = own(BQStringCreateWithFormat(makeString(format).get(), arguments...));
  check(text != nullptr);
  return std::string(textOf(text.get()));
}

template <class Argument>
void compare(const Conversion& conversion, const std::string& format, Argument argument) {
  const int* stars = conversion.stars;
  switch (conversion.starCount) {
    case 0:
      return check(formatted(format, argument) == printed(format, argument));
    case 1:
      return check(formatted(format, stars[0], argument) == printed(format, stars[0], argument));
    default:
      return check(formatted(format, stars[0], stars[1], argument) ==
                   printed(format, stars[0], stars[1], argument));
  }
}

/* Text without percent signs and NUL. */
std::string literal(ByteReader& input) {
  std::string text(input.take(input.byte() % 8));
  std::replace_if(
      text.begin(), text.end(), [](char character) { return character <= 0 || character == '%'; }, '~');
  return text;
}

void checkNumber(ByteReader& input) {
  static constexpr const char* kLengths[] = {"hh", "h", "", "l", "ll", "q", "j", "z", "t"};
  Conversion conversion(input, "diouxXcaAeEfFgG");
  bool isInteger = std::string_view("diouxX").find(conversion.kind) != std::string_view::npos;
  size_t length = isInteger ? input.byte() % std::size(kLengths) : 2;
  std::string before = literal(input), after = literal(input);
  std::string format = before + conversion.text + kLengths[length] + conversion.kind + after;
  auto bits = input.number<uint64_t>();
  double real;
  std::memcpy(&real, &bits, sizeof real);
  if (isInteger && length > 2) return compare(conversion, format, static_cast<long long>(bits));
  if (isInteger) return compare(conversion, format, static_cast<int>(bits));
  if (conversion.kind == 'c') return compare(conversion, format, static_cast<int>(bits % 127 + 1));
  compare(conversion, format, real);
}

/* Text that is cut inside a character is made good, so that only ASCII compares. */
void checkText(ByteReader& input) {
  Conversion conversion(input, "s");
  std::string argument = literal(input);
  argument += literal(input);
  compare(conversion, conversion.text + "s", argument.c_str());
  std::string wild(input.take(24));
  formatted("%s|%.5s", wild.c_str(), wild.c_str());
}

void checkObject(ByteReader& input) {
  auto value = buildValue(input, Carrier::propertyList);
  std::string before = literal(input);
  std::string text = formatted(before + "%@" + "%%%d", value.get(), 7);
  check(text.starts_with(before) && text.ends_with("%7"));
  if (BQGetTypeID(value.get()) == BQStringGetTypeID())
    check(text == before + std::string(textOf(static_cast<const BQString*>(value.get()))) + "%7");
}

/* Any bytes between conversions, which must not shift the arguments. */
void checkLiterals(ByteReader& input) {
  std::string a = literal(input), b = literal(input), c = literal(input);
  int integer = input.number<int>();
  check(formatted(a + "%d" + b + "%s" + c + "%x%g", integer, "text", 255u, 2.5) ==
        a + std::to_string(integer) + b + "text" + c + "ff2.5");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  constexpr void (*kChecks[])(ByteReader&) = {checkNumber, checkText, checkObject, checkLiterals};
  ByteReader input(bytes, size);
  for (int runs = 0; runs < 8 && !input.atEnd(); ++runs) kChecks[input.byte() % std::size(kChecks)](input);
  return 0;
}
