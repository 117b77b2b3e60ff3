#include "support/shared.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>

namespace velmora::testing {

std::optional<std::filesystem::path> SharedFolder()
{
    const char* value = std::getenv("VELMORA_SHARED");
    if (value == nullptr || *value == '\0')
        return std::nullopt;
    if (!std::filesystem::is_directory(value))
        throw std::runtime_error(std::string("VELMORA_SHARED names no folder: ") + value);
    return std::filesystem::path(value);
}

ProcessResult RunPython(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), "python3");
    // No byte code is written: the shared folder may be read-only, and stays as it is in any case.
    std::map<std::string, std::string> environment{{"PYTHONDONTWRITEBYTECODE", "1"}, {"PYTHONIOENCODING", "utf-8"}};
    if (const auto shared = SharedFolder())
        environment["PYTHONPATH"] = (*shared / "tools").string();
    return RunProcess(arguments, environment);
}

std::vector<std::filesystem::path> RealDatabases(const std::filesystem::path& shared)
{
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(shared / "corpus" / "mdb"))
        if (entry.path().extension() == ".mdb" && entry.path().filename() != "V2000_with-password.mdb")
            files.push_back(entry.path());
    std::ranges::sort(files);
    return files;
}

TempFolder::TempFolder()
{
    std::random_device random;
    do
        path_ = std::filesystem::temp_directory_path() / ("velmora-test-" + std::to_string(random()));
    while (!std::filesystem::create_directory(path_));
}

TempFolder::~TempFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

void WriteFile(const std::filesystem::path& path, std::string_view content)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    if (!file.flush())
        throw std::runtime_error("cannot write " + path.string());
}

std::string ReadFile(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    std::string content{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file)
        throw std::runtime_error("cannot read " + path.string());
    return content;
}

std::filesystem::path CopyOf(const std::filesystem::path& original, const std::filesystem::path& copy)
{
    std::filesystem::copy_file(original, copy, std::filesystem::copy_options::overwrite_existing);
    std::filesystem::permissions(copy, std::filesystem::perms::owner_write, std::filesystem::perm_options::add);
    return copy;
}

::testing::AssertionResult ExpectSound(const std::vector<std::filesystem::path>& files)
{
    if (!SharedFolder() || files.empty())
        return ::testing::AssertionSuccess();
    std::vector<std::string> arguments{"-m", "jetcheck"};
    for (const std::filesystem::path& file : files)
        arguments.push_back(file.string());
    const ProcessResult run = RunPython(std::move(arguments));
    if (run.status == 0)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "the checker ended with status " << run.status << ":\n"
                                         << run.output << run.errors;
}

::testing::AssertionResult ExpectSound(const std::filesystem::path& file)
{
    return ExpectSound(std::vector<std::filesystem::path>{file});
}

const char* TestThreads()
{
    const char* const value = std::getenv("VELMORA_TEST_THREADS");
    return value == nullptr ? "1" : value;
}

} // namespace velmora::testing
