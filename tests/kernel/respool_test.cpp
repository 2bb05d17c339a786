#include "kernel/lang_resource.h"
#include "tests/kernel/wide.h"

#include <gtest/gtest.h>

#include <cstring>
#include <variant>

namespace {

using Id = std::variant<WORD, std::string>;
using Image = std::vector<BYTE>;

template <typename T>
void Add(Image& image, T value)
{
    BYTE bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    image.insert(image.end(), bytes, bytes + sizeof value);
}

void Align(Image& image)
{
    image.resize((image.size() + 3) & ~size_t(3));
}

void AddId(Image& image, const Id& id)
{
    if (const WORD* const number = std::get_if<WORD>(&id)) {
        Add(image, WORD(0xFFFF));
        Add(image, *number);
        return;
    }
    for (const char c : std::get<std::string>(id))
        Add(image, WORD(c));
    Add(image, WORD(0));
}

void AddEntry(Image& image, const Id& type, const Id& name, WORD language, const std::string& data)
{
    Align(image);
    const size_t begin = image.size();
    Add(image, DWORD(data.size()));
    Add(image, DWORD(0));
    AddId(image, type);
    AddId(image, name);
    Align(image);
    for (const DWORD word : {DWORD(0), DWORD(language) << 16, DWORD(0), DWORD(0)})
        Add(image, word);
    const auto headerSize = DWORD(image.size() - begin);
    std::memcpy(image.data() + begin + 4, &headerSize, sizeof headerSize);
    image.insert(image.end(), data.begin(), data.end());
}

Image TestImage()
{
    Image image;
    AddEntry(image, WORD(0), WORD(0), 0, "");
    AddEntry(image, WORD(5), WORD(100), 0x0409, "english");
    AddEntry(image, WORD(5), WORD(100), 0x0807, "swiss");
    AddEntry(image, WORD(5), "NAMED", 0x0411, "named");
    AddEntry(image, "PNG", WORD(100), 0x040C, "picture");
    return image;
}

struct Found {
    std::string data;
    DWORD language;
};

Found Find(const Image& image, const WCHAR* name, const WCHAR* type, DWORD lcid)
{
    const _QXRESPOOL pool = {DWORD(image.size()), image.data()};
    DWORD cb = 9, language = 9;
    const void* const data = QxFindResourceInResPool(&pool, &cb, name, type, lcid, &language);
    return data ? Found{{static_cast<const char*>(data), cb}, language} : Found{"none", cb + language};
}

TEST(ResPool, FindsByTypeNameAndLanguage)
{
    const Image image = TestImage();
    const WCHAR *const dialog = MAKEINTRESOURCEW(5), *const hundred = MAKEINTRESOURCEW(100);
    EXPECT_EQ(Find(image, hundred, dialog, 0x0409).data, "english");
    EXPECT_EQ(Find(image, hundred, dialog, 0x0407).data, "swiss");
    EXPECT_EQ(Find(image, hundred, dialog, 0x0407).language, 0x0407u);
    EXPECT_EQ(Find(image, hundred, dialog, 0x0415).data, "english");
    EXPECT_EQ(Find(image, hundred, dialog, 0).data, "english");
    EXPECT_EQ(Find(image, TEXT("Named"), dialog, 0x0409).data, "named");
    EXPECT_EQ(Find(image, hundred, TEXT("PNG"), 0x0409).data, "picture");
    EXPECT_EQ(Find(image, TEXT("100"), dialog, 0).data, "none");
    EXPECT_EQ(Find(image, hundred, MAKEINTRESOURCEW(6), 0).data, "none");
    EXPECT_EQ(Find(image, hundred, MAKEINTRESOURCEW(6), 0).language, 0u);
    const _QXRESPOOL pool = {DWORD(image.size()), image.data()};
    EXPECT_NE(QxFindDialogTemplateInResPool(&pool, nullptr, hundred, 0, nullptr), nullptr);
    EXPECT_EQ(QxFindDialogTemplateInResPool(nullptr, nullptr, hundred, 0, nullptr), nullptr);
}

TEST(ResPool, TheKernelsLanguageIsTheNextBest)
{
    ASSERT_EQ(OpenKernelLanguage(GetModuleHandleW(nullptr)), S_OK);
    QxLang_UpdateKernelLCID(KernelLanguage(), 0x0C07, FALSE);
    const Image image = TestImage();
    EXPECT_EQ(Find(image, MAKEINTRESOURCEW(100), MAKEINTRESOURCEW(5), 0).data, "swiss");
    EXPECT_EQ(Find(image, MAKEINTRESOURCEW(100), MAKEINTRESOURCEW(5), 0x0415).data, "swiss");
    QxLang_UpdateKernelLCID(KernelLanguage(), 0, FALSE);
    CloseKernelLanguage();
}

TEST(ResPool, EndsAtDamage)
{
    const Image whole = TestImage();
    for (size_t size = 0; size <= whole.size(); ++size) {
        const Image cut(whole.begin(), whole.begin() + ptrdiff_t(size));
        const std::string picture = Find(cut, MAKEINTRESOURCEW(100), TEXT("PNG"), 0).data;
        EXPECT_EQ(picture, size == whole.size() ? "picture" : "none") << size;
    }
    for (const DWORD hostile : {0u, 12u, 0x7FFFFFFFu, 0xFFFFFFF0u, 0xFFFFFFFFu})
        for (const size_t field : {size_t(0), size_t(4), size_t(32), size_t(36)}) {
            Image image = whole;
            std::memcpy(image.data() + field, &hostile, sizeof hostile);
            EXPECT_NE(Find(image, MAKEINTRESOURCEW(100), MAKEINTRESOURCEW(5), 0).data, "swiss");
        }
}

}   // namespace
