#include "jet/face/database.h"
#include "jet/store/crash_file_system.h"

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace jet {
namespace {

namespace fs = std::filesystem;
using testing::ErrorOf;
using velmora::testing::ReadFile;
using velmora::testing::TempFolder;
using velmora::testing::WriteFile;

std::optional<ErrorNumber> ErrorOfOpening(const fs::path& path)
{
    return ErrorOf([&] { static_cast<void>(Connection::Open(path)); });
}

std::optional<ErrorNumber> ErrorOfReplacing(const fs::path& path)
{
    return ErrorOf([&] { static_cast<void>(Connection::Create(path, JetVersion::Jet4, Existing::Replace)); });
}

void MakeDatabase(const fs::path& path)
{
    const auto connection = Connection::Create(path, JetVersion::Jet4);
    connection->Execute("CREATE TABLE t (a Long)");
    connection->Commit();
}

std::vector<std::string> Names(const fs::path& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename());
    std::ranges::sort(names);
    return names;
}

/// A process of its own that does `action` and then stays until it is killed.
class OtherProcess {
public:
    template <typename Action>
    explicit OtherProcess(const Action& action)
    {
        int pipe[2];
        if (::pipe(pipe) != 0)
            throw std::runtime_error("no pipe");
        child_ = ::fork();
        if (child_ == 0)
            Stay(action, pipe[1]);
        ::close(pipe[1]);
        char ready = 0;
        const bool isReady = ::read(pipe[0], &ready, 1) == 1;
        ::close(pipe[0]);
        if (!isReady)
            throw std::runtime_error("the other process has failed");
    }
    ~OtherProcess()
    {
        ::kill(child_, SIGKILL);
        ::waitpid(child_, nullptr, 0);
    }
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;

private:
    template <typename Action>
    [[noreturn]] static void Stay(const Action& action, int ready)
    {
        try {
            const auto kept = action();
            static_cast<void>(::write(ready, "x", 1) == 1);
            for (;;)
                ::pause();
        } catch (const Error&) {
            ::_exit(1);
        }
    }

    pid_t child_;
};

/// What Access on another machine looks like from here: an entry in the lock file, and a lock on its byte.
std::unique_ptr<File> HoldUserByte(const fs::path& lockFile, int user)
{
    std::string entries;
    for (int i = 0; i <= user; ++i) {
        std::string entry = "PC" + std::to_string(i);
        entry.resize(32);
        entry += "Admin";
        entry.resize(64);
        entries += entry;
    }
    WriteFile(lockFile, entries);
    std::unique_ptr<File> file = RealFileSystem().Open(lockFile, OpenMode::ReadWrite);
    EXPECT_TRUE(file->TryLock(0x10000001u + static_cast<unsigned>(user), 1));
    return file;
}

TEST(Sharing, AnotherProcessThatHasTheDatabaseOpenKeepsUsOut)
{
    const TempFolder folder;
    const fs::path path = folder / "a.mdb";
    MakeDatabase(path);
    {
        const OtherProcess other([&] { return Connection::Open(path); });
        EXPECT_EQ(Names(folder.Path()), (std::vector<std::string>{"a.ldb", "a.mdb"}));
        EXPECT_EQ(ErrorOfOpening(path), ErrorNumber::FileInUse);
        EXPECT_FALSE(Connection::CanReplace(path));
        EXPECT_EQ(ErrorOfReplacing(path), ErrorNumber::FileInUse);
    }
    // It was killed: what it left is taken over.
    EXPECT_TRUE(Connection::CanReplace(path));
    EXPECT_EQ(Names(folder.Path()), (std::vector<std::string>{"a.ldb", "a.mdb"}));
    EXPECT_EQ(ErrorOfOpening(path), std::nullopt);
    EXPECT_EQ(Names(folder.Path()), std::vector<std::string>{"a.mdb"});
}

TEST(Sharing, ReadersShareADatabaseThatNobodyWrites)
{
    const TempFolder folder;
    const fs::path path = folder / "a.mdb";
    MakeDatabase(path);
    const std::string before = ReadFile(path);
    fs::permissions(path, fs::perms::owner_read);
    const auto errorOfReading = [&] { return ErrorOf([&] { static_cast<void>(Connection::OpenReadOnly(path)); }); };
    {
        const OtherProcess other([&] { return Connection::OpenReadOnly(path); });
        const auto connection = Connection::OpenReadOnly(path);
        EXPECT_EQ(Names(folder.Path()), std::vector<std::string>{"a.mdb"});
        EXPECT_NE(ErrorOfOpening(path), std::nullopt);
        EXPECT_EQ(ErrorOf([&] { connection->Execute("CREATE TABLE u (a Long)"); }), ErrorNumber::ReadOnly);
        Recordset records = connection->OpenTable("t");
        records.AddNew();
        EXPECT_EQ(ErrorOf([&] { records.Update(); }), ErrorNumber::ReadOnly);
        EXPECT_EQ(ErrorOf([&] { connection->Commit(); }), ErrorNumber::ReadOnly);
    }
    fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_TRUE(ReadFile(path) == before);
    {
        const auto user = HoldUserByte(folder / "a.ldb", 3);
        EXPECT_EQ(errorOfReading(), ErrorNumber::FileInUse);
    }
    const OtherProcess writer([&] { return Connection::Open(path); });
    EXPECT_EQ(errorOfReading(), ErrorNumber::FileInUse);
}

#if defined(__linux__) && defined(__x86_64__)
/// From now on locks of parts of files are unknown to this process, as some file systems know none.
void ForgetRangeLocks()
{
    sock_filter filter[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_fcntl, 0, 3),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args[1])),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, F_OFD_SETLK, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EINVAL),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog program{std::size(filter), filter};
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    if (::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0)
        ::_exit(2);
}

