// The settings store (keys as files and folders, escaped names and texts,
// damaged lines), tree removal that never leaves through a link, and
// programs run to their end with their output, bounded in time.
#include <gtest/gtest.h>

#include "platform/platform.h"

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class Store : public ::testing::Test {
  protected:
    void SetUp() override
    {
        char t[] = "/tmp/xed-store.XXXXXX";
        ASSERT_NE(mkdtemp(t), nullptr);
        dir = t;
        const char *old = getenv("XDG_CONFIG_HOME");
        saved = old ? old : "";
        had = old != nullptr;
        setenv("XDG_CONFIG_HOME", dir.c_str(), 1);
    }
    void TearDown() override
    {
        if (had)
            setenv("XDG_CONFIG_HOME", saved.c_str(), 1);
        else
            unsetenv("XDG_CONFIG_HOME");
        pl_remove_tree(dir);
    }
    std::string dir, saved;
    bool had = false;
};

std::string text_of(const std::vector<pl_value> &v, const std::string &name)
{
    for (const pl_value &x : v)
        if (x.name == name)
            return x.text;
    return "<none>";
}

TEST_F(Store, ValuesComeBackWithTheirAwkwardCharacters)
{
    std::vector<pl_value> in = {{"plain", "text"}, {"", "default"}, {"a=b\\c", "line\none\\"}, {"x", "=y="}};
    ASSERT_EQ(pl_key_put("HKEY_CURRENT_USER\\Soft\\App", in), 0);
    std::vector<pl_value> out;
    ASSERT_EQ(pl_key_values("HKEY_CURRENT_USER\\Soft\\App", out), 0);
    ASSERT_EQ(out.size(), in.size());
    for (size_t i = 0; i < in.size(); i++) {
        EXPECT_EQ(out[i].name, in[i].name);
        EXPECT_EQ(out[i].text, in[i].text);
    }
    // The key is one file of lines.
    std::ifstream f(dir + "/vorta/HKEY_CURRENT_USER/Soft/App");
    std::string first;
    std::getline(f, first);
    EXPECT_EQ(first, "plain=text");
    EXPECT_EQ(pl_key_values("HKEY_CURRENT_USER\\Soft\\Missing", out), ENOENT);
}

TEST_F(Store, AKeyWithValuesKeepsThemWhenItGainsASubkey)
{
    ASSERT_EQ(pl_key_put("HKEY_CURRENT_USER\\A", {{"v", "1"}}), 0);
    ASSERT_EQ(pl_key_put("HKEY_CURRENT_USER\\A\\B", {{"w", "2"}}), 0);
    ASSERT_EQ(pl_key_put("HKEY_CURRENT_USER\\A\\.dot/slash%", {{"z", "3"}}), 0);
    std::vector<pl_value> out;
    ASSERT_EQ(pl_key_values("HKEY_CURRENT_USER\\A", out), 0);
    EXPECT_EQ(text_of(out, "v"), "1");
    std::vector<std::string> keys;
    ASSERT_EQ(pl_key_subkeys("HKEY_CURRENT_USER\\A", keys), 0);
    ASSERT_EQ(keys.size(), 2u);
    EXPECT_EQ(keys[0], ".dot/slash%");
    EXPECT_EQ(keys[1], "B");
    // Rewriting the key's values leaves the subkeys alone.
    ASSERT_EQ(pl_key_put("HKEY_CURRENT_USER\\A", {{"v", "9"}}), 0);
    ASSERT_EQ(pl_key_values("HKEY_CURRENT_USER\\A\\B", out), 0);
    EXPECT_EQ(text_of(out, "w"), "2");
    ASSERT_EQ(pl_key_delete("HKEY_CURRENT_USER\\A"), 0);
    EXPECT_EQ(pl_key_values("HKEY_CURRENT_USER\\A\\B", out), ENOENT);
    EXPECT_EQ(pl_key_delete("HKEY_CURRENT_USER\\A"), ENOENT);
}

