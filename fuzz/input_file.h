#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <unistd.h>

namespace velmora::fuzzing {

/// The one file, in memory, that all inputs of a target are written to; removed with the process.
inline const std::string& InputPath()
{
    static const std::string path = "/dev/shm/velmora-fuzz-" + std::to_string(getpid());
    static const int removal = std::atexit([] { std::remove(InputPath().c_str()); });
    static_cast<void>(removal);
    return path;
}

inline void Check(bool holds)
{
    if (!holds)
        std::abort();
}

inline void WriteInput(const std::uint8_t* data, std::size_t size)
{
    std::FILE* const file = std::fopen(InputPath().c_str(), "wb");
    Check(file != nullptr);
    std::fwrite(data, 1, size, file);
    std::fclose(file);
}

} // namespace velmora::fuzzing
