#pragma once

#include "import/table_sinks.h"
#include "xml/document.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// Is there anything but white space?
[[nodiscard]] bool HasText(std::string_view content) noexcept;

/// Which values of a document have reached the database: nothing may be lost in silence.
///
/// Offered are the non-empty attribute values and the own texts of elements that are not all white space. Stored is a
/// value that stands in a saved record, however many records that may be.
class ValueAccount {
public:
    explicit ValueAccount(const Document& document);

    /// A record with these values was saved.
    void Stored(const PendingValues& values);
    /// The only record that held the texts of `owner`'s children was taken back.
    void TakeBackChildTexts(ElementId owner);

    struct Loss {
        std::int64_t offered = 0;
        std::int64_t lost = 0;
        std::string
            firstPath; ///< of the first lost value in the document's order; an attribute's ends in prefix and name
    };
    /// Counts once through the whole document.
    [[nodiscard]] Loss Settle(std::string_view attributePrefix) const;

private:
    void StoreText(ElementId element);
    [[nodiscard]] std::string FirstLostAttribute(ElementId element, std::string_view attributePrefix) const;

    const Document& document_;
    std::vector<bool> textStored_;       ///< by element
    std::vector<bool> attributesStored_; ///< by element: every non-empty one stands in a record
    std::vector<bool> attributesSeen_;   ///< by element: a record with them was saved and counted
    std::int64_t stored_ = 0;
    /// Attributes that stand in the record of the first element of which some, but not all, do.
    ElementId firstPartial_ = kNoElement;
    std::vector<NameId> storedOfPartial_;
};

} // namespace velmora
