#include "quorda/rtl/stream.h"
#include "rtl_test_support.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>

namespace quorda {
namespace {

using testing_support::MessageOf;

std::string TempPath(const std::string& name) {
    return ::testing::TempDir() + "quorda_stream_" + name;
}

TEST(MemoryStream, MemoryAndFileStreams) {
    TMemoryStream stream;
    stream.WriteBuffer("abcdef", 6);
    EXPECT_EQ(stream.Seek(-100, soCurrent), 0); // clamped at the start
    EXPECT_EQ(stream.Seek(10, soBeginning), 10);
    char buffer[4];
    EXPECT_EQ(stream.Read(buffer, 4), 0); // nothing past the end
    stream.WriteBuffer("Z", 1);
    EXPECT_EQ(stream.DataString(), std::string("abcdef\0\0\0\0Z", 11));
    stream.SetPosition(3);
    stream.Truncate();
    EXPECT_EQ(stream.DataString(), "abc");
    EXPECT_THROW(stream.SetSize(-1), EStreamError);
    // CopyFrom and LoadFromStream take a part or the whole source.
    TStringStream source("0123456789");
    TMemoryStream target;
    source.SetPosition(7);
    EXPECT_EQ(target.CopyFrom(source, 0), 10); // 0 means all of it, from the start
    EXPECT_EQ(target.DataString(), "0123456789");
    source.SetPosition(2);
    TMemoryStream part;
    EXPECT_EQ(part.CopyFrom(source, 3), 3);
    EXPECT_EQ(part.DataString(), "234");
    EXPECT_EQ(source.Position(), 5);
    EXPECT_THROW(part.CopyFrom(source, 6), EReadError);
    source.SetPosition(5);
    EXPECT_EQ(source.ReadString(10), "56789");
    // Loading replaces the whole content, from the start of the source, and rewinds.
    TStringStream shorter("xy");
    shorter.SetPosition(1);
    part.LoadFromStream(shorter);
    EXPECT_EQ(part.DataString(), "xy");
    EXPECT_EQ(part.Position(), 0);
    const std::string path = TempPath("file.bin");
    {
        TFileStream file(path, fmCreate);
        file.WriteBuffer("hello world", 11);
        EXPECT_EQ(file.Size(), 11);
        file.SetSize(5);
        EXPECT_EQ(file.Position(), 5);
        file.WriteDWord(0xAABBCCDD);
    }
    {
        TFileStream file(path, fmOpenRead | fmShareDenyNone);
        EXPECT_EQ(file.Size(), 9);
        char head[5];
        file.ReadBuffer(head, 5);
        EXPECT_EQ(std::string(head, 5), "hello");
        EXPECT_EQ(file.ReadDWord(), 0xAABBCCDDu);
        EXPECT_THROW(file.ReadByte(), EReadError);
        // A read-only file refuses writes with the stream's write error.
        file.SetPosition(0);
        EXPECT_THROW(file.WriteBuffer("x", 1), EWriteError);
    }
    {
        TFileStream file(path, fmOpenReadWrite);
        file.Seek(0, soEnd);
        file.WriteBuffer("!", 1);
        EXPECT_EQ(file.Size(), 10);
    }
    // fmCreate truncates an existing file.
    EXPECT_EQ(TFileStream(path, fmCreate).Size(), 0);
    std::remove(path.c_str());
    // Open failures carry the file name and the system's reason.
    const std::string missing = TempPath("does_not_exist.bin");
    std::remove(missing.c_str());
    EXPECT_EQ(MessageOf<EFOpenError>([&] { TFileStream file(missing, fmOpenRead); }),
              "Cannot open file \"" + missing + "\": No such file or directory");
    const std::string inMissingDir = TempPath("no_dir/x.bin");
    EXPECT_EQ(MessageOf<EFCreateError>([&] { TFileStream file(inMissingDir, fmCreate); }),
              "Cannot create file \"" + inMissingDir + "\": No such file or directory");
    // A directory is not a file to stream from.
    EXPECT_THROW(TFileStream(::testing::TempDir(), fmOpenRead), EFOpenError);
    EXPECT_THROW(TFileStream(missing, fmOpenReadWrite), EStreamError);
}

} // namespace
} // namespace quorda
