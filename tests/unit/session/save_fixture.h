// The saving tests' fixture: a file loaded from a private folder, commands
// run on it, and the bytes on disk read back.
#pragma once
#include <gtest/gtest.h>
#include "tempdir.h"

#include "commands/commands.h"
#include "session/xed.h"

#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>

namespace savetest {

inline std::string slurp(const std::string &p)
{
    std::ifstream in(p, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

inline void spit(const std::string &p, const std::string &data)
{
    std::ofstream(p, std::ios::binary) << data;
}

inline bool there(const std::string &p) { return access(p.c_str(), F_OK) == 0; }

class Save : public TempDirTest {
protected:
    void SetUp() override
    {
        TempDirTest::SetUp();
        if (HasFatalFailure())
            return;
        backup_on = 1;
        bak_suffix = reload_suffix = "%";
        preservlinks = saveclearundo = 0;
        autosave_count = 0;
        autosave_dir = "./";
        recovering = false;
        autobin = 1;
        keepblanks_global = bin_global = -1;
        eol_default = 1;
        topline = -1;
    }
    std::string path(const std::string &n) { return dir + "/" + n; }
    void load(const std::string &data, const std::string &name = "f.txt")
    {
        spit(path(name), data);
        ASSERT_EQ(xfedit(name), 0);
    }
    void run(const std::string &cmd)
    {
        cmd_rc = 0;
        xfcmdline(cmd);
    }
    void change(int li, const std::string &text)
    {
        xf->group_open = 1;
        xf_do('r', std::string_view(text), li, "test");
    }
};

} // namespace savetest
using namespace savetest;
