/* Words that were most likely meant by misspelt ones. */
#ifndef TOOLS_SPELLING_H
#define TOOLS_SPELLING_H

#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
}

namespace tools {

/*
 * The word of a list that is nearest to a misspelt one: at most so many letters are missing, too many, others
 * or in each other's place, and fewer than half of them; case does not count. Empty if there is none.
 */
std::string_view nearestWord(std::string_view misspelt, const std::vector<std::string_view>& words,
                             size_t mostEdits = 2);

/* "; did you mean WORD?", or nothing. */
std::string suggestionFor(std::string_view misspelt, const std::vector<std::string_view>& words);

/* What an argument names that looks like an option, without a value, which may be secret. */
std::string nameInArgument(std::string_view argument);

/* A suggestion for such an argument, whose name is abbreviated or misspelt. */
std::string suggestOption(std::string_view argument, const CLI::App& app);

}  // namespace tools

#endif
