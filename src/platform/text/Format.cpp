#include <cstdio>
#include <cstring>

#include <string>

#include <BQ/BQString.h>

#include "platform/object/Description.h"
#include "platform/text/CLocale.h"
#include "platform/text/Encoding.h"
#include "platform/text/Replacement.h"
#include "platform/text/StringImpl.h"

namespace bq {
namespace {

enum class Length { none, hh, h, l, ll, q, j, z, t, L };

/* One conversion of a format: "%-5.*ld". */
struct Conversion {
  std::string_view text; /* from the percent sign to the conversion character */
  int stars = 0;         /* numbers given by arguments */
  Length length = Length::none;
  char kind = '\0';
};

bool isFlagOrNumber(char character) {
  return std::strchr("-+ #0'.123456789*", character) != nullptr;
}

Length parseLength(std::string_view& rest) {
  struct Row {
    std::string_view text;
    Length length;
  };
  static constexpr Row kRows[] = {{"hh", Length::hh}, {"h", Length::h}, {"ll", Length::ll},
                                  {"l", Length::l},   {"q", Length::q}, {"j", Length::j},
                                  {"z", Length::z},   {"t", Length::t}, {"L", Length::L}};
  for (const Row& row : kRows) {
    if (!rest.starts_with(row.text)) continue;
    rest.remove_prefix(row.text.size());
    return row.length;
  }
  return Length::none;
}

/* Reads the conversion at the start of `format`; false if there is none that can be used. */
bool parseConversion(std::string_view format, Conversion& conversion) {
  std::string_view rest = format.substr(1);
  while (!rest.empty() && rest[0] != '\0' && isFlagOrNumber(rest[0])) {
    if (rest[0] == '*') ++conversion.stars;
    rest.remove_prefix(1);
  }
  conversion.length = parseLength(rest);
  if (rest.empty() || rest[0] == '\0' || std::strchr("diouxXcsSCpaAeEfFgGmn@%", rest[0]) == nullptr)
    return false;
  conversion.kind = rest[0];
  conversion.text = format.substr(0, format.size() - rest.size() + 1);
  return conversion.stars <= 2 && conversion.text.size() < 64;
}

class Formatter {
 public:
  Formatter(MutableString* out, va_list arguments) : out_(out) { va_copy(arguments_, arguments); }
  ~Formatter() { va_end(arguments_); }
  Formatter(const Formatter&) = delete;
  Formatter& operator=(const Formatter&) = delete;

  void format(std::string_view text) {
    while (!text.empty()) {
      size_t percent = text.find('%');
      if (percent == std::string_view::npos) percent = text.size();
      appendText(out_, text.substr(0, percent));
      text.remove_prefix(percent);
      if (!text.empty()) text.remove_prefix(convert(text));
    }
  }

 private:
  /* Writes what stands at the start of `text`, a percent sign, and returns how much of it was read. */
  size_t convert(std::string_view text) {
    Conversion conversion;
    if (!parseConversion(text, conversion)) {
      appendText(out_, text.substr(0, 1));
      return 1;
    }
    for (int i = 0; i < conversion.stars; ++i) stars_[i] = va_arg(arguments_, int);
    write(conversion);
    return conversion.text.size();
  }

  void write(const Conversion& conversion) {
    switch (conversion.kind) {
      case '%':
        return appendText(out_, "%");
      case '@':
        return appendFormattingDescription(out_, va_arg(arguments_, BQTypeRef));
      case 'd':
      case 'i':
        return writeSigned(conversion);
      case 'o':
      case 'u':
      case 'x':
      case 'X':
        return writeUnsigned(conversion);
      case 's':
        return conversion.length == Length::l ? print(conversion, va_arg(arguments_, const wchar_t*))
                                              : writeText(conversion, va_arg(arguments_, const char*));
      case 'S':
        return print(conversion, va_arg(arguments_, const wchar_t*));
      case 'c':
        return conversion.length == Length::l ? print(conversion, va_arg(arguments_, wint_t))
                                              : print(conversion, va_arg(arguments_, int));
      case 'C':
        return print(conversion, va_arg(arguments_, wint_t));
      case 'p':
        return print(conversion, va_arg(arguments_, void*));
      case 'm':
        return print(conversion, 0);
      case 'n':
        return skipCount(conversion);
      default:
        return writeReal(conversion);
    }
  }

