#include "source/sources_of_run.h"

#include "platform/paths.h"
#include "settings/options.h"
#include "source/form.h"
#include "source/packed_reader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

namespace velmora {

namespace {

constexpr std::int64_t kMegabyte = 1'000'000;
constexpr std::int64_t kLargestLimit = 1'000'000'000; // MB; no number of bytes overflows

/// nullopt for what is no number of MB.
std::optional<std::int64_t> UnpackLimitBytes(const std::string& text)
{
    if (text.empty())
        return kUsualUnpackLimitBytes;
    std::int64_t megabytes = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), megabytes);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    return isNumber && megabytes > 0 && megabytes <= kLargestLimit ? std::optional(megabytes * kMegabyte)
                                                                   : std::nullopt;
}

bool EndsIn(const std::string& lower, std::initializer_list<std::string_view> endings)
{
    return std::any_of(endings.begin(), endings.end(),
                       [&](std::string_view ending) { return lower.ends_with(ending); });
}

/// The documents of the archive at `file.path`.
std::vector<Source> Members(const Source& file)
{
    const auto archive = std::make_shared<PackedReader>(file.path, PackedReader::As::Archive, file.unpackLimitBytes);
    const std::vector<ArchiveEntry> entries = archive->List();
    std::vector<Source> members;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const std::string lower = LowerCase(entries[i].name);
        const bool isDocument = lower.ends_with(".xml");
        const bool isPacked = EndsIn(lower, {".zip", ".gz", ".bz2", ".xz", ".zst"});
        // Names with a dot at their front are hidden, as they are for wildcards.
        if ((!isDocument && !isPacked) || NamePart(lower).starts_with('.'))
            continue;
        Source member = file;
        member.member = entries[i].name;
        member.entry = i;
        member.archive = archive;
        member.isLastOfFile = false;
        if (entries[i].isProtected)
            member.problem = "is protected by a password: unpack it first";
        else if (isPacked)
            member.problem = kNestedArchive;
        members.push_back(std::move(member));
    }
    if (members.empty())
        throw SourceError("holds nothing whose name ends in .xml");
    members.back().isLastOfFile = true;
    return members;
}

} // namespace

std::optional<std::string> UnfitSources(const ConversionSettings& settings)
{
    if (settings.sourceFile == kStandardInput && !settings.fromUrl && !settings.renamePattern.empty())
        return "Standard input cannot be renamed: xml=- and rename= do not go together; nothing was converted";
    if (!UnpackLimitBytes(settings.unpackLimit))
        return "unpack_limit= takes a number of MB, not \"" + settings.unpackLimit + "\"; nothing was converted";
    return std::nullopt;
}

std::vector<Source> SourcesIn(const std::vector<std::string>& paths, const ConversionSettings& settings)
{
    std::vector<Source> sources;
    for (const std::string& path : paths) {
        Source file(path);
        file.encoding = settings.encoding;
        file.only = settings.only;
        file.unpackLimitBytes = UnpackLimitBytes(settings.unpackLimit).value_or(kUsualUnpackLimitBytes);
        if (file.IsStandardInput() || FormOfFile(path) != Form::Zip) {
            sources.push_back(std::move(file));
            continue;
        }
        try {
            std::vector<Source> members = Members(file);
            std::move(members.begin(), members.end(), std::back_inserter(sources));
        } catch (const SourceError& error) {
            file.problem = error.what();
            sources.push_back(std::move(file));
        }
    }
    return sources;
}

} // namespace velmora
