#include <gtest/gtest.h>
#include <signal.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "adapters/qt/file_keychain.h"
#include "fakes/captured_log.h"
#include "fakes/memory_keychain.h"
#include "fakes/temp_folder.h"

namespace tembrix {
namespace {

struct MemoryKit {
    MemoryKeychain keychain;
};
struct FileKit {
    TempFolder folder;
    CapturedLog log;
    FileKeychain keychain{folder.path() / "состояние" / "keychain.json", log};
};

template <class Kit>
class KeychainContract : public testing::Test {
  protected:
    Kit kit;
    Keychain& keychain = kit.keychain;
};
using Kits = testing::Types<MemoryKit, FileKit>;
TYPED_TEST_SUITE(KeychainContract, Kits);

TYPED_TEST(KeychainContract, KeepsBytesByAccount) {
    EXPECT_FALSE(this->keychain.get("done"));
    const Bytes anything = {0, 255, 10, 34, 92, 0};
    EXPECT_TRUE(this->keychain.set(anything, "done"));
    EXPECT_TRUE(this->keychain.set({}, "счёт \"2\""));
    EXPECT_EQ(this->keychain.get("done"), anything);
    EXPECT_EQ(this->keychain.get("счёт \"2\""), Bytes{});
    EXPECT_TRUE(this->keychain.set(toBytes("second"), "done"));
    EXPECT_EQ(this->keychain.get("done"), toBytes("second"));
    EXPECT_FALSE(this->keychain.get("don"));
}

class FileKeychainTest : public testing::Test {
  protected:
    TempFolder folder;
    CapturedLog log;
    std::filesystem::path file = folder.path() / "state" / "keychain.json";

    mode_t rights(const std::filesystem::path& path) const {
        struct stat status {};
        EXPECT_EQ(::stat(path.c_str(), &status), 0);
        return status.st_mode & 0777;
    }
};

TEST_F(FileKeychainTest, IsTheUsersAloneAndOutlivesTheObject) {
    const auto before = umask(0);
    EXPECT_TRUE(FileKeychain(file, log).set(toBytes("true"), "done"));
    EXPECT_TRUE(FileKeychain(file, log).set(toBytes("2"), "other"));
    umask(before);
    EXPECT_EQ(rights(file), 0600U);
    EXPECT_EQ(rights(file.parent_path()), 0700U);
    EXPECT_EQ(FileKeychain(file, log).get("done"), toBytes("true"));
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(FileKeychainTest, DamagedFilesAreSetAsideOneByOne) {
    const std::string damaged[] = {"{\"done\": \"dHJ1", "[1]", "{\"done\": 1}",
                                   "{\"done\": \"%\"}"};
    for (const auto& content : damaged) {
        folder.write("state/keychain.json", content);
        FileKeychain keychain(file, log);
        EXPECT_FALSE(keychain.get("done"));
        EXPECT_TRUE(keychain.set(toBytes("new"), "done"));
        EXPECT_EQ(keychain.get("done"), toBytes("new"));
    }
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(fileText(file.string() + ".damaged-" + std::to_string(i + 1)), damaged[i]);
    EXPECT_EQ(log.lines().size(), 4U);
}

TEST_F(FileKeychainTest, WhatCannotBeReadOrWrittenIsLeftAlone) {
    std::filesystem::create_directories(file);  // a folder at the path of the file
    FileKeychain keychain(file, log);
    EXPECT_FALSE(keychain.set(toBytes("1"), "done"));
    EXPECT_FALSE(keychain.get("done"));
    EXPECT_TRUE(std::filesystem::is_directory(file));
    EXPECT_FALSE(log.lines().empty());

    folder.write("plain", "");
    EXPECT_FALSE(FileKeychain(folder.path() / "plain" / "keychain.json", log).set({}, "done"));
}

TEST_F(FileKeychainTest, AKilledProcessLeavesOneOfItsValues) {
    for (int round = 0; round < 5; ++round) {
        int ready[2];
        ASSERT_EQ(pipe(ready), 0);
        const pid_t child = fork();
        if (child == 0) {
            FileKeychain keychain(file, log);
            for (int i = 0;; ++i) {
                keychain.set(Bytes(2000, static_cast<std::uint8_t>(i)), "value");
                if (write(ready[1], "x", 1) != 1)
                    _exit(1);
            }
        }
        char sign = 0;
        for (int i = 0; i <= round * 3; ++i)
            ASSERT_EQ(read(ready[0], &sign, 1), 1);
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        close(ready[0]);
        close(ready[1]);
        const auto value = FileKeychain(file, log).get("value");
        ASSERT_TRUE(value);
        EXPECT_EQ(*value, Bytes(2000, value->front()));
    }
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(FileKeychainTest, ManyThreadsLoseNothing) {
    FileKeychain keychain(file, log);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < 5; ++i)
                keychain.set(toBytes("v"), std::to_string(t) + "." + std::to_string(i));
        });
    for (auto& thread : threads)
        thread.join();
    for (int t = 0; t < 4; ++t)
        for (int i = 0; i < 5; ++i)
            EXPECT_TRUE(keychain.get(std::to_string(t) + "." + std::to_string(i)));
}

}  // namespace
}  // namespace tembrix
