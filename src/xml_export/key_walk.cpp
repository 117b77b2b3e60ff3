#include "xml_export/key_walk.h"

namespace velmora {

void KeyWalk::NoteCurrent()
{
    current_ = records_.Eof() ? std::nullopt : std::optional(records_.GetLong(field_));
}

bool KeyWalk::Find(std::int32_t key)
{
    const bool isBehind = wanted_ && *wanted_ < key && (!current_ || *current_ >= key);
    if (!isBehind && !(wanted_ == key && current_ == key)) {
        records_.Seek(key);
        NoteCurrent();
    }
    wanted_ = key;
    return current_ == key;
}

bool KeyWalk::Next()
{
    records_.MoveNext();
    NoteCurrent();
    return current_ == wanted_;
}

void KeyWalk::Return(std::int32_t key, std::uint64_t position)
{
    records_.MoveTo(position);
    wanted_ = current_ = key;
}

} // namespace velmora
