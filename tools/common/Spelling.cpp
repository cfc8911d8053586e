#include "common/Spelling.h"

#include <cctype>

#include <algorithm>

#include <CLI/CLI.hpp>

namespace tools {
namespace {

/* Longer words are none of ours, and cost time. */
constexpr size_t kLongestWord = 40;

bool areSame(char a, char b) {
  return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
}

/* How many letters have to be put in, taken out, changed or swapped with their neighbour. */
size_t editDistance(std::string_view from, std::string_view to) {
  /* The distances of the beginnings of `from` to every beginning of `to`: two letters back, one, none. */
  std::vector<size_t> before, last(to.size() + 1), row(to.size() + 1);
  for (size_t k = 0; k <= to.size(); ++k) row[k] = k;
  for (size_t i = 1; i <= from.size(); ++i) {
    before = last;
    last = row;
    row[0] = i;
    for (size_t k = 1; k <= to.size(); ++k) {
      size_t changed = last[k - 1] + (areSame(from[i - 1], to[k - 1]) ? 0 : 1);
      row[k] = std::min({changed, last[k] + 1, row[k - 1] + 1});
      bool isSwapped = i > 1 && k > 1 && areSame(from[i - 1], to[k - 2]) && areSame(from[i - 2], to[k - 1]);
      if (isSwapped) row[k] = std::min(row[k], before[k - 2] + 1);
    }
  }
  return row[to.size()];
}

}  // namespace

std::string_view nearestWord(std::string_view misspelt, const std::vector<std::string_view>& words,
                             size_t mostEdits) {
  std::string_view nearest;
  if (misspelt.size() > kLongestWord) return nearest;
  size_t least = mostEdits + 1;
  for (std::string_view word : words) {
    size_t distance = editDistance(misspelt, word);
    if (distance >= least || 2 * distance >= std::max(word.size(), misspelt.size())) continue;
    least = distance;
    nearest = word;
  }
  return nearest;
}

std::string suggestionFor(std::string_view misspelt, const std::vector<std::string_view>& words) {
  std::string_view word = nearestWord(misspelt, words);
  return word.empty() ? "" : "; did you mean " + std::string(word) + "?";
}

std::string nameInArgument(std::string_view argument) {
  auto isInName = [](unsigned char c) { return c == '-' || std::isalnum(c) != 0; };
  bool isShort = argument.starts_with('-') && !argument.starts_with("--");
  const auto* end = std::find_if_not(argument.begin(), argument.end(), isInName);
  return isShort ? std::string(argument.substr(0, 2)) : std::string(argument.begin(), end);
}

std::string suggestOption(std::string_view argument, const CLI::App& app) {
  std::string_view misspelt = argument.substr(0, argument.find('='));
  misspelt.remove_prefix(std::min(misspelt.size(), misspelt.find_first_not_of('-')));
  bool mayBeAbbreviated = argument.starts_with("--") && !misspelt.empty();
  std::vector<std::string_view> words, meant;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) {
      words.push_back(name);
      if (mayBeAbbreviated && name.starts_with(misspelt)) meant.push_back(name);
    }
  }
  if (std::string_view word = nearestWord(misspelt, words); meant.empty() && !word.empty()) {
    meant.push_back(word);
  }
  std::string suggestion;
  for (std::string_view word : meant) {
    suggestion.append(suggestion.empty() ? "; did you mean --" : " or --").append(word);
  }
  return suggestion.empty() ? suggestion : suggestion + "?";
}

}  // namespace tools
