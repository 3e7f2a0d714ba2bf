// The dispatcher: the command table and its hash, the search order, synonyms,
// LINEND splitting, $ expansion, command files, MODE and Query.
#include "fixture.h"

#include <cstdio>
#include <fstream>
#include <unistd.h>

using Dispatch = EditorTest;

TEST(CommandTable, SizesAndSpecialRowsInPlace)
{
    cmd_init();
    EXPECT_STREQ(cmd_table[0].name, "-\\");
    EXPECT_STREQ(cmd_table[1].name, "\\");
    EXPECT_STREQ(cmd_table[2].name, "R/");
    EXPECT_STREQ(cmd_table[3].name, "=");
    EXPECT_STREQ(cmd_table[4].name, "?");
    const cmd_info &ch = cmd_info_of(cmd_lookup("c"));
    EXPECT_EQ(ch.lname, "change");
    EXPECT_EQ(ch.min, 1);
    EXPECT_EQ(cmd_info_of(cmd_lookup("c_aplstop")).min, 6); // '_' counts as a capital
}

TEST(CommandTable, HashFunctionCountsFirstByteTwice)
{
    // 'a' = 97: start 97, then (97 * 31 + 97) & 0x1fff
    EXPECT_EQ(cmd_hash_of("a"), (97 * 31 + 97) & 0x1fff);
    EXPECT_EQ(cmd_hash_of("ab"), (((97 * 31 + 97) & 0x1fff) * 31 + 98) & 0x1fff);
}

// Every abbreviation of every entry finds that entry or an earlier one: the
// earlier row wins each clash, and no abbreviation is lost.
TEST(CommandTable, EarlierEntryWinsEveryClash)
{
    cmd_init();
    int clashes = 0;
    for (int i = 0; i < CMD_COUNT; i++) {
        const cmd_info &inf = cmd_infos[i];
        for (int l = std::max(inf.min, 1); l <= inf.len; l++) {
            const cmd_entry *e = cmd_lookup(inf.lname.substr(0, (size_t)l));
            ASSERT_NE(e, nullptr) << inf.lname << " at " << l;
            EXPECT_LE(cmd_index(e), i) << inf.lname;
            clashes += cmd_index(e) != i;
        }
    }
    EXPECT_GT(clashes, 0); // the table does have shared abbreviations
    EXPECT_EQ(cmd_lookup("q"), cmd_lookup("query"));
    EXPECT_EQ(cmd_lookup("qq"), cmd_lookup("qquit"));
    EXPECT_EQ(cmd_lookup("quitx"), nullptr);
}

TEST(CommandTable, WordMatch)
{
    cmd_init();
    const cmd_info &inf = cmd_info_of(cmd_lookup("autosave"));
    EXPECT_TRUE(word_match("au", inf));
    EXPECT_TRUE(word_match("AUTOS 5", inf));
    EXPECT_FALSE(word_match("a", inf));
    EXPECT_FALSE(word_match("autosavex", inf));
    EXPECT_TRUE(synonym_match("quit", "quit", 4));
    EXPECT_TRUE(synonym_match("quit-2", "quit", 4));
    EXPECT_FALSE(synonym_match("quitx", "quit", 4));
    EXPECT_FALSE(synonym_match("qui", "quit", 4));
}

TEST_F(Dispatch, UnknownCommandGoesBackToCommandLine)
{
    xfcmdline("foo bar");
    EXPECT_EQ(cmd_rc, -1);
    EXPECT_EQ(lastmsg(), "..... Invalid command \"foo bar\"");
    EXPECT_EQ(xv->cmdline, "foo bar");
}

TEST_F(Dispatch, CommentIsSilent)
{
    xfcmdline("#x\x0cmsg not split");
    EXPECT_EQ(cmd_rc, 0);
    EXPECT_TRUE(msgs().empty());
}

TEST_F(Dispatch, WordIsNormalisedBeforeItsOperands)
{
    file({"a", "b", "c"});
    xfcmdline("down2");
    EXPECT_EQ(curline(), 1);
    xfcmdline("top2"); // reaches TOP, which takes no operand
    EXPECT_EQ(cmd_rc, 5);
    EXPECT_EQ(lastmsg(), "..... Invalid parameters");
}

