#pragma once

#include "plan/origin.h"

#include <optional>
#include <string>
#include <string_view>

namespace velmora {

// Origins as the properties of a database hold them: text of lines "word value".

/// As the property holds it. In Access 97, whose texts know few characters, those beyond ASCII become references.
[[nodiscard]] std::string OriginText(const TableOrigin& origin, bool access97);
[[nodiscard]] std::string OriginText(const ColumnOrigin& origin, bool access97);
/// nullopt when the text says nothing of what a table is. Words that are not known are passed over.
[[nodiscard]] std::optional<TableOrigin> ReadTableOrigin(std::string_view text);
[[nodiscard]] std::optional<ColumnOrigin> ReadColumnOrigin(std::string_view text);

/// A chosen type as the property holds it, and back; nullopt for any other text.
[[nodiscard]] std::string_view TypeText(ColumnType type);
[[nodiscard]] std::optional<ColumnType> ReadType(std::string_view text);

/// For people: what Access shows beside the table or the column.
[[nodiscard]] std::string Describe(const TableOrigin& origin);
[[nodiscard]] std::string Describe(const ColumnOrigin& origin);

} // namespace velmora
