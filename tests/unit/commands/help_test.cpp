// The help pages: the shipped data file has a page for every command of the
// command table and every REXX built-in (and none for a name that is gone),
// the reader refuses malformed files, and HELP shows pages as read-only ring
// files with the messages for what is missing.
#include "commands/internal.h"
#include "rexx/builtins/builtins.h"
#include "tests/unit/session/fixture.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <unistd.h>

namespace {

std::vector<xfhelp_page> shipped()
{
    std::ifstream in(XED_SHARE_DIR "/help.pages");
    std::vector<xfhelp_page> pages;
    std::string why;
    EXPECT_TRUE(in.good());
    EXPECT_TRUE(xfhelp_parse(in, pages, why)) << why;
    return pages;
}

bool parse(const std::string &text, std::vector<xfhelp_page> &pages, std::string &why)
{
    std::istringstream in(text);
    return xfhelp_parse(in, pages, why);
}

TEST(HelpPages, EveryCommandAndSettingHasAPage)
{
    std::vector<xfhelp_page> pages = shipped();
    for (const cmd_entry &e : cmd_table) {
        const xfhelp_page *p = xfhelp_find(pages, "command", e.name);
        ASSERT_NE(p, nullptr) << "no page for command " << e.name;
        EXPECT_FALSE(p->syntax.empty()) << e.name;
        EXPECT_FALSE(p->text.empty()) << e.name;
    }
    for (const cmd_entry &e : notimp_table)
        EXPECT_NE(xfhelp_find(pages, "command", e.name), nullptr) << "no page for setting " << e.name;
}

TEST(HelpPages, EveryBuiltinHasAPage)
{
    std::vector<xfhelp_page> pages = shipped();
    for (int i = 0; i < bu_table_rows; i++) {
        const xfhelp_page *p = xfhelp_find(pages, "rexx", bu_table[i].name);
        ASSERT_NE(p, nullptr) << "no page for built-in " << bu_table[i].name;
        EXPECT_FALSE(p->syntax.empty()) << bu_table[i].name;
        EXPECT_FALSE(p->text.empty()) << bu_table[i].name;
    }
}

// A page whose name left the tables would send users to a command that is
// not there; a second page of one name would never be shown.
TEST(HelpPages, NoPageWithoutItsNameAndNoTwins)
{
    std::vector<xfhelp_page> pages = shipped();
    std::vector<std::string> seen;
    for (const xfhelp_page &p : pages) {
        std::string key = p.kind + " " + xffold(p.name);
        EXPECT_EQ(std::count(seen.begin(), seen.end(), key), 0) << "two pages: " << key;
        seen.push_back(key);
        bool known = p.kind == "task";
        for (const cmd_entry &e : cmd_table)
            known = known || (p.kind == "command" && p.name == e.name);
        for (const cmd_entry &e : notimp_table)
            known = known || (p.kind == "command" && p.name == e.name);
        for (int i = 0; i < bu_table_rows; i++)
            known = known || (p.kind == "rexx" && p.name == bu_table[i].name);
        EXPECT_TRUE(known) << "page for a name no table has: " << key;
    }
}

TEST(HelpReader, ReadsSyntaxTextAndExamples)
{
    std::vector<xfhelp_page> pages;
    std::string why;
    ASSERT_TRUE(parse("# comment\n\n@command Change\nsyntax: Change /a/b/\n\nFirst line.\n\nSecond.\n"
                      "example: c/a/b/\nexample: c/x/y/ *\n\n\n@rexx left\nsyntax: LEFT(s, n)\nCut.\n",
                      pages, why))
        << why;
    ASSERT_EQ(pages.size(), 2u);
    EXPECT_EQ(pages[0].syntax, "Change /a/b/");
    EXPECT_EQ(pages[0].text, (std::vector<std::string>{"First line.", "", "Second."}));
    EXPECT_EQ(pages[0].examples, (std::vector<std::string>{"c/a/b/", "c/x/y/ *"}));
    EXPECT_EQ(xfhelp_find(pages, "rexx", "LEFT"), &pages[1]);
    EXPECT_EQ(xfhelp_find(pages, "command", "left"), nullptr);
}

TEST(HelpReader, RefusesMalformedFilesNamingTheLine)
{
    std::vector<xfhelp_page> pages;
    std::string why;
    EXPECT_FALSE(parse("\nstray text\n@command X\n", pages, why));
    EXPECT_NE(why.find("line 2"), std::string::npos) << why;
    EXPECT_FALSE(parse("@command X\nsyntax: X\n@manual Y\n", pages, why));
    EXPECT_NE(why.find("line 3"), std::string::npos) << why;
    EXPECT_FALSE(parse("@rexx\n", pages, why));
}

// HELP on the page: a folder of our own stands for the program's, holding a
// small data file (or none).
struct HelpCommand : EditorTest {
    std::string dir, saved_install, saved_state;
    bool had_state = false;
    void SetUp() override
    {
        EditorTest::SetUp();
        char t[] = "/tmp/xed-help.XXXXXX";
        dir = mkdtemp(t);
        saved_install = installdir;
        if (const char *st = std::getenv("XDG_STATE_HOME")) {
            had_state = true;
            saved_state = st;
        }
        installdir = dir + "/";
        setenv("XDG_STATE_HOME", (dir + "/state").c_str(), 1);
        std::string cmd = "mkdir -p '" + dir + "/share/vorta'";
        ASSERT_EQ(std::system(cmd.c_str()), 0);
    }
    void TearDown() override
    {
        installdir = saved_install;
        if (had_state)
            setenv("XDG_STATE_HOME", saved_state.c_str(), 1);
        else
            unsetenv("XDG_STATE_HOME");
        std::string cmd = "rm -rf '" + dir + "'";
        EXPECT_EQ(std::system(cmd.c_str()), 0);
        EditorTest::TearDown();
    }
    void pages(const std::string &text)
    {
        std::ofstream(dir + "/share/vorta/help.pages") << text;
    }
};

TEST_F(HelpCommand, AbbreviationShowsTheCommandsPageReadOnly)
{
    pages("@command Change\nsyntax: Change /s1/s2/ [target]\nChanges text.\nexample: c/a/b/\n"
          "@rexx change\nsyntax: CHANGE(s, a, b)\nA function.\n");
    file({"mine"});
    xfcmdline("help c");
    EXPECT_EQ(cmd_rc, 0);
    ASSERT_EQ(nbfiles(), 2);
    EXPECT_EQ(xf->rw, 0);
    EXPECT_EQ(xf->chgcount, 0);
    std::vector<std::string> t = text();
    ASSERT_GE(t.size(), 5u);
    EXPECT_EQ(t[0].rfind("Change  (shortest form: C)", 0), 0u) << t[0];
    EXPECT_NE(std::find(t.begin(), t.end(), "Syntax:   Change /s1/s2/ [target]"), t.end());
    EXPECT_NE(std::find(t.begin(), t.end(), "Example:  c/a/b/"), t.end());
    EXPECT_NE(std::find(t.begin(), t.end(), "There is also a REXX built-in of this name: HELP REXX Change."), t.end());
    // The same page again is the same ring file, not a second one.
    xfcmdline("help change");
    EXPECT_EQ(nbfiles(), 2);
    xfcmdline("help rexx change");
    EXPECT_EQ(nbfiles(), 3);
    EXPECT_EQ(text()[0].rfind("change", 0), 0u);
}

TEST_F(HelpCommand, IndexListsEveryPageWithItsSyntax)
{
    pages("@task keys\nsyntax: The keys\nF1 quits.\n@command SAve\nsyntax: SAve [name]\nWrites.\n"
          "@rexx left\nsyntax: LEFT(s, n)\nCuts.\n");
    file({"mine"});
    xfcmdline("help");
    EXPECT_EQ(cmd_rc, 0);
    std::vector<std::string> t = text();
    auto row = [&](const std::string &start) {
        return std::any_of(t.begin(), t.end(), [&](const std::string &l) { return l.rfind(start, 0) == 0; });
    };
    EXPECT_TRUE(row("  SAve                    SAve [name]"));
    EXPECT_TRUE(row("  left                    LEFT(s, n)"));
    EXPECT_TRUE(row("  keys                    The keys"));
    EXPECT_EQ(xf->rw, 0);
}

TEST_F(HelpCommand, MissingPagesAndFilesGiveTheirMessagesAndChangeNothing)
{
    file({"mine"});
    xfcmdline("help change");
    EXPECT_EQ(cmd_rc, 1);
    EXPECT_EQ(lastmsg(), "..... No help file available");
    pages("@command SAve\nsyntax: SAve\nWrites.\n");
    xfcmdline("help nosuchthing");
    EXPECT_EQ(cmd_rc, 1);
    EXPECT_EQ(lastmsg(), "..... Not such help file");
    xfcmdline("help rexx left");
    EXPECT_EQ(lastmsg(), "..... No rexx help file available");
    xfcmdline("help task keys");
    EXPECT_EQ(lastmsg(), "..... No task help file available");
    EXPECT_EQ(nbfiles(), 1);
    EXPECT_EQ(text(), (std::vector<std::string>{"mine"}));
}

TEST_F(HelpCommand, SelectedWordFindsItsPage)
{
    pages("@command SAve\nsyntax: SAve [name]\nWrites.\n");
    file({"call save(x);"});
    xfcmdline("s_set l 1 6 1 11");
    xfcmdline("s_help");
    EXPECT_EQ(cmd_rc, 0);
    EXPECT_EQ(nbfiles(), 2);
    EXPECT_EQ(text()[0].rfind("SAve", 0), 0u);
}

} // namespace
