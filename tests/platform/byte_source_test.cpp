// Byte sources, the working trace store and the file helpers never read outside a file and
// never leave a half-written file behind.
#include "platform/byte_source.h"
#include "platform/files.h"
#include "platform/read_error.h"
#include "platform/trace_store.h"
#include "support/test_home.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <unistd.h>

using namespace kv;

TEST(ByteSources, ReadLittleAndBigEndianValuesAndZerosPastTheEnd) {
    MemoryByteSource m({0x01, 0x02, 0x03, 0x04, 0xFF});
    EXPECT_EQ(m.u16le(0), 0x0201);
    EXPECT_EQ(m.u16be(0), 0x0102);
    EXPECT_EQ(m.u32le(0), 0x04030201u);
    EXPECT_EQ(m.i32be(0), 0x01020304);
    EXPECT_EQ(m.i16le(3), int16_t(0xFF04));
    EXPECT_EQ(m.u16le(4), 0x00FF);     // half past the end
    EXPECT_EQ(m.u32le(100), 0u);       // wholly past the end
    EXPECT_EQ(m.u32le(~0ull - 2), 0u); // an offset that would wrap around
    EXPECT_EQ(m.text(3, 4), std::string("\x04\xFF\0\0", 4));
}

TEST(ByteSources, FileSourceMatchesMemorySourceAndMissingFileIsEmpty) {
    test::TempHome home(false);
    std::vector<uint8_t> bytes(1000);
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = uint8_t(i * 7);
    test::writeFile(home.file("x.bin"), bytes);
    FileByteSource f(home.file("x.bin"));
    MemoryByteSource m(bytes);
    ASSERT_TRUE(f.ok());
    EXPECT_EQ(f.size(), 1000u);
    for (uint64_t off : {0ull, 3ull, 996ull, 998ull, 5000ull}) {
        EXPECT_EQ(f.u32le(off), m.u32le(off)) << off;
        EXPECT_EQ(f.f32be(off), m.f32be(off)) << off;
    }
    FileByteSource missing(home.file("nope.bin"));
    EXPECT_FALSE(missing.ok());
    EXPECT_EQ(missing.size(), 0u);
    EXPECT_EQ(missing.u32le(0), 0u);
}

TEST(WorkingTraceStore, ReadsAtOneBasedPositionsWithZerosPastTheEnd) {
    test::TempHome home(false);
    const std::string path = home.file("temp.sp");
    TraceFileWriter w;
    w.open(path);
    w.write(1, std::vector<float>{1, 2, 3, 4});
    w.write(17, std::vector<float>{5, 6});
    EXPECT_EQ(w.length(), 24);
    w.close();

    std::vector<float> out(4, -1.0f);
    readTrace(path, 5, out);
    EXPECT_EQ(out, (std::vector<float>{2, 3, 4, 5}));
    readTrace(path, 21, out);
    EXPECT_EQ(out, (std::vector<float>{6, 0, 0, 0}));
    readTrace(home.file("missing.sp"), 1, out);
    EXPECT_EQ(out, (std::vector<float>{0, 0, 0, 0}));
    // No working file at all is how a read fails when no data set is loaded.
    EXPECT_THROW(readTrace("", 1, out), ReadError);
}

TEST(WorkingTraceStore, ATraceReadWithItsHeadIsItsTwoReads) {
    // One call for both parts must give what the two reads give: across the end of the file
    // (inside the head too, the file's length being no multiple of 4), over a hole, and at
    // positions between floats; on the disk and in memory.
    test::TempHome home(false);
    const std::vector<float> zeros(1 << 15, 0.0f);
    const auto check = [&](const std::string& path, int64_t length) {
        for (int64_t pos : {int64_t(1), int64_t(3), int64_t(7), length - 6, length - 2, length,
                            length + 5, int64_t(4 * zeros.size())})
            for (size_t n : {size_t(0), size_t(1), size_t(5), size_t(1000)}) {
                SCOPED_TRACE(testing::Message() << "position " << pos << " n " << n);
                float head = -1.0f, wantHead = -2.0f;
                std::vector<float> got(n + 1, -1.0f), want(n + 1, -2.0f);
                readTraceWithHead(path, pos, &head, got.data(), n);
                readTrace(path, pos, &wantHead, 1);
                readTrace(path, pos + 4, want.data(), n);
                EXPECT_EQ(std::memcmp(&head, &wantHead, 4), 0);
                EXPECT_EQ(std::memcmp(got.data(), want.data(), 4 * n), 0);
            }
    };
    const auto write = [&](const std::string& path) {
        TraceFileWriter w;
        w.open(path);
        std::vector<float> ramp(3000);
        for (size_t i = 0; i < ramp.size(); ++i)
            ramp[i] = float(i) + 0.5f;
        w.write(1, ramp);
        w.write(1 + 4 * int64_t(ramp.size()), zeros); // a hole
        w.write(1 + 4 * int64_t(ramp.size() + zeros.size()), ramp);
        w.writeBytes(1 + 8 * int64_t(ramp.size()) + 4 * int64_t(zeros.size()), "\x01\x02", 2);
        return w.length();
    };
    const std::string disk = home.file("temp.sp");
    check(disk, write(disk));
    useMemoryTraceStore(1 << 20);
    const std::string mem = home.file("memory.sp");
    check(mem, write(mem));
    useMemoryTraceStore(0);
    float head = 0.0f;
    EXPECT_THROW(readTraceWithHead("", 1, &head, &head, 0), ReadError);
    EXPECT_THROW(readTraceWithHead(disk, 0, &head, &head, 0), ReadError);
}

