#pragma once

#include "import/table_sinks.h"
#include "plan/mapping_plan.h"
#include "plan/name_set.h"

#include <map>
#include <string>
#include <utility>

namespace velmora {

/// The names of the columns that take what others refuse, "NAME_text" beside "NAME".
class ColumnsBeside {
public:
    ColumnsBeside(const MappingPlan& plan, NameRules names) : plan_(plan), names_(std::move(names)) {}

    /// As planned; else the first that the table has free, the same one each time. Empty when the plan does not
    /// import everything and has planned none.
    [[nodiscard]] const std::string& NameFor(const TableSink& sink, const std::string& column);

private:
    [[nodiscard]] std::string ChooseName(const TableSink& sink, const std::string& column) const;

    const MappingPlan& plan_;
    const NameRules names_;
    std::map<std::pair<std::string, std::string>, std::string> chosen_; ///< by table and column
};

} // namespace velmora
