#include "console/report.h"

#include "app/application.h"
#include "platform/terminal.h"
#include "platform/utf8.h"
#include "settings/options.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <string_view>
#include <vector>

namespace velmora {

namespace {

constexpr const char* kUsage = R"(: loads XML files into Microsoft Access databases
or into delimited text files

Usage
  velmora FILE.xml ... FILE.mdb [option ...]        convert, here and now
  velmora xml=FILE mdb=FILE [option ...] +quiet     into a database made anew
  velmora xml=FILE txt=FOLDER [option ...] +quiet   the same, into text files
  velmora mdb=FILE export=FILE                      a database as XML again
  velmora [option ...]                              open the window, filled in
  velmora --help | --version

A switch is one word; a key is a word, "=" and its value. Upper and lower case
of the words do not matter. Of options that contradict each other the last one
counts. A value with blanks is put in quotes: xml="my orders.xml". Words that
are not known are reported and skipped; where one may be mistyped and a database
would be replaced or emptied, or "preview" was meant, the run does not begin.

Plain names need no key: what ends in .xml, or is there and begins like XML, is
a source, one word that ends in .mdb the database, which is kept and extended
(+d makes it anew). A run with plain names begins at once. It asks what it has
to ask on a terminal, and nothing elsewhere; so does one without +quiet where
no window can be opened.
)";

constexpr const char* kRest = R"(
Output
  Protocol lines go to standard output as they are written, errors and, in a
  terminal, the progress to standard error; with summary=- protocol lines too.
  Ctrl-C cancels: what was saved stays and the database is closed in good order.
  A second Ctrl-C ends at once.

Exit status
  0    everything was converted
  1    ended by an error
  2    nothing to convert: no source named or found, a target that must not be
       written, a database without a way back, or a command line that makes no
       sense or may be mistyped
  3    done, but a source or the file of tag names could not be read, or
       something was left out (with +strict)
  130  cancelled

Examples
  velmora in/*.xml all.mdb
  velmora xml=orders.xml mdb=orders.mdb +quiet
  velmora xml="in/2024*.xml" mdb=all.mdb -recreate_database log=all.log +quiet
  velmora x=a.xml m=a.mdb pkey=ID fkey=PARENT_ID attr="" +skip_empty +q
  velmora xml=orders.xml txt=out delimiter="," +quoted -append +quiet
)";

constexpr std::size_t kWidth = 79;
constexpr std::size_t kTextColumn = 26;

/// `words`, with blanks between them, at the left; `text` beside them. Words that leave no room stand alone in a line.
std::string Entry(const std::string& words, std::string_view text)
{
    std::string lines;
    std::string line = "  " + words;
    for (const std::string_view word : Listed(text)) {
        const std::size_t column = std::max(line.size() + 1, kTextColumn);
        const bool isFirst = lines.empty() && line.size() == words.size() + 2;
        if (isFirst ? column > kTextColumn : column + word.size() > kWidth) {
            lines += line + '\n';
            line.clear();
        }
        line.resize(std::max(line.size() + (line.empty() ? 0 : 1), kTextColumn), ' ');
        line += word;
    }
    return lines + line + '\n';
}

std::string WithGaps(const std::vector<std::string_view>& words)
{
    std::string text;
    for (const std::string_view word : words)
        text.append(text.empty() ? "" : "  ").append(word);
    return text;
}

std::string SwitchHelp(const Option& option)
{
    const auto side = [](std::string_view words, std::string_view text, bool isDefault) {
        return Entry(WithGaps(Listed(words)), std::string(text).append(isDefault ? " (default)" : ""));
    };
    if (option.offWords.empty())
        return side(option.words, option.help, false);
    return side(option.words, option.help, option.startsOn) + side(option.offWords, option.offHelp, !option.startsOn);
}

std::string KeyHelp(const Option& option)
{
    std::vector<std::string_view> words = Listed(option.words);
    const std::string first = std::string(words.front()).append(option.value);
    words.front() = first;
    std::string text(option.help);
    if (!StartValue(option).empty())
        text.append(" (default ").append(StartValue(option)).append(")");
    return Entry(WithGaps(words), text);
}

using Row = std::array<std::string, 4>;

constexpr std::string_view kGap = "  ";

Row RowOf(const TableReport& report)
{
    return {Printable(report.table), std::to_string(report.records), std::to_string(report.newColumns),
            std::to_string(report.widenedColumns)};
}

TableReport Total(std::span<const TableReport> tables)
{
    TableReport total;
    total.table = "Total (" + std::to_string(tables.size()) + " tables)";
    for (const TableReport& report : tables) {
        total.records += report.records;
        total.newColumns += report.newColumns;
        total.widenedColumns += report.widenedColumns;
    }
    return total;
}

bool IsContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

using Widths = std::array<std::size_t, 4>;

const Row kHeadings{"Table", "Records", "New columns", "Columns widened"};
const Row kShortHeadings{"Table", "Records", "New", "Widened"};

Widths WidthsOf(std::span<const Row> rows)
{
    Widths widths{};
    for (const Row& row : rows)
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], CountCharacters(row[i]));
    return widths;
}

std::size_t TotalWidth(const Widths& widths)
{
    return std::accumulate(widths.begin(), widths.end(), kGap.size() * (widths.size() - 1));
}

/// `name` in so many characters, with dots for its middle: names that are long often differ at their ends.
std::string Shortened(const std::string& name, std::size_t characters)
{
    constexpr std::string_view kDots = "..";
    const std::size_t length = CountCharacters(name);
    if (length <= characters)
        return name;
    const std::size_t kept = characters - std::min(characters, kDots.size());
    const std::size_t head = (kept + 1) / 2;
    std::string text;
    std::size_t at = 0;
    for (const char c : name) {
        if (!IsContinuation(c) && ++at == head + 1)
            text += kDots;
        if (at <= head || at > length - (kept - head))
            text += c;
    }
    return text;
}

/// Makes the rows, of which the first holds the headings, as narrow as they must be and can.
void FitInto(std::size_t columns, std::vector<Row>& rows)
{
    if (TotalWidth(WidthsOf(rows)) > columns)
        rows.front() = kShortHeadings;
    const Widths widths = WidthsOf(rows);
    const std::size_t numbers = TotalWidth(widths) - widths.front();
    constexpr std::size_t kShortestName = 8;
    for (Row& row : rows)
        row.front() = Shortened(row.front(), std::max(kShortestName, columns - std::min(columns, numbers)));
}

/// The name to the left, numbers to the right.
std::string Line(const Row& row, const Widths& widths)
{
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
        const std::string padding(widths[i] - CountCharacters(row[i]), ' ');
        line += i == 0 ? row[i] + padding : std::string(kGap) + padding + row[i];
    }
    return line + '\n';
}

} // namespace

std::string HelpText()
{
    std::string text = "velmora " + std::string(Version()) + kUsage;
    for (const OptionHeading& heading : OptionHeadings()) {
        text.append("\n").append(heading.text).append("\n");
        for (const Option& option : Options())
            if (option.group == heading.group)
                text += option.IsSwitch() ? SwitchHelp(option) : KeyHelp(option);
    }
    return text + kRest;
}

std::string ClosingTable(std::span<const TableReport> tables, std::optional<std::size_t> columns)
{
    if (tables.empty())
        return {};
    std::vector<Row> rows{kHeadings};
    for (const TableReport& report : tables)
        rows.push_back(RowOf(report));
    if (tables.size() > 1)
        rows.push_back(RowOf(Total(tables)));
    if (columns)
        FitInto(*columns, rows);

    const Widths widths = WidthsOf(rows);
    const std::string rule = std::string(TotalWidth(widths), '-') + '\n';
    std::string text = Line(rows.front(), widths) + rule;
    for (std::size_t i = 1; i <= tables.size(); ++i)
        text += Line(rows[i], widths);
    if (tables.size() > 1)
        text += rule + Line(rows.back(), widths);
    return text;
}

} // namespace velmora
