// Windows that exist for their messages.
#include "tests/platform/wide.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

constexpr WCHAR kClass[] = TEXT("qxvantorTestMessages");

struct Seen {
    UINT message;
    WPARAM wParam;
};

LRESULT CALLBACK Record(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_NCCREATE)
        SetWindowLongPtrW(hwnd, GWLP_USERDATA,
                          reinterpret_cast<LONG_PTR>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams));
    if (const auto seen = reinterpret_cast<std::vector<Seen>*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA)))
        if (message == WM_CREATE || message == WM_DESTROY || message >= WM_APP)
            seen->push_back({message, wParam});
    return DefWindowProcW(hwnd, message, wParam, lParam);
}

class MessageWindow : public testing::Test {
protected:
    void SetUp() override
    {
        WNDCLASSEXW description = {};
        description.cbSize = sizeof description;
        description.lpfnWndProc = Record;
        description.hInstance = GetModuleHandleW(nullptr);
        description.lpszClassName = kClass;
        ASSERT_NE(RegisterClassExW(&description), 0);
        EXPECT_EQ(RegisterClassExW(&description), 0);
        EXPECT_EQ(GetLastError(), DWORD(ERROR_CLASS_ALREADY_EXISTS));
        hwnd = Make();
        ASSERT_NE(hwnd, nullptr);
    }
    void TearDown() override
    {
        if (IsWindow(hwnd)) {
            EXPECT_TRUE(DestroyWindow(hwnd));
        }
        EXPECT_TRUE(UnregisterClassW(kClass, GetModuleHandleW(nullptr)));
    }
    HWND Make()
    {
        return CreateWindowExW(0, kClass, nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, GetModuleHandleW(nullptr),
                               &seen);
    }
    void Pump()
    {
        MSG message;
        while (PeekMessageW(&message, hwnd, 0, 0, PM_REMOVE))
            DispatchMessageW(&message);
    }

    std::vector<Seen> seen;
    HWND hwnd = nullptr;
};

}   // namespace

TEST_F(MessageWindow, TakesPostedMessagesInTheirOrderFromAnyThread)
{
    std::thread([this] {
        for (WPARAM i = 0; i < 100; ++i)
            EXPECT_TRUE(PostMessageW(hwnd, WM_APP + 1, i, 0));
        MSG message;
        EXPECT_FALSE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) << "it waits for the window's thread";
    }).join();
    EXPECT_EQ(seen.size(), 1u) << "nothing is delivered before it is fetched";
    Pump();
    ASSERT_EQ(seen.size(), 101u);
    EXPECT_EQ(seen[0].message, UINT(WM_CREATE));
    for (WPARAM i = 0; i < 100; ++i)
        EXPECT_EQ(seen[i + 1].wParam, i);
}

TEST_F(MessageWindow, IsFilteredByNumberAndLeftWhereItIsWhenOnlyLookedAt)
{
    PostMessageW(hwnd, WM_APP + 1, 0, 0);
    PostMessageW(hwnd, WM_APP + 5, 0, 0);
    MSG message;
    ASSERT_TRUE(PeekMessageW(&message, hwnd, WM_APP + 4, WM_APP + 6, PM_NOREMOVE));
    EXPECT_EQ(message.message, UINT(WM_APP + 5));
    EXPECT_EQ(message.hwnd, hwnd);
    EXPECT_FALSE(PeekMessageW(&message, hwnd, WM_APP + 6, WM_APP + 9, PM_NOREMOVE));
    ASSERT_TRUE(PeekMessageW(&message, nullptr, WM_APP, WM_APP + 9, PM_REMOVE));
    EXPECT_EQ(message.message, UINT(WM_APP + 1));
}

TEST_F(MessageWindow, EndsByItsOwnThreadAndThenTakesNothing)
{
    std::thread([this] {
        EXPECT_FALSE(DestroyWindow(hwnd));
        EXPECT_EQ(GetLastError(), DWORD(ERROR_ACCESS_DENIED));
    }).join();
    EXPECT_FALSE(UnregisterClassW(kClass, GetModuleHandleW(nullptr)));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_CLASS_HAS_WINDOWS));
    PostMessageW(hwnd, WM_APP, 0, 0);
    ASSERT_TRUE(DestroyWindow(hwnd));
    Pump();
    EXPECT_EQ(seen.back().message, UINT(WM_DESTROY));
    EXPECT_FALSE(IsWindow(hwnd));
    EXPECT_FALSE(PostMessageW(hwnd, WM_APP, 0, 0));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_WINDOW_HANDLE));
    EXPECT_FALSE(IsWindow(nullptr));
}

TEST_F(MessageWindow, IsNotMadeOfAnUnknownClass)
{
    EXPECT_EQ(CreateWindowExW(0, TEXT("qxvantorNoSuchClass"), nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                              GetModuleHandleW(nullptr), nullptr),
              nullptr);
    const DWORD code = GetLastError();   // editions of the platform differ in which of the two it is
    EXPECT_TRUE(code == ERROR_CANNOT_FIND_WND_CLASS || code == ERROR_CLASS_DOES_NOT_EXIST) << code;
    EXPECT_FALSE(UnregisterClassW(TEXT("qxvantorNoSuchClass"), GetModuleHandleW(nullptr)));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_CLASS_DOES_NOT_EXIST));
}