TEST(WorkingTraceStore, ZerosPastTheEndAreHolesOfTheSameLengthAndContent) {
    test::TempHome home(false);
    const std::string path = home.file("temp.sp");
    const std::vector<float> zeros(1 << 18, 0.0f), ones(4, 1.0f);
    {
        TraceFileWriter w;
        w.open(path);
        w.write(1, ones);
        w.write(17, zeros); // past the end: a hole
        w.write(17 + 4 * int64_t(zeros.size()), ones);
        w.write(33 + 4 * int64_t(zeros.size()), zeros); // the file ends in a hole
        EXPECT_EQ(w.length(), 32 + 8 * int64_t(zeros.size()));
    }
    EXPECT_EQ(fileSize(path), 32 + 8 * int64_t(zeros.size())) << "closing gives the full length";
    std::vector<float> out(6, -1.0f);
    readTrace(path, 9, out);
    EXPECT_EQ(out, (std::vector<float>{1, 1, 0, 0, 0, 0}));
    readTrace(path, 9 + 4 * int64_t(zeros.size()), out);
    EXPECT_EQ(out, (std::vector<float>{0, 0, 1, 1, 1, 1}));
    readTrace(path, 1 + 4 * (int64_t(zeros.size()) + 8), out);
    EXPECT_EQ(out, (std::vector<float>(6, 0.0f)));
    FileByteSource src(path);
    std::vector<uint8_t> bytes(1 << 20, 0xFF);
    EXPECT_EQ(src.read(16, bytes.data(), bytes.size()), bytes.size());
    EXPECT_TRUE(std::all_of(bytes.begin(), bytes.end(), [](uint8_t b) { return b == 0; }));

    // Zeros over what a file already holds are written: an export over an old file.
    TraceFileWriter again;
    again.open(path, true);
    again.write(1, std::vector<float>(4, 0.0f));
    again.close();
    readTrace(path, 1, out);
    EXPECT_EQ(out, (std::vector<float>(6, 0.0f)));
    EXPECT_EQ(fileSize(path), 32 + 8 * int64_t(zeros.size()));
}

TEST(FileHelpers, CompanionFilesAreFoundWithoutRegardToCase) {
    test::TempHome home(false);
    test::writeText(home.file("LINE01.RAD"), "x");
    EXPECT_EQ(findCompanion(home.file("LINE01.rad")), home.file("LINE01.RAD"));
    test::writeText(home.file("LINE01.rad"), "y");
    EXPECT_EQ(findCompanion(home.file("LINE01.rad")), home.file("LINE01.rad")); // exact wins
    EXPECT_EQ(findCompanion(home.file("other.rad")), home.file("other.rad"));
    EXPECT_EQ(withExtension("/a/b.c/LINE.rd3", "rad"), "/a/b.c/LINE.rad");
    EXPECT_EQ(withExtension("/a/b.c/LINE", "rad"), "/a/b.c/LINE.rad");
}

TEST(FileHelpers, AtomicWriteReplacesWholeAndLeavesNoTemporary) {
    test::TempHome home(false);
    const std::string p = home.file("SP.ini");
    test::writeText(p, "old");
    ASSERT_TRUE(writeFileAtomically(p, "new contents"));
    EXPECT_EQ(test::readText(p), "new contents");
    EXPECT_FALSE(fileExists(p + ".tmp"));
    EXPECT_FALSE(writeFileAtomically(home.file("no/such/dir/SP.ini"), "x"));
}

TEST(TraceStore, InMemoryItKeepsTheSameBytesAsOnDiskAndFailsLikeAFullDisk) {
    test::TempHome home(false);
    const std::string disk = home.file("temp.sp");
    auto writeBoth = [&](const std::string& path) {
        TraceFileWriter w;
        w.open(path);
        w.write(1, std::vector<float>{1, 2, 3});
        w.write(21, std::vector<float>{0, 0}); // zeros past the end
        w.writeBytes(5, "\x00\x00\x80\x40", 4);
        return w.length();
    };
    const int64_t onDisk = writeBoth(disk);
    useMemoryTraceStore(1000);
    const std::string mem = home.file("memory.sp");
    EXPECT_EQ(writeBoth(mem), onDisk);
    EXPECT_FALSE(fileExists(mem)) << "nothing reaches the disk";
    const auto& bytes = memoryTraceFile(mem);
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), test::readText(disk));
    std::vector<float> back(8, -1.0f);
    readTrace(mem, 1, back);
    EXPECT_EQ(back, (std::vector<float>{1, 4, 3, 0, 0, 0, 0, 0})) << "zeros past the end";

    TraceFileWriter big;
    big.open(mem, true);
    EXPECT_THROW(big.write(997, std::vector<float>{1, 2}), WriteError);
    KillWorkingFile(mem);
    EXPECT_TRUE(memoryTraceFile(mem).empty());
    useMemoryTraceStore(0);
    readTrace(disk, 1, back);
    EXPECT_EQ(back[1], 4.0f) << "back on the disk";
}

