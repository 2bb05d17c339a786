#include "platform/com_ptr.h"
#include "tests/platform/wide.h"

#include <objbase.h>
#include <shlwapi.h>

#include <gtest/gtest.h>

#include <cstring>

namespace {

LARGE_INTEGER Distance(LONGLONG value)
{
    LARGE_INTEGER out;
    out.QuadPart = value;
    return out;
}

ULARGE_INTEGER Size(ULONGLONG value)
{
    ULARGE_INTEGER out;
    out.QuadPart = value;
    return out;
}

// What both kinds of stream do alike, on an empty one.
void WriteSeekAndRead(IStream* stream)
{
    ULONG done = 0;
    ASSERT_EQ(stream->Write("0123456789", 10, &done), S_OK);
    EXPECT_EQ(done, 10u);
    ULARGE_INTEGER at;
    ASSERT_EQ(stream->Seek(Distance(-4), STREAM_SEEK_END, &at), S_OK);
    EXPECT_EQ(at.QuadPart, 6u);
    std::array<char, 16> out = {};
    EXPECT_TRUE(SUCCEEDED(stream->Read(out.data(), 16, &done)));   // short, and yet no failure
    EXPECT_EQ(std::string(out.data(), done), "6789");
    EXPECT_TRUE(FAILED(stream->Seek(Distance(-1), STREAM_SEEK_SET, nullptr)));
    ASSERT_EQ(stream->SetSize(Size(3)), S_OK);
    STATSTG stat;
    ASSERT_EQ(stream->Stat(&stat, STATFLAG_NONAME), S_OK);
    EXPECT_EQ(stat.cbSize.QuadPart, 3u);
    EXPECT_EQ(stat.pwcsName, nullptr);
    ASSERT_EQ(stream->Seek(Distance(0), STREAM_SEEK_SET, nullptr), S_OK);
    ASSERT_TRUE(SUCCEEDED(stream->Read(out.data(), 16, &done)));
    EXPECT_EQ(done, 3u);
    EXPECT_EQ(stream->Commit(STGC_DEFAULT), S_OK);
}

TEST(MemoryStream, WritesSeeksAndReads)
{
    ComPtr<IStream> stream;
    ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, stream.Out()), S_OK);
    WriteSeekAndRead(stream.Get());
    ComPtr<IUnknown> unknown;
    EXPECT_EQ(stream->QueryInterface(IID_ISequentialStream, reinterpret_cast<void**>(unknown.Out())), S_OK);
    EXPECT_EQ(stream->QueryInterface(GUID_NULL, reinterpret_cast<void**>(unknown.Out())), E_NOINTERFACE);
}

TEST(MemoryStream, SharesItsBlockWithItsOwnerAndItsClone)
{
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 5);
    std::memcpy(GlobalLock(block), "hello", 5);
    GlobalUnlock(block);
    {
        ComPtr<IStream> stream, clone;
        ASSERT_EQ(CreateStreamOnHGlobal(block, FALSE, stream.Out()), S_OK);
        HGLOBAL found = nullptr;
        ASSERT_EQ(GetHGlobalFromStream(stream.Get(), &found), S_OK);
        EXPECT_EQ(found, block);
        ASSERT_EQ(stream->Clone(clone.Out()), S_OK);
        std::array<char, 8> out = {};
        ULONG done = 0;
        ASSERT_EQ(stream->Write("J", 1, &done), S_OK);
        ASSERT_EQ(clone->Read(out.data(), 5, &done), S_OK);
        EXPECT_STREQ(out.data(), "Jello");
    }
    EXPECT_EQ(*static_cast<const char*>(GlobalLock(block)), 'J');   // the block outlives the stream
    GlobalUnlock(block);
    EXPECT_EQ(GlobalFree(block), nullptr);
}

TEST(FileStream, WritesSeeksAndReads)
{
    const TemporaryFolder folder;
    const Wide path = folder.File(TEXT("s"));
    {
        ComPtr<IStream> stream;
        ASSERT_EQ(SHCreateStreamOnFileEx(path.c_str(), STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_CREATE,
                                         FILE_ATTRIBUTE_NORMAL, TRUE, nullptr, stream.Out()),
                  S_OK);
        WriteSeekAndRead(stream.Get());
        HGLOBAL none = nullptr;
        EXPECT_TRUE(FAILED(GetHGlobalFromStream(stream.Get(), &none)));
    }
    ComPtr<IStream> stream, copy;
    ASSERT_EQ(SHCreateStreamOnFileEx(path.c_str(), STGM_READ, 0, FALSE, nullptr, stream.Out()), S_OK);
    ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, copy.Out()), S_OK);
    ULARGE_INTEGER read, written;
    ASSERT_EQ(stream->CopyTo(copy.Get(), Size(100), &read, &written), S_OK);
    EXPECT_EQ(read.QuadPart, 3u);
    EXPECT_EQ(written.QuadPart, 3u);
    ULONG done = 0;
    EXPECT_TRUE(FAILED(stream->Write("x", 1, &done)));
}

TEST(FileStream, RefusesAFileThatIsNotThere)
{
    const TemporaryFolder folder;
    ComPtr<IStream> stream;
    EXPECT_EQ(SHCreateStreamOnFileEx(folder.File(TEXT("s")).c_str(), STGM_READ, 0, FALSE, nullptr, stream.Out()),
              HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    EXPECT_FALSE(stream);
}

TEST(TaskMemory, GrowsAndGoes)
{
    char* text = static_cast<char*>(CoTaskMemAlloc(4));
    std::memcpy(text, "abc", 4);
    text = static_cast<char*>(CoTaskMemRealloc(text, 4000));
    EXPECT_STREQ(text, "abc");
    CoTaskMemFree(text);
    CoTaskMemFree(nullptr);
}

}   // namespace
