#include "platform/temporary_file.h"

#include "platform/program.h"

#include <string>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace velmora {

namespace {

class UnlinkedFile : public TemporaryFile {
public:
    explicit UnlinkedFile(int file) noexcept : file_(file) {}
    ~UnlinkedFile() override { close(file_); }
    UnlinkedFile(const UnlinkedFile&) = delete;
    UnlinkedFile& operator=(const UnlinkedFile&) = delete;

    [[nodiscard]] bool Extend(std::size_t bytes) override
    {
        if (bytes <= bytes_)
            return true;
        if (posix_fallocate(file_, static_cast<off_t>(bytes_), static_cast<off_t>(bytes - bytes_)) != 0)
            return false;
        bytes_ = bytes;
        return true;
    }

    [[nodiscard]] bool Write(std::size_t position, std::span<const std::byte> bytes) override
    {
        for (std::size_t done = 0; done < bytes.size();) {
            const ssize_t written =
                pwrite(file_, bytes.data() + done, bytes.size() - done, static_cast<off_t>(position + done));
            if (written <= 0)
                return false;
            done += static_cast<std::size_t>(written);
        }
        return true;
    }

    [[nodiscard]] void* Map(std::size_t bytes) override
    {
        void* const block = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, file_, 0);
        return block == MAP_FAILED ? nullptr : block;
    }

private:
    int file_;
    std::size_t bytes_ = 0;
};

/// -1 when the folder does not take it.
int OpenUnlinked(const std::string& folder)
{
    const int file = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (file >= 0)
        return file;
    // Not every file system knows files without a name.
    std::string name = folder + "/velmora-XXXXXX";
    const int named = mkostemp(name.data(), O_CLOEXEC);
    if (named >= 0)
        unlink(name.c_str());
    return named;
}

} // namespace

std::unique_ptr<TemporaryFile> MakeTemporaryFile()
{
    for (const std::string& folder : {EnvironmentVariable("TMPDIR"), std::string("/var/tmp"), std::string("/tmp")}) {
        if (folder.empty())
            continue;
        if (const int file = OpenUnlinked(folder); file >= 0)
            return std::make_unique<UnlinkedFile>(file);
    }
    return nullptr;
}

} // namespace velmora