TEST(TraceStore, InMemoryAFileDeletedUnderItsWriterComesBackWithTheNextWrite) {
    useMemoryTraceStore(1000);
    const std::string mem = "/nowhere/temp.sp";
    TraceFileWriter w;
    w.open(mem);
    w.write(1, std::vector<float>{1, 2, 3, 4});
    KillWorkingFile(mem);
    EXPECT_TRUE(memoryTraceFile(mem).empty());
    w.write(5, std::vector<float>{7}); // a new file at the path, zeros before the write
    std::vector<float> back(3, -1.0f);
    readTrace(mem, 1, back);
    EXPECT_EQ(back, (std::vector<float>{0, 7, 0}));
    w.writeBytes(7, "\x01\x02\x03\x04", 4); // across the end: overwritten, then appended
    const auto& bytes = memoryTraceFile(mem);
    EXPECT_EQ(std::string(bytes.begin() + 4, bytes.end()), std::string("\0\0\x01\x02\x03\x04", 6));
    TraceFileWriter again;
    again.open(mem); // truncates
    EXPECT_TRUE(memoryTraceFile(mem).empty());
    useMemoryTraceStore(0);
}

TEST(TraceStore, AWorkingFileThatCannotBeMadeNamesItsPath) {
    test::TempHome home(false);
    TraceFileWriter w;
    try {
        w.open(home.file("no/such/folder/temp.sp"));
        FAIL() << "opened";
    } catch (const WriteError& e) {
        EXPECT_EQ(e.path, home.file("no/such/folder/temp.sp"));
        EXPECT_EQ(e.error, ENOENT);
    }
}

TEST(TraceStore, OnDiskWritesGatheredInABufferLandInTheOrderTheyWereMade) {
    // The writer gathers writes that follow one another and writes longer ones straight away;
    // whatever the mix, the file must hold what the same writes leave in memory, where each
    // lands at once. Traces of 4 KB cross the 1 MB buffer; a long write passes it; earlier
    // bytes are written over, inside the buffer and behind it; zeros at the end stay a hole.
    test::TempHome home(false);
    std::vector<std::pair<int64_t, std::vector<float>>> writes;
    const std::vector<float> trace(1024, 0.5f);
    for (int k = 0; k < 300; ++k)
        writes.push_back({1 + 4096 * int64_t(k), std::vector<float>(1024, float(k))});
    writes.push_back({1 + 4096 * 3, trace});                                   // behind the buffer
    writes.push_back({1 + 4096 * 299 + 8, {7, 8}});                            // inside it
    writes.push_back({1 + 4096 * 300, std::vector<float>(400000, 2)});         // longer than it
    writes.push_back({1 + 4096 * 2, trace});                                   // behind that
    writes.push_back({1 + 4096 * 301 + 1600000, std::vector<float>(1000, 0)}); // a hole
    auto writeAll = [&](const std::string& path) {
        TraceFileWriter w;
        w.open(path);
        for (const auto& [pos, data] : writes)
            w.write(pos, data);
        return w.length();
    };
    const std::string disk = home.file("temp.sp");
    const int64_t length = writeAll(disk);
    useMemoryTraceStore(size_t(8) << 20);
    const std::string mem = home.file("memory.sp");
    EXPECT_EQ(writeAll(mem), length);
    const auto& bytes = memoryTraceFile(mem);
    const bool same = std::string(bytes.begin(), bytes.end()) == test::readText(disk);
    useMemoryTraceStore(0);
    EXPECT_TRUE(same);
}

TEST(TraceStore, OnDiskAWriteThatFailsIsNotLostInTheBuffer) {
    if (::access("/dev/full", W_OK) != 0) GTEST_SKIP() << "no /dev/full here";
    // A full disk: what sits in the buffer fails when the file's length is asked for, and a
    // write that has to make room fails at once.
    TraceFileWriter w;
    w.open("/dev/full", true);
    w.write(1, std::vector<float>(16, 1.0f));
    try {
        w.length();
        FAIL() << "the gathered bytes were not written";
    } catch (const WriteError& e) {
        EXPECT_EQ(e.error, ENOSPC);
    }
    const std::vector<float> trace(1 << 16, 1.0f);
    EXPECT_THROW(for (int k = 0; k < 8; ++k)
                     w.write(1 + int64_t(k) * 4 * int64_t(trace.size()), trace),
                 WriteError);
}
