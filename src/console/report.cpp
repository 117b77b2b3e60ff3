#include "console/report.h"

#include "app/application.h"
#include "platform/terminal.h"
#include "platform/utf8.h"
#include "settings/options.h"

#include <algorithm>
#include <array>
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
would be replaced or emptied, the run does not begin.

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

/// The name to the left, numbers to the right.
std::string Line(const Row& row, const std::array<std::size_t, 4>& widths)
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

std::string ClosingTable(std::span<const TableReport> tables)
{
    if (tables.empty())
        return {};
    std::vector<Row> rows{{"Table", "Records", "New columns", "Columns widened"}};
    for (const TableReport& report : tables)
        rows.push_back(RowOf(report));
    if (tables.size() > 1)
        rows.push_back(RowOf(Total(tables)));

    std::array<std::size_t, 4> widths{};
    for (const Row& row : rows)
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], CountCharacters(row[i]));

    std::size_t ruleWidth = kGap.size() * (widths.size() - 1);
    for (const std::size_t width : widths)
        ruleWidth += width;
    const std::string rule = std::string(ruleWidth, '-') + '\n';

    std::string text = Line(rows.front(), widths) + rule;
    for (std::size_t i = 1; i <= tables.size(); ++i)
        text += Line(rows[i], widths);
    if (tables.size() > 1)
        text += rule + Line(rows.back(), widths);
    return text;
}

} // namespace velmora
