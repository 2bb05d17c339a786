#include "platform/handle.h"
#include "tests/platform/wide.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

WCHAR* Id(int number)
{
    return MAKEINTRESOURCEW(number);
}

std::string Content(HMODULE module, HRSRC resource)
{
    if (!resource)
        return "error " + std::to_string(GetLastError());
    const char* const data = static_cast<const char*>(LockResource(LoadResource(module, resource)));
    return std::string(data, SizeofResource(module, resource));
}

std::string Find(const WCHAR* type, const WCHAR* name, WORD language)
{
    return Content(nullptr, FindResourceExW(nullptr, type, name, language));
}

TEST(Resources, AreFoundByTypeNameAndLanguage)
{
    const struct {
        const WCHAR *type, *name;
        WORD language;
        const char* expected;
    } kCases[] = {
        {RT_RCDATA, Id(7), 0x0409, "seven"},
        {RT_RCDATA, TEXT("#7"), 0x0409, "seven"},
        {RT_RCDATA, TEXT("PLAIN"), 0x0409, "plain"},
        {RT_RCDATA, TEXT("plain"), 0x0409, "plain"},   // case does not count
        {TEXT("custom"), Id(12), 0x0409, "custom"},
        {RT_RCDATA, Id(9), 0x0409, "nine en"},
        {RT_RCDATA, Id(9), 0x0407, "nine de"},
        {RT_RCDATA, Id(9), 0x0C0C, "nine fr"},    // no Canadian French, but French at large
        {RT_RCDATA, Id(11), 0x0411, "neutral"},   // no Japanese, but one for all
        {RT_RCDATA, Id(7), 0x0407, "error 1815"},
        {RT_RCDATA, Id(8), 0x0409, "error 1814"},
        {TEXT("nothing"), Id(7), 0x0409, "error 1813"},
    };
    for (const auto& c : kCases)
        EXPECT_EQ(Find(c.type, c.name, c.language), c.expected);
    const auto plain = [](int id) { return Content(nullptr, FindResourceW(nullptr, Id(id), RT_RCDATA)); };
    EXPECT_EQ(plain(7), "seven");
    EXPECT_EQ(plain(13), "german only");   // any language, when none is asked for
}

TEST(Resources, AreListed)
{
    std::vector<WORD> languages;
    EXPECT_TRUE(EnumResourceLanguagesW(
        nullptr, RT_RCDATA, Id(9),
        [](HMODULE, const WCHAR*, const WCHAR*, WORD language, LONG_PTR out) -> BOOL {
            reinterpret_cast<std::vector<WORD>*>(out)->push_back(language);
            return TRUE;
        },
        LONG_PTR(&languages)));
    EXPECT_EQ(languages, (std::vector<WORD>{0x000C, 0x0407, 0x0409}));
    std::vector<std::string> names;
    EXPECT_TRUE(EnumResourceNamesW(
        nullptr, RT_RCDATA,
        [](HMODULE, const WCHAR*, WCHAR* name, LONG_PTR out) -> BOOL {
            const auto value = reinterpret_cast<ULONG_PTR>(name);
            auto& list = *reinterpret_cast<std::vector<std::string>*>(out);
            list.push_back(IS_INTRESOURCE(value) ? std::to_string(value) : ToAscii(name));
            return TRUE;
        },
        LONG_PTR(&names)));
    EXPECT_EQ(names, (std::vector<std::string>{"PLAIN", "7", "9", "11", "13"}));
    int types = 0;
    const auto count = [](HMODULE, WCHAR*, LONG_PTR out) -> BOOL { return ++*reinterpret_cast<int*>(out) < 2; };
    EXPECT_FALSE(EnumResourceTypesW(nullptr, count, LONG_PTR(&types)));   // ended by the caller
    EXPECT_EQ(types, 2);
}

