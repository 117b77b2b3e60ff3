#pragma once

#include "xml/document.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace velmora {

/// One value of the document: an element's own text, or one of its attributes.
struct ValueOrigin {
    static constexpr NameId kOwnText = ~NameId{0};
    ElementId element = kNoElement;
    NameId attribute = kOwnText;
};

/// Why a value of the document stands in no record.
enum class LossReason : std::uint8_t {
    None,
    NoRecord,       ///< nothing is made of the place where it stands
    BesideChildren, ///< text of an element that has child elements
    AttributesOff,  ///< attributes are left out
    NoColumn,       ///< the record's table has no column for it, and it has no table of its own
    KeyColumn,      ///< its column is a key, which the program fills itself
    ColumnTaken,    ///< an element has taken the column of the attribute of the same name
    Overwritten,    ///< a later value of the same record took its column
    DoesNotFitType, ///< its column holds another type
};

/// Which values of the document stand in the fields of the record that is being built. A later value for the same field
/// takes the place of the earlier one.
struct PendingValues {
    struct Refusal {
        ValueOrigin origin;
        LossReason reason;
    };
    ElementId element = kNoElement;        ///< of which the record is made
    std::vector<ValueOrigin> byField;      ///< by position; no element where the field holds no value of the document
    std::vector<std::size_t> filled;       ///< positions that hold one
    std::vector<Refusal> refused;          ///< values that were offered to the record, and that it does not hold
    ElementId attributeOwner = kNoElement; ///< element whose attributes were offered to the record

    void Clear()
    {
        for (const std::size_t field : filled)
            byField[field] = {};
        filled.clear();
        refused.clear();
        attributeOwner = kNoElement;
    }
    void Put(std::size_t field, ValueOrigin origin)
    {
        if (byField[field].element == kNoElement)
            filled.push_back(field);
        else
            refused.push_back({byField[field], LossReason::Overwritten});
        byField[field] = origin;
    }
};

} // namespace velmora
