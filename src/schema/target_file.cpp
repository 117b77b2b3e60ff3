#include "schema/target_file.h"

#include <system_error>

namespace velmora {

namespace fs = std::filesystem;

namespace {

fs::path AsideName(fs::path path)
{
    path += ".replaced";
    return path;
}

} // namespace

ReplacedFile::~ReplacedFile()
{
    if (!aside_.empty())
        Recover(path_);
}

void ReplacedFile::Recover(const fs::path& path) noexcept
{
    std::error_code error;
    const fs::path aside = AsideName(path);
    if (!fs::exists(path, error) && !error && fs::is_regular_file(aside, error))
        fs::rename(aside, path, error);
}

bool ReplacedFile::PutAside(const fs::path& path)
{
    std::error_code error;
    if (!fs::is_regular_file(path, error))
        return false;
    fs::path aside = AsideName(path);
    fs::rename(path, aside, error); // over one that a killed run has left
    if (error)
        return false;
    path_ = path;
    aside_ = std::move(aside);
    return true;
}

void ReplacedFile::Discard() noexcept
{
    std::error_code ignored;
    if (!aside_.empty())
        fs::remove(aside_, ignored);
    aside_.clear();
}

} // namespace velmora
