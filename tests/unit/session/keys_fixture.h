// Key tests start from the start-up tables, with SET reaching the key
// grammar, on an editor with one empty file and a screen (not batch).
#pragma once

#include "fixture.h"
#include "session/xfkeys.h"

struct KeysTest : EditorTest {
    void SetUp() override
    {
        EditorTest::SetUp();
        batch = false;
        xfkeys_init();
        file({});
        cmd_rc = 0;
    }
    void TearDown() override
    {
        batch = false;
        EditorTest::TearDown();
    }

    // Runs "SET <text>" as a typed command would.
    int set(const std::string &text)
    {
        cmd_rc = 0;
        xv->msgs.clear();
        xfcmdline("set " + text);
        return cmd_rc;
    }

    // The F, L or R slot of key `k` in state `st`.
    const xfkeydef &slot(int cls, int k, int st)
    {
        return key_class[cls].slot[size_t(xfkey_slot(cls, k, st))];
    }
};
