#include "import/value_account.h"

#include <algorithm>
#include <functional>
#include <tuple>

namespace velmora {

std::string PathOfValue(const Document& document, PathId element, NameId attribute, std::string_view attributePrefix)
{
    std::string path = document.PathText(element);
    if (attribute != ValueOrigin::kOwnText)
        path.append("/").append(attributePrefix).append(document.NameText(attribute));
    return path;
}

ValueOrigin PendingValues::TakeBack(std::size_t field)
{
    const ValueOrigin origin = In(field);
    std::erase_if(held, [field](const Value& value) { return value.field == field; });
    isFilled[field] = false;
    return origin;
}

void PendingValues::Overwrite(std::size_t field)
{
    Refuse(TakeBack(field), LossReason::Overwritten);
}

void PendingValues::Refuse(ValueOrigin origin, LossReason reason)
{
    refused.push_back({origin, reason});
}

ValueOrigin PendingValues::In(std::size_t field) const
{
    const auto value = std::ranges::find(held, field, &Value::field);
    return value == held.end() ? ValueOrigin() : value->origin;
}

std::size_t ValueAccount::Groups::Hash::operator()(const Key& key) const noexcept
{
    constexpr std::uint64_t kSpread = 0x9E3779B97F4A7C15; // path and attribute both count up from 0
    return static_cast<std::size_t>((key.place * kSpread) ^ static_cast<std::uint64_t>(key.reason));
}

void ValueAccount::Groups::Add(PathId path, NameId attribute, LossReason reason, ElementId element)
{
    Group& group = groups_[{std::uint64_t{path} << 32 | attribute, reason}];
    if (group.count++ == 0)
        group = {path, attribute, reason, element, 1};
    group.first = std::min(group.first, element);
}

std::vector<ValueAccount::Group> ValueAccount::Groups::InOrder() const
{
    std::vector<Group> groups;
    for (const auto& [key, group] : groups_)
        groups.push_back(group);
    std::ranges::sort(groups, {}, [](const Group& g) { return std::tuple(g.first, g.attribute, g.reason); });
    return groups;
}

ValueAccount::ValueAccount(const Document& document)
    : document_(document), textStored_(document.ElementCount()), attributesSeen_(document.ElementCount())
{
}

void ValueAccount::StoreText(ElementId element)
{
    std::vector<bool>::reference isStored = textStored_[element];
    stored_ += isStored ? 0 : 1;
    isStored = true;
}

void ValueAccount::Stored(const PendingValues& values)
{
    const ElementId owner = values.attributeOwner;
    // An element that fills two records brings the same attributes into both.
    const bool isFirstRecord = owner != kNoElement && !attributesSeen_[owner];
    const bool countAttributes = values.isContinuation || isFirstRecord;
    for (const auto& [origin, field] : values.held) {
        if (!origin.isOffered)
            continue;
        if (origin.attribute == ValueOrigin::kOwnText)
            StoreText(origin.element);
        else
            stored_ += countAttributes ? 1 : 0;
    }
    for (const PendingValues::Refusal& refusal : values.refused)
        Refuse(refusal, countAttributes);
    if (isFirstRecord)
        attributesSeen_[owner] = true;
}

void ValueAccount::Refuse(const PendingValues::Refusal& refusal, bool firstRecordOfAttributes)
{
    const auto [element, attribute, isOffered] = refusal.origin;
    if (attribute != ValueOrigin::kOwnText) {
        if (firstRecordOfAttributes)
            attributesRefused_.Add(document_.Path(element), attribute, refusal.reason, element);
        return;
    }
    if (textRefused_.empty())
        textRefused_.resize(document_.ElementCount());
    if (textRefused_[element] == LossReason::None)
        textRefused_[element] = refusal.reason;
}

void ValueAccount::TakeBackChildTexts(ElementId owner)
{
    for (ElementId child = document_.FirstChild(owner); child != kNoElement; child = document_.NextSibling(child)) {
        stored_ -= textStored_[child] ? 1 : 0;
        textStored_[child] = false;
    }
}

/// A text that no record was offered says by its place why.
LossReason ValueAccount::ReasonOfText(ElementId element) const
{
    if (!textRefused_.empty() && textRefused_[element] != LossReason::None)
        return textRefused_[element];
    return document_.HasChildren(element) ? LossReason::BesideChildren : LossReason::NoRecord;
}

ValueAccount::Loss ValueAccount::Settle(bool attributesImported) const
{
    Loss loss;
    loss.offered = static_cast<std::int64_t>(document_.ValueCount());
    loss.lost = loss.offered - stored_;
    if (loss.lost == 0 && attributesRefused_.IsEmpty())
        return loss; // nothing to look for
    Groups groups = attributesRefused_;
    const auto count = static_cast<ElementId>(document_.ElementCount());
    for (ElementId element = 0; element < count; ++element) {
        document_.Passed(element);
        const std::uint32_t attributes = document_.AttributeCount(element);
        for (std::uint32_t index = 0; index < attributes; ++index) {
            if (!attributesSeen_[element] && !document_.AttributeValue(element, index).empty())
                groups.Add(document_.Path(element), document_.AttributeName(element, index),
                           attributesImported ? LossReason::NoRecord : LossReason::AttributesOff, element);
        }
        if (!textStored_[element] && HasText(document_.Content(element)))
            groups.Add(document_.Path(element), ValueOrigin::kOwnText, ReasonOfText(element), element);
    }
    loss.groups = groups.InOrder();
    return loss;
}

} // namespace velmora
