#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace velmora {

/// Writes JSON (RFC 8259), indented. The members of an object have names, the elements of an array none. Text is UTF-8;
/// each byte that belongs to no character, as in names of files, becomes U+FFFD.
class JsonWriter {
public:
    void BeginObject(std::string_view name = {}) { Begin(name, '{'); }
    void EndObject() { End('}'); }
    void BeginArray(std::string_view name) { Begin(name, '['); }
    void EndArray() { End(']'); }
    void Text(std::string_view name, std::string_view value);
    void Number(std::string_view name, std::int64_t value);
    /// A number of seconds, with a point and three digits.
    void Seconds(std::string_view name, std::int64_t milliseconds);
    void Flag(std::string_view name, bool value);
    void Null(std::string_view name);

    /// All that was written, a line end at its end.
    [[nodiscard]] std::string Take();

private:
    void Begin(std::string_view name, char bracket);
    void End(char bracket);
    void Name(std::string_view name);
    void Quoted(std::string_view text);

    std::string text_;
    std::size_t depth_ = 0;
    bool isEmpty_ = true; ///< the object or array at hand has nothing yet
};

} // namespace velmora
