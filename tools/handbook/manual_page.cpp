#include "handbook/manual_page.h"

#include "handbook/mdoc.h"
#include "settings/options.h"

#include <algorithm>
#include <string_view>

namespace velmora::handbook {

namespace {

using Kind = Block::Kind;

constexpr std::string_view kWindow = "The window";

void Begin(MdocWriter& page, std::string_view name, std::string_view what, std::string_view date)
{
    page.Line(".\\\" Made from the manual and the table of options.");
    page.Line(".Dd " + std::string(date));
    page.Line(name == "velmora" ? ".Dt VELMORA 1" : ".Dt VELMORA-GUI 1");
    page.Line(".Os");
    page.SectionHeading("Name");
    page.Line(std::string(".Nm ").append(name));
    page.Line(std::string(".Nd ").append(what));
    page.SectionHeading("Synopsis");
}

/// Words in backticks, as the manual writes them; the first of a key with what stands for its value.
std::string Words(std::string_view words, std::string_view value = {})
{
    std::string text;
    for (const std::string_view word : Listed(words)) {
        text.append(text.empty() ? "`" : ", `").append(word).append("`");
        if (!value.empty())
            text.append("**").append(value).append("**");
        value = {};
    }
    return text;
}

void AddOption(MdocWriter& page, const Option& option)
{
    std::string text(option.help);
    if (option.IsSwitch()) {
        page.Term(Words(option.words), text + (option.startsOn ? " (default)" : ""));
        if (!option.offWords.empty())
            page.Term(Words(option.offWords), std::string(option.offHelp) + (option.startsOn ? "" : " (default)"));
        return;
    }
    if (!StartValue(option).empty())
        text.append(" (default `").append(StartValue(option)).append("`)");
    page.Term(Words(option.words, option.value), text);
}

/// The options below a heading of the manual, in the place of the table that stands there; false when it is none of
/// theirs.
bool AddOptions(MdocWriter& page, std::string_view title)
{
    const auto heading = std::find_if(OptionHeadings().begin(), OptionHeadings().end(),
                                      [title](const OptionHeading& h) { return h.text == title; });
    if (heading == OptionHeadings().end())
        return false;
    page.BeginTerms();
    for (const Option& option : Options())
        if (option.group == heading->group)
            AddOption(page, option);
    page.EndList();
    return true;
}

void AddSection(MdocWriter& page, const std::vector<Block>& blocks)
{
    bool skipsTable = false;
    for (const Block& block : blocks) {
        if (skipsTable && block.kind == Kind::Table)
            continue;
        page.Add(block);
        if (block.kind == Kind::Heading)
            skipsTable = AddOptions(page, block.text);
    }
    page.EndList();
}

std::string SeeAlso(MdocWriter page, std::string_view other)
{
    page.SectionHeading("See also");
    page.Line(std::string(".Xr ").append(other).append(" 1"));
    return page.Text();
}

} // namespace

std::string ConsolePage(const std::vector<Block>& manual, std::string_view date)
{
    MdocWriter page;
    Begin(page, "velmora", "load XML files into Access databases or delimited text files", date);
    for (const std::string_view form :
         {"Ar file.xml ... file.mdb Op Ar option ...", "Cm xml= Ns Ar file Cm mdb= Ns Ar file Op Ar option ...",
          "Cm xml= Ns Ar file Cm txt= Ns Ar folder Op Ar option ...", "Cm mdb= Ns Ar file Cm export= Ns Ar file",
          "Fl -help | -version"}) {
        page.Line(".Nm velmora");
        page.Line(std::string(".").append(form));
    }
    page.SectionHeading("Description");
    for (const Block& block : manual) {
        if (block.kind == Kind::Heading && block.level == 1)
            continue;
        if (block.kind == Kind::Heading && block.level == 2)
            break;
        if (block.kind != Kind::Bullet) // the table of contents
            page.Add(block);
    }
    for (const Block& block : manual)
        if (block.kind == Kind::Heading && block.level == 2 && block.text != kWindow) {
            page.SectionHeading(block.text);
            AddSection(page, Section(manual, block.text));
        }
    return SeeAlso(std::move(page), "velmora-gui");
}

std::string WindowPage(const std::vector<Block>& manual, std::string_view date)
{
    MdocWriter page;
    Begin(page, "velmora-gui", "the window of velmora, which loads XML files into Access databases", date);
    page.Line(".Nm velmora-gui");
    page.Line(".Op Ar file ...");
    page.Line(".Op Ar option ...");
    page.SectionHeading("Description");
    AddSection(page, Section(manual, kWindow));
    page.SectionHeading("Options");
    page.Line("The words are those of");
    page.Line(".Xr velmora 1 ;");
    page.Line("what they say is filled in.");
    return SeeAlso(std::move(page), "velmora");
}

} // namespace velmora::handbook
