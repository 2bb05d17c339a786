#include "kernel/international.h"
#include "kernel/lang.h"
#include "kernel/lang/texts.h"
#include "kernel/lang_access.h"
#include "kernel/lang_resource.h"
#include "kernel/list_memory.h"
#include "kernel/result.h"
#include "tests/kernel/wide.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <memory>
#include <thread>

namespace {

struct CloseLanguage {
    void operator()(HQXLANG lang) const { QxLang_Close(lang); }
};
using LangPtr = std::unique_ptr<tQXLANG, CloseLanguage>;

LangPtr OpenLanguage(DWORD lcid, DWORD cchTemp = 0)
{
    HQXLANG lang = nullptr;
    EXPECT_EQ(QxLang_Open(&lang, GetModuleHandleW(nullptr), lcid, cchTemp), S_OK);
    return LangPtr(lang);
}

class LangTest : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(CreateTokenTable(), S_OK);
        ASSERT_EQ(OpenKernelLanguage(GetModuleHandleW(nullptr)), S_OK);
    }
    void TearDown() override
    {
        QxLang_UpdateKernelLCID(KernelLanguage(), 0, FALSE);
        CloseKernelLanguage();
        DestroyTokenTable();
    }
    // A handle with its resources in the program itself, since the language module beside it has French alone.
    LangPtr OpenWithoutModule(DWORD lcid)
    {
        LangPtr lang = OpenLanguage(lcid);
        FreeLibrary(lang->hResModule);
        lang->hResModule = lang->hInstance;
        QxLang_UpdateKernelLCID(lang.get(), lcid, FALSE);
        return lang;
    }
};

