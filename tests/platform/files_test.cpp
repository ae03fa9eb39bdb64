#include "support/scripted.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <random>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class Files : public testing::Test {
protected:
    Files() {
        std::string name = (fs::temp_directory_path() / "files-test-XXXXXX").string();
        folder = mkdtemp(name.data());
    }
    ~Files() override { fs::remove_all(folder); }

    std::string put(const std::string &name, const std::string &bytes) const {
        std::ofstream(folder / name, std::ios::binary) << bytes;
        return (folder / name).string();
    }
    static OSErr open(const std::string &path, ForkRefNum *fork) {
        ORB_FSRef ref;
        const OSErr result = platform::internFSRef(path, &ref);
        return result != noErr ? result : FSOpenFork(&ref, 0, nullptr, fsRdPerm, fork);
    }

    fs::path folder;
};

TEST_F(Files, RefsNameFilesThatExist) {
    const std::string path = put("job", "<dict/>");
    ORB_FSRef ref, same, relative;
    EXPECT_EQ(platform::makeFSRef(path.c_str(), &ref), noErr);
    EXPECT_EQ(platform::makeFSRef(path.c_str(), &same), noErr);
    EXPECT_EQ(memcmp(&ref, &same, sizeof ref), 0);
    EXPECT_EQ(platform::makeFSRef((path + "x").c_str(), &ref), fnfErr);
    EXPECT_EQ(platform::makeFSRef((path + "/x").c_str(), &ref), fnfErr);
    EXPECT_EQ(platform::makeFSRef("", &ref), paramErr);
    EXPECT_EQ(platform::makeFSRef(nullptr, &ref), paramErr);

    // A relative path is taken from the working directory of the moment, also when that changes later.
    const fs::path before = fs::current_path();
    fs::current_path(folder);
    EXPECT_EQ(platform::makeFSRef("job", &relative), noErr);
    fs::current_path(before);
    EXPECT_EQ(memcmp(&relative, &same, sizeof same), 0);
}

TEST_F(Files, MadeUpRefsAreRefused) {
    const std::string path = put("plot", "PU;");
    ORB_FSRef good;
    ASSERT_EQ(platform::makeFSRef(path.c_str(), &good), noErr);
    ForkRefNum fork = 0;
    EXPECT_EQ(FSOpenFork(&good, 0, nullptr, fsRdPerm, &fork), noErr);
    EXPECT_EQ(FSCloseFork(fork), noErr);
    for (size_t changed = 0; changed < sizeof good.hidden; ++changed) {
        ORB_FSRef ref = good;
        ref.hidden[changed] ^= 0x40;
        EXPECT_EQ(FSOpenFork(&ref, 0, nullptr, fsRdPerm, &fork), errFSBadFSRef) << "byte " << changed;
    }
    const ORB_FSRef zero = {};
    EXPECT_EQ(FSOpenFork(&zero, 0, nullptr, fsRdPerm, &fork), errFSBadFSRef);
}

TEST_F(Files, WhatIsNoReadableFileSaysWhy) {
    const std::string fifo = (folder / "fifo").string();
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    fs::create_symlink("loop", folder / "loop");
    struct {
        std::string path;
        OSErr expected;
    } const cases[] = {
        {(folder / "missing").string(), fnfErr},
        {(folder / "loop").string(), fnfErr},
        {std::string(5000, 'n').insert(0, "/"), fnfErr},
        {folder.string(), errFSNotAFile},
        {"/dev/null", errFSNotAFile},
        {fifo, errFSNotAFile}, // and the open does not wait for a writer
    };
    for (const auto &c : cases) {
        ForkRefNum fork = 0;
        EXPECT_EQ(open(c.path, &fork), c.expected) << c.path;
        EXPECT_EQ(fork, 0) << c.path;
    }
}

