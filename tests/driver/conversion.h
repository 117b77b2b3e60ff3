#pragma once

#include "driver/batch.h"
#include "support/scripted_host.h"
#include "support/shared.h"

#include <deque>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace velmora::testing {

/// One run after another over small documents, in a folder of its own, which also stands for the program's, quiet, into
/// one database. At its end the database must be sound.
class Conversion {
    TempFolder folder_;

public:
    Conversion();
    ~Conversion();

    /// Writes a source file. With more than one, a run converts all of them in order of their names.
    Conversion& Xml(std::string_view document, std::string_view name = "a.xml");
    /// Words of the command line, added to those before.
    Conversion& Options(std::string_view words);
    Conversion& Map(std::string tag, std::string name);
    /// Exports text files into the folder "text", with a semicolon between the values.
    Conversion& Text();
    /// Converts what Xml() has written.
    RunOutcome Run();

    /// The names of all user tables, in order, each followed by a blank.
    [[nodiscard]] std::string Tables() const;
    /// The table as text: a line of column names, then a line per record; fields are separated by "|", Null is empty.
    [[nodiscard]] std::string Dump(std::string_view table) const;
    /// "child.FKEY -> parent.PKEY" for each relation, a line each, sorted.
    [[nodiscard]] std::string Relations() const;
    /// All of the database: for each table "name(columns): record / record", with the fields as in Dump(), a line each
    /// in order of names; then the relations.
    [[nodiscard]] std::string Content() const;
    /// A text file of the folder "text", which Text() has asked for; CR LF is shown as "~".
    [[nodiscard]] std::string TextFile(std::string_view table) const;
    /// How many protocol lines of the last run hold `text`.
    [[nodiscard]] int Said(std::string_view text) const;
    /// All lines of the last run's protocol.
    [[nodiscard]] std::string Protocol() const { return ::testing::PrintToString(host.lines); }
    /// What the protocol says of values that were lost: how many, and path by path; a line each.
    [[nodiscard]] std::string Losses() const;
    /// The last error report: number, a blank, description; empty without one.
    [[nodiscard]] std::string Error() const;

    [[nodiscard]] std::filesystem::path Path(std::string_view name) const { return folder_ / name; }
    [[nodiscard]] std::filesystem::path Target() const { return folder_ / "out.mdb"; }

    ScriptedHost host;
    Job job;
    TagMap map;
    Batch batch;

private:
    friend class Conversions;
    bool checksItself_ = true;
};

/// The parts of `text` between bars.
[[nodiscard]] std::vector<std::string> Parts(std::string_view text);

/// Many conversions, whose databases are checked together at the end: the checker's start takes longer than its work.
class Conversions {
public:
    Conversions() = default;
    ~Conversions();
    Conversions(const Conversions&) = delete;
    Conversions& operator=(const Conversions&) = delete;

    [[nodiscard]] Conversion& Next();

private:
    std::deque<Conversion> all_;
};

} // namespace velmora::testing