TEST_F(Store, DamagedLinesLoseOnlyThemselves)
{
    std::string d = dir + "/vorta/HKEY_CURRENT_USER";
    ASSERT_EQ(system(("mkdir -p '" + d + "'").c_str()), 0);
    std::ofstream(d + "/K") << "good=1\n\x01garbage without equals\n\\\n=empty name\ngood=2\n";
    std::vector<pl_value> out;
    ASSERT_EQ(pl_key_values("HKEY_CURRENT_USER\\K", out), 0);
    EXPECT_EQ(text_of(out, "good"), "2");
    EXPECT_EQ(text_of(out, ""), "empty name");
    EXPECT_EQ(out.size(), 2u);
}

TEST(RemoveTree, NeverFollowsALinkOut)
{
    char t[] = "/tmp/xed-tree.XXXXXX";
    ASSERT_NE(mkdtemp(t), nullptr);
    std::string top = t;
    ASSERT_EQ(mkdir((top + "/keep").c_str(), 0700), 0);
    std::ofstream(top + "/keep/precious") << "x";
    ASSERT_EQ(mkdir((top + "/gone").c_str(), 0700), 0);
    ASSERT_EQ(mkdir((top + "/gone/deep").c_str(), 0700), 0);
    std::ofstream(top + "/gone/deep/f") << "y";
    ASSERT_EQ(symlink((top + "/keep").c_str(), (top + "/gone/link").c_str()), 0);
    EXPECT_EQ(pl_remove_tree(top + "/gone"), 0);
    struct stat st;
    EXPECT_NE(lstat((top + "/gone").c_str(), &st), 0);
    EXPECT_EQ(stat((top + "/keep/precious").c_str(), &st), 0);
    EXPECT_EQ(pl_remove_tree(top + "/gone"), ENOENT);
    EXPECT_EQ(pl_remove_tree(top), 0);
}

TEST(RunCapture, OutputStatusAndMissingPrograms)
{
    pl_run_opts o;
    o.timeout_ms = 20000;
    std::string out;
    EXPECT_EQ(pl_run_capture({"/bin/sh", "-c", "echo out; echo err >&2; exit 7"}, out, o), 7);
    EXPECT_EQ(out, "out\nerr\n");
    o.with_stderr = false;
    EXPECT_EQ(pl_run_capture({"/bin/sh", "-c", "echo out; echo err >&2"}, out, o), 0);
    EXPECT_EQ(out, "out\n");
    EXPECT_EQ(pl_run_capture({"/no/such/program"}, out, o), -ENOENT);
    EXPECT_EQ(pl_run_capture({"/bin/sh", "-c", "kill -9 $$"}, out, o), 128 + 9);
    o.max_out = 10;
    EXPECT_EQ(pl_run_capture({"/bin/sh", "-c", "head -c 100000 /dev/zero"}, out, o), 0);
    EXPECT_EQ(out.size(), 10u);
    // Error output apart, both pipes read as they fill, the words of the
    // environment given to the program.
    o.max_out = 1u << 20;
    o.env = {"XED_TEST_WORD=hello"};
    std::string err;
    EXPECT_EQ(pl_run_capture({"/bin/sh", "-c", "head -c 200000 /dev/zero >&2; echo $XED_TEST_WORD"}, out, o, &err), 0);
    EXPECT_EQ(out, "hello\n");
    EXPECT_EQ(err.size(), 200000u);
}

bool stop_now() { return true; }

TEST(RunCapture, TimeAndStopBoundTheWaitEvenWhenOutputStaysOpen)
{
    pl_run_opts o;
    o.timeout_ms = 200;
    std::string out;
    auto t0 = std::chrono::steady_clock::now();
    // The background child keeps the pipe open after the shell is gone.
    EXPECT_EQ(pl_run_capture({"/bin/sh", "-c", "sleep 30 & sleep 30"}, out, o), -ETIMEDOUT);
    o.timeout_ms = -1;
    o.stop = stop_now;
    EXPECT_EQ(pl_run_capture({"/bin/sh", "-c", "sleep 30"}, out, o), -ETIMEDOUT);
    EXPECT_LT(std::chrono::steady_clock::now() - t0, std::chrono::seconds(10));
}

} // namespace
