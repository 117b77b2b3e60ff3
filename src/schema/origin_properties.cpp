#include "schema/origin_properties.h"

#include "platform/utf8.h"

#include <map>
#include <string>

namespace velmora {

namespace {

constexpr std::string_view kSource = "velmora_source";
constexpr std::string_view kDescription = "Description";
constexpr std::string_view kType = "velmora_type";
constexpr std::string_view kFormat = "Format";
constexpr std::string_view kTimeFormat = "Long Time";
constexpr std::string_view kTextFormat = "@"; ///< as it is
/// Of one part of a source: with two bytes for each, well below what an entry of the properties can hold.
constexpr std::size_t kMaxPart = 30'000;
constexpr std::size_t kMaxCharacter = 4;
/// What Access lets people write beside a column.
constexpr std::size_t kMaxDescription = 255;

void AppendSource(std::vector<jet::Property>& properties, const std::string& column, std::string_view text)
{
    for (std::size_t part = 1; !text.empty(); ++part) {
        const std::string_view piece = CutUtf8(text, kMaxPart);
        text.remove_prefix(piece.size());
        properties.push_back({column, std::string(kSource) + (part == 1 ? "" : std::to_string(part)),
                              std::string(piece), jet::ColumnType::Memo});
    }
}

template <typename Origin>
void Append(std::vector<jet::Property>& properties, const std::string& column, const Origin& origin, bool access97)
{
    AppendSource(properties, column, OriginText(origin, access97));
    properties.push_back({column, std::string(kDescription), std::string(CutUtf8(Describe(origin), kMaxDescription)),
                          jet::ColumnType::Text});
}

} // namespace

std::vector<jet::Property> ToProperties(const Origins& origins, bool access97)
{
    std::vector<jet::Property> properties;
    if (origins.table)
        Append(properties, {}, *origins.table, access97);
    for (const NamedColumnOrigin& column : origins.columns)
        Append(properties, column.column, column.origin, access97);
    for (const ChosenType& chosen : origins.types) {
        properties.push_back(
            {chosen.column, std::string(kType), std::string(TypeText(chosen.type)), jet::ColumnType::Text});
        // What showed a time of day, or a number, would show in a text.
        if (chosen.type == ColumnType::Time || chosen.type == ColumnType::Text)
            properties.push_back({chosen.column, std::string(kFormat),
                                  std::string(chosen.type == ColumnType::Time ? kTimeFormat : kTextFormat),
                                  jet::ColumnType::Text});
    }
    return properties;
}

Origins ToOrigins(std::span<const jet::Property> properties)
{
    struct Source {
        std::string column;
        std::string text;
        bool goesOn = true;
    };
    // Parts follow each other in the order in which they were first written. One that is not full is the last; what
    // follows is left from a longer text.
    std::vector<Source> sources;
    std::map<std::string, std::size_t> positions; // by column
    Origins origins;
    for (const jet::Property& property : properties) {
        if (const auto type = property.name == kType ? ReadType(property.value) : std::nullopt)
            origins.types.push_back({property.column, *type});
        if (!property.name.starts_with(kSource))
            continue;
        const auto [at, isNew] = positions.emplace(property.column, sources.size());
        if (isNew)
            sources.push_back({property.column, {}});
        Source& source = sources[at->second];
        if (source.goesOn)
            source.text += property.value;
        source.goesOn = source.goesOn && property.value.size() + kMaxCharacter > kMaxPart;
    }
    for (const Source& source : sources) {
        if (source.column.empty())
            origins.table = ReadTableOrigin(source.text);
        else if (const std::optional<ColumnOrigin> origin = ReadColumnOrigin(source.text))
            origins.columns.push_back({source.column, *origin});
    }
    return origins;
}

} // namespace velmora