std::string ReadFileText(const WCHAR* path)
{
    const HANDLE file = CreateFileW(path, GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    std::array<char, 256> bytes;
    DWORD read = 0;
    if (file == INVALID_HANDLE_VALUE || !ReadFile(file, bytes.data(), DWORD(bytes.size()), &read, nullptr))
        return "unreadable";
    CloseHandle(file);
    return {bytes.data(), read};
}

void WriteFileText(const WCHAR* path, const std::string& bytes)
{
    const HANDLE file = CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(WriteFile(file, bytes.data(), DWORD(bytes.size()), &written, nullptr));
    CloseHandle(file);
}

Wide TempFile(const char* name)
{
    WCHAR folder[512];
    GetTempPathW(512, folder);
    return folder + Widen(name) + Widen(std::to_string(GetCurrentProcessId()));
}

const std::array<WCHAR, 3> kSlotTexts[QXLANG_SLOTS] = {
    {'0', '1'}, {'0', '2'}, {'0', '3'}, {'0', '4'}, {'0', '5'}, {'0', '6'}, {'0', '7'}, {'0', '8'}, {'0', '9'},
    {'1', '0'}, {'1', '1'}, {'1', '2'}, {'1', '3'}, {'1', '4'}, {'1', '5'}, {'1', '6'}, {'1', '7'}, {'1', '8'}};

QXLANGENTRY EntryOfSlots()
{
    QXLANGENTRY entry = {QXLANG_MARK, QXLANG_SLOTS, {}, 0};
    for (size_t i = 0; i < QXLANG_SLOTS; ++i)
        entry.apszText[i] = kSlotTexts[i].data();
    return entry;
}

const WCHAR* ResourceCell(UINT_PTR id)
{
    return reinterpret_cast<const WCHAR*>(id);
}

TEST_F(LangTest, ConditionsLanguagesToWhatTheTablesCarry)
{
    static constexpr struct {
        DWORD lcid, conditioned;
    } kCases[] = {
        {0x0404, 0x0404}, {0x0804, 0x0804}, {0x0C04, 0x0404}, {0x1004, 0x0804}, {0x1404, 0x0404}, {0x0004, 0x0804},
        {0x0416, 0x0416}, {0x0816, 0x0816}, {0x0807, 0x0407}, {0x0C07, 0x0407}, {0x0809, 0x0409}, {0x0409, 0x0409},
        {0x0007, 0x0407}, {0x080A, 0x040A}, {0x041E, 0x041E}, {0x0814, 0x0414},
    };
    for (const auto& c : kCases)
        EXPECT_EQ(QxLang_GetConditionedLCID(c.lcid), c.conditioned) << std::hex << c.lcid;
}

TEST_F(LangTest, EveryLanguageHasItsSlot)
{
    static constexpr struct {
        DWORD lcid;
        const char* slot;
    } kCases[] = {
        {0x0409, "01"}, {0x0809, "01"}, {0x0411, "02"}, {0x0407, "03"}, {0x0807, "03"}, {0x040A, "04"},
        {0x0C0A, "04"}, {0x040C, "05"}, {0x0804, "06"}, {0x1004, "06"}, {0x0404, "07"}, {0x0C04, "07"},
        {0x0406, "08"}, {0x040B, "09"}, {0x0410, "10"}, {0x0412, "11"}, {0x0413, "12"}, {0x0414, "13"},
        {0x0416, "14"}, {0x0816, "15"}, {0x0419, "16"}, {0x041D, "17"}, {0x0415, "18"}, {0x041E, "01"},
    };
    const QXLANGENTRY entry = EntryOfSlots();
    for (const auto& c : kCases)
        EXPECT_EQ(Narrow(QxGetString(OpenLanguage(c.lcid).get(), entry)), c.slot) << std::hex << c.lcid;
    QXLANGENTRY two = entry;
    two.nSlots = 2;
    EXPECT_EQ(Narrow(QxGetString(OpenLanguage(0x0415).get(), two)), "02");
}

TEST_F(LangTest, TheTableSpeaksEnglishWhereATranslationIsMissing)
{
    const LangPtr polish = OpenLanguage(0x0415);
    EXPECT_EQ(Narrow(QxGetString(polish.get(), qxtext_Error_8004E03C)), "Buffer to small.");
    EXPECT_EQ(Narrow(QxGetString(nullptr, qxtext_Context_12)), "An error occurred while recording.");
    EXPECT_EQ(qxtext_MsgBox_Yes.wMark, QXLANG_MARK);
    EXPECT_EQ(qxtext_MsgBox_Yes.nSlots, QXLANG_SLOTS);
    WCHAR text[64];
    EXPECT_EQ(QxLoadString(polish.get(), qxtext_MsgBox_Yes, text, 64), 4);
    EXPECT_EQ(QxLoadString(polish.get(), qxtext_MsgBox_Yes, text, 3), 2);
    EXPECT_EQ(Narrow(text), "&Y");
}

// Texts that come from resources live as long as the process, as do the entries that name them.
TEST_F(LangTest, ACellMayNameAResource)
{
    static QXLANGENTRY entry = EntryOfSlots(), missing = EntryOfSlots();
    entry.apszText[0] = entry.apszText[4] = ResourceCell(102);
    entry.apszText[2] = ResourceCell(101);
    const LangPtr german = OpenWithoutModule(0x0407);
    const WCHAR* const text = QxGetString(german.get(), entry);
    EXPECT_EQ(Narrow(text), "Markiert");
    EXPECT_EQ(entry.apszText[2], text);
    EXPECT_EQ(Narrow(QxGetString(OpenWithoutModule(0x040C).get(), entry)), "Only English");
    EXPECT_EQ(entry.apszText[4], entry.apszText[0]);
    missing.apszText[0] = missing.apszText[17] = ResourceCell(999);
    EXPECT_EQ(Narrow(QxGetString(OpenWithoutModule(0x0415).get(), missing)), "");
}

TEST_F(LangTest, TellsReferencesApart)
{
    const LangPtr lang = OpenWithoutModule(0x0409);
    const WCHAR text[] = TEXT("abc");
    const char* const odd = reinterpret_cast<const char*>(text) + 1;
    EXPECT_EQ(QxGetStringSmart(lang.get(), nullptr), nullptr);
    EXPECT_EQ(Narrow(QxGetStringSmart(lang.get(), ResourceCell(100))), "File");
    EXPECT_EQ(QxGetStringSmart(lang.get(), text), text);
    EXPECT_EQ(QxGetStringSmart(lang.get(), odd), reinterpret_cast<const WCHAR*>(odd));
    EXPECT_EQ(Narrow(QxGetStringSmart(lang.get(), &qxtext_MsgBox_Ok)), "OK");
    EXPECT_TRUE(IsQXLANGSTRINGID(lang.get(), &qxtext_MsgBox_Ok));
    EXPECT_FALSE(IsQXLANGSTRINGID(lang.get(), text));
    EXPECT_FALSE(IsQXLANGSTRINGID(lang.get(), odd));
    EXPECT_FALSE(IsQXLANGSTRINGID(lang.get(), ResourceCell(0xFFFF)));
}

TEST_F(LangTest, ReadsResourceStringsByLanguage)
{
    static constexpr struct {
        DWORD lcid;
        UINT id;
        const char* text;
    } kCases[] = {
        {0x0409, 100, "File"},
        {0x0407, 100, "Datei"},
        {0x0807, 100, "Datei"},
        {0x0411, 100, "File"},
        {0x0407, 102, "Only English"},
        {0x0407, 101, "Markiert"},
        {0x0409, 101, "Marked"},
        {0x0409, 103, ""},
        {0x0409, 5000, ""},
        {0x0409, 7032, "Optimize for audio content"},
        {0x0409, 70000, ""},
        {0x0407, 2077, "1:   Unity     (Time*1, Pitch*1)"},
    };
    for (const auto& c : kCases) {
        const LangPtr lang = OpenWithoutModule(c.lcid);
        WCHAR text[64];
        EXPECT_EQ(size_t(QxLoadString(lang.get(), c.id, text, 64)), std::strlen(c.text));
        EXPECT_EQ(Narrow(text), c.text);
        EXPECT_EQ(Narrow(QxGetString(lang.get(), c.id)), c.text);
    }
    const LangPtr lang = OpenWithoutModule(0x0409);
    WCHAR text[3];
    EXPECT_EQ(QxLoadString(lang.get(), 101, text, 3), 2);
    EXPECT_EQ(Narrow(text), "Ma");
    EXPECT_EQ(Narrow(QxGetString(nullptr, 100)), "");
}

TEST_F(LangTest, UsesTheLanguageModuleBesideTheProgram)
{
    const LangPtr lang = OpenLanguage(0);
    ASSERT_NE(lang->hResModule, lang->hInstance);
    EXPECT_TRUE(QxLang_UpdateKernelLCID(lang.get(), 0x040C, FALSE));
    EXPECT_EQ(QxLang_InstFromLang(lang.get()), lang->hResModule);
    EXPECT_EQ(Narrow(QxGetString(lang.get(), 100)), "Fichier");
    EXPECT_EQ(QxSizeofResource(lang.get(), MAKEINTRESOURCEW(200), MAKEINTRESOURCEW(10)), 6u);
    EXPECT_EQ(QxFindResInstance(lang.get(), MAKEINTRESOURCEW(200), MAKEINTRESOURCEW(10)), lang->hResModule);
    EXPECT_EQ(QxFindResInstance(lang.get(), MAKEINTRESOURCEW(202), MAKEINTRESOURCEW(10)), lang->hInstance);
    EXPECT_TRUE(QxLang_UpdateKernelLCID(lang.get(), 0, FALSE));
    EXPECT_EQ(QxLang_GetLCID(lang.get()), 1033u);
    EXPECT_EQ(QxLang_InstFromLang(lang.get()), lang->hInstance);
    EXPECT_EQ(QxFindResInstance(lang.get(), MAKEINTRESOURCEW(200), MAKEINTRESOURCEW(10)), lang->hInstance);
}

TEST_F(LangTest, IgnoresADamagedLanguageModule)
{
    const Wide module = TempFile("qxmodule") + TEXT(".x"), beside = TempFile("qxmodule") + TEXT(".LNG");
    EXPECT_EQ(LoadLanguageFile(module), nullptr);
    EXPECT_EQ(LoadLanguageFile(Wide(5000, 'x')), nullptr);
    WCHAR good[512];
    ASSERT_GT(GetModuleFileNameW(nullptr, good, 512), 0u);
    for (const std::string& bytes : {std::string(), std::string("no module"), std::string(4096, '\x5A')}) {
        WriteFileText(beside.c_str(), bytes);
        EXPECT_EQ(LoadLanguageFile(module), nullptr) << bytes.size();
    }
    DeleteFileW(beside.c_str());
    if (const HMODULE found = LoadLanguageFile(good)) {
        EXPECT_NE(FindResourceExW(found, MAKEINTRESOURCEW(10), MAKEINTRESOURCEW(200), 0x040C), nullptr);
        FreeLibrary(found);
    } else {
        ADD_FAILURE() << "the good module is refused too";
    }
}

TEST_F(LangTest, ALanguageChangeDropsTheCache)
{
    const LangPtr lang = OpenWithoutModule(0x0407);
    const WCHAR* const german = QxGetString(lang.get(), 100);
    EXPECT_EQ(QxGetString(lang.get(), 100), german);
    QxGetString(lang.get(), 104);
    EXPECT_EQ(lang->pStringCache->nCount, 2);
    EXPECT_TRUE(QxLang_UpdateKernelLCID(lang.get(), 0x0407, FALSE));
    EXPECT_EQ(lang->pStringCache->nCount, 2);
    EXPECT_TRUE(QxLang_UpdateKernelLCID(lang.get(), 0x0809, FALSE));
    EXPECT_EQ(lang->pStringCache->nCount, 0);
    EXPECT_EQ(lang->iSlot, 0);
    EXPECT_EQ(Narrow(QxGetString(lang.get(), 104)), "Yes");
    EXPECT_EQ(QxLang_GetLCID(KernelLanguage()), 0x0809u);
    EXPECT_FALSE(QxLang_UpdateKernelLCID(nullptr, 0x0407, FALSE));
}

TEST_F(LangTest, ReplacesTheModuleOfBothHandles)
{
    const LangPtr lang = OpenWithoutModule(0x0407);
    const HMODULE kernelModule = KernelLanguage()->hResModule;
    EXPECT_TRUE(QxLang_ChangeLangInst(lang.get(), nullptr));
    EXPECT_EQ(KernelLanguage()->hResModule, kernelModule);
    EXPECT_TRUE(QxLang_ChangeLangInst(lang.get(), lang->hInstance));
    EXPECT_EQ(KernelLanguage()->hResModule, lang->hInstance);
    EXPECT_FALSE(QxLang_ChangeLangInst(nullptr, lang->hInstance));
    if (kernelModule != lang->hInstance)
        FreeLibrary(kernelModule);
}

TEST_F(LangTest, OpensOnce)
{
    LangPtr owner = OpenLanguage(0x0407);
    HQXLANG lang = owner.get();
    EXPECT_EQ(QxLang_Open(&lang, nullptr, 0x040C, 0), QX_S_ALREADY_OPEN);
    EXPECT_EQ(QxLang_GetLCID(lang), 0x0407u);
    QxLang_Close(nullptr);
}

TEST_F(LangTest, TheRingComesRound)
{
    static constexpr struct {
        DWORD asked, given;
    } kSizes[] = {{0, 8192}, {1, 2048}, {100, 2048}, {2048, 2048}, {2049, 2049}};
    for (const auto& c : kSizes)
        EXPECT_EQ(OpenLanguage(0, c.asked)->cchTempSize, c.given);
    const LangPtr lang = OpenLanguage(0, 2048);
    WCHAR* const first = QxGetTempStringBuffer(lang.get(), 9);
    EXPECT_EQ(QxGetTempStringBuffer(lang.get(), 500) - first, 10);
    WCHAR* const third = QxGetTempStringBuffer(lang.get(), 511);
    EXPECT_EQ(third - first, 512);
    EXPECT_EQ(QxGetTempStringBuffer(lang.get(), 1024) - first, 1024);
    EXPECT_EQ(QxGetTempStringBuffer(lang.get(), 4), first);
    EXPECT_EQ(QxGetTempStringBuffer(lang.get(), 1025), nullptr);
    *QxGetTempStringBuffer(lang.get(), 0) = 'x';
    EXPECT_EQ(QxGetTempStringBuffer(nullptr, 4), nullptr);
}

TEST_F(LangTest, ConvertsTextThroughTheRing)
{
    const LangPtr lang = OpenLanguage(0);
    EXPECT_STREQ(QxGetMultiByteFromPrintString(lang.get(), TEXT("plain")), "plain");
    EXPECT_EQ(Narrow(QxGetPrintFromMultiByteString(lang.get(), "plain")), "plain");
    EXPECT_STREQ(QxGetMultiByteFromPrintString(lang.get(), Wide(3000, 'x').c_str()), "");
    EXPECT_EQ(Narrow(QxGetPrintFromMultiByteString(nullptr, "plain")), "");
    const WCHAR text[] = TEXT("wide");
    EXPECT_EQ(QxGetWideFromPrintString(lang.get(), text), text);
    EXPECT_EQ(Narrow(QxGetPrintFromWideString(nullptr, text)), "");
}

TEST_F(LangTest, ServesTwoThreadsOnOneHandle)
{
    const LangPtr lang = OpenWithoutModule(0x0407);
    static QXLANGENTRY entry = EntryOfSlots();
    entry.apszText[2] = ResourceCell(104);
    const auto work = [&](UINT first) {
        for (UINT i = 0; i < 300; ++i) {
            const UINT id = 2028 + (first + i * 7) % 64;
            const std::string expected = Narrow(QxGetString(lang.get(), id));
            EXPECT_EQ(Narrow(QxGetString(lang.get(), id)), expected);
            EXPECT_EQ(Narrow(QxGetString(lang.get(), 100)), "Datei");
            EXPECT_EQ(Narrow(QxGetString(lang.get(), entry)), "Ja");
            EXPECT_NE(QxGetTempStringBuffer(lang.get(), 100), nullptr);
        }
    };
    std::thread a(work, 0), b(work, 31);
    a.join();
    b.join();
    EXPECT_EQ(lang->iSlot, 3);
    for (int32_t i = 1; i < lang->pStringCache->nCount; ++i) {
        DWORD* const* const items = reinterpret_cast<DWORD**>(lang->pStringCache->pItems);
        EXPECT_LT(*items[i - 1], *items[i]);
    }
}

TEST_F(LangTest, FindsAndLoadsResourcesByTheRule)
{
    const WCHAR *const data = MAKEINTRESOURCEW(10), *const none = MAKEINTRESOURCEW(11);
    const LangPtr german = OpenWithoutModule(0x0407), english = OpenWithoutModule(0x0409);
    german->bUseResModule = TRUE;
    EXPECT_EQ(QxSizeofResource(german.get(), MAKEINTRESOURCEW(200), data), 14u);
    EXPECT_EQ(
        std::memcmp(LockResource(QxLoadResource(german.get(), MAKEINTRESOURCEW(200), data)), "deutsche Bytes", 14), 0);
    EXPECT_EQ(std::memcmp(LockResource(QxLoadResourceCustom(english.get(), MAKEINTRESOURCEW(200), data)), "english", 7),
              0);
    EXPECT_EQ(QxLoadResource(english.get(), MAKEINTRESOURCEW(250), data), nullptr);
    EXPECT_EQ(QxSizeofResource(nullptr, MAKEINTRESOURCEW(200), data), 0u);
    const WCHAR* const types[] = {none, data};
    int32_t index = 7;
    EXPECT_NE(QxFindResourceMulti(german.get(), MAKEINTRESOURCEW(200), types, 2, &index), nullptr);
    EXPECT_EQ(index, 1);
    EXPECT_EQ(QxFindResourceMulti(german.get(), MAKEINTRESOURCEW(200), types, 1, &index), nullptr);
    EXPECT_EQ(index, -1);
}

TEST_F(LangTest, ListsTheLanguagesOfAVersion)
{
    const LangPtr lang = OpenWithoutModule(0x0409);
    WCHAR text[32];
    EXPECT_TRUE(QxEnumResourceLanguages(lang.get(), 1, text, 32));
    const std::string names = Narrow(text);
    EXPECT_TRUE(names == "DEU,ENU" || names == "ENU,DEU") << names;
    EXPECT_FALSE(QxEnumResourceLanguages(lang.get(), 2, text, 32));
    EXPECT_FALSE(QxEnumResourceLanguages(lang.get(), 1, text, 5));
}

TEST_F(LangTest, ExtractsAResourceToAFile)
{
    const LangPtr lang = OpenWithoutModule(0x0409);
    const WCHAR* const data = MAKEINTRESOURCEW(10);
    const Wide path = TempFile("qxextract");
    ASSERT_EQ(QxExtractResourceToFile(lang.get(), MAKEINTRESOURCEW(200), data, path.c_str()), S_OK);
    EXPECT_EQ(ReadFileText(path.c_str()), "english bytes");
    QxLang_UpdateKernelLCID(lang.get(), 0x0407, FALSE);
    ASSERT_EQ(QxExtractResourceToFile(lang.get(), MAKEINTRESOURCEW(202), data, path.c_str()), S_OK);
    EXPECT_EQ(ReadFileText(path.c_str()), "deutsch");
    EXPECT_EQ(QxExtractResourceToFile(lang.get(), MAKEINTRESOURCEW(203), data, path.c_str()), QX_E_NOT_FOUND);
    EXPECT_EQ(QxExtractResourceToFile(lang.get(), MAKEINTRESOURCEW(200), data, TempFile("no/such/folder").c_str()),
              QX_E_FILE_OPEN);
    EXPECT_EQ(ReadFileText(path.c_str()), "deutsch");
    DeleteFileW(path.c_str());
}

TEST_F(LangTest, TellsWhatALanguageNeeds)
{
    static constexpr struct {
        DWORD lcid;
        const char *llCC, *abbreviation;
        BOOL english, rtl, reversed;
    } kCases[] = {
        {0x0409, "", "ENU", 1, 0, 0},      {0x0809, "", "ENU", 1, 0, 0},      {0x0807, "de-DE", "DEU", 0, 0, 0},
        {0x0404, "zh-CN", "CHT", 0, 0, 0}, {0x0411, "ja-JP", "JPN", 0, 0, 1}, {0x0415, "pl-PL", "PLK", 0, 0, 0},
        {0x0401, "", "ARA", 0, 1, 0},      {0x040D, "", "HEB", 0, 1, 0},      {0x0419, "ru-RU", "RUS", 0, 0, 0},
    };
    for (const auto& c : kCases) {
        const LangPtr lang = OpenLanguage(c.lcid);
        WCHAR text[16];
        EXPECT_EQ(QxLang_GetLangllCC(lang.get(), text, 16), *c.llCC ? S_OK : S_FALSE);
        EXPECT_EQ(Narrow(text), c.llCC);
        EXPECT_TRUE(QxLang_GetLangAbbrev(lang.get(), text, 16));
        EXPECT_EQ(Narrow(text), c.abbreviation);
        EXPECT_EQ(QxLang_IsLCIDEnglish(c.lcid), c.english);
        EXPECT_EQ(QxLang_UseRTL(lang.get()), c.rtl);
        EXPECT_TRUE(QxLang_LocalizeUserName(lang.get(), TEXT("Ada"), TEXT("King"), text, 16));
        EXPECT_EQ(Narrow(text), c.reversed ? "King Ada" : "Ada King");
        EXPECT_FALSE(QxLang_LocalizeUserName(lang.get(), TEXT("Ada"), TEXT("King"), text, 5));
    }
    QxSetLangID(TEXT("DEU"));
    EXPECT_EQ(Narrow(QxGetLangID()), "DEU");
    QxSetLangID(TEXT(""));
    EXPECT_EQ(Narrow(QxGetLangID()), "ENU");
}

TEST_F(LangTest, MirrorsTheProcessForRightToLeft)
{
    const LangPtr lang = OpenLanguage(0);
    DWORD layout = 7;
    EXPECT_TRUE(QxLang_UpdateKernelLCID(lang.get(), 0x040D, FALSE));
    GetProcessDefaultLayout(&layout);
    EXPECT_EQ(layout, 1u);
    EXPECT_TRUE(QxLang_UpdateKernelLCID(lang.get(), 0x0407, FALSE));
    GetProcessDefaultLayout(&layout);
    EXPECT_EQ(layout, 0u);
    EXPECT_TRUE(QxLang_UpdateThreadLocale(lang.get()));
    EXPECT_EQ(GetThreadLocale() & 0xFFFF, 0x0407u);
    EXPECT_FALSE(QxLang_UpdateThreadLocale(nullptr));
    EXPECT_TRUE(QxLang_EnableProcessMirroring());
    GetProcessDefaultLayout(&layout);
    EXPECT_EQ(layout, 1u);
    EXPECT_TRUE(QxLang_DisableProcessMirroring());
    GetProcessDefaultLayout(&layout);
    EXPECT_EQ(layout, 0u);
}

TEST_F(LangTest, RemembersTheUsersChoice)
{
    const WCHAR* const application = TEXT("KernelTest");
    DWORD lcid = 7;
    EXPECT_FALSE(QxLang_LoadUserLCIDMetric(application, 0x01020000, &lcid, FALSE));
    EXPECT_EQ(lcid, 7u);
    EXPECT_TRUE(QxLang_SaveUserLCIDMetric(application, 0x01020000, 0x0407, FALSE));
    EXPECT_TRUE(QxLang_SaveUserLCIDMetric(application, 0x01020000, 0x1040C, TRUE));
    EXPECT_TRUE(QxLang_SaveUserLCIDMetricAppReg(application, 0x02030000, 0x0411, TEXT("KernelTestMaker")));
    EXPECT_TRUE(QxLang_LoadUserLCIDMetric(application, 0x01020000, &lcid, FALSE));
    EXPECT_EQ(lcid, 0x0407u);
    EXPECT_TRUE(QxLang_LoadUserLCIDMetric(application, 0, &lcid, FALSE));
    EXPECT_EQ(lcid, 0x040Cu);
    EXPECT_FALSE(QxLang_LoadUserLCIDMetric(application, 0x01030000, &lcid, FALSE));
    EXPECT_TRUE(QxLang_LoadUserLCIDMetricAppReg(application, 0x02030000, &lcid, TEXT("KernelTestMaker")));
    EXPECT_EQ(lcid, 0x0411u);
    HKEY key = nullptr;
    ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, TEXT("Software\\Ostrel\\KernelTest\\1.2\\Lang"), 0, KEY_READ | KEY_WRITE,
                            &key),
              ERROR_SUCCESS);
    const DWORD large = 0x70407;
    RegSetValueExW(key, TEXT("ULangID"), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&large), sizeof large);
    EXPECT_TRUE(QxLang_LoadUserLCIDMetric(application, 0x01020000, &lcid, FALSE));
    EXPECT_EQ(lcid, 0x0407u);
    RegSetValueExW(key, TEXT("ULangID"), 0, REG_SZ, reinterpret_cast<const BYTE*>(&large), sizeof large);
    EXPECT_FALSE(QxLang_LoadUserLCIDMetric(application, 0x01020000, &lcid, FALSE));
    RegCloseKey(key);
    for (const WCHAR* const path :
         {TEXT("Software\\Ostrel\\KernelTest\\1.2\\Lang"), TEXT("Software\\Ostrel\\KernelTest\\1.2"),
          TEXT("Software\\Ostrel\\KernelTest\\Lang"), TEXT("Software\\Ostrel\\KernelTest"),
          TEXT("Software\\KernelTestMaker\\KernelTest\\2.3\\Lang"), TEXT("Software\\KernelTestMaker\\KernelTest\\2.3"),
          TEXT("Software\\KernelTestMaker\\KernelTest"), TEXT("Software\\KernelTestMaker")})
        EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, path), ERROR_SUCCESS) << Narrow(path);
}

