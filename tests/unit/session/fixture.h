// A fresh editor state for each test: empty ring, one view, default modes.
#pragma once

#include "commands/commands.h"
#include "session/xed.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

struct EditorTest : ::testing::Test {
    void SetUp() override
    {
        cmd_init();
        xfsession_reset();
        modes = xfmodes{};
        topline = -1;
        impcmscp = 0;
        macro_first = 0;
        linend_on = 1;
        linend_char = 12;
        cmd_queue.clear();
        macro_stack_cmds.clear();
        rexx_macros.clear();
        cmd_files.clear();
        arg_frames.clear();
        static bool once = false;
        if (!once) {
            xfcmdline("synonym quit 4 command aquit");
            once = true;
        }
    }

    void TearDown() override { xfsession_end(); }

    // A new file holding the given lines, bound and shown in view 0.
    int file(const std::vector<std::string> &lines, const char *name = "/tmp/t.txt")
    {
        int prev = xfidx;
        int k = xfnewfile();
        xf->fname = name;
        xfdefaults(name, prev);
        xv->fileidx = k;
        for (size_t i = 0; i < lines.size(); i++)
            xf_do('i', lines[i], (int32_t)i - 1, "test");
        xf->chgcount = 0;
        xf->journal.undo.clear();
        curline() = -1;
        return k;
    }

    std::vector<std::string> text() const
    {
        std::vector<std::string> v;
        for (int32_t i = 0; i < xf->nbli(); i++)
            v.emplace_back(xf->lines[i].text, (size_t)xf->lines[i].len);
        return v;
    }

    std::vector<std::string> msgs() const { return xv->msgs; }
    std::string lastmsg() const { return xv->msgs.empty() ? "" : xv->msgs.back(); }
};
