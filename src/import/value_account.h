#pragma once

#include "import/pending_values.h"
#include "xml/document.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace velmora {

/// Is there anything but white space?
[[nodiscard]] bool HasText(std::string_view content) noexcept;

/// Where the document has a value: an attribute's path ends in `attributePrefix` and its name.
[[nodiscard]] std::string PathOfValue(const Document& document, PathId element, NameId attribute,
                                      std::string_view attributePrefix);

/// Which values of a document have reached the database, and why the others have not: nothing may be lost in silence.
///
/// Offered are the non-empty attribute values and the own texts of elements that are not all white space. Stored is a
/// value that stands in a saved record, however many records that may be. What is kept grows with the document by a few
/// bits an element, by a byte once a text was refused, and with the number of paths at which values were lost.
class ValueAccount {
public:
    explicit ValueAccount(const Document& document);

    /// A record with these values was saved.
    void Stored(const PendingValues& values);
    /// The only record that held the texts of `owner`'s children was taken back.
    void TakeBackChildTexts(ElementId owner);

    /// The lost values of one path, or of one attribute of it, that have one reason.
    struct Group {
        PathId path = 0;
        NameId attribute = ValueOrigin::kOwnText;
        LossReason reason = LossReason::None;
        ElementId first = kNoElement; ///< in the document's order
        std::int64_t count = 0;
    };
    struct Loss {
        std::int64_t offered = 0;
        std::int64_t lost = 0;
        std::vector<Group> groups; ///< by their first value, in the document's order; attributes go before the text
    };
    /// Counts once through the whole document.
    [[nodiscard]] Loss Settle(bool attributesImported) const;

private:
    /// Groups in the making, found by what they have in common.
    class Groups {
    public:
        void Add(PathId path, NameId attribute, LossReason reason, ElementId element);
        [[nodiscard]] std::vector<Group> InOrder() const;

    private:
        struct Key {
            std::uint64_t place; ///< path and attribute
            LossReason reason;
            friend bool operator==(const Key&, const Key&) = default;
        };
        struct Hash {
            std::size_t operator()(const Key& key) const noexcept;
        };
        std::unordered_map<Key, Group, Hash> groups_;
    };

    void StoreText(ElementId element);
    void Refuse(const PendingValues::Refusal& refusal, bool firstRecordOfAttributes);
    [[nodiscard]] LossReason ReasonOfText(ElementId element) const;

    const Document& document_;
    std::vector<bool> textStored_;        ///< by element
    std::vector<bool> attributesSeen_;    ///< by element: a record with its attributes was saved and counted
    std::vector<LossReason> textRefused_; ///< by element, as first told; empty as long as no text was refused
    Groups attributesRefused_;            ///< of elements whose attributes were seen
    std::int64_t stored_ = 0;
};

} // namespace velmora