TEST(Sharing, WithoutLocksOfPartsTheWholeFileIsLocked)
{
    const TempFolder folder;
    const fs::path path = folder / "a.mdb";
    MakeDatabase(path);
    const auto open = [&] {
        ForgetRangeLocks();
        return OpenFile(path, OpenMode::ReadWrite);
    };
    {
        const OtherProcess first(open);
        EXPECT_THROW(OtherProcess second(open), std::runtime_error);
    }
    EXPECT_NO_THROW(OtherProcess third(open)) << "the lock has gone with the first";
}
#endif

TEST(Sharing, AUserOfTheLockFileIsNamed)
{
    const TempFolder folder;
    const fs::path path = folder / "a.mdb";
    MakeDatabase(path);
    const auto user = HoldUserByte(folder / "a.ldb", 3);
    EXPECT_FALSE(Connection::CanReplace(path));
    EXPECT_EQ(ErrorOfOpening(path), ErrorNumber::FileInUse);
    const std::string message = testing::MessageOf([&] { static_cast<void>(Connection::Open(path)); });
    EXPECT_NE(message.find("'Admin' on machine 'PC3'"), std::string::npos) << message;
    EXPECT_EQ(ReadFile(folder / "a.ldb").size(), 4 * 64u) << "somebody else's lock file was touched";
}

TEST(Sharing, OurLockFileLeavesNoPlaceAndGoesWithUs)
{
    for (const char* name : {"a.mdb", "A.MDB", "noextension", "a.ldb", "two.dots.dat"}) {
        SCOPED_TRACE(name);
        const TempFolder folder;
        const fs::path path = folder / name;
        const fs::path lockFile =
            std::string(name) == "a.ldb" ? folder / "a.ldb.ldb" : fs::path(path).replace_extension(".ldb");
        MakeDatabase(path);
        EXPECT_EQ(Names(folder.Path()), std::vector<std::string>{name});
        {
            const auto connection = Connection::Open(path);
            const auto file = RealFileSystem().Open(lockFile, OpenMode::ReadWrite);
            for (const unsigned user : {0u, 100u, 254u})
                EXPECT_FALSE(file->TryLock(0x10000001u + user, 1)) << user;
            const std::string entry = ReadFile(lockFile);
            ASSERT_EQ(entry.size(), 64u);
            EXPECT_EQ(entry.substr(32, 6), std::string("Admin\0", 6));
        }
        EXPECT_EQ(Names(folder.Path()), std::vector<std::string>{name});
    }
}

/// Somebody puts a new database in the place of the old one, just before the next one who opens it makes the lock file.
class FileSystemWithAnother final : public testing::CrashFileSystem {
public:
    std::unique_ptr<File> Open(const fs::path& path, OpenMode mode) override
    {
        if (path.extension() == ".ldb" && !another_.empty())
            Rename(std::exchange(another_, {}), "a.mdb");
        return CrashFileSystem::Open(path, mode);
    }
    void PutThereLater(const fs::path& path) { another_ = path; }

private:
    fs::path another_;
};

TEST(Sharing, ADatabaseThatWasReplacedMeanwhileIsNotWrittenTo)
{
    FileSystemWithAnother system;
    for (const std::string name : {"a", "b"}) {
        const auto connection = Connection::Create(name + ".mdb", JetVersion::Jet4, Existing::Refuse, system);
        connection->Execute("CREATE TABLE " + name + " (x Long)");
        connection->Commit();
    }
    system.PutThereLater("b.mdb");
    EXPECT_EQ(testing::UserTables(*Connection::Open("a.mdb", system)), std::vector<std::string>{"b"});
}

