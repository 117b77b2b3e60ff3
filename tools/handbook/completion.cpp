#include "handbook/completion.h"

#include "settings/options.h"

#include <string_view>
#include <variant>
#include <vector>

namespace velmora::handbook {

namespace {

constexpr std::string_view kFolder = "FOLDER";

/// `items` with `separator` between two.
std::string Joined(const std::vector<std::string_view>& items, std::string_view separator)
{
    std::string text;
    for (const std::string_view item : items)
        text.append(text.empty() ? "" : separator).append(item);
    return text;
}

/// What a plain name may end in: sources and databases.
std::string PlainEndings()
{
    std::string endings;
    for (const Option& option : Options())
        if (option.control == Option::Control(&Controls::txtFILE_XML) ||
            option.control == Option::Control(&Controls::txtFILE_MDB))
            endings.append(endings.empty() ? "" : " ").append(option.endings);
    return endings;
}

/// A word that is offered, and what it does, in a few words.
struct Offer {
    std::string_view word;
    std::string_view help;
};

std::vector<Offer> Offers()
{
    std::vector<Offer> offers;
    for (const Option& option : Options()) {
        const auto brief = [](std::string_view help) { return help.substr(0, help.find_first_of(":;(")); };
        offers.push_back({Listed(option.words).front(), brief(option.help)});
        if (!option.offWords.empty())
            offers.push_back({Listed(option.offWords).front(), brief(option.offHelp)});
    }
    offers.push_back({"--help", "every option"});
    offers.push_back({"--version", "the version"});
    return offers;
}

/// A key whose values are known.
struct Key {
    enum class Takes { Files, Folders, Choices };
    std::vector<std::string_view> words;
    Takes takes;
    std::string list; ///< endings of files, or choices; blank-separated
};

/// A branch for each such key, as `branch` writes it.
std::string BranchesOf(std::string (*branch)(const Key&))
{
    std::string text;
    for (const Option& option : Options()) {
        const std::vector<std::string_view> words = Listed(option.words);
        if (std::holds_alternative<ComboControl Controls::*>(option.control))
            text += branch({words, Key::Takes::Choices, Joined(Listed(option.value, '|'), " ")});
        else if (option.value == kFolder)
            text += branch({words, Key::Takes::Folders, {}});
        else if (!option.endings.empty())
            text += branch({words, Key::Takes::Files, std::string(option.endings)});
    }
    return text;
}

/// Single quotes around `text`.
std::string Quoted(std::string_view text, std::string_view quoteInside)
{
    std::string quoted = "'";
    for (const char c : text)
        c == '\'' ? quoted.append(quoteInside) : quoted.append(1, c);
    return quoted + "'";
}

std::string With(std::string text, std::string_view mark, std::string_view replacement)
{
    return text.replace(text.find(mark), mark.size(), replacement);
}

constexpr std::string_view kBash =
    R"sh(# What bash offers behind velmora and velmora-gui. Made from the table of options.

# Files that end in one of the words given, and folders.
_velmora_files()
{
    local IFS=$'\n' ending
    COMPREPLY+=($(compgen -d -- "$word"))
    for ending in "$@" "${@^^}"; do
        COMPREPLY+=($(compgen -f -X "!*.$ending" -- "$word"))
    done
    compopt -o filenames
}

_velmora()
{
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} key= prefix=
    COMPREPLY=()
    # Where "=" parts words, as it does by default, key, "=" and value are three.
    if [[ $word == = ]]; then
        key=$before= word=
    elif [[ $before == = ]]; then
        key=${COMP_WORDS[COMP_CWORD-2]}=
    elif [[ $word == *=* ]]; then
        key=${word%%=*}= word=${word#*=} prefix=$key
    fi
    case ${key,,} in
    "")
        COMPREPLY=($(compgen -W "@WORDS@" -- "${word,,}"))
        if [[ ${#COMPREPLY[@]} -eq 0 || -z $word ]]; then
            _velmora_files @PLAIN@
        elif [[ ${#COMPREPLY[@]} -eq 1 && $COMPREPLY == *= ]]; then
            compopt -o nospace
        fi
        [[ -n $word ]] || compopt +o filenames
        ;;
@BRANCHES@    esac
    COMPREPLY=("${COMPREPLY[@]/#/$prefix}")
}

complete -F _velmora velmora velmora-gui
)sh";

constexpr std::string_view kZsh = R"sh(#compdef velmora velmora-gui
# What zsh offers behind velmora and velmora-gui. Made from the table of options.

_velmora_files()
{
    _path_files -g "*.(#i)(${(j:|:)@})(-.) *(-/)"
}

local key=${(L)PREFIX%%\=*}=
if compset -P 1 '*='; then
    case $key in
@BRANCHES@    esac
    return
fi
local -a keys switches
keys=(
@KEYS@)
switches=(
@SWITCHES@)
_alternative 'keys:key:{ _describe -t keys key keys -S "" }' \
    'switches:switch:{ _describe -t switches switch switches }' \
    'files:file:_velmora_files @PLAIN@'
)sh";

constexpr std::string_view kFish =
    R"sh(# What fish offers behind velmora and velmora-gui. Made from the table of options.

# Files below a beginning of a path that end in one of the words given, and folders; the key stands in front again.
function __velmora_files --argument-names key word
    for path in $word*
        if test -d $path
            echo $key$path/
        else if string match -qir '\.('(string join '|' $argv[3..-1])')$' -- $path
            echo $key$path
        end
    end
end

function __velmora_offers
    set -l token (commandline -ct)
    if not string match -q '*=*' -- $token
        __velmora_files '' $token @PLAIN@
        return
    end
    set -l key (string replace -r '=.*' '=' -- $token)
    set -l word (string replace -r '^[^=]*=' '' -- $token)
    switch (string lower -- $key)
@BRANCHES@    end
end

for program in velmora velmora-gui
    complete -c $program -f
    complete -c $program -a '(__velmora_offers)'
@WORDS@end
)sh";

std::string BashBranch(const Key& key)
{
    std::string action = "_velmora_files " + key.list;
    if (key.takes == Key::Takes::Choices)
        action = "COMPREPLY=($(compgen -W \"" + key.list + "\" -- \"$word\"))";
    return "    " + Joined(key.words, "|") + ") " + action + " ;;\n";
}

std::string ZshBranch(const Key& key)
{
    constexpr std::string_view kActions[] = {"_velmora_files ", "_files -/", "compadd -- "};
    return "    " + Joined(key.words, "|") + ") " + std::string(kActions[static_cast<int>(key.takes)]) + key.list +
           " ;;\n";
}

std::string FishBranch(const Key& key)
{
    std::string action = "__velmora_files $key $word " + key.list;
    if (key.takes == Key::Takes::Choices)
        action = "printf $key'%s\\n' " + key.list;
    return "        case " + Joined(key.words, " ") + "\n            " + action + "\n";
}

} // namespace

std::string BashCompletion()
{
    std::string words;
    for (const Offer& offer : Offers())
        words.append(words.empty() ? "" : " ").append(offer.word);
    const std::string branches = BranchesOf(BashBranch);
    std::string text = With(std::string(kBash), "@WORDS@", words);
    text = With(std::move(text), "@PLAIN@", PlainEndings());
    return With(std::move(text), "@BRANCHES@", branches);
}

std::string ZshCompletion()
{
    std::string keys;
    std::string switches;
    for (const Offer& offer : Offers()) {
        std::string word(offer.word);
        std::string& list = word.ends_with('=') ? keys : switches;
        list.append("    ").append(Quoted(word.append(":").append(offer.help), "'\\''")).append("\n");
    }
    const std::string branches = BranchesOf(ZshBranch);
    std::string text = With(std::string(kZsh), "@BRANCHES@", branches);
    text = With(std::move(text), "@KEYS@", keys);
    text = With(std::move(text), "@SWITCHES@", switches);
    return With(std::move(text), "@PLAIN@", PlainEndings());
}

std::string FishCompletion()
{
    std::string words;
    for (const Offer& offer : Offers()) {
        words.append("    complete -c $program -a ").append(Quoted(offer.word, "\\'"));
        words.append(" -d ").append(Quoted(offer.help, "\\'")).append("\n");
    }
    const std::string branches = BranchesOf(FishBranch);
    std::string text = With(std::string(kFish), "@PLAIN@", PlainEndings());
    text = With(std::move(text), "@BRANCHES@", branches);
    return With(std::move(text), "@WORDS@", words);
}

} // namespace velmora::handbook
