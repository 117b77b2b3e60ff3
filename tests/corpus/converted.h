#pragma once

#include "support/process.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace velmora::testing {

/// One run of the real program, as a user would start it, quiet.
struct Converted {
    /// Converts `xml` (wildcards allowed) into `mdb` with further `options`.
    Converted(const std::filesystem::path& xml, const std::filesystem::path& mdb,
              const std::vector<std::string>& options = {});

    [[nodiscard]] bool Says(std::string_view text) const { return run.output.find(text) != std::string::npos; }
    /// The first number behind `text` in the protocol; nullopt when `text` is not there.
    [[nodiscard]] std::optional<long> NumberBehind(std::string_view text) const;
    /// Values of the documents that did not reach the database, by the protocol. 0 when it does not speak of any.
    [[nodiscard]] long LostValues() const { return NumberBehind("Not imported: ").value_or(0); }
    /// What a failing test shows.
    [[nodiscard]] std::string Report() const;

    ProcessResult run; ///< the protocol is its output
};

/// What the independent judge says about a database and the documents that were converted into it.
struct Judgement {
    bool sound = false;
    std::string report;
    long offered = 0; ///< values of the documents
    long missing = 0; ///< values that the database lacks
    long surplus = 0; ///< values that stand in the database more often than in the documents
};
[[nodiscard]] Judgement Judge(const std::filesystem::path& mdb,
                              const std::vector<std::filesystem::path>& documents = {});

/// Of pairs of databases, the second of each with typed columns: is each cell what the text is, and no type too wide?
[[nodiscard]] Judgement JudgeTyped(const std::vector<std::filesystem::path>& pairs);

/// Writes a copy of `xml` in which every value occurs once.
void WriteUniqueCopy(const std::filesystem::path& xml, const std::filesystem::path& copy);

/// The documents in a folder of the shared corpus, without their extension "xml", in order; none without the corpus.
[[nodiscard]] std::vector<std::string> CorpusDocuments(std::string_view folder);

/// The name of a document as one that a test may have.
[[nodiscard]] std::string TestName(std::string name);

/// Tables (by name), columns, rows and relations of a database, as mdb-schema and mdb-export show them.
[[nodiscard]] std::string Dump(const std::filesystem::path& mdb);

} // namespace velmora::testing