// In a child without the superuser's rights, so that it tests the same whoever runs it.
TEST_F(Files, PermissionIsAsked) {
    const std::string path = put("secret", "x");
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    ASSERT_EQ(chmod(folder.c_str(), 0755), 0);
    const pid_t child = fork();
    if (child == 0) {
        if (geteuid() == 0 && setuid(65534) != 0) _exit(100);
        ForkRefNum number = 0;
        _exit(open(path, &number) == permErr ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST_F(Files, ReadsAgreeWithTheFileAtAnyOffset) {
    std::mt19937 random(4);
    std::string bytes(300'000, '\0');
    for (char &c : bytes)
        c = static_cast<char>(random());
    ForkRefNum fork = 0;
    ASSERT_EQ(open(put("plot", bytes), &fork), noErr);
    int64_t size = 0;
    EXPECT_EQ(FSGetForkSize(fork, &size), noErr);
    EXPECT_EQ(size, 300'000);

    std::string buffer(200'001, '\0');
    size_t offset = 0;
    for (int i = 0; i < 20'000; ++i) {
        // Mostly onward, as a sender reads, with jumps, and with reads around the block's size.
        if (i % 50 == 0) offset = random() % 310'000;
        const size_t count = i % 100 == 7 ? random() % 200'000 : random() % 600;
        const size_t there = offset < bytes.size() ? std::min(count, bytes.size() - offset) : 0;
        buffer[there] = 'e';
        ByteCount actual = 99;
        ASSERT_EQ(FSReadFork(fork, fsFromStart, static_cast<int64_t>(offset), count, buffer.data(), &actual),
                  there == count ? noErr : eofErr);
        ASSERT_EQ(actual, there);
        ASSERT_EQ(buffer.compare(0, there, bytes, offset < bytes.size() ? offset : 0, there), 0) << offset;
        ASSERT_EQ(buffer[there], 'e') << "wrote past what it read";
        offset += there;
    }
    EXPECT_EQ(FSCloseFork(fork), noErr);
}

TEST_F(Files, SizesThatChange) {
    const std::string path = put("plot", std::string(100'000, 'a'));
    ForkRefNum fork = 0;
    ASSERT_EQ(open(path, &fork), noErr);
    char c[16];
    ByteCount actual = 0;
    EXPECT_EQ(FSReadFork(fork, fsFromStart, 0, 16, c, &actual), noErr);
    ASSERT_EQ(truncate(path.c_str(), 70'000), 0);
    EXPECT_EQ(FSReadFork(fork, fsFromStart, 69'990, 16, c, &actual), eofErr);
    EXPECT_EQ(actual, 10U);
    ASSERT_EQ(truncate(path.c_str(), 80'000), 0);
    EXPECT_EQ(FSReadFork(fork, fsFromStart, 69'990, 16, c, &actual), noErr);
    EXPECT_EQ(memcmp(c, "aaaaaaaaaa\0\0\0\0\0\0", 16), 0);
    EXPECT_EQ(FSCloseFork(fork), noErr);
}

TEST_F(Files, BadArguments) {
    ForkRefNum fork = 0;
    char c;
    ByteCount actual = 99;
    int64_t size;
    ASSERT_EQ(open(put("plot", "PU;"), &fork), noErr);
    EXPECT_EQ(FSReadFork(fork, fsFromStart, -1, 1, &c, &actual), paramErr);
    EXPECT_EQ(FSReadFork(fork, fsFromStart, int64_t(1) << 50, 1, &c, &actual), eofErr);
    EXPECT_EQ(actual, 0U);
    EXPECT_EQ(FSReadFork(fork, fsFromStart, 0, 1, &c, nullptr), noErr);
    EXPECT_EQ(FSCloseFork(fork), noErr);
    for (ForkRefNum none : {fork, ForkRefNum(0), ForkRefNum(-1), ForkRefNum(32767)}) {
        EXPECT_EQ(FSCloseFork(none), rfNumErr);
        EXPECT_EQ(FSReadFork(none, fsFromStart, 0, 1, &c, &actual), rfNumErr);
        EXPECT_EQ(FSGetForkSize(none, &size), rfNumErr);
    }
    HFSUniStr255 name;
    name.length = 9;
    EXPECT_EQ(FSGetDataForkName(&name), noErr);
    EXPECT_EQ(name.length, 0);
}

} // namespace
