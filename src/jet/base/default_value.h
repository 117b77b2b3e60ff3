#pragma once

#include "jet/base/value_codec.h"

#include <optional>
#include <string_view>

namespace jet {

/// What a new record gets in a field that nobody sets.
struct DefaultValue {
    enum class Kind {
        Stored,       ///< always the same
        Now,          ///< the moment
        Today,        ///< its day
        TimeOfDay,    ///< the rest of it
        NewGuid,      ///< a random GUID, as replication ids are
        RandomNumber, ///< a random Long, as random autonumbers are
    };

    Kind kind = Kind::Stored;
    Bytes stored; ///< Stored: as a record holds the value
};

/// Reads the expression that a column's property DefaultValue holds: a number, a text in quotation marks, a date
/// between number signs, True, False, Yes, No, On, Off, or one of the functions Now(), Date(), Time(), GenGUID() and
/// GenUniqueID(); an equal sign may stand before it. nullopt for any other expression, and for a value that the column
/// cannot hold: such a field starts as Null.
[[nodiscard]] std::optional<DefaultValue> ParseDefaultValue(std::string_view expression, const Format& format,
                                                            const ValueType& type);

} // namespace jet
