// The file behind the native registry: several processes, sudden death, damage.
#include "tests/platform/wide.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// A registry of the test's own.
class RegistryStoreFile : public testing::Test {
protected:
    RegistryStoreFile()
    {
        std::string name = (std::filesystem::temp_directory_path() / "qx-registry-XXXXXX").string();
        folder = mkdtemp(name.data());
        setenv("QX_REGISTRY", folder.c_str(), 1);
    }
    ~RegistryStoreFile() override { std::filesystem::remove_all(folder); }

    std::filesystem::path File() const { return folder / "registry.sqlite"; }
    size_t SetAside() const
    {
        size_t count = 0;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            const std::string name = entry.path().filename().string();
            count += name.starts_with("registry.sqlite.damaged-") && !name.ends_with("-journal");
        }
        return count;
    }

    std::filesystem::path folder;
};

LSTATUS Put(const Wide& path, const Wide& name, DWORD value)
{
    HKEY key = nullptr;
    if (const LSTATUS status =
            RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr))
        return status;
    const LSTATUS status =
        RegSetValueExW(key, name.c_str(), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof value);
    RegCloseKey(key);
    return status;
}

LSTATUS Get(const Wide& path, const Wide& name, DWORD& value)
{
    HKEY key = nullptr;
    if (const LSTATUS status = RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, &key))
        return status;
    DWORD size = sizeof value;
    const LSTATUS status =
        RegQueryValueExW(key, name.c_str(), nullptr, nullptr, reinterpret_cast<BYTE*>(&value), &size);
    RegCloseKey(key);
    return status;
}

Wide Numbered(const char* text, int number)
{
    return FromAscii(text + std::to_string(number));
}

constexpr int kProcesses = 4;

// Every process writes into one common key and into one of its own.
int WriteMany(int process, int values)
{
    for (int i = 0; i < values; ++i)
        if (Put(TEXT("Common"), Numbered("v", process * values + i), DWORD(i)) ||
            Put(Numbered("Own\\", process), Numbered("v", i), DWORD(i)))
            return 1;
    return 0;
}

