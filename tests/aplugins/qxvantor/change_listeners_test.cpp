#include "aplugins/qxvantor/change_listeners.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

constexpr WCHAR kClass[] = TEXT("qxvantorListenerTest");

class Listeners : public testing::Test {
protected:
    void SetUp() override
    {
        WNDCLASSEXW description = {};
        description.cbSize = sizeof description;
        description.lpfnWndProc = DefWindowProcW;
        description.hInstance = GetModuleHandleW(nullptr);
        description.lpszClassName = kClass;
        ASSERT_NE(RegisterClassExW(&description), 0);
        for (HWND& hwnd : windows)
            hwnd = CreateWindowExW(0, kClass, nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, GetModuleHandleW(nullptr),
                                   nullptr);
    }
    void TearDown() override
    {
        for (const HWND hwnd : windows)
            DestroyWindow(hwnd);
        EXPECT_TRUE(UnregisterClassW(kClass, GetModuleHandleW(nullptr)));
    }
    static std::vector<WPARAM> Heard(HWND hwnd)
    {
        std::vector<WPARAM> heard;
        MSG message;
        while (PeekMessageW(&message, hwnd, WM_COMMAND, WM_COMMAND, PM_REMOVE))
            heard.push_back(message.wParam);
        return heard;
    }

    ChangeListeners listeners;
    HWND windows[3] = {};
};

}   // namespace

TEST_F(Listeners, HearTheChangeUnderTheirOwnId)
{
    EXPECT_EQ(listeners.Register(windows[0], 7), S_OK);
    EXPECT_EQ(listeners.Register(windows[1], 8), S_OK);
    listeners.Post(100);
    EXPECT_EQ(Heard(windows[0]), std::vector<WPARAM>{(100 << 16) + 7});
    EXPECT_EQ(Heard(windows[1]), std::vector<WPARAM>{(100 << 16) + 8});
}

TEST_F(Listeners, AreTwoAtMost)
{
    EXPECT_EQ(listeners.Register(windows[0], 1), S_OK);
    EXPECT_EQ(listeners.Register(windows[1], 2), S_OK);
    EXPECT_EQ(listeners.Register(windows[2], 3), E_OUTOFMEMORY);
    EXPECT_EQ(listeners.Register(windows[2], 0), S_OK) << "a window that does not listen may stop listening";
    EXPECT_EQ(listeners.Register(windows[0], 4), S_OK) << "its own place, under another id";
    listeners.Post(1);
    EXPECT_EQ(Heard(windows[0]), std::vector<WPARAM>{(1 << 16) + 4});
    EXPECT_TRUE(Heard(windows[2]).empty());
    EXPECT_EQ(listeners.Register(windows[1], 0), S_OK);
    EXPECT_EQ(listeners.Register(windows[2], 3), S_OK);
    listeners.Post(0);
    EXPECT_TRUE(Heard(windows[1]).size() == 1) << "what was posted before it left";
    EXPECT_EQ(Heard(windows[2]), std::vector<WPARAM>{3});
}

TEST_F(Listeners, LoseTheirPlaceWhenTheyDie)
{
    listeners.Register(windows[0], 1);
    listeners.Register(windows[1], 2);
    DestroyWindow(windows[0]);
    listeners.Post(0);
    EXPECT_EQ(listeners.Register(windows[2], 3), S_OK);
}
