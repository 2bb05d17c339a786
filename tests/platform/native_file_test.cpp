// What Wine leaves to the system below it, and the layer does itself.
#include "platform/handle.h"
#include "tests/platform/wide.h"

#include <gtest/gtest.h>

namespace {

TEST(NativeFile, HoldsTheReadOnlyAttributeAgainstTheSuperuserToo)
{
    const TemporaryFolder folder;
    const Wide path = folder.File(TEXT("a"));
    const auto open = [&](DWORD disposition) {
        return Handle(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, disposition, 0, nullptr));
    };
    ASSERT_TRUE(open(CREATE_NEW));
    ASSERT_TRUE(SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY));
    for (const DWORD disposition : {OPEN_EXISTING, OPEN_ALWAYS, CREATE_ALWAYS, TRUNCATE_EXISTING}) {
        EXPECT_FALSE(open(disposition)) << disposition;
        EXPECT_EQ(GetLastError(), DWORD(ERROR_ACCESS_DENIED)) << disposition;
    }
    ASSERT_TRUE(SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL));
    EXPECT_TRUE(open(OPEN_EXISTING));
}

}   // namespace
