// A folder of the tests' own with a folder w in it, a fresh directory table
// and no levels: the list's arrays are looked at directly, with no page.
#pragma once

#include <gtest/gtest.h>

#include "flist/flist.h"
#include "session/xed.h"

#include <cstdlib>
#include <fstream>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

// The status batch size of a test, put back however the test ends.
struct fl_batch_size {
    size_t was = fl_share_least;
    explicit fl_batch_size(size_t n) { fl_share_least = n; }
    ~fl_batch_size() { fl_share_least = was; }
};

// The working directory of a test, put back however the test ends.
struct fl_cwd_back {
    char old[4096] = "/";
    fl_cwd_back() { (void)!getcwd(old, sizeof old); }
    ~fl_cwd_back() { (void)!chdir(old); }
};

class FlScan : public ::testing::Test {
protected:
    std::string dir;
    void SetUp() override
    {
        char t[] = "/tmp/xed-flist.XXXXXX";
        char *d = mkdtemp(t);
        ASSERT_NE(d, nullptr);
        char buf[4096];
        dir = realpath(d, buf);
        setenv("XDG_DATA_HOME", (dir + "/data").c_str(), 1);
        mkdir((dir + "/w").c_str(), 0755);
        fl_dirs.clear();
        fl_levels.clear();
        fl_parent = 1;
        recycle_on = 1;
    }
    void TearDown() override
    {
        fl_levels.clear();
        unsetenv("XDG_DATA_HOME");
        (void)!std::system(("chmod -R u+rwx '" + dir + "' 2>/dev/null; rm -rf '" + dir + "'").c_str());
    }
    void make(const std::string &name, size_t size, time_t when = 0)
    {
        std::ofstream(dir + "/w/" + name, std::ios::binary) << std::string(size, 'x');
        if (when) {
            struct timeval tv[2] = {{when, 0}, {when, 0}};
            utimes((dir + "/w/" + name).c_str(), tv);
        }
    }
    fl_level &level(const char *npat = "*", const char *epat = "*")
    {
        fl_levels.emplace_back();
        fl_level &lv = fl_levels.back();
        lv.npat = npat;
        lv.epat = epat;
        EXPECT_EQ(fl_dir_enter(dir + "/w", lv.dirindex), 0);
        lv.dir = fl_dirs[size_t(lv.dirindex)];
        return lv;
    }
    // The base names in display order.
    static std::vector<std::string> shown(const fl_level &lv)
    {
        std::vector<std::string> out;
        for (int32_t i : lv.list.order)
            out.push_back(fl_basename(lv.list.name[size_t(i)]));
        return out;
    }
    static size_t find(const fl_level &lv, const std::string &base)
    {
        for (size_t i = 0; i < lv.list.count(); i++)
            if (fl_basename(lv.list.name[i]) == base)
                return i;
        return size_t(-1);
    }
    // Sorts the level by each code in turn and compares the names shown.
    struct order_case {
        int code;                       // the sort asked for
        std::vector<std::string> want;  // the names in the order expected
    };
    static void expect_orders(fl_level &lv, std::initializer_list<order_case> cases)
    {
        for (const auto &c : cases) {
            lv.sort = c.code;
            fl_sort(lv);
            EXPECT_EQ(shown(lv), c.want) << "sort code " << c.code;
        }
    }
};

using names = std::vector<std::string>;
