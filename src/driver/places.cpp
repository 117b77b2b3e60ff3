#include "driver/places.h"

#include "log/runtime_error.h"
#include "platform/paths.h"
#include "platform/program.h"

#include <filesystem>
#include <system_error>

namespace velmora {

Places StandardPlaces()
{
    const std::string program = ProgramFolder();
    return {program, IsWritableFolder(program) ? program : UserDataFolder()};
}

void MakeFilesFolder(const Places& places)
{
    std::error_code error;
    std::filesystem::create_directories(PathFromUtf8(places.files), error);
    if (error)
        throw FileError("The folder", places.files, "cannot be made", error.default_error_condition().value());
}

} // namespace velmora
