#pragma once

#include "import/value_account.h"
#include "settings/job.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// Values of one path that were left out for one reason.
struct LeftOut {
    std::string path;
    std::int64_t count = 0;
    LossReason reason = LossReason::None;
    std::string sample; ///< the first of them, shortened, in quotation marks
};

/// What of the documents of a run was left out.
struct LossSummary {
    static constexpr std::size_t kMaxGroups = 1000;
    std::int64_t values = 0;
    std::vector<LeftOut> groups; ///< in the documents' order, no more than kMaxGroups
    std::int64_t offered = 0;    ///< `values` included

    void Add(const LossSummary& other);
};

[[nodiscard]] std::string_view Describe(LossReason reason);

/// Says in the protocol how many of the document's values were not imported, and for each path and reason how many,
/// with a sample; the longest lists are cut. Says nothing when all are there.
[[nodiscard]] LossSummary ReportLoss(Job& job, const Document& document, const MappingPlan& plan,
                                     const ValueAccount& account);

/// A value as a message shows it: in quotes, on one line, cut to 40 characters.
[[nodiscard]] std::string QuotedSample(std::string_view value);

} // namespace velmora
