#include "support/shared.h"

#include "support/process.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
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
    std::string name = (std::filesystem::temp_directory_path() / "velmora-test-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr)
        throw std::runtime_error("cannot make a temporary folder like " + name);
    path_ = name;
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

::testing::AssertionResult ExpectSound(const std::vector<std::filesystem::path>& files)
{
    const std::optional<std::filesystem::path> shared = SharedFolder();
    if (!shared || files.empty())
        return ::testing::AssertionSuccess();
    std::vector<std::string> arguments{"python3", "-m", "jetcheck"};
    for (const std::filesystem::path& file : files)
        arguments.push_back(file.string());
    // No byte code is written: the shared folder may be read-only, and stays as it is in any case.
    const ProcessResult run =
        RunProcess(arguments, {{"PYTHONPATH", (*shared / "tools").string()}, {"PYTHONDONTWRITEBYTECODE", "1"}});
    if (run.status == 0)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "the checker ended with status " << run.status << ":\n"
                                         << run.output << run.errors;
}

::testing::AssertionResult ExpectSound(const std::filesystem::path& file)
{
    return ExpectSound(std::vector<std::filesystem::path>{file});
}

} // namespace velmora::testing