TEST_F(RegistryStoreFile, LosesNothingUnderFourWriters)
{
    constexpr int kValues = 15;
    Put(TEXT("Common"), TEXT("first"), 1);   // the parent's connection is open: children must not use it
    std::vector<pid_t> children;
    for (int p = 0; p < kProcesses; ++p)
        if (children.push_back(fork()); children.back() == 0)
            _exit(WriteMany(p, kValues));
    for (const pid_t child : children) {
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    DWORD value = 0;
    for (int i = 0; i < kProcesses * kValues; ++i) {
        EXPECT_EQ(Get(TEXT("Common"), Numbered("v", i), value), ERROR_SUCCESS) << i;
        EXPECT_EQ(value, DWORD(i % kValues));
    }
    for (int p = 0; p < kProcesses; ++p)
        EXPECT_EQ(Get(Numbered("Own\\", p), Numbered("v", kValues - 1), value), ERROR_SUCCESS) << p;
}

// A writer tells each value that it has stored through a pipe. However it dies, all that it told is there, and at most
// the one value more that it was about to tell.
TEST_F(RegistryStoreFile, SurvivesAWriterThatIsKilled)
{
    for (int round = 0; round < 5; ++round) {
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        const Wide key = Numbered("Round", round);
        const pid_t writer = fork();
        if (writer == 0) {
            for (DWORD i = 0;; ++i)
                if (Put(key, TEXT("v"), i) || write(ends[1], &i, sizeof i) != sizeof i)
                    _exit(1);
        }
        close(ends[1]);
        DWORD told = 0;
        for (int i = 0; i < 3 + round * 2; ++i)   // killed at another moment of the writing each time
            ASSERT_EQ(read(ends[0], &told, sizeof told), ssize_t(sizeof told));
        usleep(useconds_t(300 * round));
        kill(writer, SIGKILL);
        waitpid(writer, nullptr, 0);
        while (read(ends[0], &told, sizeof told) == ssize_t(sizeof told)) {
        }
        close(ends[0]);
        DWORD value = 0;
        ASSERT_EQ(Get(key, TEXT("v"), value), ERROR_SUCCESS) << round;
        EXPECT_GE(value, told) << round;
        EXPECT_LE(value, told + 1) << round;
        EXPECT_EQ(Put(key, TEXT("after"), 1), ERROR_SUCCESS) << round;
    }
    EXPECT_EQ(SetAside(), 0u);
}

TEST_F(RegistryStoreFile, IsKeptAsideWhenItIsNoRegistry)
{
    std::ofstream(File()) << std::string(5000, 'x');
    EXPECT_EQ(Put(TEXT("K"), TEXT("v"), 1), ERROR_REGISTRY_CORRUPT);
    EXPECT_EQ(SetAside(), 1u);
    EXPECT_EQ(Put(TEXT("K"), TEXT("v"), 2), ERROR_SUCCESS);
    DWORD value = 0;
    EXPECT_EQ(Get(TEXT("K"), TEXT("v"), value), ERROR_SUCCESS);
    EXPECT_EQ(value, 2u);
    EXPECT_EQ(SetAside(), 1u);
}

TEST_F(RegistryStoreFile, IsKeptAsideWhenAPageIsDamaged)
{
    for (int i = 0; i < 80; ++i)
        ASSERT_EQ(Put(TEXT("K"), Numbered("a value with a long name, so that pages fill ", i), DWORD(i)),
                  ERROR_SUCCESS);
    constexpr size_t kFirstPage = 4096;   // with the header, which stays good
    const auto size = std::filesystem::file_size(File());
    {
        std::fstream file(File(), std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(kFirstPage);
        file << std::string(size_t(size) - kFirstPage, '\xFF');
    }
    // Another process meets the damage when it opens the file.
    const pid_t child = fork();
    if (child == 0) {
        const LSTATUS first = Put(TEXT("K"), TEXT("new"), 1), second = Put(TEXT("K"), TEXT("new"), 1);
        _exit(first == ERROR_REGISTRY_CORRUPT && second == ERROR_SUCCESS ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_EQ(SetAside(), 1u);
    DWORD value = 0;
    EXPECT_EQ(Get(TEXT("K"), TEXT("new"), value), ERROR_SUCCESS);   // the one who had the old file open follows
    EXPECT_EQ(SetAside(), 1u);
}

// Each variable as it was, at the end.
class KeptVariable {
public:
    explicit KeptVariable(const char* variable) : name(variable)
    {
        if (const char* const value = std::getenv(name))
            former = value;
    }
    KeptVariable(const KeptVariable&) = delete;
    KeptVariable& operator=(const KeptVariable&) = delete;
    ~KeptVariable() { former ? setenv(name, former->c_str(), 1) : unsetenv(name); }

private:
    const char* name;
    std::optional<std::string> former;
};

TEST_F(RegistryStoreFile, StandsInTheUsersConfigurationFolder)
{
    const KeptVariable given("QX_REGISTRY"), config("XDG_CONFIG_HOME"), home("HOME");
    unsetenv("QX_REGISTRY");
    setenv("HOME", (folder / "home").c_str(), 1);
    setenv("XDG_CONFIG_HOME", (folder / "config").c_str(), 1);
    EXPECT_EQ(Put(TEXT("K"), TEXT("v"), 1), ERROR_SUCCESS);
    EXPECT_TRUE(std::filesystem::exists(folder / "config/qxvantor/registry.sqlite"));
    HKEY machine = nullptr;
    ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, TEXT("K"), 0, nullptr, 0, KEY_WRITE, nullptr, &machine, nullptr),
              ERROR_SUCCESS);
    RegCloseKey(machine);
    EXPECT_TRUE(std::filesystem::exists(folder / "config/qxvantor/registry-machine.sqlite"));
    for (const char* const useless : {"", "not/absolute"}) {
        std::filesystem::remove_all(folder / "home");
        setenv("XDG_CONFIG_HOME", useless, 1);
        EXPECT_EQ(Put(TEXT("K"), TEXT("v"), 2), ERROR_SUCCESS);
        EXPECT_TRUE(std::filesystem::exists(folder / "home/.config/qxvantor/registry.sqlite")) << useless;
    }
}

TEST_F(RegistryStoreFile, SaysWhenItCannotBeWritten)
{
    setenv("QX_REGISTRY", "/proc/qx-no-such-folder", 1);
    EXPECT_EQ(Put(TEXT("K"), TEXT("v"), 1), ERROR_ACCESS_DENIED);
    setenv("QX_REGISTRY", folder.c_str(), 1);
    EXPECT_EQ(Put(TEXT("K"), TEXT("v"), 1), ERROR_SUCCESS);
}

}   // namespace