TEST_F(Dispatch, LineNumbersAndScrollMode)
{
    file({"a", "b", "c", "d"});
    xfcmdline("3");
    EXPECT_EQ(curline(), 2);
    xfcmdline("99");
    EXPECT_EQ(curline(), 3);
    xfcmdline("1 down 1"); // the rest runs as a further command
    EXPECT_EQ(curline(), 1);
    xfcmdline("mode number scroll");
    xfcmdline("1");
    EXPECT_EQ(curline(), 2);
}

TEST_F(Dispatch, RelativeTargetsAndEnds)
{
    file({"a", "b", "c"});
    xfcmdline("+2");
    EXPECT_EQ(curline(), 1);
    xfcmdline("+5");
    EXPECT_EQ(curline(), 2);
    EXPECT_EQ(cmd_rc, 1);
    EXPECT_TRUE(xv->cmdline.empty()); // reaching the end is no failure to redisplay
    xfcmdline("-*");
    EXPECT_EQ(curline(), -1);
    xfcmdline("/c/");
    EXPECT_EQ(curline(), 2);
    xfcmdline("/zz/");
    EXPECT_EQ(lastmsg(), "..... String \"zz\" not found.");
}

TEST_F(Dispatch, LinendSplitsAndOnlyLastFailureEmptiesQueue)
{
    cmd_queue = {"queued"};
    xfcmdline("msg a\x0c" "foo\x0c" "msg c");
    EXPECT_EQ(msgs(), (std::vector<std::string>{"a", "..... Invalid command \"foo\"", "c"}));
    EXPECT_EQ(cmd_queue.size(), 1u);
    xfcmdline("msg d\x0c" "foo");
    EXPECT_TRUE(cmd_queue.empty());
}

TEST_F(Dispatch, SetAndDelayKeepTheLinendCharacter)
{
    xfcmdline("delay a\x0c" "b");
    EXPECT_EQ(xv->cmdline, "a\x0c" "b");
    xfcmdline("linend ;");
    xfcmdline("msg x;msg y");
    EXPECT_EQ(msgs(), (std::vector<std::string>{"x", "y"}));
    xfcmdline("linend off");
    xfcmdline("msg x;msg y");
    EXPECT_EQ(lastmsg(), "x;msg y");
}

TEST_F(Dispatch, SynonymsTakeOperandsInLastExpansion)
{
    xfcmdline("synonym hi 2 msg HI");
    xfcmdline("hi there");
    EXPECT_EQ(lastmsg(), "HI there");
    xfcmdline("hi3");
    EXPECT_EQ(lastmsg(), "HI3");
    xfcmdline("hix");
    EXPECT_EQ(cmd_rc, -1) << lastmsg();
    xfcmdline("synonym linend ; two msg one; msg two");
    xfcmdline("two !");
    EXPECT_EQ(msgs().back(), "two !");
    EXPECT_EQ(msgs()[msgs().size() - 2], "one");
    xfcmdline("synonym zq 2 msg ZQ");
    xfcmdline("synonym off");
    xfcmdline("zq");
    EXPECT_EQ(cmd_rc, -1);
    xfcmdline("synonym on");
    xfcmdline("zq");
    EXPECT_EQ(lastmsg(), "ZQ");
    xfcmdline("synonym CLEAR zq");
    xfcmdline("zq");
    EXPECT_EQ(cmd_rc, -1);
}

// The file list runs a synonym's commands on a line itself: what it is
// handed must be what the command line would run.
TEST_F(Dispatch, SynonymExpansionForOtherCallers)
{
    std::vector<std::string> cmds;
    xfcmdline("synonym bak 2 cp = bak (rep");
    ASSERT_TRUE(synonym_expand("ba", cmds));
    EXPECT_EQ(cmds, std::vector<std::string>({"cp = bak (rep"}));
    ASSERT_TRUE(synonym_expand("bak2 x", cmds));
    EXPECT_EQ(cmds, std::vector<std::string>({"cp = bak (rep2 x"}));
    EXPECT_FALSE(synonym_expand("b", cmds));
    EXPECT_FALSE(synonym_expand("bakx", cmds));
    xfcmdline("synonym linend ! both msg one!msg two");
    ASSERT_TRUE(synonym_expand("both /t", cmds));
    EXPECT_EQ(cmds, std::vector<std::string>({"msg one", "msg two /t"}));
}

