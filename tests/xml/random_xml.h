#pragma once

#include <cstddef>
#include <initializer_list>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace velmora::testing {

/// Documents with all that may stand between tags, and much of it.
class RandomXml {
public:
    explicit RandomXml(unsigned seed) : random_(seed) {}

    /// `doctype` stands ahead of the document element.
    [[nodiscard]] std::string Document(std::string_view doctype = {})
    {
        std::string xml(OneOf({"", "\xEF\xBB\xBF", "<?xml version='1.0'?>\r\n",
                               "<?xml version='1.0' encoding='ISO-8859-1'?><!-- <x> -->"}));
        xml.append(doctype);
        std::vector<std::string_view> open;
        const auto begin = [&] {
            open.push_back(OneOf({"a", "b", "list", "\xC3\xA4", "n:long-name"}));
            xml.append("<").append(open.back()).append(Attributes()).append(">");
        };
        const std::size_t pieces = 5 + Below(60);
        const std::size_t deepest = 1 + Below(30);
        begin();
        for (std::size_t piece = 0; piece < pieces; ++piece) {
            if (open.size() < deepest && Below(2) == 0) {
                begin();
            } else if (open.size() > 1 && Below(2) == 0) {
                xml.append("</").append(open.back()).append(Below(3) == 0 ? "\n >" : ">");
                open.pop_back();
            } else {
                xml.append(Content());
            }
        }
        for (; !open.empty(); open.pop_back())
            xml.append("</").append(open.back()).append(">");
        return xml.append(OneOf({"", "\r\n", "<!-- </x> -->", "<?end?> "}));
    }

    /// `xml` with something wrong in it, perhaps.
    [[nodiscard]] std::string Damaged(std::string xml)
    {
        const std::size_t at = Below(xml.size());
        switch (Below(4)) {
        case 0:
            return xml.substr(0, at);
        case 1:
            return xml.erase(at, 1 + Below(8));
        case 2:
            return xml.append("<a>more</a>");
        default:
            return xml.insert(at, OneOf({"<",
                                         "&",
                                         "]]>",
                                         "</a>",
                                         "<b>",
                                         "\xFF",
                                         "\xC3",
                                         "<!DOCTYPE a [<!ENTITY x 'y'>]>",
                                         "<?xml version='1.0'?>",
                                         "--",
                                         "<a b='1' b='2'/>",
                                         "&none;",
                                         "&#0;",
                                         "<!--",
                                         "<![CDATA[",
                                         "<?",
                                         "'",
                                         ">",
                                         "<velmora-outer>",
                                         "</velmora-outer>"}));
        }
    }

    [[nodiscard]] std::size_t Below(std::size_t limit) { return random_() % limit; }

private:
    [[nodiscard]] const char* OneOf(std::initializer_list<const char*> choices)
    {
        return choices.begin()[Below(choices.size())];
    }

    [[nodiscard]] std::string Attributes()
    {
        std::string text;
        for (const char* name : {"k", "\xC3\xB6", "xml:space"})
            if (Below(4) == 0)
                text.append(" ").append(name).append(
                    OneOf({"='1>2'", " =\n'/>'", "=\"'&lt;&#10;?>\"", "=''", "='-->]]>'", "='\r\n\t'"}));
        return text;
    }

    [[nodiscard]] std::string Content()
    {
        return OneOf({"text", "\r\n", "\r", " ", "1 > 2 ]] !", "&amp;&#x3C;", "&#10;", "\xE6\x97\xA5\xE6\x9C\xAC",
                      "<![CDATA[<a> ]] ]]]]><![CDATA[>]]>", "<![CDATA[]]>", "<!-- <b> - </a> > -->", "<!---->",
                      "<?p <b c='?' > ?>", "<e/>", "<e f='>'\n/>", "!?<e>!</e>?"});
    }

    std::mt19937 random_;
};

} // namespace velmora::testing
