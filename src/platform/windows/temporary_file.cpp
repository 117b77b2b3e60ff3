#include "platform/temporary_file.h"

#include "platform/windows/windows.h"

#include <algorithm>
#include <string>

namespace velmora {

namespace {

class DeletedFile : public TemporaryFile {
public:
    explicit DeletedFile(HANDLE file) noexcept : file_(file) {}
    ~DeletedFile() override { CloseHandle(file_); }
    DeletedFile(const DeletedFile&) = delete;
    DeletedFile& operator=(const DeletedFile&) = delete;

    [[nodiscard]] bool Extend(std::size_t bytes) override
    {
        if (bytes <= bytes_)
            return true;
        FILE_ALLOCATION_INFO room{};
        room.AllocationSize.QuadPart = static_cast<LONGLONG>(bytes);
        FILE_END_OF_FILE_INFO end{};
        end.EndOfFile.QuadPart = static_cast<LONGLONG>(bytes);
        // Not every file system takes the first: the second one asks for the room as well, later.
        SetFileInformationByHandle(file_, FileAllocationInfo, &room, sizeof room);
        if (!SetFileInformationByHandle(file_, FileEndOfFileInfo, &end, sizeof end))
            return false;
        bytes_ = bytes;
        return true;
    }

    [[nodiscard]] bool Write(std::size_t position, std::span<const std::byte> bytes) override
    {
        constexpr std::size_t kMostAtOnce = std::size_t{1} << 30;
        for (std::size_t done = 0; done < bytes.size();) {
            OVERLAPPED place{};
            place.Offset = static_cast<DWORD>(position + done);
            place.OffsetHigh = static_cast<DWORD>((position + done) >> 32);
            DWORD written = 0;
            const auto count = static_cast<DWORD>(std::min(bytes.size() - done, kMostAtOnce));
            if (!WriteFile(file_, bytes.data() + done, count, &written, &place) || written == 0)
                return false;
            done += written;
        }
        return true;
    }

    [[nodiscard]] void* Map(std::size_t bytes) override
    {
        const auto size = static_cast<ULONGLONG>(bytes);
        const HANDLE mapping = CreateFileMappingW(file_, nullptr, PAGE_READWRITE, static_cast<DWORD>(size >> 32),
                                                  static_cast<DWORD>(size), nullptr);
        if (mapping == nullptr)
            return nullptr;
        void* const block = MapViewOfFile(mapping, FILE_MAP_READ | FILE_MAP_WRITE, 0, 0, bytes);
        CloseHandle(mapping); // the view keeps it
        return block;
    }

private:
    HANDLE file_;
    std::size_t bytes_ = 0;
};

} // namespace

std::unique_ptr<TemporaryFile> MakeTemporaryFile()
{
    wchar_t folder[MAX_PATH + 1] = L"";
    wchar_t name[MAX_PATH] = L"";
    if (GetTempPathW(MAX_PATH + 1, folder) == 0 || GetTempFileNameW(folder, L"vel", 0, name) == 0)
        return nullptr;
    const HANDLE file = CreateFileW(name, GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        DeleteFileW(name);
        return nullptr;
    }
    return std::make_unique<DeletedFile>(file);
}

} // namespace velmora