TEST(Sharing, ANewDatabaseHoldsTheLockFileOfItsPlace)
{
    const TempFolder folder;
    const fs::path path = folder / "a.mdb";
    MakeDatabase(path);
    {
        const auto connection = Connection::Create(path, JetVersion::Jet3, Existing::Replace);
        EXPECT_EQ(Names(folder.Path()), (std::vector<std::string>{"a.ldb", "a.mdb", "a.mdb.velmora-new"}));
        EXPECT_EQ(ErrorOfOpening(path), ErrorNumber::FileInUse) << "it is about to be replaced";
    }
    EXPECT_EQ(Names(folder.Path()), std::vector<std::string>{"a.mdb"});
    EXPECT_EQ(Connection::Open(path)->Version(), JetVersion::Jet4) << "never committed";
    const auto user = HoldUserByte(folder / "b.ldb", 0);
    EXPECT_EQ(ErrorOf([&] { MakeDatabase(folder / "b.mdb"); }), ErrorNumber::FileInUse);
}

TEST(Sharing, ALinkStandsForTheFileItPointsAt)
{
    const TempFolder folder;
    fs::create_directory(folder / "real");
    fs::create_symlink("real/a.mdb", folder / "link.mdb");
    MakeDatabase(folder / "link.mdb");
    EXPECT_TRUE(fs::is_symlink(folder / "link.mdb"));
    {
        const auto connection = Connection::Open(folder / "link.mdb");
        EXPECT_EQ(Names(folder / "real"), (std::vector<std::string>{"a.ldb", "a.mdb"}));
        EXPECT_EQ(ErrorOfOpening(folder / "real/a.mdb"), ErrorNumber::FileInUse);
    }
    EXPECT_TRUE(Connection::CanReplace(folder / "link.mdb"));
    Connection::Create(folder / "link.mdb", JetVersion::Jet3, Existing::Replace)->Commit();
    EXPECT_TRUE(fs::is_symlink(folder / "link.mdb"));
    EXPECT_EQ(Connection::Open(folder / "real/a.mdb")->Version(), JetVersion::Jet3);
}

/// Runs `action` as somebody whom the system refuses what it does not refuse its superuser.
template <typename Action>
void AsOrdinaryUser(const fs::path& folder, const Action& action)
{
    if (::geteuid() != 0)
        return action();
    constexpr uid_t kNobody = 65534;
    ASSERT_EQ(::chown(folder.c_str(), kNobody, kNobody), 0);
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        ASSERT_EQ(::lchown(entry.path().c_str(), kNobody, kNobody), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        if (::setgid(kNobody) == 0 && ::setuid(kNobody) == 0)
            action();
        ::_exit(::geteuid() == 0 || ::testing::Test::HasFailure());
    }
    int state = 0;
    ::waitpid(child, &state, 0);
    EXPECT_EQ(state, 0) << "see above";
}

TEST(Sharing, WhatCannotBeWrittenIsToldBeforeAnythingIsMade)
{
    const TempFolder folder;
    MakeDatabase(folder / "a.mdb");
    fs::copy_file(folder / "a.mdb", folder / "readonly.mdb");
    fs::create_directory(folder / "folder.mdb");
    fs::create_directory(folder / "closed");
    fs::copy_file(folder / "a.mdb", folder / "closed/a.mdb");
    WriteFile(folder / "short.mdb", ReadFile(folder / "a.mdb").substr(0, 5000));
    ASSERT_EQ(::mkfifo((folder / "pipe.mdb").c_str(), 0600), 0);
    fs::permissions(folder / "readonly.mdb", fs::perms::owner_read);
    fs::permissions(folder / "closed", fs::perms::owner_read | fs::perms::owner_exec);
    struct Case {
        const char* name;
        ErrorNumber number;
        bool isReplaceable = false;
    };
    const Case cases[] = {
        {"readonly.mdb", ErrorNumber::ReadOnly},        {"closed/a.mdb", ErrorNumber::ReadOnly},
        {"folder.mdb", ErrorNumber::InvalidPath},       {"pipe.mdb", ErrorNumber::InvalidPath},
        {"missing.mdb", ErrorNumber::FileNotFound},     {"none/a.mdb", ErrorNumber::InvalidPath},
        {"short.mdb", ErrorNumber::NotADatabase, true},
    };
    AsOrdinaryUser(folder.Path(), [&] {
        const std::vector<std::string> before = Names(folder.Path());
        for (const Case& c : cases) {
            SCOPED_TRACE(c.name);
            EXPECT_EQ(ErrorOfOpening(folder / c.name), c.number);
            EXPECT_EQ(Connection::CanReplace(folder / c.name), c.isReplaceable);
        }
        EXPECT_EQ(ErrorOfReplacing(folder / "closed/a.mdb"), ErrorNumber::ReadOnly);
        EXPECT_EQ(ErrorOfReplacing(folder / "none/a.mdb"), ErrorNumber::InvalidPath);
        EXPECT_EQ(Names(folder.Path()), before);
        EXPECT_EQ(Names(folder / "closed"), std::vector<std::string>{"a.mdb"});
    });
    fs::permissions(folder / "closed", fs::perms::owner_all);
}

} // namespace
} // namespace jet
