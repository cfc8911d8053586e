#include <cstring>

#include <BQ/BQString.h>

#include "platform/text/StringImpl.h"
#include "platform/text/StringSearch.h"

namespace bq {
namespace {

bool matchesAt(std::string_view text, size_t position, std::string_view part, bool ignoreCase) {
  std::string_view candidate = text.substr(position, part.size());
  return ignoreCase ? equalIgnoringCase(candidate, part) : candidate == part;
}

size_t findIgnoringCase(std::string_view text, std::string_view part, size_t start) {
  char first = foldCase(part[0]);
  for (size_t position = start; position + part.size() <= text.size(); ++position) {
    if (foldCase(text[position]) == first && matchesAt(text, position, part, true)) return position;
  }
  return std::string_view::npos;
}

size_t findLast(std::string_view text, std::string_view part, bool ignoreCase) {
  for (size_t position = text.size() - part.size() + 1; position-- > 0;) {
    if (matchesAt(text, position, part, ignoreCase)) return position;
  }
  return std::string_view::npos;
}

BQComparisonResult order(int difference) {
  return difference < 0 ? kBQCompareLessThan : difference > 0 ? kBQCompareGreaterThan : kBQCompareEqualTo;
}

BQComparisonResult compareIgnoringCase(std::string_view first, std::string_view second) {
  size_t common = first.size() < second.size() ? first.size() : second.size();
  for (size_t i = 0; i < common; ++i) {
    auto left = static_cast<unsigned char>(foldCase(first[i])),
         right = static_cast<unsigned char>(foldCase(second[i]));
    if (left != right) return order(left < right ? -1 : 1);
  }
  return order(first.size() < second.size() ? -1 : first.size() > second.size());
}

}  // namespace

size_t findText(std::string_view text, std::string_view part, size_t start, bool ignoreCase) {
  if (part.empty() || start > text.size()) return std::string_view::npos;
  return ignoreCase ? findIgnoringCase(text, part, start) : text.find(part, start);
}

}  // namespace bq

using bq::isString;
using bq::viewOf;

BQComparisonResult BQStringCompare(const BQString* first, const BQString* second,
                                   BQStringCompareOptions options) {
  if (!isString(first) || !isString(second)) {
    return bq::order((isString(first) ? 1 : 0) - (isString(second) ? 1 : 0));
  }
  if ((options & kBQCompareCaseInsensitive) != 0)
    return bq::compareIgnoringCase(viewOf(first), viewOf(second));
  return bq::order(viewOf(first).compare(viewOf(second)));
}

bool BQStringEqualsIgnoringCase(const BQString* first, const BQString* second) {
  if (!isString(first) || !isString(second)) return false;
  return first == second || bq::equalIgnoringCase(viewOf(first), viewOf(second));
}

bool BQStringHasPrefix(const BQString* string, const BQString* prefix) {
  return isString(string) && isString(prefix) && viewOf(string).starts_with(viewOf(prefix));
}

bool BQStringHasSuffix(const BQString* string, const BQString* suffix) {
  return isString(string) && isString(suffix) && viewOf(string).ends_with(viewOf(suffix));
}

bool BQStringFind(const BQString* string, const BQString* text, BQRange range, BQStringCompareOptions options,
                  BQRange* found) {
  if (!isString(string) || !isString(text) || text->length == 0) return false;
  if (!bq::isValidRange(viewOf(string), range) || text->length > static_cast<uint64_t>(range.length))
    return false;
  std::string_view searched =
      viewOf(string).substr(static_cast<size_t>(range.location), static_cast<size_t>(range.length));
  bool ignoreCase = (options & kBQCompareCaseInsensitive) != 0;
  size_t position = (options & kBQCompareBackwards) != 0
                        ? bq::findLast(searched, viewOf(text), ignoreCase)
                        : bq::findText(searched, viewOf(text), 0, ignoreCase);
  if (position == std::string_view::npos) return false;
  if (found != nullptr) {
    *found = BQRangeMake(range.location + static_cast<BQIndex>(position), static_cast<BQIndex>(text->length));
  }
  return true;
}
