#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace jet {
class Connection;
}

namespace velmora {

/// What a database holds, for a person to look at.
struct DatabaseContents {
    struct Column {
        std::string name;
        std::string type; ///< as Access calls it, with the size of a text: "Text (255)"
        bool isRequired = false;
        bool isPrimaryKey = false;
        bool isForeignKey = false;
    };
    struct Table {
        std::string name;
        bool isLinked = false; ///< stands in another database, which is not looked at
        std::uint64_t rows = 0;
        std::vector<Column> columns{};
    };
    /// From the columns of a table to those of the one that it refers to.
    struct Relation {
        std::string name;
        std::string table, referencedTable;
        std::vector<std::pair<std::string, std::string>> columns{};
    };
    std::string format; ///< "Access 97", or "Access 2000"
    std::vector<Table> tables;
    std::vector<Relation> relations;
};

/// Throws jet::Error.
[[nodiscard]] DatabaseContents ContentsOf(jet::Connection& connection);

/// Reads a database, page by page of a thousand rows, and changes nothing: neither the file nor what stands beside it.
/// What a killed run has left behind is read as at its last commit. The file is open only while something is read, so
/// that nobody has to wait for a window to be closed. Every function throws RuntimeError: for a file that is damaged,
/// has a password, is in use, or has changed since Read().
class DatabaseView {
public:
    static constexpr std::uint64_t kPageRows = 1000;
    using Row = std::vector<std::optional<std::string>>; ///< a value for each column; none: Null
    using GoesOn = std::function<bool()>;                ///< asked now and then: false ends what is going on

    explicit DatabaseView(std::string path) : path_(std::move(path)) {}

    [[nodiscard]] const std::string& Path() const noexcept { return path_; }
    /// To be called first, and again after the file has changed.
    [[nodiscard]] DatabaseContents Read();
    /// Page `page` of the table, from 0. Empty behind the last one, and when `goesOn` has ended it.
    [[nodiscard]] std::vector<Row> ReadPage(const std::string& table, std::uint64_t page, const GoesOn& goesOn);
    /// The first row, from `firstRow` on, that has `text` in one of its values; letters of ASCII in either case.
    [[nodiscard]] std::optional<std::uint64_t> Find(const std::string& table, const std::string& text,
                                                    std::uint64_t firstRow, const GoesOn& goesOn);

private:
    class Walk;
    void CheckUnchanged() const;

    const std::string path_;
    std::string state_;                                            ///< of the file when it was read: size, time
    std::map<std::string, std::vector<std::uint64_t>> pageStarts_; ///< positions, for pages that were passed already
};

} // namespace velmora
