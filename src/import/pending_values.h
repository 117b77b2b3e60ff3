#pragma once

#include "plan/mapping_plan.h"

#include <cstddef>
#include <vector>

namespace velmora {

/// One value of the document: an element's own text, or one of its attributes.
struct ValueOrigin {
    static constexpr NameId kOwnText = ~NameId{0};
    ElementId element = kNoElement;
    NameId attribute = kOwnText;
    bool isOffered = true; ///< false: an empty attribute, which is kept, but is no value that could be lost
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
    bool isContinuation = false;           ///< of a record that has another part, where its attributes were offered
    ElementId attributeOwner = kNoElement; ///< element whose attributes were offered to the record

    void Clear()
    {
        for (const std::size_t field : filled)
            byField[field] = {};
        filled.clear();
        refused.clear();
        attributeOwner = kNoElement;
        isContinuation = false;
    }
    /// The field holds no value any more.
    void TakeBack(std::size_t field)
    {
        byField[field] = {};
        std::erase(filled, field);
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
