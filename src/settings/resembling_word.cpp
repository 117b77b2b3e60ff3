#include "settings/command_line.h"

#include "settings/options.h"

#include <algorithm>
#include <string>
#include <vector>

namespace velmora {

namespace {

constexpr std::size_t kLongestTried = 60;
constexpr std::size_t kShortestBeginning = 4;

/// The least number of letters to insert, leave out, replace or change over with a neighbour to get from `a` to `b`.
std::size_t Distance(std::string_view a, std::string_view b)
{
    std::vector<std::vector<std::size_t>> steps(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                steps[i][j] = i + j;
                continue;
            }
            const std::size_t replaced = steps[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            steps[i][j] = std::min({steps[i - 1][j] + 1, steps[i][j - 1] + 1, replaced});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                steps[i][j] = std::min(steps[i][j], steps[i - 2][j - 2] + 1);
        }
    }
    return steps[a.size()][b.size()];
}

std::string Without(std::string_view signs, std::string_view word)
{
    std::string rest(word);
    std::erase_if(rest, [signs](char c) { return signs.find(c) != signs.npos; });
    return rest;
}

/// How far off a word of so many letters may be.
std::size_t Tolerance(std::size_t letters)
{
    return letters < 2 ? 0 : letters < 4 ? 1 : 2;
}

bool Resembles(std::string_view typed, std::string_view word, std::size_t distance)
{
    const std::string letters = Without("+-_=", word);
    const std::string beginning = Without("+-_=", typed);
    return Without("-_", typed) == Without("-_", word) || distance <= Tolerance(letters.size()) ||
           (beginning.size() >= kShortestBeginning && letters.starts_with(beginning));
}

} // namespace

std::optional<std::string_view> ResemblingWord(std::string_view token)
{
    if (token.starts_with("--")) // as other programs have it; whoever writes so wants the word itself
        token.remove_prefix(2);
    const std::size_t equals = token.find('=');
    const std::string typed = LowerCase(equals == token.npos ? token : token.substr(0, equals + 1));
    std::optional<std::string_view> nearest;
    std::size_t least = kLongestTried;
    if (typed.size() >= kLongestTried)
        return nearest;
    for (const Option& option : Options()) {
        for (const std::string_view words : {option.words, option.offWords}) {
            for (const std::string_view word : Listed(words)) {
                const std::size_t distance = Distance(typed, word);
                if (distance < least && Resembles(typed, word, distance)) {
                    least = distance;
                    nearest = word;
                }
            }
        }
    }
    return nearest;
}

} // namespace velmora
