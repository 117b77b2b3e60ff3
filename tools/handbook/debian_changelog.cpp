#include "handbook/debian_changelog.h"

#include "settings/options.h"

namespace velmora::handbook {

namespace {

constexpr std::size_t kLineWidth = 78;

std::string Plain(std::string_view markdown)
{
    std::string text;
    for (const Span& span : Spans(markdown))
        text += span.text;
    return text;
}

/// `begin` and then the words of `text`, in lines that go on below its first word.
std::string Filled(std::string begin, std::string_view text)
{
    std::string lines;
    const std::string margin(begin.size(), ' ');
    std::string line = std::move(begin);
    bool isFirst = true;
    for (const std::string_view word : Listed(text)) {
        if (!isFirst && line.size() + 1 + word.size() > kLineWidth) {
            lines += line + "\n";
            line = margin;
            isFirst = true;
        }
        line.append(isFirst ? "" : " ").append(word);
        isFirst = false;
    }
    return lines + line + "\n";
}

} // namespace

std::string DebianChangelog(const std::vector<Block>& changes, std::string_view version, const Signature& signature)
{
    std::string text = std::string("velmora (").append(version).append(") unstable; urgency=medium\n");
    bool isNewest = false;
    for (const Block& block : changes) {
        if (block.kind == Block::Kind::Heading && block.level == 2) {
            if (isNewest)
                break;
            isNewest = block.text.starts_with(version);
        } else if (isNewest && block.kind == Block::Kind::Paragraph && !block.inItem) {
            text += "\n" + Filled("  [ ", Plain(block.text) + " ]");
        } else if (isNewest && block.kind == Block::Kind::Bullet) {
            text += Filled("  * ", Plain(block.text));
        }
    }
    return text + "\n -- " + signature.maintainer + "  " + signature.date + "\n";
}

} // namespace velmora::handbook
