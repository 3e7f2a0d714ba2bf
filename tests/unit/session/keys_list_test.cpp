// The keys listing: line formats and order, setkeys.vorta read back through
// SET, and the listing page driven by key scripts on the recording layer.
#include "keys_fixture.h"

#include "fields/fields.h"
#include "fields/plat_test.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <unistd.h>

namespace {

using KeysList = KeysTest;

// The SET line of a REXX string line: quotes removed, doubled ones undone.
std::string unquote(const std::string &q)
{
    std::string s;
    for (size_t i = 1; i + 1 < q.size(); i++) {
        s += q[i];
        if (q[i] == '\'')
            i++;
    }
    return s;
}

std::vector<std::string> read_lines(const std::string &path)
{
    std::ifstream in(path);
    std::vector<std::string> v;
    for (std::string l; std::getline(in, l);)
        v.push_back(l);
    return v;
}

TEST_F(KeysList, FormatsAndOrder)
{
    set("s+c+m-r15 after msg r");
    set("c+m-f12 msg cm");
    set("m-q ignore msg q");
    set("c-escape msg esc");
    set("s+m+c-enter msg e");
    set("ipf");  // not a key word: nothing added
    set("prev_field s+c-l2");
    set("backspace ^?");
    set("server hp");
    set("nbkeys 10 12 15");
    const std::vector<std::string> l = xfkeys_list();
    ASSERT_GE(l.size(), 10u);
    EXPECT_EQ(l.front(), "SET F1          ONLY quit");
    auto at = [&](const std::string &s) {
        auto it = std::find(l.begin(), l.end(), s);
        EXPECT_NE(it, l.end()) << s;
        return it - l.begin();
    };
    auto s_f2 = at("SET S-F2        ONLY command c_ext");
    auto cm_f12 = at("SET C+M-F12     BEFORE msg cm");
    auto r15 = at("SET S+C+M-R15   AFTER msg r");
    auto s_r5 = at("SET S-R5        ONLY macro extsel_start");
    auto l2 = at("SET L2          ONLY command match");
    auto sm_l3 = at("SET S+M-L3      ONLY s_find");
    auto esc = at("SET C-ESCAPE    BEFORE msg esc");
    auto q = at("SET M-q         IGNORE msg q");
    auto enter = at("SET S+C+M-ENTER BEFORE msg e");
    auto field = at("SET PREV_FIELD  S+C-L2");
    // Classes F, R, L, each in slot order; then characters, ENTER, fields.
    EXPECT_LT(s_f2, cm_f12);
    EXPECT_LT(cm_f12, s_r5);
    EXPECT_LT(s_r5, r15);
    EXPECT_LT(r15, l2);
    EXPECT_LT(l2, sm_l3);
    EXPECT_LT(sm_l3, esc);
    EXPECT_LT(esc, q);
    EXPECT_LT(q, enter);
    EXPECT_LT(enter, field);
    ASSERT_GE(l.size(), 3u);
    EXPECT_EQ(l[l.size() - 3], "SET BACKSPACE   ^?");
    EXPECT_EQ(l[l.size() - 2], "SET NBKEYS      10 12 15");
    EXPECT_EQ(l[l.size() - 1], "SET SERVER      hp");
    // The SET part is 16 wide in every state.
    for (const std::string &s : l) {
        if (s.find("ONLY ") != std::string::npos) {
            EXPECT_EQ(s.find("ONLY "), 16u) << s;
        }
    }
}

TEST_F(KeysList, SetkeysFileBringsTheSameKeysBack)
{
    set("f1 after msg it's 'quoted'");
    set("s+c+m-f12 only");   // empty: not listed
    set("c+m-r3 ignore msg x");
    set("m-z msg alt z");
    set("c-a =");
    set("enter msg enter");
    set("c+s-enter msg cs");
    set("up_field m-f4");
    set("eof r1");
    set("backspace ^?");
    set("server dec");
    set("l6 msg no copy");   // moves PUT away from L6
    const std::vector<std::string> want = xfkeys_list();
    const xfselkey put = key_sel[SK_PUT];
    std::string path = testing::TempDir() + "keys_roundtrip.vorta";
    ASSERT_EQ(xfkeys_write(path), 0);
    std::vector<std::string> lines = read_lines(path);
    ASSERT_EQ(lines.size(), want.size() + 1);
    EXPECT_EQ(lines[0].compare(0, 2, "/*"), 0);

    xfkeys_reset();
    EXPECT_NE(xfkeys_list(), want);
    for (size_t i = 1; i < lines.size(); i++) {
        ASSERT_EQ(lines[i].front(), '\'');
        EXPECT_EQ(set(unquote(lines[i]).substr(4)), 0) << lines[i];
    }
    EXPECT_EQ(xfkeys_list(), want);
    EXPECT_EQ(key_chars[1]['z'].def, "msg alt z");
    EXPECT_EQ(slot(KC_F, 1, 0).def, "msg it's 'quoted'");
    EXPECT_EQ(key_sel[SK_PUT].key, put.key);
    EXPECT_EQ(as_altdef['z'], 1);
    remove(path.c_str());
}

TEST_F(KeysList, UnwritableFile)
{
    EXPECT_EQ(xfkeys_write("/nonexistent/dir/setkeys.vorta"), 1);
}

// The page, on a recording layer of 24 rows: 23 rows of list, the legend.
struct KeysPage : KeysTest {
    fs_plat_rec *rec = nullptr;
    std::string olddir, dir;

