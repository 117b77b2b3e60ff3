#include "import/value_account.h"

#include "xml/white_space.h"

#include <algorithm>

namespace velmora {

bool HasText(std::string_view content) noexcept
{
    if (content.empty())
        return false;
    const auto first = static_cast<unsigned char>(content.front());
    const bool isPlain = first > ' ' && first < 0x7F; // nearly every text begins so
    return isPlain || !TrimWhiteSpace(content).empty();
}

ValueAccount::ValueAccount(const Document& document)
    : document_(document), textStored_(document.ElementCount()), attributesStored_(document.ElementCount()),
      attributesSeen_(document.ElementCount())
{
}

void ValueAccount::StoreText(ElementId element)
{
    if (textStored_[element] || !HasText(document_.Content(element)))
        return;
    textStored_[element] = true;
    ++stored_;
}

void ValueAccount::Stored(const PendingValues& values)
{
    std::uint32_t attributes = 0;
    for (const std::size_t field : values.filled) {
        const ValueOrigin origin = values.byField[field];
        if (origin.attribute == ValueOrigin::kOwnText)
            StoreText(origin.element);
        else
            ++attributes;
    }
    const ElementId owner = values.attributeOwner;
    // An element that fills two records brings the same attributes into both.
    if (owner == kNoElement || attributesSeen_[owner])
        return;
    attributesSeen_[owner] = true;
    attributesStored_[owner] = attributes == values.attributesOffered;
    stored_ += attributes;
    if (attributesStored_[owner] || owner > firstPartial_)
        return;
    firstPartial_ = owner;
    storedOfPartial_.clear();
    for (const std::size_t field : values.filled)
        if (values.byField[field].attribute != ValueOrigin::kOwnText)
            storedOfPartial_.push_back(values.byField[field].attribute);
}

void ValueAccount::TakeBackChildTexts(ElementId owner)
{
    for (ElementId child = document_.FirstChild(owner); child != kNoElement; child = document_.NextSibling(child)) {
        stored_ -= textStored_[child] ? 1 : 0;
        textStored_[child] = false;
    }
}

std::string ValueAccount::FirstLostAttribute(ElementId element, std::string_view attributePrefix) const
{
    for (std::uint32_t index = 0; index < document_.AttributeCount(element); ++index) {
        const NameId name = document_.AttributeName(element, index);
        const bool stored = element == firstPartial_ &&
                            std::find(storedOfPartial_.begin(), storedOfPartial_.end(), name) != storedOfPartial_.end();
        if (!stored && !document_.AttributeValue(element, index).empty())
            return document_.PathText(document_.Path(element)) + "/" + std::string(attributePrefix) +
                   std::string(document_.NameText(name));
    }
    return document_.PathText(document_.Path(element));
}

ValueAccount::Loss ValueAccount::Settle(std::string_view attributePrefix) const
{
    Loss loss;
    const auto count = static_cast<ElementId>(document_.ElementCount());
    for (ElementId element = 0; element < count; ++element) {
        std::uint32_t attributes = 0;
        for (std::uint32_t index = 0; index < document_.AttributeCount(element); ++index)
            attributes += document_.AttributeValue(element, index).empty() ? 0 : 1;
        const bool text = HasText(document_.Content(element));
        loss.offered += attributes + (text ? 1 : 0);
        if (!loss.firstPath.empty())
            continue;
        if (attributes > 0 && !attributesStored_[element])
            loss.firstPath = FirstLostAttribute(element, attributePrefix);
        else if (text && !textStored_[element])
            loss.firstPath = document_.PathText(document_.Path(element));
    }
    loss.lost = loss.offered - stored_;
    return loss;
}

} // namespace velmora