  void writeText(const Conversion& conversion, const char* text) {
    if (text == nullptr) text = "(null)";
    if (conversion.text == "%s") return append(text);
    print(conversion, text);
  }

  /* Would let a format write to memory; shows as it stands. */
  void skipCount(const Conversion& conversion) {
    static_cast<void>(va_arg(arguments_, void*));
    appendText(out_, conversion.text);
  }

  void writeSigned(const Conversion& conversion) {
    switch (conversion.length) {
      case Length::l:
        return print(conversion, va_arg(arguments_, long));
      case Length::ll:
      case Length::q:
      case Length::L:
        return print(conversion, va_arg(arguments_, long long));
      case Length::j:
        return print(conversion, va_arg(arguments_, intmax_t));
      case Length::z:
        return print(conversion, va_arg(arguments_, ssize_t));
      case Length::t:
        return print(conversion, va_arg(arguments_, ptrdiff_t));
      default:
        return print(conversion, va_arg(arguments_, int));
    }
  }

  void writeUnsigned(const Conversion& conversion) {
    switch (conversion.length) {
      case Length::l:
        return print(conversion, va_arg(arguments_, unsigned long));
      case Length::ll:
      case Length::q:
      case Length::L:
        return print(conversion, va_arg(arguments_, unsigned long long));
      case Length::j:
        return print(conversion, va_arg(arguments_, uintmax_t));
      case Length::z:
        return print(conversion, va_arg(arguments_, size_t));
      case Length::t:
        return print(conversion, va_arg(arguments_, ptrdiff_t));
      default:
        return print(conversion, va_arg(arguments_, unsigned int));
    }
  }

  void writeReal(const Conversion& conversion) {
    if (conversion.length == Length::L) return print(conversion, va_arg(arguments_, long double));
    print(conversion, va_arg(arguments_, double));
  }

  /* Hands one conversion to snprintf. */
  template <class T>
  void print(const Conversion& conversion, T argument) {
    char directive[64];
    std::memcpy(directive, conversion.text.data(), conversion.text.size());
    directive[conversion.text.size()] = '\0';
    CLocale locale;
    char small[128];
    int length = callPrint(small, sizeof small, directive, conversion.stars, argument);
    if (length < 0) return appendText(out_, "\xEF\xBF\xBD");
    if (static_cast<size_t>(length) < sizeof small) return append({small, static_cast<size_t>(length)});
    std::string large(static_cast<size_t>(length), '\0');
    callPrint(large.data(), large.size() + 1, directive, conversion.stars, argument);
    append(large);
  }

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  template <class T>
  int callPrint(char* buffer, size_t size, const char* directive, int stars, T argument) {
    switch (stars) {
      case 0:
        return std::snprintf(buffer, size, directive, argument);
      case 1:
        return std::snprintf(buffer, size, directive, stars_[0], argument);
      default:
        return std::snprintf(buffer, size, directive, stars_[0], stars_[1], argument);
    }
  }
#pragma GCC diagnostic pop

  void append(std::string_view text) {
    if (isWellFormedUTF8(text.data(), text.size())) return appendText(out_, text);
    appendText(out_, replaceMalformed(text));
  }

  MutableString* out_;
  va_list arguments_;
  int stars_[2] = {0, 0};
};

}  // namespace
}  // namespace bq

const BQString* BQStringCreateWithFormat(const BQString* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const BQString* result = BQStringCreateWithFormatAndArguments(format, arguments);
  va_end(arguments);
  return result;
}

const BQString* BQStringCreateWithFormatAndArguments(const BQString* format, va_list arguments) {
  if (!bq::isString(format)) return nullptr;
  BQString* result = BQStringCreateMutable(0);
  BQStringAppendFormatAndArguments(result, format, arguments);
  return bq::freeze(result);
}

void BQStringAppendFormat(BQString* string, const BQString* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  BQStringAppendFormatAndArguments(string, format, arguments);
  va_end(arguments);
}

void BQStringAppendFormatAndArguments(BQString* string, const BQString* format, va_list arguments) {
  bq::MutableString* target = bq::asMutableString(string);
  if (target == nullptr || !bq::isString(format)) return;
  bool isTarget = format == string; /* whose bytes may move */
  auto kept = isTarget ? bq::Ref<const BQString>::adopt(BQStringCreateCopy(format)) : nullptr;
  bq::Formatter(target, arguments).format(bq::viewOf(isTarget ? kept.get() : format));
}