TEST_F(LangTest, AStringWithoutRoomInTheCacheIsEmptyAndComesLater)
{
    static int left;
    static ListMemory scarce = kPlatformListMemory;
    scarce.allocItem = [](HANDLE heap, DWORD flags, size_t cb) {
        return left-- > 0 ? kPlatformListMemory.allocItem(heap, flags, cb) : nullptr;
    };
    scarce.allocSlots = [](size_t cb) { return left-- > 0 ? kPlatformListMemory.allocSlots(cb) : nullptr; };
    const LangPtr lang = OpenWithoutModule(0x0407);
    tQXLIST* const cache = lang->pStringCache;
    for (UINT id = 2000; cache->nCount < cache->nAllocated && id < 3000; ++id)
        QxGetString(lang.get(), id);
    const int32_t full = cache->nCount;
    ASSERT_EQ(full, cache->nAllocated);   // so that one more takes an item and new slots
    for (const int granted : {0, 1}) {
        left = granted;
        g_pListMemory = &scarce;
        EXPECT_EQ(Narrow(QxGetString(lang.get(), 100)), "") << granted;
        g_pListMemory = &kPlatformListMemory;
        EXPECT_EQ(cache->nCount, full) << granted;
    }
    EXPECT_EQ(Narrow(QxGetString(lang.get(), 100)), "Datei");
}

