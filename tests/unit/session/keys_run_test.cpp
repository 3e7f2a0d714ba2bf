// Running a key press: the four orders between the definition and the
// command line's text, the plain ENTER rule, the command source and the
// history.
#include "keys_fixture.h"

#include <algorithm>

namespace {

struct KeysRun : KeysTest {
    static std::vector<std::string> ran; // texts run, in order
    int (*saved)(std::string_view) = nullptr;

    void SetUp() override
    {
        KeysTest::SetUp();
        ran.clear();
        saved = xfkey_exec;
        xfkey_exec = [](std::string_view t) {
            ran.emplace_back(t);
            return 0;
        };
    }
    void TearDown() override
    {
        xfkey_exec = saved;
        KeysTest::TearDown();
    }

    std::vector<std::string> press(const xfkeydef &k, const std::string &cmd)
    {
        ran.clear();
        bool c = false, d = false;
        xfkey_run(cmd, k.def, 1, k.order, c, d, false);
        EXPECT_EQ(c, std::find(ran.begin(), ran.end(), cmd) != ran.end() && !cmd.empty());
        EXPECT_EQ(d, !k.def.empty() && std::find(ran.begin(), ran.end(), k.def) != ran.end());
        return ran;
    }
};
std::vector<std::string> KeysRun::ran;

using V = std::vector<std::string>;

TEST_F(KeysRun, TheFourOrders)
{
    const struct {
        int order;
        const char *def;
        const char *cmd;
        V expect;
    } cases[] = {
        {KO_ONLY, "d", "c", {"d"}},
        {KO_ONLY, "", "c", {}},
        {KO_AFTER, "d", "c", {"c", "d"}},
        {KO_AFTER, "d", "", {"d"}},
        {KO_AFTER, "", "c", {"c"}},
        {KO_BEFORE, "d", "c", {"d", "c"}},
        {KO_BEFORE, "d", "  ", {"d"}},
        {KO_BEFORE, "", "c", {"c"}},
        {KO_IGNORE, "d", "c", {"c"}},
        {KO_IGNORE, "d", "", {"d"}},
    };
    for (const auto &c : cases)
        EXPECT_EQ(press(xfkeydef{c.def, c.order}, c.cmd), c.expect) << c.order << " " << c.def << "/" << c.cmd;
    bool c = true, d = true;
    xfkey_run("x", "", 4, KO_BEFORE, c, d, true);
    EXPECT_TRUE(c);
    EXPECT_FALSE(d);
    EXPECT_EQ(cmd_source, 4);
}

TEST_F(KeysRun, KeysSetWithSetRunInTheirOrder)
{
    // No order word: the definition, then the typed command.
    set("f5 top");
    EXPECT_EQ(press(*xfkey_for(1, 5), "next"), (V{"top", "next"}));
    set("f5 ?");
    EXPECT_EQ(press(*xfkey_for(1, 5), "next"), (V{"?"}));
    set("f5 ignore top");
    EXPECT_EQ(press(*xfkey_for(1, 5), "next"), (V{"next"}));
    EXPECT_EQ(press(*xfkey_for(1, 5), ""), (V{"top"}));
    // ONLY with nothing: the key swallows the command line.
    set("f5 only");
    EXPECT_EQ(press(*xfkey_for(1, 5), "next"), V{});
}

TEST_F(KeysRun, PlainEnterRunsTheCommandLineUnlessDefined)
{
    set("enter only");
    EXPECT_EQ(press(*xfkey_enter(0), "next"), (V{"next"}));
    set("enter only top");
    EXPECT_EQ(press(*xfkey_enter(0), "next"), (V{"top"}));
    // A shifted ENTER with no definition is an empty key like any other.
    set("s-enter only");
    EXPECT_EQ(press(*xfkey_enter(1), "next"), V{});
    EXPECT_EQ(xfkey_enter(8), nullptr);
}

// Through the real dispatcher: messages show the order, and "=" shows what
// went to the history.
TEST_F(KeysRun, RealCommandsAndTheHistory)
{
    xfkey_exec = saved;
    xfcmdline("history 10");
    bool c, d;
    xv->msgs.clear();
    xfkey_run("msg typed", "msg key", 1, KO_AFTER, c, d, false);
    EXPECT_EQ(msgs(), (V{"typed", "key"}));
    xfcmdline("=");
    EXPECT_EQ(lastmsg(), "typed");
    // Kept on the command line: not in the history.
    xfkey_run("msg kept", "", 1, KO_BEFORE, c, d, true);
    EXPECT_EQ(lastmsg(), "kept");
    xfcmdline("=");
    EXPECT_EQ(lastmsg(), "typed");
    // A definition is not history.
    xfkey_run("", "msg def", 1, KO_BEFORE, c, d, false);
    xfcmdline("=");
    EXPECT_EQ(lastmsg(), "typed");
}

} // namespace
