#include "corpus/converted.h"

#include "support/shared.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>
#include <stdexcept>

namespace velmora::testing {
namespace {

/// The output of a program that has to succeed.
std::string OutputOf(const std::vector<std::string>& command)
{
    const ProcessResult run = RunProcess(command);
    if (run.status != 0)
        throw std::runtime_error(command[0] + " ended with status " + std::to_string(run.status) + "\n" + run.errors);
    return run.output;
}

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        if (!line.empty())
            lines.push_back(line);
    return lines;
}

ProcessResult RunJudge(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), VELMORA_CORPUS_TEST_FOLDER "/judge.py");
    return RunPython(arguments);
}

} // namespace

Converted::Converted(const std::filesystem::path& xml, const std::filesystem::path& mdb,
                     const std::vector<std::string>& options)
{
    std::vector<std::string> command{VELMORA_PROGRAM, "xml=" + xml.string(), "mdb=" + mdb.string(), "+quiet"};
    command.insert(command.end(), options.begin(), options.end());
    run = RunProcess(command);
}

std::optional<long> Converted::NumberBehind(std::string_view text) const
{
    const std::size_t found = run.output.find(text);
    if (found == std::string::npos)
        return std::nullopt;
    return std::strtol(run.output.c_str() + found + text.size(), nullptr, 10);
}

std::string Converted::Report() const
{
    return "status " + std::to_string(run.status) + "\n" + run.output + run.errors;
}

Judgement Judge(const std::filesystem::path& mdb, const std::vector<std::filesystem::path>& documents)
{
    std::vector<std::string> arguments{"check", mdb.string()};
    for (const std::filesystem::path& document : documents)
        arguments.push_back(document.string());
    const ProcessResult run = RunJudge(arguments);
    Judgement judgement{.sound = run.status == 0, .report = run.output + run.errors};
    std::smatch figures;
    if (std::regex_search(run.output, figures, std::regex("offered (\\d+) missing (\\d+) surplus (\\d+)"))) {
        judgement.offered = std::stol(figures[1]);
        judgement.missing = std::stol(figures[2]);
        judgement.surplus = std::stol(figures[3]);
    } else if (!documents.empty()) {
        judgement.sound = false;
    }
    return judgement;
}

Judgement JudgeTyped(const std::vector<std::filesystem::path>& pairs)
{
    std::vector<std::string> arguments{"typed"};
    for (const std::filesystem::path& database : pairs)
        arguments.push_back(database.string());
    const ProcessResult run = RunJudge(arguments);
    return {.sound = run.status == 0, .report = run.output + run.errors};
}

void WriteUniqueCopy(const std::filesystem::path& xml, const std::filesystem::path& copy)
{
    const ProcessResult run = RunJudge({"unique", xml.string(), copy.string()});
    if (run.status != 0)
        throw std::runtime_error(run.output + run.errors);
}

std::string Dump(const std::filesystem::path& mdb)
{
    std::vector<std::string> tables = Lines(OutputOf({"mdb-tables", "-1", mdb.string()}));
    std::sort(tables.begin(), tables.end());
    const std::regex column(R"(^\t\[(.*)\]\s+(.*?)(, )?$)");
    std::string text;
    for (const std::string& table : tables) {
        text += "table " + table + "\n";
        for (const std::string& line :
             Lines(OutputOf({"mdb-schema", "--no-not-null", "-T", table, mdb.string(), "access"}))) {
            std::smatch match;
            if (std::regex_match(line, match, column))
                text += "  " + match.str(1) + " " + match.str(2) + "\n";
        }
        for (const std::string& line : Lines(OutputOf({"mdb-export", "-H", mdb.string(), table})))
            text += "  " + line + "\n";
    }
    // The Access backend leaves relations out.
    const std::regex relation("ALTER TABLE `(.*)` ADD CONSTRAINT `.*` FOREIGN KEY \\(`(.*)`\\) "
                              "REFERENCES `(.*)`\\(`(.*)`\\)( ON UPDATE CASCADE)?( ON DELETE CASCADE)?;");
    std::vector<std::string> relations;
    for (const std::string& line : Lines(OutputOf({"mdb-schema", mdb.string(), "mysql"}))) {
        std::smatch match;
        if (std::regex_match(line, match, relation))
            relations.push_back("relation " + match.str(1) + "." + match.str(2) + " -> " + match.str(3) + "." +
                                match.str(4) + match.str(5) + match.str(6) + "\n");
    }
    std::sort(relations.begin(), relations.end());
    for (const std::string& line : relations)
        text += line;
    return text;
}

std::vector<std::string> CorpusDocuments(std::string_view folder)
{
    std::vector<std::string> names;
    if (const auto shared = SharedFolder())
        for (const auto& entry : std::filesystem::directory_iterator(*shared / "corpus" / folder))
            if (entry.path().extension() == ".xml")
                names.push_back(entry.path().stem().string());
    std::ranges::sort(names);
    return names;
}

std::string TestName(std::string name)
{
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name;
}

} // namespace velmora::testing
