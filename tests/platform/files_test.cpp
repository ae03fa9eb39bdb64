#include "support/scripted.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <sys/stat.h>
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
        return folder / name;
    }
    static OSErr open(const std::string &path, ForkRefNum *fork) {
        ORB_FSRef ref;
        const OSErr result = platform::internFSRef(path, &ref);
        return result != noErr ? result : FSOpenFork(&ref, 0, nullptr, fsRdPerm, fork);
    }

    fs::path folder;
    ForkRefNum fork = 0;
    ByteCount actual = 99;
};

TEST_F(Files, RefsNameFilesThatExist) {
    const std::string path = put("job", "<dict/>");
    ORB_FSRef ref, relative;
    EXPECT_EQ(platform::makeFSRef((path + "x").c_str(), &ref), fnfErr);
    EXPECT_EQ(platform::makeFSRef((path + "/x").c_str(), &ref), fnfErr);
    EXPECT_EQ(platform::makeFSRef("", &ref), paramErr);
    EXPECT_EQ(platform::makeFSRef(path.c_str(), &ref), noErr);

    // A relative path is taken from the working directory of the moment, also when that changes later.
    const fs::path before = fs::current_path();
    fs::current_path(folder);
    EXPECT_EQ(platform::makeFSRef("job", &relative), noErr);
    fs::current_path(before);
    EXPECT_EQ(memcmp(&relative, &ref, sizeof ref), 0);

    EXPECT_EQ(FSOpenFork(&ref, 0, nullptr, fsRdPerm, &fork), noErr);
    EXPECT_EQ(FSCloseFork(fork), noErr);
    for (uint8_t &byte : ref.hidden) {
        byte ^= 0x40;
        EXPECT_EQ(FSOpenFork(&ref, 0, nullptr, fsRdPerm, &fork), errFSBadFSRef) << "byte " << &byte - ref.hidden;
        byte ^= 0x40;
    }
}

TEST_F(Files, WhatIsNoReadableFileSaysWhy) {
    const std::string fifo = folder / "fifo", secret = put("secret", "x");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    ASSERT_EQ(chmod(secret.c_str(), 0), 0);
    ASSERT_EQ(chmod(folder.c_str(), 0755), 0);
    fs::create_symlink("loop", folder / "loop");
    const std::pair<std::string, OSErr> cases[] = {
        {folder / "missing", fnfErr},
        {folder / "loop", fnfErr},
        {"/" + std::string(5000, 'n'), fnfErr},
        {folder, errFSNotAFile},
        {"/dev/null", errFSNotAFile},
        {fifo, errFSNotAFile}, // and the open does not wait for a writer
        {secret, permErr},
    };
    const uid_t user = geteuid();
    ASSERT_EQ(user == 0 ? seteuid(65534) : 0, 0); // who may read anything
    for (const auto &[path, expected] : cases)
        EXPECT_EQ(open(path, &fork), expected) << path;
    ASSERT_EQ(seteuid(user), 0);
    EXPECT_EQ(fork, 0);
}

TEST_F(Files, ReadsAgreeWithTheFileAtAnyOffset) {
    std::mt19937 random(4);
    std::string bytes(300'000, '\0');
    for (char &c : bytes)
        c = static_cast<char>(random());
    ASSERT_EQ(open(put("plot", bytes), &fork), noErr);

    std::string buffer(200'001, '\0');
    size_t offset = 0;
    for (int i = 0; i < 20'000; ++i) {
        // Mostly onward, as a sender reads, with jumps, and with reads around the block's size.
        if (i % 50 == 0) offset = random() % 310'000;
        const size_t count = i % 100 == 7 ? random() % 200'000 : random() % 600;
        const auto there = std::string_view(bytes).substr(std::min(offset, bytes.size()), count);
        buffer[there.size()] = 'e';
        ASSERT_EQ(FSReadFork(fork, fsFromStart, static_cast<int64_t>(offset), count, buffer.data(), &actual),
                  there.size() == count ? noErr : eofErr);
        ASSERT_EQ(actual, there.size());
        ASSERT_TRUE(buffer.starts_with(there)) << offset;
        ASSERT_EQ(buffer[actual], 'e') << "wrote past what it read";
        offset += actual;
    }
    EXPECT_EQ(FSCloseFork(fork), noErr);
}

TEST_F(Files, SizesThatChangeAndBadArguments) {
    const std::string path = put("plot", std::string(100'000, 'a'));
    ASSERT_EQ(open(path, &fork), noErr);
    char c[16];
    int64_t size = 0;
    EXPECT_EQ(FSReadFork(fork, fsFromStart, 0, 16, c, &actual), noErr);
    ASSERT_EQ(truncate(path.c_str(), 70'000), 0);
    EXPECT_EQ(FSReadFork(fork, fsFromStart, 69'990, 16, c, &actual), eofErr);
    EXPECT_EQ(actual, 10U);
    EXPECT_EQ(FSGetForkSize(fork, &size), noErr);
    EXPECT_EQ(size, 70'000);
    ASSERT_EQ(truncate(path.c_str(), 80'000), 0);
    EXPECT_EQ(FSReadFork(fork, fsFromStart, 69'990, 16, c, &actual), noErr);
    EXPECT_EQ(memcmp(c, "aaaaaaaaaa\0\0\0\0\0\0", 16), 0);
    EXPECT_EQ(FSReadFork(fork, fsFromStart, -1, 1, c, &actual), paramErr);
    EXPECT_EQ(FSReadFork(fork, fsFromStart, int64_t(1) << 50, 1, c, &actual), eofErr);
    EXPECT_EQ(actual, 0U);
    EXPECT_EQ(FSReadFork(fork, fsFromStart, 0, 1, c, nullptr), noErr);
    EXPECT_EQ(FSCloseFork(fork), noErr);
    for (ForkRefNum none : {fork, ForkRefNum(0), ForkRefNum(-1), ForkRefNum(32767)}) {
        EXPECT_EQ(FSCloseFork(none), rfNumErr);
        EXPECT_EQ(FSReadFork(none, fsFromStart, 0, 1, c, &actual), rfNumErr);
        EXPECT_EQ(FSGetForkSize(none, &size), rfNumErr);
    }
}

} // namespace