TEST_F(LangTest, CopiesTheLocalesRecordAsFarAsItFits)
{
    QXINTERNATIONALS record = {};
    EXPECT_EQ(QxLang_GetInternationals(&record, sizeof record + 100), sizeof record);
    EXPECT_EQ(std::memcmp(&record, &Internationals(), sizeof record), 0);
    record.dwLanguage = 7;
    EXPECT_EQ(QxLang_GetInternationals(&record, offsetof(QXINTERNATIONALS, dwLanguage)),
              offsetof(QXINTERNATIONALS, dwLanguage));
    EXPECT_EQ(record.dwLanguage, 7u);
}

TEST_F(LangTest, ChoosesTheSureCodePageOfAWholeText)
{
    static const struct {
        std::vector<CodePageCandidate> candidates;
        DWORD chosen;
    } kCases[] = {
        {{}, 0},
        {{{1252, 100, 100}}, 1252},
        {{{1252, 100, 99}}, 0},
        {{{1252, 99, 100}}, 0},
        {{{932, 60, 100}, {65001, 100, 100}, {1252, 100, 20}}, 65001},
        {{{932, 60, 100}, {1252, 100, 80}}, 0},
    };
    for (const auto& c : kCases) {
        DWORD codePage = 7;
        EXPECT_EQ(ChooseCodePage(c.candidates, &codePage), c.chosen ? S_OK : QX_E_CODEPAGE_UNSURE) << c.chosen;
        EXPECT_EQ(codePage, c.chosen);
    }
}

TEST_F(LangTest, SeesDoubleByteCharacters)
{
    constexpr UINT kJapanese = 932, kWestern = 1252;
    EXPECT_TRUE(DetectDoubleByte(kJapanese, "a\x82\xA0", 3));
    EXPECT_FALSE(DetectDoubleByte(kJapanese, "ab\x82", 3));
    EXPECT_FALSE(DetectDoubleByte(kJapanese, "ab", 2));
    EXPECT_FALSE(DetectDoubleByte(kWestern, "a\x82\xA0", 3));
    EXPECT_FALSE(QxLang_DetectMultiByteCharacters("a", 1));
    DWORD codePage = 7;
    EXPECT_EQ(QxLang_DetectPossibleCodepage("", 0, &codePage), QX_E_CODEPAGE_UNSURE);
    EXPECT_EQ(codePage, 0u);
}

}   // namespace
