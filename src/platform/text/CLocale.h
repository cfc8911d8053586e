/* The locale in which numbers are written and read. */
#ifndef BQ_TEXT_C_LOCALE_H
#define BQ_TEXT_C_LOCALE_H

#include <locale.h>

namespace bq {

/*
 * Makes the "C" locale the thread's, so that numbers do not follow the program's locale, with UTF-8
 * for wide characters.
 */
class CLocale {
 public:
  CLocale() : previous_(uselocale(cLocale())) {}
  ~CLocale() { uselocale(previous_); }
  CLocale(const CLocale&) = delete;
  CLocale& operator=(const CLocale&) = delete;

 private:
  static locale_t cLocale() {
    static const locale_t locale = makeLocale();
    return locale;
  }
  static locale_t makeLocale() {
    locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
    locale_t withUTF8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", plain);
    return withUTF8 != nullptr ? withUTF8 : plain;
  }

  locale_t previous_;
};

}  // namespace bq

#endif
