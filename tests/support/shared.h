#pragma once

#include "support/process.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora::testing {

/// The folder with the shared corpus and checker, from the environment variable VELMORA_SHARED; nullopt when that is
/// unset or empty. Throws std::runtime_error when it names something that is not a folder, so that a wrong setting
/// fails instead of skipping.
[[nodiscard]] std::optional<std::filesystem::path> SharedFolder();

/// Gives `variable` the shared folder, or ends the test: skipped when VELMORA_SHARED is unset, failed when it is wrong.
#define REQUIRE_SHARED(variable)                                                                                       \
    if (!::velmora::testing::SharedFolder())                                                                           \
        GTEST_SKIP() << "skipped: VELMORA_SHARED is not set (the folder with the shared corpus and checker)";          \
    const std::filesystem::path variable = *::velmora::testing::SharedFolder()

/// Runs python3 with `arguments`; the shared tools can be imported.
[[nodiscard]] ProcessResult RunPython(std::vector<std::string> arguments);

/// The databases of the shared corpus that Access and its engine made and that open without a password, in order.
[[nodiscard]] std::vector<std::filesystem::path> RealDatabases(const std::filesystem::path& shared);

/// A new empty folder below the system's folder for temporary files; removed with everything in it at the end.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& Path() const noexcept { return path_; }
    [[nodiscard]] std::filesystem::path operator/(const std::filesystem::path& name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

/// Writes `content` to `path`, byte for byte, in place of what was there. Throws when that fails.
void WriteFile(const std::filesystem::path& path, std::string_view content);
/// The bytes of `path`. Throws when it cannot be read.
[[nodiscard]] std::string ReadFile(const std::filesystem::path& path);

/// Copies `original`, which may be one for reading only, to `copy`, which may be changed. Gives `copy`.
std::filesystem::path CopyOf(const std::filesystem::path& original, const std::filesystem::path& copy);

/// Runs the shared checker on databases and fails with its report when it finds anything wrong in one of them. One call
/// for many files is much quicker than many calls. Succeeds without checking when VELMORA_SHARED is unset.
[[nodiscard]] ::testing::AssertionResult ExpectSound(const std::vector<std::filesystem::path>& files);
[[nodiscard]] ::testing::AssertionResult ExpectSound(const std::filesystem::path& file);

#define EXPECT_SOUND(file) EXPECT_TRUE(::velmora::testing::ExpectSound(file))

/// For how many threads the tests of conversions ask, on the smallest document too: what VELMORA_TEST_THREADS says.
[[nodiscard]] const char* TestThreads();

} // namespace velmora::testing
