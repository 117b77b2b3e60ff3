#include "jet/catalog/name_key.h"

#include "jet/base/error.h"
#include "jet/base/text_codec.h"
#include "jet/index/index_key.h"

#include <algorithm>

namespace jet {

namespace {

bool IsForbidden(char c)
{
    return static_cast<unsigned char>(c) < 0x20 || std::string_view(".![]`").find(c) != std::string_view::npos;
}

std::string_view Objection(const Format& format, std::string_view name)
{
    if (name.empty())
        return "It is empty.";
    if (name.front() == ' ')
        return "It begins with a blank.";
    if (std::ranges::any_of(name, IsForbidden))
        return "It holds one of the characters . ! [ ] ` or a control character.";
    if (Utf16Length(name) > kMaxNameUnits)
        return "It has more than 64 characters.";
    if (Bytes encoded; format.version == JetVersion::Jet3 && AppendCp1252(encoded, name) != 0)
        return "It holds a character that Access 97 cannot store.";
    return {};
}

} // namespace

std::string NameKey(const Format& format, std::string_view name)
{
    const Bytes key = TextKey(format, name);
    return {key.begin(), key.end()};
}

void CheckName(const Format& format, std::string_view name)
{
    if (const std::string_view objection = Objection(format, name); !objection.empty())
        throw Error(ErrorNumber::InvalidName, {name}, objection);
}

} // namespace jet
