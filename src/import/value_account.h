#pragma once

#include "plan/mapping_plan.h"
#include "xml/document.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace velmora {

/// One value of the document: an element's own text, or one of its attributes. It fits a register, as it is handed on
/// with every value.
struct ValueOrigin {
    static constexpr NameId kOwnText = ~NameId{0} >> 1;
    ElementId element = kNoElement;
    NameId attribute : 31 = kOwnText;
    NameId isOffered : 1 = 1; ///< 0: an empty attribute or text, which is kept, but is no value that could be lost
};
static_assert(sizeof(ValueOrigin) == 8);

/// Which values of the document stand in the fields of the record that is being built. A later value for the same field
/// takes the place of the earlier one.
struct PendingValues {
    struct Value {
        ValueOrigin origin;
        std::uint32_t field; ///< its position
    };
    struct Refusal {
        ValueOrigin origin;
        LossReason reason;
    };
    static constexpr std::size_t kMaxFields = 255; ///< no table has more

    ElementId element = kNoElement;          ///< of which the record is made
    ElementId attributeOwner = kNoElement;   ///< element whose attributes were offered to the record
    bool isContinuation = false;             ///< of a record that has another part, where its attributes were offered
    std::array<bool, kMaxFields> isFilled{}; ///< by position: the field holds one of `held`
    std::vector<Value> held;
    std::vector<Refusal> refused; ///< values that were offered to the record, and that it does not hold

    void Begin(ElementId ofElement)
    {
        element = ofElement;
        attributeOwner = kNoElement;
        isContinuation = false;
        Clear();
        refused.clear();
    }
    /// No field holds a value any more.
    void Clear()
    {
        for (const Value& value : held)
            isFilled[value.field] = false;
        held.clear();
    }
    void Put(std::size_t field, ValueOrigin origin)
    {
        if (isFilled[field])
            Overwrite(field);
        isFilled[field] = true;
        held.push_back({origin, static_cast<std::uint32_t>(field)});
    }
    /// The field holds no value any more; gives the one that it held.
    ValueOrigin TakeBack(std::size_t field);
    void Overwrite(std::size_t field);
    /// The value was offered to the record, which does not hold it.
    void Refuse(ValueOrigin origin, LossReason reason);
    /// The value in the field; of no element when it holds none.
    [[nodiscard]] ValueOrigin In(std::size_t field) const;
};

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
    /// Looks through the whole document once, unless nothing is lost.
    [[nodiscard]] Loss Settle(bool attributesImported) const;

private:
    /// Groups in the making, found by what they have in common.
    class Groups {
    public:
        void Add(PathId path, NameId attribute, LossReason reason, ElementId element);
        [[nodiscard]] bool IsEmpty() const noexcept { return groups_.empty(); }
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
