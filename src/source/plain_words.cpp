#include "source/plain_words.h"

#include "platform/paths.h"
#include "settings/command_line.h"
#include "settings/options.h"
#include "source/form.h"
#include "source/source_list.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace velmora {

namespace {

constexpr std::array<std::string_view, 6> kSourceEndings{".xml",    ".xml.gz",  ".xml.bz2",
                                                         ".xml.xz", ".xml.zst", ".xml.zip"};
constexpr std::string_view kDatabaseEnding = ".mdb";
constexpr const char* kKeepsDatabase = "-recreate_database";

bool EndsLikeSource(const std::string& word)
{
    const std::string lower = LowerCase(word);
    return std::any_of(kSourceEndings.begin(), kSourceEndings.end(),
                       [&](std::string_view ending) { return lower.ends_with(ending); });
}

bool EndsLikeDatabase(const std::string& word)
{
    return LowerCase(word).ends_with(kDatabaseEnding);
}

/// A folder in front says that a file is meant.
bool MayBeMistyped(const std::string& word)
{
    const std::string first = word.substr(0, word.find_first_of("/\\"));
    const std::size_t colon = first.find(':');
    return word.starts_with('-') || word.starts_with('+') || first.find('=') != first.npos ||
           (colon != first.npos && ResemblingWord(first.substr(0, colon) + '='));
}

[[noreturn]] void Refuse(const std::string& reason)
{
    throw CommandLineError(reason + "; nothing was converted");
}

std::string Quoted(const std::string& word)
{
    return '"' + word + '"';
}

class PlainWordReader {
public:
    void Read(const std::string& word)
    {
        const Option* const option = OptionNamed(word);
        if (option != nullptr)
            return TakeOption(*option, word);
        const bool endsLikeSource = EndsLikeSource(word);
        const bool endsLikeDatabase = EndsLikeDatabase(word);
        if (MayBeMistyped(word)) {
            if ((endsLikeSource || endsLikeDatabase) && FileExists(word))
                Refuse(Quoted(word) + " is a file and may be a mistyped option: for the file write " +
                       Quoted(std::string{'.', kPathSeparator} + word));
            others_.push_back(word);
        } else if (endsLikeDatabase) {
            TakeDatabase(word);
        } else if (endsLikeSource || (FileExists(word) && FormOfFile(word) != Form::Other)) {
            TakeSource(word);
        } else {
            others_.push_back(word);
        }
    }

    [[nodiscard]] PlainWords Result() const
    {
        PlainWords result;
        result.nameFiles = !sources_.empty() || !database_.empty();
        if (!database_.empty() && hasDatabaseOption_)
            Refuse("Two databases are named, one of them " + Quoted(database_));
        if (!sources_.empty() && !sourceOption_.empty())
            Refuse("The plain name " + Quoted(sources_.front()) + " and " + Quoted(sourceOption_) +
                   " both name the source");
        if (!database_.empty()) {
            result.arguments.emplace_back(kKeepsDatabase);
            result.arguments.push_back("mdb=" + database_);
        }
        if (!sources_.empty())
            result.arguments.push_back("xml=" + ListedSources());
        result.arguments.insert(result.arguments.end(), others_.begin(), others_.end());
        return result;
    }

private:
    void TakeOption(const Option& option, const std::string& word)
    {
        if (option.control == Option::Control(&Controls::txtFILE_MDB))
            hasDatabaseOption_ = true;
        if (option.control == Option::Control(&Controls::txtFILE_XML) ||
            option.control == Option::Control(&Controls::txtXML_URL))
            sourceOption_ = word;
        others_.push_back(word);
    }
    void TakeDatabase(const std::string& word)
    {
        if (!database_.empty())
            Refuse("Two databases are named, " + Quoted(database_) + " and " + Quoted(word));
        database_ = word;
    }
    void TakeSource(const std::string& word)
    {
        const bool isMarked = word.starts_with(kListMark);
        sources_.push_back(isMarked ? std::string{'.', kPathSeparator} + word : word);
    }
    [[nodiscard]] std::string ListedSources() const
    {
        std::string text;
        for (const std::string& source : sources_) {
            if (sources_.size() > 1 && source.find(kSourceSeparator) != source.npos)
                Refuse(Quoted(source) + " holds a \"" + kSourceSeparator +
                       "\", which stands between sources: convert it alone, or name it in a list, xml=" + kListMark +
                       "LIST");
            text.append(text.empty() ? 0 : 1, kSourceSeparator).append(source);
        }
        return text;
    }

    std::vector<std::string> others_, sources_;
    std::string database_, sourceOption_;
    bool hasDatabaseOption_ = false;
};

} // namespace

PlainWords TakePlainWords(const std::vector<std::string>& arguments)
{
    PlainWordReader reader;
    for (const std::string& word : arguments)
        reader.Read(word);
    return reader.Result();
}

} // namespace velmora