TEST(Resources, GiveStrings)
{
    std::array<WCHAR, 32> out;
    const HINSTANCE module = GetModuleHandleW(nullptr);
    EXPECT_EQ(LoadStringW(module, 15, out.data(), 32), 7);
    EXPECT_EQ(ToAscii(out.data()), "fifteen");
    EXPECT_EQ(LoadStringW(module, 16, out.data(), 4), 3);   // cut
    EXPECT_EQ(ToAscii(out.data()), "six");
    EXPECT_EQ(LoadStringW(module, 40, out.data(), 32), 8);
    EXPECT_EQ(LoadStringW(module, 3, out.data(), 32), 0);
    EXPECT_EQ(LoadStringW(module, 30000, out.data(), 32), 0);
    const WCHAR* inPlace = nullptr;
    EXPECT_EQ(LoadStringW(module, 15, reinterpret_cast<WCHAR*>(&inPlace), 0), 7);
    EXPECT_EQ(ToAscii(Wide(inPlace, 7)), "fifteen");
}

Wide ProgramPath()
{
    std::array<WCHAR, 1024> path;
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), 1024);
    return Wide(path.data(), length);
}

Wide LanguageModulePath()
{
    const Wide path = ProgramPath();
    const size_t folder = path.find_last_of(TEXT("/\\"));
    return path.substr(0, folder + 1) + TEXT("test_platform.LNG");
}

TEST(Modules, TellTheirPathAndCutIt)
{
    const Wide path = ProgramPath();
    ASSERT_GT(path.size(), 10u);
    EXPECT_NE(GetFileAttributesW(path.c_str()), DWORD(INVALID_FILE_ATTRIBUTES));
    std::array<WCHAR, 5> cut;
    EXPECT_EQ(GetModuleFileNameW(GetModuleHandleW(nullptr), cut.data(), 5), 5u);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INSUFFICIENT_BUFFER));
    EXPECT_EQ(Wide(cut.data(), 4), path.substr(0, 4));
    HMODULE own = nullptr;
    EXPECT_TRUE(
        GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           reinterpret_cast<const WCHAR*>(&ProgramPath), &own));
    EXPECT_EQ(own, GetModuleHandleW(nullptr));
    EXPECT_EQ(GetModuleHandleW(TEXT("no such module")), nullptr);
}

TEST(Modules, OfALanguageHoldResourcesAlone)
{
    const HMODULE module = LoadLibraryExW(LanguageModulePath().c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(Content(module, FindResourceExW(module, RT_RCDATA, Id(21), 0x0407)), "Modul");
    EXPECT_EQ(Content(module, FindResourceExW(module, RT_RCDATA, Id(22), 0x0407)), "error 1814");
    std::array<WCHAR, 32> out;
    EXPECT_EQ(LoadStringW(module, 1, out.data(), 32), 4);
    EXPECT_TRUE(FreeLibrary(module));
}

TEST(Modules, AreRefusedWhenMissingOrDamaged)
{
    const TemporaryFolder folder;
    const Wide path = folder.File(TEXT("bad.LNG"));
    EXPECT_EQ(LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE), nullptr);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_FILE_NOT_FOUND));
    {
        const Handle file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
        DWORD done = 0;
        WriteFile(file.Get(), "this is no module at all, whatever its name may say", 50, &done, nullptr);
    }
    EXPECT_EQ(LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE), nullptr);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_BAD_EXE_FORMAT));
    EXPECT_EQ(LoadLibraryExW(path.c_str(), nullptr, 0), nullptr);
    EXPECT_EQ(GetProcAddress(GetModuleHandleW(nullptr), "no such procedure"), nullptr);
}

TEST(Modules, MayRefuseToBeLoaded)
{
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_EQ(LoadLibraryExW(TEXT(QX_REFUSING_MODULE), nullptr, 0), nullptr);
        EXPECT_EQ(GetLastError(), DWORD(ERROR_DLL_INIT_FAILED));
        EXPECT_EQ(GetModuleHandleW(TEXT(QX_REFUSING_MODULE)), nullptr);
    }
}

}   // namespace
