#include "plan/path_facts.h"

#include <string_view>
#include <unordered_map>

namespace velmora {

namespace {

constexpr std::size_t kTextCharacters = 255;
constexpr ElementId kElementsOfPiece = 0x4000;

/// A character has one byte at least.
bool IsLong(std::string_view text)
{
    if (text.size() <= kTextCharacters)
        return false;
    std::size_t units = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        units += (byte & 0xC0) == 0x80 ? 0 : byte >= 0xF0 ? 2 : 1; // UTF-16 has two units for what has four bytes here
    }
    return units > kTextCharacters;
}

/// Finds an attribute's facts: elements of one path mostly write them in one order, so the next one is looked at first.
class AttributeBook {
public:
    AttributeFacts& Find(PathId path, std::vector<AttributeFacts>& attributes, std::size_t guess, NameId name)
    {
        if (guess < attributes.size() && attributes[guess].name == name)
            return attributes[guess];
        const auto [at, isNew] = positions_.try_emplace(std::uint64_t{path} << 32 | name, attributes.size());
        if (isNew)
            attributes.push_back({name});
        return attributes[at->second];
    }

private:
    std::unordered_map<std::uint64_t, std::size_t> positions_; ///< by path and name
};

} // namespace

std::vector<PathFacts> GatherFacts(const Document& document, bool looksAtForms, const std::function<void()>& onPiece)
{
    std::vector<PathFacts> facts(document.Paths().Size());
    AttributeBook book;
    const auto count = static_cast<ElementId>(document.ElementCount());
    for (ElementId element = 0; element < count; ++element) {
        if (element % kElementsOfPiece == 0)
            onPiece();
        document.Passed(element);
        const PathId path = document.Path(element);
        PathFacts& fact = facts[path];
        ++fact.count;
        fact.hasChildren = fact.hasChildren || document.HasChildren(element);
        fact.isRepeated = fact.isRepeated || document.IsRepeated(element);
        const std::string_view text = document.Content(element);
        const bool isEmpty = IsBlank(text);
        fact.hasText = fact.hasText || !isEmpty;
        fact.hasEmptyText = fact.hasEmptyText || isEmpty;
        if (looksAtForms && !isEmpty)
            fact.texts.Add(text);
        fact.hasLongText = fact.hasLongText || IsLong(text);
        for (std::uint32_t i = 0; i < document.AttributeCount(element); ++i) {
            AttributeFacts& attribute = book.Find(path, fact.attributes, i, document.AttributeName(element, i));
            ++attribute.count;
            const std::string_view value = document.AttributeValue(element, i);
            attribute.isLong = attribute.isLong || IsLong(value);
            const bool isBlank = IsBlank(value);
            attribute.hasEmpty = attribute.hasEmpty || isBlank;
            if (!looksAtForms || value.empty())
                continue;
            if (isBlank)
                attribute.hasBlank = true;
            else
                attribute.values.Add(value);
        }
    }
    return facts;
}

} // namespace velmora
