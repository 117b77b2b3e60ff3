#include "import/loss_report.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace velmora {

namespace {

constexpr std::size_t kMaxLines = 20;

std::string_view FirstValue(const Document& document, const ValueAccount::Group& group)
{
    if (group.attribute == ValueOrigin::kOwnText)
        return document.Content(group.first);
    for (std::uint32_t index = 0; index < document.AttributeCount(group.first); ++index)
        if (document.AttributeName(group.first, index) == group.attribute)
            return document.AttributeValue(group.first, index);
    return {};
}

constexpr std::size_t kMaxCharacters = 40;
constexpr std::string_view kCutMark = "...";

/// The beginning of `text` with at most `limit` characters.
std::string_view FirstCharacters(std::string_view text, std::size_t limit)
{
    std::size_t bytes = 0;
    for (std::size_t characters = 0; characters < limit && bytes < text.size(); ++characters)
        do
            ++bytes;
        while (bytes < text.size() && (static_cast<unsigned char>(text[bytes]) & 0xC0) == 0x80);
    return text.substr(0, bytes);
}

/// Attributes that were left out because the run was told to are not among those that could have been imported.
std::string_view Advice(const ValueAccount::Loss& loss, const MappingPlan& plan)
{
    const bool isWanted = std::ranges::any_of(
        loss.groups, [](const ValueAccount::Group& group) { return group.reason != LossReason::AttributesOff; });
    return isWanted && !plan.importsEverything ? " (+complete imports them)" : "";
}

void TellTotals(Job& job, const ValueAccount::Loss& loss)
{
    std::int64_t unwanted = 0;
    for (const ValueAccount::Group& group : loss.groups)
        unwanted += group.reason == LossReason::AttributesOff ? group.count : 0;
    std::string line = "Values: " + std::to_string(loss.offered - unwanted) + " offered, " +
                       std::to_string(loss.offered - loss.lost) + " stored, " + std::to_string(loss.lost - unwanted) +
                       " lost";
    if (unwanted > 0)
        line += "; " + std::to_string(unwanted) + " attributes left out (-attributes)";
    job.log.ProtocolAppend(line);
}

} // namespace

std::string_view Describe(LossReason reason)
{
    switch (reason) {
    case LossReason::NoRecord:
        return "no record is made at this place";
    case LossReason::BesideChildren:
        return "text beside child elements";
    case LossReason::AttributesOff:
        return "attributes are left out (-attributes)";
    case LossReason::NoColumn:
        return "no column and no table";
    case LossReason::KeyColumn:
        return "its column is a key, which takes no values";
    case LossReason::ColumnTaken:
        return "its column was taken by an element of the same name";
    case LossReason::Overwritten:
        return "another value of the record took its column";
    case LossReason::DoesNotFitType:
        return "its column cannot hold the value";
    case LossReason::None:
        break;
    }
    return {};
}

void LossSummary::Add(const LossSummary& other)
{
    values += other.values;
    offered += other.offered;
    const std::size_t room = std::min(kMaxGroups - groups.size(), other.groups.size());
    groups.insert(groups.end(), other.groups.begin(), other.groups.begin() + static_cast<std::ptrdiff_t>(room));
}

LossSummary ReportLoss(Job& job, const Document& document, const MappingPlan& plan, const ValueAccount& account)
{
    const ValueAccount::Loss loss = account.Settle(plan.importsAttributes);
    LossSummary summary{.values = loss.lost, .groups = {}, .offered = loss.offered};
    if (plan.importsEverything)
        TellTotals(job, loss);
    if (loss.groups.empty())
        return summary;
    const auto pathOf = [&](const ValueAccount::Group& group) {
        return PathOfValue(document, group.path, group.attribute, job.settings.strAttrPrefix);
    };
    job.log.Warn("values-not-imported",
                 "Not imported: " + std::to_string(loss.lost) + " of " + std::to_string(loss.offered) +
                     " values, the first at " + pathOf(loss.groups.front()).append(Advice(loss, plan)),
                 loss.lost);
    for (const ValueAccount::Group& group : loss.groups) {
        if (summary.groups.size() == LossSummary::kMaxGroups)
            break;
        summary.groups.push_back({pathOf(group), group.count, group.reason, QuotedSample(FirstValue(document, group))});
    }
    const std::size_t told = std::min(loss.groups.size(), kMaxLines);
    std::int64_t untold = loss.lost;
    for (std::size_t i = 0; i < told; ++i) {
        const ValueAccount::Group& group = loss.groups[i];
        untold -= group.count;
        std::string line = "  " + pathOf(group) + ": " + std::to_string(group.count) + ", ";
        line.append(Describe(group.reason)).append(", ").append(QuotedSample(FirstValue(document, group)));
        job.log.ProtocolAppend(line);
    }
    if (told < loss.groups.size())
        job.log.ProtocolAppend("  and " + std::to_string(untold) + " more in " +
                               std::to_string(loss.groups.size() - told) + " further groups");
    return summary;
}

std::string QuotedSample(std::string_view value)
{
    std::string sample = "\"";
    if (FirstCharacters(value, kMaxCharacters).size() == value.size())
        sample.append(value);
    else
        sample.append(FirstCharacters(value, kMaxCharacters - kCutMark.size())).append(kCutMark);
    std::replace_if(
        sample.begin(), sample.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
    return sample.append("\"");
}

} // namespace velmora