TEST_F(Dispatch, QuitIsAskAndQIsQuery)
{
    batch = true;
    file({"x"});
    xf->chgcount = 1;
    xfcmdline("quit");
    EXPECT_EQ(cmd_rc, 12); // AQUIT with no screen refuses as PQUIT
    xfcmdline("q macro");
    EXPECT_EQ(lastmsg(), "..... Is OFF");
    xfcmdline("command quit");
    EXPECT_EQ(nbfiles(), 0);
    batch = false;
}

TEST_F(Dispatch, QueryOfCommandThatIsNotQueryable)
{
    xfcmdline("query top");
    EXPECT_EQ(cmd_rc, 1);
    EXPECT_EQ(lastmsg(), "..... Invalid parameters");
    xfcmdline("query history");
    EXPECT_EQ(lastmsg(), "..... Is 10");
}

TEST_F(Dispatch, DollarExpansion)
{
    file({}, "/dir/sub/name.ext");
    EXPECT_EQ(xfexpand("$name"), "/dir/sub/name.ext");
    EXPECT_EQ(xfexpand("$lfn|$fn|$fd|$ft"), "/dir/sub/name|name|/dir/sub|ext");
    EXPECT_EQ(xfexpand("\\$name"), "$name");
    EXPECT_EQ(xfexpand("$1 stays"), "$1 stays");
    arg_frames.push_back({"mac", "one", "two", "one two"});
    EXPECT_EQ(xfexpand("$0 $2 [$9] $argv"), "mac two [] one two");
    arg_frames.clear();
    setenv("XED_TEST_VAR", "val", 1);
    EXPECT_EQ(xfexpand("$XED_TEST_VAR"), "$XED_TEST_VAR");
    xfcmdline("mode expand env");
    EXPECT_EQ(xfexpand("a $XED_TEST_VAR b"), "a val b");
    xfcmdline("mode expand off");
    EXPECT_EQ(xfexpand("$name"), "$name");
    xfcmdline("mode expand");
    EXPECT_EQ(lastmsg(), "..... Is OFF ENV");
}

TEST_F(Dispatch, NotImplementedSettingsUnderModeNotimp)
{
    xfcmdline("brkkey x");
    EXPECT_EQ(cmd_rc, 0);
    EXPECT_TRUE(msgs().empty());
    xfcmdline("set brkkey x");
    EXPECT_EQ(cmd_rc, 0);
    xfcmdline("mode notimp off");
    xfcmdline("brkkey x");
    EXPECT_EQ(cmd_rc, -1);
}

TEST_F(Dispatch, ModeReportsAndRejects)
{
    xfcmdline("mode locate");
    EXPECT_EQ(lastmsg(), "..... LOCATE NOSTAY");
    xfcmdline("mode l s");
    xfcmdline("mode locate");
    EXPECT_EQ(lastmsg(), "..... LOCATE STAY");
    xfcmdline("mode");
    EXPECT_EQ(cmd_rc, 1);
    xfcmdline("mode ch");  // "c" alone is too short for CHANGE
    EXPECT_EQ(lastmsg(), "..... Is ALL");
    xfcmdline("mode cursor 3");
    xfcmdline("mode cursor");
    EXPECT_EQ(lastmsg(), "..... Is 3");
    xfcmdline("mode autoexit maybe");
    EXPECT_EQ(cmd_rc, 1);
    EXPECT_EQ(lastmsg(), "..... Invalid parameters");
}

TEST_F(Dispatch, ByteTenInGivenLineIsRefused)
{
    xfcmdline_given(std::string("msg a\nb"));
    EXPECT_EQ(lastmsg(), "..... Invalid \\n character within a command");
}

