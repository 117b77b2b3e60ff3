#include "jet/store/file_system.h"

#include "jet/base/error.h"

#include <algorithm>
#include <random>

namespace jet {

void FileSystem::FillRandom(MutableBytes out)
{
    std::random_device source;
    std::uniform_int_distribution<unsigned> distribution(0, 0xFF);
    std::ranges::generate(out, [&] { return static_cast<Byte>(distribution(source)); });
}

void LockWhole(File& file)
{
    if (!file.TryLock(0, kToTheEnd))
        throw Error(ErrorNumber::FileInUse, {file.Name()});
}

std::unique_ptr<File> OpenFile(const std::filesystem::path& path, OpenMode mode)
{
    std::unique_ptr<File> file = RealFileSystem().Open(path, mode);
    LockWhole(*file);
    return file;
}

} // namespace jet
