#include "xml/structure_model.h"

#include <utility>

namespace velmora {

std::size_t StructureModel::Append(ElementInfo info)
{
    const std::size_t number = elements_.size();
    if (info.strPath >= byPath_.size())
        byPath_.resize(info.strPath + std::size_t{1});
    byPath_[info.strPath] = number;
    elements_.push_back(std::move(info));
    return number;
}

void StructureModel::Reserve(std::size_t count)
{
    elements_.reserve(count + 1);
    byPath_.reserve(count + 1);
}

} // namespace velmora