struct CommandFiles : EditorTest {
    std::string dir;
    void SetUp() override
    {
        EditorTest::SetUp();
        char tmpl[] = "/tmp/xedcfXXXXXX";
        dir = mkdtemp(tmpl);
    }
    void TearDown() override { std::system(("rm -rf " + dir).c_str()); }
    void write(const std::string &name, const std::string &body)
    {
        std::ofstream(dir + "/" + name) << body;
        xfcmdline("hash " + dir + "/" + name);
    }
};

TEST_F(CommandFiles, ArgumentsAndComments)
{
    write("hello.x", "msg 1=$1 2=$2 [$9]\n# a comment\nmsg all=$argv\n");
    xfcmdline("hello one two");
    EXPECT_EQ(msgs(), (std::vector<std::string>{"1=one 2=two []", "all=one two"}));
}

TEST_F(CommandFiles, RecursionStopsAtSecondCall)
{
    write("loopy.x", "msg in\nloopy\nmsg not reached\n");
    cmd_queue = {"queued"};
    xfcmdline("loopy");
    EXPECT_EQ(msgs(), (std::vector<std::string>{"in", "..... Recursive call for \"loopy\" macro"}));
    EXPECT_TRUE(cmd_queue.empty());
    xfcmdline("loopy"); // the guard is released after the failure
    EXPECT_EQ(msgs().front(), "in");
}

TEST_F(CommandFiles, MacroSettingMovesSearchBeforeBuiltins)
{
    file({"a", "b"});
    curline() = 1;
    write("top.x", "msg from macro\n");
    xfcmdline("top");
    EXPECT_EQ(curline(), -1); // built-in first
    EXPECT_TRUE(msgs().empty());
    xfcmdline("macro top");
    EXPECT_EQ(lastmsg(), "from macro");
    xfcmdline("set macro on");
    curline() = 1;
    xfcmdline("top");
    EXPECT_EQ(lastmsg(), "from macro");
    EXPECT_EQ(curline(), 1);
    xfcmdline("command top");
    EXPECT_EQ(curline(), -1);
    xfcmdline("set macro off");
}

TEST_F(CommandFiles, StopsAtFirstFailure)
{
    write("zstop.x", "msg one\nnosuchthing\nmsg three\n");
    xfcmdline("zstop");
    ASSERT_EQ(msgs().size(), 2u) << lastmsg();
    EXPECT_EQ(cmd_rc, -1);
}

TEST_F(CommandFiles, MacrosOfOtherClassesAreFoundAndDoNothing)
{
    write("other.ex", "");
    xfcmdline("other");
    EXPECT_EQ(cmd_rc, 0);
    EXPECT_TRUE(msgs().empty());
    EXPECT_EQ(xfext_class("a.vorta"), 10);
    EXPECT_EQ(xfext_class("a.F"), 5);
    EXPECT_EQ(xfext_class("a."), 1);
    EXPECT_EQ(xfext_class("dir.d/a"), 0);
    EXPECT_EQ(xfext_class("a.zip"), -1);
}

TEST_F(Dispatch, HistoryRingAndEqual)
{
    xfhist_add("msg one");
    xfhist_add("msg two");
    xfhist_add("msg two"); // the newest is not remembered twice
    xfhist_add("= x");     // nor a repeat
    xfcmdline("=");
    EXPECT_EQ(lastmsg(), "two");
    xfcmdline("?");
    EXPECT_EQ(xv->cmdline, "msg two");
    xfcmdline("?");
    EXPECT_EQ(xv->cmdline, "msg one");
    xfcmdline("?");
    EXPECT_EQ(xv->cmdline, "msg two"); // wraps
    xfcmdline("set = msg three");
    xfcmdline("= msg zero");
    EXPECT_EQ(msgs()[msgs().size() - 2], "zero");
    EXPECT_EQ(lastmsg(), "three");
    xfcmdline("history 0");
    xfcmdline("=");
    EXPECT_EQ(cmd_rc, 1);
    xfcmdline("history 10");
}
