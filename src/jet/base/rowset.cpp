#include "jet/base/rowset.h"

#include "jet/base/error.h"
#include "jet/base/value_text.h"

#include <algorithm>

namespace jet {

const Value& Rowset::Field(std::string_view name) const
{
    // A rowset has a dozen fields and is asked for a few of them by name: nothing that an index of names would pay for.
    const auto field = std::ranges::find(fields_, name);
    if (field == fields_.end())
        throw Error(ErrorNumber::ItemNotFound, {}, "(" + std::string(name) + ")");
    if (Eof())
        throw Error(ErrorNumber::NoCurrentRecord);
    return rows_[at_][static_cast<std::size_t>(field - fields_.begin())];
}

std::string Rowset::Text(std::string_view name) const
{
    return ToText(Field(name));
}

} // namespace jet
