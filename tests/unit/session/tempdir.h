// A test that runs in a temporary folder of its own, which is also HOME, with
// an empty ring; the folder goes when the test ends.
#pragma once

#include "commands/commands.h"
#include "session/xed.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

class TempDirTest : public ::testing::Test {
protected:
    std::string dir; // the test's folder and HOME

    void SetUp() override
    {
        static bool once = false;
        if (!once) {
            cmd_init();
            once = true;
        }
        char t[] = "/tmp/xed-files.XXXXXX";
        dir = mkdtemp(t);
        setenv("HOME", dir.c_str(), 1);
        ASSERT_EQ(chdir(dir.c_str()), 0);
        xfsession_reset();
    }
    void TearDown() override
    {
        xfsession_reset();
        (void)!chdir("/");
        (void)!std::system(("rm -rf '" + dir + "'").c_str());
    }
};
