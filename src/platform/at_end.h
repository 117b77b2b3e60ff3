#pragma once

#include <utility>

namespace velmora {

/// Does something at the end of a block, however that is left.
template <class Action>
class AtEnd {
public:
    explicit AtEnd(Action action) : action_(std::move(action)) {}
    ~AtEnd() { action_(); }
    AtEnd(const AtEnd&) = delete;
    AtEnd& operator=(const AtEnd&) = delete;

private:
    Action action_;
};

} // namespace velmora