    void SetUp() override
    {
        KeysTest::SetUp();
        rec = new fs_plat_rec(24, 80);
        char prog[] = "test";
        char *argv[] = {prog, nullptr};
        ASSERT_EQ(fsinit(1, argv, rec), 1);
        char buf[4096];
        olddir = getcwd(buf, sizeof buf) ? buf : ".";
        dir = testing::TempDir() + "keys_page_XXXXXX";
        ASSERT_NE(mkdtemp(dir.data()), nullptr);
        ASSERT_EQ(chdir(dir.c_str()), 0);
    }
    void TearDown() override
    {
        remove("setkeys.vorta");
        EXPECT_EQ(chdir(olddir.c_str()), 0);
        rmdir(dir.c_str());
        fsend();
        // The field manager keeps its layer pointer after fsend and reports
        // later errors through it, so the layer outlives the test.
        rec = nullptr;
        KeysTest::TearDown();
    }

    std::string row(int r) const // 1-based, trailing blanks dropped
    {
        std::string s = rec->text[size_t(r - 1)];
        return s.substr(0, s.find_last_not_of(' ') + 1);
    }
};

TEST_F(KeysPage, ShowsScrollsAndLeaves)
{
    const std::vector<std::string> l = xfkeys_list();
    ASSERT_GT(l.size(), 46u); // more than two pages of 23
    rec->script("key f8\nkey f1\n");
    EXPECT_EQ(xfshow_keys(), 0);
    EXPECT_EQ(row(24), "1/^c:QUIT  2:Make File  7:Scroll up  8:Scroll down  S-F11:top  S-F12:bot");
    EXPECT_EQ(row(1), l[23]);
    EXPECT_EQ(row(23), l[45]);
    EXPECT_EQ(fs_curpage(), 0u); // back on the page it started from

    rec->script("key s-f12\nkey c-c\n");
    xfshow_keys();
    EXPECT_EQ(row(1), l[l.size() - 23]);
    EXPECT_EQ(row(23), l.back());

    // Past either end the list stops; S-F11 is the top.
    rec->script("key s-f12\nkey f8\nkey f7\nkey f7\nkey f7\nkey f1\n");
    xfshow_keys();
    EXPECT_EQ(row(1), l[0]);
    rec->script("key f8\nkey s-f11\nkey f1\n");
    xfshow_keys();
    EXPECT_EQ(row(1), l[0]);
    EXPECT_FALSE(std::ifstream("setkeys.vorta").good());
}

TEST_F(KeysPage, F2WritesTheFile)
{
    rec->script("key f2\nkey f1\n");
    xfshow_keys();
    std::vector<std::string> lines = read_lines("setkeys.vorta");
    const std::vector<std::string> l = xfkeys_list();
    ASSERT_EQ(lines.size(), l.size() + 1);
    EXPECT_EQ(unquote(lines[1]), l[0]);
}

TEST_F(KeysPage, ResizeRecomposes)
{
    rec->script("resize 30 100\nkey f8\nkey f1\n");
    EXPECT_EQ(xfshow_keys(), 1);
    const std::vector<std::string> l = xfkeys_list();
    EXPECT_EQ(row(30).substr(0, 9), "1/^c:QUIT");
    EXPECT_EQ(row(1), l[std::min<size_t>(29, l.size() - 29)]); // 29 rows now
}

TEST_F(KeysPage, EndOfInputLeaves)
{
    rec->script("key f8\n");
    EXPECT_EQ(xfshow_keys(), 0);
}

} // namespace
